"""How gdb shows the library's values: Time, Elapse, PathName, alerts, units and quantities.

gdb loads this file with the library where it is installed; elsewhere say
    source tools/gdb/oxacore_printers.py

    (gdb) print start
    $1 = 1998/08/23 02:33:17.1234567 UTC
    (gdb) print error
    $2 = (const Oxa::Core::Error &) ProbeGone: "Probe 3 is gone" (Acme.Probe)

Only memory is read, and no function of the program is called: it works on a core file too. Objects that nobody has
built yet show as what they are, or say that they can't be read; nothing that they hold is followed without a bound.

Compilers describe classes with virtual operations beside the library's own code only, and its debug symbols may be
missing. "print" and "oxa EXPRESSION" show such objects all the same; "info locals", and objects that hold them, show
<incomplete type>, which is nothing that this file is asked about. So fields are found by their places, which the
test of this file compares with the compiler's.

print/r shows the fields as they are.
"""
import re

import gdb
import gdb.printing

# Places in bytes, of the library's own builds: x86-64, with the GNU standard library.
LAYOUT = {
    "Oxa::Core::AlertInfo": {"m_spData": 8, "m_spCallStack": 24, "m_eSeverity": 40, "m_spUnwindStack": 48},
    "Oxa::Core::PathName": {"m_sText": 0},
    "Oxa::Core::UnitDescriptor": {"m_sName": 8, "m_sAbbreviation": 40, "m_dConversionFactor": 72, "m_dimensions": 80},
    "Oxa::Core::UnitizedValue<double>": {"value": 8, "units": 16, "dictionary": 32},
}
POINTER = 8
STRING = 32             # pointer, length, room for short texts
TABLE_FIRST_NODE = 16   # of an unordered_map
TABLE_COUNT = 24
NODE_KEY = POINTER      # behind the pointer to the next node
NODE_VALUE = NODE_KEY + STRING

LONGEST_TEXT = 1 << 20  # what is longer isn't a text, but an object that nobody has built
LARGEST_TABLE = 1000
LONGEST_TABLE = 1 << 24  # bytes of all its texts
TICKS_PER_SECOND = 10000000
TICKS_PER_DAY = 86400 * TICKS_PER_SECOND
LAST_YEAR = 30827       # what the library takes for a moment
DIMENSIONS = ("Length", "Mass", "Time", "Current", "Temperature", "Amount", "LuminousIntensity", "Angle")


class Unreadable(Exception):
    """An object that isn't one (yet)."""


# --- Memory

def read(address, size):
    try:
        return gdb.selected_inferior().read_memory(address, size).tobytes()
    except (gdb.error, OverflowError):  # no gdb.MemoryError for a part of an object
        raise Unreadable("no memory at %#x" % address)


def read_number(address, size=POINTER, signed=False):
    return int.from_bytes(read(address, size), "little", signed=signed)


def read_double(address):
    number = gdb.Value(read(address, 8), gdb.lookup_type("double"))
    return float(number)


def read_text(address):
    length = read_number(address + POINTER)
    if length > LONGEST_TEXT:
        raise Unreadable("a text of %d bytes" % length)
    return read(read_number(address), length)


def read_table(address):
    """The entries of an AlertData, as far as they can be read."""
    count, node = read_number(address + TABLE_COUNT), read_number(address + TABLE_FIRST_NODE)
    entries, size = {}, 0
    while node and len(entries) < min(count, LARGEST_TABLE):
        key, value = read_text(node + NODE_KEY), read_text(node + NODE_VALUE)
        size += len(key) + len(value)
        if key in entries or size > LONGEST_TABLE:
            raise Unreadable("a table without an end")
        entries[key] = value
        node = read_number(node)
    return entries


def quoted(text, mark='"'):
    """As gdb writes a string, cut where gdb cuts strings."""
    most = gdb.parameter("print elements") or len(text)
    shown = "".join(escaped(byte) for byte in text[:most])
    return mark + shown + mark + ("..." if len(text) > most else "")


def bare(text):
    return quoted(text, "")


def escaped(byte):
    named = {0x22: '\\"', 0x5c: "\\\\", 0x0a: "\\n", 0x09: "\\t", 0x0d: "\\r"}.get(byte)
    return named or (chr(byte) if 0x20 <= byte < 0x7f else "\\%03o" % byte)


# --- Moments and spans

def decimal(ticks, per_unit):
    """A count of ticks in a larger unit, exactly."""
    digits = len(str(per_unit)) - 1
    whole, below = divmod(ticks, per_unit)
    return ("%d.%0*d" % (whole, digits, below)).rstrip("0").rstrip(".")


def span(ticks):
    """The largest unit below a minute, or days, hours, minutes and seconds."""
    sign, ticks = ("-", -ticks) if ticks < 0 else ("", ticks)
    for unit, per_unit in (("us", 10), ("ms", 10000)):
        if 0 < ticks < per_unit * 1000:
            return "%s%s %s" % (sign, decimal(ticks, per_unit), unit)
    minutes, rest = divmod(ticks, 60 * TICKS_PER_SECOND)
    counts = ((minutes // 1440, "d"), (minutes // 60 % 24, "h"), (minutes % 60, "min"))
    parts = ["%d %s" % count for count in counts if count[0]]
    if rest or not parts:
        parts.append(decimal(rest, TICKS_PER_SECOND) + " s")
    return sign + " ".join(parts)


def date_of(days):
    """Year, month and day of a count of days since 1601, in the calendar of today."""
    days += 306  # since 1 March 1600, when a cycle of 400 years began
    cycle, day = divmod(days, 146097)
    century = min(day // 36524, 3)
    day -= century * 36524
    four = day // 1461
    day -= four * 1461
    year = min(day // 365, 3)
    day -= year * 365
    month = (5 * day + 2) // 153  # from March
    year += 1600 + 400 * cycle + 100 * century + 4 * four + (month >= 10)
    return year, month + 3 if month < 10 else month - 9, day - (153 * month + 2) // 5 + 1


def moment(ticks):
    """In UTC: a core file may come from another zone."""
    days, clock = divmod(ticks, TICKS_PER_DAY)
    year, month, day = date_of(days)
    if ticks < 0:
        return "before 1601 (%d ticks)" % ticks
    if year > LAST_YEAR:
        return "after %d (%d ticks)" % (LAST_YEAR, ticks)
    seconds, below = divmod(clock, TICKS_PER_SECOND)
    return "%04d/%02d/%02d %02d:%02d:%02d.%07d UTC" % (
        year, month, day, seconds // 3600, seconds // 60 % 60, seconds % 60, below)


# --- Objects, by their addresses

def pathname(address):
    return quoted(read_text(address + LAYOUT["Oxa::Core::PathName"]["m_sText"]))


def number(value):
    return repr(value)[:-2] if repr(value).endswith(".0") else repr(value)


def dimensions(address):
    parts = []
    for index, name in enumerate(DIMENSIONS):
        exponent = read_number(address + 8 * index, 8, signed=True)
        if exponent:
            parts.append(name if exponent == 1 else "%s^%d" % (name, exponent))
    return " ".join(parts) or "no dimensions"


def unit_text(address, field):
    return read_text(address + LAYOUT["Oxa::Core::UnitDescriptor"][field])


def unit(address):
    places = LAYOUT["Oxa::Core::UnitDescriptor"]
    factor = number(read_double(address + places["m_dConversionFactor"]))
    name, abbreviation = unit_text(address, "m_sName"), unit_text(address, "m_sAbbreviation")
    return "%s (%s): factor %s, %s" % (
        bare(name), bare(abbreviation), factor, dimensions(address + places["m_dimensions"]))


def quantity(address):
    places = LAYOUT["Oxa::Core::UnitizedValue<double>"]
    value = number(read_double(address + places["value"]))
    units = read_number(address + places["units"])
    if not units:
        return value
    abbreviation = unit_text(units, "m_sAbbreviation") or unit_text(units, "m_sName")
    return "%s %s" % (value, bare(abbreviation)) if abbreviation else value


def class_of(address):
    """The class of an object by its table of virtual operations, which needs no debug symbols; or None."""
    table = gdb.execute("info symbol %#x" % read_number(address), to_string=True)
    found = re.match(r"vtable for (.*) \+ \d+(?: in section |$)", table)
    return found.group(1) if found else None


def class_by_data(data):
    """The last name of the inheritance that an error carries."""
    last = data.get(b"Inheritance", b"").split(b"=>")[-1].decode("ascii", "replace")
    found = re.match(r"\.\?A[VU](.*)@@$", last)
    return "::".join(reversed(found.group(1).split("@"))) if found else last


def alert(address):
    """Class, message and log name. For want of memory an alert has no data."""
    table = read_number(address + LAYOUT["Oxa::Core::AlertInfo"]["m_spData"])
    data = read_table(table) if table else {}
    name = class_of(address) or class_by_data(data) or "alert"
    if b"Message" not in data:
        return "%s: no message" % name
    log_name = bare(data.get(b"LogName", b""))
    return "%s: %s%s" % (name, quoted(data[b"Message"]), " (%s)" % log_name if log_name else "")


# --- Values of gdb

BY_ADDRESS = {
    "Oxa::Core::AlertInfo": alert,
    "Oxa::Core::PathName": pathname,
    "Oxa::Core::UnitDescriptor": unit,
    "Oxa::Core::UnitizedValue<double>": quantity,
    "Oxa::Core::Dimensions": dimensions,
}
BY_TICKS = {"Oxa::Core::Time": moment, "Oxa::Core::Elapse": span}
# Where a class isn't described, its name is all there is.
FAMILIES = (
    (re.compile(r"Oxa::Core::ErrorClass<|Oxa::Core::(Error|Warning|(Logic|IO|OS|Hardware|Unknown)Error)$"), alert),
    (re.compile(r"Oxa::Core::UnitDescriptor_\w+$"), unit),
)
REFERENCES = (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF)


def family_of(kind, offset=0):
    """What shows a class, and the place in it of the base that this is about; or None."""
    kind = kind.strip_typedefs().unqualified()
    if kind.code != gdb.TYPE_CODE_STRUCT or not kind.name:
        return None
    if kind.name in BY_ADDRESS:
        return BY_ADDRESS[kind.name], offset
    for field in kind.fields():
        if field.is_base_class and hasattr(field, "bitpos"):
            found = family_of(field.type, offset + field.bitpos // 8)
            if found:
                return found
    for pattern, show in FAMILIES:
        if pattern.match(kind.name):
            return show, offset
    return None


def guarded(show, argument):
    try:
        return show(argument)
    except Unreadable as reason:
        return "<unreadable: %s>" % reason


class Shown:
    """One value for gdb."""

    def __init__(self, show, argument):
        self._show, self._argument = show, argument

    def to_string(self):
        return guarded(self._show, self._argument)


def shown(value):
    """The printer of a value, or None."""
    kind = value.type.strip_typedefs()
    if kind.code in REFERENCES:
        value = value.referenced_value()
        kind = value.type.strip_typedefs()
    name = kind.unqualified().name
    if name in BY_TICKS:
        return Shown(lambda ticks: BY_TICKS[name](int(ticks)), value["m_iTicks"])
    found = family_of(kind)
    if not found or value.address is None:
        return None
    return Shown(found[0], int(value.address) + found[1])


class Printers(gdb.printing.PrettyPrinter):
    def __init__(self):
        super().__init__("OxaCore")

    def __call__(self, value):
        return shown(value)


class ShowCommand(gdb.Command):
    """Show an object of OxaCore: oxa EXPRESSION

It may be an object, a reference or a pointer. An object of a class that the debug symbols at hand don't describe is
shown, too: what isn't known as anything else is taken for an alert."""

    def __init__(self):
        super().__init__("oxa", gdb.COMMAND_DATA, gdb.COMPLETE_EXPRESSION)

    def invoke(self, argument, from_tty):
        value = gdb.parse_and_eval(argument)
        if value.type.strip_typedefs().code == gdb.TYPE_CODE_PTR:
            value = value.dereference()
        printer = shown(value)
        if printer is None and value.address is not None and value.type.strip_typedefs().code == gdb.TYPE_CODE_STRUCT:
            printer = Shown(alert, int(value.address))
        if printer is None:
            raise gdb.GdbError("Nothing of OxaCore: %s" % value.type)
        print(printer.to_string())


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers(), replace=True)
ShowCommand()
