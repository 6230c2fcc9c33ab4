// Local files on Windows: UTF-8 paths are opened as wide paths, so that any
// file name the platform allows can be transferred.
#include <windows.h>

#include <sys/stat.h>
#include <sys/types.h>

#include <cstdlib>

#include "link/file.h"

namespace kvn::local {
namespace {

// The path as UTF-16 in a heap buffer the caller frees; nullptr when it is not UTF-8.
wchar_t* widen(const char* path) noexcept {
    if (path == nullptr || path[0] == 0) return nullptr;
    const int n = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, nullptr, 0);
    if (n <= 0) return nullptr;
    auto* w = static_cast<wchar_t*>(std::malloc(sizeof(wchar_t) * static_cast<size_t>(n)));
    if (w != nullptr && MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, w, n) != n) {
        std::free(w);
        return nullptr;
    }
    return w;
}

std::FILE* open_wide(const char* path, const wchar_t* mode) noexcept {
    wchar_t* w = widen(path);
    if (w == nullptr) return nullptr;
    std::FILE* f = _wfopen(w, mode);
    std::free(w);
    return f;
}

}  // namespace

std::FILE* open_read(const char* path, uint64_t* size) noexcept {
    std::FILE* f = open_wide(path, L"rb");
    if (f == nullptr) return nullptr;
    struct _stat64 st {};
    if (_fstat64(_fileno(f), &st) != 0 || (st.st_mode & _S_IFREG) == 0 || st.st_size < 0) {
        std::fclose(f);
        return nullptr;
    }
    *size = static_cast<uint64_t>(st.st_size);
    return f;
}

std::FILE* open_write(const char* path) noexcept { return open_wide(path, L"wb"); }

}  // namespace kvn::local
