// CRC-32 throughput of every path this CPU can run, zlib's crc32() and memcpy of the
// same number of bytes, all in one run. 28 bytes is a request frame without payload,
// 1 KiB a settings answer, 64 KiB a file packet, 512 KiB the largest frame.
//   ./bench_crc32
#include "link/crc32.h"

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

const size_t kSizes[] = {28, 1 << 10, 64 << 10, 512 << 10};

std::vector<unsigned char> make_buffer(size_t n) {
    std::vector<unsigned char> v(n);
    uint32_t x = 0x12345678u;
    for (auto& b : v) {
        x = x * 1664525u + 1013904223u;
        b = static_cast<unsigned char>(x >> 24);
    }
    return v;
}

template <typename Fn>
void run(benchmark::State& state, size_t len, Fn fn) {
    const auto buf = make_buffer(len);
    uint32_t crc = 0;
    for (auto _ : state) {
        crc = fn(crc, buf.data(), len);
        benchmark::DoNotOptimize(crc);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(len));
}

void memcpy_bench(benchmark::State& state, size_t len) {
    const auto src = make_buffer(len);
    std::vector<unsigned char> dst(len);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), len);
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(len));
}

}  // namespace

int main(int argc, char** argv) {
    for (size_t len : kSizes) {
        const std::string size = std::to_string(len);
        for (size_t i = 0; i < kvn::kCrcPathCount; ++i) {
            const auto path = static_cast<kvn::CrcPath>(i);
            if (!kvn::crc32_supported(path)) continue;
            benchmark::RegisterBenchmark(("BM_Crc32/" + std::string(kvn::crc32_path_name(path)) + "/" + size).c_str(),
                                         [path, len](benchmark::State& st) {
                                             run(st, len, [path](uint32_t c, const unsigned char* p, size_t n) {
                                                 return kvn::crc32_on(path, c, p, n);
                                             });
                                         });
        }
        benchmark::RegisterBenchmark(("BM_Crc32/dispatch/" + size).c_str(), [len](benchmark::State& st) {
            run(st, len, [](uint32_t c, const unsigned char* p, size_t n) { return kvn::crc32(c, p, n); });
            st.SetLabel(kvn::crc32_path_name(kvn::crc32_path()));
        });
        benchmark::RegisterBenchmark(("BM_Crc32/zlib/" + size).c_str(), [len](benchmark::State& st) {
            run(st, len, [](uint32_t c, const unsigned char* p, size_t n) {
                return static_cast<uint32_t>(::crc32_z(c, p, n));
            });
        });
        benchmark::RegisterBenchmark(("BM_Memcpy/" + size).c_str(),
                                     [len](benchmark::State& st) { memcpy_bench(st, len); });
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
