// Cards: the card at the reader, card settings with rules of their own, the
// smart-card operations and the revocation list.
#include <algorithm>

#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::cards {
namespace {

constexpr size_t kCardCapacity = 4096;  // bytes of data a simulated card takes
constexpr size_t kAnswerLimit = 20479;

// A card identifier: the serial, zero-padded to 64 bytes.
Bytes identifier(const Bytes& serial) {
    Bytes id(serial.begin(), serial.begin() + long(std::min<size_t>(serial.size(), 64)));
    id.resize(64, 0);
    return id;
}

bool is_revoked(const State& st) {
    return st.card && std::find(st.revoked.begin(), st.revoked.end(), identifier(*st.card)) != st.revoked.end();
}

// The smart-card operations need a card at the reader that is not revoked.
int32_t usable_card(const State& st) {
    if (!st.card) return KVN_E_CARD_NOT_FOUND;
    if (is_revoked(st)) return KVN_E_REVOKED_SMART_CARD;
    return 0;
}

// Reads the presented card: its serial under `serial_tag`, its length under 11 when asked.
Reply read_serial(State& st, uint8_t serial_tag, bool with_length) {
    if (!st.card) return Reply::of(KVN_E_CARD_NOT_FOUND);
    Out o;
    o.element(serial_tag, *st.card);
    if (with_length) o.u32(11, uint32_t(st.card->size()));
    st.log_event(kEventCard, is_revoked(st) ? KVN_E_REVOKED_SMART_CARD : 0, "", 2, 0, "Card read");
    return Reply::with(std::move(o));
}

}  // namespace

const Group kCsn{{U32(1), U32(2)}, {{1, 0}, {2, 0}}, {}};
// The access keys are written, never read back.
const Group kAccessKeys{{EX(6, 16), EX(3, 16), EX(4, 16), EX(16, 16)}, {}, {}};
// The 1K layout (flag 8, blocks 7) and the 4K layout (flag 10, blocks 9).
const Group kMifare{{U8(8), EX(7, 255), U8(10), EX(9, 255)}, {{8, 0}, {10, 0}}, {}};
const Group kDesfire{{U32(13), U8(14), U32(15)}, {{13, 0}, {14, 0}, {15, 0}}, {}};
const Group kKeyFlags{{U32(5), U32(20), U32(19)}, {{5, 0}, {20, 0}, {19, 0}}, {}};
// A HID layout set replaces the group, so a block sent without its flag is forgotten.
const Group kHid{{U8(30), EX(29, 255), U8(32), EX(31, 255), U8(34), EX(33, 8)}, {{30, 0}, {32, 0}, {34, 0}}, {}};
const Group kPreference{{U16(40)}, {{40, 1}}, {}};
// PACS: written under tag 41, read under tag 1.
const Group kPacs{{U32(1)}, {{1, 0}}, {}};
const Group kSrlServer{{U32(1), U32(3), TXT(2, 1024)}, {{1, 0}, {3, 0}}, {}};

Reply serial(Call& c) { return read_serial(c.st, 12, true); }

Reply prox_serial(Call& c) { return read_serial(c.st, 2, false); }

Reply pacs(Call& c) {
    if (c.rq.type != kSet) return settings::plain(c);
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    if (in.size() != 1 || in[0].tag != 41) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
    if (in[0].length != 4) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
    c.st.groups.set_value(c.cmd.id, 1, in[0].u32());
    c.st.groups.save(c.cmd.id);
    return Reply{};
}

// MIFARE layouts set one at a time keep the other one; a reset carrying tag 11 =
// 8 or 24 removes the 1K or 4K layout and clears its flag.
Reply mifare(Call& c) {
    if (c.rq.type == kReset && c.rq.size != 0) {
        std::vector<Elem> in;
        if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
        if (in.size() != 1 || in[0].tag != 11) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
        if (in[0].length != 4) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
        const uint32_t which = in[0].u32();
        if (which != 8 && which != 24) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
        const uint8_t flag = which == 8 ? 8 : 10, layout = which == 8 ? 7 : 9;
        auto& nodes = c.st.groups.nodes(c.cmd.id);
        nodes.erase(std::remove_if(nodes.begin(), nodes.end(), [&](const Node& n) { return n.tag == layout; }), nodes.end());
        if (Node* f = find(nodes, flag)) f->value = Bytes{0};
        c.st.groups.save(c.cmd.id);
        return Reply{};
    }
    if (c.rq.type != kSet) return settings::plain(c);
    std::vector<Node> in;
    if (int32_t rc = settings::parse_set(c, &in); rc != 0) return Reply::of(rc);
    overlay(c.st.groups.nodes(c.cmd.id), std::move(in));
    c.st.groups.save(c.cmd.id);
    return Reply{};
}

// Writes a user record (one tag-1 element whose fields start with a user id) or
// the caller's own bytes (set); a reset empties the card.
Reply write(Call& c) {
    State& st = c.st;
    if (int32_t rc = usable_card(st); rc != 0) return Reply::of(rc);
    if (c.rq.type == kReset) return format(c);
    User u;
    std::vector<Elem> top;
    if (split(c.rq.data, c.rq.size, &top) && top.size() == 1 && top[0].tag == 1 &&
        parse_user(c.rq.data, c.rq.size, &u) == 0) {
        st.card_user = std::move(u);
        return Reply{};
    }
    if (c.rq.size > kCardCapacity) return Reply::of(KVN_E_SMART_CARD_FULL);
    st.card_data.assign(c.rq.data, c.rq.data + c.rq.size);
    return Reply{};
}

Reply secure(Call& c) { return Reply::of(usable_card(c.st)); }

// Formatting empties the card.
Reply format(Call& c) {
    if (int32_t rc = usable_card(c.st); rc != 0) return Reply::of(rc);
    c.st.card_data.clear();
    c.st.card_user.reset();
    return Reply{};
}

// The card's serial (tag 12), its length (tag 11) and the user record on it,
// as its field list under tag 17.
Reply read(Call& c) {
    State& st = c.st;
    if (int32_t rc = usable_card(st); rc != 0) return Reply::of(rc);
    Out o;
    o.element(12, *st.card);
    o.u32(11, uint32_t(st.card->size()));
    if (st.card_user) {
        const Bytes rec = encode_user(*st.card_user);
        std::vector<Elem> outer;
        split(rec, &outer);
        o.element(17, outer[0].value, outer[0].length);
    }
    return Reply::with(std::move(o));
}

// Revokes (set) or unrevokes (reset) a card identifier (tag 12, 64 bytes); a get
// lists identifiers from position tag 27, as many as tag 28 asks (0: all).
Reply revoked(Call& c) {
    State& st = c.st;
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    if (c.rq.type == kGet) {
        uint32_t first = 0, count = 0;
        for (const Elem& e : in) {
            if (e.tag != 27 && e.tag != 28) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
            if (e.length != 1) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
            (e.tag == 27 ? first : count) = e.u8();
        }
        Out o;
        for (size_t i = first; i < st.revoked.size() && (count == 0 || i < size_t(first) + count); ++i) {
            if (o.bytes.size() + 66 > kAnswerLimit) break;
            o.element(12, st.revoked[i]);
        }
        return Reply::with(std::move(o));
    }
    if (in.size() != 1 || in[0].tag != 12) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
    if (in[0].length != 64) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
    const Bytes id = in[0].bytes();
    auto it = std::find(st.revoked.begin(), st.revoked.end(), id);
    if (c.rq.type == kSet) {
        if (it == st.revoked.end()) st.revoked.push_back(id);
    } else {
        if (it == st.revoked.end()) return Reply::of(KVN_E_CARD_NOT_FOUND);
        st.revoked.erase(it);
    }
    st.save_misc();
    return Reply{};
}

Reply revoked_count(Call& c) {
    Out o;
    o.u32(18, uint32_t(c.st.revoked.size()));
    return Reply::with(std::move(o));
}

}  // namespace kvnsim::cards
