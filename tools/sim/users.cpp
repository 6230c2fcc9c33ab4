// Users, their templates, user groups, enrolment, identification and verification.
#include <algorithm>

#include "kvnsdk2.h"
#include "terminal.h"

namespace kvnsim {
namespace {

constexpr size_t kMaxUsers = 10000;
constexpr size_t kMaxTemplates = 10;
constexpr size_t kMaxGroups = 64;
constexpr uint32_t kTemplateMax = 1572;

enum class UF : uint8_t { text, u8, u32, narrow };  // narrow: one byte, or four from a card write

struct UserField {
    uint8_t tag;
    UF kind;
    uint32_t max;
};
constexpr UserField kUserFields[] = {
    {2, UF::text, 64}, {3, UF::text, 50},  {4, UF::text, 50},  {6, UF::u8, 1},     {29, UF::u8, 1},
    {5, UF::u32, 4},   {8, UF::u32, 4},    {9, UF::u32, 4},    {10, UF::text, 10}, {11, UF::narrow, 4},
    {12, UF::narrow, 4}, {13, UF::u8, 1},  {14, UF::u8, 1},    {16, UF::narrow, 4}, {18, UF::u32, 4},
    {19, UF::text, 64}, {20, UF::text, 64}, {33, UF::u8, 1},    {32, UF::text, 16},
};

const UserField* user_field(uint8_t tag) {
    for (const UserField& f : kUserFields)
        if (f.tag == tag) return &f;
    return nullptr;
}

Reply answer(Out&& o) {
    Reply r;
    r.payload = std::move(o.bytes);
    return r;
}

uint64_t mix(uint64_t& s) {
    uint64_t z = (s += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

// A user id as the terminal takes it: 1 to 64 bytes.
int32_t user_id_of(const std::vector<Elem>& in, uint8_t tag, std::string* id) {
    for (const Elem& e : in) {
        if (e.tag != tag) continue;
        if (e.length == 0 || e.length > 64) return KVN_E_INVALID_USERRECORD_ID;
        *id = e.text();
        return id->empty() ? KVN_E_INVALID_USERRECORD_ID : 0;
    }
    return KVN_E_INVALID_USERRECORD_ID;
}

}  // namespace

Bytes Terminal::finger_template(const std::string& owner, uint8_t finger) {
    uint64_t h = 1469598103934665603ull;
    for (unsigned char c : owner) h = (h ^ c) * 1099511628211ull;
    uint64_t state = h ^ (uint64_t(finger) * 0x100000001B3ull + 0x51ED);
    Bytes t(kTemplateSize);
    t[0] = 'K';
    t[1] = 'V';
    t[2] = 'T';
    t[3] = '1';
    t[4] = finger;
    for (size_t i = 8; i < t.size(); i += 8) {
        const uint64_t v = mix(state);
        for (size_t k = 0; k < 8 && i + k < t.size(); ++k) t[i + k] = uint8_t(v >> (8 * k));
    }
    return t;
}

// A user record: one tag-1 element holding the fields, template groups (tag 22)
// and value groups (tag 34); a bare field list is taken as well.
int32_t Terminal::parse_user(const uint8_t* p, size_t n, User* out) const {
    std::vector<Elem> top;
    if (!split(p, n, &top)) return KVN_E_INVALID_DATA_RECEIVED;
    if (top.empty()) return KVN_E_PAYLOAD_NOT_RECEIVED;
    std::vector<Elem> fields;
    if (top.size() == 1 && top[0].tag == 1) {
        if (!split(top[0].value, top[0].length, &fields)) return KVN_E_INVALID_DATA_RECEIVED;
    } else {
        fields = top;
    }
    *out = User{};
    bool have_id = false;
    for (const Elem& e : fields) {
        if (e.tag == 22) {
            std::vector<Elem> kids;
            if (!split(e.value, e.length, &kids)) return KVN_E_INVALID_DATA_RECEIVED;
            User::Template t;
            bool have_data = false;
            for (const Elem& k : kids) {
                if (k.tag == 23) {
                    if (k.length == 0 || k.length > kTemplateMax) return KVN_E_INVALID_LENGTH_RECEIVED;
                    t.data = k.bytes();
                    have_data = true;
                    continue;
                }
                if (k.tag != 7 && k.tag != 15 && k.tag != 21 && k.tag != 17) return KVN_E_INVALID_TAG_RECEIVED;
                if (k.length != 1) return KVN_E_INVALID_LENGTH_RECEIVED;
                (k.tag == 7 ? t.finger : k.tag == 15 ? t.a15 : k.tag == 21 ? t.a21 : t.a17) = k.value[0];
            }
            if (!have_data) return KVN_E_INVALID_DATA_RECEIVED;
            if (out->templates.size() >= kMaxTemplates) return KVN_E_MAX_BIOMETRIC_USER_RECORDS;
            out->templates.push_back(std::move(t));
            continue;
        }
        if (e.tag == 34) {
            std::vector<Elem> kids;
            if (!split(e.value, e.length, &kids)) return KVN_E_INVALID_DATA_RECEIVED;
            if (kids.size() != 1 || kids[0].tag != 35) return KVN_E_INVALID_TAG_RECEIVED;
            if (kids[0].length != 4) return KVN_E_INVALID_LENGTH_RECEIVED;
            if (out->values.size() >= 10) return KVN_E_MAXIMUM_VALUE_REACHED;
            out->values.push_back(kids[0].u32());
            continue;
        }
        const UserField* f = user_field(e.tag);
        if (f == nullptr) return KVN_E_INVALID_TAG_RECEIVED;
        switch (f->kind) {
            case UF::text:
                if (e.length > f->max) return e.tag == 2 ? KVN_E_INVALID_USERRECORD_ID : KVN_E_INVALID_LENGTH_RECEIVED;
                break;
            case UF::u8:
                if (e.length != 1) return KVN_E_INVALID_LENGTH_RECEIVED;
                break;
            case UF::u32:
                if (e.length != 4) return KVN_E_INVALID_LENGTH_RECEIVED;
                break;
            case UF::narrow:
                if (e.length != 1 && e.length != 4) return KVN_E_INVALID_LENGTH_RECEIVED;
                break;
        }
        Node node{e.tag, e.bytes(), {}};
        if (f->kind == UF::narrow) node.value.resize(1);  // kept as the one byte a store sends
        if (e.tag == 2) {
            out->id = e.text();
            have_id = !out->id.empty();
        }
        auto same = std::find_if(out->fields.begin(), out->fields.end(), [&](const Node& x) { return x.tag == e.tag; });
        if (same != out->fields.end()) *same = std::move(node);
        else out->fields.push_back(std::move(node));
    }
    return have_id ? 0 : KVN_E_INVALID_USERRECORD_ID;
}

// The record with its templates and values. A get's answer leaves out attributes
// 29 and 32, which the terminal keeps but never sends back; the stored copy has all.
Bytes Terminal::user_record(const User& u, bool answer) const {
    Out o;
    const size_t outer = o.open();
    for (const Node& n : u.fields)
        if (!answer || (n.tag != 29 && n.tag != 32)) o.node(n);
    for (const User::Template& t : u.templates) {
        const size_t at = o.open();
        o.u8(7, t.finger);
        o.u8(15, t.a15);
        o.u8(21, t.a21);
        o.u8(17, t.a17);
        o.element(23, t.data);
        o.close(at, 22);
    }
    for (uint32_t v : u.values) {
        const size_t at = o.open();
        o.u32(35, v);
        o.close(at, 34);
    }
    o.close(outer, 1);
    return std::move(o.bytes);
}

Bytes Terminal::encode_user(const User& u) const { return user_record(u, true); }

void Terminal::save_user(const User& u) { store_.put("users/" + hex(u.id), user_record(u, false)); }

void Terminal::save_user_groups() {
    Out o;
    for (const auto& [id, name] : user_groups_) {
        const size_t at = o.open();
        o.u32(2, id);
        o.text(3, name);
        o.close(at, 1);
    }
    store_.put("user_groups", o.bytes);
}

// Store (set), read (get) and delete (reset) a user record; the user count.
Reply Terminal::users(const Request& rq) {
    if (rq.command == 8) {
        Out o;
        o.u32(26, uint32_t(users_.size()));
        return answer(std::move(o));
    }
    if (rq.type == kSet) {
        User u;
        if (int32_t rc = parse_user(rq.data, rq.size, &u); rc != 0) return Reply::of(rc);
        if (users_.count(u.id)) return Reply::of(KVN_E_USERID_ALREADY_EXISTS);
        if (users_.size() >= kMaxUsers) return Reply::of(KVN_E_MAX_USERS_REACHED);
        // A template already enrolled under someone else is refused with the
        // details of the clash: who holds it, which finger, and which slots.
        for (const auto& [id, other] : users_) {
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
            Reply r = answer(std::move(o));
            r.status = KVN_E_ERROR_SAVING_BIOMETRIC_RECORD;
            return r;
        }
        save_user(u);
        users_[u.id] = std::move(u);
        return Reply{};
    }
    std::vector<Elem> in;
    if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    if (in.empty()) return Reply::of(KVN_E_PAYLOAD_NOT_RECEIVED);
    for (const Elem& e : in)
        if (e.tag != 2) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
    std::string id;
    if (int32_t rc = user_id_of(in, 2, &id); rc != 0) return Reply::of(rc);
    auto it = users_.find(id);
    if (it == users_.end()) return Reply::of(KVN_E_USER_NOT_FOUND);
    if (rq.type == kGet) {
        Reply r;
        r.payload = encode_user(it->second);
        return r;
    }
    store_.remove("users/" + hex(id));
    users_.erase(it);
    return Reply{};
}

// User groups (10 store, page, delete; 11 count; 12 delete all). A user whose
// attribute 5 holds a group id belongs to that group.
Reply Terminal::user_groups(const Request& rq) {
    auto members = [&](uint32_t gid) {
        for (const auto& [id, u] : users_)
            if (const Node* n = u.field(5); n != nullptr && n->u32() == gid) return true;
        return false;
    };
    if (rq.command == 11) {
        Out o;
        o.u32(1, uint32_t(user_groups_.size()));
        return answer(std::move(o));
    }
    if (rq.command == 12) {
        for (const auto& [gid, name] : user_groups_)
            if (members(gid)) return Reply::of(KVN_E_GROUP_CONTAINS_USERS_FAILED_TO_DELETE);
        user_groups_.clear();
        save_user_groups();
        return Reply{};
    }
    if (rq.type == kGet) {
        static const std::vector<Field> fields = {Field{4, Kind::u32}, Field{5, Kind::u32}};
        std::vector<Node> in;
        if (int32_t rc = parse(fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
        uint32_t start = 0, end = 0;
        for (const Node& n : in) (n.tag == 4 ? start : end) = n.u32();
        if (user_groups_.empty()) return Reply::of(KVN_E_GROUP_DOES_NOT_EXIST);
        if (end < start || start >= user_groups_.size() || end - start > 50)
            return Reply::of(KVN_E_OUT_OF_RANGE_GROUP_RETRIEVE_REQUEST);
        Out o;
        uint32_t pos = 0;
        for (const auto& [gid, name] : user_groups_) {
            if (pos >= start && pos < end) {
                const size_t at = o.open();
                o.u32(2, gid);
                o.text(3, name);
                o.u32(6, uint32_t(user_groups_.size()));
                o.close(at, 1);
            }
            ++pos;
        }
        return answer(std::move(o));
    }
    static const std::vector<Field> fields = {Field{2, Kind::u32}, Field{3, Kind::text, 51}};
    std::vector<Node> in;
    if (int32_t rc = parse(fields, rq.data, rq.size, &in); rc != 0) return Reply::of(rc);
    const Node* id = nullptr;
    std::string name;
    for (const Node& n : in) {
        if (n.tag == 2) id = &n;
        if (n.tag == 3) name = n.text();
    }
    if (id == nullptr) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    const uint32_t gid = id->u32();
    if (rq.type == kReset) {
        auto it = user_groups_.find(gid);
        if (it == user_groups_.end()) return Reply::of(KVN_E_GROUP_DOES_NOT_EXIST);
        if (members(gid)) return Reply::of(KVN_E_GROUP_CONTAINS_USERS_FAILED_TO_DELETE);
        user_groups_.erase(it);
        save_user_groups();
        return Reply{};
    }
    if (name.empty()) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    for (const auto& [other, other_name] : user_groups_)
        if (other != gid && other_name == name) return Reply::of(KVN_E_GROUP_NAME_ALREADY_EXISTS);
    if (!user_groups_.count(gid) && user_groups_.size() >= kMaxGroups) return Reply::of(KVN_E_GROUP_MAX_LIMIT_REACHED);
    user_groups_[gid] = name;
    save_user_groups();
    return Reply{};
}

// The finger on the sensor: the one presented through the API, else the one
// enrolled last (its owner is still at the terminal), else none.
int32_t Terminal::capture(std::string* owner, uint8_t* finger) const {
    const auto& f = finger_ ? finger_ : last_enrolled_;
    if (!f) return KVN_E_FINGER_CAPTURE_TIMEOUT;
    *owner = f->first;
    *finger = f->second;
    return 0;
}

const User* Terminal::match(const Bytes& tmpl, uint8_t* finger) const {
    for (const auto& [id, u] : users_)
        for (const User::Template& t : u.templates)
            if (t.data == tmpl) {
                *finger = t.finger;
                return &u;
            }
    return nullptr;
}

void Terminal::log_event(uint32_t event, int32_t result, const std::string& user, uint8_t method, uint8_t finger,
                         const std::string& text) {
    LogEntry e;
    e.time = now();
    e.event = event;
    e.result = uint32_t(result);
    e.user = user.substr(0, 64);
    e.text = text.substr(0, 50);
    e.device = "kvn-sim";
    e.method = method;
    e.finger = finger;
    e.score = result == 0 && method == 1 ? 92 : 0;
    journal_.append(std::move(e));
}

// Enrolment (1, 15), identification (6, 16), verification (3, 4, 5), and the
// template maintenance commands (13, 14, 505) and counts (508).
Reply Terminal::biometrics(const Request& rq) {
    std::vector<Elem> in;
    if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    auto verified = [&](const User& u, uint8_t finger, uint32_t event) {
        log_event(event, 0, u.id, 1, finger, event == kEventVerify ? "Verified" : "Identified");
        Out o;
        if (event == kEventVerify) {
            o.u32(1, 92);
            o.u32(2, finger);
        } else {
            o.u32(1, 92);
            o.text(2, u.id);
            o.u8(3, finger);
        }
        return answer(std::move(o));
    };
    auto failed = [&](uint32_t event, const std::string& who) {
        const int32_t status = event == kEventVerify ? KVN_E_FAILED_TO_VERIFY_USER : KVN_E_FAILED_TO_IDENTIFY_USER;
        log_event(event, status, who, 1, 0, event == kEventVerify ? "Verification failed" : "Not identified");
        return Reply::of(status);
    };
    switch (rq.command) {
        case 508: {
            size_t n = 0;
            for (const auto& [id, u] : users_) n += u.templates.size();
            Out o;
            o.u32(26, uint32_t(n));
            return answer(std::move(o));
        }
        case 1:
        case 15: {
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
            const std::string owner = finger_ ? finger_->first : id;
            const uint8_t real_finger = finger_ ? finger_->second : finger;
            const Bytes tmpl = finger_template(owner, real_finger);
            uint8_t other_finger = 0;
            const User* other = match(tmpl, &other_finger);
            if (rq.command == 15 && other != nullptr && other->id != id) {
                Out o;
                o.text(10, other->id);
                o.u8(11, other_finger);
                Reply r = answer(std::move(o));
                r.status = KVN_E_DUPLICATE_USER_ID;
                log_event(kEventEnroll, KVN_E_DUPLICATE_USER_ID, id, 1, finger, "Finger already enrolled");
                return r;
            }
            auto it = users_.find(id);
            if (it == users_.end()) {
                if (users_.size() >= kMaxUsers) return Reply::of(KVN_E_MAX_USERS_REACHED);
                User u;
                u.id = id;
                u.fields.push_back(Node{2, Bytes(id.begin(), id.end()), {}});
                it = users_.emplace(id, std::move(u)).first;
            }
            User& u = it->second;
            auto slot = std::find_if(u.templates.begin(), u.templates.end(),
                                     [&](const User::Template& t) { return t.finger == finger; });
            if (slot == u.templates.end()) {
                if (u.templates.size() >= kMaxTemplates) return Reply::of(KVN_E_MAX_BIOMETRIC_USER_RECORDS);
                u.templates.push_back(User::Template{});
                slot = u.templates.end() - 1;
            }
            slot->finger = finger;
            slot->data = tmpl;
            save_user(u);
            last_enrolled_ = std::make_pair(owner, real_finger);
            log_event(kEventEnroll, 0, id, 1, finger, "Enrolled");
            Out o;
            o.u32(2, finger);
            o.element(3, tmpl);
            o.u32(4, uint32_t(tmpl.size()));
            o.u32(5, uint32_t(u.templates.size()));
            o.u8(7, 1);
            o.u8(8, 85);
            return answer(std::move(o));
        }
        case 6:
        case 16: {
            Bytes tmpl;
            for (const Elem& e : in) {
                if (rq.command == 6 || (e.tag != 1 && e.tag != 2)) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
                if (tmpl.empty() || e.tag == 1) tmpl = e.bytes();
            }
            if (tmpl.empty()) {
                std::string owner;
                uint8_t f = 0;
                if (int32_t rc = capture(&owner, &f); rc != 0) return Reply::of(rc);
                tmpl = finger_template(owner, f);
            }
            uint8_t finger = 0;
            if (const User* u = match(tmpl, &finger)) return verified(*u, finger, kEventIdentify);
            return failed(kEventIdentify, "");
        }
        case 3: {
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
            if (int32_t rc = capture(&owner, &f); rc != 0) return Reply::of(rc);
            uint8_t finger = 0;
            const User* holder = match(tmpl, &finger);
            if (finger_template(owner, f) == tmpl) {
                if (holder) return verified(*holder, finger, kEventVerify);
                log_event(kEventVerify, 0, "", 1, f, "Verified");
                Out o;
                o.u32(1, 92);
                o.u32(2, f);
                return answer(std::move(o));
            }
            return failed(kEventVerify, holder ? holder->id : "");
        }
        case 4:
        case 5: {
            const User* u = nullptr;
            User record;
            if (rq.command == 4) {
                std::string id;
                for (const Elem& e : in)
                    if (e.tag != 1) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
                if (int32_t rc = user_id_of(in, 1, &id); rc != 0) return Reply::of(rc);
                auto it = users_.find(id);
                if (it == users_.end()) return Reply::of(KVN_E_USER_NOT_FOUND);
                u = &it->second;
            } else {
                if (int32_t rc = parse_user(rq.data, rq.size, &record); rc != 0) return Reply::of(rc);
                if (record.templates.empty()) {
                    auto it = users_.find(record.id);
                    if (it == users_.end()) return Reply::of(KVN_E_USER_NOT_FOUND);
                    u = &it->second;
                } else {
                    u = &record;
                }
            }
            std::string owner;
            uint8_t f = 0;
            if (int32_t rc = capture(&owner, &f); rc != 0) return Reply::of(rc);
            const Bytes tmpl = finger_template(owner, f);
            for (const User::Template& t : u->templates)
                if (t.data == tmpl) return verified(*u, t.finger, kEventVerify);
            return failed(kEventVerify, u->id);
        }
        case 13:
        case 14: {
            std::string id;
            if (int32_t rc = user_id_of(in, 1, &id); rc != 0) return Reply::of(rc);
            int finger = -1;
            Bytes tmpl;
            for (const Elem& e : in) {
                if (e.tag == 2) {
                    if (e.length != 1) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                    finger = e.u8();
                } else if (e.tag == 3 && rq.command == 14) {
                    if (e.length == 0 || e.length > kTemplateMax) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                    tmpl = e.bytes();
                } else if (e.tag != 1) {
                    return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
                }
            }
            if (finger < 0) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
            auto it = users_.find(id);
            if (it == users_.end()) return Reply::of(KVN_E_USER_NOT_FOUND);
            User& u = it->second;
            auto slot = std::find_if(u.templates.begin(), u.templates.end(),
                                     [&](const User::Template& t) { return t.finger == finger; });
            if (rq.command == 13) return Reply::of(slot != u.templates.end() ? 0 : KVN_E_INVALID_VALUE_RECEIVED);
            if (tmpl.empty()) return Reply::of(KVN_E_PAYLOAD_NOT_RECEIVED);
            if (slot == u.templates.end()) {
                if (u.templates.size() >= kMaxTemplates) return Reply::of(KVN_E_MAX_BIOMETRIC_USER_RECORDS);
                u.templates.push_back(User::Template{});
                slot = u.templates.end() - 1;
                slot->finger = uint8_t(finger);
            }
            slot->data = std::move(tmpl);
            save_user(u);
            return Reply{};
        }
        case 505: {
            std::string id;
            if (int32_t rc = user_id_of(in, 2, &id); rc != 0) return Reply::of(rc);
            Bytes fingers;
            for (const Elem& e : in) {
                if (e.tag == 7) fingers.insert(fingers.end(), e.value, e.value + e.length);
                else if (e.tag != 2) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
            }
            auto it = users_.find(id);
            if (it == users_.end()) return Reply::of(KVN_E_USER_NOT_FOUND);
            auto& t = it->second.templates;
            t.erase(std::remove_if(t.begin(), t.end(),
                                   [&](const User::Template& x) {
                                       return std::find(fingers.begin(), fingers.end(), x.finger) != fingers.end();
                                   }),
                    t.end());
            save_user(it->second);
            return Reply{};
        }
        default:
            return Reply::of(KVN_E_COMMAND_NOT_FOUND);
    }
}

void Terminal::present_finger(const std::string& user_id, uint8_t finger) {
    std::lock_guard<std::mutex> lock(mutex_);
    finger_ = std::make_pair(user_id, finger);
}
void Terminal::remove_finger() {
    std::lock_guard<std::mutex> lock(mutex_);
    finger_.reset();
    last_enrolled_.reset();
}

}  // namespace kvnsim
