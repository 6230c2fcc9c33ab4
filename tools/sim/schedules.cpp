// Schedules: the week schedules (biometric and door-open), holiday schedules
// and named access schedules, resets that remove one schedule, and the list of
// access schedule names.
#include <algorithm>

#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::schedules {
namespace {

// The field of a group's schedules: its keyed container.
const Field* schedule_field(const Group& g) {
    for (const Field& f : g.fields)
        if (f.kind == Kind::box && f.key != 0) return &f;
    return nullptr;
}

}  // namespace

// Seven days (0 to 6), each eight one-byte values.
const Group kWeek{{U32(1), KEYED(2, 3, 0, 6, cat({{U8(3)}, range(U8, 4, 11)}))},
                      {{1, 0}, entries(2, 7, 0, {{4, 0}, {5, 0}, {6, 0}, {7, 0}, {8, 0}, {9, 0}, {10, 0}, {11, 0}})},
                      {}};
// Up to 64 schedules (tag 2) of up to 50 holidays (tag 6).
const Group kHoliday{
    {KEYED(1, 2, 0, 63, {U8(2), U32(3), TXT(4, 52), KEYED(5, 6, 0, 49, cat({{U8(6), U32(16), TXT(7, 51)}, range(U8, 8, 15)}))})},
    {},
    {}};
// Up to 64 named schedules (tag 4), each of seven days (tag 9).
const Group kAccess{
    {U32(1), U8(2), KEYED(3, 4, 0, 63, {U8(4), U32(5), TXT(6, 51), U8(7), KEYED(8, 9, 0, 6, cat({{U8(9)}, range(U8, 10, 17)}))})},
    {{1, 0}, {2, 0}},
    {}};

// Holiday and access schedules: a reset naming one schedule (exactly one
// four-byte element under the schedule's key tag) removes that schedule; any
// other request is the plain pattern, a set merging schedules by their index.
Reply indexed(Call& c) {
    const Field* f = schedule_field(c.group());
    if (c.rq.type != kReset || c.rq.size == 0 || f == nullptr) return settings::plain(c);
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    if (in.size() != 1 || in[0].tag != f->key) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
    if (in[0].length != 4) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
    const uint32_t index = in[0].u32();
    if (index > f->key_max) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
    auto& nodes = c.st.groups.nodes(c.cmd.id);
    nodes.erase(std::remove_if(nodes.begin(), nodes.end(),
                               [&](const Node& n) {
                                   if (n.tag != f->tag) return false;
                                   for (const Node& k : n.kids)
                                       if (k.tag == f->key && k.u32() == index) return true;
                                   return false;
                               }),
                nodes.end());
    c.st.groups.save(c.cmd.id);
    return Reply{};
}

// A tag-1 container per stored access schedule: its index under tag 2, its name under tag 3.
Reply names(Call& c) {
    Out o;
    for (const Node& s : c.st.groups.nodes(Cmd::AccessSchedules)) {
        if (s.tag != 3) continue;
        const size_t at = o.open();
        for (const Node& k : s.kids)
            if (k.tag == 4) o.node(Node{2, k.value, {}});
        for (const Node& k : s.kids)
            if (k.tag == 6) o.node(Node{3, k.value, {}});
        o.close(at, 1);
    }
    return Reply::with(std::move(o));
}

}  // namespace kvnsim::schedules
