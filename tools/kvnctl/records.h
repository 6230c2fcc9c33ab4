// Records as JSON, both ways, from the header's description (each record's members, in
// order, generated as kvnctl_records.inc by kvn_generate.py kvnctl-records): numbers as
// numbers, texts as strings, byte arrays as hex, nested records as objects, arrays as
// arrays. An array ends at its last element that is not all zero bytes; elements left out,
// like members left out, read back as zero.
#pragma once

#include <nlohmann/json.hpp>

#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "kvnsdk2.h"

namespace kvnctl {

using json = nlohmann::ordered_json;

template <class T> struct Record;  // each(record, visitor): visitor(name, member) per member

#define F(m) v(#m, r.m);
#define KVN_JSON_RECORD(type, members)                                        \
    template <> struct Record<type> {                                         \
        static constexpr const char* name = #type;                            \
        template <class R, class V> static void each(R& r, V&& v) { members } \
    };
#include "kvnctl_records.inc"
#undef KVN_JSON_RECORD
#undef F

// A JSON value that does not fit: the message names where it is.
struct BadJson : std::runtime_error {
    using std::runtime_error::runtime_error;
};

template <class T> bool all_zero(const T& v) {
    const auto* p = reinterpret_cast<const unsigned char*>(&v);
    for (size_t i = 0; i < sizeof v; ++i)
        if (p[i]) return false;
    return true;
}

template <class T> json to_json(const T& v) {
    if constexpr (std::is_arithmetic_v<T>) {
        return +v;  // int8_t and uint8_t as numbers, not characters
    } else if constexpr (std::is_array_v<T>) {
        using E = std::remove_extent_t<T>;
        constexpr size_t n = std::extent_v<T>;
        if constexpr (std::is_same_v<E, char>) {
            return std::string(v, strnlen(v, n));
        } else if constexpr (std::is_same_v<E, uint8_t>) {
            size_t end = n;
            while (end > 0 && v[end - 1] == 0) --end;
            static const char digits[] = "0123456789abcdef";
            std::string s;
            for (size_t i = 0; i < end; ++i) s += {digits[v[i] >> 4], digits[v[i] & 15]};
            return s;
        } else {
            size_t end = n;
            while (end > 0 && all_zero(v[end - 1])) --end;
            json a = json::array();
            for (size_t i = 0; i < end; ++i) a.push_back(to_json(v[i]));
            return a;
        }
    } else {
        json o = json::object();
        Record<T>::each(v, [&](const char* name, const auto& m) { o[name] = to_json(m); });
        return o;
    }
}

inline int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Reads j into v, which the caller has zeroed; path names the value in messages.
template <class T> void from_json(const json& j, T& v, const std::string& path) {
    if constexpr (std::is_arithmetic_v<T>) {
        if (!j.is_number_integer()) throw BadJson(path + ": an integer is expected");
        if (j.is_number_unsigned()) {
            const auto u = j.get<uint64_t>();
            if (u > static_cast<uint64_t>(std::numeric_limits<T>::max()))
                throw BadJson(path + ": " + std::to_string(u) + " is out of range");
            v = static_cast<T>(u);
        } else {
            const auto s = j.get<int64_t>();
            if (s < static_cast<int64_t>(std::numeric_limits<T>::min()) ||
                (s > 0 && static_cast<uint64_t>(s) > static_cast<uint64_t>(std::numeric_limits<T>::max())))
                throw BadJson(path + ": " + std::to_string(s) + " is out of range");
            v = static_cast<T>(s);
        }
    } else if constexpr (std::is_array_v<T>) {
        using E = std::remove_extent_t<T>;
        constexpr size_t n = std::extent_v<T>;
        if constexpr (std::is_same_v<E, char>) {
            if (!j.is_string()) throw BadJson(path + ": a string is expected");
            const auto& s = j.get_ref<const std::string&>();
            if (s.size() > n) throw BadJson(path + ": longer than " + std::to_string(n) + " bytes");
            std::memcpy(v, s.data(), s.size());
        } else if constexpr (std::is_same_v<E, uint8_t>) {
            if (!j.is_string()) throw BadJson(path + ": a hex string is expected");
            const auto& s = j.get_ref<const std::string&>();
            if (s.size() % 2 || s.size() / 2 > n)
                throw BadJson(path + ": an even number of hex digits, at most " + std::to_string(2 * n) + " is expected");
            for (size_t i = 0; i < s.size() / 2; ++i) {
                const int hi = hex_digit(s[2 * i]), lo = hex_digit(s[2 * i + 1]);
                if (hi < 0 || lo < 0) throw BadJson(path + ": not a hex digit");
                v[i] = static_cast<uint8_t>(hi << 4 | lo);
            }
        } else {
            if (!j.is_array()) throw BadJson(path + ": an array is expected");
            if (j.size() > n) throw BadJson(path + ": more than " + std::to_string(n) + " elements");
            for (size_t i = 0; i < j.size(); ++i) from_json(j[i], v[i], path + "[" + std::to_string(i) + "]");
        }
    } else {
        if (!j.is_object()) throw BadJson(path + ": an object is expected");
        size_t known = 0;
        Record<T>::each(v, [&](const char* name, auto& m) {
            if (auto it = j.find(name); it != j.end()) {
                from_json(*it, m, path + "." + name);
                ++known;
            }
        });
        if (known != j.size())
            for (auto it = j.begin(); it != j.end(); ++it) {
                bool found = false;
                Record<T>::each(v, [&](const char* name, auto&) { found = found || it.key() == name; });
                if (!found) throw BadJson(path + ": unknown field \"" + it.key() + "\"");
            }
    }
}

}  // namespace kvnctl
