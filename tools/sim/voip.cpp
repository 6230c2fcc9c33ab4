// VoIP: the settings, the contact list and its default contact.
#include <algorithm>

#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::voip {
namespace {

bool is_default(const Node& contact) {
    for (const Node& k : contact.kids)
        if (k.tag == 4 && k.u32() == 1) return true;
    return false;
}

}  // namespace

const Group kVoip{{U32(1), TXT(2, 1025), TXT(3, 21), TXT(4, 21), TXT(5, 21), U32(7)}, {{1, 0}, {7, 5060}}, {}};
// Ten empty contacts, kept in the order sent.
const Group kContacts{{LIST(1, {TXT(2, 21), TXT(3, 21), U32(4)})}, {entries(1, 10, {{4, 0}})}, {}};

// Contact ids (inner tag 2) unique, at most one contact marked default (value 4 = 1).
Reply contacts(Call& c) {
    if (c.rq.type != kSet) return settings::plain(c);
    std::vector<Node> in;
    if (int32_t rc = settings::parse_set(c, &in); rc != 0) return Reply::of(rc);
    std::vector<std::string> ids;
    int defaults = 0;
    for (const Node& contact : in) {
        for (const Node& k : contact.kids) {
            if (k.tag == 2 && !k.value.empty()) {
                if (std::find(ids.begin(), ids.end(), k.text()) != ids.end()) return Reply::of(KVN_E_VOIPID_MUST_BE_UNIQUE);
                ids.push_back(k.text());
            }
            if (k.tag == 4 && k.u32() == 1) ++defaults;
        }
    }
    if (defaults > 1) return Reply::of(KVN_E_ONLY_ONE_CONTACT_MUST_BE_DEFAULT);
    return settings::store(c, std::move(in));
}

// The contact marked default: its tags 2 and 3, or nothing.
Reply default_contact(Call& c) {
    for (const Node& contact : c.st.groups.nodes(Cmd::VoipContacts)) {
        if (!is_default(contact)) continue;
        Out o;
        for (const Node& k : contact.kids)
            if (k.tag == 2 || k.tag == 3) o.node(k);
        return Reply::with(std::move(o));
    }
    return Reply{};
}

}  // namespace kvnsim::voip
