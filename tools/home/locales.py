"""Locale names: locales.dat."""
import re

from .charsets import CHARSETS
from .conventions import CLDR, LANGUAGES, WESTERN
from .sortorders import has_order

LATIN = {1: 1, 2: 2, 3: 3, 4: 4, 9: 5, 10: 6, 13: 7, 14: 8, 15: 9, 16: 10}


def iso_8859(number):
    names = (f"ISO-8859-{number}", f"ISO8859-{number}")
    return names + ((f"LATIN{LATIN[number]}",) if number in LATIN else ())


# What systems call the code sets.
NAMES = {
    "ascii": ("ASCII", "US-ASCII"), "utf8": ("UTF-8",), "koi8": ("KOI8-R",), "koi8u": ("KOI8-U",),
    "iso11": iso_8859(11) + ("TIS-620",), "macroman": ("MACINTOSH", "MacRoman"),
    "sjis": ("SJIS", "Shift_JIS", "Shift-JIS"), "cp932": ("CP932", "MS932", "WINDOWS-31J"),
    "eucjp": ("EUC-JP", "eucJP", "UJIS"),
    "cp936": ("GBK", "GB2312", "eucCN", "EUC-CN", "CP936", "WINDOWS-936"),
    "big5": ("BIG5", "Big5", "BIG-5", "CP950"), "big5hkscs": ("BIG5-HKSCS", "Big5-HKSCS"),
    "cp949": ("CP949", "UHC"), "euckr": ("EUC-KR", "eucKR"), "euctw": ("EUC-TW", "eucTW"),
}


def names_of(charset):
    if charset in NAMES:
        return NAMES[charset]
    if charset.startswith("iso"):
        return iso_8859(int(charset[3:].lstrip("_")))
    name = charset.upper()
    if charset == "cp874" or charset.startswith("cp125"):
        return name, name.replace("CP", "WINDOWS-")
    return (name, name.replace("CP", "IBM")) if charset.startswith("cp") else (name,)


def spellings(charset):
    """Each name as it is, and in capital and small letters with its punctuation and without."""
    found = []
    for name in names_of(charset):
        plain = re.sub("[-_]", "", name)
        found += [name, plain.lower(), plain.upper(), name.lower(), name.upper()]
    return tuple(dict.fromkeys(found))


# Names that go before all rules: name: language, character set, sort order and conventions.
FIXED = {
    "default": ("us_english", "iso_1", "binary"),
    "C": ("us_english", "ascii", "binary"),
    "POSIX": ("us_english", "ascii", "binary"),
    **{f"C.{name}": ("us_english", "utf8", "binary") for name in spellings("utf8")},
    "iso": ("us_english", "iso_1", "binary", "iso", "iso", "iso"),
    "iso.utf8": ("us_english", "utf8", "binary", "iso", "iso", "iso"),
    "us_english.nocase": ("us_english", "iso_1", "nocase"),
    "us_english.named": ("us_english", "iso_1", "binary", "us_english", "us_english",
                         "us_english"),
    "de_DE.CP1252": ("german", "cp1252", "nocase"),
    "ja_JP": ("japanese", "sjis", "binary"),
}


BY_CODESET = {spelling: charset for charset in CHARSETS for spelling in spellings(charset)}


def split(name):
    """(language and territory, code set, modifier with its @)."""
    return re.fullmatch(r"([^.@]*)(?:\.([^@]*))?(@.*)?", name).groups(default="")


class Locales:
    def __init__(self, conventions):
        self.conventions = conventions
        self.lines = {}
        self.plain = {}  # language and territory: the set that the name alone asks for
        for name, codeset in map(str.split, CLDR["supported"]):
            base, own, modifier = split(name)
            if not own and modifier != "@euro":
                self.plain[base + modifier] = BY_CODESET.get(codeset)
        for name, values in FIXED.items():
            self.add(name, values)
        for code in LANGUAGES:
            self.add_language(code)
        # Conventions that several territories share have the name of the first.
        for base, facts in sorted(CLDR["locales"].items(), key=lambda item: item[0] != "en_GB"):
            if "_" in base:
                self.add_territory(base, facts)
        for name, codeset in map(str.split, CLDR["supported"]):
            self.add_other(name, codeset)

    def add(self, name, values):
        values = list(values)
        while not values[-1]:
            values.pop()
        self.lines.setdefault(name, values)

    def add_language(self, code):
        """A language by its own name, and by its code where that is plain."""
        name, charsets = LANGUAGES[code].name, LANGUAGES[code].charsets
        base = f"{code.split('-')[0]}_{CLDR['locales'][code]['territory']}"
        usual = self.plain.get(base, charsets[0] if charsets else "utf8")
        self.add(name, (name, usual, "binary"))
        self.add(f"{name}.utf8", (name, "utf8", "binary"))
        sorted_set = usual if has_order(usual, "dictionary") else "utf8"
        self.add(f"{name}.dictionary", (name, sorted_set, "dictionary"))
        if "-" not in code:
            self.add(code, (name, usual, "binary"))

    def add_territory(self, base, facts):
        territory, _, modifier = split(base)
        language = LANGUAGES[facts["language"]]

        def line(name, charset):
            self.add(name, (language.name, charset, "binary",
                            *self.conventions.of_locale(base, charset)))

        # Every code set goes with US English, the Western ones with other English.
        charsets = language.charsets
        if facts["language"] == "en" and base != "en_US":
            charsets = WESTERN
        line(base, self.plain.get(base) or "utf8")
        for charset in ("utf8",) + tuple(charsets):
            for spelling in spellings(charset):
                line(f"{territory}.{spelling}{modifier}", charset)
        if facts["currency"] == "EUR":
            euro = ("utf8", "iso15") if "iso15" in charsets else ("utf8",)
            line(f"{base}@euro", euro[-1])
            for charset in euro:
                for spelling in spellings(charset):
                    line(f"{base}.{spelling}@euro", charset)

    def add_other(self, name, codeset):
        """A locale of a language that is not shipped."""
        charset = BY_CODESET.get(codeset)
        if charset is None:
            return
        territory, _, modifier = split(name)
        self.add(name, ("us_english", charset, "binary"))
        if charset == "utf8":
            for spelling in spellings(charset):
                self.add(f"{territory}.{spelling}{modifier}", ("us_english", charset, "binary"))

    def file(self):
        return ["; locale = name, language, character set"
                "[, sort order[, date/time[, number[, money]]]]",
                "[linux]"] + [f"locale = {name}, " + ", ".join(values)
                              for name, values in self.lines.items()]
