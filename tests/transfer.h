// Local files for the file-transfer tests: made up, written and read back whole.
#pragma once

#include <cstdio>
#include <vector>

#include "kvnsdk2.h"

namespace kvntest {

// n bytes that differ from packet to packet.
inline std::vector<uint8_t> pattern(size_t n) {
    std::vector<uint8_t> b(n);
    for (size_t i = 0; i < n; ++i) b[i] = uint8_t(i * 7 + i / 65536);
    return b;
}
inline bool write_file(const char* path, const std::vector<uint8_t>& b) {
    std::FILE* f = std::fopen(path, "wb");
    if (f == nullptr) return false;
    const bool ok = b.empty() || std::fwrite(b.data(), 1, b.size(), f) == b.size();
    return std::fclose(f) == 0 && ok;
}
inline std::vector<uint8_t> file_bytes(const char* path) {
    std::vector<uint8_t> b;
    if (std::FILE* f = std::fopen(path, "rb")) {
        uint8_t chunk[4096];
        for (size_t n; (n = std::fread(chunk, 1, sizeof chunk, f)) != 0;) b.insert(b.end(), chunk, chunk + n);
        std::fclose(f);
    }
    return b;
}
inline kvn_file_transfer_request transfer(const char* local, const char* name, uint32_t type = 5) {
    kvn_file_transfer_request r{};
    r.file_type = type;
    r.local_path = local;
    std::snprintf(r.file_name, sizeof r.file_name, "%s", name);
    return r;
}

}  // namespace kvntest
