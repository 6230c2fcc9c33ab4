// Serial transport on Win32 communication ports: 8N1 at the record's baud rate.
// All timeouts are zero, so that reads and writes block until the whole count is
// done, unless kvn_ext_apply_timeouts_to_serial() bounds them: then each read or
// write call runs under the configured per-chunk limits.
#include <windows.h>

#include <cerrno>

#include "kvnsdk2.h"
#include "link/config.h"
#include "link/transport.h"

namespace kvn {
namespace {

int32_t fail(DWORD err, int32_t rc) noexcept {
    set_os_error(static_cast<int32_t>(err));
    return rc;
}

// On the failure paths after CreateFileW the handle is closed and the record forgets
// it: a caller that closes the connection after a failed open must not close the
// same handle value again, which by then may belong to something else.
int32_t fail_open(kvn_device_conn* conn, HANDLE h, int32_t rc) noexcept {
    const DWORD err = ::GetLastError();
    ::CloseHandle(h);
    conn->link.serial_handle = INVALID_HANDLE_VALUE;
    return fail(err, rc);
}

// Zero timeouts (wait without limit), or the configured limits when serial waits
// are bounded and the limit is not 0. A limit covers one ReadFile or WriteFile call.
COMMTIMEOUTS timeouts_now() noexcept {
    COMMTIMEOUTS t;
    ZeroMemory(&t, sizeof t);
    if (serial_timeouts()) {
        t.ReadTotalTimeoutConstant = static_cast<DWORD>(read_timeout_ms());
        t.WriteTotalTimeoutConstant = static_cast<DWORD>(write_timeout_ms());
    }
    return t;
}

int32_t serial_open(kvn_device_conn* conn) noexcept {
    if (conn->serial_port == nullptr) {
        conn->link.serial_handle = INVALID_HANDLE_VALUE;
        return fail(ERROR_INVALID_PARAMETER, KVN_E_CONNECTION_FAILED);
    }
    const HANDLE h = ::CreateFileW(conn->serial_port, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                                   nullptr);
    conn->link.serial_handle = h;
    if (h == INVALID_HANDLE_VALUE) return fail(::GetLastError(), KVN_E_CONNECTION_FAILED);
    DCB dcb;
    ZeroMemory(&dcb, sizeof dcb);
    dcb.DCBlength = sizeof dcb;
    if (!::GetCommState(h, &dcb)) return fail_open(conn, h, KVN_E_CONNECTION_FAILED);
    dcb.BaudRate = conn->baud_rate;
    dcb.ByteSize = 8;
    dcb.Parity = NOPARITY;
    dcb.StopBits = ONESTOPBIT;
    // A configuration the port refuses is a write failure (-3), unlike a port
    // that cannot be opened or queried (-5).
    if (!::SetCommState(h, &dcb)) return fail_open(conn, h, KVN_E_WRITE_TIMEOUT);
    COMMTIMEOUTS timeouts;
    ZeroMemory(&timeouts, sizeof timeouts);
    ::SetCommTimeouts(h, &timeouts);
    set_os_error(0);
    return 0;
}

int32_t serial_close(kvn_device_conn* conn) noexcept {
    const HANDLE h = conn->link.serial_handle;
    if (h != INVALID_HANDLE_VALUE && h != nullptr) {
        set_os_error(::CloseHandle(h) ? 0 : static_cast<int32_t>(::GetLastError()));
    }
    return 0;
}

// Bounded waits set the port's timeouts for this call; unbounded ones put back the
// zeros, in case an earlier call left limits on the port.
bool apply_timeouts(HANDLE h) noexcept {
    COMMTIMEOUTS t = timeouts_now();
    return ::SetCommTimeouts(h, &t) != 0;
}

int32_t write_failed(DWORD written, DWORD err) noexcept {
    diagnostic("\n Error in write is %d and errno is %d\n", static_cast<int>(written), errno);
    return fail(err, KVN_E_WRITE_TIMEOUT);
}

int32_t serial_send(kvn_conn_link* link, const ConstBuf* parts, size_t count) noexcept {
    if (count > kMaxSendParts) return fail(ERROR_INVALID_PARAMETER, KVN_E_WRITE_TIMEOUT);  // the same contract as TCP
    const HANDLE h = link->serial_handle;
    if (!apply_timeouts(h)) return write_failed(0, ::GetLastError());
    for (size_t i = 0; i < count; ++i) {
        uint32_t sent = 0;
        while (sent < parts[i].size) {
            DWORD written = 0;
            if (!::WriteFile(h, parts[i].data + sent, parts[i].size - sent, &written, nullptr)) {
                return write_failed(written, ::GetLastError());
            }
            // Nothing written within a write limit: the line is stuck.
            if (written == 0 && serial_timeouts() && write_timeout_ms() > 0) return write_failed(0, ERROR_TIMEOUT);
            sent += written;
        }
    }
    set_os_error(0);
    return 0;
}

int32_t serial_receive(kvn_conn_link* link, uint8_t* buffer, uint32_t count) noexcept {
    const HANDLE h = link->serial_handle;
    if (!apply_timeouts(h)) return fail(::GetLastError(), KVN_E_READ_TIMEOUT);
    const bool bounded = serial_timeouts() && read_timeout_ms() > 0;
    uint32_t received = 0;
    while (received < count) {
        DWORD got = 0;
        if (!::ReadFile(h, buffer + received, count - received, &got, nullptr)) {
            return fail(::GetLastError(), KVN_E_READ_TIMEOUT);
        }
        // Without limits, 0 just means try again; with them, the limit passed.
        if (got == 0 && bounded) return fail(ERROR_TIMEOUT, KVN_E_READ_TIMEOUT);
        received += got;
    }
    set_os_error(0);
    return 0;
}

// No scatter read here: the frame layer reads payload and CRC one after the other.
constexpr Transport kSerial{serial_send, serial_receive, serial_open, serial_close, nullptr};

}  // namespace

const Transport& serial_transport() noexcept { return kSerial; }

}  // namespace kvn
