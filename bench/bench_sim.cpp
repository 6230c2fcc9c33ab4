// The simulator against a raw responder, measured in the same run through the
// library's own send and receive.
//
// The raw responder reads each request frame and answers with a canned response
// frame: the least a terminal on this machine can do. The simulator checks the
// CRC, decodes the request, acts on its state and builds its answer. Both serve
// small exchanges (a settings read) and 64 KiB file packets (command 120, upload
// data packets).
//
// Rates count the CPU time of the whole process (client and server together). Run
// with client and servers on one CPU, where the figures are stable:
//   taskset -c 0 ./bench_sim
// On small exchanges the simulator should reach at least 0.8 times the raw
// responder's rate. On 64 KiB packets it also checks the request's CRC, which the
// raw responder skips; with the CRC component's folding paths that costs a few
// percent, and the simulator should reach 0.9 times the raw rate.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "kvnsdk2.h"
#include "kvnsim.h"
#include "link/crc32.h"

namespace {

using Bytes = std::vector<uint8_t>;

void put32(Bytes& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(uint8_t(v >> (8 * i)));
}
uint32_t get32(const uint8_t* p) { return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24; }

Bytes response_frame(uint32_t word, const Bytes& payload) {
    Bytes f;
    put32(f, KVN_SYNC_WORD);
    put32(f, 0);
    put32(f, word);
    put32(f, 0);
    put32(f, 0);
    put32(f, 0);
    put32(f, uint32_t(payload.size()));
    f.insert(f.end(), payload.begin(), payload.end());
    put32(f, kvn::crc32(0, f.data() + 4, f.size() - 4));
    return f;
}

// Answers every request frame with one canned frame, read and written in as
// few system calls as the simulator uses.
class RawResponder {
public:
    explicit RawResponder(Bytes canned) : canned_(std::move(canned)) {
        listener_ = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(listener_, reinterpret_cast<sockaddr*>(&a), sizeof a);
        ::listen(listener_, 4);
        socklen_t len = sizeof a;
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&a), &len);
        port_ = ntohs(a.sin_port);
        thread_ = std::thread([this] { serve(); });
    }
    ~RawResponder() {
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
        Bytes buf(256 * 1024);
        size_t have = 0;
        for (;;) {
            while (have < 24) {
                const ssize_t r = ::recv(fd_, buf.data() + have, buf.size() - have, 0);
                if (r <= 0) return;
                have += size_t(r);
            }
            const size_t frame = 24 + get32(buf.data() + 20) + 4;
            while (have < frame) {
                const ssize_t r = ::recv(fd_, buf.data() + have, buf.size() - have, 0);
                if (r <= 0) return;
                have += size_t(r);
            }
            std::memmove(buf.data(), buf.data() + frame, have - frame);
            have -= frame;
            if (::send(fd_, canned_.data(), canned_.size(), MSG_NOSIGNAL) != ssize_t(canned_.size())) return;
        }
    }
    Bytes canned_;
    int listener_ = -1;
    int fd_ = -1;
    uint16_t port_ = 0;
    std::thread thread_;
};

kvn_device_conn open_conn(uint16_t port) {
    kvn_device_conn c{};
    c.ip_address = "127.0.0.1";
    c.port = port;
    c.link.conn_type = KVN_CONN_TCP;
    if (kvn_open_device_conn(&c) != 0) std::abort();
    return c;
}

int32_t exchange(kvn_device_conn& c, uint32_t word, uint32_t command, const uint8_t* payload, uint32_t n,
                 uint8_t* answer, uint32_t capacity) {
    if (int32_t rc = kvn_send_command(&c, &word, command, payload, n); rc != 0) return rc;
    uint32_t len = capacity;
    return kvn_receive_response(&c, answer, &len);
}

// A small exchange: read the USB auxiliary group (command 103), whose answer
// is one 4-byte element.
constexpr uint32_t kGet = KVN_REQUEST_WORD(KVN_REQ_GET);
const Bytes kSmallAnswer = {1, 4, 0, 0, 0, 0};

void small(benchmark::State& state, kvn_device_conn& c) {
    uint8_t answer[1024];
    for (auto _ : state) {
        if (exchange(c, kGet, 103, nullptr, 0, answer, sizeof answer) != 0) {
            state.SkipWithError("exchange failed");
            break;
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()));
}

void BM_Small_Raw(benchmark::State& state) {
    RawResponder raw(response_frame(kGet, kSmallAnswer));
    kvn_device_conn c = open_conn(raw.port());
    small(state, c);
    kvn_close_device_conn(&c);
}

void BM_Small_Simulator(benchmark::State& state) {
    kvnsim::Simulator sim;
    if (!sim.start()) std::abort();
    kvn_device_conn c = open_conn(sim.port());
    small(state, c);
    kvn_close_device_conn(&c);
}

// 64 KiB upload data packets: tag 1 transfer id, tag 3 packet number, tag 8 data.
constexpr uint32_t kPacket = 65536;
constexpr uint32_t kPacketsPerFile = 64;

Bytes packet(uint32_t transfer, uint32_t number, const Bytes& data) {
    Bytes p = {1, 4};
    put32(p, transfer);
    p.insert(p.end(), {3, 4});
    put32(p, number);
    p.insert(p.end(), {8, 0x84, 0, 1, 0, 0});
    p.insert(p.end(), data.begin(), data.end());
    return p;
}

// Starts an upload of kPacketsPerFile packets; returns its transfer id.
uint32_t start_upload(kvn_device_conn& c) {
    Bytes p = {4, 4, 0, 0, 0, 0, 5, 9, 'b', 'e', 'n', 'c', 'h', '.', 'b', 'i', 'n', 6, 4};
    put32(p, kPacket * kPacketsPerFile);
    p.insert(p.end(), {7, 4});
    put32(p, kPacketsPerFile);
    uint8_t answer[1024];
    uint32_t len = sizeof answer;
    const uint32_t word = KVN_REQUEST_WORD(KVN_REQ_UPLOAD);
    if (kvn_send_command(&c, &word, 120, p.data(), uint32_t(p.size())) != 0) std::abort();
    if (kvn_receive_response(&c, answer, &len) != 0 || len < 6 || answer[0] != 1) std::abort();
    return get32(answer + 2);
}

void packets(benchmark::State& state, kvn_device_conn& c, bool simulator) {
    const uint32_t set = KVN_REQUEST_WORD(KVN_REQ_SET);
    Bytes data(kPacket);
    for (size_t i = 0; i < data.size(); ++i) data[i] = uint8_t(i * 31);
    uint32_t transfer = simulator ? start_upload(c) : 1;
    uint32_t number = 1;
    Bytes p = packet(transfer, number, data);
    uint8_t answer[1024];
    for (auto _ : state) {
        if (number > kPacketsPerFile) {  // the file is complete: start the next one
            transfer = simulator ? start_upload(c) : transfer + 1;
            number = 1;
        }
        for (int i = 0; i < 4; ++i) {
            p[2 + i] = uint8_t(transfer >> (8 * i));
            p[8 + i] = uint8_t(number >> (8 * i));
        }
        if (exchange(c, set, 120, p.data(), uint32_t(p.size()), answer, sizeof answer) != 0) {
            state.SkipWithError("packet refused");
            break;
        }
        ++number;
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kPacket);
    state.SetItemsProcessed(int64_t(state.iterations()));
}

void BM_Packet64K_Raw(benchmark::State& state) {
    RawResponder raw(response_frame(KVN_REQUEST_WORD(KVN_REQ_SET), {}));
    kvn_device_conn c = open_conn(raw.port());
    packets(state, c, false);
    kvn_close_device_conn(&c);
}

void BM_Packet64K_Simulator(benchmark::State& state) {
    kvnsim::Simulator sim;
    if (!sim.start()) std::abort();
    kvn_device_conn c = open_conn(sim.port());
    packets(state, c, true);
    kvn_close_device_conn(&c);
}

}  // namespace

BENCHMARK(BM_Small_Raw)->MeasureProcessCPUTime();
BENCHMARK(BM_Small_Simulator)->MeasureProcessCPUTime();
BENCHMARK(BM_Packet64K_Raw)->MeasureProcessCPUTime();
BENCHMARK(BM_Packet64K_Simulator)->MeasureProcessCPUTime();

BENCHMARK_MAIN();
