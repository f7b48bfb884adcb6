#!/usr/bin/env python3
"""The library shows its own names and nothing else, and can be unloaded.

check_exports.py LIBRARY SONAME [LIST]    also holds the names against those of LIST
check_exports.py --list LIBRARY           prints them as a LIST
"""
import re
import subprocess
import sys

OURS = re.compile(r"^_Z(T[VIST]|T(h|v0_)n\d+_(n\d+_)?|Tcv?\w*?_|GV|Z)?N[VK]*[RO]?(3Oxa|9MSWindows)")
PLAIN = re.compile(r"^(InitializeOxaCore|ShutdownOxaCore|IsOxaCoreDebug|GetModuleTestSuite|_Z8OxaSleep\w*|_Z27OxaUnhandledExceptionFilter\w*)$")
# What must be there at the very least, or the list was not read.
EXPECTED = {"InitializeOxaCore", "ShutdownOxaCore", "IsOxaCoreDebug", "_ZTIN3Oxa4Core5ErrorE"}


def readelf(*arguments):
    return subprocess.run(["readelf", "-W", *arguments], check=True, capture_output=True, text=True).stdout


def symbols_of(library):
    """Name, binding and section of each defined dynamic symbol."""
    for line in readelf("--dyn-syms", library).splitlines():
        cells = line.split()
        if len(cells) >= 8 and cells[0].rstrip(":").isdigit() and cells[6] != "UND":
            yield cells[7].split("@")[0], cells[4], cells[6]


def writable_sections(library):
    for line in readelf("-S", library).splitlines():
        found = re.match(r" *\[ *(\d+)\] (\.data|\.bss) ", line)
        if found:
            yield found.group(1)


def bound_variables(library):
    """Variables that the library doesn't look up by name, so that it would miss the copy of a host."""
    writable = set(writable_sections(library))
    looked_up = {cells[4].split("@")[0] for cells in map(str.split, readelf("-r", library).splitlines()) if len(cells) > 4}
    for name, _, section in symbols_of(library):
        if section in writable and name not in looked_up:
            yield name


def offences(library, soname):
    names = set()
    for name, binding, _ in symbols_of(library):
        names.add(name)
        if binding == "UNIQUE":
            yield "%s is a unique symbol: it keeps the library loaded for ever" % name
        if not OURS.match(name) and not PLAIN.match(name):
            yield "%s is shown, but is none of ours" % name
    for name in sorted(EXPECTED - names):
        yield "%s is not shown" % name
    for name in bound_variables(library):
        yield "%s would be another variable than the copy of a host: src/variables.list leaves it out" % name
    dynamic = readelf("-d", library)
    if "NODELETE" in dynamic:
        yield "the library is linked with nodelete"
    if "[%s]" % soname not in dynamic:
        yield "its soname isn't %s" % soname
    if "libunwind" in dynamic:
        yield "it brings another unwinder, which makes each throw ten times slower"


HEADING = """# What libOxaCore.so shows, by the names that linkers know (c++filt tells them for people): what is missing here
# breaks hosts that were linked before. Written by scripts/exports, of a release build by g++ 12.
"""


def names_in(path):
    with open(path, encoding="ascii") as lines:
        return {line.strip() for line in lines if line.strip() and not line.startswith("#")}


def readable(name):
    """As people write it, with the linker's name, for several of those may read the same."""
    told = subprocess.run(["c++filt", name], check=True, capture_output=True, text=True).stdout.strip()
    return name if told == name else "%s  (%s)" % (told, name)


def differences(library, path):
    listed, shown = names_in(path), {name for name, _, _ in symbols_of(library)}
    for name in sorted(listed - shown):
        yield "gone: " + readable(name)
    for name in sorted(shown - listed):
        yield "new:  " + readable(name)


def main(library, soname, path=None):
    found = list(offences(library, soname))
    changed = list(differences(library, path)) if path else []
    if changed:
        changed.append("%d names differ from %s. If that is meant: scripts/exports" % (len(changed), path))
    print("\n".join(found + changed) or "The library shows nothing but its own names.")
    return 1 if found or changed else 0


if __name__ == "__main__":
    if sys.argv[1] == "--list":
        print(HEADING + "\n".join(sorted({name for name, _, _ in symbols_of(sys.argv[2])})))
    else:
        sys.exit(main(*sys.argv[1:]))
