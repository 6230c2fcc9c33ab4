#include "state.h"

#include <chrono>
#include <cstdlib>

#include "command_table.h"

namespace kvnsim {
namespace {

std::string file_key(uint32_t type, const std::string& name) { return "files/" + std::to_string(type) + "/" + hex(name); }

}  // namespace

State::State(Store& s, uint32_t prefill_logs)
    : store(s), groups(s, &group_of), journal(s), prefill_logs_(prefill_logs) {}

uint32_t State::now() const {
    const int64_t t = std::chrono::duration_cast<std::chrono::seconds>(
                          std::chrono::system_clock::now().time_since_epoch())
                          .count();
    return uint32_t(t + clock_offset);
}

void State::log_event(uint32_t event, int32_t result, const std::string& user, uint8_t method, uint8_t finger_index,
                      const std::string& text) {
    LogEntry e;
    e.time = now();
    e.event = event;
    e.result = uint32_t(result);
    e.user = user.substr(0, 64);
    e.text = text.substr(0, 50);
    e.device = "kvn-sim";
    e.method = method;
    e.finger = finger_index;
    e.score = result == 0 && method == 1 ? 92 : 0;
    journal.append(std::move(e));
}

const Blob* State::file(uint32_t type, const std::string& name) const {
    auto it = files.find({type, name});
    return it == files.end() ? nullptr : &it->second;
}

void State::save_file(uint32_t type, const std::string& name) {
    if (!store.persistent()) return;
    if (const Blob* f = file(type, name)) {
        std::vector<std::pair<const uint8_t*, size_t>> parts;
        for (const Blob::Piece& p : f->pieces()) parts.emplace_back(p.buf.get() + p.off, p.len);
        store.put_parts(file_key(type, name), parts);
    } else {
        store.remove(file_key(type, name));
    }
}

void State::save_user(const User& u) { store.put("users/" + hex(u.id), encode_user(u, false)); }

void State::remove_user(const std::string& id) {
    store.remove("users/" + hex(id));
    users.erase(id);
}

void State::save_user_groups() {
    Out o;
    for (const auto& [id, name] : user_groups) {
        const size_t at = o.open();
        o.u32(2, id);
        o.text(3, name);
        o.close(at, 1);
    }
    store.put("user_groups", o.bytes);
}

void State::factory_reset() {
    groups.clear();
    for (auto& [id, u] : users) store.remove("users/" + hex(id));
    users.clear();
    user_groups.clear();
    formats.clear();
    revoked.clear();
    user_certs.clear();
    ca_certs.clear();
    wifi_link.clear();
    clock_offset = 0;
    journal.clear();
    save_user_groups();
    save_misc();
}

void State::save_misc() {
    Out o;
    uint8_t off[8];
    for (int i = 0; i < 8; ++i) off[i] = uint8_t(uint64_t(clock_offset) >> (8 * i));
    o.element(1, off, 8);
    for (const Bytes& c : revoked) o.element(2, c);
    for (const std::string& n : user_certs) o.text(3, n);
    for (const std::string& n : ca_certs) o.text(4, n);
    if (!wifi_link.empty()) {
        const size_t at = o.open();
        o.nodes(wifi_link);
        o.close(at, 5);
    }
    for (const auto& [id, f] : formats) {
        const size_t at = o.open();
        o.u8(1, f.id);
        o.text(2, f.name);
        o.element(3, f.payload);
        o.close(at, 6);
    }
    store.put("misc", o.bytes);
}

void State::load_misc() {
    Bytes b;
    if (!store.get("misc", &b)) return;
    std::vector<Elem> in;
    if (!split(b, &in)) return;
    for (const Elem& e : in) {
        switch (e.tag) {
            case 1:
                if (e.length == 8) {
                    uint64_t v = 0;
                    for (int i = 7; i >= 0; --i) v = (v << 8) | e.value[i];
                    clock_offset = int64_t(v);
                }
                break;
            case 2:
                revoked.push_back(e.bytes());
                break;
            case 3:
                user_certs.push_back(e.text());
                break;
            case 4:
                ca_certs.push_back(e.text());
                break;
            case 5: {
                std::vector<Elem> kids;
                if (split(e.value, e.length, &kids))
                    for (const Elem& k : kids) wifi_link.push_back(Node{k.tag, k.bytes(), {}});
                break;
            }
            case 6: {
                std::vector<Elem> kids;
                if (!split(e.value, e.length, &kids)) break;
                WiegandFormat f;
                for (const Elem& k : kids) {
                    if (k.tag == 1) f.id = k.u8();
                    if (k.tag == 2) f.name = k.text();
                    if (k.tag == 3) f.payload = k.bytes();
                }
                formats[f.id] = std::move(f);
                break;
            }
            default:
                break;
        }
    }
}

bool State::load(std::string* error) {
    if (!journal.load(prefill_logs_, error)) return false;
    if (!store.persistent()) return true;
    groups.load();
    for (const std::string& key : store.list("users/")) {
        Bytes b;
        User u;
        if (store.get(key, &b) && parse_user(b.data(), b.size(), &u) == 0) users[u.id] = std::move(u);
    }
    Bytes b;
    if (store.get("user_groups", &b)) {
        std::vector<Elem> in, kids;
        if (split(b, &in))
            for (const Elem& e : in) {
                if (!split(e.value, e.length, &kids)) continue;
                uint32_t id = 0;
                std::string name;
                for (const Elem& k : kids) (k.tag == 2 ? (void)(id = k.u32()) : (void)(name = k.text()));
                user_groups[id] = name;
            }
    }
    for (const std::string& dir : store.list("files/")) {
        const uint32_t type = uint32_t(std::strtoul(dir.c_str() + 6, nullptr, 10));
        for (const std::string& key : store.list(dir + "/")) {
            Bytes data;
            const std::string name = unhex(key.substr(dir.size() + 1));
            if (!name.empty() && store.get(key, &data)) files[{type, name}] = Blob(data);
        }
    }
    load_misc();
    return true;
}

}  // namespace kvnsim
