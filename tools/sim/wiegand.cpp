// Wiegand formats (upload, list, delete; at most 20, names unique) and the
// Wiegand input, output, pulse and multi-input settings.
#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::wiegand {
namespace {

constexpr size_t kMaxFormats = 20;

}  // namespace

const Group kInput{{U8(3), U32(9), U32(29), U8(1)}, {{3, 0}, {9, 0}, {29, 0}, {1, 0}}, {}};
const Group kOutput{cat({{U32(10), U32(26)}, range(U8, 11, 18), {U8(27), U8(28)}}),
                        {{10, 0}, {26, 0}, {11, 0}, {12, 0}, {13, 0}, {14, 0}, {15, 0}, {16, 0}, {17, 0}, {18, 0}, {27, 0}, {28, 0}},
                        {}};
const Group kPulse{{U8(7), U16(8)}, {{7, 1}, {8, 1000}}, {}};
// A set replaces all five containers (tag 31).
const Group kMultiInput{{U32(32), U32(33), U32(34), LIST(31, {U8(3), U32(9), U32(29), U8(1)})},
                            {{32, 0}, {33, 0}, {34, 0}, entries(31, 5, {{3, 0}, {9, 0}, {29, 0}, {1, 0}})},
                            {}};

// The formats in id order, names cut to 50 bytes, as many as fit the reader's
// 1024-byte buffer.
Reply list(Call& c) {
    Out o;
    for (const auto& [id, f] : c.st.formats) {
        const size_t at = o.open();
        o.u8(3, f.id);
        if (!f.name.empty()) o.text(4, f.name.substr(0, 50));
        o.close(at, 1);
        if (o.bytes.size() >= 1024) {
            o.bytes.resize(at);
            break;
        }
    }
    return Reply::with(std::move(o));
}

Reply remove(Call& c) {
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    if (in.size() != 1 || in[0].tag != 3) return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
    if (in[0].length != 1) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
    if (c.st.formats.erase(in[0].u8()) == 0) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
    c.st.save_misc();
    return Reply{};
}

// A format of type 0 to 2 under its id (tag 3); the payload is kept as sent.
Reply upload(Call& c) {
    State& st = c.st;
    std::vector<Elem> in;
    if (!split(c.rq.data, c.rq.size, &in)) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    int type = -1, id = -1;
    std::string name;
    for (const Elem& e : in) {
        uint32_t want = 64;
        switch (e.tag) {
            case 2: want = 4; type = int(e.u32()); break;
            case 3: want = 1; id = e.u8(); break;
            case 5: want = 1; break;
            case 19: want = 2; break;
            case 4:
                if (e.length > 51) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
                name = e.text();
                continue;
            case 6: case 20: case 21: case 22: case 23: case 24: case 25: break;
            default: return Reply::of(KVN_E_INVALID_TAG_RECEIVED);
        }
        if (e.length != want) return Reply::of(KVN_E_INVALID_LENGTH_RECEIVED);
    }
    if (type < 0 || id < 0) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    if (type > 2) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
    const uint8_t fid = uint8_t(id);
    if (!name.empty())
        for (const auto& [other, f] : st.formats)
            if (other != fid && f.name == name) return Reply::of(KVN_E_NAME_ALREADY_EXIST);
    if (!st.formats.count(fid) && st.formats.size() >= kMaxFormats) return Reply::of(KVN_E_MAX_WIEGAND_REACHED);
    st.formats[fid] = WiegandFormat{fid, name, Bytes(c.rq.data, c.rq.data + c.rq.size)};
    st.save_misc();
    return Reply{};
}

}  // namespace kvnsim::wiegand
