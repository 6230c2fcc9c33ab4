// File transfer and the actions on transferred files: firmware upgrade, backup
// restore, CSV export and import of the user list.
//
// File types: 1 firmware package, 2 backup package, 3 CSV user list, 4 image,
// 5 audio, 6 certificate; 0 and 7 to 15 are plain files.
#include <algorithm>

#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::files {
namespace {

constexpr uint32_t kPacket = 65536;
constexpr uint32_t kMaxFile = 256u << 20;
constexpr uint32_t kMaxFileType = 15;
constexpr size_t kMaxTransfers = 16;

bool valid_name(const std::string& name) {
    if (name.empty() || name.size() > 64 || name == "." || name == "..") return false;
    return std::none_of(name.begin(), name.end(), [](char c) { return c == '/' || c == '\\' || c < 0x20; });
}

}  // namespace

// Upload and download starts, packets in order (set: upload, get: download) and delete (reset).
Reply transfer(Call& c) {
    Session& s = c.session;
    State& st = c.st;
    const Request& rq = c.rq;
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
                const Blob* f = st.file(type, name);
                if (f == nullptr) return Reply::of(KVN_E_DEVICE_FAILED_TO_OPEN_FILE);
                t.size = uint32_t(f->size());
                t.packets = (t.size + kPacket - 1) / kPacket;
                t.data = *f;
            }
            if (s.start_packets != 0) t.packets = s.start_packets;  // a terminal that miscounts
            const uint32_t tid = st.next_transfer++;
            Out o;
            o.u32(1, tid);
            o.u32(6, t.size);
            o.u32(7, t.packets);
            if (t.upload && t.packets == 0) {
                st.files[{type, name}] = Blob();
                st.save_file(type, name);
            } else {
                if (s.transfers.size() >= kMaxTransfers) s.transfers.erase(s.transfers.begin());
                s.transfers.emplace(tid, std::move(t));
            }
            return Reply::with(std::move(o));
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
                st.files[{t.file_type, t.name}] = std::move(t.data);
                st.save_file(t.file_type, t.name);
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
            return Reply::with(std::move(o));
        }
        case kReset: {
            if (!have_type || !valid_name(name)) return Reply::of(KVN_E_INVALID_FILE_NAME);
            if (st.files.erase({type, name}) == 0) return Reply::of(KVN_E_FAILED_TO_REMOVE_FILE);
            st.save_file(type, name);
            return Reply{};
        }
        default:
            return Reply::of(KVN_E_INVALID_REQUEST_TYPE);
    }
}

// 601: the action is named by the tag that carries the byte 1: 5 firmware
// upgrade, 7 backup restore, 8 CSV export (get), 9 CSV import; tag 10 names
// the CSV file (type 3).
Reply action(Call& c) {
    State& st = c.st;
    const Request& rq = c.rq;
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
        for (const auto& [key, data] : st.files)
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
            for (const auto& [id, u] : st.users) {
                const Node* n3 = u.field(3);
                csv += id + "," + (n3 ? n3->text() : std::string()) + "\n";
            }
            st.files[{3, name}] = Blob(reinterpret_cast<const uint8_t*>(csv.data()), csv.size());
            st.save_file(3, name);
            return Reply{};
        }
        default: {
            if (!valid_name(name)) return Reply::of(KVN_E_INVALID_FILE_NAME);
            const Blob* f = st.file(3, name);
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
                if (id.empty() || id.size() > 64 || st.users.count(id)) continue;
                User u;
                u.id = id;
                u.fields.push_back(Node{2, Bytes(id.begin(), id.end()), {}});
                u.fields.push_back(Node{3, Bytes(nm.begin(), nm.end()), {}});
                st.save_user(u);
                st.users[id] = std::move(u);
            }
            return Reply{};
        }
    }
}

}  // namespace kvnsim::files
