// Transaction logs: counts, reads by state, date and criteria, marks, delete-all.
#include <algorithm>

#include "kvnsdk2.h"
#include "terminal.h"

namespace kvnsim {
namespace {

// One answer fills at most this much (the reader's buffer keeps one byte spare)
// and at most 255 entries (the reader counts them in one byte).
constexpr size_t kAnswerLimit = 20479;
constexpr size_t kEntryLimit = 255;

struct Criteria {
    uint8_t limit = 0;      // tag 2: most entries to return, 0 as many as fit
    uint8_t newest = 0;     // tag 3: 1 reads from the newest entry backwards
    uint32_t from = 0;      // tag 4: first time (date reads: first date, YYYYMMDD)
    uint32_t to = 0;        // tag 5: last time (date reads: last date)
    uint32_t event = 0;     // tag 11
    std::string user;       // tag 12
    std::string text;       // tag 13
};

bool matches(const LogEntry& e, const Criteria& c, bool by_date) {
    if (by_date) {
        const uint32_t last = c.to != 0 ? c.to : c.from;
        if (c.from != 0 && (e.date < c.from || e.date > last)) return false;
    } else {
        if (c.from != 0 && e.time < c.from) return false;
        if (c.to != 0 && e.time > c.to) return false;
    }
    if (c.event != 0 && e.event != c.event) return false;
    if (!c.user.empty() && e.user != c.user) return false;
    if (!c.text.empty() && e.text.find(c.text) == std::string::npos) return false;
    return true;
}

void encode_entry(Out& o, const LogEntry& e) {
    const size_t at = o.open();
    o.u32(7, e.id);
    o.u32(8, e.time);
    o.u32(9, e.event);
    o.u32(10, e.result);
    o.u32(11, e.door);
    o.u32(21, e.score);
    if (!e.user.empty()) o.text(12, e.user);
    if (!e.text.empty()) o.text(13, e.text);
    if (!e.device.empty()) o.text(23, e.device);
    o.u8(14, e.method);
    o.u8(15, e.finger);
    o.u32(16, e.job);
    o.u8(17, e.read);
    o.u8(18, e.online);
    o.u8(19, e.direction);
    o.u32(20, e.date);
    o.close(at, 1);
}

}  // namespace

Reply Terminal::logs(const Request& rq) {
    auto count_answer = [](size_t n) {
        Out o;
        o.u32(6, uint32_t(n));
        Reply r;
        r.payload = std::move(o.bytes);
        return r;
    };
    switch (rq.command) {
        case 405:
            return count_answer(journal_.size());
        case 406:
            return count_answer(journal_.size() - journal_.read_count());
        case 407:
            return count_answer(journal_.read_count());
        case 413:  // the request carries a buffer the terminal does not read
            journal_.clear();
            return Reply{};
        case 409:
        case 410: {
            std::vector<Elem> in;
            if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
            if (in.empty()) return Reply::of(KVN_E_PAYLOAD_NOT_RECEIVED);
            if (rq.command == 410 && in.size() != 1) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
            std::vector<size_t> at;
            for (const Elem& e : in) {
                if (e.tag != 7) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
                if (e.length != 4) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                const int64_t pos = journal_.find(e.u32());
                if (pos < 0) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
                at.push_back(size_t(pos));
            }
            for (size_t pos : at) journal_.set_flag(pos, rq.command == 409 ? Journal::kRead : Journal::kOnline);
            return Reply{};
        }
        default:
            break;
    }
    std::vector<Elem> in;
    if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    const bool is_count = rq.command == 408 || rq.command == 411;
    Criteria c;
    for (const Elem& e : in) {
        switch (e.tag) {
            case 2:
            case 3:
                if (is_count) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
                if (e.length != 1) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                (e.tag == 2 ? c.limit : c.newest) = e.u8();
                break;
            case 4:
            case 5:
            case 11:
                if (e.length != 4) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                (e.tag == 4 ? c.from : e.tag == 5 ? c.to : c.event) = e.u32();
                break;
            case 12:
            case 13:
                if (e.length > (e.tag == 12 ? 64u : 51u)) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                (e.tag == 12 ? c.user : c.text) = e.text();
                break;
            default:
                return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
        }
    }
    const bool by_date = rq.command == 404 || rq.command == 408;
    const size_t n = journal_.size();
    if (is_count) {
        size_t count = 0;
        for (size_t i = 0; i < n; ++i)
            if (matches(journal_.at(i), c, by_date)) ++count;
        return count_answer(count);
    }
    const size_t limit = c.limit != 0 ? c.limit : kEntryLimit;
    Out o;
    size_t taken = 0;
    for (size_t k = 0; k < n && taken < limit; ++k) {
        const size_t i = c.newest ? n - 1 - k : k;
        const uint8_t f = journal_.flags(i);
        if (rq.command == 402 && (f & Journal::kRead)) continue;
        if (rq.command == 403 && !(f & Journal::kRead)) continue;
        const LogEntry e = journal_.at(i);
        if (!matches(e, c, by_date)) continue;
        const size_t before = o.bytes.size();
        encode_entry(o, e);
        if (o.bytes.size() > kAnswerLimit) {
            o.bytes.resize(before);
            break;
        }
        ++taken;
    }
    Reply r;
    r.payload = std::move(o.bytes);
    return r;
}

}  // namespace kvnsim
