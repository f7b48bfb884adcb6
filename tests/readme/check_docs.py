#!/usr/bin/env python3
"""check_docs.py ROOT: all C++ on the pages is that of examples, whole (and with a link) or in part, and these are short
and all shown; all links lead somewhere, where the pages are installed too (to a heading where they name one), the table
of the seam has all of its headers, and no page holds what a merge left behind."""
import os
import re
import sys
import textwrap

FEWEST_LINES, MOST_LINES = 20, 60
INSTALLED = ("README.md", "CHANGELOG.md", "docs", "examples")  # what a package has of all this
BLOCK = re.compile(r"^ *```cpp\n(.*?)^ *```\n", re.M | re.S)
UNMERGED = re.compile(r"^(<{7}|={7}|>{7})( |$)", re.M)
FENCE = re.compile(r"^```.*?^```$", re.M | re.S)
LINK = re.compile(r"\]\(([^)#:]*)(?:#([^)]*))?\)")
HEADING = re.compile(r"^#+ (.*)$", re.M)


def read(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return file.read()


def is_part(block, program):
    """Whether the program holds these lines one behind the other, maybe further to the right."""
    indented = (textwrap.indent(block, " " * blanks) for blanks in range(0, 12, 2))
    return block.strip() != "" and any("\n" + lines in "\n" + program for lines in indented)


def program_offences(root, pages):
    folder = os.path.join(root, "examples")
    programs = {read(folder, name): name for name in os.listdir(folder) if name.endswith(".cpp")}
    shown = set()
    for page in pages:
        text = read(root, page)
        for block in BLOCK.findall(text):
            if block in programs:
                shown.add(programs[block])
                if "examples/%s)" % programs[block] not in text:
                    yield "%s: shows examples/%s and doesn't lead there" % (page, programs[block])
            if not any(is_part(block, program) for program in programs):
                yield "%s: what begins with \"%s\" stands in no file of examples" % (page, block.split("\n")[0])
    for program, name in sorted(programs.items(), key=lambda item: item[1]):
        if name not in shown:
            yield "examples/%s: no page shows it" % name
        if not FEWEST_LINES <= program.count("\n") <= MOST_LINES:
            yield "examples/%s: not of %d to %d lines" % (name, FEWEST_LINES, MOST_LINES)


def anchors(text):
    return {re.sub("[^a-z0-9 _-]", "", heading.lower()).replace(" ", "-") for heading in HEADING.findall(FENCE.sub("", text))}


def link_offences(root, page):
    for target, place in LINK.findall(FENCE.sub("", read(root, page))):
        path = os.path.normpath(os.path.join(os.path.dirname(page), target)) if target else page
        if not os.path.exists(os.path.join(root, path)):
            yield "%s: nothing lies at %s" % (page, target)
        elif path.split(os.sep)[0] not in INSTALLED:
            yield "%s: %s isn't installed with the pages" % (page, target)
        elif place and place not in anchors(read(root, path)):
            yield "%s: %s has no heading for #%s" % (page, path, place)


def seam_offences(root):
    there = {name for name in os.listdir(os.path.join(root, "src", "Platform")) if name.endswith(".h")}
    told = set(re.findall(r"`(\w+\.h)`", "".join(re.findall(r"^\|([^|]*)\|", read(root, "docs", "seam.md"), re.M))))
    for name in sorted(there ^ told):
        yield "docs/seam.md: %s %s" % (name, "isn't in the table" if name in there else "is in the table, and not there")


def offences(root):
    pages = ["README.md", "CHANGELOG.md", "examples/station/README.md"]
    pages += ["docs/" + name for name in sorted(os.listdir(os.path.join(root, "docs"))) if name.endswith(".md")]
    yield from program_offences(root, pages)
    yield from seam_offences(root)
    for page in pages:
        if UNMERGED.search(read(root, page)):
            yield "%s: two versions stand side by side" % page
        yield from link_offences(root, page)
    if not LINK.search(read(root, "README.md")):
        yield "no links were found"


if __name__ == "__main__":
    found = list(offences(os.path.abspath(sys.argv[1])))
    print("\n".join(found) or "The pages show what is compiled, and all links lead somewhere.")
    sys.exit(1 if found else 0)
