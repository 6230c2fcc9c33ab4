// Status messages and the small utilities.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kvnsdk2.h"

namespace {
std::string message(int32_t code) {
    char text[KVN_STATUS_TEXT_MAX + 16];
    EXPECT_EQ(kvn_utils_get_status_code_string(code, text), 0);
    return text;
}

std::vector<std::string> g_lines;
void capture(void*, const char* line) { g_lines.emplace_back(line); }
}  // namespace

TEST(Status, Messages) {
    const std::pair<int32_t, const char*> cases[] = {
        {0, "Success"},
        {-1, "TLV buffer overflow"},
        {-2, "Read timeout"},
        {-12, "Invalid SYNC word"},
        {-14, "User Record Store"},
        {-15, "Invalid IP address"},
        {-1001, "Invalid tag received"},
        {-1026, "Can not set RS232/RS485/Secure Relay Box 1,802,Violation of the Anti-passback Rule"},
        {-1028, "Entred Duplicate Value"},
        {-2012, "UserID already exists"},
        {-4035, "connect USB ."},
        {-5008, "Group(s) doesn't exist on device"},
        {-6002, "Failed to delete UserRecord"},
        {-8001, "Invalid IPAddress"},
        {-10004, "FailToWriteSmartCard"},
        {-11001, "Failed to Retrive VPNSettings"},
        {-11007, "Incorrect format. Only certificate files with (.pfx, .p12, .crt) file types can be uploaded."},
        {-11008, "Invalid VPN Certificate or Password"},
        // Codes without a message of their own.
        {-1007, "Error : -1007"},
        {-1013, "Error : -1013"},
        {-10011, "Error : -10011"},
        {5, "Error : 5"},
        {-16, "Error : -16"},
        {-11009, "Error : -11009"},
        {INT32_MIN, "Error : -2147483648"},
    };
    for (const auto& [code, text] : cases) EXPECT_EQ(message(code), text) << code;
    // Callers size their buffers for the longest message and its NUL.
    EXPECT_EQ(message(-11007).size() + 1, size_t{KVN_STATUS_TEXT_MAX});
}

TEST(Utilities, Version) { EXPECT_STREQ(kvn_get_sdk2_version(), "1.4.0.0"); }

TEST(Utilities, IpTextToInt) {
    const std::pair<const char*, uint32_t> good[] = {
        {"192.168.1.10", 0xC0A8010Au}, {"255.255.255.255", 0xFFFFFFFFu}, {"0.0.0.0", 0u},
        {"010.0.0.1", 0x0A000001u},  // leading zeros are decimal
    };
    for (const auto& [text, value] : good) {
        uint32_t v = 1;
        EXPECT_EQ(kvn_convert_ip_string_to_int(text, &v), 0) << text;
        EXPECT_EQ(v, value) << text;
    }
    const char* bad[] = {"256.1.1.1", "1.2.3", "1.2.3.4.5", " 1.2.3.4", "", "1..2.3", "1.2.3.4a",
                         "1234567890123456", "1.2.3.-4", "1.2.3.256", "0000000001.2.3.4"};
    for (const char* text : bad) {
        uint32_t v = 0x5A5A5A5A;
        EXPECT_EQ(kvn_convert_ip_string_to_int(text, &v), -15) << text;
        EXPECT_EQ(v, 0x5A5A5A5Au) << "written only on success: " << text;
    }
    uint32_t v;
    EXPECT_EQ(kvn_convert_ip_string_to_int(nullptr, &v), -15);
    EXPECT_EQ(kvn_convert_ip_string_to_int("1.2.3.4", nullptr), -15);
}

TEST(Utilities, IpIntToText) {
    char text[16];
    EXPECT_EQ(kvn_convert_ip_int_to_string(0x0A000001u, text), 8);
    EXPECT_STREQ(text, "10.0.0.1");
    EXPECT_EQ(kvn_convert_ip_int_to_string(0xFFFFFFFFu, text), 15);
    EXPECT_STREQ(text, "255.255.255.255");
}

TEST(Utilities, AlphanumericCheckAndItsDiagnostic) {
    kvn_ext_set_diagnostic_sink(capture, nullptr);
    g_lines.clear();
    EXPECT_EQ(kvn_utils_validate_alphanumeric_string("Ab9", 3), 0);
    EXPECT_EQ(kvn_utils_validate_alphanumeric_string("A b", 3), -1009);
    EXPECT_EQ(kvn_utils_validate_alphanumeric_string("\xE9", 1), 0);  // negative as a signed byte
    EXPECT_EQ(kvn_utils_validate_alphanumeric_string("ab\0c", 4), -1009);
    EXPECT_EQ(kvn_utils_validate_alphanumeric_string("a/", 2), -1009);
    EXPECT_EQ(kvn_utils_validate_alphanumeric_string("z{", 2), -1009);
    EXPECT_EQ(kvn_utils_validate_alphanumeric_string("@", 1), -1009);
    EXPECT_EQ(kvn_utils_validate_alphanumeric_string("`", 1), -1009);
    EXPECT_EQ(kvn_utils_validate_alphanumeric_string("a b", 1), 0) << "only count bytes are checked";
    EXPECT_EQ(kvn_utils_validate_alphanumeric_string(" ", 0), 0);
    kvn_ext_set_diagnostic_sink(nullptr, nullptr);
    ASSERT_EQ(g_lines.size(), 6u);
    EXPECT_EQ(g_lines[0], "char  \n");
    EXPECT_EQ(g_lines[3], "char {\n");
}

extern "C" int kvn_test_header_from_c(void);
TEST(Header, UsableFromC) { EXPECT_EQ(kvn_test_header_from_c(), static_cast<int>(sizeof(kvn_device_conn))); }
