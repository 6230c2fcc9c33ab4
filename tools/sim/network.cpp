// Wired and serial network: Ethernet with its address rules, the serial line and
// the USB auxiliary port.
#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::network {
namespace {

// Address mode above 1, address 0, 127.x or broadcast, port 0 or above 65535,
// netmask 0 are refused.
int32_t check_ethernet(const std::vector<Node>& in) {
    for (const Node& n : in) {
        if (n.tag == 1 && n.u32() > 1) return KVN_E_INVALID_NETWORK_MODE;
        if (n.tag == 2 && (n.u32() == 0 || n.u32() == 0xFFFFFFFFu || (n.u32() >> 24) == 127)) return KVN_E_INVALID_IPADDRESS;
        if (n.tag == 3 && (n.u32() == 0 || n.u32() > 65535)) return KVN_E_INVALID_DEVICE_COMMUNICATION_PORT;
        if (n.tag == 4 && n.u32() == 0) return KVN_E_INVALID_NETMASK_ADDRESS;
    }
    return 0;
}

}  // namespace

const Group kEthernet{{U32(1), U32(2), U32(3), U32(4), U32(5), U32(6), U32(7)},
                          {{1, 0},
                           {2, ip(192, 168, 1, 50)},
                           {3, 5005},
                           {4, ip(255, 255, 255, 0)},
                           {5, ip(192, 168, 1, 1)},
                           {6, ip(192, 168, 1, 1)},
                           {7, ip(8, 8, 8, 8)}},
                          {}};
const Group kSerial{range(U32, 1, 4), {{1, 115200}, {2, 8}, {3, 0}, {4, 1}}, {}};
const Group kUsbAuxiliary{{U32(1)}, {{1, 0}}, {}};

// Ethernet: address mode 1 takes addresses from the network, so a set carries
// none and those held stay as they are; a get adds the fixed MAC (tag 8).
Reply ethernet(Call& c) {
    if (c.rq.type == kGet) {
        Reply r = settings::get(c);
        Out o;
        o.fixed(8, kMac, 17);
        r.payload.insert(r.payload.end(), o.bytes.begin(), o.bytes.end());
        return r;
    }
    if (c.rq.type != kSet) return settings::plain(c);
    std::vector<Node> in;
    if (int32_t rc = settings::parse_set(c, &in); rc != 0) return Reply::of(rc);
    if (int32_t rc = check_ethernet(in); rc != 0) return Reply::of(rc);
    overlay(c.st.groups.nodes(c.cmd.id), std::move(in));
    c.st.groups.save(c.cmd.id);
    return Reply{};
}

}  // namespace kvnsim::network
