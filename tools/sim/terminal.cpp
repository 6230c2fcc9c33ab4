// Request dispatch, the rules of the settings groups that are more than a store,
// device information, maintenance, wireless, certificates, VPN and VoIP.
#include "terminal.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <new>
#include <stdexcept>

#include "kvnsdk2.h"

namespace kvnsim {
namespace {

constexpr uint8_t S = bit(kSet), G = bit(kGet), R = bit(kReset);

// Request types each command takes; 0 for a command the terminal does not have.
uint8_t types_of(uint32_t cmd) {
    switch (cmd) {
        case 1: case 3: case 4: case 5: case 6: case 8: case 11: case 13: case 14: case 15: case 16:
        case 119: case 133: case 136: case 138: case 140: case 147: case 201: case 202: case 301:
        case 401: case 402: case 403: case 404: case 405: case 406: case 407: case 408: case 410:
        case 411: case 412: case 508: case 702: case 703: case 803: case 901: case 909: case 911:
        case 1002: case 1003: case 1004: case 1007:
            return G;
        case 12: case 121: case 122: case 131: case 302: case 413:
            return R;
        case 205: case 409: case 505: case 701: case 704: case 801: case 802: case 906: case 907:
        case 1005: case 1006:
            return S;
        case 126:
            return S | G;
        case 137: case 903: case 905:
            return S | R;
        case 601:
            return S | G;
        case 120:
            return S | G | R | bit(kUpload) | bit(kDownload);
        case 7: case 10:
        case 101: case 102: case 103: case 104: case 105: case 106: case 107: case 108: case 109:
        case 110: case 111: case 112: case 113: case 115: case 116: case 123: case 124: case 125:
        case 127: case 128: case 129: case 130: case 134: case 135: case 139: case 141: case 142:
        case 145: case 146: case 149: case 155: case 156: case 163: case 165: case 166: case 303:
        case 304: case 305: case 306: case 507: case 902: case 904: case 908: case 910: case 912:
        case 913: case 916: case 917: case 1001:
            return kSGR;
        default:
            return 0;
    }
}

uint32_t ip(int a, int b, int c, int d) { return uint32_t(a) << 24 | uint32_t(b) << 16 | uint32_t(c) << 8 | uint32_t(d); }

struct Network {
    const char* name;
    const char* detail;
    uint32_t signal;
    bool secured;
};
constexpr Network kNetworks[] = {
    {"office", "WPA2-PSK 00:11:22:33:44:01 channel 6", 78, true},
    {"guest", "open 00:11:22:33:44:02 channel 11", 64, false},
    {"warehouse", "WPA2-PSK 00:11:22:33:44:03 channel 1", 41, true},
    {"lab-5g", "WPA3-SAE 00:11:22:33:44:04 channel 36", 55, true},
    {"printer-direct", "open 00:11:22:33:44:05 channel 6", 23, false},
};

bool ends_with(std::string s, const char* suffix) {
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    const size_t n = std::strlen(suffix);
    return s.size() >= n && s.compare(s.size() - n, n, suffix) == 0;
}

}  // namespace

Terminal::Terminal(Store& store, uint32_t prefill_logs) : store_(store), journal_(store), prefill_logs_(prefill_logs) {}
Terminal::~Terminal() = default;

uint32_t Terminal::now() const {
    const int64_t t = std::chrono::duration_cast<std::chrono::seconds>(
                          std::chrono::system_clock::now().time_since_epoch())
                          .count();
    return uint32_t(t + clock_offset_);
}

Reply Terminal::handle(Session& session, const Request& rq) {
    std::lock_guard<std::mutex> lock(mutex_);
    const uint8_t types = types_of(rq.command);
    if (types == 0) return Reply::of(KVN_E_COMMAND_NOT_FOUND);
    if ((rq.word & 0xFFFFu) != 2 || rq.type > 7 || (types & bit(rq.type)) == 0) {
        return Reply::of(KVN_E_INVALID_REQUEST_TYPE);
    }
    try {
        switch (rq.command) {
            case 1: case 3: case 4: case 5: case 6: case 13: case 14: case 15: case 16: case 505: case 508:
                return biometrics(rq);
            case 7: case 8:
                return users(rq);
            case 10: case 11: case 12:
                return user_groups(rq);
            case 115:
                return dac(rq);
            case 126:
                return clock(rq);
            case 201:
                return device_info(rq);
            case 202:
                return device_status(rq);
            case 121: case 122: case 131: case 140: case 205: case 301: case 302: case 801: case 802: case 803:
                return maintenance(session, rq);
            case 136: case 137: case 138:
                return wifi(rq);
            case 133: case 1003: case 1004: case 1005: case 1006: case 1007:
                return certificates(rq);
            case 1002:
                return vpn(rq);
            case 147:
                return voip(rq);
            case 105: case 106: case 119:
                return schedules(rq);
            case 401: case 402: case 403: case 404: case 405: case 406: case 407: case 408: case 409: case 410:
            case 411: case 412: case 413:
                return logs(rq);
            case 120:
                return files(session, rq);
            case 601:
                return firmware(rq);
            case 703: case 901: case 903: case 904: case 905: case 906: case 907: case 909: case 910: case 911:
            case 917:
                return cards(rq);
            case 701: case 702: case 704:
                return wiegand(rq);
            default:
                break;
        }
        // Plain settings groups, with the rules some of them add.
        if (rq.type == kSet) {
            const Group* g = group(rq.command);
            std::vector<Node> in;
            if (int32_t rc = parse(g->fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
            if (int32_t rc = check(rq.command, in); rc != 0) return Reply::of(rc);
        }
        if (rq.command == 101 && rq.type == kSet) {
            // Address mode 1 takes addresses from the network: the set carries no
            // addresses, and those held stay as they are.
            std::vector<Node> in;
            parse(group(101)->fields, rq.data, rq.size, &in);
            std::vector<Node>& nodes = stored(101);
            for (Node& n : in) {
                if (Node* old = find(nodes, n.tag)) *old = std::move(n);
                else nodes.push_back(std::move(n));
            }
            save_group(101);
            return Reply{};
        }
        if ((rq.command == 305 || rq.command == 306) && rq.type == kSet) {
            // Clearing and re-enabling an alarm shares the command with its
            // settings and is told apart by its tag (9 fire alarm, 1 tamper).
            const uint8_t action = rq.command == 305 ? 9 : 1;
            std::vector<Node> in;
            parse(group(rq.command)->fields, rq.data, rq.size, &in);
            bool is_action = false;
            for (const Node& n : in) is_action |= n.tag == action;
            if (is_action) {
                if (in.size() != 1 || in[0].u32() != 1) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
                log_event(kEventAlarmClear, 0, "", 0, 0, rq.command == 305 ? "Fire alarm cleared" : "Tamper alarm cleared");
                return Reply{};
            }
        }
        Reply r = settings(rq);
        if (rq.command == 101 && rq.type == kGet) {
            Out o;
            o.fixed(8, "00:1A:2B:3C:4D:5E", 17);
            r.payload.insert(r.payload.end(), o.bytes.begin(), o.bytes.end());
        }
        if (rq.command == 110 && rq.type == kSet) {
            // Entries set one at a time carry their value under tag 8; the terminal
            // keeps it where every other form reads it, tag 7.
            for (Node& e : stored(110)) {
                for (Node& k : e.kids) {
                    if (k.tag != 8) continue;
                    Node* seven = nullptr;
                    for (Node& k7 : e.kids)
                        if (k7.tag == 7) seven = &k7;
                    if (seven) seven->value = k.value;
                    else k.tag = 7;
                }
                e.kids.erase(std::remove_if(e.kids.begin(), e.kids.end(), [](const Node& k) { return k.tag == 8; }),
                             e.kids.end());
            }
            save_group(110);
        }
        return r;
    } catch (const std::bad_alloc&) {
        return Reply::of(KVN_E_FAILED_TO_ALLOCATE_MEMORY);
    } catch (const std::exception&) {
        return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    }
}

// Rules a terminal applies to a settings write beyond the shape of its elements.
int32_t Terminal::check(uint32_t cmd, const std::vector<Node>& in) const {
    auto key_range = [&](uint8_t box, uint8_t key, uint32_t lo, uint32_t hi) -> int32_t {
        for (const Node& n : in) {
            if (n.tag != box) continue;
            for (const Node& k : n.kids)
                if (k.tag == key && (k.u32() < lo || k.u32() > hi)) return KVN_E_INVALID_VALUE_RECEIVED;
        }
        return 0;
    };
    switch (cmd) {
        case 101:
            for (const Node& n : in) {
                if (n.tag == 1 && n.u32() > 1) return KVN_E_INVALID_NETWORK_MODE;
                if (n.tag == 2 && (n.u32() == 0 || n.u32() == 0xFFFFFFFFu || (n.u32() >> 24) == 127))
                    return KVN_E_INVALID_IPADDRESS;
                if (n.tag == 3 && (n.u32() == 0 || n.u32() > 65535)) return KVN_E_INVALID_DEVICE_COMMUNICATION_PORT;
                if (n.tag == 4 && n.u32() == 0) return KVN_E_INVALID_NETMASK_ADDRESS;
            }
            return 0;
        case 104:
            return key_range(1, 3, 1, 17);
        case 110: case 111:
            return key_range(1, 3, 1, 18);
        case 139:
            return key_range(3, 4, 0, 2);
        case 107: case 155:
            return key_range(2, 3, 0, 6);
        case 109:
            return key_range(1, 3, 1, 16);
        case 145: {
            std::vector<std::string> ids;
            int defaults = 0;
            for (const Node& c : in) {
                for (const Node& k : c.kids) {
                    if (k.tag == 2 && !k.value.empty()) {
                        if (std::find(ids.begin(), ids.end(), k.text()) != ids.end()) return KVN_E_VOIPID_MUST_BE_UNIQUE;
                        ids.push_back(k.text());
                    }
                    if (k.tag == 4 && k.u32() == 1) ++defaults;
                }
            }
            return defaults > 1 ? KVN_E_ONLY_ONE_CONTACT_MUST_BE_DEFAULT : 0;
        }
        case 146: {
            std::vector<uint32_t> ids;
            for (const Node& c : in) {
                for (const Node& k : c.kids) {
                    if (k.tag != 17 || k.u32() == 0) continue;
                    if (std::find(ids.begin(), ids.end(), k.u32()) != ids.end()) return KVN_E_JOBCODE_ID_MUST_BE_UNIQUE;
                    ids.push_back(k.u32());
                }
            }
            return 0;
        }
        default:
            return 0;
    }
}

// Door and DAC (115): the settings record, and the door actions that share the
// command. The door open time (tag 8) is set by the open action and read back
// with the record.
Reply Terminal::dac(const Request& rq) {
    if (rq.type != kSet) return settings(rq);
    std::vector<Node> in;
    if (int32_t rc = parse(group(115)->fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
    const Node* open_time = nullptr;
    const Node* option = nullptr;
    bool clear_alarm = false;
    for (const Node& n : in) {
        if (n.tag == 8) open_time = &n;
        if (n.tag == 7) option = &n;
        if (n.tag == 15) clear_alarm = true;
    }
    if (clear_alarm) {
        if (in.size() != 1 || in[0].u32() != 1) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
        log_event(kEventAlarmClear, 0, "", 0, 0, "Door forced-open alarm cleared");
        return Reply{};
    }
    if (open_time != nullptr || option != nullptr) {
        if (open_time == nullptr || option == nullptr || in.size() != 2) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
        const uint32_t t = open_time->u32();
        set_value(115, 8, t);
        save_group(115);
        if (t == 0) log_event(kEventDoorClose, 0, "", 0, 0, "Door closed");
        else log_event(kEventDoorOpen, 0, "", 0, 0, "Door opened for " + std::to_string(t) + " s");
        return Reply{};
    }
    std::vector<Node>& nodes = stored(115);
    for (Node& n : in) {
        if (Node* old = find(nodes, n.tag)) *old = std::move(n);
        else nodes.push_back(std::move(n));
    }
    save_group(115);
    return Reply{};
}

// Date and time (126): tag 1 is the terminal's clock in seconds since 1970;
// setting it moves the clock, which then keeps running.
Reply Terminal::clock(const Request& rq) {
    if (rq.type == kSet) {
        static const std::vector<Field> fields = {Field{1, Kind::u32}, Field{2, Kind::u32}, Field{5, Kind::text, 1024},
                                                  Field{6, Kind::u32}};
        std::vector<Node> in;
        if (int32_t rc = parse(fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
        std::vector<Node>& nodes = stored(126);
        for (Node& n : in) {
            if (n.tag == 1) {
                clock_offset_ += int64_t(n.u32()) - int64_t(now());
                continue;
            }
            if (Node* old = find(nodes, n.tag)) *old = std::move(n);
            else nodes.push_back(std::move(n));
        }
        save_group(126);
        save_misc();
        return Reply{};
    }
    Out o;
    o.u32(1, now());
    Reply r;
    r.payload = std::move(o.bytes);
    Bytes rest = answer_group(126);
    r.payload.insert(r.payload.end(), rest.begin(), rest.end());
    return r;
}

Reply Terminal::device_info(const Request&) {
    size_t templates = 0;
    for (const auto& [id, u] : users_) templates += u.templates.size();
    uint32_t wifi_ip = 0, wifi_mask = 0, wifi_gw = 0, wifi_dns = 0;
    for (const Node& n : wifi_link_) {
        if (n.tag == 9) wifi_ip = n.u32();
        if (n.tag == 10) wifi_mask = n.u32();
        if (n.tag == 11) wifi_gw = n.u32();
        if (n.tag == 12) wifi_dns = n.u32();
    }
    const bool vpn_up = value(1001, 17) != 0;
    Out o;
    o.u32(1, 1);
    o.text(2, "kvn-sim");
    o.text(3, "1.2.21.0");
    o.text(4, "SIM0000000001");
    o.u32(5, 10000);
    o.u32(6, uint32_t(users_.size()));
    o.u32(7, uint32_t(journal_.size()));
    o.u32(8, uint32_t(templates));
    o.u32(9, value(101, 2));
    o.u32(10, value(101, 4));
    o.u32(11, value(101, 5));
    o.u32(12, value(101, 6));
    o.text(13, "00:1A:2B:3C:4D:5E");
    o.text(14, "2026-01-15 10:00");
    o.text(15, "00:1A:2B:3C:4D:5F");
    o.u32(16, Journal::kLimit);
    o.u32(17, 20);
    o.u32(18, 100000);
    o.u32(19, uint32_t(user_groups_.size()));
    o.u32(20, value(101, 3));
    o.text(21, "kvn-sim");
    o.u32(22, wifi_ip);
    o.u32(23, wifi_mask);
    o.u32(24, wifi_gw);
    o.u32(25, wifi_dns);
    o.u8(26, 1);
    o.u8(27, value(135, 2, 0) ? 1 : 0);
    o.u8(28, vpn_up ? 1 : 0);
    o.u32(29, vpn_up ? ip(10, 8, 0, 2) : 0);
    o.u32(30, 0);
    o.u32(31, uint32_t(formats_.size()));
    o.u32(32, uint32_t(revoked_.size()));
    o.u32(35, 0);
    const uint8_t features[16] = {0xFF, 0x3F, 0x01, 0x00, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x01};
    o.element(36, features, sizeof features);
    o.text(37, "kvnsim terminal");
    o.u32(38, 0);
    o.u32(39, 0);
    Reply r;
    r.payload = std::move(o.bytes);
    return r;
}

Reply Terminal::device_status(const Request&) {
    Out o;
    o.u32(1, 0);
    o.text(2, "Ready");
    Reply r;
    r.payload = std::move(o.bytes);
    return r;
}

// Reboots, factory default, sensor test and reset, audio and images.
Reply Terminal::maintenance(Session&, const Request& rq) {
    switch (rq.command) {
        case 121: {  // forced reboot: the terminal goes away without answering
            Reply r;
            r.silent = true;
            return r;
        }
        case 131: {  // graceful reboot: answers, then the connection drops
            Reply r;
            r.close_after = true;
            return r;
        }
        case 122: {  // factory default: every setting, user, list and the journal
            for (auto& [id, nodes] : groups_) store_.remove("settings/" + std::to_string(id));
            groups_.clear();
            for (auto& [id, u] : users_) store_.remove("users/" + hex(id));
            users_.clear();
            user_groups_.clear();
            formats_.clear();
            revoked_.clear();
            user_certs_.clear();
            ca_certs_.clear();
            wifi_link_.clear();
            clock_offset_ = 0;
            journal_.clear();
            save_user_groups();
            save_misc();
            return Reply{};
        }
        case 302:
            return Reply{};
        case 301: {
            static const std::vector<Field> fields = {Field{7, Kind::u32}};
            std::vector<Node> in;
            if (int32_t rc = parse(fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
            // A 320 x 308 grey image with a ridge pattern.
            Bytes img(320 * 308);
            for (size_t y = 0; y < 308; ++y)
                for (size_t x = 0; x < 320; ++x) img[y * 320 + x] = uint8_t(((x + y) / 6) % 2 ? 0x30 : 0xD0);
            Out o;
            o.element(6, img);
            Reply r;
            r.payload = std::move(o.bytes);
            return r;
        }
        case 801: {
            static const std::vector<Field> fields = {Field{4, Kind::text, 51}, Field{6, Kind::text, 256},
                                                      Field{8, Kind::u32}};
            std::vector<Node> in;
            if (int32_t rc = parse(fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
            return Reply{};
        }
        case 802:  // the stop request carries a buffer the terminal does not read
            return Reply{};
        case 803:
            return media_list(11, 12, {{"beep.wav", "Short beep"}, {"granted.wav", "Access granted"},
                                       {"denied.wav", "Access denied"}}, 5);
        case 140:
            return media_list(1, 2, {{"logo.png", "Built in"}, {"welcome.png", "Built in"}}, 4);
        case 205: {
            static const std::vector<Field> fields = {Field{3, Kind::text, 255}};
            std::vector<Node> in;
            if (int32_t rc = parse(fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
            if (in.empty()) return Reply::of(KVN_E_INVALID_FILE_NAME);
            const std::string name = in[0].text();
            if (name == "logo.png" || name == "welcome.png" || file(4, name) != nullptr) return Reply{};
            return Reply::of(KVN_E_INVALID_FILE_NAME);
        }
        default:
            return Reply::of(KVN_E_COMMAND_NOT_FOUND);
    }
}

// Wi-Fi: a fixed neighbourhood of networks to scan and join.
Reply Terminal::wifi(const Request& rq) {
    const bool enabled = value(135, 2, 1) != 0;
    if (rq.command == 136) {
        Out o;
        for (const Network& n : kNetworks) {
            const size_t at = o.open();
            o.text(3, n.name);
            o.text(4, n.detail);
            o.u32(5, n.signal);
            o.close(at, 1);
        }
        // The network joined; tag 15 is one byte in the answers (1 while joined),
        // not the address the connect request repeats under it.
        for (const Node& n : wifi_link_) {
            if (n.tag == 3) o.element(6, n.value);
            else if (n.tag == 8 || (n.tag >= 9 && n.tag <= 13)) o.node(n);
        }
        if (!wifi_link_.empty()) o.u8(15, 1);
        Reply r;
        r.payload = std::move(o.bytes);
        return r;
    }
    if (rq.command == 138) {
        Out o;
        o.u8(2, wifi_link_.empty() ? 0 : 1);
        for (const Node& n : wifi_link_) {
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
        if (!wifi_link_.empty()) o.u8(15, 1);
        Reply r;
        r.payload = std::move(o.bytes);
        return r;
    }
    if (rq.type == kReset) {
        static const std::vector<Field> fields = {Field{3, Kind::text, 32}};
        std::vector<Node> in;
        if (int32_t rc = parse(fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
        wifi_link_.clear();
        save_misc();
        return Reply{};
    }
    static const std::vector<Field> fields = {Field{3, Kind::text, 32}, Field{7, Kind::text, 65},
                                              Field{8, Kind::u8},       Field{9, Kind::u32},
                                              Field{10, Kind::u32},     Field{11, Kind::u32},
                                              Field{12, Kind::u32},     Field{13, Kind::u32},
                                              Field{15, Kind::u32}};
    std::vector<Node> in;
    if (int32_t rc = parse(fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
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
    wifi_link_ = in;
    if (source != 0) {
        // Addresses from the network.
        const uint32_t a[] = {ip(192, 168, 20, 31), ip(255, 255, 255, 0), ip(192, 168, 20, 1), ip(192, 168, 20, 1),
                              ip(8, 8, 8, 8)};
        for (uint8_t t = 9; t <= 13; ++t) {
            Node n{t, Bytes(4), {}};
            put_le32(n.value.data(), a[t - 9]);
            wifi_link_.push_back(n);
        }
        Node n15{15, Bytes(4), {}};
        put_le32(n15.value.data(), a[4]);
        wifi_link_.push_back(n15);
    }
    save_misc();
    return Reply{};
}

// Certificates: files uploaded with file type 6 are installed into the user
// (.pfx, .p12) or CA (.crt) store. The lists answer as many names as fit the
// reader's 1024-byte buffer.
Reply Terminal::certificates(const Request& rq) {
    Out o;
    auto add_name = [&](uint8_t tag, const std::string& n) {
        if (o.bytes.size() + 2 + std::min<size_t>(n.size(), 50) < 1024) o.text(tag, n.substr(0, 50));
    };
    switch (rq.command) {
        case 133:
            for (const auto& n : user_certs_) add_name(4, n);
            break;
        case 1003:
            for (const auto& n : user_certs_) add_name(14, n);
            break;
        case 1004:
            for (const auto& n : ca_certs_) add_name(15, n);
            break;
        case 1007:
            for (const auto& [key, data] : files_)
                if (key.first == 6) add_name(21, key.second);
            break;
        case 1005: {
            static const std::vector<Field> fields = {Field{21, Kind::text, 255}, Field{22, Kind::text, 1000}};
            std::vector<Node> in;
            if (int32_t rc = parse(fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
            std::string name, secret;
            for (const Node& n : in) (n.tag == 21 ? name : secret) = n.text();
            const Blob* f = file(6, name);
            if (f == nullptr) return Reply::of(KVN_E_CERTIFICATE_DOES_NOT_EXIST_ON_DEVICE);
            const bool ca = ends_with(name, ".crt");
            if (!ca && !ends_with(name, ".pfx") && !ends_with(name, ".p12")) return Reply::of(KVN_E_VPN_CERTIFICATE_BAD_FORMAT);
            if (f->empty()) return Reply::of(KVN_E_CERTIFICATE_IS_NOT_OF_VALID_PKCS_FORMAT);
            if (!ca && secret.empty()) return Reply::of(KVN_E_INVALID_VPN_CERTIFICATE_OR_PASSWORD);
            auto& list = ca ? ca_certs_ : user_certs_;
            if (std::find(list.begin(), list.end(), name) == list.end()) list.push_back(name);
            save_misc();
            return Reply{};
        }
        case 1006: {
            static const std::vector<Field> fields = {Field{14, Kind::text, 255}, Field{15, Kind::text, 255}};
            std::vector<Node> in;
            if (int32_t rc = parse(fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
            if (in.size() != 1) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
            auto& list = in[0].tag == 14 ? user_certs_ : ca_certs_;
            const std::string name = in[0].text();
            auto it = std::find(list.begin(), list.end(), name);
            if (it == list.end()) return Reply::of(KVN_E_CERTIFICATE_DOES_NOT_EXIST_ON_DEVICE);
            for (const Node& n : stored(1001))
                if (n.text() == name) return Reply::of(KVN_E_VPN_CERTIFICATE_IN_USE);
            list.erase(it);
            save_misc();
            return Reply{};
        }
        default:
            break;
    }
    Reply r;
    r.payload = std::move(o.bytes);
    return r;
}

// VPN status: a profile whose value 17 is non-zero is up, with address 10.8.0.2.
Reply Terminal::vpn(const Request&) {
    const bool up = value(1001, 17) != 0;
    Out o;
    o.u32(28, up ? 1 : 0);
    o.u32(29, up ? ip(10, 8, 0, 2) : 0);
    Reply r;
    r.payload = std::move(o.bytes);
    return r;
}

// The default VoIP contact: the one whose value 4 is 1.
Reply Terminal::voip(const Request&) {
    Reply r;
    for (const Node& c : stored(145)) {
        bool is_default = false;
        for (const Node& k : c.kids)
            if (k.tag == 4 && k.u32() == 1) is_default = true;
        if (!is_default) continue;
        Out o;
        for (const Node& k : c.kids)
            if (k.tag == 2 || k.tag == 3) o.node(k);
        r.payload = std::move(o.bytes);
        break;
    }
    return r;
}

// Access and holiday schedules: resets that name one schedule, and the list
// of access schedule names.
Reply Terminal::schedules(const Request& rq) {
    if (rq.command == 119) {
        Out o;
        for (const Node& s : stored(105)) {
            if (s.tag != 3) continue;
            const size_t at = o.open();
            for (const Node& k : s.kids)
                if (k.tag == 4) o.node(Node{2, k.value, {}});
            for (const Node& k : s.kids)
                if (k.tag == 6) o.node(Node{3, k.value, {}});
            o.close(at, 1);
        }
        Reply r;
        r.payload = std::move(o.bytes);
        return r;
    }
    const uint8_t box = rq.command == 105 ? 3 : 1;
    const uint8_t key = rq.command == 105 ? 4 : 2;
    if (rq.type == kReset && rq.size != 0) {
        std::vector<Elem> in;
        if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
        if (in.size() != 1 || in[0].tag != key) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
        if (in[0].length != 4) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
        const uint32_t index = in[0].u32();
        if (index >= 64) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
        auto& nodes = stored(rq.command);
        nodes.erase(std::remove_if(nodes.begin(), nodes.end(),
                                   [&](const Node& n) {
                                       if (n.tag != box) return false;
                                       for (const Node& k : n.kids)
                                           if (k.tag == key && k.u32() == index) return true;
                                       return false;
                                   }),
                    nodes.end());
        save_group(rq.command);
        return Reply{};
    }
    if (rq.type == kSet) {
        std::vector<Node> in;
        if (int32_t rc = parse(group(rq.command)->fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
        for (const Node& n : in) {
            if (n.tag != box) continue;
            for (const Node& k : n.kids) {
                if (k.tag == key && k.u32() >= 64) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
                const uint8_t inner_box = rq.command == 105 ? 8 : 5, inner_key = rq.command == 105 ? 9 : 6;
                const uint32_t limit = rq.command == 105 ? 7 : 50;
                if (k.tag != inner_box) continue;
                for (const Node& kk : k.kids)
                    if (kk.tag == inner_key && kk.u32() >= limit) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
            }
        }
    }
    return settings(rq);
}

Reply Terminal::media_list(uint8_t name_tag, uint8_t text_tag,
                           std::initializer_list<std::pair<const char*, const char*>> builtin,
                           uint32_t file_type) const {
    Out o;
    for (const auto& [name, text] : builtin) {
        o.text(name_tag, name);
        o.text(text_tag, text);
    }
    for (const auto& [key, data] : files_)
        if (key.first == file_type) {
            o.text(name_tag, key.second.substr(0, 50));
            o.text(text_tag, "Uploaded");
        }
    Reply r;
    r.payload = std::move(o.bytes);
    return r;
}

}  // namespace kvnsim
