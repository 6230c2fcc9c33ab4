// The user record codec with ten full templates (about 16 KB on the wire): the store
// form encoded, the card form encoded (its tag 1 closed in the shortest length form,
// which moves the contents down), and an answer decoded; against memcpy of the same
// number of bytes. Bytes per second count the encoded record.
//   ./bench_user_record
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <vector>

#include "core/fields.h"
#include "kvnsdk2.h"
#include "link/tlv.h"
#include "users/user_record.h"

namespace {

constexpr uint32_t kBuffer = 20480;

std::unique_ptr<kvn_user_record> full_user() {
    auto r = std::make_unique<kvn_user_record>();
    std::memset(r.get(), 0, sizeof *r);
    std::strcpy(r->user_id, "bench-user-0001");
    std::memcpy(r->text_t03, "first text", r->text_t03_length = 10);
    std::memcpy(r->text_t04, "second", r->text_t04_length = 6);
    r->attr_t05 = 5, r->attr_t08 = 8, r->attr_t09 = 9, r->attr_t18 = 18;
    std::strcpy(r->text_t10, "short");
    for (int i = 0; i < KVN_USER_TEMPLATE_COUNT; ++i) {
        r->templates[i].finger_index = uint8_t(i);
        for (uint32_t k = 0; k < KVN_USER_TEMPLATE_SIZE; ++k) r->templates[i].template_data[k] = uint8_t(k * 7 + i);
        r->templates[i].template_length = KVN_USER_TEMPLATE_SIZE;
    }
    r->template_count = KVN_USER_TEMPLATE_COUNT;
    r->attr_t35_count = KVN_USER_VALUE_COUNT;
    return r;
}

uint32_t encode(kvn::Desc desc, const kvn_user_record& r, uint8_t* out) {
    kvn::tlv::Writer w(out, kBuffer);
    kvn::encode(w, desc, &r);
    return w.result() == 0 ? w.used() : 0;
}

void encode_bench(benchmark::State& state, kvn::Desc desc) {
    const auto r = full_user();
    std::vector<uint8_t> out(kBuffer);
    uint32_t n = 0;
    for (auto _ : state) {
        n = encode(desc, *r, out.data());
        benchmark::DoNotOptimize(out.data());
    }
    if (n == 0) state.SkipWithError("the record did not encode");
    state.SetBytesProcessed(int64_t(state.iterations()) * n);
    state.counters["bytes"] = n;
}

void BM_EncodeStoreForm(benchmark::State& state) { encode_bench(state, kvn::users::kRecord); }
void BM_EncodeCardForm(benchmark::State& state) { encode_bench(state, kvn::users::kCardRecord); }

// As a read does it: the answer decoded into a record whose counts start at zero.
void BM_Decode(benchmark::State& state) {
    const auto r = full_user();
    std::vector<uint8_t> wire(kBuffer);
    const uint32_t n = encode(kvn::users::kRecord, *r, wire.data());
    auto into = std::make_unique<kvn_user_record>();
    int32_t rc = 0;
    for (auto _ : state) {
        into->template_count = 0;
        into->attr_t35_count = 0;
        rc |= kvn::decode(kvn::users::kFields, wire.data(), n, into.get());
        benchmark::DoNotOptimize(into.get());
    }
    if (rc != 0 || into->template_count != KVN_USER_TEMPLATE_COUNT) state.SkipWithError("the answer did not decode");
    state.SetBytesProcessed(int64_t(state.iterations()) * n);
}

void BM_Memcpy(benchmark::State& state) {
    const auto r = full_user();
    std::vector<uint8_t> wire(kBuffer), out(kBuffer);
    const uint32_t n = encode(kvn::users::kRecord, *r, wire.data());
    for (auto _ : state) {
        std::memcpy(out.data(), wire.data(), n);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * n);
}

}  // namespace

BENCHMARK(BM_EncodeStoreForm);
BENCHMARK(BM_EncodeCardForm);
BENCHMARK(BM_Decode);
BENCHMARK(BM_Memcpy);
BENCHMARK_MAIN();
