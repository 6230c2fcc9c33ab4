#include "memory_transport.h"

#include <cstring>

#include "link/transport.h"

namespace kvnfuzz {
namespace {

const uint8_t* g_data = nullptr;
size_t g_left = 0;

// Requests are dropped, but never one with more parts than a real transport takes.
int32_t send(kvn_conn_link*, const kvn::ConstBuf*, size_t count) noexcept {
    if (count > kvn::kMaxSendParts) __builtin_trap();
    return 0;
}
int32_t receive(kvn_conn_link*, uint8_t* buffer, uint32_t count) noexcept {
    if (count > g_left) {
        if (g_left != 0) std::memcpy(buffer, g_data, g_left);  // partial bytes stay, as on a real link
        g_left = 0;
        return KVN_E_READ_TIMEOUT;
    }
    std::memcpy(buffer, g_data, count);
    g_data += count;
    g_left -= count;
    return 0;
}
int32_t open(kvn_device_conn*) noexcept { return 0; }
int32_t close(kvn_device_conn*) noexcept { return 0; }

constexpr kvn::Transport kMemory{send, receive, open, close};

}  // namespace

void feed(const uint8_t* data, size_t size) {
    g_data = data;
    g_left = size;
    kvn::set_transport_override(&kMemory);
}

kvn_device_conn connection() {
    kvn_device_conn c;
    std::memset(&c, 0, sizeof c);
    c.link.conn_type = KVN_CONN_TCP;
    return c;
}

}  // namespace kvnfuzz
