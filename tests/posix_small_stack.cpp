// Every command export runs on a thread with a 1 MiB stack (the default on
// Windows) with room to spare: each runs on a painted stack and the deepest byte
// it touched is measured.
#include <pthread.h>
#include <sys/mman.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "exports.h"
#include "peer.h"

namespace {

constexpr size_t kStack = 1u << 20;
constexpr size_t kBudget = 256u * 1024;  // a quarter of the stack
constexpr uint8_t kPaint = 0xA5;

struct Run {
    const kvntest::ExportCall* call;
    kvntest::Args* args;
};

// Bytes of the stack the call touched: from the top down to the deepest byte
// that lost its paint.
size_t high_water(const kvntest::ExportCall& call, kvntest::Args& args, void* stack) {
    std::memset(stack, kPaint, kStack);
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setstack(&attr, stack, kStack);
    Run run{&call, &args};
    pthread_t t;
    if (pthread_create(&t, &attr, [](void* p) -> void* {
            auto* r = static_cast<Run*>(p);
            r->call->call(*r->args);
            return nullptr;
        }, &run) != 0) {
        pthread_attr_destroy(&attr);
        return kStack;
    }
    pthread_join(t, nullptr);
    pthread_attr_destroy(&attr);
    const auto* bytes = static_cast<const uint8_t*>(stack);
    size_t untouched = 0;
    while (untouched < kStack && bytes[untouched] == kPaint) ++untouched;
    return kStack - untouched;
}

}  // namespace

TEST(SmallStack, EveryExportLeavesThreeQuartersOfAMebibyteStack) {
    // A terminal that answers every request with success and no payload.
    kvntest::LoopbackPeer peer([](kvntest::sock_t s) {
        for (;;) {
            if (kvntest::read_request(s).size() < 28) return;
            kvntest::write_bytes(s, kvntest::response(0));
        }
    });
    void* stack = mmap(nullptr, kStack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(stack, MAP_FAILED);
    kvntest::Args args;
    kvn_device_conn c = peer.conn();
    ASSERT_EQ(kvn_open_device_conn(&c), 0);
    args.conn = &c;
    size_t deepest = 0;
    std::string deepest_name;
    for (const auto& e : kvntest::export_calls()) {
        args.clear();
        if (const kvntest::Setup setup = kvntest::setup_for(e.name)) setup(args);
        const size_t used = high_water(e, args, stack);
        EXPECT_LT(used, kBudget) << e.name;
        if (used > deepest) {
            deepest = used;
            deepest_name = e.name;
        }
    }
    kvn_close_device_conn(&c);
    munmap(stack, kStack);
    std::printf("deepest stack: %s, %zu bytes of %zu\n", deepest_name.c_str(), deepest, kStack);
}
