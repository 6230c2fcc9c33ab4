// File transfer (120), the actions on transferred files (601), and loading and
// saving the terminal's state.
//
// File types: 1 firmware package, 2 backup package, 3 CSV user list, 4 image,
// 5 audio, 6 certificate; 0 and 7 to 15 are plain files.
#include <algorithm>

#include "kvnsdk2.h"
#include "terminal.h"

namespace kvnsim {
namespace {

constexpr uint32_t kPacket = 65536;
constexpr uint32_t kMaxFile = 256u << 20;
constexpr uint32_t kMaxFileType = 15;
constexpr size_t kMaxTransfers = 16;

bool valid_name(const std::string& name) {
    if (name.empty() || name.size() > 64 || name == "." || name == "..") return false;
    return std::none_of(name.begin(), name.end(), [](char c) { return c == '/' || c == '\\' || c < 0x20; });
}

std::string file_key(uint32_t type, const std::string& name) { return "files/" + std::to_string(type) + "/" + hex(name); }

Reply answer(Out&& o) {
    Reply r;
    r.payload = std::move(o.bytes);
    return r;
}

}  // namespace

const Blob* Terminal::file(uint32_t type, const std::string& name) const {
    auto it = files_.find({type, name});
    return it == files_.end() ? nullptr : &it->second;
}

void Terminal::save_file(uint32_t type, const std::string& name) {
    if (!store_.persistent()) return;
    if (const Blob* f = file(type, name)) {
        std::vector<std::pair<const uint8_t*, size_t>> parts;
        for (const Blob::Piece& p : f->pieces()) parts.emplace_back(p.buf.get() + p.off, p.len);
        store_.put_parts(file_key(type, name), parts);
    } else {
        store_.remove(file_key(type, name));
    }
}

Reply Terminal::files(Session& s, const Request& rq) {
    std::vector<Elem> in;
    if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    uint32_t type = 0, size = 0, packets = 0, id = 0, packet = 0;
    bool have_type = false, have_id = false, have_packet = false;
    std::string name;
    const Elem* data = nullptr;
    for (const Elem& e : in) {
        switch (e.tag) {
            case 1: case 3: case 4: case 6: case 7:
                if (e.length != 4) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                if (e.tag == 1) have_id = true, id = e.u32();
                if (e.tag == 3) have_packet = true, packet = e.u32();
                if (e.tag == 4) have_type = true, type = e.u32();
                if (e.tag == 6) size = e.u32();
                if (e.tag == 7) packets = e.u32();
                break;
            case 5:
                name = e.text();
                if (e.length > 255 || name.size() != e.length) return Reply::of(KVN_E_INVALID_FILE_NAME);
                break;
            case 8:
                data = &e;
                break;
            default:
                return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
        }
    }
    switch (rq.type) {
        case kUpload:
        case kDownload: {
            if (!have_type) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
            if (type > kMaxFileType) return Reply::of(KVN_E_INVALID_FILE_TYPE);
            if (!valid_name(name)) return Reply::of(KVN_E_INVALID_FILE_NAME);
            Transfer t;
            t.upload = rq.type == kUpload;
            t.file_type = type;
            t.name = name;
            if (t.upload) {
                if (size > kMaxFile || packets != (size + kPacket - 1) / kPacket) return Reply::of(KVN_E_INVALID_FILE_LENGTH);
                t.size = size;
                t.packets = packets;
            } else {
                const Blob* f = file(type, name);
                if (f == nullptr) return Reply::of(KVN_E_DEVICE_FAILED_TO_OPEN_FILE);
                t.size = uint32_t(f->size());
                t.packets = (t.size + kPacket - 1) / kPacket;
                t.data = *f;
            }
            if (s.start_packets != 0) t.packets = s.start_packets;  // a terminal that miscounts
            const uint32_t tid = next_transfer_++;
            Out o;
            o.u32(1, tid);
            o.u32(6, t.size);
            o.u32(7, t.packets);
            if (t.upload && t.packets == 0) {
                files_[{type, name}] = Blob();
                save_file(type, name);
            } else {
                if (s.transfers.size() >= kMaxTransfers) s.transfers.erase(s.transfers.begin());
                s.transfers.emplace(tid, std::move(t));
            }
            return answer(std::move(o));
        }
        case kSet: {
            if (!have_id || !have_packet || data == nullptr) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
            auto it = s.transfers.find(id);
            if (it == s.transfers.end() || !it->second.upload) return Reply::of(KVN_E_INVALID_FILE_ID);
            Transfer& t = it->second;
            if (packet != t.next) return Reply::of(KVN_E_INVALID_PACKET_ID);
            if (packet == s.refuse_packet) {
                s.transfers.erase(it);
                return Reply::of(KVN_E_DEVICE_FAILED_TO_WRITE_FILE);
            }
            const uint32_t left = t.size - uint32_t(t.data.size());
            if (data->length != std::min(left, kPacket)) return Reply::of(KVN_E_INVALID_PACKET_SIZE);
            // A packet that came in its own buffer is kept there.
            if (rq.body) t.data.append(rq.body, size_t(data->value - rq.body.get()), data->length);
            else t.data.append_copy(data->value, data->length);
            ++t.next;
            if (t.next > t.packets) {
                files_[{t.file_type, t.name}] = std::move(t.data);
                save_file(t.file_type, t.name);
                s.transfers.erase(it);
            }
            return Reply{};
        }
        case kGet: {
            if (!have_id || !have_packet) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
            auto it = s.transfers.find(id);
            if (it == s.transfers.end() || it->second.upload) return Reply::of(KVN_E_INVALID_FILE_ID);
            const Transfer& t = it->second;
            if (packet < 1 || packet > t.packets) return Reply::of(KVN_E_INVALID_PACKET_ID);
            const size_t from = std::min(size_t(packet - 1) * kPacket, t.data.size());
            const size_t n = std::min<size_t>(kPacket, t.data.size() - from);
            Out o;
            o.u32(1, id);
            o.u32(3, packet);
            o.head(8, uint32_t(n));
            const size_t at = o.bytes.size();
            o.bytes.resize(at + n);
            t.data.read(from, n, o.bytes.data() + at);
            return answer(std::move(o));
        }
        case kReset: {
            if (!have_type || !valid_name(name)) return Reply::of(KVN_E_INVALID_FILE_NAME);
            if (files_.erase({type, name}) == 0) return Reply::of(KVN_E_FAILED_TO_REMOVE_FILE);
            save_file(type, name);
            return Reply{};
        }
        default:
            return Reply::of(KVN_E_INVALID_REQUEST_TYPE);
    }
}

// 601: the action is named by the tag that carries the byte 1: 5 firmware
// upgrade, 7 backup restore, 8 CSV export (get), 9 CSV import; tag 10 names
// the CSV file (type 3).
Reply Terminal::firmware(const Request& rq) {
    std::vector<Elem> in;
    if (!split(rq.data, rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    uint8_t action = 0;
    std::string name;
    for (const Elem& e : in) {
        if (e.tag == 10) {
            name = e.text();
        } else if (e.tag == 5 || e.tag == 7 || e.tag == 8 || e.tag == 9) {
            if (e.length != 1) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
            if (e.u8() != 1) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
            if (action != 0) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
            action = e.tag;
        } else {
            return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
        }
    }
    if (action == 0) return Reply::of(KVN_E_PAYLOAD_NOT_RECEIVED);
    if ((action == 8) != (rq.type == kGet)) return Reply::of(KVN_E_INVALID_REQUEST_TYPE);
    auto newest = [&](uint32_t type) -> const Blob* {
        for (const auto& [key, data] : files_)
            if (key.first == type && !data.empty()) return &data;
        return nullptr;
    };
    switch (action) {
        case 5:
            return Reply::of(newest(1) ? 0 : KVN_E_INVALID_FIRMWARE_UPGRADE_PACKAGE);
        case 7:
            return Reply::of(newest(2) ? 0 : KVN_E_INVALID_RESTORE_PACKAGE);
        case 8: {
            if (!valid_name(name)) return Reply::of(KVN_E_INVALID_FILE_NAME);
            std::string csv = "user_id,name\n";
            for (const auto& [id, u] : users_) {
                const Node* n3 = u.field(3);
                csv += id + "," + (n3 ? n3->text() : std::string()) + "\n";
            }
            files_[{3, name}] = Blob(reinterpret_cast<const uint8_t*>(csv.data()), csv.size());
            save_file(3, name);
            return Reply{};
        }
        default: {
            if (!valid_name(name)) return Reply::of(KVN_E_INVALID_FILE_NAME);
            const Blob* f = file(3, name);
            if (f == nullptr) return Reply::of(KVN_E_DEVICE_FAILED_TO_OPEN_FILE);
            const Bytes content = f->bytes();
            const std::string csv(content.begin(), content.end());
            size_t pos = 0;
            bool header = true;
            while (pos < csv.size()) {
                size_t eol = csv.find('\n', pos);
                if (eol == std::string::npos) eol = csv.size();
                std::string line = csv.substr(pos, eol - pos);
                pos = eol + 1;
                if (!line.empty() && line.back() == '\r') line.pop_back();
                if (header) {
                    header = false;
                    if (line.rfind("user_id", 0) == 0) continue;
                }
                const size_t comma = line.find(',');
                const std::string id = line.substr(0, comma);
                const std::string nm = comma == std::string::npos ? "" : line.substr(comma + 1, 50);
                if (id.empty() || id.size() > 64 || users_.count(id)) continue;
                User u;
                u.id = id;
                u.fields.push_back(Node{2, Bytes(id.begin(), id.end()), {}});
                u.fields.push_back(Node{3, Bytes(nm.begin(), nm.end()), {}});
                save_user(u);
                users_[id] = std::move(u);
            }
            return Reply{};
        }
    }
}

// ---------------------------------------------------------------------------
// State on disk.

void Terminal::save_misc() {
    Out o;
    uint8_t off[8];
    for (int i = 0; i < 8; ++i) off[i] = uint8_t(uint64_t(clock_offset_) >> (8 * i));
    o.element(1, off, 8);
    for (const Bytes& c : revoked_) o.element(2, c);
    for (const std::string& n : user_certs_) o.text(3, n);
    for (const std::string& n : ca_certs_) o.text(4, n);
    if (!wifi_link_.empty()) {
        const size_t at = o.open();
        o.nodes(wifi_link_);
        o.close(at, 5);
    }
    for (const auto& [id, f] : formats_) {
        const size_t at = o.open();
        o.u8(1, f.id);
        o.text(2, f.name);
        o.element(3, f.payload);
        o.close(at, 6);
    }
    store_.put("misc", o.bytes);
}

void Terminal::load_misc() {
    Bytes b;
    if (!store_.get("misc", &b)) return;
    std::vector<Elem> in;
    if (!split(b, &in)) return;
    for (const Elem& e : in) {
        switch (e.tag) {
            case 1:
                if (e.length == 8) {
                    uint64_t v = 0;
                    for (int i = 7; i >= 0; --i) v = (v << 8) | e.value[i];
                    clock_offset_ = int64_t(v);
                }
                break;
            case 2:
                revoked_.push_back(e.bytes());
                break;
            case 3:
                user_certs_.push_back(e.text());
                break;
            case 4:
                ca_certs_.push_back(e.text());
                break;
            case 5: {
                std::vector<Elem> kids;
                if (split(e.value, e.length, &kids))
                    for (const Elem& k : kids) wifi_link_.push_back(Node{k.tag, k.bytes(), {}});
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
                formats_[f.id] = std::move(f);
                break;
            }
            default:
                break;
        }
    }
}

bool Terminal::load(std::string* error) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!journal_.load(prefill_logs_, error)) return false;
    if (!store_.persistent()) return true;
    for (const std::string& key : store_.list("settings/")) {
        const uint32_t id = uint32_t(std::strtoul(key.c_str() + 9, nullptr, 10));
        const Group* g = group(id);
        Bytes b;
        if (g == nullptr || !store_.get(key, &b)) continue;
        std::vector<Node> nodes;
        if (parse(g->fields, b.data(), b.size(), &nodes) == 0) groups_[id] = std::move(nodes);
    }
    for (const std::string& key : store_.list("users/")) {
        Bytes b;
        User u;
        if (store_.get(key, &b) && parse_user(b.data(), b.size(), &u) == 0) users_[u.id] = std::move(u);
    }
    Bytes b;
    if (store_.get("user_groups", &b)) {
        std::vector<Elem> in, kids;
        if (split(b, &in))
            for (const Elem& e : in) {
                if (!split(e.value, e.length, &kids)) continue;
                uint32_t id = 0;
                std::string name;
                for (const Elem& k : kids) (k.tag == 2 ? (void)(id = k.u32()) : (void)(name = k.text()));
                user_groups_[id] = name;
            }
    }
    for (const std::string& dir : store_.list("files/")) {
        const uint32_t type = uint32_t(std::strtoul(dir.c_str() + 6, nullptr, 10));
        for (const std::string& key : store_.list(dir + "/")) {
            Bytes data;
            const std::string name = unhex(key.substr(dir.size() + 1));
            if (!name.empty() && store_.get(key, &data)) files_[{type, name}] = Blob(data);
        }
    }
    load_misc();
    return true;
}

}  // namespace kvnsim
