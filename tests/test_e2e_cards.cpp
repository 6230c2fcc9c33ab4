// Card and Wiegand exports against the simulated terminal: each settings family set,
// read back and reset, the access keys written, formats uploaded, listed and deleted,
// and (with the in-process simulator) a presented card read. Interoperation only: the
// bytes are pinned down in test_wire_cards.cpp.
#if KVN_HAVE_SIM
#include <gtest/gtest.h>

#include "e2e.h"
#include "records_cards.h"

using namespace kvntest;

TEST(CardsE2E, EveryFamilyRoundTrips) {
    Session s;
    kvn_device_conn* c = s.c;
    ROUND_TRIP(c, csn_setting, kvn_csn_setting{0x902, 0x1902});
    round_trip(c, "pacs", uint32_t{0x917}, by_value<kvn_set_pacs_setting>, kvn_get_pacs_setting, kvn_reset_pacs_setting);
    round_trip(c, "mifare", *mifare(), kvn_set_mifare_cards_layout, kvn_get_mifare_cards_layout,
               [](auto c2) { return kvn_reset_mifare1k_card_layout(c2) | kvn_reset_mifare4k_card_layout(c2); });
    round_trip(c, "hid", *hid(1), kvn_set_hid_cards_layout, kvn_get_hid_cards_layout, kvn_reset_hid_card_layout);
    ROUND_TRIP(c, desfire_settings, *desfire());
    ROUND_TRIP(c, key_manipulation_flags, kvn_key_manipulation_flags{5, 20, 19});
    ROUND_TRIP(c, srl_server_settings, *srl());
    ROUND_TRIP(c, card_preference_settings, uint16_t{0x0916});
    ROUND_TRIP(c, wiegand_input_setting, *make<kvn_wiegand_input_setting>([](auto& i) { fill_input(i, 1); }));
    ROUND_TRIP(c, wiegand_output_setting, *output());
    ROUND_TRIP(c, wiegand_pulse_setting, *make<kvn_wiegand_pulse_setting>([](auto& p) { p.attr_t07 = 3, p.attr_t08 = 250; }));
    ROUND_TRIP(c, multi_wiegand_input_setting, *multi_input());
    const kvn_smart_card_access_keys keys{};
    EXPECT_EQ(kvn_set_smart_card_access_keys(c, &keys) | kvn_reset_smart_card_access_keys(c), 0);

    // A format of each type (type 0 always as id 1); the listed one is found, and gone once deleted.
    for (uint32_t type : {0u, 1u, 2u}) {
        auto f = wiegand_format(type);
        f->format_id = uint8_t(20 + type), f->format_name[1] = char('0' + type);
        ASSERT_EQ(kvn_upload_wiegand_format(c, f.get()), 0) << type;
    }
    auto list = make<kvn_wiegand_format_list>([](auto&) {});
    auto listed = [&](uint8_t id, const char* name) {
        EXPECT_EQ(kvn_get_wiegand_format_list(c, list.get()), 0);
        for (uint8_t i = 0; i < list->count; ++i)
            if (list->format_ids[i] == id && std::strncmp(list->format_names[i], name, 51) == 0) return true;
        return false;
    };
    EXPECT_TRUE(listed(1, "") && listed(22, "W26"));
    EXPECT_EQ(kvn_delete_wiegand_format(c, 22), 0);
    EXPECT_FALSE(listed(22, "W26"));
#if !KVN_REMOTE_SIM  // a card is presented through the in-process simulator only
    s.sim->present_card({0x04, 0xA1, 0xB2});
    auto card = make<kvn_card_serial_number>([](auto&) {});
    uint8_t prox[KVN_CARD_SERIAL_SIZE] = {};
    ASSERT_EQ(kvn_read_card_serial_number(c, card.get()) | kvn_read_prox_card_serial_number(c, prox), 0);
    EXPECT_EQ(Bytes(card->serial, card->serial + 4), (Bytes{4, 0xA1, 0xB2, 0}));
    EXPECT_EQ(Bytes(prox, prox + 4), (Bytes{4, 0xA1, 0xB2, 0}));
#endif
}
#endif
