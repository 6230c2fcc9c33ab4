#include "journal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <ctime>

#include "wire.h"

namespace kvnsim {
namespace {

constexpr size_t kRecord = 256;
constexpr uint32_t kPrefillStart = 1767225600;  // 2026-01-01 00:00:00 UTC

void put_text(uint8_t* p, const std::string& s, size_t width) {
    std::memset(p, 0, width);
    std::memcpy(p, s.data(), s.size() < width - 1 ? s.size() : width - 1);
}
std::string get_text(const uint8_t* p, size_t width) {
    const void* nul = std::memchr(p, 0, width);
    return std::string(reinterpret_cast<const char*>(p), nul ? size_t(static_cast<const uint8_t*>(nul) - p) : width);
}

void encode(const LogEntry& e, uint8_t* r) {
    std::memset(r, 0, kRecord);
    const uint32_t w[] = {e.id, e.time, e.event, e.result, e.door, e.score, e.job, e.date};
    for (size_t i = 0; i < 8; ++i) put_le32(r + 4 * i, w[i]);
    r[32] = e.method;
    r[33] = e.finger;
    r[34] = e.direction;
    put_text(r + 40, e.user, 65);
    put_text(r + 105, e.text, 51);
    put_text(r + 156, e.device, 51);
}

LogEntry decode(const uint8_t* r) {
    LogEntry e;
    e.id = le32(r);
    e.time = le32(r + 4);
    e.event = le32(r + 8);
    e.result = le32(r + 12);
    e.door = le32(r + 16);
    e.score = le32(r + 20);
    e.job = le32(r + 24);
    e.date = le32(r + 28);
    e.method = r[32];
    e.finger = r[33];
    e.direction = r[34];
    e.user = get_text(r + 40, 65);
    e.text = get_text(r + 105, 51);
    e.device = get_text(r + 156, 51);
    return e;
}

bool write_all(int fd, const void* p, size_t n, off_t at) {
    const auto* b = static_cast<const uint8_t*>(p);
    while (n > 0) {
        const ssize_t w = ::pwrite(fd, b, n, at);
        if (w <= 0) return false;
        b += w;
        n -= size_t(w);
        at += w;
    }
    return true;
}

}  // namespace

uint32_t date_of(uint32_t unix_time) {
    const time_t t = time_t(unix_time);
    tm parts{};
    gmtime_r(&t, &parts);
    return uint32_t((parts.tm_year + 1900) * 10000 + (parts.tm_mon + 1) * 100 + parts.tm_mday);
}

Journal::~Journal() { close_files(); }

void Journal::close_files() {
    if (events_fd_ >= 0) ::close(events_fd_);
    if (flags_fd_ >= 0) ::close(flags_fd_);
    events_fd_ = flags_fd_ = -1;
}

void Journal::open_files() {
    close_files();
    if (!store_.persistent()) return;
    make_dirs(store_.path("logs"));
    const std::string g = std::to_string(generation_);
    events_fd_ = ::open(store_.path("logs/events." + g).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    flags_fd_ = ::open(store_.path("logs/flags." + g).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
}

void Journal::save_meta() {
    Bytes m(12);
    put_le32(m.data(), generation_);
    put_le32(m.data() + 4, prefill_);
    put_le32(m.data() + 8, next_id_);
    store_.put("logs/meta", m);
}

bool Journal::load(uint32_t prefill, std::string* error) {
    Bytes meta;
    if (store_.get("logs/meta", &meta) && meta.size() >= 12) {
        generation_ = le32(meta.data());
        prefill_ = le32(meta.data() + 4);
        next_id_ = le32(meta.data() + 8);
    } else {
        generation_ = 1;
        prefill_ = prefill < kLimit ? prefill : kLimit;
        next_id_ = prefill_ + 1;
        save_meta();
    }
    events_.clear();
    flags_.assign(prefill_, 0);
    if (store_.persistent()) {
        const std::string g = std::to_string(generation_);
        Bytes ev, fl;
        read_file(store_.path("logs/events." + g), &ev);
        read_file(store_.path("logs/flags." + g), &fl);
        for (size_t at = 0; at + kRecord <= ev.size(); at += kRecord) {
            events_.push_back(decode(ev.data() + at));
            if (events_.back().id >= next_id_) next_id_ = events_.back().id + 1;
        }
        flags_.resize(prefill_ + events_.size(), 0);
        for (size_t i = 0; i < fl.size() && i < flags_.size(); ++i) flags_[i] = fl[i];
        open_files();
        if (events_fd_ < 0 || flags_fd_ < 0) {
            if (error) *error = "cannot open the transaction journal under " + store_.dir();
            return false;
        }
        // A torn last record (killed while appending) is dropped.
        if (::ftruncate(events_fd_, off_t(events_.size() * kRecord)) != 0) return false;
    }
    read_ = 0;
    for (uint8_t f : flags_) read_ += (f & kRead) ? 1 : 0;
    return true;
}

LogEntry Journal::at(size_t index) const {
    LogEntry e;
    if (index >= prefill_) {
        e = events_[index - prefill_];
    } else {
        const uint32_t i = uint32_t(index);
        e.id = i + 1;
        e.time = kPrefillStart + i * 37;
        e.event = (i % 3 == 0) ? kEventIdentify : kEventVerify;
        e.result = (i % 11 == 5) ? uint32_t(-5001) : 0;
        e.door = 1 + i % 2;
        e.score = e.result == 0 ? 80 + i % 20 : 10;
        e.user = "user" + std::to_string(1 + i % 50);
        e.text = e.result == 0 ? "Access granted" : "Access denied";
        e.device = "kvn-sim";
        e.method = 1;
        e.finger = uint8_t(i % 10);
        e.direction = uint8_t(i % 2);
        e.date = date_of(e.time);
    }
    const uint8_t f = flags_[index];
    e.read = (f & kRead) ? 1 : 0;
    e.online = (f & kOnline) ? 1 : 0;
    return e;
}

int64_t Journal::find(uint32_t id) const {
    if (id >= 1 && id <= prefill_) return int64_t(id) - 1;
    // Recorded ids rise with position.
    size_t lo = 0, hi = events_.size();
    while (lo < hi) {
        const size_t mid = (lo + hi) / 2;
        if (events_[mid].id < id) lo = mid + 1;
        else hi = mid;
    }
    if (lo < events_.size() && events_[lo].id == id) return int64_t(prefill_ + lo);
    return -1;
}

bool Journal::append(LogEntry e) {
    if (flags_.size() >= kLimit) return false;
    e.id = next_id_++;
    if (e.date == 0) e.date = date_of(e.time);
    e.read = e.online = 0;
    events_.push_back(e);
    flags_.push_back(0);
    if (events_fd_ >= 0) {
        uint8_t r[kRecord];
        encode(e, r);
        write_all(events_fd_, r, kRecord, off_t((events_.size() - 1) * kRecord));
        const uint8_t zero = 0;
        write_all(flags_fd_, &zero, 1, off_t(flags_.size() - 1));
    }
    if (!store_.persistent()) return true;
    // The next id is also derivable from the events; the metadata only needs it
    // after a delete-all, so it is not rewritten on every append.
    return true;
}

void Journal::set_flag(size_t index, uint8_t flag) {
    const uint8_t before = flags_[index];
    const uint8_t after = uint8_t(before | flag);
    if (after == before) return;
    flags_[index] = after;
    if ((after & kRead) && !(before & kRead)) ++read_;
    if (flags_fd_ >= 0) write_all(flags_fd_, &after, 1, off_t(index));
}

void Journal::clear() {
    const uint32_t old = generation_;
    ++generation_;
    prefill_ = 0;
    events_.clear();
    flags_.clear();
    read_ = 0;
    save_meta();  // the new generation starts empty; the old files are only left-overs now
    if (store_.persistent()) {
        const std::string g = std::to_string(old);
        store_.remove("logs/events." + g);
        store_.remove("logs/flags." + g);
        open_files();
    }
}

}  // namespace kvnsim
