// Cards: the card presented to the reader, card settings with their own rules,
// smart-card operations, the revocation list; Wiegand formats.
#include <algorithm>

#include "kvnsdk2.h"
#include "terminal.h"

namespace kvnsim {
namespace {

constexpr size_t kCardCapacity = 4096;  // bytes of data a simulated card takes
constexpr size_t kMaxFormats = 20;
constexpr size_t kAnswerLimit = 20479;

Reply answer(Out&& o) {
    Reply r;
    r.payload = std::move(o.bytes);
    return r;
}

// A card identifier: the serial, zero-padded to 64 bytes.
Bytes identifier(const Bytes& serial) {
    Bytes id(serial.begin(), serial.begin() + long(std::min<size_t>(serial.size(), 64)));
    id.resize(64, 0);
    return id;
}

}  // namespace

void Terminal::present_card(const Bytes& serial) {
    std::lock_guard<std::mutex> lock(mutex_);
    card_ = Bytes(serial.begin(), serial.begin() + long(std::min<size_t>(serial.size(), 64)));
    card_data_.clear();
    card_user_.reset();
}

void Terminal::remove_card() {
    std::lock_guard<std::mutex> lock(mutex_);
    card_.reset();
    card_data_.clear();
    card_user_.reset();
}

Reply Terminal::cards(const Request& rq) {
    const bool revoked = card_ && std::find(revoked_.begin(), revoked_.end(), identifier(*card_)) != revoked_.end();
    switch (rq.command) {
        case 901:
        case 703: {
            if (!card_) return Reply::of(KVN_E_CARD_NOT_FOUND);
            Out o;
            if (rq.command == 703) {
                o.element(2, *card_);
            } else {
                o.element(12, *card_);
                o.u32(11, uint32_t(card_->size()));
            }
            log_event(kEventCard, revoked ? KVN_E_REVOKED_SMART_CARD : 0, "", 2, 0, "Card read");
            return answer(std::move(o));
        }
        case 917: {  // PACS: written under tag 41, read under tag 1
            if (rq.type != kSet) return settings(rq);
            std::vector<Elem> in;
            if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
            if (in.size() != 1 || in[0].tag != 41) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
            if (in[0].length != 4) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
            set_value(917, 1, in[0].u32());
            save_group(917);
            return Reply{};
        }
        case 903:  // access keys are written, never read back
            return settings(rq);
        case 904: {
            if (rq.type == kReset && rq.size != 0) {
                std::vector<Elem> in;
                if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
                if (in.size() != 1 || in[0].tag != 11) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
                if (in[0].length != 4) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                const uint32_t which = in[0].u32();
                if (which != 8 && which != 24) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
                const uint8_t flag = which == 8 ? 8 : 10, layout = which == 8 ? 7 : 9;
                auto& nodes = stored(904);
                nodes.erase(std::remove_if(nodes.begin(), nodes.end(), [&](const Node& n) { return n.tag == layout; }),
                            nodes.end());
                if (Node* f = find(nodes, flag)) f->value = Bytes{0};
                save_group(904);
                return Reply{};
            }
            if (rq.type == kSet) {
                // Layouts set one at a time keep the other one.
                std::vector<Node> in;
                if (int32_t rc = parse(group(904)->fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
                auto& nodes = stored(904);
                for (Node& n : in) {
                    if (Node* old = find(nodes, n.tag)) *old = std::move(n);
                    else nodes.push_back(std::move(n));
                }
                save_group(904);
                return Reply{};
            }
            return settings(rq);
        }
        case 906:
        case 907:
        case 905:
        case 909: {
            if (!card_) return Reply::of(KVN_E_CARD_NOT_FOUND);
            if (revoked) return Reply::of(KVN_E_REVOKED_SMART_CARD);
            if (rq.command == 906) return Reply{};
            if (rq.command == 907 || (rq.command == 905 && rq.type == kReset)) {
                card_data_.clear();
                card_user_.reset();
                return Reply{};
            }
            if (rq.command == 909) {
                Out o;
                o.element(12, *card_);
                o.u32(11, uint32_t(card_->size()));
                if (card_user_) {
                    Bytes rec = encode_user(*card_user_);
                    // The record travels inside tag 17 as its field list.
                    std::vector<Elem> outer;
                    split(rec, &outer);
                    o.element(17, outer[0].value, outer[0].length);
                }
                return answer(std::move(o));
            }
            // 905 set: a user record (one tag-1 element whose fields start with a
            // user id) or the caller's own bytes.
            User u;
            std::vector<Elem> top;
            if (split(rq.data, rq.size, &top) && top.size() == 1 && top[0].tag == 1 &&
                parse_user(rq.data, rq.size, &u) == 0) {
                card_user_ = std::move(u);
                return Reply{};
            }
            if (rq.size > kCardCapacity) return Reply::of(KVN_E_SMART_CARD_FULL);
            card_data_.assign(rq.data, rq.data + rq.size);
            return Reply{};
        }
        case 910: {
            if (rq.type == kGet) {
                std::vector<Elem> in;
                if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
                uint32_t first = 0, count = 0;
                for (const Elem& e : in) {
                    if (e.tag != 27 && e.tag != 28) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
                    if (e.length != 1) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                    (e.tag == 27 ? first : count) = e.u8();
                }
                Out o;
                for (size_t i = first; i < revoked_.size() && (count == 0 || i < size_t(first) + count); ++i) {
                    if (o.bytes.size() + 66 > kAnswerLimit) break;
                    o.element(12, revoked_[i]);
                }
                return answer(std::move(o));
            }
            std::vector<Elem> in;
            if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
            if (in.size() != 1 || in[0].tag != 12) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
            if (in[0].length != 64) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
            const Bytes id = in[0].bytes();
            auto it = std::find(revoked_.begin(), revoked_.end(), id);
            if (rq.type == kSet) {
                if (it == revoked_.end()) revoked_.push_back(id);
            } else {
                if (it == revoked_.end()) return Reply::of(KVN_E_CARD_NOT_FOUND);
                revoked_.erase(it);
            }
            save_misc();
            return Reply{};
        }
        case 911: {
            Out o;
            o.u32(18, uint32_t(revoked_.size()));
            return answer(std::move(o));
        }
        default:
            return Reply::of(KVN_E_COMMAND_NOT_FOUND);
    }
}

// Wiegand formats: upload (701), list (702) and delete (704), at most 20.
Reply Terminal::wiegand(const Request& rq) {
    if (rq.command == 702) {
        // As many formats as fit the reader's 1024-byte buffer.
        Out o;
        for (const auto& [id, f] : formats_) {
            const size_t at = o.open();
            o.u8(3, f.id);
            if (!f.name.empty()) o.text(4, f.name.substr(0, 50));
            o.close(at, 1);
            if (o.bytes.size() >= 1024) {
                o.bytes.resize(at);
                break;
            }
        }
        return answer(std::move(o));
    }
    std::vector<Elem> in;
    if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    if (rq.command == 704) {
        if (in.size() != 1 || in[0].tag != 3) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
        if (in[0].length != 1) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
        if (formats_.erase(in[0].u8()) == 0) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
        save_misc();
        return Reply{};
    }
    int type = -1, id = -1;
    std::string name;
    for (const Elem& e : in) {
        uint32_t want = 64;
        switch (e.tag) {
            case 2: want = 4; type = int(e.u32()); break;
            case 3: want = 1; id = e.u8(); break;
            case 5: want = 1; break;
            case 19: want = 2; break;
            case 4:
                if (e.length > 51) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                name = e.text();
                continue;
            case 6: case 20: case 21: case 22: case 23: case 24: case 25: break;
            default: return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
        }
        if (e.length != want) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
    }
    if (type < 0 || id < 0) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    if (type > 2) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
    const uint8_t fid = uint8_t(id);
    if (!name.empty())
        for (const auto& [other, f] : formats_)
            if (other != fid && f.name == name) return Reply::of(KVN_E_NAME_ALREADY_EXIST);
    if (!formats_.count(fid) && formats_.size() >= kMaxFormats) return Reply::of(KVN_E_MAX_WIEGAND_REACHED);
    formats_[fid] = WiegandFormat{fid, name, Bytes(rq.data, rq.data + rq.size)};
    save_misc();
    return Reply{};
}

}  // namespace kvnsim
