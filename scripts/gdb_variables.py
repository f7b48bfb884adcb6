"""Run by gdb for scripts/compare-variables: what gdb sees, in the texts of call stacks."""
import os

import gdb

CAP = 256        # characters of a string
ELEMENTS = 16    # of an array
DEPTH = 3        # of objects in objects

NAMES = {
    "char": "char", "signed char": "char", "unsigned char": "unsigned char", "char8_t": "char",
    "wchar_t": "UNICODE_CHAR", "char16_t": "UNICODE_CHAR", "char32_t": "UNICODE_CHAR",
    "short": "short", "short int": "short", "unsigned short": "unsigned short", "short unsigned int": "unsigned short",
    "int": "long", "unsigned int": "unsigned long", "long": "long", "long int": "long",
    "unsigned long": "unsigned long", "long unsigned int": "unsigned long", "long long": "_int64",
    "long long int": "_int64", "unsigned long long": "unsigned _int64", "long long unsigned int": "unsigned _int64",
    "__int128": "_int128", "__int128 unsigned": "unsigned _int128", "unsigned __int128": "unsigned _int128",
    "bool": "bool", "float": "float", "double": "float", "long double": "float", "void": "void",
    "complex float": "COMPLEX", "complex double": "COMPLEX", "_Complex double": "COMPLEX",
    "decltype(nullptr)": "[NO TYPE]", "std::nullptr_t": "[NO TYPE]",
}
CHARACTERS = ("char", "signed char", "wchar_t", "char8_t", "char16_t", "char32_t")
LEFT_OUT = ("Oxa::Core::CodeContext", "Oxa::Core::Error", "Oxa::Core::Error *")
REFERENCES = (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF)
CLASSES = (gdb.TYPE_CODE_STRUCT, gdb.TYPE_CODE_UNION)


def plain(kind):
    """Without the names that stand for others, and without const and volatile."""
    while kind.code == gdb.TYPE_CODE_TYPEDEF:
        if kind.name == "HRESULT":
            return kind
        kind = kind.target()
    return kind.unqualified()


def class_name(kind):
    name = kind.name or kind.tag
    if name is None:
        return "<unnamed>"
    if name.startswith("std::"):
        name = name.replace("std::__cxx11::", "std::").replace(", ", ",")
    return name


def is_character(kind):
    return plain(kind).name in CHARACTERS


def behind(name, sign):
    return name + sign if name.endswith("*") else name + " " + sign


def type_text(kind):
    kind = plain(kind)
    code = kind.code
    if kind.name == "HRESULT":
        return "HRESULT"
    if code == gdb.TYPE_CODE_PTR:
        target = plain(kind.target())
        if target.code == gdb.TYPE_CODE_FUNC:
            arguments = ",".join(type_text(field.type) for field in target.fields())
            return "%s (*)(%s)" % (type_text(target.target()), arguments)
        if target.name in ("wchar_t", "char16_t", "char32_t"):
            return "wchar_t *"
        return behind(type_text(target), "*")
    if code == gdb.TYPE_CODE_REF:
        return behind(type_text(kind.target()), "&")
    if code == gdb.TYPE_CODE_RVALUE_REF:
        return behind(type_text(kind.target()), "&&")
    if code == gdb.TYPE_CODE_ARRAY:
        dimensions = ""
        while kind.code == gdb.TYPE_CODE_ARRAY:
            dimensions += "[%d]" % (kind.range()[1] + 1)
            kind = plain(kind.target())
        return type_text(kind) + " " + dimensions
    if code == gdb.TYPE_CODE_MEMBERPTR:
        return str(kind).replace("int ", "long ")
    if code in CLASSES or code == gdb.TYPE_CODE_ENUM:
        return class_name(kind)
    return NAMES.get(kind.name, "gdb: %s" % kind)


def escaped(text):
    out = ""
    for c in text:
        if c in "\n\r\t":
            out += {"\n": "\\n", "\r": "\\r", "\t": "\\t"}[c]
        else:
            out += c if ord(c) >= 32 and ord(c) != 127 else "\\x%02x" % ord(c)
    return out


def quoted(text, length):
    return '"%s"%s' % (escaped(text[:CAP]), "..." if length > CAP else "")


def pointed_text(pointer):
    """What is behind a pointer to characters."""
    width = plain(pointer.type.target()).sizeof
    text = ""
    try:
        while len(text) <= CAP:
            code = int((pointer + len(text)).dereference())
            if code == 0:
                break
            text += chr(code & (1 << 8 * width) - 1)
    except gdb.MemoryError:
        if not text:
            return '"????"'
    if width == 1:
        return quoted(text.encode("latin-1").decode(), len(text))
    return quoted(text, len(text))


def string_text(value):
    """An object of the language's string class."""
    length = int(value["_M_string_length"])
    characters = value["_M_dataplus"]["_M_p"]
    codes = [int((characters + at).dereference()) for at in range(min(length, CAP))]
    if plain(characters.type.target()).sizeof == 1:
        return quoted(bytes(code & 255 for code in codes).decode(), length)
    return quoted("".join(map(chr, codes)), length)


def character_text(value):
    code = int(value)
    return "%d '%c'" % (code, code) if 32 <= code <= 126 else str(code)


def float_text(value, size):
    """The shortest digits that mean the same number."""
    if size > 8:
        return str(value)
    number = float(value)
    if size == 8:
        text = repr(number)
    else:
        text = next(t for t in ("%.*g" % (digits, number) for digits in range(1, 10))
                    if abs(float(t) - number) <= abs(number) * 1e-8)
    return text[:-2] if text.endswith(".0") else text


def raw_hexadecimal(value):
    size = value.type.sizeof
    data = gdb.selected_inferior().read_memory(value.address, size).tobytes()
    return "%x" % int.from_bytes(data, "little")


def members_text(value, kind, depth):
    parts = []
    for field in kind.fields():
        if field.is_base_class:
            parts.append("%s %s" % (class_name(plain(field.type)), value_text(value[field], depth)))
        elif hasattr(field, "bitpos") and not field.artificial and not (field.name or "").startswith("_vptr"):
            text = value_text(value[field], depth + 1)
            parts.append("%s %s = %s" % (type_text(field.type), field.name, text) if field.name else text)
    return "{" + ", ".join(parts) + "}"


def array_text(value, kind, depth):
    count = kind.range()[1] + 1
    if is_character(kind.target()):
        codes = [int(value[at]) for at in range(min(count, CAP))]
        codes = codes[:codes.index(0)] if 0 in codes else codes
        return quoted("".join(map(chr, codes)), len(codes))
    parts = [value_text(value[at], depth) for at in range(min(count, ELEMENTS))]
    return "{" + ", ".join(parts + (["..."] if count > ELEMENTS else [])) + "}"


def result_text(value):
    return "%x (%s)" % (int(value), os.strerror(int(value)))


def scalar_text(value, kind):
    if kind.name == "HRESULT":
        return result_text(value)
    if kind.name in CHARACTERS:
        return character_text(value)
    if kind.code == gdb.TYPE_CODE_BOOL:
        return "true" if int(value) else "false"
    if kind.code == gdb.TYPE_CODE_FLT:
        return float_text(value, kind.sizeof)
    if kind.code == gdb.TYPE_CODE_COMPLEX:
        return "COMPLEX: " + raw_hexadecimal(value)
    if kind.code == gdb.TYPE_CODE_ENUM:
        return str(value).split("::")[-1]
    if NAMES.get(kind.name) == "[NO TYPE]":
        return "0x0"
    if kind.code == gdb.TYPE_CODE_MEMBERPTR:
        return "0x%x" % int(value.cast(gdb.lookup_type("long")))
    return str(int(value)) if kind.sizeof <= 8 else str(value)


def value_text(value, depth=0):
    try:
        return readable_text(value, depth)
    except gdb.MemoryError:
        return "{Uninitialized Object}" if plain(value.type).code in CLASSES else "{Uninitialized}"


def readable_text(value, depth):
    kind = plain(value.type)
    if value.is_optimized_out:
        return "{Failed to Determine Address}"
    if kind.code in REFERENCES:
        return value_text(value.referenced_value(), depth)
    if kind.code == gdb.TYPE_CODE_PTR:
        address = "0x%x" % int(value)
        return address + " " + pointed_text(value) if is_character(kind.target()) else address
    if kind.code == gdb.TYPE_CODE_ARRAY:
        return array_text(value, kind, depth)
    if kind.code in CLASSES:
        if class_name(kind).startswith("std::basic_string<"):
            return string_text(value)
        return members_text(value, kind, depth) if depth < DEPTH else "{...}"
    return scalar_text(value, kind)


def is_left_out(name, kind):
    kind = plain(kind)
    if kind.code in REFERENCES or name == "this":
        kind = plain(kind.target())
    return type_text(kind) in LEFT_OUT or type_text(kind).startswith(
        ("std::basic_ostringstream<", "std::basic_istringstream<", "std::basic_stringstream<"))


def variables(frame):
    """The symbols of the frame's blocks, inner ones first."""
    seen, block = set(), frame.block()
    while block and not (block.is_global or block.is_static):
        for symbol in block:
            if (symbol.is_variable or symbol.is_argument) and symbol.name and symbol.name not in seen:
                seen.add(symbol.name)
                yield symbol
        if block.function:
            break
        block = block.superblock


def look(function, out):
    frame = gdb.newest_frame()
    while frame and not (frame.name() or "").split("(")[0].endswith(function):
        frame = frame.older()
    if not frame:
        return
    frame.select()
    for symbol in variables(frame):
        if is_left_out(symbol.name, symbol.type):
            continue
        try:
            value = value_text(symbol.value(frame))
        except gdb.error as trouble:
            value = "gdb: %s" % str(trouble).replace("\n", " ")
        out.write("\t".join([function, symbol.name, type_text(symbol.type), value]) + "\n")


def main():
    for setting in ("confirm off", "pagination off", "breakpoint pending on", "print repeats unlimited",
                    "debuginfod enabled off"):
        gdb.execute("set " + setting, to_string=True)
    gdb.execute("break HasLooked", to_string=True)
    gdb.execute("run", to_string=True)
    path = os.environ["VARIABLES_BY_GDB"]
    with open(path + ".part", "w", encoding="utf-8") as out:
        while gdb.selected_inferior().pid:
            name = gdb.newest_frame().name()
            if name != "HasLooked":
                raise gdb.GdbError("stopped in " + str(name))
            function = gdb.parse_and_eval("(char*)$rdi").string()
            look(function, out)
            gdb.execute("continue", to_string=True)
    os.rename(path + ".part", path)  # it's there only if all of it is


main()
