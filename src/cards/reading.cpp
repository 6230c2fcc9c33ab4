// Card reading and card layouts: card serial reads (901, 703), CSN (902), PACS
// (917), access keys (903), MIFARE (904) and HID (913) layouts, DESFire (908) and
// key manipulation flags (912). Every exchange works in a 1024-byte buffer.
#include "core/command.h"
#include "kvnsdk2.h"
#include "link/commands.h"

namespace kvn {
namespace {

using namespace row;
constexpr uint32_t kBuffer = cmd::kSmallBuffer;

// Serial numbers: up to 64 bytes as they come, a longer value cut to 64.
constexpr Field kCardSerial[] = {
    bytes(12, KVN_MEMBER(kvn_card_serial_number, serial)),
    u32(11, KVN_MEMBER(kvn_card_serial_number, serial_info)),
};
constexpr Field kProxSerial[] = {bytes(2, Member<uint8_t[KVN_CARD_SERIAL_SIZE]>{0})};

constexpr Field kCsn[] = {
    u32(1, KVN_MEMBER(kvn_csn_setting, csn_value_1)),
    u32(2, KVN_MEMBER(kvn_csn_setting, csn_value_2)),
};

// Tags out of ascending order on purpose.
#define KEYS(member) KVN_MEMBER(kvn_smart_card_access_keys, member)
constexpr Field kAccessKeys[] = {bytes(6, KEYS(key_1)), bytes(3, KEYS(key_2)), bytes(4, KEYS(key_3)),
                                 bytes(16, KEYS(key_4))};
#undef KEYS

// A block goes out whole behind its flag when the flag is set. A read copies a value
// that fits the bound; a longer one stores only its first byte into the block's first.
#define MIFARE(member) KVN_MEMBER(kvn_mifare_cards_layout, member)
constexpr Gate k1k = is_not(MIFARE(mifare1k_flag), 0), k4k = is_not(MIFARE(mifare4k_flag), 0);
constexpr Field kMifare[] = {
    u8(8, MIFARE(mifare1k_flag)).when(k1k),
    bytes(7, MIFARE(mifare1k_layout)).when(k1k).lossy(KVN_CARD_LAYOUT_SIZE),
    u8(10, MIFARE(mifare4k_flag)).when(k4k),
    bytes(9, MIFARE(mifare4k_layout)).when(k4k).lossy(KVN_CARD_LAYOUT_SIZE),
};
#undef MIFARE

// hid_value's bound is exclusive: 8 bytes or more store only the first.
#define HID(member) KVN_MEMBER(kvn_hid_cards_layout, member)
constexpr Gate kHid1 = is_not(HID(hid_layout_1_flag), 0), kHid2 = is_not(HID(hid_layout_2_flag), 0),
               kHidValue = is_not(HID(hid_value_flag), 0);
constexpr Field kHid[] = {
    u8(30, HID(hid_layout_1_flag)).when(kHid1),
    bytes(29, HID(hid_layout_1)).when(kHid1).lossy(KVN_CARD_LAYOUT_SIZE),
    u8(32, HID(hid_layout_2_flag)).when(kHid2),
    bytes(31, HID(hid_layout_2)).when(kHid2).lossy(KVN_CARD_LAYOUT_SIZE),
    u8(34, HID(hid_value_flag)).when(kHidValue),
    bytes(33, HID(hid_value)).when(kHidValue).lossy(7),
};
#undef HID

constexpr Field kDesfire[] = {
    u32(13, KVN_MEMBER(kvn_desfire_settings, desfire_value_1)),
    u8(14, KVN_MEMBER(kvn_desfire_settings, desfire_value_2)),
    u32(15, KVN_MEMBER(kvn_desfire_settings, desfire_value_3)),
};

constexpr Field kKeyFlags[] = {
    u32(5, KVN_MEMBER(kvn_key_manipulation_flags, flags_1)),
    u32(20, KVN_MEMBER(kvn_key_manipulation_flags, flags_2)),
    u32(19, KVN_MEMBER(kvn_key_manipulation_flags, flags_3)),
};

// The MIFARE resets carry the layout they reset under tag 11: 8 for 1K, 24 for 4K.
constexpr Field kReset1k[] = {constant_u32(11, 8)};
constexpr Field kReset4k[] = {constant_u32(11, 24)};
constexpr uint8_t kNoRecord = 0;

int32_t reset_layout(kvn_device_conn* conn, Desc selector) noexcept {
    return cmd::send<kBuffer>(conn, Request{id::mifare_layout, KVN_REQ_RESET}, selector, &kNoRecord);
}

}  // namespace
}  // namespace kvn

using namespace kvn;

extern "C" {

KVN_API int32_t kvn_read_card_serial_number(kvn_device_conn* conn, kvn_card_serial_number* card) {
    return cmd::get<kBuffer>(conn, id::card_serial, kCardSerial, card);
}
KVN_API int32_t kvn_read_prox_card_serial_number(kvn_device_conn* conn, uint8_t* serial) {
    return cmd::get<kBuffer>(conn, id::prox_card_serial, kProxSerial, serial);
}

KVN_API int32_t kvn_set_csn_setting(kvn_device_conn* conn, const kvn_csn_setting* setting) {
    return cmd::set<kBuffer>(conn, id::csn, kCsn, setting);
}
KVN_API int32_t kvn_get_csn_setting(kvn_device_conn* conn, kvn_csn_setting* setting) {
    return cmd::get<kBuffer>(conn, id::csn, kCsn, setting);
}
KVN_API int32_t kvn_reset_csn_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::csn); }

// Written under tag 41, read from tag 1.
KVN_API int32_t kvn_set_pacs_setting(kvn_device_conn* conn, uint32_t value) {
    return cmd::set_u32<kBuffer>(conn, id::pacs, 41, value);
}
KVN_API int32_t kvn_get_pacs_setting(kvn_device_conn* conn, uint32_t* value) {
    return cmd::get_u32<kBuffer>(conn, id::pacs, 1, value);
}
KVN_API int32_t kvn_reset_pacs_setting(kvn_device_conn* conn) { return cmd::reset(conn, id::pacs); }

KVN_API int32_t kvn_set_smart_card_access_keys(kvn_device_conn* conn, const kvn_smart_card_access_keys* keys) {
    return cmd::set<kBuffer>(conn, id::access_keys, kAccessKeys, keys);
}
KVN_API int32_t kvn_reset_smart_card_access_keys(kvn_device_conn* conn) { return cmd::reset(conn, id::access_keys); }

KVN_API int32_t kvn_set_mifare_cards_layout(kvn_device_conn* conn, const kvn_mifare_cards_layout* layout) {
    return cmd::set<kBuffer>(conn, id::mifare_layout, kMifare, layout);
}
KVN_API int32_t kvn_get_mifare_cards_layout(kvn_device_conn* conn, kvn_mifare_cards_layout* layout) {
    return cmd::get<kBuffer>(conn, id::mifare_layout, kMifare, layout);
}
KVN_API int32_t kvn_reset_mifare1k_card_layout(kvn_device_conn* conn) { return reset_layout(conn, kReset1k); }
KVN_API int32_t kvn_reset_mifare4k_card_layout(kvn_device_conn* conn) { return reset_layout(conn, kReset4k); }

KVN_API int32_t kvn_set_hid_cards_layout(kvn_device_conn* conn, const kvn_hid_cards_layout* layout) {
    return cmd::set<kBuffer>(conn, id::hid_layout, kHid, layout);
}
KVN_API int32_t kvn_get_hid_cards_layout(kvn_device_conn* conn, kvn_hid_cards_layout* layout) {
    return cmd::get<kBuffer>(conn, id::hid_layout, kHid, layout);
}
KVN_API int32_t kvn_reset_hid_card_layout(kvn_device_conn* conn) { return cmd::reset(conn, id::hid_layout); }

KVN_API int32_t kvn_set_desfire_settings(kvn_device_conn* conn, const kvn_desfire_settings* setting) {
    return cmd::set<kBuffer>(conn, id::desfire, kDesfire, setting);
}
KVN_API int32_t kvn_get_desfire_settings(kvn_device_conn* conn, kvn_desfire_settings* setting) {
    return cmd::get<kBuffer>(conn, id::desfire, kDesfire, setting);
}
KVN_API int32_t kvn_reset_desfire_settings(kvn_device_conn* conn) { return cmd::reset(conn, id::desfire); }

KVN_API int32_t kvn_set_key_manipulation_flags(kvn_device_conn* conn, const kvn_key_manipulation_flags* flags) {
    return cmd::set<kBuffer>(conn, id::key_manipulation, kKeyFlags, flags);
}
KVN_API int32_t kvn_get_key_manipulation_flags(kvn_device_conn* conn, kvn_key_manipulation_flags* flags) {
    return cmd::get<kBuffer>(conn, id::key_manipulation, kKeyFlags, flags);
}
KVN_API int32_t kvn_reset_key_manipulation_flags(kvn_device_conn* conn) {
    return cmd::reset(conn, id::key_manipulation);
}

}  // extern "C"
