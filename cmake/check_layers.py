#!/usr/bin/env python3
"""Holds every #include of src/ and include/ against the floors of cmake/layers.txt.

check_layers.py [ROOT]    prints one line per offence; status 1 if there is any, 2 if the floors can't be read
"""
import fnmatch
import os
import re
import sys

PUBLIC = "include/Infrastructure/OxaCore/"
PUBLIC_PREFIX = "Infrastructure/OxaCore/"
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^>"]+)[>"]', re.M)
SYSTEM_QUESTION = re.compile(
    r'^[ \t]*#[ \t]*(?:el)?if\w*\b.*\b(__linux__|__linux|linux|__unix__|_WIN32|_WIN64|WIN32|__APPLE__)\b', re.M)
FREE_HEADERS = re.compile(r'^(?:[a-z_0-9]+|boost/.+)$')  # the standard library and Boost
# Heavy for every host that includes them; the grammars stay in source files.
BANNED_IN_PUBLIC = re.compile(r'^boost/spirit')
MAY_ASK_THE_SYSTEM = {PUBLIC + "PlatformTypes.h", PUBLIC + "Export.h"}


class Floors:
    """Finds the floor of a file: its line's place in the list."""

    def __init__(self, path):
        self.exact, self.patterns, self.folders = {}, [], []
        with open(path, encoding="utf-8") as lines:
            for floor, line in enumerate(lines):
                for item in line.split("#", 1)[0].split():
                    self.add(item, floor)

    def add(self, item, floor):
        if item.startswith("<") and item.endswith(">"):
            item = PUBLIC + item[1:-1]
        elif not item.startswith("src/"):
            raise ValueError("layers.txt:%d: '%s' is neither <public.h> nor below src/" % (floor + 1, item))
        if item in self.exact:
            raise ValueError("layers.txt:%d: '%s' stands on two floors" % (floor + 1, item))
        if "*" in item or "?" in item:
            self.patterns.append((len(item), item, floor))
            self.patterns.sort(reverse=True)
        else:
            self.exact[item] = floor

    def of(self, path):
        stem = os.path.splitext(path)[0]
        for name in (path, stem):
            if name in self.exact:
                return self.exact[name]
        for _, pattern, floor in self.patterns:
            if fnmatch.fnmatchcase(path, pattern) or fnmatch.fnmatchcase(stem, pattern):
                return floor
        folder = os.path.dirname(path)
        while folder:
            if folder in self.exact:
                return self.exact[folder]
            folder = os.path.dirname(folder)
        return None


def files_of(root):
    for top in ("include", "src"):
        for folder, _, names in os.walk(os.path.join(root, top)):
            for name in sorted(names):
                if name.endswith((".h", ".cpp", ".inl", ".S")):
                    yield os.path.relpath(os.path.join(folder, name), root).replace(os.sep, "/")


def resolve(root, path, quoted, name):
    """The path in the tree that an #include means, or None for a header that isn't ours."""
    if name.startswith(PUBLIC_PREFIX):
        return "include/" + name
    candidates = [os.path.normpath(os.path.join(os.path.dirname(path), name)).replace(os.sep, "/")] if quoted else []
    candidates.append("src/" + name)
    for candidate in candidates:
        if os.path.isfile(os.path.join(root, candidate)):
            return candidate
    return "missing" if quoted else None


def check_foreign(path, name):
    if path.startswith("src/Platform/") or path == PUBLIC + "PlatformTypes.h":
        return None
    if (path, name) == (PUBLIC + "ClassLine.h", "cxxabi.h"):  # not the system's, but the compiler's runtime's
        return None
    if not FREE_HEADERS.match(name):
        return "includes the system header <%s>; that is the seam's business" % name
    if path.startswith(PUBLIC) and BANNED_IN_PUBLIC.match(name):
        return "is public and includes <%s>" % name
    return None


def check_ours(floors, path, target):
    if target == "missing":
        return "includes a file that isn't there"
    if path.startswith(PUBLIC) and not target.startswith(PUBLIC):
        return "is public and includes %s, which is not installed" % target
    mine, its = floors.of(path), floors.of(target)
    if mine is not None and its is not None and its > mine:
        return "includes %s, which stands above it (layers.txt:%d above %d)" % (target, its + 1, mine + 1)
    return None


def check_file(root, floors, path, graph):
    with open(os.path.join(root, path), encoding="utf-8", errors="replace") as source:
        text = re.sub(r"/\*.*?\*/", lambda m: "\n" * m.group().count("\n"), source.read(), flags=re.S)
    line_of = lambda match: text.count("\n", 0, match.start()) + 1
    if floors.of(path) is None:
        yield "%s: stands on no floor of layers.txt" % path
    for match in INCLUDE.finditer(text):
        target = resolve(root, path, match.group(1) == '"', match.group(2))
        if target is None:
            offence = check_foreign(path, match.group(2))
        else:
            offence = check_ours(floors, path, target)
            graph.setdefault(path, []).append(target)
        if offence:
            yield "%s:%d: %s" % (path, line_of(match), offence)
    if not path.startswith("src/Platform/") and path not in MAY_ASK_THE_SYSTEM:
        for match in SYSTEM_QUESTION.finditer(text):
            yield "%s:%d: asks for the system (%s); that is the seam's business" % (
                path, line_of(match), match.group(1))


def circles(graph):
    """One line per circle of includes."""
    done = set()

    def visit(path, way):
        if path in way:
            yield "circle: " + " -> ".join(way[way.index(path):] + [path])
        elif path not in done:
            for target in graph.get(path, []):
                yield from visit(target, way + [path])
            done.add(path)

    for start in sorted(graph):
        yield from visit(start, [])


def main(root):
    try:
        floors = Floors(os.path.join(root, "cmake", "layers.txt"))
    except (OSError, ValueError) as problem:
        print(problem)
        return 2
    graph, count, offences = {}, 0, []
    for path in files_of(root):
        count += 1
        offences += check_file(root, floors, path, graph)
    offences += circles(graph)
    print("\n".join(offences + ["%d files, %d offences" % (count, len(offences))]))
    return 1 if offences or not count else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..")))
