#!/usr/bin/env python3
"""Writes tests/intl/charset_vectors.inc: for each character set of the localization home how many
byte sequences and Unicode characters it has, and checksums of its conversions from and to Unicode,
from Python's codecs. The output never varies."""
import pathlib

from home.charsets import CHARSETS, QUADRUPLES, REPLACEMENTS, TRIPLE_LEADS, decode


def fnv(numbers):
    """FNV-1a, fed with whole numbers."""
    checksum = 2166136261
    for number in numbers:
        checksum = (checksum ^ number) * 16777619 % 2**32
    return checksum


def decoding(codec):
    """(bytes as a number, code unit) of each sequence of up to three bytes, in their order."""
    for byte in range(256):
        char = decode(codec, bytes((byte,)))
        if char is not None:
            yield byte, ord(char)
            continue
        for second in range(256):
            char = decode(codec, bytes((byte, second)))
            if char is not None:
                yield byte << 8 | second, ord(char)
            elif byte == TRIPLE_LEADS.get(codec):
                for third in range(256):
                    char = decode(codec, bytes((byte, second, third)))
                    if char is not None:
                        yield byte << 16 | second << 8 | third, ord(char)


def encoding(codec):
    """The bytes of every character; of one that the set lacks, none."""
    for code in range(0x110000 if codec == QUADRUPLES else 0x10000):
        if 0xD800 <= code < 0xE000:
            continue
        try:
            data = chr(code).encode(codec)
        except UnicodeEncodeError:
            data = b""
        # Some characters only have bytes that stand for a similar one, or are spelled out in eight.
        yield data if len(data) <= 4 and data.decode(codec, "replace") == chr(code) else b""


vectors = pathlib.Path(__file__).parent.parent / "tests/intl/charset_vectors.inc"
with open(vectors, "w", encoding="ascii") as out:
    out.write("// Written by tools/mkvectors_charset.py.\n")
    for name, charset in CHARSETS.items():
        if name == "utf8":
            continue
        pairs = list(decoding(charset.codec))
        texts = list(encoding(charset.codec))
        replacement = REPLACEMENTS.get(name, "?").encode(charset.codec)
        data = b"".join(text or replacement for text in texts)
        out.write(f'{{"{name}", {len(pairs)}, {sum(map(bool, texts))}, '
                  f'0x{fnv(number for pair in pairs for number in pair):08X}, '
                  f'0x{fnv(data):08X}, {1 if charset.codec == QUADRUPLES else 0}}},\n')
