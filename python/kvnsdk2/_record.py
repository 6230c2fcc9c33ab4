"""The base of every record class in kvnsdk2.records: the JSON form, both ways.

The form is kvnctl's: numbers as numbers, texts as str, uint8_t arrays as lower-case
hex strings, nested records as dicts, other arrays as lists. A text ends at its first
NUL (or fills its array); a byte array ends at its last non-zero byte; any other array
ends at its last element that is not all zero bytes. Members left out, and elements
left out at the end of an array, read back as zero. Pointers have no JSON form.

Texts that are not valid UTF-8 keep their bytes through Python's "surrogateescape"
error handler: the byte 0xFF becomes the code point U+DCFF, and encoding gives the
byte back, so to_dict() and from_dict() round-trip any byte. json.dumps() writes such
a code point as the escape "\\udcff".

A member X_length that counts the bytes of X (or of X_data) follows the value: the
length of a text is always its text's (a given X_length is not used, so that a text
edited in a dict needs no new length). The length of a byte array is derived from the
bytes when from_dict() is given none; a given one may be larger, since trailing zero
bytes are not written out, but not smaller than the bytes nor larger than the array.
"""
import ctypes
import re
import sys

_ORDER = sys.byteorder  # records are in the machine's byte order

_HEX = re.compile(r"[0-9A-Fa-f]*\Z")


class Record(ctypes.Structure):
    """A record of the header. Subclasses are generated (kvnsdk2.records)."""

    _kvn_members_ = ()
    _kvn_lengths_ = {}
    _kvn_layout_ = ()

    @classmethod
    def _kvn_prepare_(cls):
        """Turns the generated member table into (name, kind, width, dims, sub, offset,
        size) with the offsets and sizes ctypes gave the fields."""
        entry = []
        for name, kind, width, dims, sub in cls._kvn_members_:
            if kind == "pointer":
                continue
            field = getattr(cls, name)
            entry.append((name, kind, width, tuple(dims), sub, field.offset, field.size))
        cls._kvn_layout_ = tuple(entry)
        cls._kvn_names_ = frozenset(s[0] for s in entry)
        by_name = {s[0]: s for s in entry}
        # Each length member's own entry, with the kind of the member it counts.
        cls._kvn_length_members_ = {length: (length, by_name[of][1]) + by_name[length][2:]
                                  for length, of in cls._kvn_lengths_.items()}

    # -- to JSON ------------------------------------------------------------

    def to_dict(self):
        """This record in kvnctl's JSON form (a dict, members in the header's order)."""
        return type(self)._kvn_decode(bytes(self), 0)

    @classmethod
    def _kvn_decode(cls, raw, base):
        return {name: _decode(raw, base + off, kind, width, dims, sub, size)
                for name, kind, width, dims, sub, off, size in cls._kvn_layout_}

    # -- from JSON ----------------------------------------------------------

    @classmethod
    def from_dict(cls, value):
        """A new record from its JSON form. Raises ValueError naming the field for an
        unknown key, a value of the wrong type or out of range, a text or list that
        does not fit."""
        buf = bytearray(ctypes.sizeof(cls))
        cls._kvn_encode(buf, 0, value, cls.__name__)
        return cls.from_buffer_copy(buf)

    @classmethod
    def _kvn_encode(cls, buf, base, value, path):
        if not isinstance(value, dict):
            raise ValueError(f"{path}: an object (dict) is expected, not {type(value).__name__}")
        for key in value:
            if key not in cls._kvn_names_:
                raise ValueError(f"{path}: unknown field {key!r}")
        counted = {}
        for name, kind, width, dims, sub, off, size in cls._kvn_layout_:
            if name in value:
                counted[name] = _encode(buf, base + off, value[name], kind, width, dims, sub, size, f"{path}.{name}")
        for length, of in cls._kvn_lengths_.items():
            have = counted.get(of) or 0
            entry = cls._kvn_length_members_[length]
            capacity = getattr(cls, of).size
            if entry[1] == "char" or length not in value:
                buf[base + entry[5]:base + entry[5] + entry[6]] = have.to_bytes(entry[6], _ORDER)
            elif value[length] < have:
                raise ValueError(f"{path}.{length}: {value[length]} is less than the {have} bytes of {of}")
            elif value[length] > capacity:
                raise ValueError(f"{path}.{length}: {value[length]} is more than the {capacity} bytes {of} holds")

    # -- conveniences -------------------------------------------------------

    def copy(self):
        """An independent copy of this record."""
        return type(self).from_buffer_copy(bytes(self))

    def __eq__(self, other):
        if type(other) is not type(self):
            return NotImplemented
        return bytes(self) == bytes(other)

    __hash__ = None

    def __repr__(self):
        text = repr(self.to_dict())
        if len(text) > 200:
            text = text[:197] + "..."
        return f"{type(self).__name__}({text})"


def _decode(raw, off, kind, width, dims, sub, size):
    if dims:
        n = dims[0]
        if len(dims) == 1 and kind == "char":
            s = raw[off:off + n]
            end = s.find(b"\0")
            return (s if end < 0 else s[:end]).decode("utf-8", "surrogateescape")
        if len(dims) == 1 and kind == "uint" and width == 1:
            return raw[off:off + n].rstrip(b"\0").hex()
        esize = size // n
        zero = bytes(esize)
        end = n
        while end > 0 and raw[off + (end - 1) * esize:off + end * esize] == zero:
            end -= 1
        return [_decode(raw, off + i * esize, kind, width, dims[1:], sub, esize) for i in range(end)]
    if kind == "record":
        return sub._kvn_decode(raw, off)
    return int.from_bytes(raw[off:off + size], _ORDER, signed=kind == "int")


def _encode(buf, off, value, kind, width, dims, sub, size, path):
    """Writes value at off; returns the number of bytes a text or byte array took."""
    if dims:
        n = dims[0]
        if len(dims) == 1 and kind == "char":
            if isinstance(value, str):
                try:
                    data = value.encode("utf-8", "surrogateescape")
                except UnicodeEncodeError as e:
                    raise ValueError(f"{path}: not encodable as UTF-8 ({e.reason})") from None
            elif isinstance(value, (bytes, bytearray)):
                data = bytes(value)
            else:
                raise ValueError(f"{path}: a string is expected, not {type(value).__name__}")
            if len(data) > n:
                raise ValueError(f"{path}: longer than {n} bytes ({len(data)})")
            buf[off:off + len(data)] = data
            return len(data)
        if len(dims) == 1 and kind == "uint" and width == 1:
            if isinstance(value, str):
                if len(value) % 2 or len(value) > 2 * n or not _HEX.match(value):
                    raise ValueError(f"{path}: an even number of hex digits, at most {2 * n}, is expected")
                data = bytes.fromhex(value)
            elif isinstance(value, (bytes, bytearray)):
                data = bytes(value)
                if len(data) > n:
                    raise ValueError(f"{path}: more than {n} bytes ({len(data)})")
            else:
                raise ValueError(f"{path}: a hex string is expected, not {type(value).__name__}")
            buf[off:off + len(data)] = data
            return len(data)
        if not isinstance(value, (list, tuple)):
            raise ValueError(f"{path}: a list is expected, not {type(value).__name__}")
        if len(value) > n:
            raise ValueError(f"{path}: more than {n} elements ({len(value)})")
        esize = size // n
        for i, v in enumerate(value):
            _encode(buf, off + i * esize, v, kind, width, dims[1:], sub, esize, f"{path}[{i}]")
        return None
    if kind == "record":
        sub._kvn_encode(buf, off, value, path)
        return None
    if isinstance(value, bool) or not isinstance(value, int):
        raise ValueError(f"{path}: an integer is expected, not {type(value).__name__}")
    signed = kind == "int"
    lo, hi = (-(1 << (8 * size - 1)), (1 << (8 * size - 1)) - 1) if signed else (0, (1 << (8 * size)) - 1)
    if not lo <= value <= hi:
        raise ValueError(f"{path}: {value} is out of range ({lo} to {hi})")
    buf[off:off + size] = value.to_bytes(size, _ORDER, signed=signed)
    return None
