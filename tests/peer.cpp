#include "peer.h"

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace kvntest {

namespace {
constexpr sock_t kNone = static_cast<sock_t>(-1);

// Whether a connection waits on the listener, after at most `ms`.
bool pending(sock_t listener, int ms) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(listener, &set);
    timeval limit{0, ms * 1000};
    return ::select(static_cast<int>(listener) + 1, &set, nullptr, nullptr, &limit) == 1;
}
}  // namespace

#ifdef _WIN32
void close_socket(sock_t s) { closesocket(static_cast<SOCKET>(s)); }
static void shut_down(sock_t s) { ::shutdown(static_cast<SOCKET>(s), SD_BOTH); }
#else
void close_socket(sock_t s) { ::close(s); }
static void shut_down(sock_t s) { ::shutdown(s, SHUT_RDWR); }
#endif

LoopbackPeer::LoopbackPeer(std::function<void(sock_t)> script) : peer_(kNone) {
#ifdef _WIN32
    // Windows Sockets is started for the peer's lifetime only (and cleaned up in the
    // destructor), never for the whole process: tests check that the library's own
    // start-ups and clean-ups pair, which a process-wide start-up would hide.
    WSADATA wsa;
    WSAStartup(MAKEWORD(2, 2), &wsa);
#endif
    listener_ = static_cast<sock_t>(::socket(AF_INET, SOCK_STREAM, 0));
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(listener_, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
    ::listen(listener_, 4);
    socklen_t len = sizeof addr;
    ::getsockname(listener_, reinterpret_cast<sockaddr*>(&addr), &len);
    port_ = ntohs(addr.sin_port);
    thread_ = std::thread([this, script = std::move(script)] {
        // A connection made before the destructor ran is still served.
        bool ready = false;
        while (!(ready = pending(listener_, 20)) && !stop_) continue;
        if (ready) {
            const sock_t s = static_cast<sock_t>(::accept(listener_, nullptr, nullptr));
            peer_ = s;
            script(s);
            close_socket(s);
        }
        ended_ = true;
    });
}

LoopbackPeer::~LoopbackPeer() {
    stop_ = true;
    if (!wait_until([this] { return ended_.load(); })) {
        ADD_FAILURE() << "the peer's script did not end; its connection is shut down";
        shut_down(peer_.load());
    }
    thread_.join();
    close_socket(listener_);
#ifdef _WIN32
    WSACleanup();
#endif
}

Bytes read_bytes(sock_t s, size_t n) {
    Bytes b(n);
    size_t got = 0;
    for (int r; got < n && (r = static_cast<int>(::recv(s, reinterpret_cast<char*>(b.data() + got), static_cast<int>(n - got), 0))) > 0;)
        got += static_cast<size_t>(r);
    b.resize(got);
    return b;
}

Bytes read_request(sock_t s) {
    Bytes b = read_bytes(s, 24);
    if (b.size() < 24) return b;
    Bytes rest = read_bytes(s, get_le32(b.data() + 20) + size_t{4});
    b.insert(b.end(), rest.begin(), rest.end());
    return b;
}

void write_bytes(sock_t s, const Bytes& b) {
    size_t sent = 0;
    for (int r; sent < b.size() && (r = static_cast<int>(::send(s, reinterpret_cast<const char*>(b.data() + sent), static_cast<int>(b.size() - sent), 0))) > 0;)
        sent += static_cast<size_t>(r);
}

}  // namespace kvntest
