#include "link/config.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

#include "kvnsdk2.h"

namespace kvn {
namespace {

std::atomic<int32_t> g_read_ms{120000};
std::atomic<int32_t> g_write_ms{60000};
std::atomic<int32_t> g_connect_ms{0};

// Sink and its context change together, so they live in one immutable pair.
struct Sink {
    kvn_ext_diagnostic_fn fn;
    void* context;
};
Sink g_sinks[2];
std::atomic<Sink*> g_sink{nullptr};
std::atomic<unsigned> g_sink_slot{0};

}  // namespace

int32_t read_timeout_ms() noexcept { return g_read_ms.load(std::memory_order_relaxed); }
int32_t write_timeout_ms() noexcept { return g_write_ms.load(std::memory_order_relaxed); }
int32_t connect_timeout_ms() noexcept { return g_connect_ms.load(std::memory_order_relaxed); }

void diagnostic(const char* format, ...) noexcept {
    char line[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(line, sizeof line, format, args);
    va_end(args);
    const Sink* sink = g_sink.load(std::memory_order_acquire);
    if (sink != nullptr && sink->fn != nullptr) {
        sink->fn(sink->context, line);
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

KVN_API void kvn_ext_set_diagnostic_sink(kvn_ext_diagnostic_fn sink, void* context) {
    if (sink == nullptr) {
        kvn::g_sink.store(nullptr, std::memory_order_release);
        return;
    }
    // Alternate between two slots so that a line being printed on another thread
    // never sees a half-written pair; options are set at start-up, not in a race.
    unsigned slot = kvn::g_sink_slot.fetch_add(1, std::memory_order_relaxed) & 1u;
    kvn::g_sinks[slot] = kvn::Sink{sink, context};
    kvn::g_sink.store(&kvn::g_sinks[slot], std::memory_order_release);
}

}  // extern "C"
