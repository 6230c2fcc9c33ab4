// Request and response frames.
//
// Request:  sync | header_id | request word | 0 | command id | N | payload | CRC
// Response: sync | word1 word2 word3 | status | word5 | N | payload | CRC
// Words are little-endian; the CRC-32 covers everything after the sync word.
#include <cstring>

#include "kvnsdk2.h"
#include "link/bytes.h"
#include "link/crc32.h"
#include "link/frame.h"
#include "link/transport.h"

namespace kvn {

int32_t receive_response(kvn_device_conn* conn, uint8_t* buffer, uint32_t* length, int32_t* status_word) noexcept {
    if (conn == nullptr || length == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    kvn_conn_link* link = &conn->link;
    const Transport& io = transport_for(link);

    uint8_t sync[4];
    if (int32_t rc = io.receive(link, sync, sizeof sync); rc != 0) return rc;
    if (load_le32(sync) != KVN_SYNC_WORD) return KVN_E_INVALID_SYNC_WORD;  // the rest stays unread

    uint8_t header[kResponseHeaderSize];
    if (int32_t rc = io.receive(link, header, sizeof header); rc != 0) return rc;
    const uint32_t n = load_le32(header + 20);
    const int32_t status = static_cast<int32_t>(load_le32(header + 12));
    if (status_word != nullptr) *status_word = status;

    uint32_t crc = crc32(0, header, sizeof header);
    uint8_t trailer[4];
    if (n == 0) {
        *length = 0;
        if (int32_t rc = io.receive(link, trailer, sizeof trailer); rc != 0) return rc;
        if (load_le32(trailer) != crc) return KVN_E_CRC_MISMATCH;
        return status;
    }
    // A payload as long as the buffer is refused: one byte always stays spare.
    if (buffer == nullptr || n >= *length) return KVN_E_TLV_BUFFER_OVERFLOW;
    *length = n;
    if (io.receive_parts != nullptr) {
        // Payload and CRC in one scatter read; the CRC runs over each chunk of the
        // payload as it lands, while it is still in cache.
        const MutBuf parts[2] = {{buffer, n}, {trailer, sizeof trailer}};
        if (int32_t rc = io.receive_parts(link, parts, 2, &crc); rc != 0) return rc;
    } else {
        if (int32_t rc = io.receive(link, buffer, n); rc != 0) return rc;
        if (int32_t rc = io.receive(link, trailer, sizeof trailer); rc != 0) return rc;
        crc = crc32_continue(crc, buffer, n);
    }
    if (load_le32(trailer) != crc) return KVN_E_CRC_MISMATCH;
    // With a payload the status word is not consulted: terminals report
    // failures with an empty payload.
    return 0;
}

int32_t send_frame(kvn_device_conn* conn, uint32_t request_word, uint32_t command_id, const ConstBuf* pieces,
                   size_t count, uint32_t length) noexcept {
    if (conn == nullptr) return KVN_E_WRITE_TIMEOUT;
    if (length > KVN_MAX_REQUEST_PAYLOAD || count > kMaxPayloadPieces) return KVN_E_TLV_BUFFER_OVERFLOW;

    uint8_t header[kRequestHeaderSize];
    store_le32(header + 0, KVN_SYNC_WORD);
    store_le32(header + 4, conn->header_id);
    store_le32(header + 8, request_word);
    store_le32(header + 12, 0);
    store_le32(header + 16, command_id);
    store_le32(header + 20, length);

    uint32_t crc = crc32(0, header + 4, kRequestHeaderSize - 4);
    for (size_t i = 0; i < count; ++i) crc = crc32(crc, pieces[i].data, pieces[i].size);
    uint8_t trailer[4];
    store_le32(trailer, crc);

    // Header, payload pieces and CRC leave in one gather write, without a copy.
    ConstBuf parts[kMaxPayloadPieces + 2];
    size_t n = 0;
    parts[n++] = {header, kRequestHeaderSize};
    for (size_t i = 0; i < count; ++i) {
        if (pieces[i].size != 0) parts[n++] = pieces[i];
    }
    parts[n++] = {trailer, 4};
    return transport_for(&conn->link).send(&conn->link, parts, n);
}

}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_send_command(kvn_device_conn* conn, const uint32_t* request_word, uint32_t command_id,
                                 const uint8_t* payload, uint32_t payload_length) {
    if (conn == nullptr || request_word == nullptr) return KVN_E_WRITE_TIMEOUT;
    // A null payload with a non-zero length announces N bytes that never follow.
    const kvn::ConstBuf piece{payload, payload_length};
    const bool with_payload = payload != nullptr && payload_length != 0;
    return kvn::send_frame(conn, *request_word, command_id, &piece, with_payload ? 1 : 0, payload_length);
}

KVN_API int32_t kvn_receive_response(kvn_device_conn* conn, uint8_t* buffer, uint32_t* length) {
    return kvn::receive_response(conn, buffer, length, nullptr);
}

KVN_API int32_t kvn_send_reset_command(kvn_device_conn* conn, uint32_t command_id) {
    const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_RESET);
    if (int32_t rc = kvn_send_command(conn, &word, command_id, nullptr, 0); rc != 0) return rc;
    uint8_t buffer[1024];
    uint32_t length = sizeof buffer;
    return kvn_receive_response(conn, buffer, &length);
}

KVN_API uint32_t kvn_calculate_req_header_crc(const uint8_t* header20) {
    if (header20 == nullptr) return 0;
    return kvn::crc32(0, header20, 20);
}

}  // extern "C"
