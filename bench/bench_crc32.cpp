// CRC-32 throughput: the dispatching entry point (carry-less multiply where the CPU
// has it), the portable slicing-by-8 tables, and zlib for comparison. 28 bytes is
// the size of a request frame without payload; 64 KiB and 512 KiB are bulk sizes.
#include "link/crc32.h"

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <cstdint>
#include <vector>

namespace {

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
void run(benchmark::State& state, Fn fn) {
    const auto len = static_cast<size_t>(state.range(0));
    const auto buf = make_buffer(len);
    uint32_t crc = 0;
    for (auto _ : state) {
        crc = fn(crc, buf.data(), len);
        benchmark::DoNotOptimize(crc);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(len));
}

void BM_Crc32(benchmark::State& state) {
    run(state, [](uint32_t c, const unsigned char* p, size_t n) { return kvn::crc32(c, p, n); });
    state.SetLabel(kvn::crc32_has_clmul() ? "clmul" : "tables");
}

void BM_Crc32Portable(benchmark::State& state) {
    run(state, [](uint32_t c, const unsigned char* p, size_t n) { return kvn::crc32_portable(c, p, n); });
}

void BM_Zlib(benchmark::State& state) {
    run(state, [](uint32_t c, const unsigned char* p, size_t n) {
        return static_cast<uint32_t>(::crc32(c, p, static_cast<uInt>(n)));
    });
}

#define KVN_CRC_SIZES Arg(28)->Arg(1 << 10)->Arg(64 << 10)->Arg(512 << 10)
BENCHMARK(BM_Crc32)->KVN_CRC_SIZES;
BENCHMARK(BM_Crc32Portable)->KVN_CRC_SIZES;
BENCHMARK(BM_Zlib)->KVN_CRC_SIZES;

}  // namespace

BENCHMARK_MAIN();
