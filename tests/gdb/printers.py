"""Run by gdb: what it shows of the host's values, to the letter."""
import os
import sys

import gdb

FOLDER, HOST = os.environ["OXACORE_FOLDER"], os.environ["OXACORE_HOST"]
failures = []

EVERYWHERE = {
    "moments[0]": "1601/01/01 00:00:00.0000000 UTC",
    "moments[1]": "1970/01/01 00:00:00.0000000 UTC",
    "moments[2]": "1998/08/23 02:33:17.1234567 UTC",
    "moments[3]": "before 1601 (-1 ticks)",
    "moments[4]": "2000/02/29 00:00:00.0000000 UTC",
    "moments[5]": "1999/12/31 23:59:59.9999999 UTC",
    "moments[6]": "30827/12/31 23:59:59.9999999 UTC",
    "moments[7]": "after 30827 (9223149888000000000 ticks)",
    "moments[8]": "before 1601 (-9223372036854775808 ticks)",
    "spans[0]": "0 s",
    "spans[1]": "0.1 us",
    "spans[2]": "-61.2 us",
    "spans[3]": "999.9 us",
    "spans[4]": "1 ms",
    "spans[5]": "20 ms",
    "spans[6]": "-1.5000001 s",
    "spans[7]": "1 min",
    "spans[8]": "1 h",
    "spans[9]": "5 d 2 h 3 min 4.5 s",
    "spans[10]": "10675199 d 2 h 48 min 5.4775807 s",
    "spans[11]": "-10675199 d 2 h 48 min 5.4775808 s",
    "path": r'"C:\\data\\run \"1\".txt"',
    "reference": r'"C:\\data\\run \"1\".txt"',
    "bytes": r'"/gr\303\274n/\001"',
    "none": '""',
    "longName": '"%s"...' % ("x" * 200),
    # References and objects by themselves need no description of their class.
    "error": r'Host::ProbeGone: "Probe 3 is \"gone\"\n" (Acme.Probe)',
    "copy": r'Oxa::Core::Error: "Probe 3 is \"gone\"\n" (Acme.Probe)',
    "plain": 'Oxa::Core::LogicError: "bad"',
    "quantities.speed": "90 mph",
    "quantities.number": "0.1",
    "quantities.area": "3 in.*in.",
    "quantities.unit": "Mile per Hour (mph): factor 2.236936292054402, Length Time^-1",
    "quantities.nothing": " (): factor 1, no dimensions",
    # What isn't an object yet.
    "*(Oxa::Core::PathName*)g_zeros": '""',
    "*(Oxa::Core::PathName*)g_garbage": "<unreadable: a text of 11936128518282651045 bytes>",
    "*(Oxa::Core::PathName*)g_longText": "<unreadable: a text of 1099511627776 bytes>",
    "*(Oxa::Core::Time*)g_garbage": "before 1601 (-6510615555426900571 ticks)",
    "*(Oxa::Core::Elapse*)g_garbage": "-7535434 d 16 h 5 min 42.6900571 s",
}

DESCRIBED = {
    "*(Host::ProbeGone*)&error": r'Host::ProbeGone: "Probe 3 is \"gone\"\n" (Acme.Probe)',
    # An alert that is not the first base.
    "broken": r'Host::ScaleBroken: "Probe 4 is \"gone\"\n"',
    "*(Host::ScaleBroken*)((char*)&broken - 16)": r'Host::ScaleBroken: "Probe 4 is \"gone\"\n"',
    "parameter": 'Oxa::Core::InvalidParameter: "Invalid Parameter: iCount = -3"',
    "noisy": 'Host::ProbeNoisy: "Probe is noisy"',
    "empty": 'Oxa::Core::AlertInfo: "No Message"',
    "quantities.celsius": "Celsius (C): factor 1, Temperature",
    "*(Oxa::Core::Error*)g_zeros": "alert: no message",
    "*(Oxa::Core::Error*)g_garbage": "<unreadable: no memory at 0xa5a5a5a5a5a5a5bd>",
    "*(Oxa::Core::Error*)g_circle": "<unreadable: a table without an end>",
    "*(Oxa::Core::UnitDescriptor*)g_garbage": "<unreadable: a text of 11936128518282651045 bytes>",
    "*(Oxa::Core::UnitizedValue<double>*)g_zeros": "0",
    "*(Oxa::Core::UnitizedValue<double>*)g_garbage": "<unreadable: no memory at 0xa5a5a5a5a5a5a5d5>",
    "quantities.unit.m_dimensions": "Length Time^-1",
}

BY_COMMAND = {
    "error": EVERYWHERE["error"],
    "&error": EVERYWHERE["error"],
    "parameter": DESCRIBED["parameter"],
    "noisy": DESCRIBED["noisy"],
    "empty": DESCRIBED["empty"],
    "quantities.speed": "90 mph",
    "&path": EVERYWHERE["path"],
    "moments[1]": EVERYWHERE["moments[1]"],
    "spans[4]": "1 ms",
}


def expect(what, expected, actual):
    if expected != actual:
        failures.append("%s\n  expected: %s\n  actual:   %s" % (what, expected, actual))


def outcome(command):
    """What gdb says, or why it doesn't."""
    try:
        return gdb.execute(command, to_string=True).rstrip("\n")
    except gdb.error as refused:
        return "refused: %s" % refused


def leave(status):
    sys.stdout.flush()
    gdb.execute("quit %d" % status)


def stop():
    gdb.execute("break StopHere", to_string=True)
    try:
        gdb.execute("run", to_string=True)
    except gdb.error as refused:
        print("gdb can't run a program here: %s" % refused)
        leave(77)


def look_at_core():
    """From here on there is a file in the place of the process: no function of it can be called any more."""
    core = os.path.join(FOLDER, "core")
    gdb.execute("generate-core-file " + core, to_string=True)
    gdb.execute("kill", to_string=True)
    gdb.execute("core-file " + core, to_string=True)


def check_layout(module):
    """The places in the printers' table are the compiler's."""
    for name, fields in module["LAYOUT"].items():
        real = {field.name: field.bitpos // 8 for field in gdb.lookup_type(name).fields()
                if hasattr(field, "bitpos") and not field.is_base_class}
        for field, place in fields.items():
            expect("%s::%s" % (name, field), place, real.get(field))


def check_all():
    gdb.execute("set print elements 200")
    for expression, expected in EVERYWHERE.items():
        expect("output " + expression, expected, outcome("output " + expression))
    for expression, expected in BY_COMMAND.items():
        expect("oxa " + expression, expected, outcome("oxa " + expression))
    expect("oxa 3", "refused: Nothing of OxaCore: int", outcome("oxa 3"))
    if HOST == "Described":
        for expression, expected in DESCRIBED.items():
            expect("output " + expression, expected, outcome("output " + expression))
        expect("raw", True, "m_iTicks = 600000000" in outcome("output/r spans[7]"))


gdb.execute("set print pretty off")
gdb.execute("source " + os.environ["OXACORE_PRINTERS"])
stop()
if HOST == "Described":
    look_at_core()
gdb.execute("frame function LookAt", to_string=True)
check_all()
if HOST == "Described":
    check_layout(sys.modules["__main__"].__dict__)
print("\n".join(failures) or "gdb shows all values as they are meant to be.")
leave(1 if failures else 0)
