// Settings groups: the elements each group takes, its defaults, and the generic
// store behind set, get and reset.
#include <algorithm>

#include "kvnsdk2.h"
#include "terminal.h"

namespace kvnsim {
namespace {

Field U8(uint8_t t) { return Field{t, Kind::u8}; }
Field U16(uint8_t t) { return Field{t, Kind::u16}; }
Field U32(uint8_t t) { return Field{t, Kind::u32}; }
Field TXT(uint8_t t, uint32_t max) { return Field{t, Kind::text, max}; }
Field EX(uint8_t t, uint32_t n) { return Field{t, Kind::exact, n}; }
Field BOX(uint8_t t, uint8_t key, std::vector<Field> inner) { return Field{t, Kind::box, 0, key, std::move(inner)}; }

std::vector<Field> range(Field (*make)(uint8_t), uint8_t from, uint8_t to) {
    std::vector<Field> f;
    for (int t = from; t <= to; ++t) f.push_back(make(uint8_t(t)));
    return f;
}
std::vector<Field> cat(std::initializer_list<std::vector<Field>> parts) {
    std::vector<Field> all;
    for (const auto& p : parts) all.insert(all.end(), p.begin(), p.end());
    return all;
}

uint32_t ip(int a, int b, int c, int d) { return uint32_t(a) << 24 | uint32_t(b) << 16 | uint32_t(c) << 8 | uint32_t(d); }

// LED and buzzer entries: index, enable, option and a 3 x 3 matrix.
void indication_defaults(Out& o, uint32_t entries) {
    for (uint32_t n = 1; n <= entries; ++n) {
        const size_t at = o.open();
        o.u32(3, n);
        o.u8(2, 1);
        o.u32(13, 0);
        for (uint8_t t = 4; t <= 12; ++t) o.u32(t, (t - 4) % 4 == 0 ? 1 : 0);
        o.close(at, 1);
    }
}

const char* const kAudioNames[18] = {"Welcome",      "Access granted", "Access denied", "Try again",   "Place finger",
                                     "Remove finger", "Present card",   "Door open",     "Door closed", "Alarm",
                                     "Enrolled",      "Duplicate",      "Timeout",       "Thank you",   "Good morning",
                                     "Good evening",  "Goodbye",        "Please wait"};

std::vector<Group> make_groups() {
    std::vector<Group> g;
    auto add = [&](uint32_t id, std::vector<Field> fields, void (*defaults)(Out&), std::vector<uint8_t> hidden = {}) {
        Group x;
        x.id = id;
        x.fields = std::move(fields);
        x.defaults = defaults;
        x.hidden = std::move(hidden);
        g.push_back(std::move(x));
    };
    const std::vector<Field> indication = {
        BOX(1, 3, cat({{U32(3), U8(2), U32(13)}, range(U32, 4, 12)}))};

    // Network and device.
    add(101, {U32(1), U32(2), U32(3), U32(4), U32(5), U32(6), U32(7)}, [](Out& o) {
        o.u32(1, 0);
        o.u32(2, ip(192, 168, 1, 50));
        o.u32(3, 5005);
        o.u32(4, ip(255, 255, 255, 0));
        o.u32(5, ip(192, 168, 1, 1));
        o.u32(6, ip(192, 168, 1, 1));
        o.u32(7, ip(8, 8, 8, 8));
    });
    add(102, range(U32, 1, 4), [](Out& o) {
        o.u32(1, 115200);
        o.u32(2, 8);
        o.u32(3, 0);
        o.u32(4, 1);
    });
    add(103, {U32(1)}, [](Out& o) { o.u32(1, 0); });
    add(104, indication, [](Out& o) { indication_defaults(o, 17); });
    add(111, indication, [](Out& o) { indication_defaults(o, 18); });
    add(110, {BOX(1, 3, {U32(3), TXT(4, 51), U8(5), TXT(6, 256), U32(7), U32(8)})}, [](Out& o) {
        for (uint32_t n = 1; n <= 18; ++n) {
            const size_t at = o.open();
            o.u32(3, n);
            o.text(4, kAudioNames[n - 1]);
            o.u8(5, 1);
            o.u32(7, 5);
            o.close(at, 1);
        }
    });
    add(149, {U32(1), TXT(2, 51)}, [](Out& o) {
        o.u32(1, 1);
        o.text(2, "Welcome");
    });
    add(507, {U8(1), TXT(2, 129), TXT(3, 51), TXT(4, 51), U32(5)}, [](Out& o) {
        o.u8(1, 0);
        o.u32(5, 0);
    });
    add(108, cat({range(U32, 1, 5), {U8(8)}, range(U32, 9, 15)}), [](Out& o) {
        const uint32_t v[] = {3, 1, 5, 0, 10};
        for (uint8_t t = 1; t <= 5; ++t) o.u32(t, v[t - 1]);
        o.u8(8, 1);
        for (uint8_t t = 9; t <= 15; ++t) o.u32(t, t == 9 ? 60 : 0);
    });
    add(139, {U32(1), U8(2), BOX(3, 4, {U8(4), U32(5), TXT(6, 64), U32(7)})}, [](Out& o) {
        o.u32(1, 0);
        o.u8(2, 0);
        for (uint8_t n = 0; n < 3; ++n) {
            const size_t at = o.open();
            o.u8(4, n);
            o.u32(5, 0);
            o.text(6, "");
            o.u32(7, 0);
            o.close(at, 3);
        }
    });
    add(166, {U32(1), U32(2)}, [](Out& o) {
        o.u32(1, 0);
        o.u32(2, 0);
    });
    add(303, {U32(1)}, [](Out& o) { o.u32(1, 1); });
    add(304, {U32(5), U32(4), U32(8)}, [](Out& o) {
        o.u32(5, 1);
        o.u32(4, 30);
        o.u32(8, 0);
    });
    add(305, {U32(7), U32(9)}, [](Out& o) { o.u32(7, 0); }, {9});
    add(306, range(U32, 1, 8), [](Out& o) {
        for (uint8_t t = 2; t <= 8; ++t) o.u32(t, t == 2 ? 1 : 0);
    }, {1});
    add(115, cat({{U8(1)}, range(U32, 2, 4), {U32(6), U32(7), U32(8)}, range(U32, 10, 16)}), [](Out& o) {
        o.u8(1, 1);
        o.u32(2, 5);
        o.u32(3, 0);
        o.u32(4, 0);
        for (uint8_t t = 10; t <= 14; ++t) o.u32(t, 0);
        o.u32(6, 0);
        o.u32(8, 5);
        o.u32(16, 0);
    }, {7, 15});
    add(116, {U32(1), TXT(2, 50)}, [](Out& o) {
        o.u32(1, 100);
        o.text(2, "KVN terminal simulator");
    });
    add(128, {U32(1), TXT(2, 11)}, [](Out& o) { o.u32(1, 0); });
    add(129, {U32(1), U32(2)}, [](Out& o) {
        o.u32(1, 0);
        o.u32(2, 0);
    }, {1});
    add(134, {U8(2), TXT(3, 21)}, [](Out& o) { o.u8(2, 0); });
    add(125, {U32(1), TXT(2, 1024)}, [](Out& o) {
        o.u32(1, 0);
        o.text(2, "");
    });
    add(127, {U32(3), U32(6), TXT(4, 51), TXT(5, 33)}, [](Out& o) {
        o.u32(3, 0);
        o.u32(6, 0);
    }, {5});
    add(135, {U8(2)}, [](Out& o) { o.u8(2, 1); });
    add(163, {U32(1), BOX(2, 0, {TXT(3, 16)}), BOX(4, 0, {EX(5, 17)})}, [](Out& o) { o.u32(1, 0); });
    add(1001, cat({{U32(17), TXT(2, 51), U32(3)}, range([](uint8_t t) { return TXT(t, 51); }, 4, 9), {U32(10)},
                   range([](uint8_t t) { return TXT(t, 51); }, 11, 16)}),
        [](Out& o) {
            o.u32(17, 0);
            o.u32(3, 0);
            o.u32(10, 0);
        });
    add(142, {U32(1), TXT(2, 1025), TXT(3, 21), TXT(4, 21), TXT(5, 21), U32(7)}, [](Out& o) {
        o.u32(1, 0);
        o.u32(7, 5060);
    });
    add(145, {BOX(1, 0, {TXT(2, 21), TXT(3, 21), U32(4)})}, [](Out& o) {
        for (int n = 0; n < 10; ++n) {
            const size_t at = o.open();
            o.u32(4, 0);
            o.close(at, 1);
        }
    });
    add(146, {BOX(16, 0, {U32(17), TXT(18, 52)})}, [](Out&) {});
    add(112, {U32(2), U8(3), U32(1), U32(5), U8(6), U32(4), U32(8), U8(9), U32(7)}, [](Out& o) {
        for (uint8_t t = 1; t <= 9; ++t) (t % 3 == 0) ? o.u8(t, 0) : o.u32(t, 0);
    });
    add(113, {U8(7), U8(8), U8(9), BOX(1, 0, {U32(2), U32(3), U32(4), U8(5), U32(6)})}, [](Out& o) {
        o.u8(7, 0);
        o.u8(8, 0);
        o.u8(9, 0);
        for (int n = 0; n < 9; ++n) {
            const size_t at = o.open();
            o.u32(2, 0);
            o.u32(3, 0);
            o.u32(4, 0);
            o.u8(5, 0);
            o.u32(6, 0);
            o.close(at, 1);
        }
    });
    add(109, {U32(10), U32(11), U32(19), BOX(1, 3, {U8(3), TXT(12, 51), TXT(13, 51), U32(14)}),
              BOX(2, 0, {U8(6), U8(7), U8(8), U8(9), U32(4)})},
        [](Out& o) {
            o.u32(10, 0);
            o.u32(11, 0);
            o.u32(19, 0);
        });
    // Schedules.
    const std::vector<Field> week = {U32(1), BOX(2, 3, cat({{U8(3)}, range(U8, 4, 11)}))};
    auto week_defaults = [](Out& o) {
        o.u32(1, 0);
        for (uint8_t d = 0; d < 7; ++d) {
            const size_t at = o.open();
            o.u8(3, d);
            for (uint8_t t = 4; t <= 11; ++t) o.u8(t, 0);
            o.close(at, 2);
        }
    };
    add(107, week, week_defaults);
    add(155, week, week_defaults);
    add(106, {BOX(1, 2, {U8(2), U32(3), TXT(4, 52), BOX(5, 6, cat({{U8(6), U32(16), TXT(7, 51)}, range(U8, 8, 15)}))})},
        [](Out&) {});
    add(105, {U32(1), U8(2),
              BOX(3, 4, {U8(4), U32(5), TXT(6, 51), U8(7), BOX(8, 9, cat({{U8(9)}, range(U8, 10, 17)}))})},
        [](Out& o) {
            o.u32(1, 0);
            o.u8(2, 0);
        });
    // Cards and Wiegand.
    add(902, {U32(1), U32(2)}, [](Out& o) {
        o.u32(1, 0);
        o.u32(2, 0);
    });
    add(917, {U32(1)}, [](Out& o) { o.u32(1, 0); });
    add(903, {EX(6, 16), EX(3, 16), EX(4, 16), EX(16, 16)}, [](Out&) {});
    add(904, {U8(8), EX(7, 255), U8(10), EX(9, 255)}, [](Out& o) {
        o.u8(8, 0);
        o.u8(10, 0);
    });
    add(913, {U8(30), EX(29, 255), U8(32), EX(31, 255), U8(34), EX(33, 8)}, [](Out& o) {
        o.u8(30, 0);
        o.u8(32, 0);
        o.u8(34, 0);
    });
    add(908, {U32(13), U8(14), U32(15)}, [](Out& o) {
        o.u32(13, 0);
        o.u8(14, 0);
        o.u32(15, 0);
    });
    add(912, {U32(5), U32(20), U32(19)}, [](Out& o) {
        o.u32(5, 0);
        o.u32(20, 0);
        o.u32(19, 0);
    });
    add(916, {U16(40)}, [](Out& o) { o.u16(40, 1); });
    add(141, {U32(1), U32(3), TXT(2, 1024)}, [](Out& o) {
        o.u32(1, 0);
        o.u32(3, 0);
    });
    add(123, {U8(3), U32(9), U32(29), U8(1)}, [](Out& o) {
        o.u8(3, 0);
        o.u32(9, 0);
        o.u32(29, 0);
        o.u8(1, 0);
    });
    add(124, cat({{U32(10), U32(26)}, range(U8, 11, 18), {U8(27), U8(28)}}), [](Out& o) {
        o.u32(10, 0);
        o.u32(26, 0);
        for (uint8_t t = 11; t <= 18; ++t) o.u8(t, 0);
        o.u8(27, 0);
        o.u8(28, 0);
    });
    add(130, {U8(7), U16(8)}, [](Out& o) {
        o.u8(7, 1);
        o.u16(8, 1000);
    });
    add(165, {U32(32), U32(33), U32(34), BOX(31, 0, {U8(3), U32(9), U32(29), U8(1)})}, [](Out& o) {
        o.u32(32, 0);
        o.u32(33, 0);
        o.u32(34, 0);
        for (int n = 0; n < 5; ++n) {
            const size_t at = o.open();
            o.u8(3, 0);
            o.u32(9, 0);
            o.u32(29, 0);
            o.u8(1, 0);
            o.close(at, 31);
        }
    });
    add(156, {U32(4)}, [](Out& o) { o.u32(4, 0); });
    add(126, {U32(2), TXT(5, 1024), U32(6)}, [](Out& o) {
        o.u32(2, 0);
        o.text(5, "UTC");
        o.u32(6, 0);
    });
    return g;
}

const std::vector<Group>& all_groups() {
    static const std::vector<Group> groups = make_groups();
    return groups;
}

const Field* field_of(const std::vector<Field>& fields, uint8_t tag) {
    for (const Field& f : fields)
        if (f.tag == tag) return &f;
    return nullptr;
}

const Node* kid(const Node& n, uint8_t tag) {
    for (const Node& k : n.kids)
        if (k.tag == tag) return &k;
    return nullptr;
}

bool has_keyed_box(const std::vector<Field>& fields) {
    for (const Field& f : fields)
        if (f.kind == Kind::box && f.key != 0) return true;
    return false;
}

// Scalars replace their tag; keyed entries merge into the entry with the same
// key; entries by position replace the stored list of that tag.
void merge_nodes(const std::vector<Field>& fields, std::vector<Node>& into, std::vector<Node>&& incoming) {
    std::vector<uint8_t> replaced;
    for (Node& n : incoming) {
        const Field* f = field_of(fields, n.tag);
        if (f != nullptr && f->kind == Kind::box && f->key != 0) {
            const Node* key = kid(n, f->key);
            auto same = std::find_if(into.begin(), into.end(), [&](const Node& s) {
                if (s.tag != n.tag) return false;
                const Node* k = kid(s, f->key);
                return key != nullptr && k != nullptr && k->value == key->value;
            });
            if (same != into.end()) {
                merge_nodes(f->inner, same->kids, std::move(n.kids));
            } else {
                into.push_back(std::move(n));
            }
        } else if (f != nullptr && f->kind == Kind::box) {
            if (std::find(replaced.begin(), replaced.end(), n.tag) == replaced.end()) {
                into.erase(std::remove_if(into.begin(), into.end(), [&](const Node& s) { return s.tag == n.tag; }),
                           into.end());
                replaced.push_back(n.tag);
            }
            into.push_back(std::move(n));
        } else {
            auto same = std::find_if(into.begin(), into.end(), [&](const Node& s) { return s.tag == n.tag; });
            if (same != into.end()) *same = std::move(n);
            else into.push_back(std::move(n));
        }
    }
}

}  // namespace

const Group* Terminal::group(uint32_t id) const {
    for (const Group& g : all_groups())
        if (g.id == id) return &g;
    return nullptr;
}

// Checks a payload against the elements of a group: a malformed payload is
// "Invalid data received", an element the group does not know "Invalid tag
// received", a value of the wrong size "Invalid length received".
int32_t Terminal::parse(const std::vector<Field>& fields, const uint8_t* p, size_t n, std::vector<Node>* out) const {
    std::vector<Elem> elems;
    if (!split(p, n, &elems)) return KVN_E_INVALID_DATA_RECEIVED;
    for (const Elem& e : elems) {
        const Field* f = field_of(fields, e.tag);
        if (f == nullptr) return KVN_E_INVALID_TAG_RECEIVED;
        Node node;
        node.tag = e.tag;
        switch (f->kind) {
            case Kind::u8:
                if (e.length != 1) return KVN_E_INVALID_LENGTH_RECEIVED;
                break;
            case Kind::u16:
                if (e.length != 2) return KVN_E_INVALID_LENGTH_RECEIVED;
                break;
            case Kind::u32:
                if (e.length != 4) return KVN_E_INVALID_LENGTH_RECEIVED;
                break;
            case Kind::text:
                if (e.length > f->max) return KVN_E_INVALID_LENGTH_RECEIVED;
                break;
            case Kind::exact:
                if (e.length != f->max) return KVN_E_INVALID_LENGTH_RECEIVED;
                break;
            case Kind::box: {
                if (int32_t rc = parse(f->inner, e.value, e.length, &node.kids); rc != 0) return rc;
                if (f->key != 0 && kid(node, f->key) == nullptr) return KVN_E_INVALID_DATA_RECEIVED;
                out->push_back(std::move(node));
                continue;
            }
        }
        node.value.assign(e.value, e.value + e.length);
        if (f->kind == Kind::text) {
            // Texts may arrive as whole arrays: the terminal keeps what precedes the NUL.
            const auto nul = std::find(node.value.begin(), node.value.end(), uint8_t(0));
            node.value.erase(nul, node.value.end());
        }
        out->push_back(std::move(node));
    }
    return 0;
}

void Terminal::merge(const Group& g, std::vector<Node>& into, std::vector<Node>&& incoming) const {
    merge_nodes(g.fields, into, std::move(incoming));
}

std::vector<Node>& Terminal::stored(uint32_t id) {
    auto it = groups_.find(id);
    if (it != groups_.end()) return it->second;
    std::vector<Node>& nodes = groups_[id];
    if (const Group* g = group(id); g != nullptr && g->defaults != nullptr) {
        Out o;
        g->defaults(o);
        parse(g->fields, o.bytes.data(), o.bytes.size(), &nodes);
    }
    return nodes;
}

void Terminal::reset_group(uint32_t id) {
    groups_.erase(id);
    stored(id);
    save_group(id);
}

void Terminal::save_group(uint32_t id) {
    Out o;
    o.nodes(stored(id));
    store_.put("settings/" + std::to_string(id), o.bytes);
}

Bytes Terminal::answer_group(uint32_t id, const std::vector<uint8_t>& also_hidden) {
    const Group* g = group(id);
    Out o;
    for (const Node& n : stored(id)) {
        if (g && std::find(g->hidden.begin(), g->hidden.end(), n.tag) != g->hidden.end()) continue;
        if (std::find(also_hidden.begin(), also_hidden.end(), n.tag) != also_hidden.end()) continue;
        o.node(n);
    }
    return std::move(o.bytes);
}

Node* Terminal::find(std::vector<Node>& nodes, uint8_t tag) {
    for (Node& n : nodes)
        if (n.tag == tag) return &n;
    return nullptr;
}

uint32_t Terminal::value(uint32_t g, uint8_t tag, uint32_t fallback) {
    const Node* n = find(stored(g), tag);
    return n ? n->u32() : fallback;
}

void Terminal::set_value(uint32_t g, uint8_t tag, uint32_t v) {
    std::vector<Node>& nodes = stored(g);
    Node* n = find(nodes, tag);
    if (n == nullptr) {
        nodes.push_back(Node{tag, {}, {}});
        n = &nodes.back();
    }
    n->value.resize(4);
    put_le32(n->value.data(), v);
}

// The plain settings pattern: set stores the group (merging entries where a
// group holds numbered entries), get answers it, reset restores the defaults.
Reply Terminal::settings(const Request& rq) {
    const Group* g = group(rq.command);
    if (g == nullptr) return Reply::of(KVN_E_COMMAND_NOT_FOUND);
    if (rq.type == kGet) {
        Reply r;
        r.payload = answer_group(g->id);
        return r;
    }
    if (rq.type == kReset) {
        reset_group(g->id);
        return Reply{};
    }
    std::vector<Node> incoming;
    if (int32_t rc = parse(g->fields, rq.data, rq.size, &incoming); rc != 0) return Reply::of(rc);
    std::vector<Node>& nodes = stored(g->id);
    if (has_keyed_box(g->fields)) {
        merge(*g, nodes, std::move(incoming));
    } else {
        nodes = std::move(incoming);
    }
    save_group(g->id);
    return Reply{};
}

}  // namespace kvnsim
