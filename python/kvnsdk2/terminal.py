"""kvnsdk2.Terminal: one connection to one terminal, over the library's exports.

Calls on one Terminal are serialised by a lock (the library reads each answer as the
answer to the last request, so exchanges on one connection never overlap); different
Terminals may be used from different threads at once. Every negative status raises a
KvnError (kvnsdk2.errors); other statuses are returned or ignored, never raised.

A connection whose answer went wrong mid-frame (read or write failure, CRC mismatch,
bad sync word: -2, -3, -6, -12) is closed and reopened before its next exchange, so a
late answer is never taken for the next one's.

Timeouts: the library's limits are process-wide (kvn_ext_set_timeouts), and apply to
each wait for the link (a connect, each chunk of a read or write), not to a whole
exchange. A Terminal's timeout sets them; with several Terminals open at once, the
library waits as long as the largest timeout among them (None, no limit, is largest).
"""
import contextlib
import ctypes
import datetime
import os
import signal
import socket
import tempfile
import threading
import weakref

from . import errors
from ._groups import GROUPS
from ._record import _decode, _encode
from .errors import BROKEN_LINK_STATUSES, CANCELLED, KvnError, TransferCancelled

DEFAULT_PORT = 5005
REQUEST_TYPES = {"set": 1, "get": 2, "reset": 3, "upload": 4, "download": 5}
_RAW_CAPACITY = 1 << 20  # the answer buffer of raw(): any answer the terminal gives fits
_USERID_ALREADY_EXISTS = -2012
_CSV_FILE_TYPE = 3

_GROUPS = {g.name: g for g in GROUPS}


_modules = {}


def _lib():
    """kvnsdk2.lib, imported (and the library loaded) on first use."""
    try:
        return _modules["lib"]
    except KeyError:
        from . import lib
        return _modules.setdefault("lib", lib)


def _records():
    from . import records
    return records


# ---------------------------------------------------------------------------
# The process-wide timeouts, as large as the largest of the open Terminals'.

_timeouts_lock = threading.Lock()
_open_timeouts = weakref.WeakKeyDictionary()  # Terminal -> seconds or None


def _ms(seconds):
    if seconds is None:
        return 0  # no limit of the library's own
    return max(1, min(int(seconds * 1000), 2**31 - 1))


def _apply_timeouts():
    values = list(_open_timeouts.values())
    if not values:
        return
    ms = 0 if any(v is None for v in values) else max(_ms(v) for v in values)
    _lib().kvn_ext_set_timeouts(ms, ms, ms)


def _check_timeout(timeout):
    if timeout is not None and (not isinstance(timeout, (int, float)) or isinstance(timeout, bool) or timeout <= 0):
        raise ValueError(f"timeout: a positive number of seconds or None is expected, not {timeout!r}")
    return timeout


def _text_arg(value, capacity, what):
    """A text for a char array of capacity bytes (with room for its NUL)."""
    data = value.encode("utf-8", "surrogateescape") if isinstance(value, str) else bytes(value)
    if not data or len(data) >= capacity:
        raise ValueError(f"{what}: 1 to {capacity - 1} bytes are expected, not {len(data)}")
    if b"\0" in data:
        raise ValueError(f"{what}: a NUL byte is not allowed")
    return data


# ---------------------------------------------------------------------------

class Terminal:
    """One open connection to a terminal. Open it with Terminal.connect() or
    Terminal.serial(); close it with close(), or use it as a context manager."""

    def __init__(self, conn, name, timeout, keep):
        """Use Terminal.connect() or Terminal.serial()."""
        self._conn = conn
        self._keep = keep  # the texts conn points to
        self.name = name
        self.timeout = timeout
        self._lock = threading.RLock()
        self._open = False
        self._broken = False
        self._raw_buffer = None
        self.door = Door(self)
        self.users = Users(self)
        self.logs = Logs(self)
        self.files = Files(self)

    # -- opening and closing -------------------------------------------------

    @classmethod
    def connect(cls, host, port=DEFAULT_PORT, timeout=5.0):
        """Opens a TCP connection to the terminal at host (an IPv4 address or a name)
        and port. timeout: seconds each connect, read and write may wait (None: no
        limit); see the module's notes on timeouts."""
        _check_timeout(timeout)
        if isinstance(port, bool) or not isinstance(port, int) or not 0 < port < 65536:
            raise ValueError(f"port: 1 to 65535 is expected, not {port!r}")
        if not isinstance(host, str) or not host:
            raise ValueError(f"host: an address or name is expected, not {host!r}")
        try:
            address = socket.gethostbyname(host)
        except (OSError, UnicodeError) as e:
            raise errors.LinkError(-5, f"connecting to {host}: the name does not resolve",
                                   os_error=e if isinstance(e, OSError) else None) from None
        conn = _records().kvn_device_conn()
        ip = address.encode("ascii")
        conn.ip_address = ip
        conn.port = port
        conn.link.conn_type = 1  # KVN_CONN_TCP
        name = host if port == DEFAULT_PORT else f"{host}:{port}"
        t = cls(conn, name, timeout, (ip,))
        t._start()
        return t

    @classmethod
    def serial(cls, device, baud=115200, timeout=None):
        """Opens a serial line (8N1) at baud bits per second. With a timeout, the
        library's limits are applied to serial lines too (process-wide,
        kvn_ext_apply_timeouts_to_serial); without one, reads wait for ever."""
        _check_timeout(timeout)
        if isinstance(baud, bool) or not isinstance(baud, int) or not 0 < baud < 2**32:
            raise ValueError(f"baud: a positive speed is expected, not {baud!r}")
        path = os.fspath(device)
        if isinstance(path, bytes):
            path = os.fsdecode(path)
        if not path or "\0" in path:
            raise ValueError(f"device: a path is expected, not {device!r}")
        conn = _records().kvn_device_conn()
        conn.serial_port = path
        conn.baud_rate = baud
        conn.link.conn_type = 0  # KVN_CONN_SERIAL
        if timeout is not None:
            _lib().kvn_ext_apply_timeouts_to_serial(1)
        t = cls(conn, path, timeout, (path,))
        t._start()
        return t

    def _start(self):
        with _timeouts_lock:
            _open_timeouts[self] = self.timeout
            _apply_timeouts()
        try:
            self._open_link()
        except BaseException:
            with _timeouts_lock:
                _open_timeouts.pop(self, None)
            raise

    def _open_link(self):
        lib = _lib()
        rc = lib.kvn_open_device_conn(self._conn)
        if rc != 0:
            os_code = lib.kvn_ext_last_os_error()
            lib.kvn_close_device_conn(self._conn)  # an open that failed is closed too
            errors.check(rc if rc < 0 else -5, f"connecting to {self.name}", os_code)
        self._open = True
        self._broken = False

    def close(self):
        """Closes the connection; later calls raise ValueError. Closing twice is harmless."""
        with self._lock:
            if self._open:
                self._open = False
                _lib().kvn_close_device_conn(self._conn)
            with _timeouts_lock:
                _open_timeouts.pop(self, None)
                _apply_timeouts()  # those still open may wait less now

    @property
    def closed(self):
        """True once close() was called (or the connection could not be reopened)."""
        return not self._open

    def __enter__(self):
        return self

    def __exit__(self, *exc):
        self.close()

    def __del__(self):
        try:
            if self._open:
                self.close()
        except Exception:
            pass

    def __repr__(self):
        return f"<kvnsdk2.Terminal {self.name}{' closed' if self.closed else ''}>"

    # -- exchanges -------------------------------------------------------------

    def _ready(self):
        """Called with the lock held before every exchange."""
        if not self._open:
            raise ValueError(f"kvnsdk2: the terminal {self.name} is closed")
        if self._broken:
            lib = _lib()
            lib.kvn_close_device_conn(self._conn)
            self._open = False
            self._open_link()  # raises, leaving the terminal closed, when it fails

    def _call(self, fn, *args, what=None):
        """fn(conn, *args) with the reopen rule; raises for a negative status."""
        with self._lock:
            self._ready()
            rc = fn(self._conn, *args)
            if rc < 0:
                self._failed(rc, what or fn.__name__)
            return rc

    def _failed(self, rc, what):
        os_code = _lib().kvn_ext_last_os_error() if rc in errors.LINK_STATUSES else 0
        if rc in BROKEN_LINK_STATUSES:
            self._broken = True
        errors.check(rc, what, os_code)

    def call(self, export, *args):
        """Calls any export that takes the connection first, by name, with the rest of
        its arguments: t.call("kvn_get_led_setting", leds). Returns its status; a
        negative one raises."""
        fn = getattr(_lib(), export, None)
        if fn is None or not getattr(fn, "argtypes", None) or \
                fn.argtypes[0] is not ctypes.POINTER(_records().kvn_device_conn):
            raise ValueError(f"{export}: not an export that takes the connection")
        return self._call(fn, *args, what=export)

    # -- device ----------------------------------------------------------------

    def info(self):
        """The terminal's device information (a kvn_device_info record)."""
        rec = _records().kvn_device_info()
        self._call(_lib().kvn_get_device_info, rec, what="device information")
        return rec

    def get_time(self):
        """The terminal's clock as an aware datetime in UTC."""
        dt = _records().kvn_device_date_time()
        self._call(_lib().kvn_get_device_date_time, dt, what="reading the clock")
        return datetime.datetime.fromtimestamp(dt.value_1, datetime.timezone.utc)

    def set_time(self, when):
        """Sets the terminal's clock. A naive datetime is local time (as Python takes it)."""
        if not isinstance(when, datetime.datetime):
            raise ValueError(f"time: a datetime is expected, not {type(when).__name__}")
        seconds = int(when.timestamp())
        if not 0 <= seconds < 2**32:
            raise ValueError(f"time: {when} is out of the terminal's range (1970 to 2106)")
        with self._lock:
            dt = _records().kvn_device_date_time()
            self._call(_lib().kvn_get_device_date_time, dt, what="reading the clock")
            dt.value_1 = seconds
            self._call(_lib().kvn_set_device_date_time, dt, what="setting the clock")

    time = property(get_time, set_time, doc="The terminal's clock (get and set), as a datetime.")

    # -- settings groups ---------------------------------------------------------

    @staticmethod
    def groups():
        """The names of the settings groups that get(), set() and reset() reach."""
        return [g.name for g in GROUPS]

    @staticmethod
    def _group(name):
        g = _GROUPS.get(name)
        if g is None:
            raise ValueError(f"{name!r} is not a settings group (Terminal.groups() lists them)")
        return g

    @staticmethod
    def _value_type(g):
        return getattr(ctypes, "c_" + g.type.replace("_t", ""))

    def get(self, group, raw=False):
        """A settings group in kvnctl's JSON form: a dict (a record), a list (a table of
        records) or {"value": N} (a number). raw=True gives the ctypes value instead."""
        g = self._group(group)
        fn = getattr(_lib(), g.get)
        if g.form == "value":
            v = self._value_type(g)()
            self._call(fn, ctypes.byref(v), what=f"get {g.name}")
            return v.value if raw else {"value": v.value}
        cls = getattr(_records(), g.type)
        v = (cls * g.count)() if g.form == "array" else cls()
        self._call(fn, v, what=f"get {g.name}")
        if raw:
            return v
        if g.form == "array":
            return _decode(bytes(v), 0, "record", 0, (g.count,), cls, ctypes.sizeof(v))
        return v.to_dict()

    def set(self, group, value, merge=False):
        """Writes a settings group from its JSON form (or a record, a ctypes array, a
        number). merge=True reads the group first and writes it with value laid over
        it: dicts merge key by key, lists element by element. A value that does not fit
        raises ValueError naming the field, before anything is sent."""
        g = self._group(group)
        if g.set is None:
            raise ValueError(f"{g.name} is read only")
        fn = getattr(_lib(), g.set)
        with self._lock:
            if merge:
                value = _merge(self.get(g.name), _as_json(value, g))
            arg = self._group_value(g, value)
            if g.form == "value" and issubclass(fn.argtypes[1], ctypes._Pointer):
                arg = ctypes.byref(self._value_type(g)(arg))  # some take the number, some point to it
            self._call(fn, arg, what=f"set {g.name}")

    def _group_value(self, g, value):
        if g.form == "value":
            if isinstance(value, dict):
                if set(value) != {"value"}:
                    raise ValueError(f'{g.name}: an object {{"value": N}} is expected')
                value = value["value"]
            buf = bytearray(ctypes.sizeof(self._value_type(g)))
            _encode(buf, 0, value, "int" if g.type.startswith("int") else "uint", len(buf), (), None, len(buf),
                    f"{g.name}.value")
            return self._value_type(g).from_buffer_copy(buf).value
        cls = getattr(_records(), g.type)
        if g.form == "array":
            if isinstance(value, ctypes.Array) and value._type_ is cls and len(value) == g.count:
                return value
            arr = (cls * g.count)()
            buf = bytearray(ctypes.sizeof(arr))
            _encode(buf, 0, value, "record", 0, (g.count,), cls, len(buf), g.name)
            return type(arr).from_buffer_copy(buf)
        if isinstance(value, cls):
            return value
        if isinstance(value, dict):
            buf = bytearray(ctypes.sizeof(cls))
            cls._kvn_encode(buf, 0, value, g.name)
            return cls.from_buffer_copy(buf)
        raise ValueError(f"{g.name}: a dict or a {cls.__name__} is expected, not {type(value).__name__}")

    def reset(self, group, index=None):
        """Restores a settings group's defaults. The schedule tables take an index to
        reset one schedule; without one the whole table is reset."""
        g = self._group(group)
        if g.reset is None:
            raise ValueError(f"{g.name} has no reset")
        lib = _lib()
        if g.reset_index:
            if index is None:
                return self._call(lib.kvn_send_reset_command, g.command, what=f"reset {g.name}")
            if isinstance(index, bool) or not isinstance(index, int) or not 0 <= index < 2**32:
                raise ValueError(f"index: a schedule index is expected, not {index!r}")
            return self._call(getattr(lib, g.reset), index, what=f"reset {g.name} {index}")
        if index is not None:
            raise ValueError(f"{g.name} resets as a whole: it takes no index")
        return self._call(getattr(lib, g.reset), what=f"reset {g.name}")

    # -- raw frames --------------------------------------------------------------

    def raw(self, command_id, request_type, payload=b""):
        """Sends one request frame and reads its answer: (status, payload bytes). The
        terminal's status is returned, not raised; a link or frame failure raises.
        request_type: "set", "get", "reset", "upload", "download" or its number."""
        if isinstance(request_type, str):
            if request_type not in REQUEST_TYPES:
                raise ValueError(f"request_type: one of {', '.join(REQUEST_TYPES)} or a number, not {request_type!r}")
            request_type = REQUEST_TYPES[request_type]
        for what, v, top in (("command_id", command_id, 2**32), ("request_type", request_type, 2**16)):
            if isinstance(v, bool) or not isinstance(v, int) or not 0 <= v < top:
                raise ValueError(f"{what}: 0 to {top - 1} is expected, not {v!r}")
        payload = bytes(payload)
        records = _records()
        if len(payload) > records.KVN_MAX_REQUEST_PAYLOAD:
            raise ValueError(f"payload: at most {records.KVN_MAX_REQUEST_PAYLOAD} bytes, not {len(payload)}")
        lib = _lib()
        word = ctypes.c_uint32((request_type << 16) | 2)
        data = (ctypes.c_uint8 * max(len(payload), 1)).from_buffer_copy(payload or b"\0")
        with self._lock:
            self._ready()
            rc = lib.kvn_send_command(self._conn, ctypes.byref(word), command_id, data, len(payload))
            if rc != 0:
                self._failed(rc, f"sending command {command_id}")
            if self._raw_buffer is None:
                self._raw_buffer = (ctypes.c_uint8 * _RAW_CAPACITY)()
            length = ctypes.c_uint32(_RAW_CAPACITY)
            rc = lib.kvn_receive_response(self._conn, self._raw_buffer, ctypes.byref(length))
            if rc in BROKEN_LINK_STATUSES:
                self._failed(rc, f"answer to command {command_id}")
            if rc == -1:  # an answer too large for the buffer stays unread: the link is out of step
                self._broken = True
                self._failed(rc, f"answer to command {command_id} (larger than {_RAW_CAPACITY} bytes)")
            if rc != 0:
                return rc, b""
            return 0, ctypes.string_at(self._raw_buffer, length.value)


def _as_json(value, g):
    if isinstance(value, ctypes.Structure):
        return value.to_dict()
    if isinstance(value, ctypes.Array):
        return _decode(bytes(value), 0, "record", 0, (len(value),), value._type_, ctypes.sizeof(value))
    if g.form == "value" and isinstance(value, int):
        return {"value": value}
    return value


def _merge(current, new):
    """new laid over current: dicts key by key, lists element by element."""
    if isinstance(current, dict) and isinstance(new, dict):
        out = dict(current)
        for k, v in new.items():
            out[k] = _merge(current[k], v) if k in current else v
        return out
    if isinstance(current, list) and isinstance(new, (list, tuple)):
        out = list(current)
        for i, v in enumerate(new):
            if i < len(out):
                out[i] = _merge(out[i], v)
            else:
                out.append(v)
        return out
    return new


@contextlib.contextmanager
def _catch_interrupt(interrupted):
    """Ctrl-C during a transfer cancels it. A KeyboardInterrupt raised inside a ctypes
    callback would be dropped by ctypes, so SIGINT only notes itself meanwhile (in the
    main thread, while Python's own handler is in place) and the callback cancels."""
    if threading.current_thread() is not threading.main_thread() or \
            signal.getsignal(signal.SIGINT) is not signal.default_int_handler:
        yield
        return
    previous = signal.signal(signal.SIGINT, lambda number, frame: interrupted.append(number))
    try:
        yield
    finally:
        signal.signal(signal.SIGINT, previous)


class _Part:
    def __init__(self, terminal):
        self._t = terminal

    def _count(self, fn, what):
        n = ctypes.c_uint32()
        self._t._call(fn, ctypes.byref(n), what=what)
        return n.value


class Door(_Part):
    """The door relay: t.door.open(seconds), t.door.close()."""

    def open(self, seconds):
        """Opens the door for seconds (1 or more)."""
        if isinstance(seconds, bool) or not isinstance(seconds, int) or not 0 < seconds < 2**32:
            raise ValueError(f"seconds: a positive whole number is expected, not {seconds!r}")
        self._t._call(_lib().kvn_open_door_for_time, seconds, 0, what="door open")

    def close(self):
        """Closes the door."""
        self._t._call(_lib().kvn_close_door, what="door close")


class Users(_Part):
    """User records with their templates."""

    def count(self):
        """The number of users the terminal holds."""
        return self._count(_lib().kvn_get_user_count, "user count")

    def ids(self):
        """Every user id, from the terminal's user list export (a CSV file fetched and
        removed again, as kvnctl does: the interface has no list of users)."""
        t = self._t
        name = f"kvnsdk2-users-{os.getpid()}-{threading.get_ident() & 0xFFFF}.csv"
        fd, tmp = tempfile.mkstemp(prefix="kvnsdk2-users-", suffix=".csv")
        os.close(fd)
        try:
            with t._lock:
                t._call(_lib().kvn_upgrade_firware_export_csv_file, name.encode(), what="exporting the users")
                try:
                    t.files._transfer(_lib().kvn_ext_download_file, tmp, name, None, _CSV_FILE_TYPE,
                                      "reading the user list")
                finally:
                    with contextlib.suppress(KvnError):
                        t.files.delete(name, file_type=_CSV_FILE_TYPE)
            with open(tmp, "rb") as f:
                lines = f.read().split(b"\n")
        finally:
            os.unlink(tmp)
        return [line.split(b",", 1)[0].decode("utf-8", "surrogateescape") for line in lines[1:] if line.strip()]

    def list(self, page_size=50):
        """Iterates over every user record (kvn_user_record), fetched page_size at a time.
        Users deleted meanwhile are skipped."""
        if isinstance(page_size, bool) or not isinstance(page_size, int) or page_size < 1:
            raise ValueError(f"page_size: a positive whole number is expected, not {page_size!r}")
        ids = self.ids()
        for start in range(0, len(ids), page_size):
            page = []
            for uid in ids[start:start + page_size]:
                try:
                    page.append(self.get(uid))
                except errors.RefusedError as e:
                    if e.code not in (-2021, -2020):  # user not found, invalid id: gone since
                        raise
            yield from page

    def _record_for(self, user_id):
        rec = _records().kvn_user_record()
        rec.user_id = _text_arg(user_id, type(rec).user_id.size, "user_id")
        return rec

    def get(self, user_id):
        """A user's record with its templates (kvn_user_record)."""
        rec = self._record_for(user_id)
        self._t._call(_lib().kvn_get_user_record, rec, what=f"user {user_id}")
        return rec

    def put(self, record, replace=False):
        """Stores a user (a kvn_user_record or its dict). An existing user is refused
        (RefusedError, "UserID already exists") unless replace=True, which deletes and
        stores it again."""
        records = _records()
        if isinstance(record, dict):
            record = records.kvn_user_record.from_dict(record)
        elif not isinstance(record, records.kvn_user_record):
            raise ValueError(f"record: a kvn_user_record or a dict is expected, not {type(record).__name__}")
        uid = record.user_id.decode("utf-8", "surrogateescape")
        _text_arg(uid, type(record).user_id.size, "user_id")
        t = self._t
        lib = _lib()
        with t._lock:
            for attempt in (0, 1):
                result = records.kvn_user_store_result()
                req = records.kvn_user_store_request(ctypes.pointer(record), ctypes.pointer(result))
                t._ready()
                rc = lib.kvn_store_user_record(t._conn, req)
                if rc == _USERID_ALREADY_EXISTS and replace and attempt == 0:
                    self.delete(uid)
                    continue
                if rc < 0:
                    holder = result.to_dict()["user_id"]
                    what = f"storing user {uid}" + (f": the template is user {holder}'s" if holder else "")
                    t._failed(rc, what)
                return

    def delete(self, user_id):
        """Deletes a user with its templates."""
        rec = self._record_for(user_id)
        self._t._call(_lib().kvn_delete_user_record, rec, what=f"deleting user {user_id}")


class Logs(_Part):
    """The transaction journal."""

    def count(self):
        """The number of entries in the journal."""
        return self._count(_lib().kvn_get_transaction_log_total_count, "journal count")

    def count_unread(self):
        """The number of entries not marked as read."""
        return self._count(_lib().kvn_get_transaction_log_unread_count, "unread count")

    def _read_page(self, unread, limit):
        q = _records().kvn_transaction_log_query()
        q.attr_t02 = limit
        lib = _lib()
        self._t._call(lib.kvn_get_unread_transaction_logs if unread else lib.kvn_get_transaction_logs, q,
                      what="reading the journal")
        return [q.entries[i].copy() for i in range(q.log_count & 0xFF)]

    def unread(self, page_size=255):
        """Iterates over the unread entries (kvn_transaction_log), oldest first. The
        terminal answers its oldest unread entries, so a page that was not marked
        (mark()) is answered again: the iterator then ends. Mark what you have
        handled as you go to see everything; sync() does."""
        if isinstance(page_size, bool) or not isinstance(page_size, int) or not 0 < page_size < 256:
            raise ValueError(f"page_size: 1 to 255 is expected, not {page_size!r}")
        seen = set()
        while True:
            fresh = [e for e in self._read_page(True, page_size) if e.log_id not in seen]
            if not fresh:
                return
            for e in fresh:
                seen.add(e.log_id)
                yield e

    def mark(self, ids):
        """Marks entries as read, by log id."""
        ids = list(ids)
        for i in ids:
            if isinstance(i, bool) or not isinstance(i, int) or not 0 <= i < 2**32:
                raise ValueError(f"ids: log ids are whole numbers of 32 bits, not {i!r}")
        records = _records()
        lib = _lib()
        step = records.KVN_TRANSACTION_LOG_ID_MAX
        for start in range(0, len(ids), step):
            part = ids[start:start + step]
            lst = records.kvn_transaction_log_id_list()
            lst.count = len(part)
            lst.log_ids[:len(part)] = part
            self._t._call(lib.kvn_mark_transaction_logs_as_read, lst, what="marking entries as read")

    def sync(self, path, progress=None, terminal=None):
        """Copies the unread entries into the SQLite database at path, exactly once, in
        kvnctl's schema (`kvnctl logs sync`), and marks them read once stored.
        progress(read, unread_at_start) after every page; False stops the sync.
        terminal: the name stored with each row (default: host, or host:port when the
        port is not 5005, as kvnctl names it). Returns a SyncResult."""
        from ._sync import sync_logs
        return sync_logs(self, terminal or self._t.name, os.fspath(path), progress)


class Files(_Part):
    """Files on the terminal, over the library's transfer extension (kvn_ext_*)."""

    def _request(self, name, file_type, local=None):
        records = _records()
        req = records.kvn_file_transfer_request()
        req.file_name = _text_arg(name, type(req).file_name.size, "name")
        if isinstance(file_type, bool) or not isinstance(file_type, int) or not 0 <= file_type < 2**32:
            raise ValueError(f"file_type: a whole number is expected, not {file_type!r}")
        req.file_type = file_type
        if local is not None:
            req.local_path = os.fsencode(local)
        return req

    def _transfer(self, fn, local, name, progress, file_type, what):
        req = self._request(name, file_type, local)
        failure, interrupted = [], []

        def on_progress(p, _context):
            if interrupted:
                return CANCELLED
            if progress is None:
                return 0
            try:
                return CANCELLED if progress(p.contents.bytes_done, p.contents.bytes_total) is False else 0
            except BaseException as e:  # raised again once the library has returned
                failure.append(e)
                return CANCELLED

        callback = _lib().kvn_ext_progress_fn(on_progress)
        t = self._t
        with t._lock:
            with _catch_interrupt(interrupted):
                t._ready()
                rc = fn(t._conn, req, callback, None)
            if rc in BROKEN_LINK_STATUSES:
                t._broken = True
        if failure:
            raise failure[0]
        if interrupted:
            raise KeyboardInterrupt()
        if rc == CANCELLED:
            raise TransferCancelled(what)
        if rc < 0:
            t._failed(rc, what)

    def upload(self, local_path, name, progress=None, file_type=1):
        """Sends a local file as name. progress(done, total) after every packet; False
        cancels (TransferCancelled). file_type: 1 firmware, 2 backup, 3 CSV, 4 image,
        5 audio, 6 certificate."""
        local = os.fspath(local_path)
        if not os.path.isfile(local):
            raise ValueError(f"local_path: {local} is not a readable file")
        self._transfer(_lib().kvn_ext_upload_file, local, name, progress, file_type, f"upload of {local}")

    def download(self, name, local_path, progress=None, file_type=1):
        """Fetches name into local_path: written to a temporary file beside it and
        renamed on success, so local_path is never left half-written."""
        local = os.path.abspath(os.fspath(local_path))
        fd, tmp = tempfile.mkstemp(dir=os.path.dirname(local), prefix="." + os.path.basename(local) + ".",
                                   suffix=".part")
        os.close(fd)
        try:
            self._transfer(_lib().kvn_ext_download_file, tmp, name, progress, file_type, f"download of {name}")
            os.replace(tmp, local)
        except BaseException:
            with contextlib.suppress(OSError):
                os.unlink(tmp)
            raise

    def delete(self, name, file_type=1):
        """Deletes a file on the terminal."""
        self._t._call(_lib().kvn_delete_file, self._request(name, file_type), what=f"delete of {name}")

