#!/usr/bin/env python3
"""Writes C and C++ fragments from the description (kvnsdk2.json) for the readers that
are compiled: the layout check, the export lists of the tests and the fuzzer, and
kvnctl's records and settings groups. One fragment per run:

  kvn_generate.py KIND DESCRIPTION.json OUTPUT

KIND is one of: layout-check, export-calls, requests, export-names, fuzz-readers,
kvnctl-records, kvnctl-groups.
"""
import json
import os
import re
import sys

GENERATED = "// Generated from kvnsdk2.json by tools/describe/kvn_generate.py: do not edit.\n"


def records(d):
    return {r["name"]: r for r in d["records"]}


# ---------------------------------------------------------------------------
# The description against the compiler: sizes, alignments, offsets, member
# types and every export's signature. Compiled as C++ on every platform the
# tests build on; any difference fails the build with the record's name.

def cxx_type(p):
    if p["kind"] == "function":
        return p["type"]
    if p["kind"] == "pointer":
        return ("const " if p["const"] else "") + p["pointee"] + " *"
    return p["type"]


def member_type(m):
    t = m["type"]
    for n in m["dims"]:
        t += f"[{n}]"
    if m["kind"] == "pointer":
        return ("const " if m["const"] else "") + m["pointee"] + " *" + "".join(f"[{n}]" for n in m["dims"])
    return t


def layout_check(d):
    out = [GENERATED, "#include <cstddef>\n#include <type_traits>\n\n#include \"kvnsdk2.h\"\n\n"]
    out.append("#if defined(_WIN64)\n#define KVN_LAYOUT(lp64, win64) (win64)\n#else\n"
               "#define KVN_LAYOUT(lp64, win64) (lp64)\n#endif\n\n"
               "constexpr size_t kvn_next_offset(size_t at, size_t size, size_t align) {\n"
               "    return (at + size + align - 1) / align * align;\n}\n\n")
    for r in d["records"]:
        n, w = r["name"], r.get("win64", {})
        out.append(f"static_assert(sizeof({n}) == KVN_LAYOUT({r['size']}, {w.get('size', r['size'])}), "
                   f"\"{n}: size differs from the description\");\n")
        out.append(f"static_assert(alignof({n}) == KVN_LAYOUT({r['align']}, {w.get('align', r['align'])}), "
                   f"\"{n}: alignment differs from the description\");\n")
        out.append(f"static_assert(offsetof({n}, {r['members'][0]['name']}) == 0, "
                   f"\"{n}: a member before {r['members'][0]['name']} is missing from the description\");\n")
        last = r["members"][-1]["name"]
        out.append(f"static_assert(sizeof({n}) == kvn_next_offset(offsetof({n}, {last}), sizeof({n}::{last}), "
                   f"alignof({n})), \"{n}: a member after {last} is missing from the description\");\n")
        prev = None
        for m in r["members"]:
            off = w.get("offsets", {}).get(m["name"], m["offset"])
            size = w.get("sizes", {}).get(m["name"], m["size"])
            out.append(f"static_assert(offsetof({n}, {m['name']}) == KVN_LAYOUT({m['offset']}, {off}), "
                       f"\"{n}.{m['name']}: offset differs from the description\");\n")
            out.append(f"static_assert(sizeof({n}::{m['name']}) == KVN_LAYOUT({m['size']}, {size}), "
                       f"\"{n}.{m['name']}: size differs from the description\");\n")
            if prev is not None:
                # Each member starts where the one before ends, rounded up to its own
                # alignment: a member missing from the description would leave a gap.
                out.append(f"static_assert(offsetof({n}, {m['name']}) == kvn_next_offset(offsetof({n}, {prev}), "
                           f"sizeof({n}::{prev}), alignof(decltype({n}::{m['name']}))), "
                           f"\"{n}: a member before {m['name']} is missing from the description\");\n")
            prev = m["name"]
            if m["kind"] != "pointer" and m["type"] not in ("kvn_socket_t", "kvn_handle_t"):
                out.append(f"static_assert(std::is_same_v<decltype({n}::{m['name']}), {member_type(m)}>, "
                           f"\"{n}.{m['name']}: type differs from the description\");\n")
    out.append("\n")
    for e in d["exports"]:
        params = ", ".join(cxx_type(p) for p in e["params"]) or "void"
        out.append(f"static_assert(std::is_same_v<decltype(&{e['name']}), {e['result']} (KVN_CALL *)({params})>, "
                   f"\"{e['name']}: signature differs from the description\");\n")
    for c in d["constants"]:
        out.append(f"static_assert({c['name']} == {c['value']}u, \"{c['name']}: value differs from the description\");\n")
    for s in d["status"]:
        out.append(f"static_assert({s['name']} == {s['code']}, \"{s['name']}: code differs from the description\");\n")
    out.append(f"\nextern const unsigned kvn_described_records = {len(d['records'])};\n")
    out.append(f"extern const unsigned kvn_described_exports = {len(d['exports'])};\n")
    return "".join(out)


# ---------------------------------------------------------------------------
# Exports for the tests

# Frame-level functions and the extensions are not entries of the command table:
# they take a request word or command id from the caller, or none.
def command_exports(d):
    return [e for e in d["exports"]
            if e["request"] and e["request"]["command"] is not None and not e["name"].startswith("kvn_ext_")]


def export_calls(d):
    """Every command export as a call with placeholder arguments (tests/exports.h)."""
    out = [GENERATED]
    for e in command_exports(d):
        args = ["a.conn"] + [f"a.ptr({i})" if p["kind"] in ("pointer", "function") else "a.num()"
                             for i, p in enumerate(e["params"]) if i > 0]
        out.append(f"{{\"{e['name']}\", [](kvntest::Args& a) -> int32_t {{ return {e['name']}({', '.join(args)}); }}}},\n")
    return "".join(out)


def requests(d):
    """The request type and command id each export's comment states."""
    out = [GENERATED]
    for e in command_exports(d):
        r = e["request"]
        out.append(f"{{\"{e['name']}\", \"{r['type']}\", {r['command']}u}},\n")
    return "".join(out)


def export_names(d):
    """One export name per line, for the shell and CMake checks."""
    return "".join(e["name"] + "\n" for e in d["exports"])


def fuzz_readers(d):
    """Every export that decodes an answer into a record or buffer of the caller's (an
    out or in,out pointer besides the connection), one name per line: the response
    fuzzer must call each of them."""
    return "".join(e["name"] + "\n" for e in d["exports"]
                   if e["request"] and any(p.get("direction") in ("out", "in,out") and p["kind"] == "pointer"
                                           for p in e["params"][1:]))


# ---------------------------------------------------------------------------
# kvnctl

def kvnctl_records(d):
    """Record<T>::each over every member that has a JSON form (pointers have none)."""
    out = [GENERATED]
    for r in d["records"]:
        fields = " ".join(f"F({m['name']})" for m in r["members"] if m["kind"] != "pointer")
        out.append(f"KVN_JSON_RECORD({r['name']}, {fields})\n")
    return "".join(out)


def group_name(export):
    n = re.sub(r"^kvn_(get|retrieve)_(all_)?", "", export)
    n = re.sub(r"_settings?$", "", n)
    return n.replace("_", "-")


def shape(p):
    """The value a group's functions exchange: its C++ type, for one parameter."""
    if p["kind"] == "pointer":
        t = p["pointee"]
        return f"{t}[{p['count']['name']}]" if "count" in p else t
    return p["type"]


def settings_groups(d):
    """The settings groups: one per command with a whole-record read. A read is
    kvn_get_X or kvn_retrieve_X taking one record (or number) out; its group's write
    is the set of the same command taking the same shape in, its reset the reset of
    that command with no argument or a schedule index. Two writes or two resets of one
    command (the MIFARE 1K and 4K resets) leave the choice to the user: the group has
    none (None). Each group is a dict: name, value (the read's out parameter), shape
    (its C++ type), command, get, set, reset (export names), reset_index (the reset
    takes a schedule index). kvnctl and the Python package both take their groups
    from here."""
    by_command = {}
    for e in d["exports"]:
        r = e["request"]
        if r and r["command"] is not None and r["type"] in ("get", "set", "reset"):
            by_command.setdefault(r["command"], []).append(e)
    groups = []
    for e in d["exports"]:
        r, p = e["request"], e["params"]
        if not (r and r["type"] == "get" and re.match(r"kvn_(get|retrieve)_", e["name"]) and len(p) == 2):
            continue
        out_param = p[1]
        whole = out_param.get("direction") == "out" or \
            (out_param.get("direction") == "in,out" and out_param["pointee"].endswith("_list"))
        if not whole or out_param["kind"] != "pointer":
            continue
        t = shape(out_param)
        setters, resetters = [], []
        for s in by_command[r["command"]]:
            sp = s["params"]
            if s["request"]["type"] == "set" and len(sp) == 2 and \
                    ((sp[1]["kind"] == "pointer" and sp[1]["const"] and shape(sp[1]) == t) or
                     (sp[1]["kind"] in ("uint", "int") and sp[1]["type"] == t)):
                setters.append(s)
            if s["request"]["type"] == "reset" and (len(sp) == 1 or (len(sp) == 2 and sp[1]["kind"] == "uint")):
                resetters.append(s)
        reset = resetters[0] if len(resetters) == 1 else None
        groups.append({
            "name": group_name(e["name"]), "value": out_param, "shape": t, "command": r["command"],
            "get": e["name"], "set": setters[0]["name"] if len(setters) == 1 else None,
            "reset": reset["name"] if reset else None,
            "reset_index": bool(reset and len(reset["params"]) == 2),
        })
    return groups


def kvnctl_groups(d):
    """kvnctl's settings groups (settings_groups), as KVN_GROUP entries."""
    out = [GENERATED]
    for g in settings_groups(d):
        out.append(f"KVN_GROUP(\"{g['name']}\", {g['shape']}, {g['command']}u, {g['get']}, "
                   f"{g['set'] or 'nullptr'}, {g['reset'] or 'nullptr'})\n")
    return "".join(out)


KINDS = {
    "layout-check": layout_check, "export-calls": export_calls, "requests": requests,
    "export-names": export_names, "fuzz-readers": fuzz_readers,
    "kvnctl-records": kvnctl_records, "kvnctl-groups": kvnctl_groups,
}


def main():
    if len(sys.argv) != 4 or sys.argv[1] not in KINDS:
        sys.exit(__doc__)
    with open(sys.argv[2], encoding="utf-8") as f:
        d = json.load(f)
    text = KINDS[sys.argv[1]](d)
    out = sys.argv[3]
    try:
        with open(out, encoding="utf-8") as f:
            if f.read() == text:
                return  # unchanged: keep the timestamp, so nothing rebuilds
    except OSError:
        pass
    with open(out + ".tmp", "w", encoding="utf-8") as f:
        f.write(text)
    os.replace(out + ".tmp", out)


if __name__ == "__main__":
    main()
