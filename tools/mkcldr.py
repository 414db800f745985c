#!/usr/bin/env python3
"""Writes tools/home/cldr.json, what the localization home takes of Unicode's locale data, and
tests/home/words.txt, which the test of its sort orders takes.

usage: tools/mkcldr.py NODE_MODULES

NODE_MODULES holds the npm packages cldr-core, cldr-dates-full and cldr-numbers-full:

    npm install --prefix /tmp/cldr cldr-core@48.2.0 cldr-dates-full@48.2.0 cldr-numbers-full@48.2.0

Another version gives other conventions. The languages are those with at least forty million
speakers which Unicode's data cover fully, in each of the scripts that the C library's locales
(/usr/share/i18n/SUPPORTED) write them in.
"""
import json
import pathlib
import re
import sys

SPEAKERS = 40_000_000
SUPPORTED = "/usr/share/i18n/SUPPORTED"

packages = pathlib.Path(sys.argv[1])


def load(path):
    return json.loads((packages / path).read_text(encoding="utf-8"))


def supplemental(name):
    return load(f"cldr-core/supplemental/{name}.json")["supplemental"]


def supported():
    """(locale name, code set) of the C library's list."""
    for line in pathlib.Path(SUPPORTED).read_text(encoding="ascii").splitlines():
        if line.strip() and not line.startswith("#"):
            yield tuple(line.split())


def language_of(name):
    return re.split("[_.@]", name)[0]


def chosen_languages():
    speakers = {}
    for territory in supplemental("territoryInfo")["territoryInfo"].values():
        population = float(territory["_population"])
        for code, facts in territory.get("languagePopulation", {}).items():
            code = code.split("_")[0]
            share = float(facts["_populationPercent"]) / 100
            speakers[code] = speakers.get(code, 0) + population * share
    levels = load("cldr-core/coverageLevels.json")["effectiveCoverageLevels"]
    return {code for code, count in speakers.items()
            if count >= SPEAKERS and levels.get(code) == "modern"}


LIKELY = supplemental("likelySubtags")["likelySubtags"]
REGIONS = supplemental("currencyData")["currencyData"]["region"]
NAMES = {name for name, _ in supported()}
SCRIPTS = {"devanagari": "Deva", "latin": "Latn", "cyrillic": "Cyrl"}


def unicode_name(name):
    """(locale of Unicode's data, language with its script, territory) of a locale name."""
    language, territory, modifier = re.fullmatch(r"(\w+?)(?:_(\w+))?(?:\.[^@]*)?(?:@(.*))?",
                                                 name).groups()
    script = SCRIPTS.get(modifier)
    usual = LIKELY[language].split("-")
    # Where the C library has a locale of the territory's script by itself, the plain name is in the
    # language's usual one.
    if script is None and any(f"{language}_{territory}@{name}" in NAMES for name in SCRIPTS):
        script = usual[1]
    if script is None:
        script = LIKELY.get(f"{language}-{territory}", LIKELY[language]).split("-")[1]
    with_script = language if script == usual[1] else f"{language}-{script}"
    territory = territory or usual[2]
    candidates = (f"{with_script}-{territory}", with_script, language)
    found = next(c for c in candidates if (packages / "cldr-dates-full/main" / c).is_dir())
    return found, with_script, territory


def currency_of(territory):
    current = [code for entry in REGIONS[territory] for code, facts in entry.items()
               if "_to" not in facts and facts.get("_tender") != "false"]
    return current[-1]


def conventions(locale, territory):
    calendar = load(f"cldr-dates-full/main/{locale}/ca-gregorian.json")
    calendar = calendar["main"][locale]["dates"]["calendars"]["gregorian"]
    numbers = load(f"cldr-numbers-full/main/{locale}/numbers.json")["main"][locale]["numbers"]
    money = load(f"cldr-numbers-full/main/{locale}/currencies.json")
    money = money["main"][locale]["numbers"]["currencies"]
    # Digits are written as ASCII, so the symbols are those that go with them.
    symbols = numbers["symbols-numberSystem-latn"]
    pattern = numbers["decimalFormats-numberSystem-latn"]["standard"]
    price = numbers["currencyFormats-numberSystem-latn"]["standard"].split(";")[0]
    short = calendar["dateFormats"]["short"]
    short = short if isinstance(short, str) else short["_value"]
    months = calendar["months"]["format"]
    day_names = calendar["days"]["format"]["wide"]
    halves = calendar["dayPeriods"]["format"]["abbreviated"]
    code = currency_of(territory)
    # Amounts of money have marks of their own in a few territories.
    money_marks = {f"money_{ours}": symbols[theirs] for ours, theirs in
                   (("decimal", "currencyDecimal"), ("separator", "currencyGroup"))
                   if theirs in symbols}
    order = re.sub("[^dmy]", "", re.sub(r"'[^']*'", "", short).lower())
    return {
        "months": [months["wide"][str(n)] for n in range(1, 13)],
        "short": [months["abbreviated"][str(n)] for n in range(1, 13)],
        "days": [day_names[d] for d in ("sun", "mon", "tue", "wed", "thu", "fri", "sat")],
        "am": halves["am"], "pm": halves["pm"],
        "order": re.sub(r"(.)\1*", r"\1", order),
        "decimal": symbols["decimal"], "separator": symbols["group"],
        "grouping": len(pattern.split(".")[0].split(",")[-1]) if "," in pattern else 0,
        "symbol": money.get(code, {}).get("symbol", code), "currency": code,
        "place": "before" if price.index("¤") < price.index("0") else "after",
        **money_marks,
    }


# Languages of each script and group of character sets, with the set of their words.
WORD_SETS = {"en": "iso_1", "de": "iso_1", "es": "iso_1", "fr": "iso15", "it": "iso_1", "nl": "iso_1",
             "pt": "iso_1", "sv": "iso_1", "cs": "iso_2", "hu": "iso_2", "pl": "iso_2", "ro": "iso16",
             "lt": "iso13", "tr": "iso_9", "ru": "iso_5", "uk": "koi8u", "bg": "cp1251",
             "el": "iso_7", "he": "iso_8", "ar": "iso_6", "th": "iso11", "vi": "cp1258"}


def words(locale):
    """The words of the names of months, days and currencies."""
    texts = []
    calendar = load(f"cldr-dates-full/main/{locale}/ca-gregorian.json")
    calendar = calendar["main"][locale]["dates"]["calendars"]["gregorian"]
    for names in (calendar["months"], calendar["days"]):
        texts += names["format"]["wide"].values()
    money = load(f"cldr-numbers-full/main/{locale}/currencies.json")
    money = money["main"][locale]["numbers"]["currencies"]
    for facts in money.values():
        texts += [text for key, text in facts.items() if key.startswith("displayName")]
    return sorted({word for text in texts for word in re.split(r"[\s\d()/.,:–-]+", text) if word})


def main():
    languages = chosen_languages()
    locales = {}
    for name, _ in supported():
        if language_of(name) not in languages:
            continue
        base = re.sub(r"\.[^@]*|@euro", "", name)
        locale, language, territory = unicode_name(base)
        locales[base] = {"language": language, **conventions(locale, territory)}
    for language in {facts["language"] for facts in locales.values()} | languages:
        territory = LIKELY[language].split("-")[2]
        locales[language] = {"language": language, "territory": territory,
                             **conventions(language, territory)}
    version = load("cldr-core/package.json")["version"]
    names = [f"{name} {codeset}" for name, codeset in supported()]
    data = {"version": version, "locales": dict(sorted(locales.items())), "supported": names}
    target = pathlib.Path(__file__).parent / "home/cldr.json"
    target.write_text(json.dumps(data, ensure_ascii=False, indent=0) + "\n", encoding="utf-8")
    target = pathlib.Path(__file__).parent.parent / "tests/home/words.txt"
    lines = [f"{language} {charset} {' '.join(words(language))}"
             for language, charset in WORD_SETS.items()]
    target.write_text("\n".join(lines) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
