#!/usr/bin/python3
"""The dictionary orders of the shipped home against ICU's, which count neither case nor accents
here either: every pair of words in the lists of words.txt that the character set can write. That of
UTF-8 goes by code points, which fold as ICU's do.

usage: sort_test.py HOME [--write]

sort_differences.txt counts for each list the pairs in another order than that of ICU's root order
with the set's script in front, and than that of ICU's order for the language; --write writes it
anew.
"""
import pathlib
import sys

import icu


def weights(charset):
    """A translation of bytes to their weights."""
    for line in (HOME / f"charsets/{charset}/dictionary.srt").read_text("ascii").splitlines():
        if line.startswith("weights = "):
            return bytes.fromhex(line.split(" = ")[1])
    raise SystemExit(f"{charset}: no weights")


def codes(charset):
    """The code units of single bytes."""
    table = {}
    for line in (HOME / f"charsets/{charset}/{charset}.ctb").read_text("ascii").splitlines():
        if line.startswith("single = "):
            first, run = line.split(" = ")[1].split(", ")
            for at in range(len(run) // 4):
                table.setdefault(chr(int(run[4 * at:4 * at + 4], 16)), int(first, 16) + at)
    return table


def order(left, right):
    return (left > right) - (left < right)


def sort_keys(collator, words):
    collator.setStrength(icu.Collator.PRIMARY)
    return [collator.getSortKey(word) for word in words]


def root_order(charset):
    return icu.RuleBasedCollator(f"[reorder {SCRIPTS[charset]}]" if charset in SCRIPTS else "")


def count_differences(left, right):
    return sum(order(left[at], left[other]) != order(right[at], right[other])
               for at in range(len(left)) for other in range(at))


def check_folds():
    folds = {}
    for line in (HOME / "charsets/utf8/dictionary.srt").read_text("ascii").splitlines():
        if line.startswith("fold = "):
            first, last, step, to = (int(field, 0) for field in line[7:].split(", "))
            folds.update((code, to + code - first) for code in range(first, last + 1, step))
    theirs = {code: icu.Char.foldCase(code) for code in range(0x110000)}
    wrong = [hex(code) for code, to in theirs.items() if folds.get(code, code) != to]
    if wrong:
        raise SystemExit(f"utf8: these code points do not fold as ICU's: {wrong}")


SCRIPTS = {"iso_5": "Cyrl", "koi8u": "Cyrl", "cp1251": "Cyrl", "iso_7": "Grek", "iso_8": "Hebr",
           "iso_6": "Arab", "iso11": "Thai"}
HOME, TESTS = pathlib.Path(sys.argv[1]), pathlib.Path(__file__).parent
check_folds()
lines = ["# language, character set, pairs of words",
         "# in another order than ICU's root with the script in front, and than ICU's for the language"]
for line in (TESTS / "words.txt").read_text("utf-8").splitlines():
    language, charset, *words = line.split(" ")
    table, weight_of = codes(charset), weights(charset)
    words = [word for word in words if all(char in table for char in word)]
    ours = [bytes(weight_of[table[char]] for char in word) for word in words]
    numbers = [len(words) * (len(words) - 1) // 2]
    for collator in (root_order(charset), icu.Collator.createInstance(icu.Locale(language))):
        numbers.append(count_differences(ours, sort_keys(collator, words)))
    lines.append(" ".join(map(str, (language, charset, *numbers))))
found = "\n".join(lines) + "\n"
listed = TESTS / "sort_differences.txt"
if "--write" in sys.argv:
    listed.write_text(found, encoding="ascii")
if listed.read_text("ascii") != found:
    raise SystemExit(f"the differences are not those of {listed.name}:\n{found}")
