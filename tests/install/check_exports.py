#!/usr/bin/env python3
"""check_exports.py LIBRARY SONAME: the library shows its own names and nothing else, and can be unloaded."""
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
    """Name and binding of each defined dynamic symbol."""
    for line in readelf("--dyn-syms", library).splitlines():
        cells = line.split()
        if len(cells) >= 8 and cells[0].rstrip(":").isdigit() and cells[6] != "UND":
            yield cells[7].split("@")[0], cells[4]


def offences(library, soname):
    names = set()
    for name, binding in symbols_of(library):
        names.add(name)
        if binding == "UNIQUE":
            yield "%s is a unique symbol: it keeps the library loaded for ever" % name
        if not OURS.match(name) and not PLAIN.match(name):
            yield "%s is shown, but is none of ours" % name
    for name in sorted(EXPECTED - names):
        yield "%s is not shown" % name
    dynamic = readelf("-d", library)
    if "NODELETE" in dynamic:
        yield "the library is linked with nodelete"
    if "[%s]" % soname not in dynamic:
        yield "its soname isn't %s" % soname
    if "libunwind" in dynamic:
        yield "it brings another unwinder, which makes each throw ten times slower"


if __name__ == "__main__":
    found = list(offences(sys.argv[1], sys.argv[2]))
    print("\n".join(found) or "The library shows nothing but its own names.")
    sys.exit(1 if found else 0)
