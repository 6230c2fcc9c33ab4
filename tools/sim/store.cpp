#include "store.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace kvnsim {

bool make_dirs(const std::string& path) {
    if (path.empty()) return false;
    std::string cur;
    size_t i = 0;
    while (i <= path.size()) {
        const size_t slash = path.find('/', i);
        const size_t end = slash == std::string::npos ? path.size() : slash;
        cur = path.substr(0, end);
        if (!cur.empty() && ::mkdir(cur.c_str(), 0755) != 0 && errno != EEXIST) return false;
        if (slash == std::string::npos) break;
        i = slash + 1;
    }
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool write_file_atomic(const std::string& path, const std::vector<std::pair<const uint8_t*, size_t>>& parts) {
    static std::atomic<uint64_t> counter{0};
    const size_t slash = path.rfind('/');
    if (slash != std::string::npos && !make_dirs(path.substr(0, slash))) return false;
    const std::string tmp = path + ".tmp." + std::to_string(::getpid()) + "." + std::to_string(counter++);
    const int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    for (const auto& [p, size] : parts) {
        size_t done = 0;
        while (done < size) {
            const ssize_t w = ::write(fd, p + done, size - done);
            if (w < 0 && errno == EINTR) continue;
            if (w <= 0) {
                ::close(fd);
                ::unlink(tmp.c_str());
                return false;
            }
            done += size_t(w);
        }
    }
    if (::close(fd) != 0 || ::rename(tmp.c_str(), path.c_str()) != 0) {
        ::unlink(tmp.c_str());
        return false;
    }
    return true;
}

bool read_file(const std::string& path, std::vector<uint8_t>* out) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    out->clear();
    uint8_t buf[65536];
    for (;;) {
        const ssize_t r = ::read(fd, buf, sizeof buf);
        if (r < 0 && errno == EINTR) continue;
        if (r < 0) {
            ::close(fd);
            return false;
        }
        if (r == 0) break;
        out->insert(out->end(), buf, buf + r);
    }
    ::close(fd);
    return true;
}

std::string hex(const std::string& s) {
    static const char* digits = "0123456789abcdef";
    std::string h;
    h.reserve(s.size() * 2);
    for (unsigned char c : s) {
        h.push_back(digits[c >> 4]);
        h.push_back(digits[c & 15]);
    }
    return h;
}

std::string unhex(const std::string& h) {
    auto val = [](char c) -> int {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        return -1;
    };
    std::string s;
    for (size_t i = 0; i + 1 < h.size(); i += 2) {
        const int a = val(h[i]), b = val(h[i + 1]);
        if (a < 0 || b < 0) return {};
        s.push_back(char(a * 16 + b));
    }
    return s;
}

Store::Store(std::string dir) : dir_(std::move(dir)) {
    while (dir_.size() > 1 && dir_.back() == '/') dir_.pop_back();
}

bool Store::prepare(std::string* error) {
    if (!persistent()) return true;
    if (!make_dirs(dir_)) {
        if (error) *error = "cannot create state directory " + dir_ + ": " + std::strerror(errno);
        return false;
    }
    // Temporary files of writes that a kill interrupted are left-overs.
    std::error_code ec;
    for (auto it = std::filesystem::recursive_directory_iterator(dir_, ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
        if (it->is_regular_file(ec) && it->path().filename().string().find(".tmp.") != std::string::npos) {
            std::filesystem::remove(it->path(), ec);
        }
    }
    return true;
}

bool Store::put(const std::string& key, const std::vector<uint8_t>& value) {
    return put_parts(key, {{value.data(), value.size()}});
}

bool Store::put_parts(const std::string& key, const std::vector<std::pair<const uint8_t*, size_t>>& parts) {
    if (!persistent()) return true;
    return write_file_atomic(path(key), parts);
}

bool Store::get(const std::string& key, std::vector<uint8_t>* value) const {
    return persistent() && read_file(path(key), value);
}

void Store::remove(const std::string& key) {
    if (persistent()) ::unlink(path(key).c_str());
}

std::vector<std::string> Store::list(const std::string& prefix) const {
    std::vector<std::string> keys;
    if (!persistent()) return keys;
    DIR* d = ::opendir(path(prefix).c_str());
    if (d == nullptr) return keys;
    while (dirent* e = ::readdir(d)) {
        const std::string name = e->d_name;
        if (name == "." || name == ".." || name.find(".tmp.") != std::string::npos) continue;
        keys.push_back(prefix + name);
    }
    ::closedir(d);
    std::sort(keys.begin(), keys.end());
    return keys;
}

}  // namespace kvnsim
