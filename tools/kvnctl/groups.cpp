#include "groups.h"

#include <memory>

namespace kvnctl {
namespace {

// Records are value-initialised on the heap: some are far too large for the stack.
template <class T> struct Box {
    T v{};
    auto ptr() {
        if constexpr (std::is_array_v<T>) return v; else return &v;
    }
};

template <class T> json wrap(const T& v) {
    if constexpr (std::is_arithmetic_v<T>) return json{{"value", to_json(v)}};
    else return to_json(v);
}

template <class T> void unwrap(const json& j, T& v, const std::string& name) {
    if constexpr (std::is_arithmetic_v<T>) {
        if (!j.is_object() || j.size() != 1 || !j.contains("value"))
            throw BadJson(name + ": an object {\"value\": N} is expected");
        from_json(j["value"], v, name + ".value");
    } else {
        from_json(j, v, name);
    }
}

template <class T, class Fn> auto getter(Fn fn) {
    return [fn](kvn_device_conn* c, json& out) {
        auto b = std::make_unique<Box<T>>();
        const int32_t rc = fn(c, b->ptr());
        if (rc == 0) out = wrap(b->v);
        return rc;
    };
}

// Setters take a pointer to the record, or the number itself for single-number groups.
template <class T, class Fn> auto setter(const char* name, Fn fn) {
    return [fn, name](kvn_device_conn* c, const json& j) {
        auto b = std::make_unique<Box<T>>();
        unwrap(j, b->v, name);
        if constexpr (std::is_invocable_v<Fn, kvn_device_conn*, T>) return fn(c, b->v);
        else return fn(c, b->ptr());
    };
}

template <class T, class Fn> std::function<int32_t(kvn_device_conn*, const json&)> setter_for(const char* name, Fn fn) {
    if constexpr (std::is_null_pointer_v<Fn>) return nullptr; else return setter<T>(name, fn);
}

constexpr uint32_t kNoIndex = 0xFFFFFFFFu;

// Schedule tables reset one schedule by index, or the whole table by a reset without one.
template <class Fn> auto resetter(Fn fn, uint32_t command) {
    return [fn, command](kvn_device_conn* c, uint32_t index) {
        if constexpr (std::is_invocable_v<Fn, kvn_device_conn*, uint32_t>)
            return index == kNoIndex ? kvn_send_reset_command(c, command) : fn(c, index);
        else return fn(c);
    };
}

template <class Fn> std::function<int32_t(kvn_device_conn*, uint32_t)> resetter_for(Fn fn, uint32_t command) {
    if constexpr (std::is_null_pointer_v<Fn>) return nullptr; else return resetter(fn, command);
}

}  // namespace

// The groups come from the header's description (kvn_generate.py kvnctl-groups): one per
// command that reads a whole record, with the write and the reset of the same command.
// The whole-table reset of the schedule tables is the same command without an index.
#define KVN_GROUP(name, T, command, get, set, reset) \
    {name, getter<T>(get), setter_for<T>(name, set), resetter_for(reset, command)},

const std::vector<Group>& groups() {
    static const std::vector<Group> all = {
#include "kvnctl_groups.inc"
    };
    return all;
}

const Group* find_group(const std::string& name) {
    for (const auto& g : groups())
        if (g.name == name) return &g;
    return nullptr;
}

}  // namespace kvnctl
