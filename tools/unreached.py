#!/usr/bin/env python3
"""Prints the line coverage in a JSON report of gcovr and fails when it is not what tools/coverage
asks for.

  tools/unreached.py REPORT EXPLANATIONS

An explanation is a line "file: text of the line  # why no test reaches it". It explains one line of
that text in the file, wherever it stands.
"""
import json
import sys
from collections import Counter, defaultdict
from pathlib import Path

LEAST = 95.0  # percent of the lines in generic/src


def read_explanations(path):
    explanations = Counter()
    for number, line in enumerate(Path(path).read_text().splitlines(), 1):
        if not line or line.startswith("#"):
            continue
        where, _, reason = line.rpartition("  # ")
        file, _, text = where.partition(": ")
        if not (file and text and reason):
            sys.exit(f"{path}:{number}: expected 'file: text  # reason'")
        explanations[file, text.strip()] += 1
    return explanations


def read_lines(path):
    """Of each file its lines as (number, text, whether reached)."""
    files = {}
    for file in json.loads(Path(path).read_text())["files"]:
        texts = Path(file["file"]).read_text().splitlines()
        files[file["file"]] = [
            (line["line_number"], texts[line["line_number"] - 1].strip(), line["count"] > 0)
            for line in file["lines"]
            if not line["gcovr/noncode"]
        ]
    return files


def print_share(name, lines):
    reached = sum(1 for _, _, hit in lines if hit)
    share = 100.0 * reached / len(lines) if lines else 100.0
    print(f"{name:<44}{reached:>6} of {len(lines):>5}{share:>8.1f} %")
    return share


def print_table(files):
    rooms = defaultdict(list)
    for file in sorted(files):
        print_share(file, files[file])
        rooms[str(Path(file).parent)] += files[file]
    print()
    for room in sorted(rooms):
        print_share(room + "/", rooms[room])
    print()
    totals = {}
    for part in ("companion/", "generic/", "generic/src/"):
        totals[part] = print_share(
            "all of " + part, [line for file in files if file.startswith(part) for line in files[file]])
    return totals


def main(report, explanations_path):
    files = read_lines(report)
    totals = print_table(files)
    explanations = read_explanations(explanations_path)
    failures = []
    if totals["generic/src/"] < LEAST:
        failures.append(f"less than {LEAST:g} % of the lines in generic/src are reached")
    left = Counter(explanations)
    for file, lines in sorted(files.items()):
        for number, text, hit in lines:
            if hit:
                continue
            if left[file, text] > 0:
                left[file, text] -= 1
            else:
                failures.append(f"{file}:{number}: reached by no test: {text}")
    for file, text in sorted(left.elements()):
        failures.append(f"{explanations_path}: reached by now, or gone: {file}: {text}")
    print(f"\n{explanations.total() - left.total()} lines are unreached for an explained reason")
    for failure in failures:
        print(failure, file=sys.stderr)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
