#!/usr/bin/env python3
"""Writes tests/exact/data/money_vectors.tsv: expected results of money arithmetic and text,
computed with Python's integers and decimals. The output never varies."""
import pathlib
import random
from decimal import Decimal, ROUND_HALF_UP

ONE = 10000
WIDE = (-(2**63), 2**63 - 1)
SMALL = (-(2**31), 2**31 - 1)
OK, OVERFLOW, DIVZERO = 0, 1, 3


def half_away(numerator, denominator):
    quotient, rest = divmod(abs(numerator), denominator)
    quotient += 2 * rest >= denominator
    return -quotient if numerator < 0 else quotient


def truncated(numerator, denominator):
    quotient = abs(numerator) // abs(denominator)
    return -quotient if (numerator < 0) != (denominator < 0) else quotient


OPERATIONS = {
    "add": lambda a, b: a + b,
    "sub": lambda a, b: a - b,
    "mul": lambda a, b: half_away(a * b, ONE),
    "div": lambda a, b: truncated(a * ONE, b),
}


def expected(name, a, b, limits):
    if name == "div" and b == 0:
        return DIVZERO, 0
    result = OPERATIONS[name](a, b)
    return (OK, result) if limits[0] <= result <= limits[1] else (OVERFLOW, 0)


def magnitude(rng, bits):
    return rng.getrandbits(rng.randint(1, bits))


def operands(rng, name, limits, count):
    """Edges first, then random pairs, half of them chosen so that the result is near a limit."""
    bits = limits[1].bit_length()
    edges = [0, 1, -1, ONE, -ONE, 5000, 2**32, 2**32 - 1, limits[0], limits[1]]
    edges = [edge for edge in edges if limits[0] <= edge <= limits[1]]
    share = 0.15
    pairs = {(a, b) for a in edges for b in edges if rng.random() < share}
    while len(pairs) < count:
        a = magnitude(rng, bits)
        b = magnitude(rng, bits)
        if name in ("mul", "div") and rng.random() < 0.5 and a > ONE:
            near = limits[1] * ONE // a if name == "mul" else a * ONE // limits[1]
            b = max(near + rng.randint(-2, 2), 0)
        if name in ("mul", "div") and rng.random() < 0.2:
            b = (b | 2**32) if limits is WIDE else b | 2**16
        a, b = (value * rng.choice((1, -1)) for value in (a, b))
        if all(limits[0] <= value <= limits[1] for value in (a, b)):
            pairs.add((a, b))
    return sorted(pairs)


# Wide divisions whose estimated digit is too large, by one and by two; a product that is rounded up
# to 2^64 units.
CHOSEN = {"div8": [(8716914761532992418, 634566597789), (-8696966597387106895, 1267494613873),
                   (4415675843282165906, -385414479208607)],
          "mul8": [(9222449791875588249, 20002)]}


def formatted(value, decimals, grouped):
    kept = (Decimal(abs(value)) / ONE).quantize(Decimal(1).scaleb(-decimals), ROUND_HALF_UP)
    return ("-" if value < 0 else "") + (f"{kept:,}" if grouped else f"{kept}")


def spread(rng, count):
    return [magnitude(rng, 63) * rng.choice((1, -1)) for _ in range(count)]


def format_rows(rng):
    edges = [0, 1, -1, 49, -49, 50, -50, 9999, 99995, 9999499, 9999500, -9999950, WIDE[0], WIDE[1]]
    for value in edges + spread(rng, 4):
        decimals = rng.randint(1, 4)
        grouped = rng.random() < 0.5
        yield value, decimals, grouped, formatted(value, decimals, grouped)


def read(text):
    """Four decimals are kept, the fifth rounds, later ones do not count."""
    negative = text.startswith("-")
    integer, _, fraction = text.lstrip("+-").replace(",", "").partition(".")
    fraction = fraction.ljust(5, "0")
    units = int(integer or "0") * ONE + int(fraction[:4])
    fifth = int(fraction[4])
    if negative and units == -WIDE[0] and fifth > 0:
        return OVERFLOW, 0
    units += fifth >= 5
    value = -units if negative else units
    return (OK, value) if WIDE[0] <= value <= WIDE[1] else (OVERFLOW, 0)


def parse_rows(rng):
    for half in ("0.00005", "-0.00005"):
        yield (half, *read(half))
    for value in spread(rng, 6) + [WIDE[0], WIDE[1]] * 4:
        text = formatted(value, 4, rng.random() < 0.4)
        if rng.random() < 0.7:
            text += str(rng.choice((0, 1, 4, 5, 9))) + str(rng.randint(0, 99)) * rng.randint(0, 2)
        elif rng.random() < 0.5:
            text = text[: -rng.randint(1, 4)]
        else:
            text = text.replace(".", rng.choice(("", "0.")))
        if value > 0 and rng.random() < 0.3:
            text = "+" + text
        yield (text, *read(text))


def main():
    rng = random.Random(20010203)
    rows = []
    for size, limits, count in (("8", WIDE, 24), ("4", SMALL, 12)):
        for name in OPERATIONS:
            pairs = operands(rng, name, limits, count if name in ("mul", "div") else 0)
            for a, b in pairs + CHOSEN.get(name + size, []):
                rows.append((name + size, a, b, *expected(name, a, b, limits)))
    for value, decimals, grouped, text in format_rows(rng):
        rows.append(("format", value, decimals, int(grouped), text))
    for row in parse_rows(rng):
        rows.append(("parse", *row))
    vectors = pathlib.Path(__file__).parent.parent / "tests/exact/data/money_vectors.tsv"
    vectors.write_text("".join("\t".join(map(str, row)) + "\n" for row in rows), encoding="ascii")


if __name__ == "__main__":
    main()
