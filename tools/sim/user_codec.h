// The user record as the terminal keeps it, its encoding (a tag-1 container
// of fields, template groups and value groups), and the templates a simulated
// finger yields. Users, enrolment, smart cards, CSV import and the state on disk
// all read and write records through here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "wire.h"

namespace kvnsim {

struct User {
    std::string id;
    std::vector<Node> fields;  // scalar elements as stored (tag order of the store)
    struct Template {
        uint8_t finger = 0, a15 = 0, a21 = 0, a17 = 0;
        Bytes data;
    };
    std::vector<Template> templates;
    std::vector<uint32_t> values;  // tag 35 entries
    const Node* field(uint8_t tag) const {
        for (const Node& n : fields)
            if (n.tag == tag) return &n;
        return nullptr;
    }
};

constexpr size_t kMaxUsers = 10000;
constexpr size_t kMaxTemplates = 10;        // per user
constexpr uint32_t kTemplateMax = 1572;     // bytes of one template
constexpr size_t kTemplateSize = 384;       // bytes of a simulated finger's template

// A user record: one tag-1 element holding the fields, template groups (tag 22)
// and value groups (tag 34); a bare field list is taken as well.
int32_t parse_user(const uint8_t* p, size_t n, User* out);
// The record as answered (attributes 29 and 32 left out) or as stored (all of it).
Bytes encode_user(const User& u, bool answer = true);
// A user id as the terminal takes it: 1 to 64 bytes, from the first element with `tag`.
int32_t user_id_of(const std::vector<Elem>& in, uint8_t tag, std::string* id);

// The template a simulated finger yields: the same bytes for the same user and
// finger, different bytes for any other pair.
Bytes finger_template(const std::string& owner, uint8_t finger);

}  // namespace kvnsim
