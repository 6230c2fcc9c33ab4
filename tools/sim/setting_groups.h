// Settings groups: the shape of the elements a group takes, its defaults as rows
// of data, and the store that keeps each group's current elements.
//
// A group is described once (Group), by the family that owns it, and bound
// to its command id in the command table. Set, get and reset of a plain group
// need nothing more: the elements are checked against the fields, merged or
// replaced, answered as stored, and reset to the preset rows.
#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "command_ids.h"
#include "store.h"
#include "wire.h"

namespace kvnsim {

// Shape of one element.
enum class Kind : uint8_t { u8, u16, u32, text, exact, box };

struct Field {
    Field(uint8_t t, Kind k, uint32_t m = 0) : tag(t), kind(k), max(m) {}
    uint8_t tag;
    Kind kind;
    uint32_t max = 0;          // text: longest value; exact: the only length
    uint8_t key = 0;           // box: inner tag that names the entry (0: entries by position)
    uint32_t key_min = 0;      // box with a key: the keys a set may use
    uint32_t key_max = UINT32_MAX;
    std::vector<Field> inner;  // box: its elements
};

// Field builders, so that a group's fields read as a list.
inline Field U8(uint8_t t) { return Field{t, Kind::u8}; }
inline Field U16(uint8_t t) { return Field{t, Kind::u16}; }
inline Field U32(uint8_t t) { return Field{t, Kind::u32}; }
inline Field TXT(uint8_t t, uint32_t max) { return Field{t, Kind::text, max}; }
inline Field EX(uint8_t t, uint32_t n) { return Field{t, Kind::exact, n}; }
// Entries by position: a set replaces them all.
Field LIST(uint8_t t, std::vector<Field> inner);
// Entries named by their `key` element, from key_min to key_max: a set merges
// them by key, and a key out of range is "Invalid value received".
Field KEYED(uint8_t t, uint8_t key, uint32_t key_min, uint32_t key_max, std::vector<Field> inner);
// Fields of one builder for every tag from..to.
std::vector<Field> range(Field (*make)(uint8_t), uint8_t from, uint8_t to);
std::vector<Field> cat(std::initializer_list<std::vector<Field>> parts);

// One row of a group's defaults: an element with a number or a text, at the
// width of the group's field with that tag, or `count` container entries.
struct Preset {
    Preset(uint8_t t, uint32_t n) : tag(t), number(n) {}
    Preset(uint8_t t, std::string_view s) : tag(t), text(s), is_text(true) {}
    uint8_t tag;
    uint32_t number = 0;
    std::string_view text;
    bool is_text = false;
    // Container entries: each holds the key (numbered from key_first, when the
    // field is keyed), then a text from `names` under names_tag (when given), then `each`.
    uint32_t count = 0;
    uint32_t key_first = 0;
    uint8_t names_tag = 0;
    std::vector<std::string_view> names;
    std::vector<Preset> each;
};
// `count` entries of a container; keyed containers number their key from `first`.
Preset entries(uint8_t tag, uint32_t count, uint32_t first, std::vector<Preset> each);
Preset entries(uint8_t tag, uint32_t count, std::vector<Preset> each);

struct Group {
    std::vector<Field> fields;
    std::vector<Preset> defaults;  // what a reset (or a group never set) holds
    std::vector<uint8_t> hidden;   // tags kept but never answered
};

// Checks a payload against fields: a malformed payload is "Invalid data
// received", an element the fields do not know "Invalid tag received", a value of
// the wrong size "Invalid length received". Texts keep what precedes a NUL.
int32_t parse(const std::vector<Field>& fields, const uint8_t* p, size_t n, std::vector<Node>* out);
// Keys of keyed entries (at any depth) outside their range: "Invalid value received".
int32_t check_keys(const std::vector<Field>& fields, const std::vector<Node>& nodes);
// Stores a set: keyed entries merge into the entry with the same key, entries
// by position replace that list, scalars replace their tag. A group without keyed
// entries is replaced whole.
void store_set(const std::vector<Field>& fields, std::vector<Node>& into, std::vector<Node>&& incoming);
// Scalars replace their tag and every other element stays as held.
void overlay(std::vector<Node>& into, std::vector<Node>&& incoming);
// The default elements of a group.
std::vector<Node> preset_nodes(const Group& g);

Node* find(std::vector<Node>& nodes, uint8_t tag);
const Node* find(const std::vector<Node>& nodes, uint8_t tag);

// The current elements of every settings group, by command id, saved under
// "settings/<id>" when the store keeps state.
class GroupStore {
public:
    using Lookup = const Group* (*)(Cmd id);
    GroupStore(Store& store, Lookup lookup) : store_(store), lookup_(lookup) {}

    const Group* group(Cmd id) const { return lookup_(id); }
    // The group's elements; a group never set holds its defaults.
    std::vector<Node>& nodes(Cmd id);
    // The stored elements less the hidden ones, encoded.
    Bytes answer(Cmd id);
    void reset(Cmd id);
    void save(Cmd id);
    uint32_t value(Cmd id, uint8_t tag, uint32_t fallback = 0);
    void set_value(Cmd id, uint8_t tag, uint32_t v);
    // Forgets every group, on disk too.
    void clear();
    // Reads every saved group back.
    void load();

private:
    Store& store_;
    Lookup lookup_;
    std::map<Cmd, std::vector<Node>> groups_;
};

}  // namespace kvnsim
