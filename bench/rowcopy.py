#!/usr/bin/env -S python3 -B
"""Measures rowcopy on the shipped files, and on their rows repeated to a million beside other ways of
moving them. What cannot be had is left out by name.

    bench/rowcopy.py PROGRAM ROWS DIRECTORY      a scratch directory, best one in memory
"""
import itertools
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA = ROOT / "examples/data"
program, rows, scratch = os.path.abspath(sys.argv[1]), int(sys.argv[2]), sys.argv[3]
FILES = {"bird strikes": ("birdstrikes", "birdstrikes"), "weather": ("weather", "seattle-weather-hourly-normals")}
# Types of other systems for those of the layouts.
SQL = {"money": "numeric(19, 4)", "smalldatetime": "timestamp", "datetime": "timestamp", "float": "double precision"}


def left_out(what, why):
    print(f"bench: {what} is left out: {why}", file=sys.stderr)


def cpu(command, **how):
    """The CPU seconds of a program and its children: user, system."""
    before = os.times()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, **how)
    after = os.times()
    return after.children_user - before.children_user, after.children_system - before.children_system


def rowcopy(layout, csv, *options, tool=(), locale="C"):
    command = [*tool, program, "--quiet", "--home", str(ROOT / "home"), *options, str(DATA / f"{layout}.layout"), csv, f"{scratch}/records"]
    return command, dict(env=dict(os.environ, LC_ALL=locale))


def columns(layout):
    """Name and SQL type of the layout's columns."""
    for line in (DATA / f"{layout}.layout").read_text().splitlines():
        if found := re.match(r"(\w+) *= ([^:]*[^: ])", line):
            yield found[1], SQL.get(found[2], found[2])


def instructions():
    if not shutil.which("valgrind"):
        return left_out("the count of instructions", "no valgrind")
    print(f"{'instructions, millions':40}{'C':>10}{'C.UTF-8':>10}")
    for name, (layout, csv) in FILES.items():
        counts = []
        for locale in ("C", "C.UTF-8"):
            command, how = rowcopy(layout, str(DATA / f"{csv}.csv"), locale=locale,
                                   tool=("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"))
            told = subprocess.run(command, check=True, stderr=subprocess.PIPE, text=True, **how).stderr
            counts.append(int(re.search(r"Collected : (\d+)", told)[1]) / 1e6)
        print(f"{name:40}" + "".join(f"{count:10.1f}" for count in counts))


def repeat(csv, target):
    heading, *lines = (DATA / f"{csv}.csv").read_text().splitlines(True)
    with open(target, "w") as file:
        file.write(heading)
        file.writelines(itertools.islice(itertools.cycle(lines), rows))


def by_sqlite(layout, csv, out):
    database = f"{scratch}/sqlite.db"
    table = ", ".join(f"{name} {kind}" for name, kind in columns(layout))
    steps = {"sqlite3, .import": [f"CREATE TABLE t ({table});", f".import --csv --skip 1 {csv} t"],
             "sqlite3, rows out as CSV": [".mode csv", f".output {out}", "SELECT * FROM t;"]}
    for what, lines in steps.items():
        yield what, cpu(["sqlite3", database], input="\n".join(lines), text=True)
    os.remove(database)


def by_postgres(layout, csv, out):
    """A server of a single user: one process, whose time is the server's; that of an empty run is taken off."""
    folders = sorted(pathlib.Path("/usr/lib/postgresql").glob("*/bin"))
    if not folders:
        return left_out("PostgreSQL", "not installed")
    user = [] if os.getuid() else ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"]
    with tempfile.TemporaryDirectory(dir=scratch) as cluster:
        if not os.getuid():
            shutil.chown(cluster, "nobody", "nogroup")
        subprocess.run([*user, folders[-1] / "initdb", "-D", f"{cluster}/d", "-E", "UTF8", "--locale=C", "-N"], check=True, cwd="/",
                       stdout=subprocess.DEVNULL)
        server = [*user, folders[-1] / "postgres", "--single", "-D", f"{cluster}/d", "-c", "fsync=off", "-c", "wal_level=minimal",
                  "-c", "max_wal_senders=0", "postgres"]
        table = ", ".join(f"{name} {kind}" for name, kind in columns(layout))

        def run(*lines):
            return cpu(server, input="\n".join(lines) + "\n", text=True, cwd="/", stderr=subprocess.DEVNULL)

        run("SELECT 1")
        idle = run("SELECT 1")
        steps = {"PostgreSQL, COPY in": ["BEGIN", f"CREATE TABLE t ({table})", f"COPY t FROM '{csv}' CSV HEADER", "COMMIT"],
                 "PostgreSQL, COPY out": [f"COPY t TO '{cluster}/d/out' CSV HEADER"]}
        for what, lines in steps.items():
            yield what, tuple(max(a - b, 0) for a, b in zip(run(*lines), idle))


def whole_jobs():
    for name, (layout, source) in FILES.items():
        csv, out = f"{scratch}/{layout}.csv", f"{scratch}/out.csv"
        repeat(source, csv)
        print(f"\n{name + f', {rows:,} rows, CPU seconds':40}{'user':>10}{'system':>10}")
        results = []
        for what, options in (("rowcopy", ()), ("rowcopy --jobs 2", ("--jobs", "2")), ("rowcopy --text", ("--text", out))):
            command, how = rowcopy(layout, csv, *options)
            results.append((what, cpu(command, **how)))
        if shutil.which("sqlite3"):
            results += by_sqlite(layout, csv, out)
        else:
            left_out("sqlite3", "not installed")
        results += by_postgres(layout, csv, out)
        for what, (user, system) in results:
            print(f"  {what:38}{user:10.2f}{system:10.2f}")
        if shutil.which("hyperfine"):
            for jobs in ("1", "2"):
                command, how = rowcopy(layout, csv, "--jobs", jobs)
                told = subprocess.run(["hyperfine", "-N", "-w", "1", "-r", "5", "--style", "none", "--export-csv", "/dev/stdout", " ".join(command)],
                                      check=True, capture_output=True, text=True, **how).stdout.splitlines()
                print(f"  {'by the clock, --jobs ' + jobs:38}{float(told[-1].split(',')[1]):10.3f}")
        else:
            left_out("the time by the clock", "no hyperfine")
        for file in (csv, out, f"{scratch}/records"):
            pathlib.Path(file).unlink(missing_ok=True)


os.chmod(scratch, 0o755)
instructions()
whole_jobs()
