#!/usr/bin/env python3
"""Writes tests/intl/charset_vectors.inc: for each character set of the localization home how many
characters it has and checksums of its conversions from and to Unicode, from Python's codecs. The
output never varies.

A character converts both ways or not at all: of several byte sequences for one character that one
counts which the character encodes to."""
import pathlib

CODECS = {"ascii": "ascii", "iso_1": "latin_1", "iso15": "iso8859_15", "cp437": "cp437",
          "cp850": "cp850", "cp1252": "cp1252", "koi8": "koi8_r", "sjis": "shift_jis",
          "cp936": "gbk"}


def fnv(number, checksum):
    """FNV-1a, fed with whole numbers."""
    return (checksum ^ number) * 16777619 % 2**32


def character(codec, data):
    try:
        text = data.decode(codec)
    except UnicodeDecodeError:
        return None
    return ord(text) if len(text) == 1 and text.encode(codec) == data else None


def decoding(codec):
    for byte in range(256):
        code = character(codec, bytes((byte,)))
        if code is not None:
            yield byte, code
            continue
        for second in range(256):
            code = character(codec, bytes((byte, second)))
            if code is not None:
                yield byte << 8 | second, code


def encoding(codec):
    for code in range(0x10000):
        if 0xD800 <= code < 0xE000:
            continue
        try:
            data = chr(code).encode(codec)
        except UnicodeEncodeError:
            continue
        if character(codec, data) == code:
            yield code, int.from_bytes(data, "big")


def checksum(pairs):
    result = 2166136261
    for left, right in pairs:
        result = fnv(right, fnv(left, result))
    return result


vectors = pathlib.Path(__file__).parent.parent / "tests/intl/charset_vectors.inc"
with open(vectors, "w", encoding="ascii") as out:
    out.write("// Written by tools/mkvectors_charset.py.\n")
    for name, codec in CODECS.items():
        characters = list(decoding(codec))
        out.write(f'{{"{name}", {len(characters)}, 0x{checksum(characters):08X}, '
                  f'0x{checksum(encoding(codec)):08X}}},\n')
