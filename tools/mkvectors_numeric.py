#!/usr/bin/env python3
"""Writes the test vectors of exact numerics, tests/exact/data/numeric_*.tsv.

The expected results come from the rules, on Python's integers of any size: a value is a sign
and a magnitude, a length is what limits it. Values are written as decimal integers, "-0" for a
zero with the negative sign. The same vectors come out of every run.

  tools/mkvectors_numeric.py [DIRECTORY]
"""
import pathlib
import random
import struct
import sys
from decimal import ROUND_DOWN, ROUND_HALF_UP, Context, Decimal, localcontext

OK, OVERFLOW, SYNTAX, DIVZERO, TRUNCATED = 0, 1, 2, 3, 6
CODES = {OK: 1, OVERFLOW: -101, SYNTAX: -105, DIVZERO: -108, TRUNCATED: -101}
DOMAIN, CUT = -107, -113
MAX = 77
rng = random.Random(20)


def length(precision):
    """Bytes of a precision: a sign and 10^p - 1, at least two."""
    return 1 + max(1, ((10**precision - 1).bit_length() + 7) // 8)


def room(size):
    return 256 ** (size - 1)


class Value:
    def __init__(self, negative, magnitude):
        self.negative, self.magnitude = bool(negative), magnitude

    def __str__(self):
        return ("-" if self.negative else "") + str(self.magnitude)


class Numeric(Value):
    def __init__(self, precision, scale, value, negative=None):
        super().__init__(value < 0 if negative is None else negative, abs(value))
        self.precision, self.scale = precision, scale

    def __str__(self):
        return f"{self.precision},{self.scale},{super().__str__()}"


ZERO = Value(False, 0)
EMPTY = Numeric(77, 0, 0)


def scaled(magnitude, change):
    """Status and magnitude * 10^change."""
    if abs(change) > MAX:
        return OVERFLOW, 0
    if change >= 0:
        return OK, magnitude * 10**change
    quotient, rest = divmod(magnitude, 10**-change)
    return (TRUNCATED if rest else OK), quotient


def exceeds(magnitude, precision):
    return precision <= MAX and magnitude >= 10**precision


def finish(value, change, precision, size):
    """Status and value of a signed operation's last step."""
    status, magnitude = scaled(value.magnitude, change)
    if status == OVERFLOW or exceeds(magnitude, precision) or magnitude >= room(size):
        return OVERFLOW, ZERO
    return status, Value(value.negative, magnitude)


def add_or_subtract(a, b, opn, precision, scale, size):
    b_negative = b.negative != bool(opn)
    if a.negative == b_negative:
        value, base = Value(a.negative, a.magnitude + b.magnitude), a.scale
    elif a.magnitude == b.magnitude:
        return OK, ZERO
    elif a.magnitude < b.magnitude:
        value, base = Value(b_negative, b.magnitude - a.magnitude), b.scale
    else:
        value, base = Value(a.negative, a.magnitude - b.magnitude), a.scale
    if value.magnitude >= room(size):
        return OVERFLOW, ZERO
    return finish(value, scale - base, precision, size)


def multiply(a, b, precision, scale, size):
    product = a.magnitude * b.magnitude
    value = Value(product and a.negative != b.negative, product)
    straight = precision >= a.precision + b.precision and scale == a.scale + b.scale
    if not straight and product >= room(33):
        return OVERFLOW, ZERO
    return finish(value, scale - a.scale - b.scale, precision, size)


def divide(a, b, precision, scale, size):
    if b.magnitude == 0:
        return DIVZERO, None
    change = scale - a.scale + b.scale
    if abs(change) > MAX:
        return OVERFLOW, ZERO
    dividend = a.magnitude * 10 ** max(change, 0)
    divisor = b.magnitude * 10 ** max(-change, 0)
    used = (dividend.bit_length() + 7) // 8
    by = (divisor.bit_length() + 7) // 8
    if used + (used - by + 1 if used >= by else 0) + 1 > 132:
        return OVERFLOW, ZERO
    quotient = dividend // divisor
    return finish(Value(quotient and a.negative != b.negative, quotient), 0, precision, size)


def compare(a, b):
    if a.negative != b.negative:
        if a.magnitude == b.magnitude == 0:
            return 0
        return -1 if a.negative else 1
    low, high = (a, b) if a.scale < b.scale else (b, a)
    left, right, gap = low.magnitude, high.magnitude, high.scale - low.scale
    if low.precision + high.scale > MAX:
        right //= 10**gap
    else:
        left *= 10**gap
    order = (left > right) - (left < right)
    if low is not a:
        order = -order
    return -order if a.negative else order


def rescale(value, scale, to_precision, to_scale):
    """Status and value of the conversion between numerics."""
    size = length(to_precision)
    if value.magnitude >= room(size):
        return OVERFLOW, ZERO
    status, magnitude = scaled(value.magnitude, to_scale - scale)
    if status == TRUNCATED:
        return status, Value(value.negative, magnitude)
    if exceeds(magnitude, to_precision):
        return OVERFLOW, ZERO
    return OK, Value(value.negative, magnitude)


def limited(digits, scale):
    digits, scale = min(digits, MAX), min(scale, MAX)
    precision = max(1, min(scale + digits, MAX))
    return precision, min(scale, precision - digits)


def valid(n):
    return 1 <= n.precision <= MAX and n.scale <= MAX


def numeric_sum(a, b, opn):
    if not (valid(a) and valid(b)):
        return str(DOMAIN)
    digits = min(max(a.precision - a.scale, b.precision - b.scale), MAX)
    scale = max(a.scale, b.scale)
    precision = min(scale + digits + 1, MAX)
    scale = min(scale, precision - digits)
    if (a.precision, a.scale) != (b.precision, b.scale):
        operands = []
        for n in (a, b):
            status, value = OK, n
            if (n.precision, n.scale) != (precision, scale):
                status, value = rescale(n, n.scale, precision, scale)
            if status != OK:
                return result(CUT if status == TRUNCATED else CODES[status], precision, scale, ZERO)
            operands.append(Numeric(precision, scale, value.magnitude, value.negative))
        a, b = operands
    status, value = add_or_subtract(a, b, opn, precision, scale, length(precision))
    return result(CODES[status], precision, scale, value)


def numeric_product(a, b):
    if not (valid(a) and valid(b)):
        return str(DOMAIN)
    size = limited(a.precision - a.scale + b.precision - b.scale + 1, a.scale + b.scale)
    status, value = multiply(a, b, *size, length(size[0]))
    return result(CODES[status], *size, value)


def numeric_quotient(a, b):
    if not (valid(a) and valid(b)):
        return str(DOMAIN)
    size = limited(b.scale + a.precision - a.scale, max(b.scale + a.precision + 1, 6))
    status, value = divide(a, b, *size, length(size[0]))
    return result(CODES[status], *size, value)


def result(code, precision, scale, value):
    return f"{code},{precision},{scale}" + ("" if value is None else f",{value}")


# --- operands


def digits(count):
    return rng.randrange(10 ** (count - 1), 10**count) if count else 0


def operand():
    precision = rng.choice([1, 2, 3, 5, 9, 10, 18, 19, 20, 27, 37, 38, 39, 57, 75, 76, 77])
    scale = rng.choice([0, 0, rng.randint(0, precision), rng.randint(0, precision), precision])
    kind = rng.random()
    if kind < 0.65:
        magnitude = digits(rng.randint(1, precision))
    elif kind < 0.75:
        magnitude = 10 ** rng.randint(0, precision - 1) * rng.choice([1, 5])
    elif kind < 0.85:
        magnitude = 10**precision - rng.choice([1, 1, 2])
    elif kind < 0.9:  # sparse limbs, which divisions estimate badly
        magnitude = sum(rng.choice([0, 1, 2**31, 2**32 - 1]) << 32 * n for n in range(8))
        magnitude %= 10**precision
    elif kind < 0.95:
        magnitude = rng.choice([0, 0, 1])
    else:  # more than the precision holds
        magnitude = room(length(precision)) - rng.choice([1, 2])
    return Numeric(precision, scale, magnitude, rng.random() < 0.4)


PAIRS = [
    ((1, 0, 1), (1, 1, 5)),
    ((1, 0, 1), (1, 0, 3)),
    ((77, 0, 5), (6, 5, 500001)),  # the comparison's exception
    ((72, 0, 5), (6, 5, 500001)),
    ((41, 0, 10**40), (41, 0, 10**40)),  # more than 33 bytes of product
    ((41, 40, 10**40), (41, 40, 10**40)),  # ... though the scaled product would fit
    ((77, 77, 10**76), (77, 0, 10**76)),
    ((77, 77, 10**76 + 1), (77, 0, 1)),  # the limit costs nonzero decimals
    ((77, 77, 10**76), (77, 0, 1)),
    ((77, 77, 10**77 - 1), (77, 77, 10**77 - 1)),
    ((77, 0, 10**77 - 1), (77, 0, 1)),
    ((77, 0, 10**77 - 1), (77, 77, 1)),
    ((77, 0, room(33) - 1), (77, 77, 1)),  # the widest dividend and quotient
    ((1, 77, 1), (1, 77, 1)),  # scales above precisions
    ((1, 77, 9), (77, 0, 3)),
    ((1, 5, 9), (2, 9, 99)),
    ((38, 38, 10**38 - 1), (38, 38, 10**38 - 1)),
    ((1, 0, 255), (1, 0, 255)),  # magnitudes above the precision
    ((3, 0, 65535), (2, 1, 255)),
    ((5, 2, -0.0), (5, 2, -0.0)),  # zeros with a sign
    ((5, 2, -0.0), (7, 1, 0)),
    ((5, 2, -12345), (5, 2, -12345)),
    ((5, 2, 12345), (5, 2, -12345)),
    ((0, 0, 1), (1, 0, 1)),
    ((1, 0, 1), (78, 0, 1)),
    ((255, 255, 1), (1, 0, 0)),
    ((5, 78, 1), (5, 0, 1)),
    ((0, 9, 7), (0, 200, 9)),
    ((19, 0, 10**19 - 1), (19, 0, 10**19 - 1)),  # the longest magnitudes of 64 bits
    ((19, 0, 10**19 - 1), (19, 19, -(10**19 - 1))),  # ... brought to one scale in 128 bits
    ((19, 0, 5), (19, 20, 7)),
    ((20, 0, 10**19), (19, 2, -1)),
    ((19, 60, 3), (19, 58, 4)),
    ((19, 0, 2**64 - 1), (18, 1, 2**64 - 1)),
    ((4, 2, -1234), (5, 3, -12340)),
    ((4, 2, -1234), (5, 3, 12341)),
    ((2, 0, -0.0), (3, 1, 0)),
    # Lengths in bits show the order, or leave it open by a bit.
    ((38, 2, 10**36), (38, 4, 2 * 10**38 - 1)),
    ((38, 2, 10**35), (38, 4, 2 * 10**38)),
    ((38, 2, -(10**36)), (38, 4, -(10**38))),
    ((38, 2, 10**36), (38, 4, 10**38 - 1)),
    ((10, 0, 2**31), (30, 20, 2**32 * 10**20)),
    ((10, 0, 2**32 - 1), (30, 20, 2**31 * 10**20)),
    ((20, 2, 2**40), (20, 4, 2**47 - 1)),  # ... the wrong way round
    ((20, 2, 2**40 - 1), (20, 3, 2**43)),
    ((60, 0, 1), (60, 30, 2 * 10**30 - 1)),
    ((8, 2, 2**24 - 1), (9, 4, 2**24)),  # the first of four bytes is 0
    ((7, 2, 10**6), (9, 4, 10**8)),  # fewer bytes
    ((7, 2, 10**6), (30, 4, 10**8 + 1)),
    ((38, 2, 7), (38, 4, 699)),  # small values in long records
    ((38, 2, 7), (38, 4, 700)),
    ((38, 2, 7), (38, 4, 7000)),
    ((36, 2, 2**23), (36, 4, 1)),  # ... of which the last three bytes are all
    ((36, 2, 2**24), (36, 4, 2**23)),
    ((36, 2, -(2**24)), (36, 4, -(2**96))),
    ((36, 2, -1), (36, 4, 1)),
    ((36, 2, -0.0), (36, 4, 1)),
    ((36, 2, -0.0), (36, 4, 0)),
    ((77, 2, 1), (77, 4, -(10**70))),
    ((60, 0, 5), (60, 30, 6 * 10**30 - 1)),  # decimals that do not count
    ((60, 0, 3), (60, 30, 7 * 10**30)),
    ((60, 0, -3), (60, 30, -(15 * 10**30))),
    ((60, 0, 10**40), (77, 30, 10**70 + 10**30 - 1)),
    ((200, 2, 10**60), (38, 4, 10**30)),  # out of range
    ((38, 2, 10**36), (78, 4, 10**38)),
    ((38, 2, 10**30), (38, 90, 10**36)),
    # Products of 16 bytes, beyond their precision in each limb, at it, and of every length.
    ((38, 0, 2**128 - 1), (38, 0, -(2**128 - 1))),
    ((38, 19, -(10**38 - 1)), (38, 20, 10**38 - 1)),
    ((20, 0, 2**72 - 1), (20, 0, 2**72 - 1)),
    ((20, 0, 10**21), (20, 0, 10**20)),
    ((20, 0, 10**21), (20, 0, -(10**20 - 1))),
    ((20, 0, -0.0), (38, 0, 5)),
    ((38, 2, -5), (30, 2, 0)),
    ((38, 2, -(2**64)), (38, 2, 2**64)),
    ((38, 2, 2**96 - 1), (25, 2, 2**64 - 1)),
    ((1, 0, 10**1 - 1), (20, 3, 10**20 - 1)),
    ((20, 0, 10**20 - 1), (2, 3, 10**2 - 1)),
    ((5, 0, 10**5 - 1), (38, 3, 10**38 - 1)),
    ((21, 0, 10**21 - 1), (24, 3, 10**24 - 1)),
    ((27, 0, 10**27 - 1), (29, 3, 10**29 - 1)),
    ((30, 0, 10**30 - 1), (31, 3, 10**31 - 1)),
    ((34, 0, 10**34 - 1), (37, 3, 10**37 - 1)),
    # A sum of more bytes than its operands' limbs; a larger operand beyond the sum's digits.
    ((38, 0, 10**38 - 1), (38, 19, 1 - 10**38)),
    ((20, 2, 1001 * 10**18), (21, 4, -2 * 10**20)),
]


def numeric(precision, scale, value):
    return Numeric(precision, scale, int(value), str(value).startswith("-"))


def operations():
    pairs = [(numeric(*a), numeric(*b)) for a, b in PAIRS]
    pairs += [(operand(), operand()) for _ in range(170)]
    for a in [operand() for _ in range(30)]:  # equal sizes, and values against themselves
        pairs.append((a, Numeric(a.precision, a.scale, digits(a.precision), rng.random() < 0.5)))
        pairs.append((a, a))
    for a, b in pairs:
        yield [a, b, numeric_sum(a, b, 0), numeric_sum(a, b, 1), numeric_product(a, b),
               numeric_quotient(a, b), compare(a, b)]


# --- the kernel, with lengths, precisions and scales that public operations do not ask for


def record(size=None):
    size = size or rng.choice([2, 3, 5, 9, 10, 17, 33])
    precision = rng.randint(1, MAX)
    return size, Numeric(precision, rng.randint(0, 20), rng.randrange(room(size)) >> rng.choice(
        [0, 0, 0, 8 * size // 2]), rng.random() < 0.4)


def widened(number):
    """Each limb of 32 bits as one of 64 bits, with its lower bits repeated between the ends."""
    wide = 0
    for at in range(0, number.bit_length(), 32):
        limb = number >> at & 0xFFFFFFFF
        middle = 0xFFFFFFFF if limb & 0x10000000 else 0
        high = limb >> 16 << 16 | (0xFFFF if middle else 0)
        low = (middle & 0xFFFF0000) | limb & 0xFFFF
        wide |= (high << 32 | low) << 2 * at
    return wide


def kernel():
    def row(function, op1, op2, target, argument, status, value, rest=""):
        show = lambda r: f"{r[0]},{r[1]}" if r else ""
        return [function, show(op1), show(op2), show(target), argument, status,
                "" if value is None else value, rest]

    def target(a, b=0):
        size = rng.choice([max(a, b) - 1, max(a, b), max(a, b) + 1, a + b + 1, 33])
        size = min(max(size, 2), 40)
        return size, Numeric(rng.randint(1, MAX), rng.randint(0, 25), 0)

    for _ in range(45):
        (n, a), (m, b) = record(), record()
        size, t = target(n, m)
        spec = (size, t)
        total = a.magnitude + b.magnitude
        yield row("intadd", (n, a), (m, b), spec, "", int(total >= room(size)),
                  total % room(size))
        gap = a.magnitude - b.magnitude
        yield row("intsub", (n, a), (m, b), spec, "", int(not 0 <= gap < room(size)),
                  gap % room(size))
        product = a.magnitude * b.magnitude
        over = product >= room(size)
        yield row("intmul", (n, a), (m, b), spec, "", int(over), None if over else product)
        opn = rng.randint(0, 1)
        status, value = add_or_subtract(a, b, opn, t.precision, t.scale, size)
        yield row("addorsub", (n, a), (m, b), spec, opn, status, value)
        status, value = multiply(a, b, t.precision, t.scale, size)
        yield row("mul", (n, a), (m, b), spec, "", status, value)
        status, value = divide(a, b, t.precision, t.scale, size)
        yield row("div", (n, a), (m, b), spec, "", status, value)
    # Divisions whose estimated digits only the second divisor limb corrects, or that have to be
    # corrected by adding the divisor back; of many limbs; and of so many that the room is not
    # enough.
    hard = [(0x7FFFFFFF_80000000_00000000_00000000, 0x80000000_00000000_00000001),
            (0x80000000_FFFFFFFE_00000000_00000000, 0x80000000_FFFFFFFF_FFFFFFFF),
            (0x80000000_00000000_00000003, 0x20000000_00000000_00000001),
            (0x3C9CF12C_80000000_00000000_FFFFFFFE_FFFFFFFE_80000000,
             0x80000000_00000000_7FFFFFFF_00000001),  # added back in the second place
            (0xFFFFFFFE_00000000_80000000_80000000_00000000_80000000_FFFFFFFE,
             0xFFFFFFFE_00000000_FFFFFFFE_FFFFFFFF),  # ... and in the fourth
            (0x80000000_00000000_00000000_FFFFFFFE, 0x80000000_80000000_FFFFFFFE)]  # both at once
    # The same on limbs of 64 bits, each with the bits of one above spread.
    hard += [tuple(widened(number) for number in pair) for pair in hard]
    for n, m in [(33, 17), (33, 9), (66, 33), (66, 34), (65, 2), (64, 2), (64, 8)] * 2:
        hard.append((rng.choice([rng.randrange(room(n)), room(n) - 1]), rng.randrange(1, room(m))))
    # Dividend, quotient and one byte more fill the work area, and exceed it by one.
    hard += [(room(67) - 1, 256), (room(67) - 1, 255)]
    for dividend, divisor in hard:
        n = 1 + (dividend.bit_length() + 7) // 8
        m = 1 + (divisor.bit_length() + 7) // 8
        used = (dividend.bit_length() + 7) // 8
        by = (divisor.bit_length() + 7) // 8
        over = used + used - by + 2 > 132
        yield row("intdiv", (n, Numeric(77, 0, dividend)), (m, Numeric(77, 0, divisor)),
                  (n, Numeric(77, 0, 0)), "", int(over), None if over else dividend // divisor,
                  "" if over else dividend % divisor)
    # A quotient, a remainder or a change of scale that there is no room for.
    wide, one = (66, Numeric(77, 0, 256**65 - 1)), (2, Numeric(77, 0, 1))
    yield row("intdiv", wide, one, (3, EMPTY), "", OVERFLOW, None)
    yield row("div", wide, one, (133, EMPTY), "", OVERFLOW, 0)
    yield row("div", (133, Numeric(77, 0, 256**132 - 1)), one, (33, EMPTY), "", OVERFLOW, 0)
    largest = (33, Numeric(77, 0, 10**77 - 1))
    yield row("div", largest, one, (33, Numeric(77, 77, 0)), "", OVERFLOW, 0)
    yield row("intquotient", largest, (2, Numeric(1, 0, 7)), (33, EMPTY), "", OK, (10**77 - 1) // 7)
    yield row("divrem", largest, (4, Numeric(7, 0, 10**6)), (33, EMPTY), 2, OVERFLOW, 0, 0)
    yield row("div", (2, Numeric(1, 0, 1)), (2, Numeric(1, 40, 1)), (33, Numeric(77, 38, 0)), "",
              OVERFLOW, 0)
    yield row("div", (2, Numeric(1, 39, 1)), (2, Numeric(1, 0, 1)), (33, Numeric(77, 117, 0)), "",
              OVERFLOW, 0)
    # Nothing is left of equal operands.
    yield row("addorsub", largest, largest, (33, EMPTY), 1, OK, 0)
    yield row("addorsub", (4, Numeric(7, 2, 7**8)), (9, Numeric(7, 2, 7**8, True)), (2, EMPTY), 0, OK, 0)
    for change in (77, -77, 78, -78):
        status, value = scaled(10**77 - 1, change)
        yield row("scale", (33, Numeric(77, 0, 10**77 - 1)), None, (66, EMPTY), change, status,
                  None if status == OVERFLOW else value)
    small = [(2, Numeric(5, 1, 7, sign)) for sign in (False, True)]  # 0.7 and -0.7
    for n, a in small + [record() for _ in range(30)]:
        size, t = target(n)
        change = rng.choice([0, 1, 3, 9, 10, 20, -1, -3, -9, -10, -20, 77, -77, 78, -78])
        status, value = scaled(a.magnitude, change)
        if status == OVERFLOW or value >= room(size):
            status, value = OVERFLOW, None
        else:
            value = Value(a.negative, value)
        yield row("scale", (n, a), None, (size, t), change, status, value)

        to = rng.choice([-3, 0, 1, 2, a.scale - 1, a.scale, a.scale + 5])
        removed = max(0, a.scale - to if to > 0 else min(a.scale - to, a.precision))
        quotient = a.magnitude
        last = 0
        for _ in range(removed):
            quotient, last = divmod(quotient, 10)
        value = (quotient + (last >= 5)) * 10**removed
        over = value >= room(size) or removed > MAX
        yield row("round", (n, a), None, (size, t), to, int(over),
                  None if over else Value(a.negative and value, value))

        for ceiling in (0, 1):
            quotient, rest = divmod(a.magnitude, 10**a.scale)
            quotient += bool(rest) and a.negative != bool(ceiling)
            over = quotient >= room(size)
            yield row("ceilingfloor", (n, a), None, (size, t), ceiling, int(over),
                      None if over else Value(a.negative and quotient, quotient))
    yield from small_operations(row)


def small_operations(row):
    """What works in place, questions and copies; then divisions that give a remainder, whose length
    is their argument."""
    for size, magnitude in [(4, 0x01FFFF), (4, 0xFFFFFF), (4, 0x000105), (2, 0), (2, 255), (3, 99),
                            (3, 255), (33, room(33) - 1), (33, 10**77 - 1), (133, room(133) - 1)]:
        a = Numeric(77, 3, magnitude, magnitude % 2)
        held = lambda value: Value(a.negative, value % room(size))
        in_place = lambda function, argument, status, value, rest="": row(
            function, None, None, (size, a), argument, int(status), held(value), rest)
        question = lambda function, argument, answer, of=a: row(
            function, (size, of), None, (2, EMPTY), argument, int(answer), None)
        yield in_place("needsbyte", "", magnitude == room(size) - 1, magnitude)
        yield in_place("inc", "", magnitude + 1 >= room(size), magnitude + 1)
        yield in_place("mulby10_add", 7, magnitude * 10 + 7 >= room(size), magnitude * 10 + 7)
        needed = 1 + max(1, (magnitude // 10).bit_length() + 7 >> 3)
        yield in_place("divby10", "", magnitude % 10, magnitude // 10, min(size, needed))
        for change in (1, -2):
            status, value = scaled(magnitude, change)
            over = value >= room(size)
            yield in_place("scale_in_place", change, OVERFLOW if over else status,
                           magnitude if over else value)
        for byte in (0, 99, 255):
            yield question("intcmp", byte, magnitude == byte)
        for precision in (2, 77):
            of = Numeric(precision, 3, magnitude)
            yield question("checkprecision", "", magnitude >= 10**precision, of)
        for to in (2, 3, 40):
            over = magnitude >= room(to)
            yield row("copy", (size, a), None, (to, EMPTY), "", int(over),
                      None if over else held(magnitude))
    numbers = [(3, Numeric(4, scale, value)) for scale in (0, 1) for value in (-70, 70, 700)]
    for a in numbers + [(2, Numeric(1, 0, 0, True)), (4, Numeric(5, 2, 0))]:
        for b in numbers:
            for flags in range(4):
                yield row("cmp", a, b, (2, EMPTY), flags, flagged(a[1], b[1], flags), None)
    # The other scale fits the first number's digits exactly; with a digit more it is cut.
    for precision in (72, 73):
        a, b = (34, Numeric(precision, 0, 5)), (4, Numeric(6, 5, 500001))
        yield row("cmp", a, b, (2, EMPTY), 3, flagged(a[1], b[1], 3), None)
    for a, b in [(-175, 3), (175, -3), (-175, -5), (2, 30), (-2, 30), (170, 1)]:
        # Tenths by integers; the remainder is in tenths.
        quotient, rest = divmod(abs(a), abs(b) * 10)
        yield row("divrem", (3, Numeric(3, 1, a)), (2, Numeric(2, 0, b)), (3, Numeric(5, 0, 0)), 9,
                  OK, Value(quotient and (a < 0) != (b < 0), quotient), Value(rest and a < 0, rest))


def flagged(a, b, flags):
    """The comparison with signs (1), scales (2), both or neither considered."""
    signed = [n if flags & 1 else Numeric(n.precision, n.scale, n.magnitude) for n in (a, b)]
    aligned = [Numeric(n.precision, n.scale if flags & 2 else 0, n.magnitude, n.negative)
               for n in signed]
    return compare(*aligned)


# --- conversions


def rescalings():
    sources = [(10, 8, 10**8), (3, 2, 125), (3, 2, -125), (3, 2, 120), (2, 1, -5), (5, 0, -0.0),
               (1, 0, 255), (77, 0, 10**77 - 1), (77, 77, 1), (0, 0, 1), (78, 0, 1), (5, 78, 1)]
    targets = [(2, 0), (2, 1), (10, 3), (77, 77), (77, 0), (1, 0), (0, 0), (78, 0), (266, 0),
               (5, 78), (5, -1), (-2562, -2562), (-2562, 1), (5, -2562), (0, 78)]
    cases = [(numeric(*s), t) for s in sources for t in targets]
    cases += [(operand(), (rng.randint(1, MAX), rng.randint(0, MAX))) for _ in range(60)]
    for n, (precision, scale) in cases:
        wanted = f"{precision},{scale}"
        precision = n.precision if precision == -2562 else precision
        scale = n.scale if scale == -2562 else scale
        if not valid(n):
            yield [n, wanted, DOMAIN]
        elif not 1 <= precision <= MAX:
            yield [n, wanted, -103]
        elif not 0 <= scale <= MAX:
            yield [n, wanted, -104]
        else:
            status, value = rescale(n, n.scale, precision, scale)
            code = CUT if status == TRUNCATED else CODES[status]
            yield [n, wanted, result(code, precision, scale, value)]


EXACT = Context(prec=400, Emax=10**6, Emin=-10**6)


def parsed(text, precision, scale, rounding):
    """Status and value of decimal text at a precision and scale."""
    with localcontext(EXACT):
        number = Decimal(text).scaleb(scale)
        units = number.to_integral_value(ROUND_HALF_UP if rounding else ROUND_DOWN)
        magnitude = abs(int(units))
        if magnitude >= 10**precision:
            return OVERFLOW, ZERO
        cut = not rounding and units != number
        return (TRUNCATED if cut else OK), Value(text.strip().startswith("-"), magnitude)


def texts():
    fixed = ["12.345", "0", "-0", "+7", "00012.500", "-12.345", ".5", "5.", "1e3", "1.5E-3", "-9.99",
             "12345678901234567890123456789012345678", "0.000000001", "1e77", "1e-77", "9" * 77,
             "9.95", "-0.05", "0.0049", "99.995", "0e99", "12e+1", "  42  ", "\t-1.25\t",
             "0." + "3" * 90, "1" + "0" * 90 + "e-90", "255", "256", "99"]
    made = []
    for _ in range(25):
        whole, part = rng.randint(0, 40), rng.randint(0, 40)
        text = "".join(rng.choice("0123456789") for _ in range(whole + part + 1))
        text = rng.choice(["", "-", "+"]) + text[: whole + 1] + "." + text[whole + 1:]
        made.append(text + rng.choice(["", "", "", "e5", "E-12", "e+20"]))
    for text in fixed + made:
        for precision, scale in [(5, 2), (rng.randint(1, MAX), rng.randint(0, 30)), (77, 20)]:
            for rounding in (0, 1):
                status, value = parsed(text, precision, scale, rounding)
                yield [text.replace("\t", "\\t"), precision, scale, rounding, status, value]


def doubles():
    fixed = [0.1, 0.5, -2.5, 1e22, 123456.789, 1e-7, 2.0**60, struct.unpack("f", b"\xcd\xcc\xcc=")[0],
             0.125, 1.005, -0.0, 9.5, 0.045, 5e-324, 1.7976931348623157e308]
    made = [rng.uniform(-10, 10) * 10 ** rng.randint(-9, 9) for _ in range(25)]
    for value in fixed + made:
        for precision, scale in [(77, 30), (rng.randint(1, 38), rng.randint(0, 17))]:
            status, number = parsed("%.17g" % value, precision, scale, 1)
            yield [struct.pack(">d", value).hex(), f"{precision},{scale}", status, number]


def to_doubles():
    # At the border of what a double holds exactly, magnitude and power of ten.
    edges = [(20, 0, 2**64), (21, 1, 2**64 + 5), (17, 0, 2**53 + 1), (77, 22, 123), (77, 23, 123)]
    for n in [operand() for _ in range(45)] + [Numeric(*edge) for edge in edges]:
        # Division of integers rounds once, to the nearest double.
        value = n.magnitude / 10**n.scale
        yield [n, struct.pack(">d", -value if n.negative else value).hex()]


def powers_of_ten():
    """The first 96 bits of each power, the rest cut off."""
    for n in range(-324, 341):
        power = 10**n if n >= 0 else 2**1300 // 10**-n
        bits = power << 96
        yield [n, f"{bits >> bits.bit_length() - 96:024x}"]


def main():
    directory = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else
                             pathlib.Path(__file__).parent.parent / "tests/exact/data")
    directory.mkdir(parents=True, exist_ok=True)
    for name, rows in [("operations", operations()), ("kernel", kernel()),
                       ("rescalings", rescalings()), ("texts", texts()), ("doubles", doubles()),
                       ("to_doubles", to_doubles()), ("powers_of_ten", powers_of_ten())]:
        lines = ["\t".join(map(str, row)) for row in rows]
        (directory / f"numeric_{name}.tsv").write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
