#!/usr/bin/python3
"""checkhome finds one fault of each kind, all planted in a copy of the shipped home, and no other.

usage: checkhome_test.py CHECKHOME HOME
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile


def read(table):
    """File, what is replaced, by what, and words of the fault: rows of a table."""
    table = (pathlib.Path(__file__).parent / table).read_text("ascii")
    rows = (line.split("|") for line in table.splitlines() if line[0] != "#")
    return [tuple(map(str.strip, row)) for row in rows]


def bytes_of(field):
    """A field of the table, in quotes where blanks are at its ends."""
    if len(field) > 1 and field[0] == field[-1] == '"':
        field = field[1:-1]
    return field.encode().decode("unicode_escape").encode("latin1")



def check(faults):
    """Faults that were not found, and what was said of none."""
    with tempfile.TemporaryDirectory() as directory:
        home = pathlib.Path(directory) / "home"
        shutil.copytree(sys.argv[2], home)
        for file, old, new, _ in filter(lambda fault: fault[0], faults):
            text = b"" if old == "(new)" else (home / file).read_bytes()
            old, new = bytes_of(old.removeprefix("(new)")), bytes_of(new)
            assert old in text, (file, old)
            (home / file).write_bytes(text.replace(old, new, 1) if old else text + new)
        found = subprocess.run([sys.argv[1], f"{home}/"], cwd=directory, text=True, check=False,
                               errors="replace", capture_output=True)
        lines = found.stdout.replace(f"{home}/", "").splitlines()
    missed = [(file, words) for file, _, _, words in faults
              if not any(words in line and file in line for line in lines)]
    other = [line for line in lines
             if not any(words in line and file in line for file, _, _, words in faults)]
    other += [line for line in set(lines) if lines.count(line) > 1]
    assert found.returncode == 1, found
    return missed, other


for table in ("checkhome_faults.txt", "checkhome_needed.txt"):
    missed, other = check(read(table))
    if missed or other:
        raise SystemExit(f"not found: {missed}\nof none of them:\n" + "\n".join(other[:20]))
