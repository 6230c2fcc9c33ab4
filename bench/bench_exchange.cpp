// One request/response exchange through the library against two raw clients, all
// three talking to the same loopback responder in the same run:
//   Library  kvn_send_command + kvn_receive_response;
//   Zlib     a raw client: its own socket, the frame assembled by hand and sent in one
//            gather write, its CRCs computed with zlib's crc32();
//   NoCrc    the same raw client with both CRCs skipped (a constant goes out, the
//            answer's CRC is not checked): the floor, what an exchange costs when
//            the CRC is free.
// The raw clients read as the frame layer has to: the sync word on its own (a
// wrong one leaves the rest of the answer unread), the header, then the payload
// and the CRC together.
//
// Sizes: Small (a request without payload, a 6-byte answer), 64 KiB and 500 KB,
// each in both directions: Up carries the payload in the request and gets an empty
// answer, Down sends an empty request and gets the payload back.
//
// The responder reads each request whole (without checking its CRC) and answers with
// one canned frame. Rates count the CPU time of the whole process, client and
// responder together: run with both ends on one CPU, as scripts/bench.sh does, and
// the figure is what one exchange costs that CPU, whatever else the machine runs.
//   taskset -c 0 ./bench_exchange
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>
#include <zlib.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "kvnsdk2.h"

namespace {

using Bytes = std::vector<uint8_t>;

void put32(uint8_t* p, uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = uint8_t(v >> (8 * i));
}
uint32_t get32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
uint32_t zcrc(uint32_t crc, const uint8_t* p, size_t n) {
    return uint32_t(::crc32_z(crc, p, n));
}

Bytes pattern(size_t n, uint32_t salt) {
    Bytes v(n);
    for (auto& b : v) {
        salt = salt * 1664525u + 1013904223u;
        b = uint8_t(salt >> 24);
    }
    return v;
}

Bytes response_frame(const Bytes& payload) {
    Bytes f(28 + payload.size() + 4);
    put32(f.data(), KVN_SYNC_WORD);
    put32(f.data() + 8, KVN_REQUEST_WORD(KVN_REQ_GET));
    put32(f.data() + 24, uint32_t(payload.size()));
    if (!payload.empty()) std::memcpy(f.data() + 28, payload.data(), payload.size());
    put32(f.data() + 28 + payload.size(), zcrc(0, f.data() + 4, 24 + payload.size()));
    return f;
}

bool read_all(int fd, uint8_t* p, size_t n) {
    while (n > 0) {
        const ssize_t r = ::recv(fd, p, n, 0);
        if (r <= 0) return false;
        p += r;
        n -= size_t(r);
    }
    return true;
}

// Writes or reads every byte of the vectors (blocking socket).
template <class Call>
bool all_of(iovec* v, int count, Call call) {
    while (count > 0) {
        const ssize_t done = call(v, count);
        if (done <= 0) return false;
        for (size_t left = size_t(done); left > 0;) {
            const size_t take = left < v->iov_len ? left : v->iov_len;
            v->iov_base = static_cast<uint8_t*>(v->iov_base) + take;
            v->iov_len -= take;
            left -= take;
            if (v->iov_len == 0) ++v, --count;
        }
        while (count > 0 && v->iov_len == 0) ++v, --count;
    }
    return true;
}

// Accepts one connection and answers every request frame with the canned frame.
class Responder {
public:
    explicit Responder(Bytes canned) : canned_(std::move(canned)) {
        listener_ = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::bind(listener_, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0 || ::listen(listener_, 4) != 0)
            std::abort();
        socklen_t len = sizeof a;
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&a), &len);
        port_ = ntohs(a.sin_port);
        thread_ = std::thread([this] { serve(); });
    }
    ~Responder() {
        ::shutdown(listener_, SHUT_RDWR);
        if (fd_ >= 0) ::shutdown(fd_, SHUT_RDWR);
        thread_.join();
        ::close(listener_);
        if (fd_ >= 0) ::close(fd_);
    }
    uint16_t port() const { return port_; }

private:
    void serve() {
        fd_ = ::accept(listener_, nullptr, nullptr);
        if (fd_ < 0) return;
        const int one = 1;
        ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        Bytes body(1 << 20);
        uint8_t head[24];
        for (;;) {
            if (!read_all(fd_, head, sizeof head)) return;
            const size_t rest = size_t(get32(head + 20)) + 4;
            if (rest > body.size() || !read_all(fd_, body.data(), rest)) return;
            if (::send(fd_, canned_.data(), canned_.size(), MSG_NOSIGNAL) != ssize_t(canned_.size())) return;
        }
    }
    Bytes canned_;
    int listener_ = -1;
    int fd_ = -1;
    uint16_t port_ = 0;
    std::thread thread_;
};

class RawClient {
public:
    RawClient(uint16_t port, bool with_crc) : crc_(with_crc) {
        fd_ = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_port = htons(port);
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::connect(fd_, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) std::abort();
        const int one = 1;
        ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    }
    ~RawClient() { ::close(fd_); }

    // Sends the request, reads the answer's payload into `into`: the answer's
    // status, or -2, -6, -12, -1 as the library would report them.
    int32_t exchange(uint32_t word, uint32_t command, const uint8_t* payload, uint32_t n, uint8_t* into,
                     uint32_t capacity) {
        uint8_t h[24], c[4];
        put32(h, KVN_SYNC_WORD);
        put32(h + 4, 0);
        put32(h + 8, word);
        put32(h + 12, 0);
        put32(h + 16, command);
        put32(h + 20, n);
        uint32_t crc = 0;
        if (crc_) {
            crc = zcrc(0, h + 4, 20);
            if (n != 0) crc = zcrc(crc, payload, n);
        }
        put32(c, crc);
        iovec out[3] = {{h, 24}, {const_cast<uint8_t*>(payload), n}, {c, 4}};
        if (!all_of(out, 3, [this](iovec* v, int k) { return ::writev(fd_, v, k); })) return -3;

        uint8_t sync[4], head[24];
        if (!read_all(fd_, sync, 4)) return -2;
        if (get32(sync) != KVN_SYNC_WORD) return -12;
        if (!read_all(fd_, head, 24)) return -2;
        const uint32_t len = get32(head + 20);
        if (len != 0 && len >= capacity) return -1;
        iovec in[2] = {{into, len}, {c, 4}};
        if (!all_of(in, 2, [this](iovec* v, int k) { return ::readv(fd_, v, k); })) return -2;
        if (crc_) {
            crc = zcrc(zcrc(0, head, 24), into, len);
            if (crc != get32(c)) return -6;
        }
        return len != 0 ? 0 : int32_t(get32(head + 12));
    }

private:
    int fd_ = -1;
    bool crc_;
};

enum class Client { Library, Zlib, NoCrc };
enum class Dir { Up, Down };

constexpr uint32_t kCapacity = 512000;
constexpr uint32_t kCommand = 120;

void exchange_bench(benchmark::State& state, Client client, Dir dir, uint32_t size) {
    const Bytes data = pattern(size, 7);
    const Bytes answer = dir == Dir::Down ? data : Bytes{};
    Responder responder(response_frame(answer));
    Bytes into(kCapacity);
    const uint32_t word = KVN_REQUEST_WORD(dir == Dir::Up ? KVN_REQ_SET : KVN_REQ_GET);
    const uint8_t* payload = dir == Dir::Up ? data.data() : nullptr;
    const uint32_t n = dir == Dir::Up ? size : 0;

    kvn_device_conn conn{};
    RawClient* raw = nullptr;
    if (client == Client::Library) {
        conn.ip_address = "127.0.0.1";
        conn.port = responder.port();
        conn.link.conn_type = KVN_CONN_TCP;
        if (kvn_open_device_conn(&conn) != 0) std::abort();
    } else {
        raw = new RawClient(responder.port(), client == Client::Zlib);
    }
    for (auto _ : state) {
        int32_t rc;
        if (raw != nullptr) {
            rc = raw->exchange(word, kCommand, payload, n, into.data(), kCapacity);
        } else {
            rc = kvn_send_command(&conn, &word, kCommand, payload, n);
            uint32_t len = kCapacity;
            if (rc == 0) rc = kvn_receive_response(&conn, into.data(), &len);
        }
        if (rc != 0) {
            state.SkipWithError(("exchange failed: " + std::to_string(rc)).c_str());
            break;
        }
    }
    if (raw != nullptr) {
        delete raw;
    } else {
        kvn_close_device_conn(&conn);
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
    state.SetBytesProcessed(int64_t(state.iterations()) * size);
}

}  // namespace

int main(int argc, char** argv) {
    struct Size { const char* name; uint32_t bytes; bool both; };
    const Size sizes[] = {{"Small", 6, false}, {"64KiB", 65536, true}, {"500KB", 500000, true}};
    const std::pair<const char*, Client> clients[] = {
        {"Library", Client::Library}, {"Zlib", Client::Zlib}, {"NoCrc", Client::NoCrc}};
    for (const Size& s : sizes) {
        for (Dir d : {Dir::Down, Dir::Up}) {
            if (!s.both && d == Dir::Up) continue;
            for (const auto& [name, client] : clients) {
                std::string label = std::string("BM_Exchange/") + s.name;
                if (s.both) label += d == Dir::Up ? "/Up" : "/Down";
                label += std::string("/") + name;
                const Client c = client;
                const uint32_t bytes = s.bytes;
                benchmark::RegisterBenchmark(label.c_str(), [c, d, bytes](benchmark::State& st) {
                    exchange_bench(st, c, d, bytes);
                })->MeasureProcessCPUTime();
            }
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
