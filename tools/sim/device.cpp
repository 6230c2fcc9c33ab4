// Device information and maintenance: product information, date and time,
// security, debug log and VNC groups, device information and status, reboots and
// the factory default.
#include <string_view>

#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::device {
namespace {

// The last element with a tag among the Wi-Fi link's (addresses from the network
// follow those the connect request carried).
uint32_t link_value(const State& st, uint8_t tag) {
    uint32_t v = 0;
    for (const Node& n : st.wifi_link)
        if (n.tag == tag) v = n.u32();
    return v;
}

// One element of the device information answer: a fixed number or text, or a
// value read from the state.
struct InfoRow {
    uint8_t tag;
    Kind kind;  // u8, u32, or text (any bytes)
    uint32_t number = 0;
    std::string_view text = {};
    uint32_t (*live)(State&) = nullptr;
};

constexpr char kFeatures[] = "\xFF\x3F\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x01";

const InfoRow kInfo[] = {
    {1, Kind::u32, 1},
    {2, Kind::text, 0, "kvn-sim"},
    {3, Kind::text, 0, "1.2.21.0"},  // firmware version
    {4, Kind::text, 0, "SIM0000000001"},  // serial number
    {5, Kind::u32, 10000},
    {6, Kind::u32, 0, {}, [](State& st) { return uint32_t(st.users.size()); }},
    {7, Kind::u32, 0, {}, [](State& st) { return uint32_t(st.journal.size()); }},
    {8, Kind::u32, 0, {}, [](State& st) {
         size_t templates = 0;
         for (const auto& [id, u] : st.users) templates += u.templates.size();
         return uint32_t(templates);
     }},
    {9, Kind::u32, 0, {}, [](State& st) { return st.groups.value(Cmd::Ethernet, 2); }},
    {10, Kind::u32, 0, {}, [](State& st) { return st.groups.value(Cmd::Ethernet, 4); }},
    {11, Kind::u32, 0, {}, [](State& st) { return st.groups.value(Cmd::Ethernet, 5); }},
    {12, Kind::u32, 0, {}, [](State& st) { return st.groups.value(Cmd::Ethernet, 6); }},
    {13, Kind::text, 0, network::kMac},
    {14, Kind::text, 0, "2026-01-15 10:00"},
    {15, Kind::text, 0, "00:1A:2B:3C:4D:5F"},  // Wi-Fi MAC
    {16, Kind::u32, Journal::kLimit},
    {17, Kind::u32, 20},
    {18, Kind::u32, 100000},
    {19, Kind::u32, 0, {}, [](State& st) { return uint32_t(st.user_groups.size()); }},
    {20, Kind::u32, 0, {}, [](State& st) { return st.groups.value(Cmd::Ethernet, 3); }},
    {21, Kind::text, 0, "kvn-sim"},
    {22, Kind::u32, 0, {}, [](State& st) { return link_value(st, 9); }},
    {23, Kind::u32, 0, {}, [](State& st) { return link_value(st, 10); }},
    {24, Kind::u32, 0, {}, [](State& st) { return link_value(st, 11); }},
    {25, Kind::u32, 0, {}, [](State& st) { return link_value(st, 12); }},
    {26, Kind::u8, 1},
    {27, Kind::u8, 0, {}, [](State& st) { return uint32_t(st.groups.value(Cmd::WifiStatus, 2, 0) ? 1 : 0); }},
    {28, Kind::u8, 0, {}, [](State& st) { return uint32_t(certificates::vpn_up(st) ? 1 : 0); }},
    {29, Kind::u32, 0, {}, [](State& st) { return certificates::vpn_up(st) ? certificates::kVpnAddress : 0; }},
    {30, Kind::u32, 0},
    {31, Kind::u32, 0, {}, [](State& st) { return uint32_t(st.formats.size()); }},
    {32, Kind::u32, 0, {}, [](State& st) { return uint32_t(st.revoked.size()); }},
    {35, Kind::u32, 0},
    {36, Kind::text, 0, std::string_view(kFeatures, sizeof kFeatures - 1)},
    {37, Kind::text, 0, "kvnsim terminal"},
    {38, Kind::u32, 0},
    {39, Kind::u32, 0},
};

}  // namespace

const Group kProductInfo{{U32(1), TXT(2, 50)}, {{1, 100}, {2, "KVN terminal simulator"}}, {}};
// Tag 1 of the date and time is the clock itself, kept apart (see clock).
const Group kDateTime{{U32(2), TXT(5, 1024), U32(6)}, {{2, 0}, {5, "UTC"}, {6, 0}}, {}};
const Group kSecurity{{U32(1), TXT(2, 11)}, {{1, 0}}, {}};
// Debug value 1 is written but never answered.
const Group kDebugLog{{U32(1), U32(2)}, {{1, 0}, {2, 0}}, {1}};
const Group kVnc{{U8(2), TXT(3, 21)}, {{2, 0}}, {}};

// Date and time: tag 1 is the terminal's clock in seconds since 1970; setting it
// moves the clock, which then keeps running.
Reply clock(Call& c) {
    if (c.rq.type == kSet) {
        static const std::vector<Field> fields = {U32(1), U32(2), TXT(5, 1024), U32(6)};
        std::vector<Node> in;
        if (int32_t rc = parse(fields, c.rq.data, c.rq.size, &in); rc != 0) return Reply::of(rc);
        std::vector<Node> kept;
        for (Node& n : in) {
            if (n.tag == 1) c.st.clock_offset += int64_t(n.u32()) - int64_t(c.st.now());
            else kept.push_back(std::move(n));
        }
        overlay(c.st.groups.nodes(c.cmd.id), std::move(kept));
        c.st.groups.save(c.cmd.id);
        c.st.save_misc();
        return Reply{};
    }
    Out o;
    o.bytes.reserve(64);
    o.u32(1, c.st.now());
    const Bytes rest = c.st.groups.answer(c.cmd.id);
    o.bytes.insert(o.bytes.end(), rest.begin(), rest.end());
    return Reply::with(std::move(o));
}

Reply info(Call& c) {
    Out o;
    for (const InfoRow& row : kInfo) {
        const uint32_t v = row.live ? row.live(c.st) : row.number;
        switch (row.kind) {
            case Kind::u8:
                o.u8(row.tag, uint8_t(v));
                break;
            case Kind::u32:
                o.u32(row.tag, v);
                break;
            default:
                o.element(row.tag, row.text.data(), row.text.size());
                break;
        }
    }
    return Reply::with(std::move(o));
}

Reply status(Call&) {
    Out o;
    o.bytes.reserve(16);
    o.u32(1, 0);
    o.text(2, "Ready");
    return Reply::with(std::move(o));
}

// Forced reboot: the terminal goes away without answering.
Reply reboot_forced(Call&) {
    Reply r;
    r.silent = true;
    return r;
}

// Graceful reboot: answers, then the connection drops.
Reply reboot_graceful(Call&) {
    Reply r;
    r.close_after = true;
    return r;
}

// Every setting, user, list and the journal.
Reply factory_default(Call& c) {
    c.st.factory_reset();
    return Reply{};
}

}  // namespace kvnsim::device
