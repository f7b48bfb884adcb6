#!/usr/bin/env python3
"""check_peculiarities.py ROOT: every row of docs/peculiarities.md names the tests that freeze it, and each of them
stands in a source that is compiled."""
import fnmatch
import os
import re
import sys

PAGE = os.path.join("docs", "peculiarities.md")
TEST = re.compile(r"^TEST(?:_F|_P)?\(\s*(\w+)\s*,\s*(\w+)\s*\)", re.M)
CELL_BORDER = re.compile(r"(?<!\\)\|")
NAMES = re.compile(r"`\w+\.\w+`(?:, `\w+\.\w+`)*")


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def files(root, ending):
    for folder, _, names in os.walk(os.path.join(root, "tests")):
        yield from (os.path.join(folder, name) for name in names if name.endswith(ending))


def compiled(root):
    """The sources that the lists name, and patterns for them."""
    for path in files(root, "CMakeLists.txt"):
        for word in re.split(r"[\s\"()]+", read(path)):
            if word.endswith(".cpp"):
                word = re.sub(r"\$\{\w+\}", "*", word)
                yield os.path.normpath(os.path.join(os.path.dirname(path), word))


def tests(root):
    sources = set(compiled(root))
    found = set()
    for path in files(root, ".cpp"):
        if any(fnmatch.fnmatchcase(path, source) for source in sources):
            found |= {"%s.%s" % pair for pair in TEST.findall(read(path))}
    return found


def rows(text):
    """The cells of each row of a table, without the two lines on top of it."""
    inside = 0
    for number, line in enumerate(text.splitlines(), 1):
        inside = inside + 1 if line.startswith("|") else 0
        if inside > 2:
            yield number, [cell.strip() for cell in CELL_BORDER.split(line)[1:-1]]


def row_offences(cells, known):
    if len(cells) != 3:
        yield "%d cells in place of three" % len(cells)
    elif not NAMES.fullmatch(cells[2]):
        yield "no test, or more than tests, in the last cell"
    else:
        for name in re.findall(r"[\w.]+", cells[2]):
            if name not in known:
                yield "there is no test %s" % name


def offences(root):
    known = tests(root)
    told = set()
    for number, cells in rows(read(os.path.join(root, PAGE))):
        for offence in row_offences(cells, known):
            yield "%s:%d: %s" % (PAGE, number, offence)
        if cells[0] in told:
            yield "%s:%d: that stands there already" % (PAGE, number)
        told.add(cells[0])
    if len(known) < 1000 or len(told) < 100:
        yield "only %d tests and %d rows were found" % (len(known), len(told))


if __name__ == "__main__":
    found = list(offences(os.path.abspath(sys.argv[1])))
    print("\n".join(found) or "Each peculiarity is frozen by a test.")
    sys.exit(1 if found else 0)
