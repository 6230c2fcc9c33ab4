// TCP transport on POSIX sockets.
//
// Reads and writes try the socket first and wait with poll() only when it would
// block, so a response that is already in the receive buffer costs no extra
// system call; each wait is bounded by the configured per-chunk limit.
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "kvnsdk2.h"
#include "link/config.h"
#include "link/posix/wait.h"
#include "link/transport.h"

namespace kvn {
namespace {

#if defined(MSG_NOSIGNAL)
constexpr int kSendFlags = MSG_NOSIGNAL | MSG_DONTWAIT;
#else
constexpr int kSendFlags = MSG_DONTWAIT;  // SO_NOSIGPIPE is set on the socket instead
#endif

// Connects, waiting at most limit_ms (0: as long as the platform lets it): 0, or
// the errno value of the failure (ETIMEDOUT when the limit passed).
int connect_with_limit(int fd, const sockaddr_in& addr, int limit_ms) noexcept {
    const auto* sa = reinterpret_cast<const sockaddr*>(&addr);
    auto outcome = [fd](int wait) noexcept {
        if (wait != 1) return wait == 0 ? ETIMEDOUT : errno;
        int err = 0;
        socklen_t len = sizeof err;
        if (::getsockopt(fd, SOL_SOCKET, SO_ERROR, &err, &len) != 0) return errno;
        return err;
    };
    if (limit_ms <= 0) {
        if (::connect(fd, sa, sizeof addr) == 0) return 0;
        if (errno != EINTR) return errno;
        // An interrupted connect goes on in the background; wait for its outcome.
        return outcome(posix::wait_ready(fd, POLLOUT, 0));
    }
    const int flags = ::fcntl(fd, F_GETFL, 0);
    if (flags < 0 || ::fcntl(fd, F_SETFL, flags | O_NONBLOCK) != 0) return errno;
    int err = 0;
    if (::connect(fd, sa, sizeof addr) != 0) {
        err = errno;
        if (err == EINPROGRESS || err == EINTR) err = outcome(posix::wait_ready(fd, POLLOUT, limit_ms));
    }
    ::fcntl(fd, F_SETFL, flags);
    return err;
}

int32_t fail(int err, int32_t rc) noexcept {
    set_os_error(err);
    return rc;
}

int32_t tcp_open(kvn_device_conn* conn) noexcept {
#if defined(SOCK_CLOEXEC)
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
#else
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd >= 0) ::fcntl(fd, F_SETFD, FD_CLOEXEC);
#endif
    conn->link.socket = fd;  // stored before connecting: close releases it even after a failure
    if (fd < 0) return fail(errno, KVN_E_CONNECTION_FAILED);
    const int one = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
#if !defined(MSG_NOSIGNAL) && defined(SO_NOSIGPIPE)
    ::setsockopt(fd, SOL_SOCKET, SO_NOSIGPIPE, &one, sizeof one);
#endif
    sockaddr_in addr;
    std::memset(&addr, 0, sizeof addr);
    addr.sin_family = AF_INET;
    addr.sin_port = htons(conn->port);
    addr.sin_addr.s_addr = conn->ip_address != nullptr ? ::inet_addr(conn->ip_address) : INADDR_NONE;
    if (const int err = connect_with_limit(fd, addr, connect_timeout_ms()); err != 0) {
        return fail(err, KVN_E_CONNECTION_FAILED);
    }
    set_os_error(0);
    return 0;
}

int32_t tcp_close(kvn_device_conn* conn) noexcept {
    // The stored descriptor is left as it is; closing twice is the caller's error.
    if (::close(conn->link.socket) != 0) return fail(errno, -1);
    set_os_error(0);
    return 0;
}

// POSIX lets sendmsg take at least 16 buffers (_XOPEN_IOV_MAX); a send's parts go in one call.
static_assert(kMaxSendParts <= 16, "more parts than one sendmsg is sure to take");

int32_t tcp_send(kvn_conn_link* link, const ConstBuf* parts, size_t count) noexcept {
    if (count > kMaxSendParts) return fail(EINVAL, KVN_E_WRITE_TIMEOUT);
    iovec iov[kMaxSendParts];
    size_t n = 0;
    for (size_t i = 0; i < count; ++i) {
        if (parts[i].size == 0) continue;
        iov[n].iov_base = const_cast<uint8_t*>(parts[i].data);
        iov[n].iov_len = parts[i].size;
        ++n;
    }
    iovec* next = iov;
    const int fd = link->socket;
    while (n > 0) {
        msghdr msg{};
        msg.msg_iov = next;
        msg.msg_iovlen = static_cast<decltype(msg.msg_iovlen)>(n);
        const ssize_t sent = ::sendmsg(fd, &msg, kSendFlags);
        if (sent > 0) {
            size_t done = static_cast<size_t>(sent);
            while (n > 0 && done >= next->iov_len) {
                done -= next->iov_len;
                ++next;
                --n;
            }
            if (n > 0) {
                next->iov_base = static_cast<uint8_t*>(next->iov_base) + done;
                next->iov_len -= done;
            }
            continue;
        }
        if (sent == 0) return fail(EIO, KVN_E_WRITE_TIMEOUT);
        if (errno == EINTR) continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK) return fail(errno, KVN_E_WRITE_TIMEOUT);
        if (posix::wait_ready(fd, POLLOUT, write_timeout_ms()) != 1) return fail(errno, KVN_E_WRITE_TIMEOUT);
    }
    set_os_error(0);
    return 0;
}

int32_t tcp_receive(kvn_conn_link* link, uint8_t* buffer, uint32_t count) noexcept {
    const int fd = link->socket;
    uint32_t received = 0;
    while (received < count) {
        const ssize_t r = ::recv(fd, buffer + received, count - received, MSG_DONTWAIT);
        if (r > 0) {
            received += static_cast<uint32_t>(r);
            continue;
        }
        if (r == 0) return fail(ECONNRESET, KVN_E_READ_TIMEOUT);  // the peer closed the connection
        if (errno == EINTR) continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK) return fail(errno, KVN_E_READ_TIMEOUT);
        if (posix::wait_ready(fd, POLLIN, read_timeout_ms()) != 1) return fail(errno, KVN_E_READ_TIMEOUT);
    }
    set_os_error(0);
    return 0;
}

// Payload and CRC in one recvmsg() when both have arrived; the CRC runs over each
// chunk of the payload right after the copy that brought it.
int32_t tcp_receive_parts(kvn_conn_link* link, const MutBuf* parts, size_t count, uint32_t* crc) noexcept {
    if (count > kMaxReceiveParts) return fail(EINVAL, KVN_E_READ_TIMEOUT);
    iovec iov[kMaxReceiveParts];
    size_t n = 0;
    for (size_t i = 0; i < count; ++i) {
        if (parts[i].size == 0) continue;
        iov[n].iov_base = parts[i].data;
        iov[n].iov_len = parts[i].size;
        ++n;
    }
    FoldAsRead fold(crc, count != 0 ? parts[0] : MutBuf{nullptr, 0});
    iovec* next = iov;
    const int fd = link->socket;
    while (n > 0) {
        msghdr msg{};
        msg.msg_iov = next;
        msg.msg_iovlen = static_cast<decltype(msg.msg_iovlen)>(n);
        const ssize_t r = ::recvmsg(fd, &msg, MSG_DONTWAIT);
        if (r > 0) {
            fold.arrived(static_cast<size_t>(r));
            size_t done = static_cast<size_t>(r);
            while (n > 0 && done >= next->iov_len) {
                done -= next->iov_len;
                ++next;
                --n;
            }
            if (n > 0) {
                next->iov_base = static_cast<uint8_t*>(next->iov_base) + done;
                next->iov_len -= done;
            }
            continue;
        }
        if (r == 0) return fail(ECONNRESET, KVN_E_READ_TIMEOUT);  // the peer closed the connection
        if (errno == EINTR) continue;
        if (errno != EAGAIN && errno != EWOULDBLOCK) return fail(errno, KVN_E_READ_TIMEOUT);
        if (posix::wait_ready(fd, POLLIN, read_timeout_ms()) != 1) return fail(errno, KVN_E_READ_TIMEOUT);
    }
    set_os_error(0);
    return 0;
}

constexpr Transport kTcp{tcp_send, tcp_receive, tcp_open, tcp_close, tcp_receive_parts};

}  // namespace

const Transport& tcp_transport() noexcept { return kTcp; }

}  // namespace kvn
