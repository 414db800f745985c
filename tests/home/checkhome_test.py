#!/usr/bin/python3
"""checkhome finds one fault of each kind, all planted in a copy of the shipped home, and no other.

usage: checkhome_test.py CHECKHOME HOME
"""
import pathlib
import shutil
import subprocess
import sys
import tempfile

# File, what is replaced (once; nothing: the end; None: there is no file), by what, and words of the
# fault. Without a file: words of a fault of the row before.
IDS, TABLE = "config/objectid.dat", "locales/locales.dat"
LONG = b"s" * 256
FAULTS = [
    (IDS, b"\niso = 131", b"\niso = 0x82", "the number of iso twice"),
    (IDS, b"", b"[colour]\nred = 1\n", "[colour] is not read"),
    (TABLE, b"", b"locale = C, us_english, ascii\n", "locale C is there twice"),
    (TABLE, b"", b"locale = a, us_english, ascii, , , iso\n", "locale a: without a date/time name"),
    (TABLE, b"", b"locale = b, klingon, ascii\n", 'locale b: "klingon" is no known natlang'),
    (TABLE, b"", b"locale = c, us_english, ascii, " + LONG + b"\n", "locale c: "),
    (TABLE, b"", b"locale = d, us_english, ascii, binary, fr_CA.utf8\n", "is no text of ascii"),
    (TABLE, b"", b"locale = e, us_english, ascii, , , , , x\n", "values of locale that are not"),
    (TABLE, b"", b"other = x\n", "other ends every search"),
    (TABLE, b"", b"[linux]\n", "[linux] is there twice"),
    ("locales/message/french/cslib.loc", b"", b'5 = "\xff"\n', "message 5 is not UTF-8"),
    ("locales/message/german/common.loc", b"", b"7 = a, b\n", "values of 7 that are not read"),
    ("locales/message/italian/comnlib.loc", b"", b"-108 = x\n", "has -108 twice"),
    ("locales/message/polish/common.loc", b"", b"x = y\n", "not valid"),
    ("locales/us_english/ascii/common.loc", b"January", b"J\xe4nner", "is no text of ascii"),
    ("locales/thai/cp874/common.loc", b"", b"[x]\n", "[x] is not read"),
    ("locales/datetime/en_GB.dt", b"January, ", b"", "not valid"),
    ("locales/numeric/fr_CH.num", b"", b"[numeric]\ndecimal = .\n", "[numeric] is there twice"),
    ("locales/money/fr_CH.mon", b"grouping = 3", b"grouping = 10", "not valid"),
    ("locales/french/notes.txt", None, b"", "no name leads to it"),
    ("config/nuv.cfg", None, b"[", "no configuration file"),
    ("charsets/utf8/utf8.cfg", b"to = iso13\n", b"", "no conversion to iso13"),
    ("charsets/utf8/dictionary.srt", b"", b"fold = 0x41, 0x41, 1, 0x61\n", "not valid"),
    ("charsets/iso_2/charset.loc", b"name = iso_2", b"name = iso_3", "not that of its directory"),
    ("charsets/iso_3/iso_3.cfg", b"= 3F", b"= A5", "replacement is no text"),
    ("charsets/iso_4/iso_4.cfg", b"to = ucs2", b"to = ucs9", '"ucs9" is no known charset'),
    ("charsets/iso_5/iso_5.ctb", b"", b"single = 41, 0041\n", "a sequence is there twice"),
    ("charsets/iso_6/iso_6.ctb", b"", b"single = FF, D800\n", "not valid"),
    ("charsets/iso_7/dictionary.srt", b"weights = 00", b"weights = ", "not valid"),
    ("charsets/iso_8/binary.srt", b"= binary", b"= folded", "only UTF-8 text"),
    ("charsets/iso_9/charset.loc", b"", b"id = 1\n", "id comes after the image"),
    ("", b"", b"", "has id twice"),
    ("charsets/iso10/iso10.cfg", b"replacement", b"replaced", "not valid"),
    ("charsets/iso14/iso14.cfg", b"[conversion]", b"[conversion", "line "),
    ("charsets/iso16/nocase.srt", b"[sort", b"x = y\n[sort", "lines before the first section"),
    ("charsets/cp1251/binary.srt", b"kind", b"x\0", "line "),
    ("charsets/cp932/cp932.ctb", b"", b"double = 41, 40, 4E00\n", "other widths"),
    ("charsets/sjis/charset.loc", b"size = ", b"size = 1", "the header is not true"),
    ("charsets/euckr/charset.loc", b"01000080", b"7F000080", "names a table that is not there"),
]
# Without one of these nothing can be set up.
NEEDED = [(IDS, b"\nucs2 =", b"\nucs9 =", "every context needs ucs2"), ("", b"", b"", "charset"),
          ("", b"", b"", "no context can be set up")]


def check(faults):
    """Faults that were not found, and what was said of none."""
    with tempfile.TemporaryDirectory() as directory:
        home = pathlib.Path(directory) / "home"
        shutil.copytree(sys.argv[2], home)
        for file, old, new, _ in filter(lambda fault: fault[0], faults):
            text = b"" if old is None else (home / file).read_bytes()
            assert not old or old in text, (file, old)
            (home / file).write_bytes(text.replace(old, new, 1) if old else text + new)
        found = subprocess.run([sys.argv[1], f"{home}/"], cwd=directory, text=True, check=False,
                               errors="replace", capture_output=True)
        lines = found.stdout.replace(f"{home}/", "").splitlines()
    missed = [(file, words) for file, _, _, words in faults
              if not any(words in line and file in line for line in lines)]
    other = [line for line in lines if not any(words in line for _, _, _, words in faults)]
    assert found.returncode == 1, found
    return missed, other


for planted in (FAULTS, NEEDED):
    missed, other = check(planted)
    if missed or other:
        raise SystemExit(f"not found: {missed}\nof none of them:\n" + "\n".join(other[:20]))
