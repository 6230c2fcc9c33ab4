// Process-wide options of the library (waits and the diagnostic sink), and the
// thread's last operating-system error.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvn {

// Limits in milliseconds; 0 means no limit of the library's own.
int32_t read_timeout_ms() noexcept;     // per read chunk: TCP, and serial when applied
int32_t write_timeout_ms() noexcept;    // per write chunk: TCP, and serial when applied
int32_t connect_timeout_ms() noexcept;  // 0: the platform's own connect behaviour
bool serial_timeouts() noexcept;        // whether serial reads and writes are bounded too

// The calling thread's last transport result: 0 after a success, else the system's
// code (errno, WSAGetLastError or GetLastError). Every transport entry records one.
void set_os_error(int32_t code) noexcept;
int32_t os_error() noexcept;
// The system's message for a code, cut to size - 1 characters and terminated;
// returns its length. Each platform directory provides it.
size_t os_error_text(int32_t code, char* text, size_t size) noexcept;

// Formats one diagnostic line as printf would and hands it to the sink.
void diagnostic(const char* format, ...) noexcept
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

}  // namespace kvn
