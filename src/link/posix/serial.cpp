// Serial transport on POSIX terminals: raw 8N1 at the record's baud rate, no flow
// control, the port held exclusively. Reads and writes block until the whole count
// is done, with no time limit unless kvn_ext_apply_timeouts_to_serial() bounds them.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/uio.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "kvnsdk2.h"
#include "link/config.h"
#include "link/posix/wait.h"
#include "link/transport.h"

namespace kvn {
namespace {

struct BaudEntry {
    uint32_t rate;
    speed_t code;
};

constexpr BaudEntry kBauds[] = {
    {50, B50},         {75, B75},         {110, B110},       {134, B134},       {150, B150},
    {200, B200},       {300, B300},       {600, B600},       {1200, B1200},     {1800, B1800},
    {2400, B2400},     {4800, B4800},     {9600, B9600},     {19200, B19200},   {38400, B38400},
#ifdef B57600
    {57600, B57600},
#endif
#ifdef B115200
    {115200, B115200},
#endif
#ifdef B230400
    {230400, B230400},
#endif
#ifdef B460800
    {460800, B460800},
#endif
#ifdef B921600
    {921600, B921600},
#endif
};

bool baud_code(uint32_t rate, speed_t* code) noexcept {
    for (const BaudEntry& e : kBauds) {
        if (e.rate == rate) {
            *code = e.code;
            return true;
        }
    }
    return false;
}

// The wide device name as a UTF-8 path; false when it does not fit.
bool to_path(const wchar_t* name, char* out, size_t size) noexcept {
    size_t n = 0;
    for (; *name != 0; ++name) {
        const uint32_t c = static_cast<uint32_t>(*name);
        char buf[4];
        size_t len;
        if (c < 0x80) {
            buf[0] = static_cast<char>(c);
            len = 1;
        } else if (c < 0x800) {
            buf[0] = static_cast<char>(0xC0 | (c >> 6));
            buf[1] = static_cast<char>(0x80 | (c & 0x3F));
            len = 2;
        } else if (c < 0x10000) {
            buf[0] = static_cast<char>(0xE0 | (c >> 12));
            buf[1] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            buf[2] = static_cast<char>(0x80 | (c & 0x3F));
            len = 3;
        } else if (c < 0x110000) {
            buf[0] = static_cast<char>(0xF0 | (c >> 18));
            buf[1] = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            buf[2] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            buf[3] = static_cast<char>(0x80 | (c & 0x3F));
            len = 4;
        } else {
            return false;
        }
        if (n + len >= size) return false;
        std::memcpy(out + n, buf, len);
        n += len;
    }
    out[n] = 0;
    return n > 0;
}

int32_t fail(int err, int32_t rc) noexcept {
    set_os_error(err);
    return rc;
}

// Closes a port that failed to open fully; the record must not keep a descriptor
// that the system may hand out again.
int32_t fail_open(kvn_device_conn* conn, int fd, int err, int32_t rc) noexcept {
    ::close(fd);
    conn->link.serial_handle = -1;
    return fail(err, rc);
}

int32_t serial_open(kvn_device_conn* conn) noexcept {
    char path[1024];
    conn->link.serial_handle = -1;
    if (conn->serial_port == nullptr || !to_path(conn->serial_port, path, sizeof path)) {
        return fail(EINVAL, KVN_E_CONNECTION_FAILED);
    }
    // Non-blocking, so that a port waiting for carrier detect cannot hold the open;
    // the flag is cleared once CLOCAL is set.
    int fd;
    do {
        fd = ::open(path, O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    } while (fd < 0 && errno == EINTR);
    conn->link.serial_handle = fd;
    if (fd < 0) return fail(errno, KVN_E_CONNECTION_FAILED);

    termios tio;
    if (::tcgetattr(fd, &tio) != 0) return fail_open(conn, fd, errno, KVN_E_CONNECTION_FAILED);
    // The port is ours alone, as with share mode 0 on Windows: TIOCEXCL refuses later
    // opens by other programs (root excepted), the lock refuses other connections of
    // any program that locks, root's included. A port already held is a failed open;
    // a device that takes no locks at all still has TIOCEXCL.
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        return fail_open(conn, fd, EBUSY, KVN_E_CONNECTION_FAILED);
    }
    if (::ioctl(fd, TIOCEXCL) != 0) return fail_open(conn, fd, errno, KVN_E_CONNECTION_FAILED);

    // A configuration the port refuses is a write failure (-3), unlike a port
    // that cannot be opened or queried (-5).
    speed_t speed;
    if (!baud_code(conn->baud_rate, &speed)) return fail_open(conn, fd, EINVAL, KVN_E_WRITE_TIMEOUT);
    ::cfmakeraw(&tio);
    tio.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | CSTOPB);
#ifdef CRTSCTS
    tio.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS);  // no hardware flow control
#endif
    tio.c_cflag |= CS8 | CLOCAL | CREAD;
    tio.c_iflag &= ~static_cast<tcflag_t>(IXON | IXOFF | IXANY);  // nor software flow control
    tio.c_cc[VMIN] = 1;
    tio.c_cc[VTIME] = 0;
    if (::cfsetispeed(&tio, speed) != 0 || ::cfsetospeed(&tio, speed) != 0 || ::tcsetattr(fd, TCSANOW, &tio) != 0) {
        return fail_open(conn, fd, errno, KVN_E_WRITE_TIMEOUT);
    }
    // tcsetattr succeeds when any part of the request took; the speed must have.
    termios got;
    if (::tcgetattr(fd, &got) != 0) return fail_open(conn, fd, errno, KVN_E_WRITE_TIMEOUT);
    const speed_t in = ::cfgetispeed(&got);
    if (::cfgetospeed(&got) != speed || (in != speed && in != 0)) {
        return fail_open(conn, fd, EINVAL, KVN_E_WRITE_TIMEOUT);
    }
    const int flags = ::fcntl(fd, F_GETFL, 0);
    if (flags < 0 || ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) != 0) {
        return fail_open(conn, fd, errno, KVN_E_WRITE_TIMEOUT);
    }
    // Bytes that reached the port before this connection are no answer to it.
    ::tcflush(fd, TCIFLUSH);
    set_os_error(0);
    return 0;
}

int32_t serial_close(kvn_device_conn* conn) noexcept {
    const int fd = conn->link.serial_handle;
    if (fd < 0) return 0;
    // Exclusivity belongs to the terminal, not the descriptor: give it up, or the next
    // open would be refused while another program keeps the line open.
    ::ioctl(fd, TIOCNXCL);
    set_os_error(::close(fd) == 0 ? 0 : errno);
    return 0;
}

// Per-chunk limit of a serial wait: 0 without limit (the default for serial lines).
int serial_limit(int32_t configured) noexcept { return serial_timeouts() ? configured : 0; }

int32_t write_failed(ssize_t w, int err) noexcept {
    diagnostic("\n Error in write is %d and errno is %d\n", static_cast<int>(w < 0 ? 0 : w), err);
    return fail(err, KVN_E_WRITE_TIMEOUT);
}

int32_t serial_send(kvn_conn_link* link, const ConstBuf* parts, size_t count) noexcept {
    if (count > kMaxSendParts) return fail(EINVAL, KVN_E_WRITE_TIMEOUT);  // the same contract as TCP
    const int fd = link->serial_handle;
    // A bounded write must not block inside write() for longer than its limit, so it
    // runs non-blocking and waits with poll() when the line's queue is full.
    const int limit = serial_limit(write_timeout_ms());
    int flags = -1;
    if (limit > 0) {
        flags = ::fcntl(fd, F_GETFL, 0);
        if (flags < 0 || ::fcntl(fd, F_SETFL, flags | O_NONBLOCK) != 0) return write_failed(-1, errno);
    }
    int32_t rc = 0;
    for (size_t i = 0; i < count && rc == 0; ++i) {
        uint32_t sent = 0;
        while (sent < parts[i].size) {
            const ssize_t w = ::write(fd, parts[i].data + sent, parts[i].size - sent);
            if (w > 0) {
                sent += static_cast<uint32_t>(w);
                continue;
            }
            if (w < 0 && errno == EINTR) continue;
            if (w < 0 && (errno == EAGAIN || errno == EWOULDBLOCK) && posix::wait_ready(fd, POLLOUT, limit) == 1) {
                continue;
            }
            rc = write_failed(w, w == 0 ? EIO : errno);
            break;
        }
    }
    if (flags >= 0) ::fcntl(fd, F_SETFL, flags);
    if (rc == 0) set_os_error(0);
    return rc;
}

int32_t serial_receive(kvn_conn_link* link, uint8_t* buffer, uint32_t count) noexcept {
    const int fd = link->serial_handle;
    const int limit = serial_limit(read_timeout_ms());
    uint32_t received = 0;
    while (received < count) {
        if (limit > 0 && posix::wait_ready(fd, POLLIN, limit) != 1) return fail(errno, KVN_E_READ_TIMEOUT);
        const ssize_t r = ::read(fd, buffer + received, count - received);
        if (r > 0) {
            received += static_cast<uint32_t>(r);
            continue;
        }
        // 0 is a hang-up here (the blocking read returns at least one byte otherwise).
        if (r == 0) return fail(EIO, KVN_E_READ_TIMEOUT);
        if (errno == EINTR) continue;
        if ((errno == EAGAIN || errno == EWOULDBLOCK) && posix::wait_ready(fd, POLLIN, limit) == 1) continue;
        return fail(errno, KVN_E_READ_TIMEOUT);
    }
    set_os_error(0);
    return 0;
}

// Payload and CRC in one readv() when both have arrived, the CRC run over each
// chunk as it lands.
int32_t serial_receive_parts(kvn_conn_link* link, const MutBuf* parts, size_t count, uint32_t* crc) noexcept {
    if (count > kMaxReceiveParts) return fail(EINVAL, KVN_E_READ_TIMEOUT);
    iovec iov[kMaxReceiveParts];
    int n = 0;
    for (size_t i = 0; i < count; ++i) {
        if (parts[i].size == 0) continue;
        iov[n].iov_base = parts[i].data;
        iov[n].iov_len = parts[i].size;
        ++n;
    }
    FoldAsRead fold(crc, count != 0 ? parts[0] : MutBuf{nullptr, 0});
    iovec* next = iov;
    const int fd = link->serial_handle;
    const int limit = serial_limit(read_timeout_ms());
    while (n > 0) {
        if (limit > 0 && posix::wait_ready(fd, POLLIN, limit) != 1) return fail(errno, KVN_E_READ_TIMEOUT);
        const ssize_t r = ::readv(fd, next, n);
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
        // 0 is a hang-up here (the blocking read returns at least one byte otherwise).
        if (r == 0) return fail(EIO, KVN_E_READ_TIMEOUT);
        if (errno == EINTR) continue;
        if ((errno == EAGAIN || errno == EWOULDBLOCK) && posix::wait_ready(fd, POLLIN, limit) == 1) continue;
        return fail(errno, KVN_E_READ_TIMEOUT);
    }
    set_os_error(0);
    return 0;
}

constexpr Transport kSerial{serial_send, serial_receive, serial_open, serial_close, serial_receive_parts};

}  // namespace

const Transport& serial_transport() noexcept { return kSerial; }

}  // namespace kvn
