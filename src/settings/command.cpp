#include "settings/command.h"

#include <cstring>

namespace kvn {

int32_t exchange(kvn_device_conn* conn, uint8_t* buffer, uint32_t size, const Exchange& ex) noexcept {
    if (conn == nullptr) return KVN_E_WRITE_TIMEOUT;
    uint32_t length = 0;
    const uint8_t* payload = nullptr;
    if (ex.encode != nullptr) {
        tlv::Writer w(buffer, size);
        (*ex.encode)(w);
        if (w.result() != 0) return w.result();  // nothing is sent
        length = w.used();
        payload = buffer;
    } else if (ex.send_length != 0) {
        // A payload of fixed length whose content the terminal ignores.
        length = ex.send_length <= size ? ex.send_length : size;
        std::memset(buffer, 0, length);
        payload = buffer;
    }
    const uint32_t word = KVN_REQUEST_WORD(ex.type);
    if (int32_t rc = kvn_send_command(conn, &word, ex.command, payload, length); rc != 0) return rc;

    uint32_t capacity = (payload != nullptr && ex.capacity == Capacity::sent_length) ? length : size;
    if (int32_t rc = kvn_receive_response(conn, buffer, &capacity); rc != 0) return rc;
    if (ex.decode == nullptr) return 0;
    return (*ex.decode)(buffer, capacity);
}

}  // namespace kvn
