// Enrolment, identification and verification against the simulated sensor, and
// the template maintenance commands and counts. Every match and miss is
// journalled.
#include <algorithm>

#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::biometrics {
namespace {

constexpr uint32_t kScore = 92;  // the score of every match

// The finger on the sensor: the one presented through the API, else the one
// enrolled last (its owner is still at the terminal), else none.
int32_t capture(const State& st, std::string* owner, uint8_t* finger) {
    const auto& f = st.finger ? st.finger : st.last_enrolled;
    if (!f) return KVN_E_FINGER_CAPTURE_TIMEOUT;
    *owner = f->first;
    *finger = f->second;
    return 0;
}

// The user holding a template, and the finger it is enrolled as.
const User* match(const State& st, const Bytes& tmpl, uint8_t* finger) {
    for (const auto& [id, u] : st.users)
        for (const User::Template& t : u.templates)
            if (t.data == tmpl) {
                *finger = t.finger;
                return &u;
            }
    return nullptr;
}

Reply verified(State& st, const User& u, uint8_t finger) {
    st.log_event(kEventVerify, 0, u.id, 1, finger, "Verified");
    Out o;
    o.bytes.reserve(16);
    o.u32(1, kScore);
    o.u32(2, finger);
    return Reply::with(std::move(o));
}

Reply identified(State& st, const User& u, uint8_t finger) {
    st.log_event(kEventIdentify, 0, u.id, 1, finger, "Identified");
    Out o;
    o.u32(1, kScore);
    o.text(2, u.id);
    o.u8(3, finger);
    return Reply::with(std::move(o));
}

Reply not_verified(State& st, const std::string& who) {
    st.log_event(kEventVerify, KVN_E_FAILED_TO_VERIFY_USER, who, 1, 0, "Verification failed");
    return Reply::of(KVN_E_FAILED_TO_VERIFY_USER);
}

Reply not_identified(State& st) {
    st.log_event(kEventIdentify, KVN_E_FAILED_TO_IDENTIFY_USER, "", 1, 0, "Not identified");
    return Reply::of(KVN_E_FAILED_TO_IDENTIFY_USER);
}

// Enrols the finger on the sensor (or the named finger of the user) for the user
// given under tag 1, creating the user; with `unique`, a finger that is another
// user's is refused with that user's id (tag 10) and finger (tag 11).
Reply enrol_finger(Call& c, bool unique) {
    State& st = c.st;
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    std::string id;
    if (int32_t rc = user_id_of(in, 1, &id); rc != 0) return Reply::of(rc);
    uint8_t finger = 0;
    for (const Elem& e : in) {
        if (e.tag == 9) {
            if (e.length != 1) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
            finger = e.u8();
        } else if (e.tag != 1) {
            return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
        }
    }
    if (finger > 9) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
    const std::string owner = st.finger ? st.finger->first : id;
    const uint8_t real_finger = st.finger ? st.finger->second : finger;
    const Bytes tmpl = finger_template(owner, real_finger);
    uint8_t other_finger = 0;
    const User* other = match(st, tmpl, &other_finger);
    if (unique && other != nullptr && other->id != id) {
        Out o;
        o.text(10, other->id);
        o.u8(11, other_finger);
        Reply r = Reply::with(std::move(o));
        r.status = KVN_E_DUPLICATE_USER_ID;
        st.log_event(kEventEnroll, KVN_E_DUPLICATE_USER_ID, id, 1, finger, "Finger already enrolled");
        return r;
    }
    auto it = st.users.find(id);
    if (it == st.users.end()) {
        if (st.users.size() >= kMaxUsers) return Reply::of(KVN_E_MAX_USERS_REACHED);
        User u;
        u.id = id;
        u.fields.push_back(Node{2, Bytes(id.begin(), id.end()), {}});
        it = st.users.emplace(id, std::move(u)).first;
    }
    User& u = it->second;
    auto slot = std::find_if(u.templates.begin(), u.templates.end(), [&](const User::Template& t) { return t.finger == finger; });
    if (slot == u.templates.end()) {
        if (u.templates.size() >= kMaxTemplates) return Reply::of(KVN_E_MAX_BIOMETRIC_USER_RECORDS);
        u.templates.push_back(User::Template{});
        slot = u.templates.end() - 1;
    }
    slot->finger = finger;
    slot->data = tmpl;
    st.save_user(u);
    st.last_enrolled = std::make_pair(owner, real_finger);
    st.log_event(kEventEnroll, 0, id, 1, finger, "Enrolled");
    Out o;
    o.u32(2, finger);
    o.element(3, tmpl);
    o.u32(4, uint32_t(tmpl.size()));
    o.u32(5, uint32_t(u.templates.size()));
    o.u8(7, 1);
    o.u8(8, 85);
    return Reply::with(std::move(o));
}

// Finds the holder of the given template (tags 1 and 2, when `takes_template`)
// or of the finger on the sensor.
Reply identify_by(Call& c, bool takes_template) {
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    Bytes tmpl;
    for (const Elem& e : in) {
        if (!takes_template || (e.tag != 1 && e.tag != 2)) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
        if (tmpl.empty() || e.tag == 1) tmpl = e.bytes();
    }
    if (tmpl.empty()) {
        std::string owner;
        uint8_t f = 0;
        if (int32_t rc = capture(c.st, &owner, &f); rc != 0) return Reply::of(rc);
        tmpl = finger_template(owner, f);
    }
    uint8_t finger = 0;
    if (const User* u = match(c.st, tmpl, &finger)) return identified(c.st, *u, finger);
    return not_identified(c.st);
}

// Verifies the finger on the sensor against a user's templates.
Reply verify_against(State& st, const User& u) {
    std::string owner;
    uint8_t f = 0;
    if (int32_t rc = capture(st, &owner, &f); rc != 0) return Reply::of(rc);
    const Bytes tmpl = finger_template(owner, f);
    for (const User::Template& t : u.templates)
        if (t.data == tmpl) return verified(st, u, t.finger);
    return not_verified(st, u.id);
}

// The user id (tag 1) and finger (tag 2) of the template commands; `tmpl` takes
// tag 3 when given.
int32_t template_request(Call& c, std::string* id, int* finger, Bytes* tmpl) {
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return KVN_E_INVALID_DATA_RECEIVED;
    if (int32_t rc = user_id_of(in, 1, id); rc != 0) return rc;
    for (const Elem& e : in) {
        if (e.tag == 2) {
            if (e.length != 1) return KVN_E_INVALID_LENGTH_RECEIVED;
            *finger = e.u8();
        } else if (e.tag == 3 && tmpl != nullptr) {
            if (e.length == 0 || e.length > kTemplateMax) return KVN_E_INVALID_LENGTH_RECEIVED;
            *tmpl = e.bytes();
        } else if (e.tag != 1) {
            return KVN_E_INVALID_TAG_RECEIVED;
        }
    }
    return *finger < 0 ? KVN_E_INVALID_DATA_RECEIVED : 0;
}

}  // namespace

Reply enrol(Call& c) { return enrol_finger(c, false); }

Reply enrol_unique(Call& c) { return enrol_finger(c, true); }

Reply identify(Call& c) { return identify_by(c, false); }

Reply identify_template(Call& c) { return identify_by(c, true); }

// The finger on the sensor against a given template (tag 3, its length under tag 2).
Reply verify_template(Call& c) {
    State& st = c.st;
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    Bytes tmpl;
    int64_t declared = -1;
    for (const Elem& e : in) {
        if (e.tag == 1 && e.length == 1) continue;
        if (e.tag == 2 && e.length == 4) declared = e.u32();
        else if (e.tag == 3) tmpl = e.bytes();
        else return Reply::of(e.tag <= 3 ? KVN_E_INVALID_LENGTH_RECEIVED : KVN_E_INVALID_TAG_RECEIVED);
    }
    if (tmpl.empty()) return Reply::of(KVN_E_PAYLOAD_NOT_RECEIVED);
    if (declared >= 0 && size_t(declared) != tmpl.size()) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
    std::string owner;
    uint8_t f = 0;
    if (int32_t rc = capture(st, &owner, &f); rc != 0) return Reply::of(rc);
    uint8_t finger = 0;
    const User* holder = match(st, tmpl, &finger);
    if (finger_template(owner, f) == tmpl) {
        if (holder) return verified(st, *holder, finger);
        st.log_event(kEventVerify, 0, "", 1, f, "Verified");
        Out o;
        o.u32(1, kScore);
        o.u32(2, f);
        return Reply::with(std::move(o));
    }
    return not_verified(st, holder ? holder->id : "");
}

// The finger on the sensor against a stored user's templates.
Reply verify_user_id(Call& c) {
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    std::string id;
    for (const Elem& e : in)
        if (e.tag != 1) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
    if (int32_t rc = user_id_of(in, 1, &id); rc != 0) return Reply::of(rc);
    auto it = c.st.users.find(id);
    if (it == c.st.users.end()) return Reply::of(KVN_E_USER_NOT_FOUND);
    return verify_against(c.st, it->second);
}

// The finger on the sensor against the templates of a record sent along, or of
// the stored user it names when it carries none.
Reply verify_record(Call& c) {
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    User record;
    if (int32_t rc = parse_user(c.rq.data, c.rq.size, &record); rc != 0) return Reply::of(rc);
    if (!record.templates.empty()) return verify_against(c.st, record);
    auto it = c.st.users.find(record.id);
    if (it == c.st.users.end()) return Reply::of(KVN_E_USER_NOT_FOUND);
    return verify_against(c.st, it->second);
}

// 0 when the user has a template for the finger.
Reply finger_check(Call& c) {
    std::string id;
    int finger = -1;
    if (int32_t rc = template_request(c, &id, &finger, nullptr); rc != 0) return Reply::of(rc);
    auto it = c.st.users.find(id);
    if (it == c.st.users.end()) return Reply::of(KVN_E_USER_NOT_FOUND);
    const auto& t = it->second.templates;
    const bool has = std::any_of(t.begin(), t.end(), [&](const User::Template& x) { return x.finger == finger; });
    return Reply::of(has ? 0 : KVN_E_INVALID_VALUE_RECEIVED);
}

// Replaces the finger's template, or adds it.
Reply template_update(Call& c) {
    std::string id;
    int finger = -1;
    Bytes tmpl;
    if (int32_t rc = template_request(c, &id, &finger, &tmpl); rc != 0) return Reply::of(rc);
    auto it = c.st.users.find(id);
    if (it == c.st.users.end()) return Reply::of(KVN_E_USER_NOT_FOUND);
    User& u = it->second;
    auto slot = std::find_if(u.templates.begin(), u.templates.end(), [&](const User::Template& t) { return t.finger == finger; });
    if (tmpl.empty()) return Reply::of(KVN_E_PAYLOAD_NOT_RECEIVED);
    if (slot == u.templates.end()) {
        if (u.templates.size() >= kMaxTemplates) return Reply::of(KVN_E_MAX_BIOMETRIC_USER_RECORDS);
        u.templates.push_back(User::Template{});
        slot = u.templates.end() - 1;
        slot->finger = uint8_t(finger);
    }
    slot->data = std::move(tmpl);
    c.st.save_user(u);
    return Reply{};
}

// Removes the templates of the fingers listed under tag 7 from the user under tag 2.
Reply templates_delete(Call& c) {
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    std::string id;
    if (int32_t rc = user_id_of(in, 2, &id); rc != 0) return Reply::of(rc);
    Bytes fingers;
    for (const Elem& e : in) {
        if (e.tag == 7) fingers.insert(fingers.end(), e.value, e.value + e.length);
        else if (e.tag != 2) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
    }
    auto it = c.st.users.find(id);
    if (it == c.st.users.end()) return Reply::of(KVN_E_USER_NOT_FOUND);
    auto& t = it->second.templates;
    t.erase(std::remove_if(t.begin(), t.end(),
                           [&](const User::Template& x) {
                               return std::find(fingers.begin(), fingers.end(), x.finger) != fingers.end();
                           }),
            t.end());
    c.st.save_user(it->second);
    return Reply{};
}

Reply template_count(Call& c) {
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    size_t n = 0;
    for (const auto& [id, u] : c.st.users) n += u.templates.size();
    Out o;
    o.u32(26, uint32_t(n));
    return Reply::with(std::move(o));
}

}  // namespace kvnsim::biometrics
