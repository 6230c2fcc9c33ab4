"""The description generator on headers it must refuse: each run fails, naming the
declaration, and writes nothing. One header it must accept shows the fields it reads."""
import json
import os
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
DESCRIBE = os.path.join(HERE, "..", "tools", "describe", "kvn_describe.py")

SKELETON = """
#include <stdint.h>
#include <wchar.h>
#define KVN_API
#define KVN_STATUS_LIST(X) X(0, SUCCESS, "Success") X(-6, CRC_MISMATCH, "CRC mismatch")
enum kvn_status { KVN_E_SUCCESS = 0, KVN_E_CRC_MISMATCH = -6 };
/** Entries of a list. */
#define KVN_ITEM_COUNT 3
typedef struct kvn_device_conn { uint32_t header_id; } kvn_device_conn;
typedef struct kvn_item {
    uint8_t flag;  /* tag 1 */
    uint32_t value;
    char name[5];
} kvn_item;
/**
 * Reads the items.
 * @param[in] conn open connection.
 * @param[out] items the items.
 * @par Request: get (0x00020002), command 104.
 */
KVN_API int32_t kvn_get_items(kvn_device_conn *conn, kvn_item *items /* [KVN_ITEM_COUNT] */);
/** Called once per item. */
typedef int32_t (*kvn_item_fn)(const kvn_item *item, void *context);
"""

REFUSED = [
    ("a union", "typedef union kvn_u { uint32_t a; uint8_t b; } kvn_u;", "union kvn_u"),
    ("a bit-field", "typedef struct kvn_b { uint32_t a : 3; } kvn_b;", "kvn_b.a: bit-fields"),
    ("a wide character", "typedef struct kvn_w { wchar_t c; } kvn_w;", "kvn_w.c: a wchar_t member"),
    ("a flexible array", "typedef struct kvn_f { uint32_t n; uint8_t data[]; } kvn_f;", "kvn_f.data: a flexible"),
    ("a record without the prefix", "typedef struct other { uint32_t a; } other;", "struct other: every record"),
    ("an export without a comment", "KVN_API int32_t kvn_quiet(void);", "kvn_quiet: an export without"),
    ("a command without its request",
     "/** Resets. @param[in] conn c. */\nKVN_API int32_t kvn_reset_x(kvn_device_conn *conn);",
     "kvn_reset_x: its comment has no '@par Request:' line"),
    ("a request form it does not know",
     "/** Resets. @par Request: reset soon, command 3. */\nKVN_API int32_t kvn_reset_y(kvn_device_conn *conn);",
     "kvn_reset_y: '@par Request: reset soon, command 3.' is not a form"),
    ("a count that is not a constant",
     "/** Sets. @par Request: set (0x00010002), command 5. */\n"
     "KVN_API int32_t kvn_set_z(kvn_device_conn *conn, const kvn_item *i /* [KVN_NOPE] */);",
     "kvn_set_z(i): the element count KVN_NOPE"),
    ("a status the list contradicts", "enum kvn_more { KVN_E_LATE = -7 };\n#undef KVN_STATUS_LIST\n"
     "#define KVN_STATUS_LIST(X) X(-8, LATE, \"Late\")", "KVN_E_LATE: the enum says -7, the list -8"),
    ("a callback with an unnamed parameter", "typedef void (*kvn_anon_fn)(void *);",
     "kvn_anon_fn: every parameter of a callback type is named"),
    ("a syntax error", "KVN_API int32_t kvn_oops(kvn_device_conn *conn,);", "h.h:24: expected parameter declarator"),
]


def run(header_text):
    with tempfile.TemporaryDirectory() as d:
        header, out = os.path.join(d, "h.h"), os.path.join(d, "out.json")
        with open(header, "w") as f:
            f.write(header_text)
        p = subprocess.run([sys.executable, DESCRIBE, header, out], capture_output=True, text=True)
        data = None
        if os.path.exists(out):
            with open(out) as f:
                data = json.load(f)
        return p.returncode, p.stderr, data, os.listdir(d)


class Describe(unittest.TestCase):
    def test_refuses_what_it_cannot_describe_and_names_it(self):
        for what, snippet, message in REFUSED:
            with self.subTest(what):
                rc, err, data, files = run(SKELETON + snippet + "\n")
                self.assertNotEqual(rc, 0)
                self.assertIn(message, err)
                self.assertEqual(sorted(files), ["h.h"])  # nothing half-written

    def test_reads_layout_comments_counts_and_requests(self):
        rc, err, d, _ = run(SKELETON)
        self.assertEqual(rc, 0, err)
        item = next(r for r in d["records"] if r["name"] == "kvn_item")
        self.assertEqual((item["size"], item["align"]), (16, 4))
        self.assertEqual([(m["name"], m["kind"], m["offset"], m["size"], m["dims"], m["brief"]) for m in item["members"]],
                         [("flag", "uint", 0, 1, [], "tag 1"), ("value", "uint", 4, 4, [], ""),
                          ("name", "char", 8, 5, [5], "")])
        get = d["exports"][0]
        self.assertEqual(get["request"], {"type": "get", "word": "0x00020002", "command": 104, "payload": None})
        self.assertEqual(get["params"][1]["count"], {"name": "KVN_ITEM_COUNT", "value": 3})
        self.assertEqual(get["params"][1]["direction"], "out")
        self.assertEqual(d["constants"], [{"name": "KVN_ITEM_COUNT", "value": 3, "brief": "Entries of a list."}])
        self.assertEqual(d["status"], [{"name": "KVN_E_SUCCESS", "code": 0, "message": "Success"},
                                       {"name": "KVN_E_CRC_MISMATCH", "code": -6, "message": "CRC mismatch"}])
        self.assertEqual([(c["name"], c["result"], [(p["name"], p["kind"], p.get("record"), p["const"])
                                                    for p in c["params"]]) for c in d["callbacks"]],
                         [("kvn_item_fn", "int32_t", [("item", "pointer", "kvn_item", True),
                                                      ("context", "pointer", None, False)])])


if __name__ == "__main__":
    unittest.main()
