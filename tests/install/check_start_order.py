#!/usr/bin/env python3
"""What runs at the start lies together in the library, and the list of it is of these sources.

check_start_order.py LIBRARY LIST
"""
import subprocess
import sys

LEAST_FOUND = 0.7     # of the list: compilers split functions each in its own way
LEAST_CLOSE = 0.95    # of those: several functions of one name may be in several files
MOST_BYTES = 1 << 18  # between them and the first function that each process calls


def functions(library):
    """Addresses by name."""
    told = subprocess.run(["readelf", "-sW", library], check=True, capture_output=True, text=True).stdout
    cells = (line.split() for line in told.splitlines())
    return {cell[7].split("@")[0]: int(cell[1], 16) for cell in cells if len(cell) >= 8 and cell[3] == "FUNC"}


def listed(path):
    with open(path, encoding="ascii") as lines:
        return {line.strip() for line in lines if not line.startswith("#")}


def offences(library, path):
    names, places = listed(path), functions(library)
    found = sorted(places[name] for name in names if name in places)
    if len(found) < LEAST_FOUND * len(names):
        yield f"only {len(found)} of {len(names)} functions of the list are there: call scripts/start-order"
        return
    start = places["InitializeOxaCore"]
    close = [place for place in found if abs(place - start) < MOST_BYTES]
    if len(close) < LEAST_CLOSE * len(found):
        yield f"only {len(close)} of {len(found)} lie near each other"


def main():
    found = list(offences(*sys.argv[1:]))
    for offence in found:
        print(offence)
    sys.exit(1 if found else 0)


main()
