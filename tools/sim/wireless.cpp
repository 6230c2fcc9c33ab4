// Wireless, SSL, notifications and Ethernet security: the groups, and a fixed
// neighbourhood of Wi-Fi networks to scan and join.
#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::wireless {
namespace {

struct Network {
    const char* name;
    const char* detail;
    uint32_t signal;
    bool secured;  // needs a key of 8 characters or more
};
constexpr Network kNetworks[] = {
    {"office", "WPA2-PSK 00:11:22:33:44:01 channel 6", 78, true},
    {"guest", "open 00:11:22:33:44:02 channel 11", 64, false},
    {"warehouse", "WPA2-PSK 00:11:22:33:44:03 channel 1", 41, true},
    {"lab-5g", "WPA3-SAE 00:11:22:33:44:04 channel 36", 55, true},
    {"printer-direct", "open 00:11:22:33:44:05 channel 6", 23, false},
};

// Address source 1 takes its addresses from the network: these, under tags 9 to
// 13, the last one under tag 15 as well.
constexpr uint32_t kLinkAddresses[] = {ip(192, 168, 20, 31), ip(255, 255, 255, 0), ip(192, 168, 20, 1),
                                       ip(192, 168, 20, 1), ip(8, 8, 8, 8)};

}  // namespace

const Group kSystemNotification{{U32(1), TXT(2, 1024)}, {{1, 0}, {2, ""}}, {}};
// The SSL secret (tag 5) is written but never answered.
const Group kSsl{{U32(3), U32(6), TXT(4, 51), TXT(5, 33)}, {{3, 0}, {6, 0}}, {5}};
const Group kWifiStatus{{U8(2)}, {{2, 1}}, {}};
const Group kEthernetSecurity{{U32(1), LIST(2, {TXT(3, 16)}), LIST(4, {EX(5, 17)})}, {{1, 0}}, {}};

// The networks around, then the joined network's connect elements; tag 15 is one
// byte in the answers (1 while joined), not the address the connect request
// repeats under it.
Reply scan(Call& c) {
    Out o;
    for (const Network& n : kNetworks) {
        const size_t at = o.open();
        o.text(3, n.name);
        o.text(4, n.detail);
        o.u32(5, n.signal);
        o.close(at, 1);
    }
    for (const Node& n : c.st.wifi_link) {
        if (n.tag == 3) o.element(6, n.value);
        else if (n.tag == 8 || (n.tag >= 9 && n.tag <= 13)) o.node(n);
    }
    if (!c.st.wifi_link.empty()) o.u8(15, 1);
    return Reply::with(std::move(o));
}

Reply info(Call& c) {
    Out o;
    o.u8(2, c.st.wifi_link.empty() ? 0 : 1);
    for (const Node& n : c.st.wifi_link) {
        if (n.tag == 3) {
            o.node(n);
            for (const Network& w : kNetworks)
                if (n.text() == w.name) {
                    o.text(4, w.detail);
                    o.u32(5, w.signal);
                }
        } else if (n.tag != 7 && n.tag != 15) {
            o.node(n);
        }
    }
    if (!c.st.wifi_link.empty()) o.u8(15, 1);
    return Reply::with(std::move(o));
}

// Joins one of the networks (set) or leaves whatever network is joined (reset).
Reply connect(Call& c) {
    const bool enabled = c.st.groups.value(Cmd::WifiStatus, 2, 1) != 0;
    if (c.rq.type == kReset) {
        static const std::vector<Field> fields = {TXT(3, 32)};
        std::vector<Node> in;
        if (int32_t rc = parse(fields, c.rq.data, c.rq.size, &in); rc != 0) return Reply::of(rc);
        c.st.wifi_link.clear();
        c.st.save_misc();
        return Reply{};
    }
    static const std::vector<Field> fields = {TXT(3, 32), TXT(7, 65), U8(8),   U32(9), U32(10),
                                              U32(11),    U32(12),    U32(13), U32(15)};
    std::vector<Node> in;
    if (int32_t rc = parse(fields, c.rq.data, c.rq.size, &in); rc != 0) return Reply::of(rc);
    if (!enabled) return Reply::of(KVN_E_FAILED_TO_ENABLE_WI_FI);
    std::string name, key;
    uint8_t source = 0;
    for (const Node& n : in) {
        if (n.tag == 3) name = n.text();
        if (n.tag == 7) key = n.text();
        if (n.tag == 8) source = n.u8();
    }
    const Network* net = nullptr;
    for (const Network& w : kNetworks)
        if (name == w.name) net = &w;
    if (net == nullptr || (net->secured && key.size() < 8)) return Reply::of(KVN_E_FAILED_TO_CONNECT_WI_FI);
    c.st.wifi_link = in;
    if (source != 0) {
        for (uint8_t t = 9; t <= 13; ++t) {
            Node n{t, Bytes(4), {}};
            put_le32(n.value.data(), kLinkAddresses[t - 9]);
            c.st.wifi_link.push_back(n);
        }
        Node n15{15, Bytes(4), {}};
        put_le32(n15.value.data(), kLinkAddresses[4]);
        c.st.wifi_link.push_back(n15);
    }
    c.st.save_misc();
    return Reply{};
}

}  // namespace kvnsim::wireless
