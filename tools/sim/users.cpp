// User records: store (set), read (get) and delete (reset), and the user count.
#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::users {

Reply record(Call& c) {
    State& st = c.st;
    if (c.rq.type == kSet) {
        User u;
        if (int32_t rc = parse_user(c.rq.data, c.rq.size, &u); rc != 0) return Reply::of(rc);
        if (st.users.count(u.id)) return Reply::of(KVN_E_USERID_ALREADY_EXISTS);
        if (st.users.size() >= kMaxUsers) return Reply::of(KVN_E_MAX_USERS_REACHED);
        // A template already enrolled under someone else is refused with the
        // details of the clash: who holds it, which finger, and which slots.
        for (const auto& [id, other] : st.users) {
            Bytes slots;
            uint32_t finger = 0;
            for (size_t i = 0; i < u.templates.size(); ++i)
                for (const User::Template& t : other.templates)
                    if (t.data == u.templates[i].data) {
                        slots.push_back(uint8_t(i));
                        finger = t.finger;
                    }
            if (slots.empty()) continue;
            Out o;
            o.text(2, id);
            o.u32(30, finger);
            o.element(31, slots);
            Reply r = Reply::with(std::move(o));
            r.status = KVN_E_ERROR_SAVING_BIOMETRIC_RECORD;
            return r;
        }
        st.save_user(u);
        st.users[u.id] = std::move(u);
        return Reply{};
    }
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    if (in.empty()) return Reply::of(KVN_E_PAYLOAD_NOT_RECEIVED);
    for (const Elem& e : in)
        if (e.tag != 2) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
    std::string id;
    if (int32_t rc = user_id_of(in, 2, &id); rc != 0) return Reply::of(rc);
    auto it = st.users.find(id);
    if (it == st.users.end()) return Reply::of(KVN_E_USER_NOT_FOUND);
    if (c.rq.type == kGet) {
        Reply r;
        r.payload = encode_user(it->second);
        return r;
    }
    st.remove_user(id);
    return Reply{};
}

Reply count(Call& c) {
    Out o;
    o.u32(26, uint32_t(c.st.users.size()));
    return Reply::with(std::move(o));
}

}  // namespace kvnsim::users
