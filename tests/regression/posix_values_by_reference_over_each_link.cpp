// Found by review: a record with three or more by-reference values failed over TCP with -3; serial sent it.
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "core/command.h"
#include "core/fields.h"
#include "kvnsdk2.h"
#include "link/frame.h"
#include "peer.h"

using namespace kvn;
using namespace kvn::row;
using kvntest::Bytes;
using kvntest::cat;
using kvntest::el;

namespace {

// Four values that leave from where they lie, with values by copy before, between
// and after them: the payload is nine pieces, the frame eleven parts.
struct Blobs {
    uint32_t id;
    uint8_t photo[200];
    uint8_t note_length;
    uint8_t note[20];
    uint32_t flags;
    uint32_t key_length;
    uint8_t key[300];
    uint8_t tail[3];
    uint32_t end;
};
#define BLOB(m) KVN_MEMBER(Blobs, m)
constexpr Field kBlobs[] = {
    u32(1, BLOB(id)),
    bytes(2, BLOB(photo)).by_ref(),
    counted(3, BLOB(note), BLOB(note_length)).by_ref(),
    u32(4, BLOB(flags)),
    counted(5, BLOB(key), BLOB(key_length)).by_ref(),
    bytes(6, BLOB(tail)).by_ref(),
    u32(7, BLOB(end)),
};
#undef BLOB

constexpr uint32_t kCommand = 0x3A5;
constexpr uint32_t kHeaderId = 0x11223344;

// The request frame as the terminal must see it, built from the record's bytes.
Bytes expected_frame(const Blobs& b) {
    const Bytes payload = cat({
        kvntest::u32(1, b.id),
        el(2, Bytes(b.photo, b.photo + sizeof b.photo)),
        el(3, Bytes(b.note, b.note + b.note_length)),
        kvntest::u32(4, b.flags),
        el(5, Bytes(b.key, b.key + b.key_length)),
        el(6, Bytes(b.tail, b.tail + sizeof b.tail)),
        kvntest::u32(7, b.end),
    });
    Bytes frame;
    for (uint32_t w : {0xAABBCCDDu, kHeaderId, kvntest::kSet, 0u, kCommand, uint32_t(payload.size())})
        kvntest::put_le32(frame, w);
    frame.insert(frame.end(), payload.begin(), payload.end());
    kvntest::put_le32(frame, kvntest::crc32(0, frame.data() + 4, frame.size() - 4));
    return frame;
}

// Reads n bytes from fd, each wait bounded: fewer when the line stays quiet.
Bytes read_fd(int fd, size_t n) {
    Bytes b(n);
    size_t got = 0;
    while (got < n) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, 5000) != 1) break;
        const ssize_t r = ::read(fd, b.data() + got, n - got);
        if (r <= 0) break;
        got += static_cast<size_t>(r);
    }
    b.resize(got);
    return b;
}

// A whole request frame from fd: header, then the payload and CRC it announces.
Bytes read_frame_fd(int fd) {
    Bytes frame = read_fd(fd, kRequestHeaderSize);
    if (frame.size() < kRequestHeaderSize) return frame;
    const Bytes rest = read_fd(fd, kvntest::get_le32(frame.data() + 20) + 4u);
    frame.insert(frame.end(), rest.begin(), rest.end());
    return frame;
}

struct Outcome {
    int32_t rc = 99;
    Bytes frame;  // what reached the far end
};

int32_t send_blobs(kvn_device_conn* c, const Blobs& b) {
    c->header_id = kHeaderId;
    return cmd::send(c, Request{kCommand, KVN_REQ_SET}, kBlobs, &b);
}

Outcome over_tcp(const Blobs& b) {
    Outcome out;
    kvntest::LoopbackPeer peer([&](kvntest::sock_t s) {
        out.frame = kvntest::read_request(s);
        kvntest::write_bytes(s, kvntest::response(0));
    });
    kvn_device_conn c = peer.conn();
    if (kvn_open_device_conn(&c) != 0) return out;
    out.rc = send_blobs(&c, b);
    kvn_close_device_conn(&c);
    return out;
}

Outcome over_serial(const Blobs& b) {
    Outcome out;
    int master = -1, slave = -1;
    char path[128];
    if (::openpty(&master, &slave, path, nullptr, nullptr) != 0) return out;
    const std::wstring name(path, path + std::strlen(path));
    kvn_device_conn c = kvntest::serial_conn(name, 115200);
    if (kvn_open_device_conn(&c) == 0) {
        std::thread terminal([&] {
            out.frame = read_frame_fd(master);
            const Bytes answer = kvntest::response(0);
            if (::write(master, answer.data(), answer.size()) != static_cast<ssize_t>(answer.size())) return;
        });
        out.rc = send_blobs(&c, b);
        terminal.join();
        kvn_close_device_conn(&c);
    }
    ::close(master);
    ::close(slave);
    return out;
}

}  // namespace

TEST(ValuesByReference, UpToTheWritersLimitReachTheTerminalByteExactOverEachLink) {
    auto b = std::make_unique<Blobs>();
    b->id = 0x0A0B0C0D;
    for (size_t i = 0; i < sizeof b->photo; ++i) b->photo[i] = static_cast<uint8_t>(i * 7 + 1);
    for (size_t i = 0; i < sizeof b->note; ++i) b->note[i] = static_cast<uint8_t>(0xF0 - i);
    for (size_t i = 0; i < sizeof b->key; ++i) b->key[i] = static_cast<uint8_t>(i ^ 0x5A);
    b->flags = 0x80000001;
    b->tail[0] = 0xFF, b->tail[1] = 0x00, b->tail[2] = 0x84;
    b->end = 0xCAFEBABE;

    // An empty counted value is an empty element sent by copy, so the lengths choose
    // how many values travel by reference.
    struct Case { const char* name; uint8_t note; uint32_t key; size_t refs; };
    const Case cases[] = {
        {"two", 0, 0, 2},
        {"three", 0, 300, 3},
        {"four, the writer's limit", 20, 300, 4},
        {"four, a short note", 1, 130, 4},
    };
    struct Link { const char* name; std::function<Outcome(const Blobs&)> send; };
    const Link links[] = {{"tcp", over_tcp}, {"serial", over_serial}};
    static_assert(tlv::Writer::kMaxRefs == 4, "the cases reach the writer's limit of values by reference");

    for (const Case& k : cases) {
        b->note_length = k.note;
        b->key_length = k.key;
        // The case has the number of pieces it claims.
        Bytes scratch(1024);
        tlv::Writer w(scratch.data(), static_cast<uint32_t>(scratch.size()));
        encode(w, kBlobs, b.get());
        ASSERT_EQ(w.result(), 0) << k.name;
        ASSERT_EQ(w.refs(), k.refs) << k.name;

        const Bytes want = expected_frame(*b);
        for (const Link& link : links) {
            SCOPED_TRACE(std::string(link.name) + ", " + k.name);
            const Outcome got = link.send(*b);
            EXPECT_EQ(got.rc, 0);
            EXPECT_BYTES(got.frame, want);
        }
    }
}
