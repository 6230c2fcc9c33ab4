// Transaction logs: counts, reads by state, date and criteria, marks, delete-all.
#include <algorithm>

#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::logs {
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

enum class Which { all, unread, read };

Reply count_answer(size_t n) {
    Out o;
    o.u32(6, uint32_t(n));
    return Reply::with(std::move(o));
}

// Reads the criteria of a read or count request; counts take no tags 2 and 3.
int32_t criteria(Call& c, bool is_count, Criteria* out) {
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return KVN_E_INVALID_DATA_RECEIVED;
    Criteria& cr = *out;
    for (const Elem& e : in) {
        switch (e.tag) {
            case 2:
            case 3:
                if (is_count) return KVN_E_INVALID_TAG_RECEIVED;
                if (e.length != 1) return KVN_E_INVALID_LENGTH_RECEIVED;
                (e.tag == 2 ? cr.limit : cr.newest) = e.u8();
                break;
            case 4:
            case 5:
            case 11:
                if (e.length != 4) return KVN_E_INVALID_LENGTH_RECEIVED;
                (e.tag == 4 ? cr.from : e.tag == 5 ? cr.to : cr.event) = e.u32();
                break;
            case 12:
            case 13:
                if (e.length > (e.tag == 12 ? 64u : 51u)) return KVN_E_INVALID_LENGTH_RECEIVED;
                (e.tag == 12 ? cr.user : cr.text) = e.text();
                break;
            default:
                return KVN_E_INVALID_TAG_RECEIVED;
        }
    }
    return 0;
}

// The entries that match, oldest first (newest first with tag 3 = 1), as many
// as tag 2 asks or as fit one answer.
Reply read(Call& c, Which which, bool by_date) {
    Criteria cr;
    if (int32_t rc = criteria(c, false, &cr); rc != 0) return Reply::of(rc);
    const Journal& journal = c.st.journal;
    const size_t n = journal.size();
    const size_t limit = cr.limit != 0 ? cr.limit : kEntryLimit;
    Out o;
    size_t taken = 0;
    for (size_t k = 0; k < n && taken < limit; ++k) {
        const size_t i = cr.newest ? n - 1 - k : k;
        const uint8_t f = journal.flags(i);
        if (which == Which::unread && (f & Journal::kRead)) continue;
        if (which == Which::read && !(f & Journal::kRead)) continue;
        const LogEntry e = journal.at(i);
        if (!matches(e, cr, by_date)) continue;
        const size_t before = o.bytes.size();
        encode_entry(o, e);
        if (o.bytes.size() > kAnswerLimit) {
            o.bytes.resize(before);
            break;
        }
        ++taken;
    }
    return Reply::with(std::move(o));
}

Reply count(Call& c, bool by_date) {
    Criteria cr;
    if (int32_t rc = criteria(c, true, &cr); rc != 0) return Reply::of(rc);
    size_t count = 0;
    for (size_t i = 0; i < c.st.journal.size(); ++i)
        if (matches(c.st.journal.at(i), cr, by_date)) ++count;
    return count_answer(count);
}

// Sets a flag on the listed entries (tag 7 each), all or none: one unknown id
// refuses the list whole.
Reply mark(Call& c, uint8_t flag, bool single) {
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    if (in.empty()) return Reply::of(KVN_E_PAYLOAD_NOT_RECEIVED);
    if (single && in.size() != 1) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    std::vector<size_t> at;
    for (const Elem& e : in) {
        if (e.tag != 7) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
        if (e.length != 4) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
        const int64_t pos = c.st.journal.find(e.u32());
        if (pos < 0) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
        at.push_back(size_t(pos));
    }
    for (size_t pos : at) c.st.journal.set_flag(pos, flag);
    return Reply{};
}

}  // namespace

Reply read_all(Call& c) { return read(c, Which::all, false); }
Reply read_unread(Call& c) { return read(c, Which::unread, false); }
Reply read_read(Call& c) { return read(c, Which::read, false); }
Reply read_for_date(Call& c) { return read(c, Which::all, true); }
Reply read_for_criteria(Call& c) { return read(c, Which::all, false); }

Reply count_total(Call& c) { return count_answer(c.st.journal.size()); }
Reply count_unread(Call& c) { return count_answer(c.st.journal.size() - c.st.journal.read_count()); }
Reply count_read(Call& c) { return count_answer(c.st.journal.read_count()); }
Reply count_for_date(Call& c) { return count(c, true); }
Reply count_for_criteria(Call& c) { return count(c, false); }

Reply mark_read(Call& c) { return mark(c, Journal::kRead, false); }
Reply mark_online(Call& c) { return mark(c, Journal::kOnline, true); }

// The request carries a buffer the terminal does not read.
Reply delete_all(Call& c) {
    c.st.journal.clear();
    return Reply{};
}

}  // namespace kvnsim::logs
