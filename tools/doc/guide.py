#!/usr/bin/env python3
"""Writes a guide as Doxygen reads it: headings with the names that links have for them, links to
other guides as references, and the words alone of links to what the reference does not have.

usage: tools/doc/guide.py GUIDE
"""
import os
import re
import sys

GUIDES = {"README.md", "CONTRIBUTING.md", "SECURITY.md", "CHANGELOG.md", "rowcopy/README.md"}


def label(path, fragment=""):
    """The name of a guide, or of a heading in it, as Doxygen allows one."""
    if path == "README.md" and not fragment:
        return "index"
    name = re.sub(r"[^a-z0-9]+", "_", path.lower().removesuffix(".md"))
    return f"guide_{name}" + (f"_{fragment.replace('-', '_')}" if fragment else "")


def fragment_of(heading):
    return re.sub(r"[^a-z0-9_-]", "", heading.lower().replace(" ", "-"))


def is_guide(path):
    return path in GUIDES or (path.startswith("docs/") and path.endswith(".md"))


def main():
    # Doxygen names files from the root of the file system.
    guide = os.path.relpath(sys.argv[1])

    def link(match):
        text, target = match.groups()
        if re.match(r"[a-z]+:", target):
            return match.group()
        path, _, fragment = target.partition("#")
        path = os.path.normpath(os.path.join(os.path.dirname(guide), path)) if path else guide
        return f"[{text}](@ref {label(path, fragment)})" if is_guide(path) else text

    def prose(line):
        line = re.sub(r"(?<!!)\[([^]]*)\]\(([^)]*)\)", link, line)
        line = re.sub(r'(<img[^>]* src=")[^"]*/', r"\1", line)
        # In code an entity is none, and elsewhere a scope is no request for a link.
        parts = line.split("`")
        parts[1::2] = [code.replace("&", "&amp;") for code in parts[1::2]]
        parts[::2] = [words.replace("::", "\\::") for words in parts[::2]]
        return "`".join(parts)

    headings = []
    in_code = False
    with open(guide, encoding="utf-8") as lines:
        for line in lines:
            line = line.rstrip("\n")
            if line.startswith("```"):
                in_code = not in_code
            heading = re.match(r"(#+) (.*)", line)
            if in_code or line.startswith("```"):
                print(line)
            elif heading:
                marks, words = heading.groups()
                name = label(guide) if marks == "#" else label(guide, fragment_of(words))
                headings.append(name)
                if headings.count(name) > 1:
                    name += f"_{headings.count(name) - 1}"
                name = "mainpage" if name == "index" else name
                print(f"{marks} {words.replace('`', '')} {{#{name}}}")
            else:
                print(prose(line))


if __name__ == "__main__":
    main()
