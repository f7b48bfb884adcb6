#!/usr/bin/env python3
"""check_docs.py ROOT: the programs on the pages are the ones that are compiled, all links lead somewhere, and no
page holds what a merge left behind."""
import os
import re
import sys

BLOCK = re.compile(r"^```cpp\n(.*?)^```\n", re.M | re.S)
UNMERGED = re.compile(r"^(<{7}|={7}|>{7})( |$)", re.M)
LINK = re.compile(r"\]\(([^)#:]+)(?:#[^)]*)?\)")


def read(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return file.read()


def program_offences(root, pages):
    folder = os.path.join(root, "examples")
    programs = {read(folder, name): name for name in os.listdir(folder) if name.endswith(".cpp")}
    shown = set()
    for page in pages:
        for block in BLOCK.findall(read(root, page)):
            if block in programs:
                shown.add(programs[block])
            elif block.startswith("#include"):
                yield "%s: a program isn't that of any file in examples" % page
    for name in sorted(set(programs.values()) - shown):
        yield "examples/%s: no page shows it" % name


def offences(root):
    pages = ["README.md", "CHANGELOG.md"]
    pages += ["docs/" + name for name in sorted(os.listdir(os.path.join(root, "docs"))) if name.endswith(".md")]
    yield from program_offences(root, pages)
    links = 0
    for page in pages:
        if UNMERGED.search(read(root, page)):
            yield "%s: two versions stand side by side" % page
        for link in LINK.findall(read(root, page)):
            links += 1
            if not os.path.exists(os.path.join(root, os.path.dirname(page), link)):
                yield "%s: nothing lies at %s" % (page, link)
    if links == 0:
        yield "no links were found"


if __name__ == "__main__":
    found = list(offences(sys.argv[1]))
    print("\n".join(found) or "The pages show what is compiled, and all links lead somewhere.")
    sys.exit(1 if found else 0)
