#!/usr/bin/env python3
"""Writes the localization home, home/: character sets from Python's codecs and Unicode tables,
conventions and locale names from tools/home/cldr.json, sort orders from tools/home/collation.json.

usage: tools/mkhome.py [DIRECTORY]

The output depends on nothing but these scripts, their data, the Unicode version of Python, and the
identifiers that the committed home gives, which stay as they are. The file formats are described in
docs/file-formats.md.
"""
import os
import pathlib
import sys

from home.charsets import CHARSETS, UCS2_OID, charset_loc, conversion_cfg, conversion_table
from home.conventions import ISO, LANGUAGES, Conventions, common_loc, of_language
from home.locales import Locales
from home.messages import FILES, message_file
from home.sortorders import SORT_ORDERS, has_order, sort_order

COMMITTED = pathlib.Path(__file__).parent.parent / "home"


def known_ids():
    """The identifiers of the committed home: class: {name: number}."""
    ids, names = {}, {}
    for line in (COMMITTED / "config/objectid.dat").read_text(encoding="ascii").splitlines():
        if line.startswith("["):
            names = ids.setdefault(line.strip("[]"), {})
        elif "=" in line:
            name, number = line.split(" = ")
            names[name] = int(number)
    return ids


def object_ids(conventions):
    lines = ["; Identifiers by class and name. A number is never given to another name.",
             "[charset]"]
    lines += [f"{name} = {data.oid}" for name, data in CHARSETS.items()] + [f"ucs2 = {UCS2_OID}"]
    lines += ["[natlang]"] + [f"{data.name} = {data.oid}" for data in LANGUAGES.values()]
    lines += ["[collate]"] + [f"{name} = {oid}" for name, oid in SORT_ORDERS.items()]
    for oidclass in ("datetime", "numeric", "money"):
        names = conventions.ids[oidclass]
        lines += [f"[{oidclass}]"] + [f"{name} = {number}" for name, number in
                                      sorted(names.items(), key=lambda item: item[1])]
    return lines


def main():
    home = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else COMMITTED
    conventions = Conventions(known_ids())
    for kind in Conventions.KINDS:
        conventions.add(kind, "us_english", of_language("en"), "ascii")
        conventions.add(kind, "iso", ISO, "ascii")
    locales = Locales(conventions)

    def write(path, content, codec="ascii"):
        if isinstance(content, list):
            content = ("\n".join(content) + "\n").encode(codec)
        os.makedirs((home / path).parent, exist_ok=True)
        (home / path).write_bytes(content)

    write("config/objectid.dat", object_ids(conventions))
    write("locales/locales.dat", locales.file())
    for name in CHARSETS:
        write(f"charsets/{name}/charset.loc", charset_loc(name))
        write(f"charsets/{name}/{name}.cfg", conversion_cfg(name))
        if name != "utf8":
            write(f"charsets/{name}/{name}.ctb", conversion_table(name))
        for order in filter(lambda order: has_order(name, order), SORT_ORDERS):
            write(f"charsets/{name}/{order}.srt", sort_order(name, order))
    for code, language in LANGUAGES.items():
        for file in FILES:
            content = message_file(language.name, file)
            write(f"locales/message/{language.name}/{file}", content, "utf_8")
            for charset in language.charsets:  # fails where the set cannot write the messages
                "".join(content).encode(CHARSETS[charset].codec)
        for charset in ("utf8",) + language.charsets:
            write(f"locales/{language.name}/{charset}/common.loc", common_loc(code, charset),
                  CHARSETS[charset].codec)
    for kind, suffix in (("datetime", "dt"), ("numeric", "num"), ("money", "mon")):
        for name, content in conventions.files[kind].items():
            write(f"locales/{kind}/{name}.{suffix}", content)


if __name__ == "__main__":
    main()
