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

// A simulator with an open connection to it, over TCP or (serial) its serial line.
struct Session {
    std::unique_ptr<kvnsim::Simulator> sim;
    std::wstring path;
    kvn_device_conn conn{};

    explicit Session(bool serial, kvnsim::Faults faults = {}) {
        kvnsim::Options o;
        o.serial = serial;
        o.faults = faults;
        sim = std::make_unique<kvnsim::Simulator>(o);
        std::string error;
        if (!sim->start(&error)) ADD_FAILURE() << error;
        const std::string p = sim->serial_path();
        path.assign(p.begin(), p.end());
        conn = tcp_conn(sim->port());
        conn.serial_port = path.c_str(), conn.baud_rate = 115200;
        if (serial) conn.link.conn_type = KVN_CONN_SERIAL;
    }
};

// Written, read back equal; reset, read back different.
template <class Rec, class Set, class Get, class Reset>
void round_trip(kvn_device_conn* c, const char* name, const Rec& written, Set set, Get get, Reset reset) {
    auto read = std::make_unique<Rec>();
    std::memset(read.get(), 0, sizeof(Rec));
    ASSERT_EQ(set(c, &written), 0) << name;
    ASSERT_EQ(get(c, read.get()), 0) << name;
    EXPECT_EQ(std::memcmp(read.get(), &written, sizeof(Rec)), 0) << name << ": read back differs";
    ASSERT_EQ(reset(c), 0) << name;
    std::memset(read.get(), 0, sizeof(Rec));
    ASSERT_EQ(get(c, read.get()), 0) << name;
    EXPECT_NE(std::memcmp(read.get(), &written, sizeof(Rec)), 0) << name << ": the reset kept what was written";
}

}  // namespace kvntest
#endif
