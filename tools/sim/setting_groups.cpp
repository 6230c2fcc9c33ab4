// Settings groups: checking a set against a group's fields, merging it into what
// is held, the defaults from their rows, and the store of every group.
#include "setting_groups.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "kvnsdk2.h"

namespace kvnsim {
namespace {

const Field* field_of(const std::vector<Field>& fields, uint8_t tag) {
    for (const Field& f : fields)
        if (f.tag == tag) return &f;
    return nullptr;
}

bool keyed(const Field& f) { return f.kind == Kind::box && f.key != 0; }

bool has_keyed_box(const std::vector<Field>& fields) { return std::any_of(fields.begin(), fields.end(), keyed); }

// Keyed entries merge into the entry with the same key; entries by position
// replace the stored list of that tag; scalars replace their tag.
void merge_nodes(const std::vector<Field>& fields, std::vector<Node>& into, std::vector<Node>&& incoming) {
    std::vector<uint8_t> replaced;
    for (Node& n : incoming) {
        const Field* f = field_of(fields, n.tag);
        if (f != nullptr && keyed(*f)) {
            const Node* key = find(n.kids, f->key);
            auto same = std::find_if(into.begin(), into.end(), [&](const Node& s) {
                if (s.tag != n.tag) return false;
                const Node* k = find(s.kids, f->key);
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

Bytes number_bytes(Kind kind, uint32_t v) {
    Bytes b(4);
    put_le32(b.data(), v);
    b.resize(kind == Kind::u8 ? 1 : kind == Kind::u16 ? 2 : 4);
    return b;
}

void add_presets(const std::vector<Field>& fields, const std::vector<Preset>& rows, std::vector<Node>& out);

// One container entry of a preset row: its key, its name, then the common elements.
Node preset_entry(const Field& box, const Preset& row, uint32_t index) {
    Node entry{box.tag, {}, {}};
    if (box.key != 0) {
        const Field* k = field_of(box.inner, box.key);
        entry.kids.push_back(Node{box.key, number_bytes(k ? k->kind : Kind::u32, row.key_first + index), {}});
    }
    if (row.names_tag != 0 && index < row.names.size()) {
        const std::string_view name = row.names[index];
        entry.kids.push_back(Node{row.names_tag, Bytes(name.begin(), name.end()), {}});
    }
    add_presets(box.inner, row.each, entry.kids);
    return entry;
}

void add_presets(const std::vector<Field>& fields, const std::vector<Preset>& rows, std::vector<Node>& out) {
    for (const Preset& row : rows) {
        const Field* f = field_of(fields, row.tag);
        if (f == nullptr) continue;  // a row the group has no field for (caught by the table test)
        if (f->kind == Kind::box) {
            for (uint32_t i = 0; i < row.count; ++i) out.push_back(preset_entry(*f, row, i));
        } else if (row.is_text) {
            out.push_back(Node{row.tag, Bytes(row.text.begin(), row.text.end()), {}});
        } else {
            out.push_back(Node{row.tag, number_bytes(f->kind, row.number), {}});
        }
    }
}

}  // namespace

Field LIST(uint8_t t, std::vector<Field> inner) {
    Field f{t, Kind::box};
    f.inner = std::move(inner);
    return f;
}

Field KEYED(uint8_t t, uint8_t key, uint32_t key_min, uint32_t key_max, std::vector<Field> inner) {
    Field f{t, Kind::box};
    f.key = key;
    f.key_min = key_min;
    f.key_max = key_max;
    f.inner = std::move(inner);
    return f;
}

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

Preset entries(uint8_t tag, uint32_t count, uint32_t first, std::vector<Preset> each) {
    Preset p{tag, 0u};
    p.count = count;
    p.key_first = first;
    p.each = std::move(each);
    return p;
}

Preset entries(uint8_t tag, uint32_t count, std::vector<Preset> each) { return entries(tag, count, 0, std::move(each)); }

Node* find(std::vector<Node>& nodes, uint8_t tag) {
    for (Node& n : nodes)
        if (n.tag == tag) return &n;
    return nullptr;
}

const Node* find(const std::vector<Node>& nodes, uint8_t tag) {
    for (const Node& n : nodes)
        if (n.tag == tag) return &n;
    return nullptr;
}

int32_t parse(const std::vector<Field>& fields, const uint8_t* p, size_t n, std::vector<Node>* out) {
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
                if (f->key != 0 && find(node.kids, f->key) == nullptr) return KVN_E_INVALID_DATA_RECEIVED;
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

int32_t check_keys(const std::vector<Field>& fields, const std::vector<Node>& nodes) {
    for (const Node& n : nodes) {
        const Field* f = field_of(fields, n.tag);
        if (f == nullptr || f->kind != Kind::box) continue;
        for (const Node& k : n.kids)
            if (keyed(*f) && k.tag == f->key && (k.u32() < f->key_min || k.u32() > f->key_max))
                return KVN_E_INVALID_VALUE_RECEIVED;
        if (int32_t rc = check_keys(f->inner, n.kids); rc != 0) return rc;
    }
    return 0;
}

void store_set(const std::vector<Field>& fields, std::vector<Node>& into, std::vector<Node>&& incoming) {
    if (has_keyed_box(fields)) merge_nodes(fields, into, std::move(incoming));
    else into = std::move(incoming);
}

void overlay(std::vector<Node>& into, std::vector<Node>&& incoming) {
    for (Node& n : incoming) {
        if (Node* old = find(into, n.tag)) *old = std::move(n);
        else into.push_back(std::move(n));
    }
}

std::vector<Node> preset_nodes(const Group& g) {
    std::vector<Node> nodes;
    add_presets(g.fields, g.defaults, nodes);
    return nodes;
}

std::vector<Node>& GroupStore::nodes(Cmd id) {
    auto it = groups_.find(id);
    if (it != groups_.end()) return it->second;
    std::vector<Node>& nodes = groups_[id];
    if (const Group* g = group(id)) nodes = preset_nodes(*g);
    return nodes;
}

Bytes GroupStore::answer(Cmd id) {
    const Group* g = group(id);
    Out o;
    for (const Node& n : nodes(id)) {
        if (g && std::find(g->hidden.begin(), g->hidden.end(), n.tag) != g->hidden.end()) continue;
        o.node(n);
    }
    return std::move(o.bytes);
}

void GroupStore::reset(Cmd id) {
    groups_.erase(id);
    nodes(id);
    save(id);
}

void GroupStore::save(Cmd id) {
    Out o;
    o.nodes(nodes(id));
    store_.put("settings/" + std::to_string(id_of(id)), o.bytes);
}

uint32_t GroupStore::value(Cmd id, uint8_t tag, uint32_t fallback) {
    const Node* n = find(nodes(id), tag);
    return n ? n->u32() : fallback;
}

void GroupStore::set_value(Cmd id, uint8_t tag, uint32_t v) {
    std::vector<Node>& ns = nodes(id);
    Node* n = find(ns, tag);
    if (n == nullptr) {
        ns.push_back(Node{tag, {}, {}});
        n = &ns.back();
    }
    n->value.resize(4);
    put_le32(n->value.data(), v);
}

void GroupStore::clear() {
    for (auto& [id, nodes] : groups_) store_.remove("settings/" + std::to_string(id_of(id)));
    groups_.clear();
}

void GroupStore::load() {
    for (const std::string& key : store_.list("settings/")) {
        const Cmd id = Cmd(uint32_t(std::strtoul(key.c_str() + 9, nullptr, 10)));
        const Group* g = group(id);
        Bytes b;
        if (g == nullptr || !store_.get(key, &b)) continue;
        std::vector<Node> nodes;
        if (parse(g->fields, b.data(), b.size(), &nodes) == 0) groups_[id] = std::move(nodes);
    }
}

}  // namespace kvnsim
