// The simulator's transports: a TCP listener with a thread per connection, or a
// pseudo-terminal served by one thread. Each thread reads request frames, hands
// them to the terminal and writes the answers, applying the connection's faults.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <list>
#include <mutex>
#include <thread>

#include "kvnsdk2.h"
#include "kvnsim.h"
#include "terminal.h"

namespace kvnsim {
namespace {

constexpr uint32_t kSync = 0xAABBCCDDu;
constexpr uint32_t kHeader = 24;                // request header, sync word included
constexpr uint32_t kMaxPayload = 1u << 20;      // larger requests are refused
constexpr uint32_t kOwnBuffer = 8192;           // bodies this large get a buffer of their own
constexpr uint32_t kWrongSync = 0x11223344u;

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

// Buffers for large bodies are recycled: a file's packets are freed together
// when it is replaced, and handing that memory back to the system only to fault
// it in again for the next upload costs more than the packets' own copy.
class BodyPool {
public:
    static constexpr size_t kSize = 65536 + 64;  // one file packet and its elements
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

// Reads from a socket or a pseudo-terminal into a buffer that holds a whole
// file packet. A large frame can leave with its buffer (the reader takes a fresh
// one), so that the terminal keeps the body where it arrived, without a copy.
class Reader {
public:
    Reader(int fd, bool tty, int wake) : fd_(fd), tty_(tty), wake_(wake) {
        buf_ = body_pool().get(BodyPool::kSize);
        cap_ = BodyPool::kSize;
    }

    // Makes at least n bytes available; false when the link ended or the server stops.
    bool need(size_t n) {
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
    const uint8_t* data() const { return buf_.get() + begin_; }
    void consume(size_t n) {
        begin_ += n;
        if (begin_ == end_) begin_ = end_ = 0;
    }
    // Hands over the buffer holding the next `frame` bytes (they start at
    // *offset in it) and goes on with a fresh buffer.
    std::shared_ptr<uint8_t[]> detach(size_t frame, size_t* offset) {
        std::shared_ptr<uint8_t[]> out = std::move(buf_);
        *offset = begin_;
        const size_t rest = end_ - begin_ - frame;
        buf_ = body_pool().get(BodyPool::kSize);
        cap_ = BodyPool::kSize;
        if (rest > cap_) {
            buf_.reset(new uint8_t[rest]);
            cap_ = rest;
        }
        std::memcpy(buf_.get(), out.get() + begin_ + frame, rest);
        begin_ = 0;
        end_ = rest;
        return out;
    }

private:
    // One read of at most max bytes: the count, or 0 when the link ended or the
    // server stops.
    ssize_t fill(uint8_t* dst, size_t max) {
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

    int fd_;
    bool tty_;
    int wake_;
    std::shared_ptr<uint8_t[]> buf_;
    size_t cap_ = 0;
    size_t begin_ = 0, end_ = 0;
};

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

}  // namespace

struct Simulator::Impl {
    Options options;
    std::unique_ptr<Store> store;
    std::unique_ptr<Terminal> terminal;
    int listener = -1;
    int wake[2] = {-1, -1};
    int pty_master = -1, pty_slave = -1;
    std::string pty_path;
    uint16_t port = 0;
    std::string host;
    std::atomic<bool> running{false};
    std::thread acceptor;

    struct Conn {
        int fd = -1;
        std::thread thread;
        std::atomic<bool> done{false};
    };
    std::mutex mutex;  // connections and faults
    std::list<Conn> conns;
    Faults faults;
    std::atomic<uint64_t> requests{0}, accepted{0};

    // Waits, but not past a stop.
    void pause_for(uint32_t ms) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
        while (running.load() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(
                end - std::chrono::steady_clock::now(), std::chrono::milliseconds(10)));
        }
    }

    // Serves one link until it ends or fails (a failure, such as memory running
    // out, ends that link only).
    void serve(int fd, bool tty, Faults f) {
        try {
            serve_frames(fd, tty, f);
        } catch (const std::exception&) {
        }
    }

    // Serves one link until it ends; returns when the connection is to be closed.
    void serve_frames(int fd, bool tty, Faults f) {
        Reader in(fd, tty, wake[0]);
        Session session;
        session.start_packets = f.start_packets;
        session.refuse_packet = f.refuse_packet;
        uint8_t head[28];
        uint8_t tail[4];
        while (running.load(std::memory_order_relaxed)) {
            if (!in.need(kHeader)) return;
            const uint8_t* h = in.data();
            if (le32(h) != kSync) {
                // The frame cannot be found: a socket is closed, a serial line
                // hunts for the next sync word.
                if (!tty) return;
                in.consume(1);
                continue;
            }
            const uint32_t word = le32(h + 8), command = le32(h + 16), n = le32(h + 20);
            Request rq;
            rq.header_id = le32(h + 4);
            rq.word = word;
            rq.type = uint16_t(word >> 16);
            rq.command = command;
            Reply reply;
            bool drop_after = false;
            if (n > kMaxPayload) {
                reply = Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                in.consume(kHeader);
                drop_after = !tty;
            } else {
                if (!in.need(kHeader + n + 4)) return;
                h = in.data();
                const uint32_t crc = crc32(0, h + 4, kHeader - 4 + n);
                if (crc != le32(h + kHeader + n)) {
                    reply = Reply::of(KVN_E_INVALID_DATA_RECEIVED);
                    in.consume(kHeader + n + 4);
                } else if (n >= kOwnBuffer) {
                    // A large body leaves with its buffer, which the terminal may
                    // keep (file packets are stored where they arrived).
                    size_t at = 0;
                    rq.body = in.detach(kHeader + n + 4, &at);
                    rq.data = rq.body.get() + at + kHeader;
                    rq.size = n;
                    reply = terminal->handle(session, rq);
                } else {
                    rq.data = h + kHeader;
                    rq.size = n;
                    reply = terminal->handle(session, rq);
                    in.consume(kHeader + n + 4);
                }
            }
            requests.fetch_add(1, std::memory_order_relaxed);
            if (reply.silent) {
                if (!tty) return;
                continue;
            }
            if (f.latency_ms) pause_for(f.latency_ms);
            if (f.no_answer) continue;

            const uint32_t len = uint32_t(reply.payload.size());
            put_le32(head, f.bad_sync ? kWrongSync : kSync);
            put_le32(head + 4, rq.header_id);
            put_le32(head + 8, word);
            put_le32(head + 12, 0);
            put_le32(head + 16, uint32_t(reply.status));
            put_le32(head + 20, 0);
            put_le32(head + 24, len);
            uint32_t crc = crc32(0, head + 4, 24);
            if (len) crc = crc32(crc, reply.payload.data(), len);
            put_le32(tail, f.bad_crc ? ~crc : crc);

            if (f.close_after_bytes >= 0 || f.byte_by_byte) {
                Bytes frame(head, head + 28);
                frame.insert(frame.end(), reply.payload.begin(), reply.payload.end());
                frame.insert(frame.end(), tail, tail + 4);
                size_t limit = frame.size();
                if (f.close_after_bytes >= 0 && uint64_t(f.close_after_bytes) < limit) limit = size_t(f.close_after_bytes);
                if (f.byte_by_byte) {
                    for (size_t i = 0; i < limit; ++i) {
                        if (!write_all(fd, tty, &frame[i], 1)) return;
                        if (f.byte_delay_us) std::this_thread::sleep_for(std::chrono::microseconds(f.byte_delay_us));
                    }
                } else if (!write_all(fd, tty, frame.data(), limit)) {
                    return;
                }
                if (f.close_after_bytes >= 0 && !tty) return;
            } else {
                iovec iov[3] = {{head, 28}, {reply.payload.data(), len}, {tail, 4}};
                if (len == 0) {
                    iov[1] = iov[2];
                    if (!write_parts(fd, tty, iov, 2)) return;
                } else if (!write_parts(fd, tty, iov, 3)) {
                    return;
                }
            }
            if ((reply.close_after || drop_after) && !tty) return;
        }
    }

    void reap(bool all) {
        std::lock_guard<std::mutex> lock(mutex);
        for (auto it = conns.begin(); it != conns.end();) {
            if (all || it->done.load()) {
                if (all && !it->done.load()) ::shutdown(it->fd, SHUT_RDWR);
                if (it->thread.joinable()) it->thread.join();
                ::close(it->fd);
                it = conns.erase(it);
            } else {
                ++it;
            }
        }
    }

    void accept_loop() {
        while (running.load()) {
            pollfd p[2] = {{listener, POLLIN, 0}, {wake[0], POLLIN, 0}};
            const int r = ::poll(p, 2, 1000);
            if (r < 0 && errno != EINTR) break;
            if (p[1].revents) break;
            reap(false);
            if (!(p[0].revents & POLLIN)) continue;
            const int fd = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
            if (fd < 0) continue;
            const int one = 1;
            ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
            accepted.fetch_add(1);
            std::lock_guard<std::mutex> lock(mutex);
            conns.emplace_back();
            Conn& c = conns.back();
            c.fd = fd;
            const Faults f = faults;
            c.thread = std::thread([this, &c, f] {
                serve(c.fd, false, f);
                ::shutdown(c.fd, SHUT_RDWR);
                c.done.store(true);
            });
        }
    }

    void pty_loop() {
        Faults f;
        {
            std::lock_guard<std::mutex> lock(mutex);
            f = faults;
        }
        serve(pty_master, true, f);
    }

    bool open_pty(std::string* error) {
        pty_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (pty_master < 0 || ::grantpt(pty_master) != 0 || ::unlockpt(pty_master) != 0) {
            if (error) *error = std::string("cannot create a pseudo-terminal: ") + std::strerror(errno);
            return false;
        }
        char name[256];
        if (::ptsname_r(pty_master, name, sizeof name) != 0) {
            if (error) *error = "cannot name the pseudo-terminal";
            return false;
        }
        pty_path = name;
        // The simulator keeps the line open itself, so that clients may come and
        // go without the line hanging up, and makes it raw so that nothing is
        // echoed or translated before a client configures it.
        pty_slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
        termios tio;
        if (pty_slave < 0 || ::tcgetattr(pty_slave, &tio) != 0) {
            if (error) *error = "cannot open " + pty_path;
            return false;
        }
        ::cfmakeraw(&tio);
        ::tcsetattr(pty_slave, TCSANOW, &tio);
        return true;
    }
};

Simulator::Simulator() : Simulator(Options{}) {}
Simulator::Simulator(Options options) : impl_(std::make_unique<Impl>()) {
    impl_->options = std::move(options);
    impl_->faults = impl_->options.faults;
}
Simulator::~Simulator() { stop(); }

bool Simulator::start(std::string* error) {
    Impl& m = *impl_;
    if (m.running.load()) return true;
    m.store = std::make_unique<Store>(m.options.state_dir);
    if (!m.store->prepare(error)) return false;
    m.terminal = std::make_unique<Terminal>(*m.store, m.options.prefill_logs);
    if (!m.terminal->load(error)) return false;
    if (!m.options.card.empty()) m.terminal->present_card(m.options.card);
    if (::pipe2(m.wake, O_CLOEXEC) != 0) {
        if (error) *error = "cannot create a pipe";
        return false;
    }
    if (m.options.serial) {
        if (!m.open_pty(error)) {
            stop();
            return false;
        }
        m.running.store(true);
        m.acceptor = std::thread([&m] { m.pty_loop(); });
        return true;
    }
    sockaddr_in addr;
    if (!parse_listen(m.options.listen, &addr)) {
        if (error) *error = "cannot read the listen address " + m.options.listen + " (want address:port)";
        stop();
        return false;
    }
    m.listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int one = 1;
    ::setsockopt(m.listener, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    if (m.listener < 0 || ::bind(m.listener, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
        ::listen(m.listener, 64) != 0) {
        if (error) *error = "cannot listen on " + m.options.listen + ": " + std::strerror(errno);
        stop();
        return false;
    }
    socklen_t len = sizeof addr;
    ::getsockname(m.listener, reinterpret_cast<sockaddr*>(&addr), &len);
    m.port = ntohs(addr.sin_port);
    char text[INET_ADDRSTRLEN];
    ::inet_ntop(AF_INET, &addr.sin_addr, text, sizeof text);
    m.host = text;
    m.running.store(true);
    m.acceptor = std::thread([&m] { m.accept_loop(); });
    return true;
}

void Simulator::stop() {
    Impl& m = *impl_;
    m.running.store(false);
    if (m.wake[1] >= 0) {
        const char c = 1;
        (void)!::write(m.wake[1], &c, 1);
    }
    if (m.acceptor.joinable()) m.acceptor.join();
    m.reap(true);
    for (int* fd : {&m.listener, &m.pty_master, &m.pty_slave, &m.wake[0], &m.wake[1]}) {
        if (*fd >= 0) ::close(*fd);
        *fd = -1;
    }
    m.terminal.reset();
    m.store.reset();
}

bool Simulator::running() const { return impl_->running.load(); }
uint16_t Simulator::port() const { return impl_->port; }
std::string Simulator::address() const { return impl_->host + ":" + std::to_string(impl_->port); }
std::string Simulator::serial_path() const { return impl_->pty_path; }

void Simulator::set_faults(const Faults& faults) {
    std::lock_guard<std::mutex> lock(impl_->mutex);
    impl_->faults = faults;
}
Faults Simulator::faults() const {
    std::lock_guard<std::mutex> lock(impl_->mutex);
    return impl_->faults;
}

void Simulator::present_finger(const std::string& user_id, uint8_t finger) {
    if (impl_->terminal) impl_->terminal->present_finger(user_id, finger);
}
void Simulator::remove_finger() {
    if (impl_->terminal) impl_->terminal->remove_finger();
}
void Simulator::present_card(const std::vector<uint8_t>& serial) {
    if (impl_->terminal) impl_->terminal->present_card(serial);
}
void Simulator::remove_card() {
    if (impl_->terminal) impl_->terminal->remove_card();
}
uint64_t Simulator::requests() const { return impl_->requests.load(); }
uint64_t Simulator::connections() const { return impl_->accepted.load(); }

}  // namespace kvnsim
