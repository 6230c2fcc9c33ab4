// The wrapper shapes every command function follows.
//
//   set    encode the record into a stack buffer, send a set request, read the
//          status back into the same buffer;
//   get    send a get request without payload, read the answer, decode it;
//   reset  send a reset request without payload, read the status;
//   action any request type, with an optional encoder and an optional decoder.
//
// A family passes its command id, its buffer size, the capacity rule and its
// encoder/decoder; everything else (send, receive, result codes) lives here once.
#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

#include "kvnsdk2.h"
#include "link/tlv.h"

namespace kvn {

// A non-owning reference to a callable, so that the exchange itself is one
// function rather than a template per family. It must not outlive the callable:
// pass lambdas straight into a call, or name them before taking a reference.
template <class Sig>
class FnRef;
template <class R, class... A>
class FnRef<R(A...)> {
public:
    template <class F, class = std::enable_if_t<!std::is_same_v<std::decay_t<F>, FnRef>>>
    FnRef(F&& f) noexcept  // NOLINT: implicit by design
        : obj_(const_cast<void*>(static_cast<const void*>(&f))),
          call_([](void* o, A... a) -> R { return (*static_cast<std::remove_reference_t<F>*>(o))(std::forward<A>(a)...); }) {}
    R operator()(A... a) const { return call_(obj_, std::forward<A>(a)...); }

private:
    void* obj_;
    R (*call_)(void*, A...);
};

using Encoder = FnRef<void(tlv::Writer&)>;
using Decoder = FnRef<int32_t(const uint8_t* payload, uint32_t length)>;

// Receive capacity of a request that carries a payload: the whole buffer, or
// (for families that say so) the length of the payload just sent.
enum class Capacity { buffer, sent_length };

struct Exchange {
    uint32_t command;
    uint32_t type;                        // KVN_REQ_*
    Capacity capacity = Capacity::buffer;
    const Encoder* encode = nullptr;      // no payload when null
    const Decoder* decode = nullptr;      // status only when null
    uint32_t send_length = 0;             // payload length when there is no encoder (0: none)
};

// One request/response exchange through `buffer`, which serves the request
// payload and the response alike.
int32_t exchange(kvn_device_conn* conn, uint8_t* buffer, uint32_t size, const Exchange& ex) noexcept;

namespace cmd {

inline constexpr uint32_t kSettingsBuffer = 20480;
inline constexpr uint32_t kResetBuffer = 1024;

template <uint32_t Size = kSettingsBuffer>
int32_t set(kvn_device_conn* conn, uint32_t command, Encoder encode, Capacity capacity = Capacity::buffer) noexcept {
    uint8_t buffer[Size];
    return exchange(conn, buffer, Size, Exchange{command, KVN_REQ_SET, capacity, &encode, nullptr});
}

template <uint32_t Size = kSettingsBuffer>
int32_t get(kvn_device_conn* conn, uint32_t command, Decoder decode) noexcept {
    uint8_t buffer[Size];
    return exchange(conn, buffer, Size, Exchange{command, KVN_REQ_GET, Capacity::buffer, nullptr, &decode});
}

inline int32_t reset(kvn_device_conn* conn, uint32_t command) noexcept {
    uint8_t buffer[kResetBuffer];
    return exchange(conn, buffer, kResetBuffer, Exchange{command, KVN_REQ_RESET});
}

}  // namespace cmd
}  // namespace kvn
