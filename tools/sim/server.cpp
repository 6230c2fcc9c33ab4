// The connection loop: a TCP listener with a thread per connection, or a
// pseudo-terminal served by one thread. Each thread reads request frames, hands
// them to the terminal and writes the answers, applying the connection's faults.
// The bytes themselves move through link.cpp; what a request means is the
// terminal's business.
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
#include "link.h"
#include "terminal.h"

namespace kvnsim {
namespace {

constexpr uint32_t kSync = 0xAABBCCDDu;
constexpr uint32_t kHeader = 24;                // request header, sync word included
constexpr uint32_t kMaxPayload = 1u << 20;      // larger requests are refused
constexpr uint32_t kOwnBuffer = 8192;           // bodies this large get a buffer of their own
constexpr uint32_t kWrongSync = 0x11223344u;

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
