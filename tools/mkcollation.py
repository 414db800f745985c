#!/usr/bin/env python3
"""Writes tools/home/collation.json: the primary weights of Unicode's root collation for the
characters of the single-byte character sets.

The source is /usr/share/unicode/cldr/common/uca/allkeys_CLDR.txt of the Debian package
unicode-cldr-core, or the file that is named.
"""
import json
import pathlib
import re
import sys

from home.charsets import CHARSETS, SINGLE, decode

SOURCE = "/usr/share/unicode/cldr/common/uca/allkeys_CLDR.txt"


def main():
    wanted = {decode(charset.codec, bytes((byte,))) for charset in CHARSETS.values()
              if charset.kind == SINGLE for byte in range(256)}
    primaries, version = {}, ""
    for line in pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else SOURCE).open(encoding="utf-8"):
        if line.startswith("@version"):
            version = line.split()[1]
        entry = re.match(r"([0-9A-F]{4})\s*; ([^#]*)", line)
        if entry and chr(int(entry.group(1), 16)) in wanted:
            elements = re.findall(r"\[[.*]([0-9A-F]{4})", entry.group(2))
            weights = [int(primary, 16) for primary in elements]
            primaries[entry.group(1)] = [weight for weight in weights if weight != 0]
    target = pathlib.Path(__file__).parent / "home/collation.json"
    lines = ",\n".join(f'"{code}": {weights}' for code, weights in sorted(primaries.items()))
    target.write_text(f'{{"version": "{version}", "primaries": {{\n{lines}\n}}}}\n', encoding="ascii")


if __name__ == "__main__":
    main()
