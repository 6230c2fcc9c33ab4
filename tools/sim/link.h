// Moving bytes for the simulator: the listen address, a reader that gathers
// frames from a socket or a pseudo-terminal, and writes that send an answer
// whole. Nothing here knows what a frame means.
#pragma once

#include <netinet/in.h>
#include <sys/types.h>
#include <sys/uio.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace kvnsim {

// "address:port" (port 0 picks a free one; "localhost" and an empty address are 127.0.0.1).
bool parse_listen(const std::string& text, sockaddr_in* addr);

// Reads into a buffer that holds a whole file packet. A large frame can leave
// with its buffer (the reader takes a fresh one), so that the terminal keeps the
// body where it arrived, without a copy. Buffers are recycled.
class Reader {
public:
    static constexpr size_t kBufferSize = 65536 + 64;  // one file packet and its elements

    // `wake` becomes readable when the server stops (pseudo-terminals wait on it).
    Reader(int fd, bool tty, int wake);

    // Makes at least n bytes available; false when the link ended or the server stops.
    bool need(size_t n);
    const uint8_t* data() const { return buf_.get() + begin_; }
    void consume(size_t n) {
        begin_ += n;
        if (begin_ == end_) begin_ = end_ = 0;
    }
    // Hands over the buffer holding the next `frame` bytes (they start at
    // *offset in it) and goes on with a fresh buffer.
    std::shared_ptr<uint8_t[]> detach(size_t frame, size_t* offset);

private:
    ssize_t fill(uint8_t* dst, size_t max);

    int fd_;
    bool tty_;
    int wake_;
    std::shared_ptr<uint8_t[]> buf_;
    size_t cap_ = 0;
    size_t begin_ = 0, end_ = 0;
};

// Writes all of p; false when the link fails.
bool write_all(int fd, bool tty, const uint8_t* p, size_t n);
// Writes the parts in one gathered write where the link allows it.
bool write_parts(int fd, bool tty, iovec* iov, int count);

}  // namespace kvnsim
