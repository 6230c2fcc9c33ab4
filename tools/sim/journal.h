// The transaction journal: entries made up at start-up (prefill), followed by
// the events the terminal records. Prefilled entries are computed from their
// position, so a journal of millions of entries costs one flag byte each.
// On disk: a metadata record (written to a temporary file and renamed), the
// recorded events as fixed-size records appended to a file, and one flag byte
// per entry updated in place.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "store.h"

namespace kvnsim {

struct LogEntry {
    uint32_t id = 0;        // tag 7
    uint32_t time = 0;      // tag 8, seconds since 1970 (UTC)
    uint32_t event = 0;     // tag 9
    uint32_t result = 0;    // tag 10, the status of the event (0 success)
    uint32_t door = 1;      // tag 11
    uint32_t score = 0;     // tag 21
    std::string user;       // tag 12
    std::string text;       // tag 13
    std::string device;     // tag 23
    uint8_t method = 0;     // tag 14
    uint8_t finger = 0;     // tag 15
    uint32_t job = 0;       // tag 16
    uint8_t read = 0;       // tag 17
    uint8_t online = 0;     // tag 18
    uint8_t direction = 0;  // tag 19
    uint32_t date = 0;      // tag 20, YYYYMMDD
};

// Event codes.
enum : uint32_t {
    kEventVerify = 1,
    kEventIdentify = 2,
    kEventEnroll = 3,
    kEventDoorOpen = 4,
    kEventDoorClose = 5,
    kEventAlarmClear = 6,
    kEventCard = 7,
};

uint32_t date_of(uint32_t unix_time);

class Journal {
public:
    static constexpr uint32_t kLimit = 10'000'000;
    static constexpr uint8_t kRead = 1, kOnline = 2;

    explicit Journal(Store& store) : store_(store) {}
    ~Journal();

    // Loads the journal; a journal never created before starts with `prefill` entries.
    bool load(uint32_t prefill, std::string* error);

    size_t size() const { return flags_.size(); }
    size_t read_count() const { return read_; }
    LogEntry at(size_t index) const;
    uint8_t flags(size_t index) const { return flags_[index]; }
    // Position of an entry id, or -1.
    int64_t find(uint32_t id) const;

    // Records an event; false when the journal is full.
    bool append(LogEntry e);
    void set_flag(size_t index, uint8_t flag);
    void clear();

private:
    void save_meta();
    void open_files();
    void close_files();

    Store& store_;
    uint32_t generation_ = 1;
    uint32_t prefill_ = 0;
    uint32_t next_id_ = 1;
    std::vector<LogEntry> events_;  // recorded after the prefill
    std::vector<uint8_t> flags_;    // one per entry, prefill first
    size_t read_ = 0;
    int events_fd_ = -1, flags_fd_ = -1;
};

}  // namespace kvnsim
