#!/usr/bin/env python3
"""Mends a manual page that pandoc or Doxygen made, from standard input to standard output: for a
linter, and for who reads it with man.

usage: tools/doc/manpage.py NAME SECTION VERSION DATE [STRUCTURE_PAGE...]

Doxygen's page of a header gets the structures that Doxygen writes a page of their own for.
"""
import pathlib
import re
import sys


def of_header(text, name, structures):
    """Doxygen's page, with the headings that manual pages have, and with each text once."""
    text = text[:text.index('.SH "Author"')]
    header = re.search(r"\.SH NAME\n(\S+) ", text).group(1)
    brief = re.search(r" \\- (.*?) *\n", text).group(1)
    text = text.replace(f"\n{header} \\- ", f"\n{name} \\- ", 1)
    text = text.replace(".SH SYNOPSIS\n", f".SH SYNOPSIS\n.B #include <{header}>\n", 1)
    text = re.sub(rf'(\.SH "Detailed Description"\n\.PP *\n){re.escape(brief)} *\n', r"\1", text)
    # Routines with one description in common have it once, after the last of them.
    text = re.sub(r'\.br\n(\.RI "[^\n]*"\n)(?=\.ti -1c\n\.RI "[^\n]*"\n\.br\n\1)', "", text)
    text = text.replace('.RI "\\fB\\fP"\n', "")
    # Fields are lines, not paragraphs.
    text = re.sub(r"(\\fI\w+\\fP)( [^\n]*\n\.br\n)\.PP\n", r"\1:\2", text)
    text = re.sub(r'\.SH "((?:struct|union) .*)"', r'.SS "\1"', text)
    for path in structures:
        page = pathlib.Path(path).read_text(encoding="utf-8")
        if f"<{header}>" in page.replace("\\&", ""):
            title = re.search(r'\.TH "(\w+)"', page).group(1)
            fields = page[page.index(".in +1c"):page.index('.SH "Detailed')]
            text = re.sub(r'\.SH "(?:Typedef|Enumeration|Function)',
                          lambda match: f'.SS "struct {title}"\n{fields}{match.group()}', text, 1)
    return re.sub(r'\.SH "(?:Detailed )?(.*?)(?: Type)?( Documentation)?"',
                  lambda match: ".SH " + match.group(1).upper() + ("S" if match.group(2) else ""),
                  text)


def of_guide(text):
    """Pandoc's page, which chooses fonts that not every reader has."""
    text = re.sub(r'\.\\" Define V font.*\n\.\\}\n', "", text, flags=re.S)
    text = re.sub(r"^\.hy\n", ".ad l\n.nh\n", text, flags=re.M)
    return re.sub(r"^\\f\[C\]\n|^\\f\[R\]\n(?=\.fi)", "", text, flags=re.M)


def without_empty_paragraphs(lines):
    """One request for a gap between two paragraphs, and none after a heading."""
    gap, line_end, in_code, previous = False, False, False, ""
    for line in lines:
        in_code = (in_code or line == ".nf") and line != ".fi"
        if not in_code and line in ("", ".PP", ".sp"):
            gap = True
        elif line == ".br":
            line_end = True
        elif line != ".in +1c" or previous != line:
            starts_anew = re.match(r"\.(SH|SS|PP|IP|TP|RE|RS)\b", line)
            if not re.match(r"\.(SH|SS)\b", previous) and not starts_anew:
                if gap:
                    # A paragraph would end the indentation of a list.
                    yield ".sp" if line.startswith(".in") else ".PP"
                elif line_end:
                    yield ".br"
            gap, line_end, previous = False, False, line
            yield line


def main():
    name, section, version, date, *structures = sys.argv[1:]
    text = sys.stdin.read()
    text = of_header(text, name, structures) if "\n.SH \"Author\"" in text else of_guide(text)
    title = f'.TH {name.upper()} {section} {date} "comnlib {version}" comnlib'
    text = re.sub(r"\.TH .*", title, text, 1)
    # Code in bold, as manual pages have it. A line that begins with an apostrophe would be a
    # request.
    text = re.sub(r"\\f(\[[VC]\]|C)", r"\\fB", text)
    text = re.sub(r"^'", r"\\&'", text, flags=re.M)
    print("\n".join(without_empty_paragraphs(line.rstrip() for line in text.splitlines())))


if __name__ == "__main__":
    main()
