// Status messages and the small utilities.
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <string>
#include <thread>
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
        {0, "Success"}, {-1, "TLV buffer overflow"}, {-2, "Read timeout"}, {-12, "Invalid SYNC word"},
        {-14, "User Record Store"}, {-15, "Invalid IP address"}, {-1001, "Invalid tag received"},
        {-1026, "Can not set RS232/RS485/Secure Relay Box 1,802,Violation of the Anti-passback Rule"},
        {-1028, "Entred Duplicate Value"}, {-2012, "UserID already exists"}, {-4035, "connect USB ."},
        {-5008, "Group(s) doesn't exist on device"}, {-6002, "Failed to delete UserRecord"},
        {-8001, "Invalid IPAddress"}, {-10004, "FailToWriteSmartCard"}, {-11001, "Failed to Retrive VPNSettings"},
        {-11007, "Incorrect format. Only certificate files with (.pfx, .p12, .crt) file types can be uploaded."},
        {-11008, "Invalid VPN Certificate or Password"},
        // Codes without a message of their own.
        {-1007, "Error : -1007"}, {-1013, "Error : -1013"}, {-10011, "Error : -10011"}, {5, "Error : 5"},
        {-16, "Error : -16"}, {-11009, "Error : -11009"}, {INT32_MIN, "Error : -2147483648"},
    };
    for (const auto& [code, text] : cases) EXPECT_EQ(message(code), text) << code;
    // Callers size their buffers for the longest message and its NUL.
    EXPECT_EQ(message(-11007).size() + 1, size_t{KVN_STATUS_TEXT_MAX});
}

TEST(Utilities, Version) { EXPECT_STREQ(kvn_get_sdk2_version(), "1.4.0.0"); }

TEST(Utilities, IpTextAndInt) {
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
                         "1234567890123456", "1.2.3.-4", "1.2.3.256", "0000000001.2.3.4",
                         // Numbers far beyond any field: refused, never overflowed.
                         "999999999.1.1.1", "1.1.1.999999999", "4294967296.0.0", "1.2.3.", ".1.2.3"};
    for (const char* text : bad) {
        uint32_t v = 0x5A5A5A5A;
        EXPECT_EQ(kvn_convert_ip_string_to_int(text, &v), -15) << text;
        EXPECT_EQ(v, 0x5A5A5A5Au) << "written only on success: " << text;
    }
    uint32_t v;
    EXPECT_EQ(kvn_convert_ip_string_to_int(nullptr, &v), -15);
    EXPECT_EQ(kvn_convert_ip_string_to_int("1.2.3.4", nullptr), -15);
    // Back to text: the length written, without its NUL.
    char text[16];
    EXPECT_EQ(kvn_convert_ip_int_to_string(0x0A000001u, text), 8);
    EXPECT_STREQ(text, "10.0.0.1");
    EXPECT_EQ(kvn_convert_ip_int_to_string(0xFFFFFFFFu, text), 15);
    EXPECT_STREQ(text, "255.255.255.255");
}

TEST(Utilities, AlphanumericCheckAndItsDiagnostic) {
    kvn_ext_set_diagnostic_sink(capture, nullptr);
    g_lines.clear();
    const struct { const char* text; int32_t count; int32_t rc; } cases[] = {
        {"Ab9", 3, 0}, {"A b", 3, -1009}, {"\xE9", 1, 0} /* negative as a signed byte */, {"ab\0c", 4, -1009},
        {"a/", 2, -1009}, {"z{", 2, -1009}, {"@", 1, -1009}, {"`", 1, -1009},
        {"a b", 1, 0} /* only count bytes are checked */, {" ", 0, 0},
    };
    for (const auto& k : cases) EXPECT_EQ(kvn_utils_validate_alphanumeric_string(k.text, k.count), k.rc) << k.text;
    kvn_ext_set_diagnostic_sink(nullptr, nullptr);
    ASSERT_EQ(g_lines.size(), 6u);
    EXPECT_EQ(g_lines[0], "char  \n");
    EXPECT_EQ(g_lines[3], "char {\n");
}

namespace {
struct Tag { std::atomic<bool> retired{false}; std::atomic<int> calls{0}, late{0}, mixed{0}; };
Tag g_a, g_b;
template <Tag* T>
void tagged_sink(void* ctx, const char*) {
    ++T->calls;
    if (ctx != T) ++T->mixed;
    if (T->retired) ++T->late;
}
}  // namespace

// A sink and its context are one pair: a line never reaches a sink with another's
// context, and a sink that has been replaced is not called again.
TEST(Utilities, DiagnosticSinkChangesWithoutARace) {
    std::atomic<bool> stop{false};
    std::thread printer([&] {
        while (!stop) kvn_utils_validate_alphanumeric_string(" ", 1);
    });
    for (int i = 0; i < 2000 || g_a.calls + g_b.calls < 20000; ++i) {
        Tag& next = i % 2 == 0 ? g_a : g_b;
        Tag& prev = i % 2 == 0 ? g_b : g_a;
        next.retired = false;
        kvn_ext_set_diagnostic_sink(&next == &g_a ? tagged_sink<&g_a> : tagged_sink<&g_b>, &next);
        prev.retired = true;
    }
    stop = true;
    printer.join();
    kvn_ext_set_diagnostic_sink(nullptr, nullptr);
    EXPECT_EQ(g_a.mixed + g_b.mixed, 0);
    EXPECT_EQ(g_a.late + g_b.late, 0);
}

extern "C" size_t kvn_check_layout_c(size_t* out, size_t capacity);
extern "C" size_t kvn_check_layout_cxx(size_t* out, size_t capacity);

// The connection records' layouts, pinned for both builds: what the library is
// compiled with, and what consumers see from C99 and C++ under #pragma pack(1).
TEST(Header, LayoutsHoldForEveryConsumer) {
#if defined(_WIN64)
    const std::vector<size_t> pinned = {32, 8, 16, 24, 80, 8, 16, 24, 32, 36, 48};
#elif defined(__x86_64__) || defined(__LP64__)
    const std::vector<size_t> pinned = {16, 4, 8, 12, 64, 8, 16, 24, 32, 36, 44};
#else
    GTEST_SKIP() << "layouts are pinned for Linux x86-64 and Windows x64";
#endif
    const std::vector<size_t> library = {
        sizeof(kvn_conn_link), offsetof(kvn_conn_link, socket), offsetof(kvn_conn_link, reserved),
        offsetof(kvn_conn_link, serial_handle), sizeof(kvn_device_conn), offsetof(kvn_device_conn, ip_address),
        offsetof(kvn_device_conn, port), offsetof(kvn_device_conn, serial_port), offsetof(kvn_device_conn, baud_rate),
        offsetof(kvn_device_conn, reserved), offsetof(kvn_device_conn, link)};
    EXPECT_EQ(library, pinned);
    std::vector<size_t> consumer = pinned;
    consumer.push_back(5);  // the includer's own packed record: pack(1) holds again after the header
    consumer.push_back(1);  // calls reach the library
    for (auto* check : {kvn_check_layout_c, kvn_check_layout_cxx}) {
        std::vector<size_t> seen(16);
        seen.resize(check(seen.data(), seen.size()));
        EXPECT_EQ(seen, consumer);
    }
}
