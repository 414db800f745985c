#!/usr/bin/env python3
"""Writes the localization home, home/, from Python's codecs and Unicode tables.

usage: tools/mkhome.py [DIRECTORY]

The output depends on nothing but this script and the Unicode data, and is committed. The file
formats are described in docs/file-formats.md.
"""
import os
import struct
import sys
import unicodedata

# ---------------------------------------------------------------- character sets

SINGLE = 1
MULTI = 2

# name: (object identifier, id, Python codec, class)
CHARSETS = {
    "ascii": (1, 2, "ascii", SINGLE),
    "iso_1": (2, 1, "latin_1", SINGLE),
    "iso15": (3, 3, "iso8859_15", SINGLE),
    "cp437": (4, 4, "cp437", SINGLE),
    "cp850": (5, 5, "cp850", SINGLE),
    "cp1252": (6, 6, "cp1252", SINGLE),
    "koi8": (7, 7, "koi8_r", SINGLE),
    "utf8": (8, 8, "utf_8", MULTI),
    "sjis": (9, 9, "shift_jis", MULTI),
    "cp936": (10, 10, "gbk", MULTI),
}
UCS2_OID = 11

UPPER, LOWER, DIGIT, SPACE, XDIGIT, PUNCT, GRAPH, LEAD = 1, 2, 4, 8, 16, 32, 64, 128
LEX_LETTER, LEX_DIGIT, LEX_SPACE, LEX_CURRENCY, LEX_PUNCT = 1, 2, 8, 16, 32


def decode(codec, data):
    """The one character that the bytes stand for, or None."""
    try:
        text = data.decode(codec)
    except UnicodeDecodeError:
        return None
    return text if len(text) == 1 and text.encode(codec) == data else None


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
            columns = 1 if is_utf8 else 2
            widths.append(columns << 4 | 2)
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
    oid, charset_id, codec, charset_class = CHARSETS[name]
    parts = single_byte_image(codec) if charset_class == SINGLE else multibyte_image(codec)
    lines = [f"; Character set {name}: {'single-byte' if charset_class == SINGLE else 'multibyte'}.",
             "[charset]", f"class = {charset_class}", f"name = {name}",
             f'description = "{codec} of Unicode {unicodedata.unidata_version}"',
             f"id = {charset_id}", "status = 0", f"image_size = {sum(map(len, parts))}"]
    for part in parts:
        lines.extend(definition_lines(part))
    return lines


def conversion_cfg(name):
    _, _, codec, _ = CHARSETS[name]
    lines = [f"; Conversions of {name}.", "[conversion]"]
    if name == "utf8":
        lines += ["replacement = EFBFBD", "algorithm = utf8"]
        lines += [f"to = {other}" for other in CHARSETS if other != name] + ["to = ucs2"]
        return lines
    replacement = "〓" if name == "sjis" else "?"
    return lines + [f"replacement = {replacement.encode(codec).hex().upper()}", f"table = {name}",
                    "to = utf8", "to = ucs2"]


def table_runs(codec, prefix):
    """(first byte, code units) of each run of characters behind the prefix."""
    run, first = "", 0
    for byte in range(257):
        char = decode(codec, prefix + bytes((byte,))) if byte < 256 else None
        if char is None:
            if run:
                yield first, run
            run = ""
            continue
        if not run:
            first = byte
        run += f"{ord(char):04X}"


def conversion_table(name):
    codec = CHARSETS[name][2]
    lines = [f"; Unicode code units of {name}.", "[table]"]
    lines += [f"single = {first:02X}, {run}" for first, run in table_runs(codec, b"")]
    if CHARSETS[name][3] == MULTI:
        for lead in range(1, 256):
            if decode(codec, bytes((lead,))) is None:
                lines += [f"double = {lead:02X}, {first:02X}, {run}"
                          for first, run in table_runs(codec, bytes((lead,)))]
    return lines


# ---------------------------------------------------------------- sort orders

SORT_ORDERS = {"binary": 1, "nocase": 2}


def nocase_weights(name):
    """Small letters weigh as their capitals; all else keeps its byte order."""
    codec, charset_class = CHARSETS[name][2:]
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


# ---------------------------------------------------------------- languages and conventions

LANGUAGES = {
    "us_english": {
        "oid": 1,
        "months": "January February March April May June July August September October November "
                  "December",
        "short": "Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec",
        "days": "Sunday Monday Tuesday Wednesday Thursday Friday Saturday",
        "am": "AM", "pm": "PM", "order": "mdy",
        "decimal": ".", "separator": ",", "symbol": "$", "place": "before",
        "charsets": list(CHARSETS),
    },
    "french": {
        "oid": 2,
        "months": "janvier février mars avril mai juin juillet août septembre octobre novembre "
                  "décembre",
        "short": "jan fév mar avr mai juin juil août sept oct nov déc",
        "days": "dimanche lundi mardi mercredi jeudi vendredi samedi",
        "am": "AM", "pm": "PM", "order": "dmy",
        "decimal": ",", "separator": " ", "symbol": "€", "place": "after",
        "charsets": ["iso_1", "iso15", "cp437", "cp850", "cp1252", "utf8"],
    },
    "german": {
        "oid": 3,
        "months": "Januar Februar März April Mai Juni Juli August September Oktober November "
                  "Dezember",
        "short": "Jan Feb Mär Apr Mai Jun Jul Aug Sep Okt Nov Dez",
        "days": "Sonntag Montag Dienstag Mittwoch Donnerstag Freitag Samstag",
        "am": "AM", "pm": "PM", "order": "dmy",
        "decimal": ",", "separator": ".", "symbol": "€", "place": "after",
        "charsets": ["iso_1", "iso15", "cp437", "cp850", "cp1252", "utf8"],
    },
    "japanese": {
        "oid": 4,
        "months": " ".join(f"{n}月" for n in range(1, 13)),
        "short": " ".join(f"{n}月" for n in range(1, 13)),
        "days": "日曜日 月曜日 火曜日 水曜日 木曜日 金曜日 土曜日",
        "am": "午前", "pm": "午後", "order": "ymd",
        "decimal": ".", "separator": ",", "symbol": "￥", "place": "before",
        "charsets": ["sjis", "utf8"],
    },
}


def quoted(text):
    return '"' + text.replace('"', '""') + '"' if text != text.strip() or "," in text else text


def date_section(language):
    data = LANGUAGES[language]
    return ["[datetime]",
            "months = " + ", ".join(data["months"].split()),
            "shortmonths = " + ", ".join(data["short"].split()),
            "days = " + ", ".join(data["days"].split()),
            f"am = {data['am']}", f"pm = {data['pm']}",
            f"order = {data['order']}", "style = default"]


def digit_entries(data):
    return [f"decimal = {quoted(data['decimal'])}", f"separator = {quoted(data['separator'])}",
            "grouping = 3"]


def number_section(language):
    return ["[numeric]"] + digit_entries(LANGUAGES[language])


def money_section(language, codec):
    data = LANGUAGES[language]
    try:
        data["symbol"].encode(codec)
        symbol = data["symbol"]
    except UnicodeEncodeError:
        symbol = "EUR"
    return ["[money]", f"symbol = {symbol}", f"place = {data['place']}"] + digit_entries(data)


# name: object identifier and language; the conventions of locales/datetime, numeric and money
CONVENTIONS = {"us_english": (1, "us_english")}

# ---------------------------------------------------------------- messages

# Words of the result codes, in the languages' order.
COMMON_WORDS = {
    1: ("information", "information", "Information", "情報"),
    2: ("warning", "avertissement", "Warnung", "警告"),
    3: ("error", "erreur", "Fehler", "エラー"),
    4: ("fatal error", "erreur fatale", "schwerer Fehler", "致命的エラー"),
}
CLIENT_TEXTS = {
    1: ("The localization files could not be loaded.",
        "Les fichiers de localisation n'ont pas pu être chargés.",
        "Die Lokalisierungsdateien konnten nicht geladen werden.",
        "ローカライズファイルを読み込めませんでした。"),
    2: ("The conversion is not supported.", "La conversion n'est pas prise en charge.",
        "Die Umwandlung wird nicht unterstützt.", "この変換はサポートされていません。"),
}
RESULT_TEXTS = {
    1: ("success", "succès", "Erfolg", "成功"),
    0: ("failure", "échec", "Fehlschlag", "失敗"),
    -1: ("out of memory", "mémoire insuffisante", "kein Speicher mehr", "メモリ不足"),
    -101: ("the value overflows its destination", "la valeur dépasse la destination",
           "der Wert ist zu groß für das Ziel", "値が変換先の範囲を超えています"),
    -102: ("the value underflows its destination", "la valeur est trop petite",
           "der Wert ist zu klein für das Ziel", "値が小さすぎます"),
    -103: ("the precision is not valid", "la précision n'est pas valide",
           "die Genauigkeit ist ungültig", "精度が無効です"),
    -104: ("the scale is not valid", "l'échelle n'est pas valide",
           "die Anzahl der Dezimalstellen ist ungültig", "小数点以下の桁数が無効です"),
    -105: ("syntax error", "erreur de syntaxe", "Syntaxfehler", "構文エラー"),
    -106: ("the format is not valid", "le format n'est pas valide", "das Format ist ungültig",
           "書式が無効です"),
    -107: ("the source value is out of its domain", "la valeur source est hors de son domaine",
           "der Quellwert liegt außerhalb seines Bereichs", "元の値が範囲外です"),
    -108: ("division by zero", "division par zéro", "Division durch null", "ゼロによる除算"),
    -113: ("the data were truncated", "les données ont été tronquées",
           "die Daten wurden abgeschnitten", "データが切り捨てられました"),
    -114: ("the date style is unknown", "le style de date est inconnu",
           "der Datumsstil ist unbekannt", "日付の形式が不明です"),
    -115: ("a character could not be converted", "un caractère n'a pas pu être converti",
           "ein Zeichen konnte nicht umgewandelt werden", "変換できない文字があります"),
    -116: ("no conversion between the character sets exists",
           "aucune conversion entre ces jeux de caractères",
           "zwischen den Zeichensätzen gibt es keine Umwandlung", "文字セット間の変換がありません"),
    -117: ("missing characters were replaced", "des caractères absents ont été remplacés",
           "fehlende Zeichen wurden ersetzt", "存在しない文字が置き換えられました"),
    -301: ("a localization file is damaged", "un fichier de localisation est endommagé",
           "eine Lokalisierungsdatei ist beschädigt", "ローカライズファイルが壊れています"),
    -414: ("a localization file could not be opened",
           "un fichier de localisation n'a pas pu être ouvert",
           "eine Lokalisierungsdatei konnte nicht geöffnet werden",
           "ローカライズファイルを開けませんでした"),
}
MESSAGE_FILES = {"common.loc": COMMON_WORDS, "cslib.loc": CLIENT_TEXTS, "comnlib.loc": RESULT_TEXTS}


def message_file(texts, index):
    return ["; UTF-8", "[messages]"] + [f'{number} = "{words[index]}"'
                                        for number, words in texts.items()]


# ---------------------------------------------------------------- locales

# locale name: language, character set, sort order[, date/time, number, money]
LOCALES = {
    "default": ("us_english", "iso_1", "binary"),
    "C": ("us_english", "ascii", "binary"),
    "POSIX": ("us_english", "ascii", "binary"),
    "C.UTF-8": ("us_english", "utf8", "binary"),
    "C.utf8": ("us_english", "utf8", "binary"),
    "us_english": ("us_english", "iso_1", "binary"),
    "us_english.utf8": ("us_english", "utf8", "binary"),
    "us_english.nocase": ("us_english", "iso_1", "nocase"),
    "us_english.named": ("us_english", "iso_1", "binary", "us_english", "us_english",
                         "us_english"),
    "en": ("us_english", "iso_1", "binary"),
    "en_US": ("us_english", "iso_1", "binary"),
    "en_US.ISO-8859-1": ("us_english", "iso_1", "binary"),
    "en_US.ISO-8859-15": ("us_english", "iso15", "binary"),
    "en_US.UTF-8": ("us_english", "utf8", "binary"),
    "en_US.utf8": ("us_english", "utf8", "binary"),
    "en_US.CP437": ("us_english", "cp437", "binary"),
    "en_US.CP1252": ("us_english", "cp1252", "binary"),
    "ru_RU.KOI8-R": ("us_english", "koi8", "binary"),
    "zh_CN.GBK": ("us_english", "cp936", "binary"),
    "french": ("french", "iso_1", "binary"),
    "fr": ("french", "iso_1", "binary"),
    "fr_FR": ("french", "iso_1", "binary"),
    "fr_FR.ISO-8859-1": ("french", "iso_1", "binary"),
    "fr_FR@euro": ("french", "iso15", "binary"),
    "fr_FR.ISO-8859-15": ("french", "iso15", "binary"),
    "fr_FR.UTF-8": ("french", "utf8", "binary"),
    "fr_FR.utf8": ("french", "utf8", "binary"),
    "fr_FR.CP850": ("french", "cp850", "binary"),
    "german": ("german", "iso_1", "binary"),
    "de": ("german", "iso_1", "binary"),
    "de_DE": ("german", "iso_1", "binary"),
    "de_DE.ISO-8859-1": ("german", "iso_1", "binary"),
    "de_DE@euro": ("german", "iso15", "binary"),
    "de_DE.ISO-8859-15": ("german", "iso15", "binary"),
    "de_DE.UTF-8": ("german", "utf8", "binary"),
    "de_DE.utf8": ("german", "utf8", "binary"),
    "de_DE.CP1252": ("german", "cp1252", "nocase"),
    "japanese": ("japanese", "sjis", "binary"),
    "ja": ("japanese", "sjis", "binary"),
    "ja_JP": ("japanese", "sjis", "binary"),
    "ja_JP.SJIS": ("japanese", "sjis", "binary"),
    "ja_JP.UTF-8": ("japanese", "utf8", "binary"),
    "ja_JP.utf8": ("japanese", "utf8", "binary"),
}


def object_ids():
    lines = ["; Identifiers by class and name. A number is never given to another name.",
             "[charset]"]
    lines += [f"{name} = {data[0]}" for name, data in CHARSETS.items()] + [f"ucs2 = {UCS2_OID}"]
    lines += ["[natlang]"] + [f"{name} = {data['oid']}" for name, data in LANGUAGES.items()]
    lines += ["[collate]"] + [f"{name} = {oid}" for name, oid in SORT_ORDERS.items()]
    for oidclass in ("datetime", "numeric", "money"):
        lines += [f"[{oidclass}]"] + [f"{name} = {oid}" for name, (oid, _) in CONVENTIONS.items()]
    return lines


def locales_dat():
    return ["; locale = name, language, character set[, sort order[, date/time[, number[, money]]]]",
            "[linux]"] + [f"locale = {name}, " + ", ".join(rest) for name, rest in LOCALES.items()]


# ---------------------------------------------------------------- output


def main():
    home = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "../home")

    def write(path, lines, codec="ascii"):
        path = os.path.join(home, path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(("\n".join(lines) + "\n").encode(codec))

    write("config/objectid.dat", object_ids())
    write("locales/locales.dat", locales_dat())
    for name in CHARSETS:
        write(f"charsets/{name}/charset.loc", charset_loc(name))
        write(f"charsets/{name}/{name}.cfg", conversion_cfg(name))
        if name != "utf8":
            write(f"charsets/{name}/{name}.ctb", conversion_table(name))
        for order in SORT_ORDERS:
            write(f"charsets/{name}/{order}.srt", sort_order(name, order))
    for index, (language, data) in enumerate(LANGUAGES.items()):
        for file, texts in MESSAGE_FILES.items():
            write(f"locales/message/{language}/{file}", message_file(texts, index), "utf_8")
        for charset in data["charsets"]:
            codec = CHARSETS[charset][2]
            sections = (date_section(language) + number_section(language) +
                        money_section(language, codec))
            write(f"locales/{language}/{charset}/common.loc", sections, codec)
    for name, (_, language) in CONVENTIONS.items():
        write(f"locales/datetime/{name}.dt", date_section(language))
        write(f"locales/numeric/{name}.num", number_section(language))
        write(f"locales/money/{name}.mon", money_section(language, "ascii"))


if __name__ == "__main__":
    main()
