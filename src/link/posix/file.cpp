// Local files on POSIX: paths are passed through as they are.
#include <sys/stat.h>

#include "link/file.h"

namespace kvn::local {

std::FILE* open_read(const char* path, uint64_t* size) noexcept {
    if (path == nullptr || path[0] == 0) return nullptr;
    std::FILE* f = std::fopen(path, "rb");
    if (f == nullptr) return nullptr;
    struct stat st {};
    if (fstat(fileno(f), &st) != 0 || !S_ISREG(st.st_mode) || st.st_size < 0) {
        std::fclose(f);
        return nullptr;
    }
    *size = static_cast<uint64_t>(st.st_size);
    return f;
}

std::FILE* open_write(const char* path) noexcept {
    if (path == nullptr || path[0] == 0) return nullptr;
    return std::fopen(path, "wb");
}

}  // namespace kvn::local
