// End-to-end helpers: a simulated terminal with an open connection, and the
// set / read back / reset round trip every settings family goes through.
#pragma once

#if KVN_HAVE_SIM
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "kvnsdk2.h"
#include "kvnsim.h"
#include "peer.h"

namespace kvntest {

// A simulator and a connection to it, open for the life of the object: over TCP or,
// with Options::serial, its serial line.
struct Session {
    std::unique_ptr<kvnsim::Simulator> sim;
    std::wstring path;
    kvn_device_conn conn{};
    kvn_device_conn* c = &conn;
    bool is_open = false;

    explicit Session(const kvnsim::Options& o = {}) : sim(std::make_unique<kvnsim::Simulator>(o)) {
        std::string error;
        if (!sim->start(&error)) ADD_FAILURE() << error;
        const std::string p = sim->serial_path();
        path.assign(p.begin(), p.end());
        conn = tcp_conn(sim->port());
        conn.serial_port = path.c_str(), conn.baud_rate = 115200;
        if (o.serial) conn.link.conn_type = KVN_CONN_SERIAL;
        EXPECT_EQ(open(), 0);
    }
    ~Session() { EXPECT_EQ(is_open ? close() : 0, 0) << "close"; }
    // A connection is closed once: its descriptor may belong to someone else afterwards.
    int32_t open() { const int32_t rc = kvn_open_device_conn(c); is_open = rc == 0; return rc; }
    int32_t close() { is_open = false; return kvn_close_device_conn(c); }
};

// Written, read back equal; reset, read back different.
template <class Rec, class Set, class Get, class Reset>
void round_trip(kvn_device_conn* c, const char* name, const Rec& written, Set set, Get get, Reset reset) {
    auto read = std::make_unique<Rec>();
    std::memset(read.get(), 0, sizeof(Rec));  // padding too
    ASSERT_EQ(set(c, &written), 0) << name;
    ASSERT_EQ(get(c, read.get()), 0) << name;
    EXPECT_EQ(std::memcmp(read.get(), &written, sizeof(Rec)), 0) << name << ": read back differs";
    ASSERT_EQ(reset(c), 0) << name;
    std::memset(read.get(), 0, sizeof(Rec));
    ASSERT_EQ(get(c, read.get()), 0) << name;
    EXPECT_NE(std::memcmp(read.get(), &written, sizeof(Rec)), 0) << name << ": the reset kept what was written";
}
// round_trip through the family's kvn_set_F, kvn_get_F and kvn_reset_F.
#define ROUND_TRIP(c, F, ...) round_trip(c, #F, __VA_ARGS__, kvn_set_##F, kvn_get_##F, kvn_reset_##F)

// A setter that takes its value rather than a record, as round_trip calls it.
template <auto Set>
constexpr auto by_value = [](kvn_device_conn* c, const auto* v) { return Set(c, *v); };

}  // namespace kvntest
#endif
