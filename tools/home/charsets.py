"""Character sets: the files of charsets/, from Python's codecs and Unicode tables."""
import codecs
import gzip
import re
import struct
import unicodedata
from typing import NamedTuple

SINGLE = 1
MULTI = 2


# Sets for which Python has no codec are read from the C library's tables: their characters of up to
# two bytes.
CHARMAPS = {"euc_tw": "/usr/share/i18n/charmaps/EUC-TW.gz"}


def charmap_codec(name):
    if name not in CHARMAPS:
        return None
    bytes_of = {}
    with gzip.open(CHARMAPS[name], "rt", encoding="latin_1") as file:
        for line in file:
            found = re.match(r"<U([0-9A-F]{4})> +((?:/x[0-9a-f]{2}){1,2}) ", line)
            if found:
                data = bytes.fromhex(found.group(2).replace("/x", ""))
                bytes_of.setdefault(chr(int(found.group(1), 16)), data)
    char_of = {data: char for char, data in bytes_of.items()}

    def encode(text, errors="strict"):
        if any(char not in bytes_of for char in text):
            raise UnicodeEncodeError(name, text, 0, 1, "no such character")
        return b"".join(bytes_of[char] for char in text), len(text)

    def decode(data, errors="strict"):
        data, text, at = bytes(data), "", 0
        while at < len(data):
            length = 1 if data[at] < 0x80 else 2
            char = char_of.get(data[at:at + length])
            if char is None:
                raise UnicodeDecodeError(name, data, at, at + 1, "no such character")
            text, at = text + char, at + length
        return text, len(data)

    return codecs.CodecInfo(encode, decode, name=name)


codecs.register(charmap_codec)


class Charset(NamedTuple):
    oid: int  # identifier in objectid.dat
    codec: str  # Python's, or of CHARMAPS
    kind: int
    iconv: str  # the C library's name for it


CHARSETS = {
    "ascii": Charset(1, "ascii", SINGLE, "ASCII"),
    "iso_1": Charset(2, "latin_1", SINGLE, "ISO-8859-1"),
    "iso15": Charset(3, "iso8859_15", SINGLE, "ISO-8859-15"),
    "cp437": Charset(4, "cp437", SINGLE, "CP437"),
    "cp850": Charset(5, "cp850", SINGLE, "CP850"),
    "cp1252": Charset(6, "cp1252", SINGLE, "CP1252"),
    "koi8": Charset(7, "koi8_r", SINGLE, "KOI8-R"),
    "utf8": Charset(8, "utf_8", MULTI, "UTF-8"),
    "sjis": Charset(9, "shift_jis", MULTI, "SJIS"),
    "cp936": Charset(10, "gbk", MULTI, "GBK"),
    "iso_2": Charset(12, "iso8859_2", SINGLE, "ISO-8859-2"),
    "iso_3": Charset(13, "iso8859_3", SINGLE, "ISO-8859-3"),
    "iso_4": Charset(14, "iso8859_4", SINGLE, "ISO-8859-4"),
    "iso_5": Charset(15, "iso8859_5", SINGLE, "ISO-8859-5"),
    "iso_6": Charset(16, "iso8859_6", SINGLE, "ISO-8859-6"),
    "iso_7": Charset(17, "iso8859_7", SINGLE, "ISO-8859-7"),
    "iso_8": Charset(18, "iso8859_8", SINGLE, "ISO-8859-8"),
    "iso_9": Charset(19, "iso8859_9", SINGLE, "ISO-8859-9"),
    "iso10": Charset(20, "iso8859_10", SINGLE, "ISO-8859-10"),
    "iso11": Charset(21, "iso8859_11", SINGLE, "ISO-8859-11"),
    "iso13": Charset(22, "iso8859_13", SINGLE, "ISO-8859-13"),
    "iso14": Charset(23, "iso8859_14", SINGLE, "ISO-8859-14"),
    "iso16": Charset(24, "iso8859_16", SINGLE, "ISO-8859-16"),
    "cp1250": Charset(25, "cp1250", SINGLE, "CP1250"),
    "cp1251": Charset(26, "cp1251", SINGLE, "CP1251"),
    "cp1253": Charset(27, "cp1253", SINGLE, "CP1253"),
    "cp1254": Charset(28, "cp1254", SINGLE, "CP1254"),
    "cp1255": Charset(29, "cp1255", SINGLE, "CP1255"),
    "cp1256": Charset(30, "cp1256", SINGLE, "CP1256"),
    "cp1257": Charset(31, "cp1257", SINGLE, "CP1257"),
    "cp1258": Charset(32, "cp1258", SINGLE, "CP1258"),
    "cp874": Charset(33, "cp874", SINGLE, "CP874"),
    "cp852": Charset(34, "cp852", SINGLE, "CP852"),
    "cp855": Charset(35, "cp855", SINGLE, "CP855"),
    "cp857": Charset(36, "cp857", SINGLE, "CP857"),
    "cp858": Charset(37, "cp858", SINGLE, "CP858"),
    "cp866": Charset(38, "cp866", SINGLE, "CP866"),
    "koi8u": Charset(39, "koi8_u", SINGLE, "KOI8-U"),
    "macroman": Charset(40, "mac_roman", SINGLE, "MACINTOSH"),
    "cp932": Charset(41, "cp932", MULTI, "CP932"),
    "eucjp": Charset(42, "euc_jp", MULTI, "EUC-JP"),
    "gb18030": Charset(43, "gb18030", MULTI, "GB18030"),
    "big5": Charset(44, "big5", MULTI, "BIG5"),
    "big5hkscs": Charset(45, "big5hkscs", MULTI, "BIG5-HKSCS"),
    "cp949": Charset(46, "cp949", MULTI, "CP949"),
    "euckr": Charset(47, "euc_kr", MULTI, "EUC-KR"),
    "euctw": Charset(48, "euc_tw", MULTI, "EUC-TW"),
}
UCS2_OID = 11
# The "id" of charset.loc where it is not the identifier.
CHARSET_IDS = {"ascii": 2, "iso_1": 1}
# What stands for characters that a set lacks, where that is no question mark.
REPLACEMENTS = {"sjis": "〓"}
# The first byte of characters of three bytes.
TRIPLE_LEADS = {"euc_jp": 0x8F}
# The first byte of characters of four bytes, of which the table has none.
QUADRUPLE_LEADS = {"euc_tw": 0x8E}
# A codec whose characters of four bytes are in the order of Unicode, but for gaps. Either half of
# one looks like a character of two bytes, and steps as one.
QUADRUPLES = "gb18030"

UPPER, LOWER, DIGIT, SPACE, XDIGIT, PUNCT, GRAPH, LEAD = 1, 2, 4, 8, 16, 32, 64, 128
LEX_LETTER, LEX_DIGIT, LEX_SPACE, LEX_CURRENCY, LEX_PUNCT = 1, 2, 8, 16, 32


def decode(codec, data):
    """The one character that the bytes stand for, or None."""
    try:
        text = data.decode(codec)
    except UnicodeDecodeError:
        return None
    # Two characters of a byte each, a base with a mark, and what a table cannot hold are none.
    return text if len(text) == 1 and ord(text) < 0x10000 else None


def is_preferred(codec, data, char):
    """Whether these bytes are what the character encodes to."""
    return char.encode(codec) == data


def ascii_form(char):
    """The ASCII character that a wide or no-break form stands for, else None."""
    if ord(char) < 0x80:
        return char
    parts = unicodedata.decomposition(char).split()
    if len(parts) == 2 and parts[0] in ("<wide>", "<noBreak>") and int(parts[1], 16) < 0x80:
        return chr(int(parts[1], 16))
    return None


def classes(char):
    """Class bits and lexical class; a letter without case counts as a small one."""
    category = unicodedata.category(char)
    plain = ascii_form(char)
    bits = XDIGIT if plain and plain in "0123456789abcdefABCDEF" else 0
    if category == "Zs" or char in "\t\n\v\f\r":
        return SPACE | (GRAPH if category == "Zs" else 0), LEX_SPACE
    if category[0] == "C" or category in ("Zl", "Zp"):
        return 0, LEX_SPACE
    bits |= GRAPH
    if category in ("Lu", "Lt"):
        return bits | UPPER, LEX_LETTER
    if category[0] == "L" or category in ("Mn", "Mc"):
        return bits | LOWER, LEX_LETTER
    if category == "Nd":
        return bits | DIGIT, LEX_DIGIT
    return bits | PUNCT, LEX_PUNCT | (LEX_CURRENCY if category == "Sc" else 0)


def case_byte(codec, data, form):
    """The last byte of the other case, where that differs from `data` in the last byte alone."""
    char = decode(codec, data)
    other = getattr(char, form)()
    if len(other) != 1:
        return data[-1]
    try:
        there = other.encode(codec)
    except UnicodeEncodeError:
        return data[-1]
    same_row = len(there) == len(data) and there[:-1] == data[:-1]
    # Only pairs that map back, so that a small letter without a capital of its own stays.
    back = getattr(other, "lower" if form == "upper" else "upper")()
    return there[-1] if same_row and back == char else data[-1]


def type_entry(codec, data):
    char = decode(codec, data)
    if char is None and codec == QUADRUPLES and len(data) == 2 and 0x30 <= data[1] <= 0x39:
        return bytes((data[1], data[1], LEX_LETTER, LOWER | GRAPH))
    if char is None:
        return bytes((data[-1], data[-1], LEX_SPACE, 0))
    bits, lex = classes(char)
    return bytes((case_byte(codec, data, "upper"), case_byte(codec, data, "lower"), lex, bits))


SOUNDEX = {c: d for d, letters in enumerate(("BFPV", "CGJKQSXZ", "DT", "L", "MN", "R"), 1)
           for c in letters}


def soundex_byte(char):
    """'1' to '6' for a consonant, '0' for a letter without a code, NUL for all else."""
    if char is None or unicodedata.category(char)[0] != "L":
        return 0
    base = unicodedata.normalize("NFD", char)[0].upper()
    return ord("0") + SOUNDEX.get(base, 0)


def single_byte_image(codec):
    """Two maps: 257 type entries (the last for no character at all) and 257 sound-alike codes."""
    types = b"".join(type_entry(codec, bytes((b,))) for b in range(256)) + bytes(4)
    sounds = bytes(soundex_byte(decode(codec, bytes((b,)))) for b in range(256)) + b"\0"
    return [types, sounds]


def utf8_width(byte):
    if byte < 0xC2 or byte > 0xF4:
        return 1
    return 2 if byte < 0xE0 else 3 if byte < 0xF0 else 4


def char_columns(char):
    if char is None:
        return 1
    if unicodedata.combining(char):
        return 0
    return 2 if unicodedata.east_asian_width(char) in "WF" else 1


def multibyte_image(codec):
    """The 44-byte header and its maps: widths, normal forms, types, sound-alikes.

    Lead bytes whose characters have the same types share a table. Characters of three and four
    bytes have no tables: their first byte stands for all of them, with a case form of 0.
    """
    is_utf8 = codec == "utf_8"
    widths, single_types, single_norm = bytearray(), [], bytearray()
    tables, norm_tables = [None], [None]
    leads = set()
    for byte in range(256):
        one = bytes((byte,))
        char = decode(codec, one)
        pairs = [decode(codec, bytes((byte, second))) for second in range(256)]
        if char is None and any(pairs):
            leads.add(byte)
            table = b"".join(type_entry(codec, bytes((byte, second))) for second in range(256))
            if table not in tables:
                tables.append(table)
            norm = bytes(ord(ascii_form(p) or "\0") if p else 0 for p in pairs)
            if any(norm) and norm not in norm_tables:
                norm_tables.append(norm)
            single_types.append(bytes((tables.index(table), 0, 0, LEAD)))
            single_norm.append(norm_tables.index(norm) if any(norm) else 0)
            is_narrow = is_utf8 or all(unicodedata.east_asian_width(p) == "H" for p in pairs if p)
            widths.append((1 if is_narrow else 2) << 4 | 2)
        elif byte in (TRIPLE_LEADS.get(codec), QUADRUPLE_LEADS.get(codec)):
            single_types.append(bytes((0, 0, LEX_LETTER, LOWER | GRAPH)))
            single_norm.append(0)
            widths.append(2 << 4 | (3 if codec in TRIPLE_LEADS else 4))
        elif is_utf8 and utf8_width(byte) > 2:
            single_types.append(bytes((0, 0, LEX_LETTER, LOWER | GRAPH)))
            single_norm.append(0)
            columns = 2 if byte >= 0xE3 else 1
            widths.append(columns << 4 | utf8_width(byte))
        else:
            single_types.append(type_entry(codec, one))
            single_norm.append(byte if char is not None and byte < 0x80 else 0)
            widths.append((char_columns(char) or 1) << 4 | 1)
    tables[0] = b"".join(single_types)
    norm_tables[0] = bytes(single_norm)
    sounds = bytes(soundex_byte(decode(codec, bytes((b,)))) for b in range(256))

    maps = [bytes(widths), b"".join(norm_tables), b"".join(tables), sounds]
    sizes = sorted({w & 15 for w in widths})
    header = struct.pack("<HBBBBBB", 0, MULTI, sizes[-1], len(sizes), len(tables),
                         len(norm_tables), 1) + bytes(4)
    offset = 44
    for part in maps:
        header += struct.pack(">II", offset, len(part))
        offset += len(part)
    return [header] + maps


def definition_lines(data, per_line=48):
    for at in range(0, len(data), per_line):
        yield "definition = " + data[at:at + per_line].hex().upper()


def charset_loc(name):
    oid, codec, charset_class, _ = CHARSETS[name]
    parts = single_byte_image(codec) if charset_class == SINGLE else multibyte_image(codec)
    lines = [f"; Character set {name}: {'single-byte' if charset_class == SINGLE else 'multibyte'}.",
             "[charset]", f"class = {charset_class}", f"name = {name}",
             f'description = "{codec} of Unicode {unicodedata.unidata_version}"',
             f"id = {CHARSET_IDS.get(name, oid)}", "status = 0", f"image_size = {sum(map(len, parts))}"]
    for part in parts:
        lines.extend(definition_lines(part))
    return lines


def conversion_cfg(name):
    codec = CHARSETS[name].codec
    lines = [f"; Conversions of {name}.", "[conversion]"]
    if name == "utf8":
        lines += ["replacement = EFBFBD", "algorithm = utf8"]
        lines += [f"to = {other}" for other in CHARSETS if other != name] + ["to = ucs2"]
        return lines
    return lines + [f"replacement = {REPLACEMENTS.get(name, '?').encode(codec).hex().upper()}", f"table = {name}",
                    "to = utf8", "to = ucs2"]


def table_runs(codec, prefix, preferred):
    """(first byte, code units) of each run of characters after the prefix."""
    run, first = "", 0
    for byte in range(257):
        data = prefix + bytes((byte % 256,))
        char = decode(codec, data) if byte < 256 else None
        if char is None or is_preferred(codec, data, char) != preferred:
            if run:
                yield first, run
            run = ""
            continue
        if not run:
            first = byte
        run += f"{ord(char):04X}"


def ranges(codec):
    """(bytes, code point, count) of each run of code points in four bytes."""
    def place(data):
        return ((data[0] * 10 + data[1]) * 126 + data[2]) * 10 + data[3]

    first, start, count = None, 0, 0
    for code in range(0x80, 0x110001):
        is_character = not 0xD800 <= code < 0xE000 and code < 0x110000
        data = chr(code).encode(codec) if is_character else b""
        if count and len(data) == 4 and code == start + count and \
                place(data) == place(first) + count:
            count += 1
            continue
        if count:
            yield first, start, count
        first, start, count = data, code, int(len(data) == 4)


def conversion_table(name):
    codec, kind = CHARSETS[name][1:3]
    lines = [f"; Unicode code units of {name}.", "[table]"]
    # The sequence that a character encodes to goes before others that decode to it.
    for preferred in (True, False):
        lines += [f"single = {first:02X}, {run}"
                  for first, run in table_runs(codec, b"", preferred)]
        if kind == SINGLE:
            continue
        for lead in range(1, 256):
            if decode(codec, bytes((lead,))) is None:
                lines += [f"double = {lead:02X}, {first:02X}, {run}"
                          for first, run in table_runs(codec, bytes((lead,)), preferred)]
        if codec in TRIPLE_LEADS:
            lead = TRIPLE_LEADS[codec]
            for second in range(256):
                lines += [f"triple = {lead:02X}, {second:02X}, {first:02X}, {run}" for first, run in
                          table_runs(codec, bytes((lead, second)), preferred)]
    if codec == QUADRUPLES:
        lines += [f"range = {first.hex().upper()}, 0x{code:04X}, {count}"
                  for first, code, count in ranges(codec)]
    return lines
