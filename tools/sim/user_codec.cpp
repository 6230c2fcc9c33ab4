#include "user_codec.h"

#include <algorithm>

#include "kvnsdk2.h"

namespace kvnsim {
namespace {

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

uint64_t mix(uint64_t& s) {
    uint64_t z = (s += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

}  // namespace

int32_t user_id_of(const std::vector<Elem>& in, uint8_t tag, std::string* id) {
    for (const Elem& e : in) {
        if (e.tag != tag) continue;
        if (e.length == 0 || e.length > 64) return KVN_E_INVALID_USERRECORD_ID;
        *id = e.text();
        return id->empty() ? KVN_E_INVALID_USERRECORD_ID : 0;
    }
    return KVN_E_INVALID_USERRECORD_ID;
}

Bytes finger_template(const std::string& owner, uint8_t finger) {
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
int32_t parse_user(const uint8_t* p, size_t n, User* out) {
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

// A get's answer leaves out attributes 29 and 32, which the terminal keeps but
// never sends back; the stored copy has all.
Bytes encode_user(const User& u, bool answer) {
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

}  // namespace kvnsim
