// Local files for the file-transfer tests.
#pragma once

#include <cstdio>
#include <vector>

#include "kvnsdk2.h"

namespace kvntest {

inline std::vector<uint8_t> pattern(size_t n) {  // differs from packet to packet
    std::vector<uint8_t> b(n);
    for (size_t i = 0; i < n; ++i) b[i] = uint8_t(i * 7 + i / 65536);
    return b;
}
inline bool write_file(const char* path, const std::vector<uint8_t>& b) {
    std::FILE* f = std::fopen(path, "wb");
    const bool ok = f != nullptr && (b.empty() || std::fwrite(b.data(), 1, b.size(), f) == b.size());
    return f != nullptr && std::fclose(f) == 0 && ok;
}
inline std::vector<uint8_t> file_bytes(const char* path) {
    std::vector<uint8_t> b(1 << 16);
    std::FILE* f = std::fopen(path, "rb");
    size_t n = 0;
    for (size_t r; f != nullptr && (r = std::fread(&b[n], 1, b.size() - n, f)) != 0; b.resize(b.size() * 2)) n += r;
    if (f != nullptr) std::fclose(f);
    b.resize(n);
    return b;
}
inline kvn_file_transfer_request transfer(const char* local, const char* name, uint32_t type = 5) {
    kvn_file_transfer_request r{type, local, {}};
    std::snprintf(r.file_name, sizeof r.file_name, "%s", name);
    return r;
}

}  // namespace kvntest
