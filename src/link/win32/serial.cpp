// Serial transport on Win32 communication ports: 8N1 at the record's baud rate,
// all timeouts zero so that reads and writes block until the whole count is done.
#include <windows.h>

#include <cerrno>

#include "kvnsdk2.h"
#include "link/config.h"
#include "link/transport.h"

namespace kvn {
namespace {

int32_t serial_open(kvn_device_conn* conn) noexcept {
    if (conn->serial_port == nullptr) {
        conn->link.serial_handle = INVALID_HANDLE_VALUE;
        return KVN_E_CONNECTION_FAILED;
    }
    const HANDLE h = ::CreateFileW(conn->serial_port, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                                   nullptr);
    conn->link.serial_handle = h;
    if (h == INVALID_HANDLE_VALUE) return KVN_E_CONNECTION_FAILED;
    DCB dcb;
    ZeroMemory(&dcb, sizeof dcb);
    dcb.DCBlength = sizeof dcb;
    // On the failure paths below the handle is closed, and the record forgets it: a
    // caller that closes the connection after a failed open must not close the same
    // handle value again, which by then may belong to something else.
    if (!::GetCommState(h, &dcb)) {
        ::CloseHandle(h);
        conn->link.serial_handle = INVALID_HANDLE_VALUE;
        return KVN_E_CONNECTION_FAILED;
    }
    dcb.BaudRate = conn->baud_rate;
    dcb.ByteSize = 8;
    dcb.Parity = NOPARITY;
    dcb.StopBits = ONESTOPBIT;
    // A configuration the port refuses is a write failure (-3), unlike a port
    // that cannot be opened or queried (-5).
    if (!::SetCommState(h, &dcb)) {
        ::CloseHandle(h);
        conn->link.serial_handle = INVALID_HANDLE_VALUE;
        return KVN_E_WRITE_TIMEOUT;
    }
    COMMTIMEOUTS timeouts;
    ZeroMemory(&timeouts, sizeof timeouts);
    ::SetCommTimeouts(h, &timeouts);
    return 0;
}

int32_t serial_close(kvn_device_conn* conn) noexcept {
    const HANDLE h = conn->link.serial_handle;
    if (h != INVALID_HANDLE_VALUE && h != nullptr) ::CloseHandle(h);
    return 0;
}

int32_t serial_send(kvn_conn_link* link, const ConstBuf* parts, size_t count) noexcept {
    const HANDLE h = link->serial_handle;
    for (size_t i = 0; i < count; ++i) {
        uint32_t sent = 0;
        while (sent < parts[i].size) {
            DWORD written = 0;
            if (!::WriteFile(h, parts[i].data + sent, parts[i].size - sent, &written, nullptr)) {
                diagnostic("\n Error in write is %d and errno is %d\n", static_cast<int>(written), errno);
                return KVN_E_WRITE_TIMEOUT;
            }
            sent += written;
        }
    }
    return 0;
}

int32_t serial_receive(kvn_conn_link* link, uint8_t* buffer, uint32_t count) noexcept {
    const HANDLE h = link->serial_handle;
    uint32_t received = 0;
    while (received < count) {
        DWORD got = 0;
        if (!::ReadFile(h, buffer + received, count - received, &got, nullptr)) return KVN_E_READ_TIMEOUT;
        received += got;  // 0 just means try again: the port has no timeouts
    }
    return 0;
}

constexpr Transport kSerial{serial_send, serial_receive, serial_open, serial_close};

}  // namespace

const Transport& serial_transport() noexcept { return kSerial; }

}  // namespace kvn
