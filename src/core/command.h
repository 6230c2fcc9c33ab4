// The one request/response exchange every command function goes through.
//
//   call<Size>(conn, request, encoder, decoder)
//
// takes a buffer of Size bytes (on the stack up to 32 KiB, from the heap for the
// length of the call above), runs the encoder into it (a failure returns before
// anything is sent), sends the payload in one gather write, receives the answer
// into the same buffer and runs the decoder over it. Encoders and decoders are
// taken by reference and used only inside the call, so nothing can outlive them.
// The send/receive sequence itself is one function, `transact`.
//
// The shapes below (set, get, reset, ...) are that call with a record table.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

#include "core/fields.h"
#include "kvnsdk2.h"
#include "link/tlv.h"
#include "link/transport.h"

namespace kvn {

// Receive capacity of a request that carries a payload: the whole buffer, or
// (for families that say so) the length of the payload just sent.
enum class Capacity : uint8_t { buffer, sent_length };

struct Request {
    uint32_t command;
    uint32_t type = KVN_REQ_SET;           // KVN_REQ_*
    Capacity capacity = Capacity::buffer;
    uint32_t zeros = 0;                    // without an encoder: a payload of this many zero bytes
    bool answer = true;                    // false: send, and return without reading an answer
};

// Sends `pieces` (the payload, `length` bytes in all) as one request frame, then
// (unless the request reads no answer) receives the answer into `buffer` with
// capacity `*received`, the payload length on return. Returns the link's or the
// terminal's status.
int32_t transact(kvn_device_conn* conn, const Request& rq, const ConstBuf* pieces, size_t count, uint32_t length,
                 uint8_t* buffer, uint32_t* received) noexcept;

// The same, telling in `*sent` whether the request went out.
int32_t transact(kvn_device_conn* conn, const Request& rq, const ConstBuf* pieces, size_t count, uint32_t length,
                 uint8_t* buffer, uint32_t* received, bool* sent) noexcept;

// Placeholders for "no payload" and "status only".
struct NoEncoder {};
struct NoDecoder {};
inline constexpr NoEncoder no_payload{};
inline constexpr NoDecoder status_only{};

// Buffers above 32 KiB (the library's frame guard, -Wframe-larger-than) are never
// on the stack: 51200, 204800 and more come from the heap.
inline constexpr uint32_t kStackLimit = 32768;

template <uint32_t Size, bool OnHeap = (Size > kStackLimit)>
struct Buffer {
    uint8_t bytes[Size];
    uint8_t* data() noexcept { return bytes; }
};
template <uint32_t Size>
struct Buffer<Size, true> {
    uint8_t* p = static_cast<uint8_t*>(std::malloc(Size));
    Buffer() = default;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer() { std::free(p); }
    uint8_t* data() noexcept { return p; }
};

// The exchange on a buffer the caller provides (a file transfer keeps one across
// its packets). `*sent` tells whether the request went out, so that a request that
// failed to go can be told from an answer that failed to come.
template <class Encode, class Decode>
int32_t call_in(kvn_device_conn* conn, uint8_t* buffer, uint32_t size, const Request& rq, Encode&& encode,
                Decode&& decode, bool* sent) noexcept {
    *sent = false;
    if (conn == nullptr) return KVN_E_WRITE_TIMEOUT;
    ConstBuf pieces[tlv::Writer::kMaxPieces]{};
    size_t count = 0;
    uint32_t length = 0;
    constexpr bool with_encoder = !std::is_same_v<std::decay_t<Encode>, NoEncoder>;
    if constexpr (with_encoder) {
        tlv::Writer w(buffer, size);
        encode(w);
        if (w.result() != 0) return w.result();
        count = w.pieces(pieces);
        length = w.used();
    } else if (rq.zeros != 0) {
        length = rq.zeros <= size ? rq.zeros : size;
        std::memset(buffer, 0, length);
        pieces[count++] = ConstBuf{buffer, length};
    }
    // A family may read the answer to its payload with the payload's length as capacity.
    uint32_t received = (with_encoder && rq.capacity == Capacity::sent_length) ? length : size;
    const int32_t rc = transact(conn, rq, pieces, count, length, buffer, &received, sent);
    if constexpr (std::is_same_v<std::decay_t<Decode>, NoDecoder>) {
        return rc;
    } else {
        if (rc != 0) return rc;
        return decode(static_cast<const uint8_t*>(buffer), received);
    }
}

template <uint32_t Size, class Encode, class Decode>
int32_t call(kvn_device_conn* conn, const Request& rq, Encode&& encode, Decode&& decode) noexcept {
    if (conn == nullptr) return KVN_E_WRITE_TIMEOUT;
    Buffer<Size> buffer;
    if (buffer.data() == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;  // no memory: nothing is sent
    bool sent = false;
    return call_in(conn, buffer.data(), Size, rq, std::forward<Encode>(encode), std::forward<Decode>(decode), &sent);
}

// A record table as an encoder or a decoder.
struct Encode {
    Desc desc;
    const void* record;
    const Slice* slice = nullptr;
    void operator()(tlv::Writer& w) const noexcept { kvn::encode(w, desc, record, slice); }
};
struct Decode {
    Desc desc;
    void* record;
    tlv::Empty empty = tlv::Empty::skip;
    int32_t operator()(const uint8_t* p, uint32_t n) const noexcept { return kvn::decode(desc, p, n, record, empty); }
};

namespace cmd {

inline constexpr uint32_t kSettingsBuffer = 20480;
inline constexpr uint32_t kSmallBuffer = 1024;

// set: the record encoded by its table; status only.
// `slice`, when given, sends only those entries of the table's lists.
template <uint32_t Size = kSettingsBuffer>
int32_t set(kvn_device_conn* conn, uint32_t command, Desc desc, const void* record,
            Capacity capacity = Capacity::buffer, const Slice* slice = nullptr) noexcept {
    if (record == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return call<Size>(conn, Request{command, KVN_REQ_SET, capacity}, Encode{desc, record, slice}, status_only);
}

// get: no payload; the answer decoded into the record by its table.
template <uint32_t Size = kSettingsBuffer>
int32_t get(kvn_device_conn* conn, uint32_t command, Desc desc, void* record,
            tlv::Empty empty = tlv::Empty::skip) noexcept {
    if (record == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    prepare(desc, record);
    return call<Size>(conn, Request{command, KVN_REQ_GET}, no_payload, Decode{desc, record, empty});
}

// reset: no payload, status only (a 1024-byte buffer unless the family says otherwise).
template <uint32_t Size = kSmallBuffer>
int32_t reset(kvn_device_conn* conn, uint32_t command) noexcept {
    return call<Size>(conn, Request{command, KVN_REQ_RESET}, no_payload, status_only);
}

// Any request type with a record sent and a record (perhaps the same one) decoded.
template <uint32_t Size = kSettingsBuffer>
int32_t query(kvn_device_conn* conn, const Request& rq, Desc send, const void* sent, Desc receive,
              void* received) noexcept {
    if (sent == nullptr || received == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    prepare(receive, received);
    return call<Size>(conn, rq, Encode{send, sent}, Decode{receive, received});
}

// Any request type with a record sent, status only.
template <uint32_t Size = kSettingsBuffer>
int32_t send(kvn_device_conn* conn, const Request& rq, Desc desc, const void* record) noexcept {
    if (record == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return call<Size>(conn, rq, Encode{desc, record}, status_only);
}

// A single value under one tag: sent by value, read through a pointer.
template <uint32_t Size = kSettingsBuffer>
int32_t set_u32(kvn_device_conn* conn, uint32_t command, uint8_t tag, uint32_t value) noexcept {
    return call<Size>(conn, Request{command, KVN_REQ_SET}, [&](tlv::Writer& w) { w.u32(tag, value); }, status_only);
}

template <uint32_t Size = kSettingsBuffer>
int32_t get_u32(kvn_device_conn* conn, uint32_t command, uint8_t tag, uint32_t* value) noexcept {
    if (value == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    const Field rows[] = {row::u32(tag, Member<uint32_t>{0})};
    return get<Size>(conn, command, rows, value);
}

// Bytes the caller has encoded, as the whole payload: sent from where they lie, never
// copied, bounded only by the frame; status only, the answer read into Size bytes.
template <uint32_t Size = kSmallBuffer>
int32_t send_raw(kvn_device_conn* conn, const Request& rq, const void* data, uint32_t length) noexcept {
    if (conn == nullptr) return KVN_E_WRITE_TIMEOUT;
    if (data == nullptr && length != 0) return KVN_E_TLV_BUFFER_OVERFLOW;
    Buffer<Size> buffer;
    if (buffer.data() == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    const ConstBuf piece{static_cast<const uint8_t*>(data), length};
    uint32_t received = Size;
    return transact(conn, rq, &piece, length != 0 ? 1 : 0, length, buffer.data(), &received);
}

}  // namespace cmd

}  // namespace kvn
