"""The generated records and exports against the description, and the JSON form both ways."""
import ctypes
import json
import random

import pytest

from kvnsdk2 import records

DESCRIPTION_RECORDS = [r for r in records.__all__]


def described(description, name):
    return next(r for r in description["records"] if r["name"] == name)


@pytest.mark.parametrize("name", DESCRIPTION_RECORDS)
def test_layout_is_the_descriptions(description, name):
    r = described(description, name)
    cls = getattr(records, name)
    assert (ctypes.sizeof(cls), ctypes.alignment(cls)) == (r["size"], r["align"])
    assert [f[0] for f in cls._fields_] == [m["name"] for m in r["members"]]
    for m in r["members"]:
        field = getattr(cls, m["name"])
        assert (m["name"], field.offset, field.size) == (m["name"], m["offset"], m["size"])


def test_every_record_and_export_is_generated(description):
    from kvnsdk2 import lib
    assert set(records.__all__) == {r["name"] for r in description["records"]}
    assert list(lib.EXPORTS) == [e["name"] for e in description["exports"]]
    for e in description["exports"]:
        fn = getattr(lib, e["name"])
        assert len(fn.argtypes) == len(e["params"]), e["name"]
        assert (fn.restype is None) == (e["result"] == "void"), e["name"]
    for c in description["constants"]:
        assert getattr(records, c["name"]) == c["value"]


@pytest.mark.parametrize("code", [0, -1, -6, -1002, -2021, -11008, -424242])
def test_status_message_is_the_librarys(description, code):
    import kvnsdk2
    listed = {s["code"]: s["message"] for s in description["status"]}
    assert kvnsdk2.status_message(code) == listed.get(code, f"Error : {code}")


REFUSED = [
    ("kvn_dac_setting", {"bogus": 1}, "kvn_dac_setting: unknown field 'bogus'"),
    ("kvn_dac_setting", {"dac_value_1": 256}, "kvn_dac_setting.dac_value_1: 256 is out of range"),
    ("kvn_dac_setting", {"dac_value_2": -1}, "kvn_dac_setting.dac_value_2: -1 is out of range"),
    ("kvn_dac_setting", {"door_open_time": "5"}, "kvn_dac_setting.door_open_time: an integer is expected"),
    ("kvn_dac_setting", {"door_open_time": True}, "kvn_dac_setting.door_open_time: an integer is expected"),
    ("kvn_dac_setting", {"door_open_time": 5.0}, "kvn_dac_setting.door_open_time: an integer is expected"),
    ("kvn_dac_setting", [], "kvn_dac_setting: an object (dict) is expected"),
    ("kvn_wiegand_format", {"format_name": "x" * 52}, "kvn_wiegand_format.format_name: longer than 51 bytes"),
    ("kvn_wiegand_format", {"format_name": "é" * 26}, "kvn_wiegand_format.format_name: longer than 51 bytes"),
    ("kvn_wiegand_format", {"mask_t06": "0g"}, "kvn_wiegand_format.mask_t06: an even number of hex digits"),
    ("kvn_wiegand_format", {"mask_t06": "abc"}, "kvn_wiegand_format.mask_t06: an even number of hex digits"),
    ("kvn_wiegand_format", {"mask_t06": "a b "}, "kvn_wiegand_format.mask_t06: an even number of hex digits"),
    ("kvn_wiegand_format", {"parity_masks_t24": ["", "", "", "", ""]},
     "kvn_wiegand_format.parity_masks_t24: more than 4 elements"),
    ("kvn_user_record", {"templates": [{"finger_index": 1, "nail": 2}]},
     "kvn_user_record.templates[0]: unknown field 'nail'"),
    ("kvn_user_template", {"template_data": "010203", "template_length": 2},
     "kvn_user_template.template_length: 2 is less than the 3 bytes of template_data"),
    ("kvn_user_template", {"template_length": 1573},
     "kvn_user_template.template_length: 1573 is more than the 1572 bytes"),
    ("kvn_user_record", {"user_id": "\ud800"}, "kvn_user_record.user_id: not encodable as UTF-8"),
]


@pytest.mark.parametrize("name,value,message", REFUSED)
def test_from_dict_refuses_what_does_not_fit(name, value, message):
    with pytest.raises(ValueError) as e:
        getattr(records, name).from_dict(value)
    assert str(e.value).startswith(message)


@pytest.mark.parametrize("name,field,value,length", [
    ("kvn_user_record", "text_t03_length", {"text_t03": "héllo"}, 6),                      # UTF-8 bytes
    ("kvn_user_record", "text_t03_length", {"text_t03": "abc", "text_t03_length": 0}, 3),  # a text's own
    ("kvn_user_record", "text_t04_length", {}, 0),
    ("kvn_user_template", "template_length", {"template_data": "0102000000"}, 5),         # zeros count
    ("kvn_user_template", "template_length", {"template_data": "0102", "template_length": 384}, 384),
])
def test_length_members_follow_their_value(name, field, value, length):
    assert getattr(getattr(records, name).from_dict(value), field) == length


def test_non_utf8_text_keeps_its_bytes():
    rec = records.kvn_user_record()
    rec.user_id = b"caf\xe9\xff"
    d = rec.to_dict()
    assert d["user_id"] == "caf\udce9\udcff"
    assert json.dumps(d["user_id"]) == '"caf\\udce9\\udcff"'
    assert records.kvn_user_record.from_dict(d) == rec


# -- random input -------------------------------------------------------------

def valid_value(rng, kind, width, dims, sub, size):
    if dims:
        n = dims[0]
        if len(dims) == 1 and kind == "char":
            return "".join(rng.choice("abcXYZ09 -é") for _ in range(rng.randint(0, n // 2)))
        if len(dims) == 1 and kind == "uint" and width == 1:
            return bytes(rng.randrange(256) for _ in range(rng.randint(0, n))).hex()
        count = rng.randint(0, min(n, 3))
        return [valid_value(rng, kind, width, dims[1:], sub, size // n) for _ in range(count)]
    if kind == "record":
        return valid_dict(rng, sub)
    bits = 8 * size
    return rng.randint(-(1 << bits - 1), (1 << bits - 1) - 1) if kind == "int" else rng.randrange(1 << bits)


def valid_dict(rng, cls):
    lengths = set(cls._kvn_lengths_)
    return {name: valid_value(rng, kind, width, dims, sub, size)
            for name, kind, width, dims, sub, off, size in cls._kvn_layout_
            if name not in lengths and rng.random() < 0.7}


def junk(rng, depth=0):
    pick = rng.randrange(10 if depth < 3 else 7)
    return [lambda: rng.randint(-2**70, 2**70), lambda: rng.random(), lambda: None, lambda: rng.random() < .5,
            lambda: "".join(chr(rng.randrange(0x20, 0x3000)) for _ in range(rng.randrange(0, 300))),
            lambda: bytes(rng.randrange(256) for _ in range(rng.randrange(0, 70))),
            lambda: "ab" * rng.randrange(0, 600),
            lambda: [junk(rng, depth + 1) for _ in range(rng.randrange(0, 6))],
            lambda: {rng.choice(["x", 1, None]): junk(rng, depth + 1)},
            lambda: (junk(rng, depth + 1),)][pick]()


def random_dict(rng, cls):
    names = [s[0] for s in cls._kvn_layout_]
    d = valid_dict(rng, cls)
    for _ in range(rng.randrange(1, 4)):
        key = rng.choice(names + ["bogus", 7, None, ""])
        d[key] = junk(rng)
    return d


@pytest.mark.parametrize("name", DESCRIPTION_RECORDS)
def test_random_dicts_never_crash(name):
    cls = getattr(records, name)
    rng = random.Random(name)
    for _ in range(60):
        d = random_dict(rng, cls)
        try:
            rec = cls.from_dict(d)
        except ValueError as e:
            assert str(e).startswith(name), e
            continue
        form = rec.to_dict()  # a text ends at its first NUL: the form, not the input, round-trips
        assert cls.from_dict(form).to_dict() == form


@pytest.mark.parametrize("name", DESCRIPTION_RECORDS)
def test_valid_dicts_round_trip(name):
    cls = getattr(records, name)
    rng = random.Random("valid " + name)
    for _ in range(20):
        d = valid_dict(rng, cls)
        rec = cls.from_dict(d)
        back = rec.to_dict()
        assert cls.from_dict(back) == rec
        kinds = {s[0]: s[1] for s in cls._kvn_layout_}
        for key, v in d.items():
            if isinstance(v, int) or (isinstance(v, str) and kinds[key] == "char"):  # numbers and texts
                assert back[key] == v, key
        for length, of in cls._kvn_lengths_.items():
            given = d.get(of, "")
            expected = len(bytes.fromhex(given) if kinds[of] == "uint" else given.encode())
            assert back[length] == expected, length
