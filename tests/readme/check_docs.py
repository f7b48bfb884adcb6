#!/usr/bin/env python3
"""check_docs.py ROOT: the program of the README is the one that is compiled, and all links lead somewhere."""
import os
import re
import sys

BLOCK = re.compile(r"^```cpp\n(.*?)^```\n", re.M | re.S)
LINK = re.compile(r"\]\(([^)#:]+)(?:#[^)]*)?\)")


def read(*path):
    with open(os.path.join(*path), encoding="utf-8") as file:
        return file.read()


def offences(root):
    blocks = BLOCK.findall(read(root, "README.md"))
    if not blocks or blocks[0] != read(root, "examples", "hello.cpp"):
        yield "README.md: the first program isn't that of examples/hello.cpp"
    pages = ["README.md", "CHANGELOG.md"] + ["docs/" + name for name in sorted(os.listdir(os.path.join(root, "docs")))]
    links = 0
    for page in (name for name in pages if name.endswith(".md")):
        for link in LINK.findall(read(root, page)):
            links += 1
            if not os.path.exists(os.path.join(root, os.path.dirname(page), link)):
                yield "%s: nothing lies at %s" % (page, link)
    if links == 0:
        yield "no links were found"


if __name__ == "__main__":
    found = list(offences(sys.argv[1]))
    print("\n".join(found) or "The README shows what is compiled, and all links lead somewhere.")
    sys.exit(1 if found else 0)
