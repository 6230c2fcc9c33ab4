#include "peer.h"

#include <cstring>

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

#include "link/crc32.h"

namespace kvntest {

void close_socket(sock_t s) {
#ifdef _WIN32
    closesocket(static_cast<SOCKET>(s));
#else
    ::close(s);
#endif
}

LoopbackPeer::LoopbackPeer(std::function<void(sock_t)> script) {
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
    addr.sin_port = 0;
    ::bind(listener_, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
    ::listen(listener_, 4);
    socklen_t len = sizeof addr;
    ::getsockname(listener_, reinterpret_cast<sockaddr*>(&addr), &len);
    port_ = ntohs(addr.sin_port);
    thread_ = std::thread([this, script = std::move(script)] {
        const sock_t s = static_cast<sock_t>(::accept(listener_, nullptr, nullptr));
        script(s);
        close_socket(s);
    });
}

LoopbackPeer::~LoopbackPeer() {
    if (thread_.joinable()) thread_.join();
    close_socket(listener_);
#ifdef _WIN32
    WSACleanup();
#endif
}

kvn_device_conn LoopbackPeer::conn() const {
    kvn_device_conn c;
    std::memset(&c, 0, sizeof c);
    c.ip_address = "127.0.0.1";
    c.port = port_;
    c.link.conn_type = KVN_CONN_TCP;
    return c;
}

Bytes read_bytes(sock_t s, size_t n) {
    Bytes b(n);
    size_t got = 0;
    while (got < n) {
        const auto r = ::recv(s, reinterpret_cast<char*>(b.data() + got), static_cast<int>(n - got), 0);
        if (r <= 0) break;
        got += static_cast<size_t>(r);
    }
    b.resize(got);
    return b;
}

Bytes read_request(sock_t s) {
    Bytes b = read_bytes(s, 24);
    if (b.size() < 24) return b;
    const uint32_t n = get_le32(b.data() + 20);
    Bytes rest = read_bytes(s, n + 4);
    b.insert(b.end(), rest.begin(), rest.end());
    return b;
}

void write_bytes(sock_t s, const Bytes& b) {
    size_t sent = 0;
    while (sent < b.size()) {
        const auto r = ::send(s, reinterpret_cast<const char*>(b.data() + sent), static_cast<int>(b.size() - sent), 0);
        if (r <= 0) return;
        sent += static_cast<size_t>(r);
    }
}

void put_le32(Bytes& b, uint32_t v) {
    for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

uint32_t get_le32(const uint8_t* p) {
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 | static_cast<uint32_t>(p[2]) << 16 |
           static_cast<uint32_t>(p[3]) << 24;
}

Bytes response(int32_t status, const Bytes& payload) {
    Bytes b;
    put_le32(b, 0xAABBCCDDu);
    put_le32(b, 0x01010101u);
    put_le32(b, 0x00020002u);
    put_le32(b, 0);
    put_le32(b, static_cast<uint32_t>(status));
    put_le32(b, 0);
    put_le32(b, static_cast<uint32_t>(payload.size()));
    b.insert(b.end(), payload.begin(), payload.end());
    put_le32(b, kvn::crc32(0, b.data() + 4, b.size() - 4));
    return b;
}

}  // namespace kvntest
