// The simulated terminal: its state and the answer to every request.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "blob.h"
#include "journal.h"
#include "store.h"
#include "wire.h"

namespace kvnsim {

// Request types (high half of the request word).
enum : uint16_t { kSet = 1, kGet = 2, kReset = 3, kUpload = 4, kDownload = 5 };
constexpr uint8_t bit(uint16_t type) { return uint8_t(1u << type); }
constexpr uint8_t kSGR = bit(kSet) | bit(kGet) | bit(kReset);

struct Request {
    uint32_t header_id = 0;
    uint32_t word = 0;
    uint16_t type = 0;
    uint32_t command = 0;
    const uint8_t* data = nullptr;
    uint32_t size = 0;
    // Large payloads arrive in a buffer of their own, which a handler may keep
    // (data points into it).
    std::shared_ptr<uint8_t[]> body;
};

struct Reply {
    int32_t status = 0;
    Bytes payload;
    bool close_after = false;  // the terminal restarts after answering
    bool silent = false;       // no answer at all, the connection drops
    static Reply of(int32_t s) {
        Reply r;
        r.status = s;
        return r;
    }
};

// One file transfer in progress on a connection.
struct Transfer {
    bool upload = true;
    uint32_t file_type = 0;
    std::string name;
    uint32_t size = 0;
    uint32_t packets = 0;
    uint32_t next = 1;  // packet expected (upload)
    Blob data;
};

// Per-connection state.
struct Session {
    std::map<uint32_t, Transfer> transfers;
    uint32_t start_packets = 0;  // faults of the connection, see Faults
    uint32_t refuse_packet = 0;
};

// Shape of the elements a settings group takes.
enum class Kind : uint8_t { u8, u16, u32, text, exact, box };
struct Field {
    Field(uint8_t t, Kind k, uint32_t m = 0, uint8_t key_tag = 0, std::vector<Field> in = {})
        : tag(t), kind(k), max(m), key(key_tag), inner(std::move(in)) {}
    uint8_t tag;
    Kind kind;
    uint32_t max = 0;          // text: longest value; exact: the only length
    uint8_t key = 0;           // box: inner tag that names the entry (0: entries by position)
    std::vector<Field> inner;  // box: its elements
};

struct Group {
    uint32_t id = 0;
    std::vector<Field> fields;
    std::vector<uint8_t> hidden;  // tags kept but never answered
    void (*defaults)(Out&) = nullptr;
};

struct User {
    std::string id;
    std::vector<Node> fields;  // scalar elements as stored (tag order of the store)
    struct Template {
        uint8_t finger = 0, a15 = 0, a21 = 0, a17 = 0;
        Bytes data;
    };
    std::vector<Template> templates;
    std::vector<uint32_t> values;  // tag 35 entries
    const Node* field(uint8_t tag) const {
        for (const Node& n : fields)
            if (n.tag == tag) return &n;
        return nullptr;
    }
};

struct WiegandFormat {
    uint8_t id = 0;
    std::string name;
    Bytes payload;  // as uploaded
};

class Terminal {
public:
    Terminal(Store& store, uint32_t prefill_logs);
    ~Terminal();

    bool load(std::string* error);
    Reply handle(Session& session, const Request& request);

    void present_finger(const std::string& user_id, uint8_t finger);
    void remove_finger();
    void present_card(const Bytes& serial);
    void remove_card();

    // The template a simulated finger yields: the same bytes for the same user
    // and finger, different bytes for any other pair.
    static Bytes finger_template(const std::string& owner, uint8_t finger);
    static constexpr size_t kTemplateSize = 384;

private:
    // Families, each answering under the lock.
    Reply settings(const Request& rq);
    // The built-in entries of a media list, then the uploaded files of one file type.
    Reply media_list(uint8_t name_tag, uint8_t text_tag,
                     std::initializer_list<std::pair<const char*, const char*>> builtin, uint32_t file_type) const;
    Reply dac(const Request& rq);
    Reply clock(const Request& rq);
    Reply device_info(const Request& rq);
    Reply device_status(const Request& rq);
    Reply maintenance(Session& s, const Request& rq);
    Reply wifi(const Request& rq);
    Reply certificates(const Request& rq);
    Reply vpn(const Request& rq);
    Reply voip(const Request& rq);
    Reply lists(const Request& rq);
    Reply users(const Request& rq);
    Reply user_groups(const Request& rq);
    Reply biometrics(const Request& rq);
    Reply logs(const Request& rq);
    Reply files(Session& s, const Request& rq);
    Reply firmware(const Request& rq);
    Reply cards(const Request& rq);
    Reply wiegand(const Request& rq);
    Reply schedules(const Request& rq);

    // Settings store helpers.
    const Group* group(uint32_t id) const;
    std::vector<Node>& stored(uint32_t id);
    int32_t parse(const std::vector<Field>& fields, const uint8_t* p, size_t n, std::vector<Node>* out) const;
    int32_t check(uint32_t cmd, const std::vector<Node>& in) const;
    void merge(const Group& g, std::vector<Node>& into, std::vector<Node>&& incoming) const;
    void reset_group(uint32_t id);
    void save_group(uint32_t id);
    Bytes answer_group(uint32_t id, const std::vector<uint8_t>& also_hidden = {});
    Node* find(std::vector<Node>& nodes, uint8_t tag);
    uint32_t value(uint32_t group, uint8_t tag, uint32_t fallback = 0);
    void set_value(uint32_t group, uint8_t tag, uint32_t v);

    // Users.
    int32_t parse_user(const uint8_t* p, size_t n, User* out) const;
    Bytes user_record(const User& u, bool answer) const;
    Bytes encode_user(const User& u) const;
    void save_user(const User& u);
    void save_user_groups();
    int32_t capture(std::string* owner, uint8_t* finger) const;
    const User* match(const Bytes& tmpl, uint8_t* finger) const;
    void log_event(uint32_t event, int32_t result, const std::string& user, uint8_t method, uint8_t finger,
                   const std::string& text);

    // Files.
    void save_file(uint32_t type, const std::string& name);
    const Blob* file(uint32_t type, const std::string& name) const;

    void save_misc();
    void load_misc();
    uint32_t now() const;

    std::mutex mutex_;
    Store& store_;
    Journal journal_;
    uint32_t prefill_logs_;

    std::map<uint32_t, std::vector<Node>> groups_;
    std::map<std::string, User> users_;
    std::map<uint32_t, std::string> user_groups_;
    std::map<std::pair<uint32_t, std::string>, Blob> files_;
    std::map<uint8_t, WiegandFormat> formats_;
    std::vector<Bytes> revoked_;
    std::vector<std::string> user_certs_, ca_certs_;
    std::vector<Node> wifi_link_;  // the network joined, as its connect elements
    int64_t clock_offset_ = 0;
    uint32_t next_transfer_ = 1;

    // Sensor and reader.
    std::optional<std::pair<std::string, uint8_t>> finger_;       // presented through the API
    std::optional<std::pair<std::string, uint8_t>> last_enrolled_;
    std::optional<Bytes> card_;
    Bytes card_data_;
    std::optional<User> card_user_;
};

}  // namespace kvnsim
