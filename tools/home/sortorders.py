"""Sort orders: the .srt files of the character sets; the dictionary's from collation.json
(tools/mkcollation.py) and Python's case folding."""
import json
import pathlib
import unicodedata

from .charsets import CHARSETS, SINGLE, decode

with open(pathlib.Path(__file__).parent / "collation.json", encoding="ascii") as file:
    PRIMARIES = {chr(int(code, 16)): weights
                 for code, weights in json.load(file)["primaries"].items()}

SORT_ORDERS = {"binary": 1, "nocase": 2, "dictionary": 3}


def nocase_weights(name):
    """Small letters weigh as their capitals; all else keeps its byte order."""
    codec, charset_class = CHARSETS[name][1:3]
    weights = bytearray(range(256))
    limit = 256 if charset_class == SINGLE else 128
    for byte in range(limit):
        char = decode(codec, bytes((byte,)))
        if char is None or len(char.upper()) != 1 or char.upper().lower() != char:
            continue
        try:
            weights[byte] = char.upper().encode(codec)[0]
        except UnicodeEncodeError:
            pass
    return weights.hex().upper()


# Sets of another script, whose letters go before the Latin ones.
SCRIPTS = {charset: script for script, charsets in {
    "CYRILLIC": ("iso_5", "koi8", "koi8u", "cp1251", "cp855", "cp866"),
    "GREEK": ("iso_7", "cp1253"),
    "HEBREW": ("iso_8", "cp1255"),
    "ARABIC": ("iso_6", "cp1256"),
    "THAI": ("iso11", "cp874"),
}.items() for charset in charsets}


def alphabet_key(char, script):
    """What a character sorts by: its part of the alphabet, then its primary weights."""
    if char is None or char not in PRIMARIES:
        return 3 + (char is None), []
    weights = PRIMARIES[char]
    if weights < PRIMARIES["a"]:
        return 0, weights
    return 1 if script and unicodedata.name(char).startswith(script) else 2, weights


def dictionary_weights(name):
    """The place of each byte in the alphabet, where case and accents do not count; what is no
    character comes last. A character that sorts as several comes after the first of them."""
    chars = [decode(CHARSETS[name].codec, bytes((byte,))) for byte in range(256)]
    keys = [alphabet_key(char, SCRIPTS.get(name)) for char in chars]
    order = sorted(keys)
    order = [key for at, key in enumerate(order) if at == 0 or key != order[at - 1]]
    return bytes(order.index(key) for key in keys).hex().upper()


def folded(code):
    char = chr(code)
    for form in (char.casefold(), char.lower()):
        if len(form) == 1:
            return ord(form)
    return code


def fold_runs():
    """(first, last, step, to) of code points that fold alike."""
    runs = []
    for code in range(0x110000):
        to = code if 0xD800 <= code < 0xE000 else folded(code)
        if to == code:
            continue
        if runs:
            first, last, step, start = runs[-1]
            gap = code - last
            if gap <= 2 and step in (0, gap) and to - start == code - first:
                runs[-1] = first, code, gap, start
                continue
        runs.append((code, code, 0, to))
    return [(first, last, step or 1, to) for first, last, step, to in runs]


def has_order(name, order):
    return order != "dictionary" or CHARSETS[name].kind == SINGLE or name == "utf8"


def sort_order(name, order):
    lines = [f"; Sort order {order} of {name}.", "[sortorder]"]
    if order == "binary":
        return lines + ['description = "by byte values"', "kind = binary"]
    if order == "nocase":
        return lines + ['description = "by byte values, small letters as capitals"',
                        "kind = weights", f"weights = {nocase_weights(name)}"]
    if name == "utf8":
        return lines + ['description = "by code points, capitals as small letters"',
                        "kind = folded"] + [f"fold = 0x{first:X}, 0x{last:X}, {step}, 0x{to:X}"
                                            for first, last, step, to in fold_runs()]
    return lines + ['description = "by the alphabet; case and accents do not count"',
                    "kind = weights", f"weights = {dictionary_weights(name)}"]
