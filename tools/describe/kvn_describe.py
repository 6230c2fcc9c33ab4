#!/usr/bin/env python3
"""Writes the machine-readable description of include/kvnsdk2.h (docs/description.md).

The header is read by libclang, so types, sizes, alignments and offsets are the
compiler's own, for the two layouts the header pins: Linux x86-64 (lp64) and
Windows x64 (win64). The parse is hermetic (freestanding, clang's own headers
only), so the result does not depend on the machine's C library.

What it cannot classify stops the run with a message that names the declaration:
nothing is ever dropped silently.

Usage: kvn_describe.py HEADER OUTPUT.json [--version X.Y.Z]
"""
import argparse
import glob
import json
import os
import re
import sys
import tempfile

try:
    import clang.cindex as ci
except ImportError:  # pragma: no cover - reported to the user
    sys.exit("kvn_describe: the Python libclang bindings are missing "
             "(Debian: apt-get install python3-clang-14)")

SCHEMA = 1
TARGETS = {"lp64": "x86_64-linux-gnu", "win64": "x86_64-w64-windows-gnu"}


class Unsupported(Exception):
    """A declaration the description has no form for."""


def fail(where, what):
    raise Unsupported(f"{where}: {what}")


def resource_include():
    """clang's own headers (stddef.h, stdint.h) for a freestanding parse."""
    env = os.environ.get("KVN_CLANG_RESOURCE_INCLUDE")
    if env:
        return env
    for pattern in ("/usr/lib/llvm-*/lib/clang/*/include", "/usr/lib/clang/*/include",
                    "/usr/local/lib/clang/*/include"):
        hits = sorted(p for p in glob.glob(pattern) if os.path.exists(os.path.join(p, "stddef.h")))
        if hits:
            return hits[-1]
    sys.exit("kvn_describe: clang's resource headers (stddef.h) were not found; "
             "set KVN_CLANG_RESOURCE_INCLUDE (Debian: libclang-common-14-dev)")


def parse(header, target, shim):
    args = ["-x", "c", "-std=c11", "-target", target, "-ffreestanding", "-nostdinc",
            "-isystem", resource_include(), "-isystem", shim, "-fparse-all-comments"]
    opts = (ci.TranslationUnit.PARSE_DETAILED_PROCESSING_RECORD
            | ci.TranslationUnit.PARSE_SKIP_FUNCTION_BODIES)
    tu = ci.Index.create().parse(header, args=args, options=opts)
    errors = [d for d in tu.diagnostics if d.severity >= ci.Diagnostic.Error]
    if errors:
        raise Unsupported("; ".join(f"{d.location.file}:{d.location.line}: {d.spelling}" for d in errors))
    return tu


def in_header(cursor, header):
    f = cursor.location.file
    return f is not None and os.path.realpath(f.name) == os.path.realpath(header)


# ---------------------------------------------------------------------------
# Comments

def clean_comment(raw):
    """The text of a /** */ or /**< */ comment without its markers."""
    if not raw:
        return ""
    text = re.sub(r"^/\*+<?|\*+/$", "", raw.strip())
    lines = [re.sub(r"^\s*\*?\s?", "", line) for line in text.splitlines()]
    return "\n".join(lines).strip()


def brief_of(cursor, raw=None):
    """The first sentence (or @brief) of the cursor's Doxygen comment, one line."""
    text = clean_comment(raw if raw is not None else cursor.raw_comment)
    if not text:
        return ""
    m = re.search(r"@brief\s+(.*?)(?:\n\s*\n|\n\s*@|$)", text, re.S)
    if m:
        text = m.group(1)
    else:
        text = re.split(r"\n\s*\n|\n\s*@", text, maxsplit=1)[0]
    text = " ".join(text.split())
    m = re.match(r"(.*?\.)(\s|$)", text)
    return m.group(1) if m else text


WORD = r"(get|set|reset|upload|download)\s+\((0x[0-9A-Fa-f]{8})\)"
REQUEST_FORMS = [
    # get (0x00020002), command 104.   set (...), command 7, no payload.
    # "payload" is what the comment says beyond the type: False "no payload", True
    # "with a payload" (on a get), None as the type has it.
    (re.compile(WORD + r"( with a payload)?, command (\d+)(, no payload)?\.$"),
     lambda m: {"type": m[1], "word": m[2], "command": int(m[4]),
                "payload": False if m[5] else (True if m[3] else None)}),
    # upload (0x00040002), then set (0x00010002) per packet, command 413.
    (re.compile(WORD + r", then " + WORD + r" per packet, command (\d+)\.$"),
     lambda m: {"type": m[1], "word": m[2], "command": int(m[5]), "payload": None,
                "then": {"type": m[3], "word": m[4]}}),
    # reset (0x00030002), the given command id.
    (re.compile(WORD + r", the given command id\.$"),
     lambda m: {"type": m[1], "word": m[2], "command": None, "payload": None}),
    (re.compile(r"the given request word and command id\.$"),
     lambda m: {"type": None, "word": None, "command": None, "payload": None}),
    (re.compile(r"none \((.*)\)\.$"), lambda m: None),
]


def request_of(name, comment, takes_connection):
    """The request an export sends, from its '@par Request:' line. Every export that
    takes a connection states it; library functions may leave it out."""
    m = re.search(r"@par Request:\s*(.*)", comment)
    if not m:
        if takes_connection:
            fail(name, "its comment has no '@par Request:' line")
        return None
    text = m.group(1).strip()
    for pattern, build in REQUEST_FORMS:
        hit = pattern.match(text)
        if hit:
            return build(hit)
    fail(name, f"'@par Request: {text}' is not a form the description knows")


# ---------------------------------------------------------------------------
# Types

INTEGER_KINDS = {
    ci.TypeKind.CHAR_S: ("char", True), ci.TypeKind.SCHAR: ("int", True),
    ci.TypeKind.UCHAR: ("uint", False), ci.TypeKind.SHORT: ("int", True),
    ci.TypeKind.USHORT: ("uint", False), ci.TypeKind.INT: ("int", True),
    ci.TypeKind.UINT: ("uint", False), ci.TypeKind.LONG: ("int", True),
    ci.TypeKind.ULONG: ("uint", False), ci.TypeKind.LONGLONG: ("int", True),
    ci.TypeKind.ULONGLONG: ("uint", False), ci.TypeKind.WCHAR: ("wchar", None),
    ci.TypeKind.BOOL: ("uint", False),
}


def type_name(t):
    """The type as the header spells it, without qualifiers or the struct keyword."""
    s = t.spelling
    return re.sub(r"\b(const|volatile|struct)\s+", "", s).strip()


def typedef_chain(t):
    """The names a type goes by, through its typedefs (wchar_t is an int in C)."""
    names = []
    while t.kind in (ci.TypeKind.TYPEDEF, ci.TypeKind.ELABORATED):
        if t.kind == ci.TypeKind.TYPEDEF:
            names.append(t.get_declaration().spelling)
            t = t.get_declaration().underlying_typedef_type
        else:
            t = t.get_named_type()
    return names


def scalar(t, where):
    """kind, element size and named record of a non-array type."""
    canon = t.get_canonical()
    if "wchar_t" in typedef_chain(t):
        fail(where, "a wchar_t member has no fixed size on the wire")
    if canon.kind in INTEGER_KINDS:
        kind = INTEGER_KINDS[canon.kind][0]
        if kind == "wchar":
            fail(where, "a wchar_t member has no fixed size on the wire")
        if canon.kind == ci.TypeKind.CHAR_S:
            kind = "char"
        elif kind == "uint" and canon.kind == ci.TypeKind.UCHAR and type_name(t) not in ("uint8_t", "unsigned char"):
            kind = "uint"
        return {"kind": kind, "type": type_name(t), "width": canon.get_size()}
    if canon.kind == ci.TypeKind.RECORD:
        decl = canon.get_declaration()
        if decl.kind != ci.CursorKind.STRUCT_DECL or not decl.spelling:
            fail(where, f"type '{t.spelling}' is a union or an unnamed record")
        return {"kind": "record", "type": decl.spelling, "width": canon.get_size()}
    if canon.kind == ci.TypeKind.POINTER:
        return {"kind": "pointer", "type": type_name(t), "width": canon.get_size(),
                "pointee": type_name(t.get_pointee() if t.kind == ci.TypeKind.POINTER else canon.get_pointee()),
                "const": canon.get_pointee().is_const_qualified()}
    if canon.kind == ci.TypeKind.ENUM:
        return {"kind": "int", "type": type_name(t), "width": canon.get_size()}
    fail(where, f"type '{t.spelling}' ({canon.kind.name}) is not a fixed-width integer, "
                "character, pointer or record")


def member_of(field, record_type, where):
    if field.is_bitfield():
        fail(where, "bit-fields have no place in a record")
    t = field.type
    dims = []
    while t.get_canonical().kind == ci.TypeKind.CONSTANTARRAY:
        dims.append(t.get_canonical().element_count)
        t = t.get_canonical().element_type
    if t.get_canonical().kind in (ci.TypeKind.INCOMPLETEARRAY, ci.TypeKind.VARIABLEARRAY):
        fail(where, "a flexible or variable array has no fixed size")
    m = {"name": field.spelling}
    m.update(scalar(t, where))
    m["dims"] = dims
    m["offset"] = record_type.get_offset(field.spelling) // 8
    m["size"] = field.type.get_size()
    m["brief"] = brief_of(field) or trailing_comment(field)
    return m


_SOURCE = {}


def source_lines(cursor):
    f = cursor.location.file.name
    return _SOURCE.setdefault(f, open(f, encoding="utf-8").read().splitlines())


def leading_comment(cursor):
    """The /** */ comment that ends on the line above the cursor (macros carry none in libclang)."""
    lines = source_lines(cursor)
    end = cursor.location.line - 2
    if end < 0 or not lines[end].rstrip().endswith("*/"):
        return ""
    start = end
    while start >= 0 and "/*" not in lines[start]:
        start -= 1
    raw = "\n".join(lines[start:end + 1]).strip()
    return raw if raw.startswith("/**") else ""


def trailing_comment(cursor):
    """A plain /* ... */ after a member on its own line: its text (the header's habit)."""
    end = cursor.extent.end
    m = re.match(r"\s*;\s*/\*+<?\s*(.*?)\s*\*/", source_lines(cursor)[end.line - 1][end.column - 1:])
    return m.group(1) if m else ""


def records_of(tu, header):
    out = {}
    for c in tu.cursor.walk_preorder():
        if c.kind == ci.CursorKind.UNION_DECL and in_header(c, header):
            fail(f"{header}:{c.location.line}: union {c.spelling or '(unnamed)'}",
                 "unions have no description form")
        if c.kind != ci.CursorKind.STRUCT_DECL or not c.is_definition() or not in_header(c, header):
            continue
        name = c.spelling
        where = f"{header}:{c.location.line}: struct {name or '(unnamed)'}"
        if not name or not name.startswith("kvn_"):
            fail(where, "every record is a named kvn_ struct")
        t = c.type
        members = [member_of(f, t, f"{where}.{f.spelling}") for f in c.get_children()
                   if f.kind == ci.CursorKind.FIELD_DECL]
        if not members:
            fail(where, "a record without members")
        out[name] = {"name": name, "size": t.get_size(), "align": t.get_align(),
                     "brief": brief_of(c), "line": c.location.line, "members": members}
    return out


def param_of(p, where, comment, constants):
    """One parameter: its type, its direction from @param[in|out|in,out], and the number
    of elements when the declaration marks it as an array, as in 'leds /* [KVN_LED_COUNT] */'."""
    t = p.type
    d = param_type(p, where)
    m = re.search(r"@param\[(in|out|in,\s*out)\]\s+" + re.escape(p.spelling) + r"\b", comment)
    if m:
        d["direction"] = m.group(1).replace(" ", "")
    line = source_lines(p)[p.extent.end.line - 1][p.extent.end.column - 1:]
    m = re.match(r"\s*/\*\s*\[(\w+)\]\s*\*/", line)
    if m:
        if m.group(1) not in constants:
            fail(where, f"the element count {m.group(1)} is not a constant of the header")
        d["count"] = {"name": m.group(1), "value": constants[m.group(1)]}
    return d


def param_type(p, where):
    t = p.type
    if t.get_canonical().kind == ci.TypeKind.POINTER and \
            t.get_canonical().get_pointee().kind == ci.TypeKind.FUNCTIONPROTO:
        return {"name": p.spelling, "kind": "function", "type": type_name(t), "width": t.get_size()}
    if t.get_canonical().kind in (ci.TypeKind.CONSTANTARRAY, ci.TypeKind.INCOMPLETEARRAY):
        fail(where, "array parameters are written as pointers in this header")
    d = {"name": p.spelling}
    d.update(scalar(t, where))
    if d["kind"] == "record":
        fail(where, "records are passed by pointer")
    if d["kind"] == "pointer":
        pointee = t.get_canonical().get_pointee().get_canonical()
        if pointee.kind == ci.TypeKind.RECORD:
            d["record"] = pointee.get_declaration().spelling
    return d


def takes_connection(params):
    return bool(params) and params[0].get("record") in ("kvn_device_conn", "kvn_conn_link")


def exports_of(tu, header, constants):
    out = []
    for c in tu.cursor.get_children():
        if c.kind != ci.CursorKind.FUNCTION_DECL or not in_header(c, header):
            continue
        name = c.spelling
        where = f"{header}:{c.location.line}: {name}"
        if not name.startswith("kvn_"):
            fail(where, "exports are named kvn_*")
        comment = clean_comment(c.raw_comment)
        if not comment:
            fail(where, "an export without its Doxygen comment")
        params = [param_of(p, f"{where}({p.spelling})", comment, constants) for p in c.get_arguments()]
        if c.result_type.kind != ci.TypeKind.VOID:
            scalar(c.result_type, f"{where} result")  # fails on a result it cannot describe
        out.append({"name": name, "brief": brief_of(c), "result": c.result_type.spelling, "params": params,
                    "request": request_of(where, comment, takes_connection(params)),
                    "line": c.location.line})
    return out


def callbacks_of(tu, header):
    """Function pointer types of the header (the callbacks that exports take): result and
    parameters, so that a binding can declare them without reading the header."""
    out = []
    for c in tu.cursor.get_children():
        if c.kind != ci.CursorKind.TYPEDEF_DECL or not in_header(c, header):
            continue
        t = c.underlying_typedef_type.get_canonical()
        if t.kind != ci.TypeKind.POINTER or t.get_pointee().kind != ci.TypeKind.FUNCTIONPROTO:
            continue
        where = f"{header}:{c.location.line}: {c.spelling}"
        proto = t.get_pointee()
        spelled = c.underlying_typedef_type.get_pointee()  # int32_t as written, not int
        result = spelled.get_result() if spelled.kind == ci.TypeKind.FUNCTIONPROTO else proto.get_result()
        if result.kind != ci.TypeKind.VOID:
            scalar(result, f"{where} result")
        decls = [p for p in c.get_children() if p.kind == ci.CursorKind.PARM_DECL]
        if len(decls) != len(proto.argument_types()) or not all(p.spelling for p in decls):
            fail(where, "every parameter of a callback type is named")
        params = [param_type(p, f"{where}({p.spelling})") for p in decls]
        out.append({"name": c.spelling, "brief": brief_of(c) or brief_of(c, leading_comment(c)),
                    "result": type_name(result) if result.kind != ci.TypeKind.VOID else "void",
                    "params": params})
    return out


def tokens_of(cursor):
    return [t.spelling for t in cursor.get_tokens()]


def int_literal(tok):
    m = re.fullmatch(r"(0[xX][0-9A-Fa-f]+|\d+)[uUlL]*", tok)
    return int(m.group(1), 0) if m else None


def constants_of(tu, header):
    """KVN_* object-like macros whose value is one integer literal, and enum constants."""
    out = []
    for c in tu.cursor.get_children():
        if c.kind == ci.CursorKind.MACRO_DEFINITION and in_header(c, header) \
                and c.spelling.startswith("KVN_") and not c.spelling.endswith("_"):
            toks = tokens_of(c)[1:]
            while len(toks) >= 3 and toks[0] == "(" and toks[-1] == ")":
                toks = toks[1:-1]
            if len(toks) == 1 and int_literal(toks[0]) is not None:
                out.append({"name": c.spelling, "value": int_literal(toks[0]),
                            "brief": brief_of(c, leading_comment(c))})
    return out


def status_of(tu, header):
    """Status codes: names and values from the enum, messages from KVN_STATUS_LIST."""
    values = {}
    for c in tu.cursor.walk_preorder():
        if c.kind == ci.CursorKind.ENUM_CONSTANT_DECL and c.spelling.startswith("KVN_E_"):
            values[c.spelling] = c.enum_value
    messages = {}
    for c in tu.cursor.get_children():
        if c.kind == ci.CursorKind.MACRO_DEFINITION and c.spelling == "KVN_STATUS_LIST":
            toks = tokens_of(c)
            i = 0
            while i < len(toks):
                if toks[i] == "X" and i + 7 < len(toks) and toks[i + 1] == "(":
                    neg = toks[i + 2] == "-"
                    j = i + 3 if neg else i + 2
                    code = int(toks[j]) * (-1 if neg else 1)
                    messages["KVN_E_" + toks[j + 2]] = (code, json.loads(toks[j + 4]))
                    i = j + 5
                else:
                    i += 1
    if not messages:
        fail(header, "KVN_STATUS_LIST was not found")
    out = []
    for name, (code, message) in messages.items():
        if values.get(name) != code:
            fail(header, f"{name}: the enum says {values.get(name)}, the list {code}")
        out.append({"name": name, "code": code, "message": message})
    return out


def groups_by_line(header):
    """The reference group ('@addtogroup NAME ... @}') each line of the header is in."""
    group, depth, out = None, 0, []
    for line in open(header, encoding="utf-8").read().splitlines():
        m = re.search(r"@addtogroup\s+(\w+)", line)
        if m:
            group, depth = m.group(1), 0
        elif "@{" in line:
            depth += 1
        elif "@}" in line:
            if depth:
                depth -= 1
            else:
                group = None
        out.append(group)
    return out


def describe(header, version):
    header = os.path.realpath(header)
    with tempfile.TemporaryDirectory() as shim:
        # wchar.h is the only C library header the public header takes; a
        # freestanding parse gets wchar_t from stddef.h instead.
        with open(os.path.join(shim, "wchar.h"), "w") as f:
            f.write("#include <stddef.h>\n")
        units = {k: parse(header, t, shim) for k, t in TARGETS.items()}
    lp64 = units["lp64"]
    records = records_of(lp64, header)
    win = records_of(units["win64"], header)
    if set(win) != set(records):
        fail(header, "the records differ between the lp64 and win64 parses")
    for name, rec in records.items():
        w = win[name]
        diff = {}
        if (w["size"], w["align"]) != (rec["size"], rec["align"]):
            diff.update(size=w["size"], align=w["align"])
        offsets = {m["name"]: wm["offset"] for m, wm in zip(rec["members"], w["members"])
                   if (m["offset"], m["size"]) != (wm["offset"], wm["size"])}
        sizes = {m["name"]: wm["size"] for m, wm in zip(rec["members"], w["members"]) if m["size"] != wm["size"]}
        if offsets:
            diff["offsets"] = offsets
        if sizes:
            diff["sizes"] = sizes
        if diff:
            rec["win64"] = diff
    ordered = sorted(records.values(), key=lambda r: r["line"])
    constants = constants_of(lp64, header)
    exports = exports_of(lp64, header, {k["name"]: k["value"] for k in constants})
    groups = groups_by_line(header)
    for item in ordered + exports:
        item["group"] = groups[item.pop("line") - 1]
    for e in exports:
        for p in e["params"]:
            if p.get("record") and p["record"] not in records:
                fail(e["name"], f"parameter {p['name']} points to {p['record']}, which is not a record of the header")
    return {
        "schema": SCHEMA,
        "library": {"name": "kvnsdk2", "version": version, "header": "kvnsdk2.h"},
        "layouts": {"lp64": "Linux x86-64 (and other LP64 targets)", "win64": "Windows x64"},
        "records": ordered,
        "exports": exports,
        "constants": constants,
        "status": status_of(lp64, header),
        "callbacks": callbacks_of(lp64, header),
    }


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("header")
    ap.add_argument("output")
    ap.add_argument("--version", default="")
    a = ap.parse_args()
    try:
        d = describe(a.header, a.version)
    except Unsupported as e:
        sys.exit(f"kvn_describe: {e}")
    text = json.dumps(d, indent=1, ensure_ascii=False) + "\n"
    tmp = a.output + ".tmp"
    with open(tmp, "w", encoding="utf-8") as f:
        f.write(text)
    os.replace(tmp, a.output)


if __name__ == "__main__":
    main()
