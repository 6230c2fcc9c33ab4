// Where the simulated terminal keeps what it was told, when it was given a state
// directory: every record is a file written to a temporary name and then renamed
// over the old one, so that a restart or a kill at any moment finds either the
// old or the new record, never a torn one. Without a directory the terminal's
// state lives only in its own memory and the store keeps nothing.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace kvnsim {

class Store {
public:
    // An empty directory: nothing is kept.
    explicit Store(std::string dir);

    bool persistent() const noexcept { return !dir_.empty(); }
    const std::string& dir() const noexcept { return dir_; }

    // Creates the directory (and its parents); false with a reason when it cannot.
    bool prepare(std::string* error);

    // Keys are relative paths made of [A-Za-z0-9._-] and '/'.
    bool put(const std::string& key, const std::vector<uint8_t>& value);
    // The concatenation of the parts, as one record.
    bool put_parts(const std::string& key, const std::vector<std::pair<const uint8_t*, size_t>>& parts);
    bool get(const std::string& key, std::vector<uint8_t>* value) const;
    void remove(const std::string& key);
    // Keys directly below `prefix` ("users/" lists "users/<name>").
    std::vector<std::string> list(const std::string& prefix) const;

    // Path of a key on disk (persistent stores only).
    std::string path(const std::string& key) const { return dir_ + "/" + key; }

private:
    std::string dir_;
};

// Writes `data` to `path` through a temporary file in the same directory and a
// rename; creates missing parent directories.
bool write_file_atomic(const std::string& path, const std::vector<std::pair<const uint8_t*, size_t>>& parts);
bool read_file(const std::string& path, std::vector<uint8_t>* out);
bool make_dirs(const std::string& path);

// Hex text of arbitrary bytes, for keys made from user ids and file names.
std::string hex(const std::string& s);
std::string unhex(const std::string& h);

}  // namespace kvnsim
