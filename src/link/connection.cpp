// Opening and closing a link and the exported raw byte movers.
#include <atomic>

#include "kvnsdk2.h"
#include "link/transport.h"

namespace kvn {
namespace {
std::atomic<const Transport*> g_override{nullptr};
}

void set_transport_override(const Transport* transport) noexcept {
    g_override.store(transport, std::memory_order_release);
}

const Transport* transport_override() noexcept { return g_override.load(std::memory_order_acquire); }

}  // namespace kvn

extern "C" {

KVN_API int32_t kvn_open_device_conn(kvn_device_conn* conn) {
    if (conn == nullptr) return KVN_E_CONNECTION_FAILED;
    return kvn::transport_for(&conn->link).open(conn);
}

KVN_API int32_t kvn_close_device_conn(kvn_device_conn* conn) {
    if (conn == nullptr) return -1;
    return kvn::transport_for(&conn->link).close(conn);
}

KVN_API int32_t kvn_send_data(kvn_conn_link* link, const uint8_t* data, uint32_t count) {
    if (count == 0) return 0;
    if (link == nullptr || data == nullptr) return KVN_E_WRITE_TIMEOUT;
    const kvn::ConstBuf part{data, count};
    return kvn::transport_for(link).send(link, &part, 1);
}

KVN_API int32_t kvn_receive_data(kvn_conn_link* link, uint8_t* buffer, uint32_t count) {
    if (count == 0) return 0;
    if (link == nullptr || buffer == nullptr) return KVN_E_READ_TIMEOUT;
    return kvn::transport_for(link).receive(link, buffer, count);
}

}  // extern "C"
