"""Errors: every negative status of the library or the terminal raises a KvnError.

  KvnError          any negative status; .code, .message (the library's text), .os_error
  ├─ LinkError      the link failed: -2 read, -3 write, -5 connection
  ├─ ProtocolError  the answer was not a frame: -6 CRC mismatch, -12 bad sync word
  ├─ RefusedError   the terminal refused the request (its statuses, -1001 and below)
  └─ TransferCancelled  a progress callback ended a file transfer

A status of 0 or above is not an error and never raises.
"""
import ctypes
import os

LINK_STATUSES = frozenset({-2, -3, -5})
PROTOCOL_STATUSES = frozenset({-6, -12})
#: Statuses after which the connection's next answer cannot be trusted: the
#: connection is closed and reopened before its next exchange.
BROKEN_LINK_STATUSES = frozenset({-2, -3, -6, -12})
#: Terminal statuses start here and go down.
TERMINAL_STATUS_MAX = -1000
#: What a progress callback makes the transfer return when it cancels.
CANCELLED = 0x7FFF0001

_TEXT_MAX = 93  # KVN_STATUS_TEXT_MAX, checked against the header by the tests


def status_message(code):
    """The library's message for a status code ("Error : <code>" for one it does not know)."""
    from . import lib  # the library is needed for its text, and loaded on first use
    code = int(code)
    if not -(1 << 31) <= code < (1 << 31):
        raise ValueError(f"status code {code} is not a 32-bit value")
    buf = ctypes.create_string_buffer(_TEXT_MAX + 16)
    lib.kvn_utils_get_status_code_string(code, buf)
    return buf.value.decode("utf-8", "replace")


class KvnError(Exception):
    """A negative status from the library or the terminal.

    code: the status; message: the library's text for it; what: the operation that
    failed; os_error: the system's error behind a link failure (an OSError), or None.
    """

    def __init__(self, code, what=None, os_error=None, message=None):
        self.code = int(code)
        self.what = what
        self.os_error = os_error
        self.message = message if message is not None else status_message(self.code)
        text = f"{self.message} ({self.code})"
        if what:
            text = f"{what}: {text}"
        if os_error is not None:
            text += f" [{os_error.strerror or os_error}]"
        super().__init__(text)


class LinkError(KvnError):
    """The link to the terminal failed: it cannot be reached, or a read or write failed or timed out."""


class ProtocolError(KvnError):
    """The terminal's answer was not a valid frame (CRC mismatch, bad sync word)."""


class RefusedError(KvnError):
    """The terminal answered the request with a negative status."""


class TransferCancelled(KvnError):
    """A progress callback returned False: the file transfer was ended."""

    def __init__(self, what=None):
        super().__init__(CANCELLED, what, message="cancelled by the progress callback")


def error_class(code):
    """The KvnError subclass for a negative status."""
    if code in LINK_STATUSES:
        return LinkError
    if code in PROTOCOL_STATUSES:
        return ProtocolError
    if code <= TERMINAL_STATUS_MAX:
        return RefusedError
    return KvnError


def os_error_of(code):
    """An OSError for the system's error code behind a link failure, or None for 0."""
    if not code:
        return None
    return OSError(code, os.strerror(code))


def check(code, what=None, os_code=0):
    """Raises the KvnError for a negative status; returns any other status as it is."""
    if code >= 0:
        return code
    cls = error_class(code)
    raise cls(code, what, os_error_of(os_code) if cls is LinkError else None)
