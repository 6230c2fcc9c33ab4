#include "settings/fields.h"

namespace kvn {

void encode_fields(tlv::Writer& w, FieldTable table, const void* record) noexcept {
    const auto* base = static_cast<const uint8_t*>(record);
    for (const Field& f : table) {
        const uint8_t* m = base + f.offset;
        switch (f.wire) {
            case Wire::u8: w.u8(f.tag, *m); break;
            case Wire::u16: {
                uint16_t v;
                std::memcpy(&v, m, sizeof v);
                w.u16(f.tag, v);
                break;
            }
            case Wire::u32: {
                uint32_t v;
                std::memcpy(&v, m, sizeof v);
                w.u32(f.tag, v);
                break;
            }
            case Wire::text: w.text(f.tag, reinterpret_cast<const char*>(m), f.size); break;
            case Wire::text_always: w.text(f.tag, reinterpret_cast<const char*>(m), f.size, true); break;
            case Wire::text_whole: w.text_whole(f.tag, reinterpret_cast<const char*>(m), f.size); break;
            case Wire::bytes: w.element(f.tag, m, f.size); break;
        }
    }
}

bool store_field(FieldTable table, uint8_t tag, const uint8_t* value, uint32_t length, void* record) noexcept {
    auto* base = static_cast<uint8_t*>(record);
    for (const Field& f : table) {
        if (f.tag != tag) continue;
        uint8_t* m = base + f.offset;
        switch (f.wire) {
            case Wire::u8: *m = value[0]; break;
            case Wire::u16: {
                const uint16_t v = tlv::value_u16(value, length);
                std::memcpy(m, &v, sizeof v);
                break;
            }
            case Wire::u32: {
                const uint32_t v = tlv::value_u32(value, length);
                std::memcpy(m, &v, sizeof v);
                break;
            }
            case Wire::text:
            case Wire::text_always:
            case Wire::text_whole:
            case Wire::bytes: tlv::copy_bounded(m, f.limit < f.size ? f.limit : f.size, value, length); break;
        }
        return true;
    }
    return false;
}

int32_t decode_fields(FieldTable table, const uint8_t* payload, uint32_t length, void* record,
                      tlv::Empty empty) noexcept {
    return tlv::decode(
        payload, length,
        [&](uint8_t tag, const uint8_t* v, uint32_t n) {
            store_field(table, tag, v, n, record);
            return 0;
        },
        empty);
}

}  // namespace kvn
