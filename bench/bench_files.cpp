// File transfer and journal decoding.
//
// Transfers: a 5 MB upload and download through the library (kvn_upload_file,
// kvn_download_file, the local file on disk) against the simulator on loopback,
// and a raw client doing the same 64 KiB packet exchanges with the same simulator:
// frames built by hand from data in memory, one writev per request, the answer
// read with its CRC checked. The library should reach at least 0.8 of the raw rate.
//
// The library's download is measured twice: into /dev/null (the exchanges, as the
// raw client does them into memory) and into a file on disk.
//
// Journal: a full answer of entries (just under 20480 bytes) decoded by
// kvn_get_transaction_logs from an in-memory transport, in payload bytes per second.
//
// Rates count the CPU time of the whole process. Run pinned to one CPU, client and
// simulator together:
//   taskset -c 0 ./bench_files
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "kvnsdk2.h"
#include "kvnsim.h"
#include "link/crc32.h"
#include "link/transport.h"

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kFileSize = 5000000;
constexpr uint32_t kPacket = 65536;
constexpr uint32_t kPackets = (kFileSize + kPacket - 1) / kPacket;

void put32(Bytes& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(uint8_t(v >> (8 * i)));
}
uint32_t get32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
void u32el(Bytes& b, uint8_t tag, uint32_t v) {
    b.insert(b.end(), {tag, 4});
    put32(b, v);
}

Bytes file_data() {
    Bytes d(kFileSize);
    for (size_t i = 0; i < d.size(); ++i) d[i] = uint8_t(i * 31 + i / 4096);
    return d;
}

kvn_device_conn open_conn(uint16_t port) {
    kvn_device_conn c{};
    c.ip_address = "127.0.0.1";
    c.port = port;
    c.link.conn_type = KVN_CONN_TCP;
    if (kvn_open_device_conn(&c) != 0) std::abort();
    return c;
}

// The raw client: its own socket, frames assembled here.
class RawClient {
   public:
    explicit RawClient(uint16_t port) {
        fd_ = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_port = htons(port);
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::connect(fd_, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) std::abort();
        const int one = 1;
        ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        answer_.resize(256 * 1024);
    }
    ~RawClient() { ::close(fd_); }

    // Sends head + data (data by reference) as one frame; reads the answer. Returns its
    // status; the payload is at answer() with payload_length() bytes.
    int32_t exchange(uint32_t type, const Bytes& head, const uint8_t* data, uint32_t n) {
        uint8_t h[24];
        const uint32_t words[] = {KVN_SYNC_WORD, 1, KVN_REQUEST_WORD(type), 0, 120, uint32_t(head.size() + n)};
        for (int i = 0; i < 6; ++i)
            for (int b = 0; b < 4; ++b) h[i * 4 + b] = uint8_t(words[i] >> (8 * b));
        uint32_t crc = kvn::crc32(0, h + 4, 20);
        crc = kvn::crc32(crc, head.data(), head.size());
        if (n != 0) crc = kvn::crc32(crc, data, n);
        uint8_t c[4];
        for (int b = 0; b < 4; ++b) c[b] = uint8_t(crc >> (8 * b));
        iovec v[4] = {
            {h, 24}, {const_cast<uint8_t*>(head.data()), head.size()}, {const_cast<uint8_t*>(data), n}, {c, 4}};
        size_t total = 24 + head.size() + n + 4;
        iovec* p = v;
        int count = 4;
        while (total > 0) {
            const ssize_t w = ::writev(fd_, p, count);
            if (w <= 0) return -3;
            total -= size_t(w);
            for (size_t left = size_t(w); left > 0;) {
                const size_t take = left < p->iov_len ? left : p->iov_len;
                p->iov_base = static_cast<uint8_t*>(p->iov_base) + take;
                p->iov_len -= take;
                left -= take;
                if (p->iov_len == 0) ++p, --count;
            }
        }
        if (!read(answer_.data(), 28)) return -2;
        const int32_t status = int32_t(get32(answer_.data() + 16));
        length_ = get32(answer_.data() + 24);
        if (length_ + 32 > answer_.size() || !read(answer_.data() + 28, length_ + 4)) return -2;
        if (kvn::crc32(0, answer_.data() + 4, 24 + length_) != get32(answer_.data() + 28 + length_)) return -6;
        return status;
    }
    const uint8_t* answer() const { return answer_.data() + 28; }
    uint32_t payload_length() const { return length_; }

   private:
    bool read(uint8_t* p, size_t n) {
        while (n > 0) {
            const ssize_t r = ::recv(fd_, p, n, 0);
            if (r <= 0) return false;
            p += r;
            n -= size_t(r);
        }
        return true;
    }
    int fd_ = -1;
    Bytes answer_;
    uint32_t length_ = 0;
};

Bytes start_packet(bool upload) {
    Bytes p;
    u32el(p, 4, 5);
    p.insert(p.end(), {5, 8, 'b', 'e', 'n', 'c', 'h', '.', 'f', 'w'});
    if (upload) {
        u32el(p, 6, kFileSize);
        u32el(p, 7, kPackets);
    }
    return p;
}

void raw_upload(RawClient& raw, const Bytes& data) {
    if (raw.exchange(KVN_REQ_UPLOAD, start_packet(true), nullptr, 0) != 0) std::abort();
    const uint32_t id = get32(raw.answer() + 2);  // tag 1 comes first
    for (uint32_t k = 0; k < kPackets; ++k) {
        const uint32_t n = k + 1 < kPackets ? kPacket : kFileSize - k * kPacket;
        Bytes head;
        u32el(head, 1, id);
        u32el(head, 3, k + 1);
        head.insert(head.end(), {8, 0x84, uint8_t(n >> 24), uint8_t(n >> 16), uint8_t(n >> 8), uint8_t(n)});
        if (raw.exchange(KVN_REQ_SET, head, data.data() + size_t(k) * kPacket, n) != 0) std::abort();
    }
}

const kvn_file_transfer_request kUp = [] {
    kvn_file_transfer_request r{};
    r.file_type = 5;
    r.local_path = "bench_files_up.bin";
    std::strcpy(r.file_name, "bench.fw");
    return r;
}();
// The download's local file: /dev/null for the exchanges alone, a file in the
// working directory for the whole cost (creating it again truncates 5 MB).
kvn_file_transfer_request download_to(const char* path) {
    kvn_file_transfer_request r = kUp;
    r.local_path = path;
    return r;
}

void write_local(const Bytes& d) {
    std::FILE* f = std::fopen(kUp.local_path, "wb");
    if (f == nullptr || std::fwrite(d.data(), 1, d.size(), f) != d.size()) std::abort();
    std::fclose(f);
}

void BM_Upload5MB_Library(benchmark::State& state) {
    write_local(file_data());
    kvnsim::Simulator sim;
    if (!sim.start()) std::abort();
    kvn_device_conn c = open_conn(sim.port());
    for (auto _ : state)
        if (kvn_upload_file(&c, &kUp) != 0) state.SkipWithError("upload failed");
    state.SetBytesProcessed(int64_t(state.iterations()) * kFileSize);
    kvn_close_device_conn(&c);
}

void BM_Upload5MB_Raw(benchmark::State& state) {
    const Bytes data = file_data();
    kvnsim::Simulator sim;
    if (!sim.start()) std::abort();
    RawClient raw(sim.port());
    for (auto _ : state) raw_upload(raw, data);
    state.SetBytesProcessed(int64_t(state.iterations()) * kFileSize);
}

void download(benchmark::State& state, const char* path) {
    const kvn_file_transfer_request down = download_to(path);
    write_local(file_data());
    kvnsim::Simulator sim;
    if (!sim.start()) std::abort();
    kvn_device_conn c = open_conn(sim.port());
    if (kvn_upload_file(&c, &kUp) != 0) std::abort();
    for (auto _ : state)
        if (kvn_download_file(&c, &down) != 0) state.SkipWithError("download failed");
    state.SetBytesProcessed(int64_t(state.iterations()) * kFileSize);
    kvn_close_device_conn(&c);
}
void BM_Download5MB_Library(benchmark::State& state) { download(state, "/dev/null"); }
void BM_Download5MB_LibraryToDiskFile(benchmark::State& state) { download(state, "bench_files_down.bin"); }

void BM_Download5MB_Raw(benchmark::State& state) {
    const Bytes data = file_data();
    kvnsim::Simulator sim;
    if (!sim.start()) std::abort();
    RawClient raw(sim.port());
    raw_upload(raw, data);
    Bytes into(kFileSize);
    for (auto _ : state) {
        if (raw.exchange(KVN_REQ_DOWNLOAD, start_packet(false), nullptr, 0) != 0) std::abort();
        const uint32_t id = get32(raw.answer() + 2);
        size_t at = 0;
        for (uint32_t k = 1; k <= kPackets; ++k) {
            Bytes head;
            u32el(head, 1, id);
            u32el(head, 3, k);
            if (raw.exchange(KVN_REQ_GET, head, nullptr, 0) != 0) std::abort();
            // Tags 1 and 3 (six bytes each), then tag 8 in any length form.
            const uint8_t* v = raw.answer() + 12;
            const uint32_t count = v[1] < 0x80 ? 0 : v[1] & 0x0F;
            uint32_t n = count == 0 ? v[1] : 0;
            for (uint32_t i = 0; i < count; ++i) n = n << 8 | v[2 + i];
            if (v[0] != 8 || at + n > into.size()) std::abort();
            std::memcpy(into.data() + at, v + 2 + count, n);
            at += n;
        }
        if (at != kFileSize) std::abort();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * kFileSize);
}

// ---------------------------------------------------------------- journal decode

Bytes g_frame;  // the canned answer
size_t g_at = 0;

int32_t mem_send(kvn_conn_link*, const kvn::ConstBuf*, size_t) {
    g_at = 0;
    return 0;
}
int32_t mem_receive(kvn_conn_link*, uint8_t* buffer, uint32_t count) {
    if (g_at + count > g_frame.size()) return -2;
    std::memcpy(buffer, g_frame.data() + g_at, count);
    g_at += count;
    return 0;
}
int32_t mem_open(kvn_device_conn*) { return 0; }
int32_t mem_close(kvn_device_conn*) { return 0; }
const kvn::Transport kMemory{mem_send, mem_receive, mem_open, mem_close};

Bytes log_page(uint32_t* entries) {
    Bytes page;
    for (uint32_t i = 0;; ++i) {
        Bytes e;
        for (uint8_t t : {7, 8, 9, 10, 11, 21}) u32el(e, t, i * 64 + t);
        const std::string user = "user" + std::to_string(i), text = "Access granted", dev = "kvn-terminal-01";
        for (auto [t, s] : {std::pair<uint8_t, const std::string*>{12, &user}, {13, &text}, {23, &dev}}) {
            e.insert(e.end(), {t, uint8_t(s->size())});
            e.insert(e.end(), s->begin(), s->end());
        }
        for (uint8_t t : {14, 15}) e.insert(e.end(), {t, 1, uint8_t(i)});
        u32el(e, 16, i);
        for (uint8_t t : {17, 18, 19}) e.insert(e.end(), {t, 1, uint8_t(i)});
        u32el(e, 20, 20260101);
        const uint32_t n = uint32_t(e.size());
        if (page.size() + 6 + n > 20479 || i == 255) {
            *entries = i;
            return page;
        }
        page.insert(page.end(), {1, 0x84, uint8_t(n >> 24), uint8_t(n >> 16), uint8_t(n >> 8), uint8_t(n)});
        page.insert(page.end(), e.begin(), e.end());
    }
}

void BM_LogPageDecode(benchmark::State& state) {
    uint32_t entries = 0;
    const Bytes page = log_page(&entries);
    Bytes f;
    for (uint32_t w : {KVN_SYNC_WORD, 1u, KVN_REQUEST_WORD(KVN_REQ_GET), 0u, 0u, 0u, uint32_t(page.size())})
        put32(f, w);
    f.insert(f.end(), page.begin(), page.end());
    put32(f, kvn::crc32(0, f.data() + 4, f.size() - 4));
    g_frame = f;
    kvn::set_transport_override(&kMemory);
    kvn_device_conn c{};
    c.link.conn_type = KVN_CONN_TCP;
    auto q = std::make_unique<kvn_transaction_log_query>();
    for (auto _ : state) {
        if (kvn_get_transaction_logs(&c, q.get()) != 0 || (q->log_count & 0xFF) != entries) {
            state.SkipWithError("decode failed");
            break;
        }
    }
    kvn::set_transport_override(nullptr);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(page.size()));
    state.SetItemsProcessed(int64_t(state.iterations()) * entries);
    state.counters["entries"] = entries;
}

}  // namespace

BENCHMARK(BM_Upload5MB_Library)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Upload5MB_Raw)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Download5MB_Library)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Download5MB_Raw)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Download5MB_LibraryToDiskFile)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LogPageDecode);

BENCHMARK_MAIN();
