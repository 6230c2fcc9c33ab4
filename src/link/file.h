// Local files for file transfer: the one place that knows how a platform opens a
// path. Paths are UTF-8; Windows opens them as wide paths. Everything else is the
// C runtime's FILE.
#pragma once

#include <cstdint>
#include <cstdio>

namespace kvn::local {

// Opens an existing file for binary reading and gives its size; nullptr when it
// cannot be opened or sized.
std::FILE* open_read(const char* path, uint64_t* size) noexcept;

// Creates (or truncates) a file for binary writing; nullptr on failure.
std::FILE* open_write(const char* path) noexcept;

}  // namespace kvn::local
