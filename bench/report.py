#!/usr/bin/env -S python3 -B
"""Prints one table of all results of tools/bench.

    bench/report.py DIRECTORY...
    bench/report.py I386_DIRECTORY X86_64_DIRECTORY --write-docs

With --write-docs the blocks of docs/performance.md between <!-- NAME --> and <!-- /NAME --> are
renewed for both targets, and the charts in docs/performance/ of the first one. bench.h says what
the benchmarks' names say.
"""
import fnmatch
import json
import math
import pathlib
import re
import sys
from dataclasses import dataclass, field
from operator import itemgetter

import charts

ROOT = pathlib.Path(__file__).resolve().parent.parent
DOCUMENT = ROOT / "docs/performance.md"
PICTURES = ROOT / "docs/performance"
OURS = "comnlib"


@dataclass
class Row:
    """An operation by this library, and by its peers."""

    subject: str
    operation: str
    size: str
    ns: float
    peers: dict = field(default_factory=dict)

    def label(self):
        return self.operation + (f", {self.size}" if self.size else "")

    def ratio(self, peer):
        return self.peers[peer] / self.ns


def medians(results):
    """The name and the nanoseconds of an item of every benchmark, in their programs' order."""
    for path in results:
        entries = json.loads(path.read_text())["benchmarks"]
        entries = [entry for entry in entries if entry.get("aggregate_name") == "median"]
        for entry in sorted(entries, key=itemgetter("family_index", "per_family_instance_index")):
            assert entry["time_unit"] == "ns"
            rate = entry.get("items_per_second")
            yield entry["run_name"], 1e9 / rate if rate else entry["cpu_time"]


def read_rows(results):
    """The tables' rows, those of a subject together."""
    figures = {}
    for name, ns in medians(results):
        subject, operation, contender, *size = name.split("/")
        if subject == "size":
            continue
        unit, count = size[0].split(":") if size else ("", "")
        text = f"{int(count):,} {unit}" if size else ""
        figures.setdefault((subject, operation, text), {})[contender] = ns
    rows = []
    for (subject, operation, size), times in figures.items():
        peers = {who: ns for who, ns in times.items() if not who.startswith(OURS)}
        for who, ns in times.items():
            if who.startswith(OURS):
                variant = who.removeprefix(OURS).strip()
                name = f"{operation}, {variant}" if variant else operation
                rows.append(Row(subject, name, size, ns, peers))
    return rows


def read_curves(results):
    """subject -> (unit, operation -> contender -> points)."""
    curves = {}
    for name, ns in medians(results):
        if name.startswith("size/"):
            _, subject, operation, contender, size = name.split("/")
            unit, count = size.split(":")
            _, panels = curves.setdefault(subject, (unit, {}))
            panels.setdefault(operation, {}).setdefault(contender, []).append((int(count), ns))
    return curves


def by_subject(rows):
    subjects = {}
    for row in rows:
        subjects.setdefault(row.subject, []).append(row)
    return subjects


def three_digits(value):
    decimals = 2 - math.floor(math.log10(value))
    return f"{round(value, decimals):,.{max(decimals, 0)}f}"


def two_digits(ratio):
    return f"{ratio:.0f}" if ratio >= 9.95 else f"{ratio:#.2g}"


def table(rows, behind="{}"):
    """Lines of cells: each peer's nanoseconds and how many times as long as ours that is."""

    def cell(row, peer):
        if peer not in row.peers:
            return ""
        ratio = two_digits(row.ratio(peer))
        return f"{three_digits(row.peers[peer])} ({behind.format(ratio) if float(ratio) < 1 else ratio})"

    peers = list(dict.fromkeys(peer for row in rows for peer in row.peers))
    yield [rows[0].subject, "this library"] + peers
    for row in rows:
        yield [row.label(), three_digits(row.ns)] + [cell(row, peer) for peer in peers]


def plain(rows):
    print("Nanoseconds of processor time; in brackets how many times as long as this library.")
    for group in by_subject(rows).values():
        lines = list(table(group))
        widths = [max(map(len, column)) for column in zip(*lines)]
        print()
        for first, *others in lines:
            cells = [cell.rjust(width) for cell, width in zip(others, widths[1:])]
            print("  ".join([first.ljust(widths[0])] + cells).rstrip())


def markdown(lines, column="---"):
    lines = list(lines)
    rule = ["---"] + [column] * (len(lines[0]) - 1)
    return "\n".join("| " + " | ".join(line) + " |" for line in [lines[0], rule] + lines[1:])


def in_words(ratio):
    if two_digits(ratio) == "1.0":
        return "level"
    return f"{ratio:.3g} times as fast" if ratio > 1 else f"{1 / ratio:.3g} times as long"


def goal(limit, pattern, rows):
    """A goal's cells: the rows, what is wanted, the worst row, and whether all reached it."""

    def matching(name):
        return fnmatch.fnmatchcase(name, pattern)

    if limit.endswith("ns"):
        most = float(limit.removesuffix("ns"))
        least, wanted = 1.0, f"at most {most:,.0f} ns"
        found = [(most / row.ns, f"{three_digits(row.ns)} ns", row.label())
                 for row in rows if matching(f"{row.subject}/{row.label()}")]
    else:
        dividend, _, divisor = limit.partition("/")
        least = float(dividend) / float(divisor or 1)
        bound = "at least" if least > 1 else "at most"
        wanted = "ahead" if least == 1 else f"{bound} {in_words(least)}"
        found = [(row.ratio(peer), in_words(row.ratio(peer)), row.label())
                 for row in rows for peer in row.peers
                 if matching(f"{row.subject}/{row.label()}/{peer}")]
    if not found:
        return [pattern.replace("*", "…"), wanted, "no such peer", "not measured"]
    missed = sum(float(two_digits(ratio)) < float(two_digits(least)) for ratio, *_ in found)
    _, worst, row = min(found)
    verdict = f"**missed** by {missed} of {len(found)}" if missed else "met"
    if len(found) > 1:
        worst += f" ({row})"
    return [pattern.replace("*", "…"), wanted, worst, verdict]


def goals(rows_of):
    """The goals' lines, with two cells for each target."""
    yield ["goal", "wanted"] + [title for target in rows_of
                                for title in (f"{target}, the worst row", "outcome")]
    for line in (ROOT / "bench/goals").read_text().splitlines():
        if not line.startswith("#"):
            cells = [goal(*line.split(maxsplit=1), rows) for rows in rows_of.values()]
            yield cells[0][:2] + [cell for measured in cells for cell in measured[2:]]


def machine(results):
    contexts = [json.loads(path.read_text())["context"] for path in results]
    first = contexts[0]
    packages = [f"{key.removeprefix('package ')} {version}" for key, version in first.items()
                if key.startswith("package ")]
    caches = [f"L{cache['level']} {cache['type'].lower()} {cache['size'] >> 10:,} KB"
              for cache in first["caches"]]
    loads = sorted(context["load_avg"][0] for context in contexts)
    yield ["", ""]
    yield ["Measured", f"{first['date'][:10]}, at a load of {loads[0]:.1f} to {loads[-1]:.1f}, the "
                       "benchmarks' own of 1 included"]
    yield ["Machine", f"{first['cpu']}, {first['num_cpus']} processors of {first['mhz_per_cpu']:,} MHz"]
    yield ["Caches", ", ".join(caches)]
    yield ["System", f"Debian 12, {first['kernel']}"]
    yield ["Compiler", first["compiler"]]
    yield ["Packages", ", ".join(packages)]


def geometric(ratios):
    return math.exp(sum(map(math.log, ratios)) / len(ratios))


def bars(rows, group_of):
    """group -> peer -> (mean, least, most), the peers by their mean."""
    ratios = {}
    for row in rows:
        peers = ratios.setdefault(group_of(row), {})
        for peer in row.peers:
            peers.setdefault(peer, []).append(row.ratio(peer))
    spans = {}
    for group, peers in ratios.items():
        if peers:
            span = {peer: (geometric(some), min(some), max(some)) for peer, some in peers.items()}
            spans[group] = dict(sorted(span.items(), key=itemgetter(1)))
    return spans


def by_worst(groups):
    return dict(sorted(groups.items(), key=lambda item: min(item[1].values())))


def file_name(*words):
    return "-".join(words).replace(" ", "-") + ".svg"


def write_docs(rows_of, curves, results):
    """Of each target's rows; the charts and the curves are of the first one."""
    PICTURES.mkdir(exist_ok=True)
    rows = next(iter(rows_of.values()))
    charts.ratios(bars(rows, lambda row: row.subject), PICTURES / "ratios.svg")
    blocks = {"machine": markdown(machine(results)), "goals": markdown(goals(rows_of))}
    for subject, group in by_subject(rows).items():
        operations = by_worst(bars(group, lambda row: row.operation))
        charts.ratios(operations, PICTURES / file_name("ratios", subject))
        tables = [f"{target}:\n\n" + markdown(table(by_subject(of_target)[subject], "**{}**"), "---:")
                  for target, of_target in rows_of.items()]
        blocks[f"table:{subject}"] = "\n\n".join(tables)
    for subject, (unit, panels) in curves.items():
        charts.curves(unit, panels, PICTURES / file_name("size", subject))

    text = DOCUMENT.read_text()
    for name, block in blocks.items():
        text, count = re.subn(rf"(<!-- {name} -->\n).*?(<!-- /{name} -->)",
                              lambda match: f"{match[1]}\n{block}\n\n{match[2]}", text, flags=re.S)
        if count != 1:
            sys.exit(f"report: {DOCUMENT.name} has {count} blocks named {name}")
    DOCUMENT.write_text(text)


TARGETS = ["i386", "x86_64"]


def main():
    folders = [pathlib.Path(name) for name in sys.argv[1:] if not name.startswith("-")]
    results = [sorted(folder.glob("*.json")) for folder in folders]
    rows = [read_rows(files) for files in results]
    for of_folder in rows:
        plain(of_folder)
    if "--write-docs" in sys.argv:
        write_docs(dict(zip(TARGETS, rows)), read_curves(results[0]), sum(results, []))


main()
