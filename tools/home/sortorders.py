"""Sort orders: the .srt files of the character sets."""
from .charsets import CHARSETS, SINGLE, decode

SORT_ORDERS = {"binary": 1, "nocase": 2}


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


def sort_order(name, order):
    lines = [f"; Sort order {order} of {name}.", "[sortorder]"]
    if order == "binary":
        return lines + ['description = "by byte values"', "kind = binary"]
    return lines + ['description = "by byte values, small letters as capitals"', "kind = weights",
                    f"weights = {nocase_weights(name)}"]
