// User groups (store, page and delete; count; delete all) and the user display
// image setting. A user whose attribute 5 holds a group id belongs to that group.
#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::user_groups {
namespace {

constexpr size_t kMaxGroups = 64;
constexpr uint32_t kPage = 50;  // groups in one answer

bool has_members(const State& st, uint32_t gid) {
    for (const auto& [id, u] : st.users)
        if (const Node* n = u.field(5); n != nullptr && n->u32() == gid) return true;
    return false;
}

// A page of groups: positions start (tag 4) to end (tag 5), in id order.
Reply page(Call& c) {
    State& st = c.st;
    static const std::vector<Field> fields = {U32(4), U32(5)};
    std::vector<Node> in;
    if (int32_t rc = parse(fields, c.rq.data, c.rq.size, &in); rc != 0) return Reply::of(rc);
    uint32_t start = 0, end = 0;
    for (const Node& n : in) (n.tag == 4 ? start : end) = n.u32();
    if (st.user_groups.empty()) return Reply::of(KVN_E_GROUP_DOES_NOT_EXIST);
    if (end < start || start >= st.user_groups.size() || end - start > kPage)
        return Reply::of(KVN_E_OUT_OF_RANGE_GROUP_RETRIEVE_REQUEST);
    Out o;
    uint32_t pos = 0;
    for (const auto& [gid, name] : st.user_groups) {
        if (pos >= start && pos < end) {
            const size_t at = o.open();
            o.u32(2, gid);
            o.text(3, name);
            o.u32(6, uint32_t(st.user_groups.size()));
            o.close(at, 1);
        }
        ++pos;
    }
    return Reply::with(std::move(o));
}

}  // namespace

// The display image value: a get's 1024 zero bytes are not read.
const Group kDisplayImage{{U32(4)}, {{4, 0}}, {}};

Reply group(Call& c) {
    if (c.rq.type == kGet) return page(c);
    State& st = c.st;
    static const std::vector<Field> fields = {U32(2), TXT(3, 51)};
    std::vector<Node> in;
    if (int32_t rc = parse(fields, c.rq.data, c.rq.size, &in); rc != 0) return Reply::of(rc);
    const Node* id = nullptr;
    std::string name;
    for (const Node& n : in) {
        if (n.tag == 2) id = &n;
        if (n.tag == 3) name = n.text();
    }
    if (id == nullptr) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    const uint32_t gid = id->u32();
    if (c.rq.type == kReset) {
        auto it = st.user_groups.find(gid);
        if (it == st.user_groups.end()) return Reply::of(KVN_E_GROUP_DOES_NOT_EXIST);
        if (has_members(st, gid)) return Reply::of(KVN_E_GROUP_CONTAINS_USERS_FAILED_TO_DELETE);
        st.user_groups.erase(it);
        st.save_user_groups();
        return Reply{};
    }
    if (name.empty()) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    for (const auto& [other, other_name] : st.user_groups)
        if (other != gid && other_name == name) return Reply::of(KVN_E_GROUP_NAME_ALREADY_EXISTS);
    if (!st.user_groups.count(gid) && st.user_groups.size() >= kMaxGroups) return Reply::of(KVN_E_GROUP_MAX_LIMIT_REACHED);
    st.user_groups[gid] = name;
    st.save_user_groups();
    return Reply{};
}

Reply count(Call& c) {
    Out o;
    o.u32(1, uint32_t(c.st.user_groups.size()));
    return Reply::with(std::move(o));
}

// Deletes every group, unless one still has members.
Reply clear(Call& c) {
    for (const auto& [gid, name] : c.st.user_groups)
        if (has_members(c.st, gid)) return Reply::of(KVN_E_GROUP_CONTAINS_USERS_FAILED_TO_DELETE);
    c.st.user_groups.clear();
    c.st.save_user_groups();
    return Reply{};
}

}  // namespace kvnsim::user_groups
