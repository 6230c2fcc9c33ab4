#!/usr/bin/env python3
"""Writes the generated modules of the Python package (python/kvnsdk2) from the
description (kvnsdk2.json):

  records.py, records.pyi  every record as a ctypes.Structure, the header's constants
  lib.py, lib.pyi          every export with argtypes and restype, the callback types
  _groups.py               the settings groups (kvn_generate.settings_groups, as kvnctl's)

  kvn_python.py DESCRIPTION.json OUTDIR [--sources PACKAGE_DIR]

With --sources, the package's own modules are copied to OUTDIR too, so that OUTDIR is
a complete package (the build tree's python/kvnsdk2). Files that would not change are
left alone. Anything the description holds that has no Python form stops the run with
a message that names it.
"""
import argparse
import json
import os
import re
import shutil
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from kvn_generate import settings_groups  # noqa: E402  (the one derivation of the groups)

GENERATED = "# Generated from kvnsdk2.json by tools/describe/kvn_python.py: do not edit.\n"


class Unsupported(Exception):
    pass


INTS = {("uint", 1): "c_uint8", ("uint", 2): "c_uint16", ("uint", 4): "c_uint32", ("uint", 8): "c_uint64",
        ("int", 1): "c_int8", ("int", 2): "c_int16", ("int", 4): "c_int32", ("int", 8): "c_int64",
        ("char", 1): "c_char"}
NAMED = {"uint8_t": "c_uint8", "uint16_t": "c_uint16", "uint32_t": "c_uint32", "uint64_t": "c_uint64",
         "int8_t": "c_int8", "int16_t": "c_int16", "int32_t": "c_int32", "int64_t": "c_int64"}


def scalar_ctype(kind, width, where):
    t = INTS.get((kind, width))
    if not t:
        raise Unsupported(f"{where}: no ctypes form for a {kind} of {width} bytes")
    return "_c." + t


def pointer_ctype(pointee, const, records, where, prefix="_r."):
    """The ctypes type of a pointer to pointee (as the description spells it)."""
    if pointee == "char":
        # const char * takes a bytes object; a char * the caller fills is a buffer.
        return "_c.c_char_p" if const else "_c.POINTER(_c.c_char)"
    if pointee == "wchar_t":
        return "_c.c_wchar_p"
    if pointee == "void":
        return "_c.c_void_p"
    if pointee in NAMED:
        return f"_c.POINTER(_c.{NAMED[pointee]})"
    if pointee.endswith("*"):
        return f"_c.POINTER({pointer_ctype(pointee[:-1].strip(), False, records, where, prefix)})"
    if pointee in records:
        return f"_c.POINTER({prefix}{pointee})"
    raise Unsupported(f"{where}: no ctypes form for a pointer to {pointee}")


def member_ctype(m, rec_names, where, win64_size=None):
    if m["kind"] == "record":
        t = m["type"]
    elif m["kind"] == "pointer":
        t = pointer_ctype(m["pointee"], m["const"], rec_names, where, prefix="")
    else:
        elem = m["width"]
        t = scalar_ctype(m["kind"], elem, where)
        if win64_size is not None:
            # Windows x64 widens the socket and handle to pointer size.
            t = f"({scalar_ctype(m['kind'], win64_size, where)} if _WIN64 else {t})"
    for n in reversed(m["dims"]):
        t = f"({t} * {n})"
    return t


def length_pairs(r):
    """X_length counts the bytes of X, or of X_data: {length member: counted member}.
    Only arrays are counted (a pointer's bytes are the caller's)."""
    by_name = {m["name"]: m for m in r["members"]}
    out = {}
    for m in r["members"]:
        if not m["name"].endswith("_length") or m["kind"] not in ("uint", "int") or m["dims"]:
            continue
        stem = m["name"][:-len("_length")]
        for cand in (stem, stem + "_data"):
            c = by_name.get(cand)
            if c and c["kind"] != "pointer" and len(c["dims"]) == 1 and c["width"] == 1:
                out[m["name"]] = cand
                break
    return out


def doc(text):
    text = (text or "").replace("\\", "\\\\").replace('"""', "'''")
    return f'"""{text}"""' if text else '""""""'


def py_str(s):
    return json.dumps(s)


# ---------------------------------------------------------------------------

def records_py(d):
    names = {r["name"] for r in d["records"]}
    out = [GENERATED, '"""Every record of kvnsdk2.h as a ctypes.Structure (named as in the header), and the\n'
           'header\'s constants. Each record converts to and from the JSON form kvnctl prints:\n'
           'to_dict(), from_dict(); see kvnsdk2._record."""\n',
           "import ctypes as _c\nimport sys as _sys\n\nfrom ._record import Record as _Record\n\n",
           "_WIN64 = _sys.platform == 'win32' and _c.sizeof(_c.c_void_p) == 8\n\n",
           f"LIBRARY_VERSION = {py_str(d['library']['version'])}\n",
           f"HEADER = {py_str(d['library']['header'])}\n\n"]
    for c in d["constants"]:
        out.append(f"{c['name']} = {c['value']}\n")
    out.append("\n__all__ = [\n")
    for r in d["records"]:
        out.append(f"    {py_str(r['name'])},\n")
    out.append("]\n")
    for r in d["records"]:
        n = r["name"]
        w = r.get("win64", {})
        out.append(f"\n\nclass {n}(_Record):\n    {doc(r['brief'])}\n    _fields_ = [\n")
        for m in r["members"]:
            where = f"{n}.{m['name']}"
            ws = w.get("sizes", {}).get(m["name"])
            if ws is not None and m["dims"]:
                raise Unsupported(f"{where}: a member whose width differs on Windows x64 is an array")
            out.append(f"        ({py_str(m['name'])}, {member_ctype(m, names, where, ws)}),\n")
        out.append("    ]\n    _kvn_members_ = (\n")
        for m in r["members"]:
            if m["kind"] == "char" and not m["dims"]:
                raise Unsupported(f"{n}.{m['name']}: a single char has no JSON form")
            sub = m["type"] if m["kind"] == "record" else None
            out.append(f"        ({py_str(m['name'])}, {py_str(m['kind'])}, {m['width']}, {tuple(m['dims'])!r}, "
                       f"{sub}),\n")
        out.append("    )\n")
        lp = length_pairs(r)
        if lp:
            out.append(f"    _kvn_lengths_ = {lp!r}\n")
    out.append("\n\nfor _cls in [globals()[_n] for _n in __all__]:\n    _cls._kvn_prepare_()\n")
    out.append("del _cls\n")
    return "".join(out)


def stub_type(m):
    if m["kind"] == "pointer":
        return "_Any"
    if m["dims"]:
        if m["kind"] == "char" and len(m["dims"]) == 1:
            return "bytes"
        return "_c.Array[_Any]"
    if m["kind"] == "record":
        return m["type"]
    return "int"


def records_pyi(d):
    out = [GENERATED, "import ctypes as _c\nfrom typing import Any as _Any\n\nfrom ._record import Record as _Record\n\n",
           "LIBRARY_VERSION: str\nHEADER: str\n"]
    for c in d["constants"]:
        out.append(f"{c['name']}: int\n")
    for r in d["records"]:
        out.append(f"\n\nclass {r['name']}(_Record):\n    {doc(r['brief'])}\n")
        for m in r["members"]:
            out.append(f"    {m['name']}: {stub_type(m)}\n")
            if m["brief"]:
                out.append(f"    {doc(m['brief'])}\n")
    return "".join(out)


# ---------------------------------------------------------------------------

RESULTS = {"int32_t": "_c.c_int32", "uint32_t": "_c.c_uint32", "const char *": "_c.c_char_p", "void": "None"}
RESULT_STUB = {"int32_t": "int", "uint32_t": "int", "const char *": "bytes", "void": "None"}


def param_ctype(p, records, callbacks, where):
    if p["kind"] == "function":
        if p["type"] not in callbacks:
            raise Unsupported(f"{where}: the callback type {p['type']} is not described")
        return p["type"]
    if p["kind"] == "pointer":
        return pointer_ctype(p["pointee"], p["const"], records, where)
    if p["kind"] in ("uint", "int") and p["type"] in NAMED:
        return "_c." + NAMED[p["type"]]
    return scalar_ctype(p["kind"], p["width"], where)


def result_ctype(result, where):
    if result not in RESULTS:
        raise Unsupported(f"{where}: no ctypes form for the result {result}")
    return RESULTS[result]


def lib_py(d):
    records = {r["name"] for r in d["records"]}
    callbacks = {c["name"] for c in d.get("callbacks", [])}
    out = [GENERATED, '"""Every export of kvnsdk2.h with its argtypes and restype, bound to the shared library\n'
           'that kvnsdk2._native.load_library() finds, and the callback types the exports take.\n'
           'Records are passed as kvnsdk2.records instances (ctypes passes them by reference)."""\n',
           "import ctypes as _c\n\nfrom . import records as _r\nfrom ._native import bind as _bind, load_library as _load\n\n",
           "_dll = _load()\n#: The path of the shared library these exports are bound to.\nLIBRARY_PATH = _dll._name\n\n"]
    for c in d.get("callbacks", []):
        where = c["name"]
        args = ", ".join([result_ctype(c["result"], where)] +
                         [param_ctype(p, records, callbacks, f"{where}({p['name']})") for p in c["params"]])
        out.append(f"#: {c['brief']}\n{c['name']} = _c.CFUNCTYPE({args})\n")
    out.append("\n")
    for e in d["exports"]:
        where = e["name"]
        args = ", ".join(param_ctype(p, records, callbacks, f"{where}({p['name']})") for p in e["params"])
        out.append(f"{e['name']} = _bind(_dll, {py_str(e['name'])}, {result_ctype(e['result'], where)}, [{args}],\n"
                   f"    {py_str(export_doc(e))})\n")
    out.append("\n#: Every export's name, in the header's order.\nEXPORTS = (\n")
    for e in d["exports"]:
        out.append(f"    {py_str(e['name'])},\n")
    out.append(")\n")
    return "".join(out)


def export_doc(e):
    """An export's docstring: its C signature, its brief and the request it sends."""
    params = ", ".join(f"{'const ' if p.get('const') else ''}{p['type']}{'' if p['type'].endswith('*') else ' '}"
                       f"{p['name']}" for p in e["params"])
    text = f"{e['result']} {e['name']}({params or 'void'})\n\n{e['brief']}"
    r = e["request"]
    if r and r.get("command") is not None:
        text += f" Request: {r['type']}, command {r['command']}."
    return text


def stub_param(p, records):
    if p["kind"] == "function":
        return f"{p['type']} | None"
    if p["kind"] == "pointer":
        if p["pointee"] in records:
            return f"_r.{p['pointee']} | _Any"
        if p["pointee"] == "char" and p["const"]:
            return "bytes | None"
        return "_Any"
    return "int"


def lib_pyi(d):
    records = {r["name"] for r in d["records"]}
    out = [GENERATED, "import ctypes as _c\nfrom typing import Any as _Any\n\nfrom . import records as _r\n\n",
           "LIBRARY_PATH: str\nEXPORTS: tuple[str, ...]\n\n"]
    for c in d.get("callbacks", []):
        out.append(f"class {c['name']}(_c._CFuncPtr):\n    {doc(c['brief'])}\n    def __init__(self, fn: _Any) -> None: ...\n\n")
    for e in d["exports"]:
        params = ", ".join(f"{p['name']}: {stub_param(p, records)}" for p in e["params"])
        out.append(f"def {e['name']}({params}) -> {RESULT_STUB[e['result']]}:\n    {doc(export_doc(e))}\n\n")
    return "".join(out)


# ---------------------------------------------------------------------------

def groups_py(d):
    out = [GENERATED, '"""The settings groups that Terminal.get/set/reset reach: one per command with a\n'
           'whole-record read, with the write and the reset of the same command (the same\n'
           'derivation as kvnctl\'s groups)."""\n',
           "from collections import namedtuple\n\n",
           "Group = namedtuple('Group', 'name form type count command get set reset reset_index')\n",
           "Group.__doc__ = ('One settings group: form is \"record\", \"array\" (count records) or \"value\" '\n"
           "                 '(a number, {\"value\": N}); type the record or integer type; get, set and reset '\n"
           "                 'the exports (None: not offered); reset_index: the reset takes a schedule index.')\n\n",
           "GROUPS = (\n"]
    for g in settings_groups(d):
        v = g["value"]
        if v["kind"] != "pointer":
            raise Unsupported(f"group {g['name']}: its read does not take a pointer")
        if v.get("record"):
            form, typ = ("array", v["record"]) if "count" in v else ("record", v["record"])
        elif v["pointee"] in NAMED:
            form, typ = "value", v["pointee"]
        else:
            raise Unsupported(f"group {g['name']}: no Python form for {v['type']}")
        count = v["count"]["value"] if "count" in v else None
        out.append(f"    Group({py_str(g['name'])}, {py_str(form)}, {py_str(typ)}, {count}, {g['command']}, "
                   f"{py_str(g['get'])}, {py_str(g['set']) if g['set'] else None}, "
                   f"{py_str(g['reset']) if g['reset'] else None}, {g['reset_index']}),\n")
    out.append(")\n")
    return "".join(out)


KINDS = {"records.py": records_py, "records.pyi": records_pyi, "lib.py": lib_py, "lib.pyi": lib_pyi,
         "_groups.py": groups_py}


def write(path, text):
    try:
        with open(path, encoding="utf-8") as f:
            if f.read() == text:
                return
    except OSError:
        pass
    with open(path + ".tmp", "w", encoding="utf-8") as f:
        f.write(text)
    os.replace(path + ".tmp", path)


def generate(description, outdir, sources=None):
    """Writes the generated modules (and, with sources, the package's own) into outdir."""
    with open(description, encoding="utf-8") as f:
        d = json.load(f)
    if d.get("schema") != 1:
        raise Unsupported(f"{description}: schema {d.get('schema')} is not the one this generator reads (1)")
    texts = {name: fn(d) for name, fn in KINDS.items()}
    os.makedirs(outdir, exist_ok=True)
    if sources:
        for name in sorted(os.listdir(sources)):
            if name.endswith((".py", ".pyi", ".typed")) and name not in KINDS:
                src = os.path.join(sources, name)
                with open(src, "rb") as f:
                    data = f.read()
                dst = os.path.join(outdir, name)
                if not (os.path.exists(dst) and open(dst, "rb").read() == data):
                    shutil.copyfile(src, dst)
    for name, text in texts.items():
        write(os.path.join(outdir, name), text)


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("description")
    ap.add_argument("outdir")
    ap.add_argument("--sources", help="the package's own modules, copied to OUTDIR too")
    a = ap.parse_args()
    try:
        generate(a.description, a.outdir, a.sources)
    except Unsupported as e:
        sys.exit(f"kvn_python: {e}")


if __name__ == "__main__":
    main()
