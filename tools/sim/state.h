// Everything the simulated terminal holds: settings groups, users and their
// groups, files, Wiegand formats, revoked cards, certificates, the Wi-Fi link,
// the clock, the journal, and what is at the sensor and the reader. Handlers
// change it in place and call the matching save; with a state directory every
// save is a record in the store, so that a restart finds what was answered.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "blob.h"
#include "setting_groups.h"
#include "journal.h"
#include "store.h"
#include "user_codec.h"
#include "wire.h"

namespace kvnsim {

struct WiegandFormat {
    uint8_t id = 0;
    std::string name;
    Bytes payload;  // as uploaded
};

class State {
public:
    State(Store& store, uint32_t prefill_logs);
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    // Reads the journal and, with a state directory, everything saved before.
    bool load(std::string* error);

    // The terminal's clock: seconds since 1970, moved by setting the date and time.
    uint32_t now() const;
    // Records an event in the journal, at the terminal's time.
    void log_event(uint32_t event, int32_t result, const std::string& user, uint8_t method, uint8_t finger,
                   const std::string& text);

    const Blob* file(uint32_t type, const std::string& name) const;
    void save_file(uint32_t type, const std::string& name);  // or removes it from disk when gone
    void save_user(const User& u);
    void remove_user(const std::string& id);
    void save_user_groups();
    // The clock offset, revoked cards, certificates, Wi-Fi link and Wiegand formats, as one record.
    void save_misc();
    // Forgets every setting, user, list and the journal (files and the sensor stay).
    void factory_reset();

    Store& store;
    GroupStore groups;
    Journal journal;
    std::map<std::string, User> users;
    std::map<uint32_t, std::string> user_groups;
    std::map<std::pair<uint32_t, std::string>, Blob> files;  // by file type and name
    std::map<uint8_t, WiegandFormat> formats;
    std::vector<Bytes> revoked;  // card identifiers
    std::vector<std::string> user_certs, ca_certs;
    std::vector<Node> wifi_link;  // the network joined, as its connect elements
    int64_t clock_offset = 0;
    uint32_t next_transfer = 1;

    // Sensor and reader.
    std::optional<std::pair<std::string, uint8_t>> finger;  // presented through the API
    std::optional<std::pair<std::string, uint8_t>> last_enrolled;
    std::optional<Bytes> card;
    Bytes card_data;
    std::optional<User> card_user;

private:
    void load_misc();
    uint32_t prefill_logs_;
};

}  // namespace kvnsim
