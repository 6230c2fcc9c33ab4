// File transfer (command 120), the actions on what the terminal holds (601) and
// file delete.
//
// A transfer is a start exchange (request type 4 or 5) that fixes the transfer
// id, size and packet count, then one exchange per packet of at most 64 KiB
// (types 1 and 2). The 204800-byte request/answer buffer and the 64 KiB chunk
// live on the heap for the length of the transfer, one allocation for all
// packets; upload data goes out from the chunk through the gather write.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"
#include "link/file.h"

namespace kvn {
namespace {

using namespace row;

constexpr uint32_t kTransferBuffer = 204800;
constexpr uint32_t kChunk = KVN_FILE_PACKET_SIZE;
// A file whose size fits a u32 has at most this many packets: a larger count
// from the terminal buys neither empty packets nor a dead link more attempts.
constexpr int32_t kMaxPackets = 65536;

// The transfer's own state.
struct State {
    uint32_t transfer_id;
    uint32_t packet_id;       // 1-based, sent as tag 3
    int32_t packet_count;
    uint32_t remaining_size;  // bytes not yet sent
    uint32_t chunk_length;    // valid bytes of `chunk`
    uint8_t chunk[kChunk];
};
struct Work {
    uint8_t buffer[kTransferBuffer];
    State state;
};

// Start answer: tags 1, 6 and 7 replace the transfer id, the size and the packet count.
constexpr Field kStartAnswer[] = {
    u32(1, KVN_MEMBER(State, transfer_id)),
    u32(6, KVN_MEMBER(State, remaining_size)),
    u32(7, KVN_MEMBER(State, packet_count)),
};
// Download packet: the terminal's packet number replaces ours; data beyond the
// chunk is refused, not cut.
constexpr Field kPacketAnswer[] = {
    u32(1, KVN_MEMBER(State, transfer_id)),
    u32(3, KVN_MEMBER(State, packet_id)),
    counted(8, KVN_MEMBER(State, chunk), KVN_MEMBER(State, chunk_length)).remember(kChunk, KVN_E_TLV_BUFFER_OVERFLOW),
};
constexpr Field kFileId[] = {
    u32(4, KVN_MEMBER(kvn_file_transfer_request, file_type)),
    text(5, KVN_MEMBER(kvn_file_transfer_request, file_name)),
};

// What differs between the specified transfers and the extension's.
struct Options {
    bool stop_on_failure = false;  // a failed packet ends the transfer
    kvn_ext_progress_fn progress = nullptr;
    void* context = nullptr;
};

// The local file, closed on every way out.
struct LocalFile {
    std::FILE* f;
    ~LocalFile() {
        if (f != nullptr) std::fclose(f);
    }
    int32_t close() noexcept {  // a failed flush is a failed write
        const int rc = std::fclose(f);
        f = nullptr;
        return rc == 0 ? 0 : KVN_E_OPENING_FILE;
    }
};

struct WorkArea {
    Work* w = static_cast<Work*>(std::calloc(1, sizeof(Work)));
    ~WorkArea() { std::free(w); }
};

int32_t report(const Options& o, const State& s, uint64_t total, uint64_t bytes, uint32_t packets) noexcept {
    if (o.progress == nullptr) return 0;
    const uint32_t count = s.packet_count > 0 ? static_cast<uint32_t>(s.packet_count) : 0;
    const kvn_ext_transfer_progress p{bytes, total, packets, count};
    return o.progress(&p, o.context);
}

void send_id(tlv::Writer& w, const kvn_file_transfer_request& rq) noexcept { encode(w, kFileId, &rq); }

int32_t upload(kvn_device_conn* conn, const kvn_file_transfer_request* rq, const Options& o) noexcept {
    if (rq == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    uint64_t size = 0;
    LocalFile file{local::open_read(rq->local_path, &size)};
    if (file.f == nullptr || size > UINT32_MAX) return KVN_E_OPENING_FILE;  // a u32 cannot carry the size
    WorkArea area;
    if (area.w == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    uint8_t* buffer = area.w->buffer;
    State& s = area.w->state;
    s.remaining_size = static_cast<uint32_t>(size);
    s.packet_id = 1;
    s.packet_count = static_cast<int32_t>(size / kChunk + (size % kChunk != 0 ? 1 : 0));
    bool sent = false;
    int32_t rc = call_in(
        conn, buffer, kTransferBuffer, Request{id::file_transfer, KVN_REQ_UPLOAD},
        [&](tlv::Writer& w) {
            send_id(w, *rq);
            w.u32(6, s.remaining_size);
            w.i32(7, s.packet_count);
        },
        Decode{kStartAnswer, &s}, &sent);
    if (rc != 0) return rc;
    const uint64_t total = s.remaining_size;
    uint64_t done = 0;
    uint32_t packets = 0;
    if (int32_t stop = report(o, s, total, 0, 0); stop != 0) return stop;
    for (int32_t i = 0; i < s.packet_count && i < kMaxPackets; ++i) {
        const uint32_t n = s.remaining_size < kChunk ? s.remaining_size : kChunk;
        if (std::fread(s.chunk, 1, n, file.f) != n) return KVN_E_OPENING_FILE;
        s.chunk_length = n;
        rc = call_in(
            conn, buffer, kTransferBuffer, Request{id::file_transfer, KVN_REQ_SET},
            [&](tlv::Writer& w) {
                w.u32(1, s.transfer_id);
                w.u32(3, s.packet_id);
                w.element_ref(8, s.chunk, n);
            },
            status_only, &sent);
        // A packet that did not go out is not repeated: the next chunk goes under its number.
        if (rc != 0 && !sent && !o.stop_on_failure) continue;
        if (rc != 0) break;
        done += n;
        if (int32_t stop = report(o, s, total, done, ++packets); stop != 0) return stop;
        if (s.packet_id == static_cast<uint32_t>(s.packet_count)) break;
        ++s.packet_id;
        s.remaining_size -= n;
    }
    return rc;
}

int32_t download(kvn_device_conn* conn, const kvn_file_transfer_request* rq, const Options& o) noexcept {
    if (rq == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    LocalFile file{local::open_write(rq->local_path)};  // created before the terminal is asked
    if (file.f == nullptr) return KVN_E_OPENING_FILE;
    WorkArea area;
    if (area.w == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    uint8_t* buffer = area.w->buffer;
    State& s = area.w->state;
    s.packet_id = 1;
    bool sent = false;
    int32_t rc = call_in(conn, buffer, kTransferBuffer, Request{id::file_transfer, KVN_REQ_DOWNLOAD},
                         [&](tlv::Writer& w) { send_id(w, *rq); }, Decode{kStartAnswer, &s}, &sent);
    if (rc != 0) return rc;
    const uint64_t total = s.remaining_size;
    uint64_t done = 0;
    uint32_t packets = 0;
    if (int32_t stop = report(o, s, total, 0, 0); stop != 0) return stop;
    // At most packet_count attempts: a failed packet is asked again within them.
    for (int32_t i = 0; i < s.packet_count && i < kMaxPackets; ++i) {
        s.chunk_length = 0;  // an answer without data writes nothing
        rc = call_in(
            conn, buffer, kTransferBuffer, Request{id::file_transfer, KVN_REQ_GET},
            [&](tlv::Writer& w) {
                w.u32(1, s.transfer_id);
                w.u32(3, s.packet_id);
            },
            Decode{kPacketAnswer, &s}, &sent);
        if (rc != 0 && o.stop_on_failure) return rc;
        if (rc != 0) continue;
        if (std::fwrite(s.chunk, 1, s.chunk_length, file.f) != s.chunk_length) return KVN_E_OPENING_FILE;
        done += s.chunk_length;
        if (int32_t stop = report(o, s, total, done, ++packets); stop != 0) return stop;
        if (s.packet_id == static_cast<uint32_t>(s.packet_count)) break;
        ++s.packet_id;
    }
    const int32_t closed = file.close();
    return rc != 0 ? rc : closed;
}

// 601: the tag that carries the byte 1 names the action; the CSV actions name their file under tag 10.
int32_t action(kvn_device_conn* conn, uint32_t type, uint8_t tag, const char* name, bool named) noexcept {
    if (named && name == nullptr) return KVN_E_TLV_BUFFER_OVERFLOW;
    return call<cmd::kSmallBuffer>(
        conn, Request{id::device_action, type},
        [&](tlv::Writer& w) {
            w.u8(tag, 1);
            if (!named) return;
            // Bounded by the buffer: a longer name cannot fit and fails the encoder.
            w.text(10, name, cmd::kSmallBuffer, true);
        },
        status_only);
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_upload_file(kvn_device_conn* conn, const kvn_file_transfer_request* request) {
    return upload(conn, request, Options{});
}
KVN_API int32_t kvn_download_file(kvn_device_conn* conn, const kvn_file_transfer_request* request) {
    return download(conn, request, Options{});
}
KVN_API int32_t kvn_ext_upload_file(kvn_device_conn* conn, const kvn_file_transfer_request* request,
                                    kvn_ext_progress_fn progress, void* context) {
    return upload(conn, request, Options{true, progress, context});
}
KVN_API int32_t kvn_ext_download_file(kvn_device_conn* conn, const kvn_file_transfer_request* request,
                                      kvn_ext_progress_fn progress, void* context) {
    return download(conn, request, Options{true, progress, context});
}
KVN_API int32_t kvn_delete_file(kvn_device_conn* conn, const kvn_file_transfer_request* request) {
    return cmd::send<cmd::kSmallBuffer>(conn, Request{id::file_transfer, KVN_REQ_RESET}, kFileId, request);
}

KVN_API int32_t kvn_upgrade_firware(kvn_device_conn* conn) { return action(conn, KVN_REQ_SET, 5, nullptr, false); }
KVN_API int32_t kvn_restore_backup_file(kvn_device_conn* conn) { return action(conn, KVN_REQ_SET, 7, nullptr, false); }
// The CSV export travels as a get request carrying a payload.
KVN_API int32_t kvn_upgrade_firware_export_csv_file(kvn_device_conn* conn, const char* name) {
    return action(conn, KVN_REQ_GET, 8, name, true);
}
KVN_API int32_t kvn_upgrade_firware_import_csv_file(kvn_device_conn* conn, const char* name) {
    return action(conn, KVN_REQ_SET, 9, name, true);
}

}  // extern "C"
