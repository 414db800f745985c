#!/usr/bin/env python3
"""Writes the localization home, home/, from Python's codecs and Unicode tables.

usage: tools/mkhome.py [DIRECTORY]

The output depends on nothing but this script and the Unicode data, and is committed. The file
formats are described in docs/file-formats.md.
"""
import os
import sys

from home.charsets import (CHARSETS, SINGLE, UCS2_OID, charset_loc, conversion_cfg,
                           conversion_table, decode)

# ---------------------------------------------------------------- sort orders

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
    lines += [f"{name} = {data.oid}" for name, data in CHARSETS.items()] + [f"ucs2 = {UCS2_OID}"]
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
            codec = CHARSETS[charset].codec
            sections = (date_section(language) + number_section(language) +
                        money_section(language, codec))
            write(f"locales/{language}/{charset}/common.loc", sections, codec)
    for name, (_, language) in CONVENTIONS.items():
        write(f"locales/datetime/{name}.dt", date_section(language))
        write(f"locales/numeric/{name}.num", number_section(language))
        write(f"locales/money/{name}.mon", money_section(language, "ascii"))


if __name__ == "__main__":
    main()
