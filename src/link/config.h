// Process-wide options of the library (waits and the diagnostic sink).
#pragma once

#include <cstdint>

namespace kvn {

int32_t read_timeout_ms() noexcept;     // per read chunk, TCP
int32_t write_timeout_ms() noexcept;    // per write chunk, TCP
int32_t connect_timeout_ms() noexcept;  // 0: the platform's own connect behaviour

// Formats one diagnostic line as printf would and hands it to the sink.
void diagnostic(const char* format, ...) noexcept
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

}  // namespace kvn
