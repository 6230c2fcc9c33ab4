#include "core/command.h"

#include "link/frame.h"

namespace kvn {

int32_t transact(kvn_device_conn* conn, const Request& rq, const ConstBuf* pieces, size_t count, uint32_t length,
                 uint8_t* buffer, uint32_t* received) noexcept {
    bool sent = false;
    return transact(conn, rq, pieces, count, length, buffer, received, &sent);
}

int32_t transact(kvn_device_conn* conn, const Request& rq, const ConstBuf* pieces, size_t count, uint32_t length,
                 uint8_t* buffer, uint32_t* received, bool* sent) noexcept {
    *sent = false;
    if (int32_t rc = send_frame(conn, KVN_REQUEST_WORD(rq.type), rq.command, pieces, count, length); rc != 0) {
        return rc;
    }
    *sent = true;
    if (!rq.answer) return 0;
    return kvn_receive_response(conn, buffer, received);
}

}  // namespace kvn
