#!/usr/bin/env -S python3 -B
"""Measures rowcopy: its instructions on the shipped files, and on their rows, repeated, its time on
several threads and beside other ways of moving such rows. What cannot be had is left out by name.

    bench/rowcopy.py PROGRAM TARGET SCRATCH [ROWS] [--write-docs]

ROWS are those of the bird strikes, a million without it. With --write-docs the blocks of
docs/performance.md between <!-- rowcopy:TARGET --> and <!-- /rowcopy:TARGET --> are renewed.
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
DOCUMENT = ROOT / "docs/performance.md"
arguments = [argument for argument in sys.argv[1:] if argument != "--write-docs"]
program, target, scratch, rows = (
    os.path.abspath(arguments[0]),
    *arguments[1:3],
    int(arguments[3] if arguments[3:] else 1_000_000),
)
# Layout, data, and how many times as many rows.
FILES = {
    "bird strikes": ("birdstrikes", "birdstrikes", 1),
    "hourly weather": ("weather", "seattle-weather-hourly-normals", 2.6),
}
# Types of other systems for those of the layouts.
SQL = {
    "money": "numeric(19, 4)",
    "smalldatetime": "timestamp",
    "datetime": "timestamp",
    "float": "double precision",
}


def left_out(what, why):
    print(f"bench: {what} is left out: {why}", file=sys.stderr)


def cpu(command, **how):
    """The CPU seconds of a program and its children: user, system."""
    before = os.times()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, **how)
    after = os.times()
    return (
        after.children_user - before.children_user,
        after.children_system - before.children_system,
    )


def rowcopy(layout, csv, *options, tool=(), locale="C"):
    command = [
        *tool,
        program,
        "--quiet",
        "--home",
        str(ROOT / "home"),
        *options,
        str(DATA / f"{layout}.layout"),
        csv,
        f"{scratch}/records",
    ]
    return command, dict(env=dict(os.environ, LC_ALL=locale))


def columns(layout):
    """Name and SQL type of the layout's columns."""
    for line in (DATA / f"{layout}.layout").read_text().splitlines():
        if found := re.match(r"(\w+) *= ([^:]*[^: ])", line):
            yield found[1], SQL.get(found[2], found[2])


def instructions(layout, csv, locale):
    command, how = rowcopy(
        layout,
        csv,
        locale=locale,
        tool=("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"),
    )
    told = subprocess.run(command, check=True, stderr=subprocess.PIPE, text=True, **how).stderr
    return f"{int(re.search(r'Collected : ([0-9]+)', told)[1]) / 1e6:.1f}"


def repeat(csv, count, path):
    heading, *lines = [
        line + "\n" for line in (DATA / f"{csv}.csv").read_text().split("\n") if line
    ]
    with open(path, "w") as file:
        file.write(heading)
        file.writelines(itertools.islice(itertools.cycle(lines), count))


def by_clock(layout, csv, jobs):
    command, how = rowcopy(layout, csv, "--jobs", jobs)
    told = subprocess.run(
        [
            "hyperfine",
            "-N",
            "-w",
            "1",
            "-r",
            "5",
            "--style",
            "none",
            "--export-csv",
            "/dev/stdout",
            " ".join(command),
        ],
        check=True,
        capture_output=True,
        text=True,
        **how,
    ).stdout.splitlines()
    return float(told[-1].split(",")[1])


def by_rowcopy(layout, csv, out):
    for what, options in (("rowcopy", ()), ("rowcopy, rows out as CSV too", ("--text", out))):
        command, how = rowcopy(layout, csv, *options)
        yield what, cpu(command, **how)


def by_sqlite(layout, csv, out):
    if not shutil.which("sqlite3"):
        return left_out("sqlite3", "not installed")
    database = f"{scratch}/sqlite.db"
    table = ", ".join(f"{name} {kind}" for name, kind in columns(layout))
    steps = {
        "sqlite3, `.import`": [f"CREATE TABLE t ({table});", f".import --csv --skip 1 {csv} t"],
        "sqlite3, rows out as CSV": [".mode csv", f".output {out}", "SELECT * FROM t;"],
    }
    for what, lines in steps.items():
        yield what, cpu(["sqlite3", database], input="\n".join(lines), text=True)
    os.remove(database)


def by_postgres(layout, csv, out):
    """A server for a single user is one process, from whose time that of an empty run is taken off."""
    folders = sorted(pathlib.Path("/usr/lib/postgresql").glob("*/bin"))
    if not folders:
        return left_out("PostgreSQL", "not installed")
    user = [] if os.getuid() else ["setpriv", "--reuid=nobody", "--regid=nogroup", "--clear-groups"]
    with tempfile.TemporaryDirectory(dir=scratch) as cluster:
        if not os.getuid():
            shutil.chown(cluster, "nobody", "nogroup")
        subprocess.run(
            [*user, folders[-1] / "initdb", "-D", f"{cluster}/d", "-E", "UTF8", "--locale=C", "-N"],
            check=True,
            cwd="/",
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        server = [
            *user,
            folders[-1] / "postgres",
            "--single",
            "-j",
            "-D",
            f"{cluster}/d",
            "-c",
            "fsync=off",
            "-c",
            "wal_level=minimal",
            "-c",
            "max_wal_senders=0",
            "postgres",
        ]
        table = ", ".join(f"{name} {kind}" for name, kind in columns(layout))

        def run(*commands):
            return cpu(
                server,
                input="".join(command + ";\n\n" for command in commands),
                text=True,
                cwd="/",
                stderr=subprocess.DEVNULL,
            )

        run("SELECT 1")
        idle = run("SELECT 1")
        steps = {
            "PostgreSQL, `COPY` in": [
                "BEGIN",
                f"CREATE TABLE t ({table})",
                f"COPY t FROM '{csv}' CSV HEADER",
                "COMMIT",
            ],
            "PostgreSQL, `COPY` out": [f"COPY t TO '{cluster}/d/out' CSV HEADER"],
        }
        for what, commands in steps.items():
            yield what, tuple(max(a - b, 0) for a, b in zip(run(*commands), idle))


def table(heading, lines):
    return "\n".join(
        "| " + " | ".join(cells) + " |"
        for cells in [heading, ["---"] + ["---:"] * (len(heading) - 1), *lines]
    )


def tables():
    if shutil.which("valgrind"):
        yield table(
            ["millions of instructions", "`C`", "`C.UTF-8`"],
            [
                [f"{name}, the shipped file"]
                + [
                    instructions(layout, str(DATA / f"{csv}.csv"), locale)
                    for locale in ("C", "C.UTF-8")
                ]
                for name, (layout, csv, _) in FILES.items()
            ],
        )
    else:
        left_out("the count of instructions", "no valgrind")
    clock, seconds = [], {}
    for name, (layout, source, factor) in FILES.items():
        count, csv, out = int(factor * rows), f"{scratch}/{layout}.csv", f"{scratch}/out.csv"
        repeat(source, count, csv)
        if shutil.which("hyperfine"):
            one, two = (by_clock(layout, csv, jobs) for jobs in "12")
            clock.append(
                [f"{name}, {count:,} rows", f"{one:.2f} s", f"{two:.2f} s", f"{one / two:.2f}"]
            )
        for way in (by_rowcopy, by_sqlite, by_postgres):
            for what, (user, system) in way(layout, csv, out):
                seconds.setdefault(what, []).append(f"{user + system:.2f} ({user:.2f})")
        for file in (csv, out, f"{scratch}/records"):
            pathlib.Path(file).unlink(missing_ok=True)
    if clock:
        yield table(["by the clock", "`--jobs 1`", "`--jobs 2`", "times as fast"], clock)
    else:
        left_out("the time by the clock", "no hyperfine")
    yield table(
        [
            "CPU seconds (of the user)",
            *(f"{name}, {int(factor * rows):,} rows" for name, (_, _, factor) in FILES.items()),
        ],
        [[what, *figures] for what, figures in seconds.items()],
    )


os.chmod(scratch, 0o755)
text = "\n\n".join(tables())
print(text)
if "--write-docs" in sys.argv:
    document = re.sub(
        f"(<!-- rowcopy:{target} -->\n).*?(<!-- /rowcopy:{target} -->)",
        lambda found: f"{found[1]}\n{text}\n\n{found[2]}",
        DOCUMENT.read_text(),
        flags=re.S,
    )
    DOCUMENT.write_text(document)
