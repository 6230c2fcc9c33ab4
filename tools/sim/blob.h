// File contents kept as a list of shared pieces, so that an uploaded packet can
// be kept in the buffer it arrived in, without copying, and a download can share
// the pieces of the file it reads.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace kvnsim {

class Blob {
public:
    struct Piece {
        std::shared_ptr<uint8_t[]> buf;
        size_t off = 0, len = 0;
    };

    Blob() = default;
    Blob(const uint8_t* p, size_t n) { append_copy(p, n); }
    explicit Blob(const std::vector<uint8_t>& b) { append_copy(b.data(), b.size()); }

    size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    const std::vector<Piece>& pieces() const noexcept { return pieces_; }

    // Keeps len bytes at buf + off.
    void append(std::shared_ptr<uint8_t[]> buf, size_t off, size_t len) {
        if (len == 0) return;
        pieces_.push_back(Piece{std::move(buf), off, len});
        size_ += len;
    }
    void append_copy(const uint8_t* p, size_t n) {
        if (n == 0) return;
        std::shared_ptr<uint8_t[]> buf(new uint8_t[n]);
        std::memcpy(buf.get(), p, n);
        append(std::move(buf), 0, n);
    }

    // Copies n bytes starting at `from` to out (the range must lie inside).
    void read(size_t from, size_t n, uint8_t* out) const {
        for (const Piece& piece : pieces_) {
            if (n == 0) break;
            if (from >= piece.len) {
                from -= piece.len;
                continue;
            }
            const size_t k = piece.len - from < n ? piece.len - from : n;
            std::memcpy(out, piece.buf.get() + piece.off + from, k);
            out += k;
            n -= k;
            from = 0;
        }
    }
    std::vector<uint8_t> bytes() const {
        std::vector<uint8_t> b(size_);
        if (size_) read(0, size_, b.data());
        return b;
    }

private:
    std::vector<Piece> pieces_;
    size_t size_ = 0;
};

}  // namespace kvnsim
