// The plain settings pattern: set stores the group (merging entries where a
// group holds numbered entries), get answers it, reset restores the defaults.
#include "handlers.h"

namespace kvnsim::settings {

int32_t parse_set(Call& c, std::vector<Node>* in) {
    if (int32_t rc = parse(c.group().fields, c.rq.data, c.rq.size, in); rc != 0) return rc;
    return check_keys(c.group().fields, *in);
}

Reply store(Call& c, std::vector<Node>&& in) {
    store_set(c.group().fields, c.st.groups.nodes(c.cmd.id), std::move(in));
    c.st.groups.save(c.cmd.id);
    return Reply{};
}

Reply get(Call& c) {
    Reply r;
    r.payload = c.st.groups.answer(c.cmd.id);
    return r;
}

Reply reset(Call& c) {
    c.st.groups.reset(c.cmd.id);
    return Reply{};
}

Reply plain(Call& c) {
    if (c.rq.type == kGet) return get(c);
    if (c.rq.type == kReset) return reset(c);
    std::vector<Node> in;
    if (int32_t rc = parse_set(c, &in); rc != 0) return Reply::of(rc);
    return store(c, std::move(in));
}

}  // namespace kvnsim::settings
