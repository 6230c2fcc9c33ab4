#include "link/config.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>

#include "kvnsdk2.h"

namespace kvn {
namespace {

std::atomic<int32_t> g_read_ms{120000};
std::atomic<int32_t> g_write_ms{60000};
std::atomic<int32_t> g_connect_ms{0};
std::atomic<bool> g_serial_timeouts{false};

thread_local int32_t t_os_error = 0;

// The sink and its context change together and are used together: both are read
// and the line delivered under one lock, so a line never pairs one sink with
// another's context, lines never interleave, and once a setter has returned the
// previous sink is not called again. Recursive, so that a sink may call into the
// library (which may print a diagnostic of its own) on the same thread.
std::recursive_mutex g_sink_mutex;
kvn_ext_diagnostic_fn g_sink = nullptr;
void* g_sink_context = nullptr;

}  // namespace

int32_t read_timeout_ms() noexcept { return g_read_ms.load(std::memory_order_relaxed); }
int32_t write_timeout_ms() noexcept { return g_write_ms.load(std::memory_order_relaxed); }
int32_t connect_timeout_ms() noexcept { return g_connect_ms.load(std::memory_order_relaxed); }
bool serial_timeouts() noexcept { return g_serial_timeouts.load(std::memory_order_relaxed); }

void set_os_error(int32_t code) noexcept { t_os_error = code; }
int32_t os_error() noexcept { return t_os_error; }

void diagnostic(const char* format, ...) noexcept {
    char line[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    std::lock_guard<std::recursive_mutex> lock(g_sink_mutex);
    if (g_sink != nullptr) {
        g_sink(g_sink_context, line);
    } else {
        std::fputs(line, stdout);
        std::fflush(stdout);
    }
}

}  // namespace kvn

extern "C" {

KVN_API int32_t kvn_ext_set_timeouts(int32_t read_ms, int32_t write_ms, int32_t connect_ms) {
    if (read_ms >= 0) kvn::g_read_ms.store(read_ms, std::memory_order_relaxed);
    if (write_ms >= 0) kvn::g_write_ms.store(write_ms, std::memory_order_relaxed);
    if (connect_ms >= 0) kvn::g_connect_ms.store(connect_ms, std::memory_order_relaxed);
    return 0;
}

KVN_API void kvn_ext_get_timeouts(int32_t* read_ms, int32_t* write_ms, int32_t* connect_ms) {
    if (read_ms != nullptr) *read_ms = kvn::read_timeout_ms();
    if (write_ms != nullptr) *write_ms = kvn::write_timeout_ms();
    if (connect_ms != nullptr) *connect_ms = kvn::connect_timeout_ms();
}

KVN_API int32_t kvn_ext_apply_timeouts_to_serial(int32_t apply) {
    kvn::g_serial_timeouts.store(apply != 0, std::memory_order_relaxed);
    return 0;
}

KVN_API int32_t kvn_ext_last_os_error(void) { return kvn::os_error(); }

KVN_API int32_t kvn_ext_last_os_error_text(char* text, uint32_t size) {
    if (text == nullptr || size == 0) return 0;
    const int32_t code = kvn::os_error();
    if (code == 0) {
        text[0] = '\0';
        return 0;
    }
    return static_cast<int32_t>(kvn::os_error_text(code, text, size));
}

KVN_API void kvn_ext_set_diagnostic_sink(kvn_ext_diagnostic_fn sink, void* context) {
    std::lock_guard<std::recursive_mutex> lock(kvn::g_sink_mutex);
    kvn::g_sink = sink;
    kvn::g_sink_context = sink != nullptr ? context : nullptr;
}

}  // extern "C"
