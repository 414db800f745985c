"""Languages, and conventions for dates, numbers and money: common.loc and the .dt, .num and .mon
files, from cldr.json (tools/mkcldr.py)."""
import json
import pathlib
import unicodedata
from typing import NamedTuple

from .charsets import CHARSETS

with open(pathlib.Path(__file__).parent / "cldr.json", encoding="utf-8") as file:
    CLDR = json.load(file)

WESTERN = ("iso_1", "iso15", "cp1252", "cp437", "cp850", "cp858", "macroman")


class Language(NamedTuple):
    oid: int  # identifier in objectid.dat
    name: str  # in locales.dat
    charsets: tuple = ()  # besides utf8


# By the codes of Unicode's data. A number is never given to another language.
LANGUAGES = {
    "en": Language(1, "us_english", tuple(name for name in CHARSETS if name != "utf8")),
    "fr": Language(2, "french", WESTERN),
    "de": Language(3, "german", WESTERN),
    "ja": Language(4, "japanese", ("sjis", "cp932", "eucjp")),
    "ar": Language(5, "arabic", ("iso_6", "cp1256")),
    "bn": Language(6, "bengali"),
    "es": Language(7, "spanish", WESTERN),
    "fa": Language(8, "persian"),
    "fil": Language(9, "filipino", WESTERN),
    "gu": Language(10, "gujarati"),
    "ha": Language(11, "hausa", WESTERN),
    "hi": Language(12, "hindi"),
    "id": Language(13, "indonesian", WESTERN),
    "it": Language(14, "italian", WESTERN),
    "kn": Language(15, "kannada"),
    "ko": Language(16, "korean", ("euckr", "cp949")),
    "ml": Language(17, "malayalam"),
    "mr": Language(18, "marathi"),
    "ms": Language(19, "malay", WESTERN),
    "or": Language(20, "odia"),
    "pa": Language(21, "punjabi"),
    "pa-Arab": Language(22, "punjabi_arabic"),
    "pl": Language(23, "polish", ("iso_2", "iso16", "cp1250", "cp852")),
    "ps": Language(24, "pashto"),
    "pt": Language(25, "portuguese", tuple(name for name in WESTERN if name != "cp437")),  # no "ã"
    "ru": Language(26, "russian", ("iso_5", "koi8", "koi8u", "cp1251", "cp855", "cp866")),
    "sd-Deva": Language(27, "sindhi"),
    "sw": Language(28, "swahili", WESTERN),
    "ta": Language(29, "tamil"),
    "te": Language(30, "telugu"),
    "th": Language(31, "thai", ("iso11", "cp874")),
    "tr": Language(32, "turkish", ("iso_9", "cp1254", "cp857")),
    "ur": Language(33, "urdu"),
    "vi": Language(34, "vietnamese", ("cp1258",)),
    "yue": Language(35, "cantonese", ("big5", "big5hkscs")),
    "zh": Language(36, "chinese", ("cp936", "gb18030")),
    "zh-Hant": Language(37, "chinese_traditional", ("big5", "big5hkscs", "euctw")),
    "sd": Language(38, "sindhi_arabic"),
    "jv": Language(39, "javanese", WESTERN),
    "pcm": Language(40, "nigerian_pidgin"),
}

# Texts that hosts have read and written for long; Unicode's data shorten months otherwise.
OLDER = {
    "fr": {"short": "jan fév mar avr mai juin juil août sept oct nov déc".split(),
           "separator": " "},
    "de": {"short": "Jan Feb Mär Apr Mai Jun Jul Aug Sep Okt Nov Dez".split()},
}

DATE_FIELDS = ("months", "short", "days", "am", "pm", "order")
NUMBER_FIELDS = ("decimal", "separator", "grouping")
MONEY_FIELDS = ("symbol", "currency", "place", "money_decimal", "money_separator", "grouping")


def agree(left, right, fields):
    return all(left[field] == right[field] for field in fields)


def with_money_marks(data):
    """The conventions with marks of money, which are those of numbers where the data have none."""
    marks = {f"money_{field}": data[field] for field in ("decimal", "separator")}
    return marks | data


def of_language(code):
    return with_money_marks(CLDR["locales"][code] | OLDER.get(code, {}))


# ISO 8601: no locale's but the one of that name.
ISO = with_money_marks(CLDR["locales"]["en"] | {"order": "ymd", "style": "iso", "separator": "",
                                                "grouping": 0, "symbol": "", "currency": ""})


def of_locale(base):
    """The conventions of a locale: its language's, but for what Unicode's data have otherwise."""
    here = CLDR["locales"][base]
    code = here["language"]
    language = CLDR["locales"][code]
    changed = {field: value for field, value in here.items() if value != language.get(field)}
    return with_money_marks(language | OLDER.get(code, {}) | changed)


class NotInCharset(Exception):
    pass


def encodable(text, codec):
    try:
        return text.encode(codec).decode(codec) == text
    except UnicodeError:
        return False


# Marks of punctuation, and what stands for them where a set lacks them.
SIMILAR = {"\u202f": "\u00a0", "\u00a0": " ", "\u2019": "'", "\u02bc": "'",
           "\u066c": "'", "\u200e": "", "\u200f": "", "\u061c": ""}


def in_charset(char, codec):
    """The character as the set can write it: itself, its marks apart, or a plainer one."""
    while not encodable(char, codec):
        if char in SIMILAR:
            char = SIMILAR[char]
            continue
        base, *marks = unicodedata.normalize("NFD", char)
        for mark in marks + [""]:
            apart = "".join(other for other in marks if other != mark)
            spelled = unicodedata.normalize("NFC", base + mark) + apart
            if encodable(spelled, codec):
                return spelled
        raise NotInCharset(char)
    return char


def written(text, codec):
    return "".join(in_charset(char, codec) for char in text)


def quoted(text):
    return '"' + text.replace('"', '""') + '"' if text != text.strip() or "," in text else text


def date_section(data, codec):
    def line(key, texts):
        return f"{key} = " + ", ".join(quoted(written(text, codec)) for text in texts)

    return ["[datetime]", line("months", data["months"]), line("shortmonths", data["short"]),
            line("days", data["days"]), line("am", [data["am"]]), line("pm", [data["pm"]]),
            f"order = {data['order']}", f"style = {data.get('style', 'default')}"]


def digit_entries(data, codec, marks=""):
    return [f"decimal = {quoted(written(data[marks + 'decimal'], codec))}",
            f"separator = {quoted(written(data[marks + 'separator'], codec))}".rstrip(),
            f"grouping = {data['grouping']}"]


def number_section(data, codec):
    return ["[numeric]"] + digit_entries(data, codec)


def money_section(data, codec):
    try:
        symbol = written(data["symbol"], codec)
    except NotInCharset:
        symbol = data["currency"]
    return ["[money]", f"symbol = {quoted(symbol)}".rstrip(), f"place = {data['place']}"] + \
        digit_entries(data, codec, "money_")


def common_loc(code, charset):
    data, codec = of_language(code), CHARSETS[charset].codec
    return date_section(data, codec) + number_section(data, codec) + money_section(data, codec)


class Conventions:
    """The named conventions: contents that several locales share have one name."""

    KINDS = {"datetime": date_section, "numeric": number_section, "money": money_section}

    def __init__(self, known):
        self.ids = known  # class: {name: identifier}
        self.files = {kind: {} for kind in self.KINDS}  # class: {name: bytes}

    def add(self, kind, name, data, charset):
        """The name of these conventions: one that the home has kept so far, another with the same
        content, or a new one."""
        codec = CHARSETS[charset].codec
        content = ("\n".join(self.KINDS[kind](data, codec)) + "\n").encode(codec)
        files, ids = self.files[kind], self.ids.setdefault(kind, {})
        of_charset = f"{name}.{charset}"
        if of_charset in ids or not content.isascii():
            name = of_charset
        if name not in ids:
            name = next((other for other, held in files.items() if held == content), name)
        assert files.get(name, content) == content, f"two contents of {name}"
        files[name] = content
        ids.setdefault(name, max(ids.values(), default=0) + 1)
        return name

    def of_locale(self, base, charset):
        """What a line of locales.dat says after the sort order: nothing where the language's own
        conventions hold."""
        here = of_locale(base)
        language = of_language(here["language"])
        if agree(here, language, DATE_FIELDS + NUMBER_FIELDS + MONEY_FIELDS):
            return ()
        money = self.add("money", base, here, charset)
        if agree(here, language, DATE_FIELDS + NUMBER_FIELDS):
            return "", "", money
        return (self.add("datetime", base, here, charset), self.add("numeric", base, here, charset),
                money)
