// TCP transport on Windows Sockets 2.
//
// Every open starts the socket library once (version 2.2) and every close cleans
// it up once, so opens and closes must pair; the platform counts them.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <cstring>

#include "kvnsdk2.h"
#include "link/config.h"
#include "link/transport.h"

namespace kvn {
namespace {

timeval limit_of(int32_t ms) noexcept {
    timeval tv;
    tv.tv_sec = static_cast<long>(ms / 1000);
    tv.tv_usec = static_cast<long>((ms % 1000) * 1000);
    return tv;
}

// 1 ready, 0 time limit passed, -1 error.
int wait_ready(SOCKET s, bool for_write, int32_t ms) noexcept {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(s, &set);
    timeval tv = limit_of(ms);
    const int r = ::select(0, for_write ? nullptr : &set, for_write ? &set : nullptr, nullptr, &tv);
    return r == SOCKET_ERROR ? -1 : (r > 0 ? 1 : 0);
}

int connect_with_limit(SOCKET s, const sockaddr_in& addr, int32_t ms) noexcept {
    const auto* sa = reinterpret_cast<const sockaddr*>(&addr);
    if (ms <= 0) return ::connect(s, sa, sizeof addr) == SOCKET_ERROR ? -1 : 0;
    u_long nonblocking = 1;
    if (::ioctlsocket(s, FIONBIO, &nonblocking) != 0) return -1;
    int r = ::connect(s, sa, sizeof addr);
    if (r == SOCKET_ERROR && ::WSAGetLastError() == WSAEWOULDBLOCK) {
        fd_set wset, eset;
        FD_ZERO(&wset);
        FD_ZERO(&eset);
        FD_SET(s, &wset);
        FD_SET(s, &eset);
        timeval tv = limit_of(ms);
        r = (::select(0, nullptr, &wset, &eset, &tv) > 0 && FD_ISSET(s, &wset)) ? 0 : -1;
    }
    nonblocking = 0;
    ::ioctlsocket(s, FIONBIO, &nonblocking);
    return r == 0 ? 0 : -1;
}

WSADATA g_wsa;  // one start-up data block serves every open

int32_t tcp_open(kvn_device_conn* conn) noexcept {
    if (::WSAStartup(MAKEWORD(2, 2), &g_wsa) != 0) {
        diagnostic("Failed. Error Code : %d", ::WSAGetLastError());
        return KVN_E_CONNECTION_FAILED;
    }
    const SOCKET s = ::socket(AF_INET, SOCK_STREAM, 0);
    conn->link.socket = static_cast<kvn_socket_t>(s);  // stored before connecting: close releases it
    if (s == INVALID_SOCKET) return KVN_E_CONNECTION_FAILED;
    const BOOL one = TRUE;
    ::setsockopt(s, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&one), sizeof one);
    sockaddr_in addr;
    std::memset(&addr, 0, sizeof addr);
    addr.sin_family = AF_INET;
    addr.sin_port = ::htons(conn->port);
    addr.sin_addr.s_addr = conn->ip_address != nullptr ? ::inet_addr(conn->ip_address) : INADDR_NONE;
    if (connect_with_limit(s, addr, connect_timeout_ms()) != 0) return KVN_E_CONNECTION_FAILED;
    return 0;
}

int32_t tcp_close(kvn_device_conn* conn) noexcept {
    const int r = ::closesocket(static_cast<SOCKET>(conn->link.socket));
    ::WSACleanup();
    return r == 0 ? 0 : -1;
}

int32_t tcp_send(kvn_conn_link* link, const ConstBuf* parts, size_t count) noexcept {
    constexpr size_t kMaxParts = 8;
    if (count > kMaxParts) return KVN_E_WRITE_TIMEOUT;
    WSABUF bufs[kMaxParts];
    DWORD n = 0;
    for (size_t i = 0; i < count; ++i) {
        if (parts[i].size == 0) continue;
        bufs[n].buf = reinterpret_cast<CHAR*>(const_cast<uint8_t*>(parts[i].data));
        bufs[n].len = parts[i].size;
        ++n;
    }
    const SOCKET s = static_cast<SOCKET>(link->socket);
    WSABUF* next = bufs;
    while (n > 0) {
        if (wait_ready(s, true, write_timeout_ms()) != 1) return KVN_E_WRITE_TIMEOUT;
        DWORD sent = 0;
        if (::WSASend(s, next, n, &sent, 0, nullptr, nullptr) == SOCKET_ERROR || sent == 0) {
            return KVN_E_WRITE_TIMEOUT;
        }
        while (n > 0 && sent >= next->len) {
            sent -= next->len;
            ++next;
            --n;
        }
        if (n > 0) {
            next->buf += sent;
            next->len -= sent;
        }
    }
    return 0;
}

int32_t tcp_receive(kvn_conn_link* link, uint8_t* buffer, uint32_t count) noexcept {
    const SOCKET s = static_cast<SOCKET>(link->socket);
    uint32_t received = 0;
    while (received < count) {
        if (wait_ready(s, false, read_timeout_ms()) != 1) return KVN_E_READ_TIMEOUT;
        const uint32_t want = count - received;
        const int r = ::recv(s, reinterpret_cast<char*>(buffer + received),
                             static_cast<int>(want > 0x7FFFFFFFu ? 0x7FFFFFFFu : want), 0);
        if (r <= 0) return KVN_E_READ_TIMEOUT;
        received += static_cast<uint32_t>(r);
    }
    return 0;
}

constexpr Transport kTcp{tcp_send, tcp_receive, tcp_open, tcp_close};

}  // namespace

const Transport& tcp_transport() noexcept { return kTcp; }

}  // namespace kvn
