// TCP transport on Windows Sockets 2.
//
// Every open starts the socket library once (version 2.2) and every close cleans
// it up once, so opens and closes must pair; the platform counts them. An open that
// fails before it has a socket cleans up itself and stores INVALID_SOCKET.
//
// The socket is non-blocking once connected. Reads and writes try it first and wait
// with select() only when it would block, each wait bounded by the per-chunk limit:
// a blocking send of a large frame would wait inside the call, with no limit, for a
// terminal that has stopped reading.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <cstring>

#include "kvnsdk2.h"
#include "link/config.h"
#include "link/transport.h"

namespace kvn {
namespace {

int32_t fail(int err, int32_t rc) noexcept {
    set_os_error(err);
    return rc;
}

// 1 ready, 0 time limit passed (WSAETIMEDOUT), -1 error (WSAGetLastError() says
// which). A limit of 0 or below waits without limit.
int wait_ready(SOCKET s, bool for_write, int32_t ms, int* err) noexcept {
    fd_set set, errors;
    FD_ZERO(&set);
    FD_ZERO(&errors);
    FD_SET(s, &set);
    FD_SET(s, &errors);
    timeval tv;
    tv.tv_sec = static_cast<long>(ms / 1000);
    tv.tv_usec = static_cast<long>((ms % 1000) * 1000);
    // A failed connect shows in the error set; anything else there surfaces at the
    // next send or recv.
    const int r = ::select(0, for_write ? nullptr : &set, for_write ? &set : nullptr, &errors, ms > 0 ? &tv : nullptr);
    if (r == SOCKET_ERROR) {
        *err = ::WSAGetLastError();
        return -1;
    }
    if (r == 0) {
        *err = WSAETIMEDOUT;
        return 0;
    }
    return 1;
}

// Connects within ms (0: as long as the platform lets it) and leaves the socket
// non-blocking: 0, or the Windows Sockets error.
int connect_with_limit(SOCKET s, const sockaddr_in& addr, int32_t ms) noexcept {
    u_long nonblocking = 1;
    if (::ioctlsocket(s, FIONBIO, &nonblocking) != 0) return ::WSAGetLastError();
    if (::connect(s, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) == 0) return 0;
    int err = ::WSAGetLastError();
    if (err != WSAEWOULDBLOCK) return err;
    if (wait_ready(s, true, ms, &err) != 1) return err;
    int so_error = 0;
    int len = sizeof so_error;
    if (::getsockopt(s, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&so_error), &len) != 0) {
        return ::WSAGetLastError();
    }
    return so_error;
}

WSADATA g_wsa;  // one start-up data block serves every open

int32_t tcp_open(kvn_device_conn* conn) noexcept {
    conn->link.socket = static_cast<kvn_socket_t>(INVALID_SOCKET);
    if (const int err = ::WSAStartup(MAKEWORD(2, 2), &g_wsa); err != 0) {
        diagnostic("Failed. Error Code : %d", ::WSAGetLastError());
        return fail(err, KVN_E_CONNECTION_FAILED);
    }
    const SOCKET s = ::socket(AF_INET, SOCK_STREAM, 0);
    if (s == INVALID_SOCKET) {
        const int err = ::WSAGetLastError();
        ::WSACleanup();
        return fail(err, KVN_E_CONNECTION_FAILED);
    }
    conn->link.socket = static_cast<kvn_socket_t>(s);  // stored before connecting: close releases it
    const BOOL one = TRUE;
    ::setsockopt(s, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&one), sizeof one);
    sockaddr_in addr;
    std::memset(&addr, 0, sizeof addr);
    addr.sin_family = AF_INET;
    addr.sin_port = ::htons(conn->port);
    addr.sin_addr.s_addr = conn->ip_address != nullptr ? ::inet_addr(conn->ip_address) : INADDR_NONE;
    if (const int err = connect_with_limit(s, addr, connect_timeout_ms()); err != 0) {
        return fail(err, KVN_E_CONNECTION_FAILED);
    }
    set_os_error(0);
    return 0;
}

int32_t tcp_close(kvn_device_conn* conn) noexcept {
    const SOCKET s = static_cast<SOCKET>(conn->link.socket);
    if (s == INVALID_SOCKET) return fail(WSAENOTSOCK, -1);  // the failed open cleaned up already
    const int r = ::closesocket(s);
    const int err = r == 0 ? 0 : ::WSAGetLastError();
    ::WSACleanup();
    return r == 0 ? fail(0, 0) : fail(err, -1);
}

int32_t tcp_send(kvn_conn_link* link, const ConstBuf* parts, size_t count) noexcept {
    if (count > kMaxSendParts) return fail(WSAEINVAL, KVN_E_WRITE_TIMEOUT);
    WSABUF bufs[kMaxSendParts];
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
        DWORD sent = 0;
        if (::WSASend(s, next, n, &sent, 0, nullptr, nullptr) == SOCKET_ERROR) {
            int err = ::WSAGetLastError();
            if (err == WSAEINTR) continue;
            if (err != WSAEWOULDBLOCK || wait_ready(s, true, write_timeout_ms(), &err) != 1) {
                return fail(err, KVN_E_WRITE_TIMEOUT);
            }
            continue;
        }
        if (sent == 0) return fail(WSAECONNRESET, KVN_E_WRITE_TIMEOUT);
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
    set_os_error(0);
    return 0;
}

int32_t tcp_receive(kvn_conn_link* link, uint8_t* buffer, uint32_t count) noexcept {
    const SOCKET s = static_cast<SOCKET>(link->socket);
    uint32_t received = 0;
    while (received < count) {
        const uint32_t want = count - received;
        const int r = ::recv(s, reinterpret_cast<char*>(buffer + received),
                             static_cast<int>(want > 0x7FFFFFFFu ? 0x7FFFFFFFu : want), 0);
        if (r > 0) {
            received += static_cast<uint32_t>(r);
            continue;
        }
        if (r == 0) return fail(WSAECONNRESET, KVN_E_READ_TIMEOUT);  // the peer closed the connection
        int err = ::WSAGetLastError();
        if (err == WSAEINTR) continue;
        if (err != WSAEWOULDBLOCK || wait_ready(s, false, read_timeout_ms(), &err) != 1) {
            return fail(err, KVN_E_READ_TIMEOUT);
        }
    }
    set_os_error(0);
    return 0;
}

// Payload and CRC in one WSARecv() when both have arrived; the CRC runs over each
// chunk of the payload right after the copy that brought it.
int32_t tcp_receive_parts(kvn_conn_link* link, const MutBuf* parts, size_t count, uint32_t* crc) noexcept {
    if (count > kMaxReceiveParts) return fail(WSAEINVAL, KVN_E_READ_TIMEOUT);
    WSABUF bufs[kMaxReceiveParts];
    DWORD n = 0;
    for (size_t i = 0; i < count; ++i) {
        if (parts[i].size == 0) continue;
        bufs[n].buf = reinterpret_cast<CHAR*>(parts[i].data);
        bufs[n].len = parts[i].size;
        ++n;
    }
    FoldAsRead fold(crc, count != 0 ? parts[0] : MutBuf{nullptr, 0});
    const SOCKET s = static_cast<SOCKET>(link->socket);
    WSABUF* next = bufs;
    while (n > 0) {
        DWORD received = 0, flags = 0;
        if (::WSARecv(s, next, n, &received, &flags, nullptr, nullptr) == SOCKET_ERROR) {
            int err = ::WSAGetLastError();
            if (err == WSAEINTR) continue;
            if (err != WSAEWOULDBLOCK || wait_ready(s, false, read_timeout_ms(), &err) != 1) {
                return fail(err, KVN_E_READ_TIMEOUT);
            }
            continue;
        }
        if (received == 0) return fail(WSAECONNRESET, KVN_E_READ_TIMEOUT);  // the peer closed the connection
        fold.arrived(received);
        while (n > 0 && received >= next->len) {
            received -= next->len;
            ++next;
            --n;
        }
        if (n > 0) {
            next->buf += received;
            next->len -= received;
        }
    }
    set_os_error(0);
    return 0;
}

constexpr Transport kTcp{tcp_send, tcp_receive, tcp_open, tcp_close, tcp_receive_parts};

}  // namespace

const Transport& tcp_transport() noexcept { return kTcp; }

}  // namespace kvn
