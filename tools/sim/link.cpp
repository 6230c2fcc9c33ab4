// Moving bytes for the simulator: the listen address, reading frames into
// recycled buffers, and writing answers whole.
#include "link.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

namespace kvnsim {
namespace {

// Buffers for large bodies are recycled: a file's packets are freed together
// when it is replaced, and handing that memory back to the system only to fault
// it in again for the next upload costs more than the packets' own copy.
class BodyPool {
public:
    static constexpr size_t kSize = Reader::kBufferSize;
    static constexpr size_t kKeep = 512;

    std::shared_ptr<uint8_t[]> get(size_t n) {
        if (n > kSize) return std::shared_ptr<uint8_t[]>(new uint8_t[n]);
        uint8_t* p = nullptr;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (!free_.empty()) {
                p = free_.back();
                free_.pop_back();
            }
        }
        if (p == nullptr) p = new uint8_t[kSize];
        return std::shared_ptr<uint8_t[]>(p, [this](uint8_t* b) { put(b); });
    }

private:
    void put(uint8_t* b) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (free_.size() < kKeep) {
                free_.push_back(b);
                return;
            }
        }
        delete[] b;
    }
    std::mutex mutex_;
    std::vector<uint8_t*> free_;
};

BodyPool& body_pool() {
    static BodyPool* pool = new BodyPool;  // outlives every buffer it hands out
    return *pool;
}

}  // namespace

bool parse_listen(const std::string& text, sockaddr_in* addr) {
    std::string host = text, port = "0";
    const size_t colon = text.rfind(':');
    if (colon != std::string::npos) {
        host = text.substr(0, colon);
        port = text.substr(colon + 1);
    }
    if (host.empty() || host == "localhost") host = "127.0.0.1";
    char* end = nullptr;
    const unsigned long p = std::strtoul(port.c_str(), &end, 10);
    if (port.empty() || *end != 0 || p > 65535) return false;
    std::memset(addr, 0, sizeof *addr);
    addr->sin_family = AF_INET;
    addr->sin_port = htons(uint16_t(p));
    return ::inet_pton(AF_INET, host.c_str(), &addr->sin_addr) == 1;
}

Reader::Reader(int fd, bool tty, int wake) : fd_(fd), tty_(tty), wake_(wake) {
    buf_ = body_pool().get(kBufferSize);
    cap_ = kBufferSize;
}

// Makes at least n bytes available; false when the link ended or the server stops.
bool Reader::need(size_t n) {
    if (end_ - begin_ >= n) return true;
    if (cap_ - begin_ < n) {
        if (cap_ < n) {
            std::shared_ptr<uint8_t[]> bigger(new uint8_t[n]);
            std::memcpy(bigger.get(), buf_.get() + begin_, end_ - begin_);
            buf_ = std::move(bigger);
            cap_ = n;
        } else {
            std::memmove(buf_.get(), buf_.get() + begin_, end_ - begin_);
        }
        end_ -= begin_;
        begin_ = 0;
    }
    while (end_ - begin_ < n) {
        const ssize_t r = fill(buf_.get() + end_, cap_ - end_);
        if (r <= 0) return false;
        end_ += size_t(r);
    }
    return true;
}

// Hands over the buffer holding the next `frame` bytes (they start at
// *offset in it) and goes on with a fresh buffer.
std::shared_ptr<uint8_t[]> Reader::detach(size_t frame, size_t* offset) {
    std::shared_ptr<uint8_t[]> out = std::move(buf_);
    *offset = begin_;
    const size_t rest = end_ - begin_ - frame;
    buf_ = body_pool().get(kBufferSize);
    cap_ = kBufferSize;
    if (rest > cap_) {
        buf_.reset(new uint8_t[rest]);
        cap_ = rest;
    }
    std::memcpy(buf_.get(), out.get() + begin_ + frame, rest);
    begin_ = 0;
    end_ = rest;
    return out;
}

// One read of at most max bytes: the count, or 0 when the link ended or the
// server stops.
ssize_t Reader::fill(uint8_t* dst, size_t max) {
    for (;;) {
        if (tty_) {
            pollfd p[2] = {{fd_, POLLIN, 0}, {wake_, POLLIN, 0}};
            const int r = ::poll(p, 2, -1);
            if (r < 0 && errno == EINTR) continue;
            if (r < 0 || p[1].revents != 0) return 0;
            if (!(p[0].revents & POLLIN)) {
                if (p[0].revents & (POLLHUP | POLLERR)) std::this_thread::sleep_for(std::chrono::milliseconds(5));
                continue;
            }
        }
        const ssize_t r = tty_ ? ::read(fd_, dst, max) : ::recv(fd_, dst, max, 0);
        if (r > 0) return r;
        if (r < 0 && errno == EINTR) continue;
        if (tty_ && r < 0 && (errno == EIO || errno == EAGAIN)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            continue;
        }
        return 0;
    }
}

bool write_all(int fd, bool tty, const uint8_t* p, size_t n) {
    while (n > 0) {
        const ssize_t w = tty ? ::write(fd, p, n) : ::send(fd, p, n, MSG_NOSIGNAL);
        if (w > 0) {
            p += w;
            n -= size_t(w);
            continue;
        }
        if (w < 0 && errno == EINTR) continue;
        if (tty && w < 0 && errno == EAGAIN) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            continue;
        }
        return false;
    }
    return true;
}

bool write_parts(int fd, bool tty, iovec* iov, int count) {
    if (tty) {
        for (int i = 0; i < count; ++i)
            if (!write_all(fd, tty, static_cast<const uint8_t*>(iov[i].iov_base), iov[i].iov_len)) return false;
        return true;
    }
    while (count > 0) {
        msghdr msg{};
        msg.msg_iov = iov;
        msg.msg_iovlen = size_t(count);
        const ssize_t w = ::sendmsg(fd, &msg, MSG_NOSIGNAL);
        if (w < 0 && errno == EINTR) continue;
        if (w <= 0) return false;
        size_t done = size_t(w);
        while (count > 0 && done >= iov->iov_len) {
            done -= iov->iov_len;
            ++iov;
            --count;
        }
        if (count > 0) {
            iov->iov_base = static_cast<uint8_t*>(iov->iov_base) + done;
            iov->iov_len -= done;
        }
    }
    return true;
}

}  // namespace kvnsim
