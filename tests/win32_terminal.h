// The terminal stand-in that the Windows tests talk to under Wine.
//
// scripts/wine-terminal (a CTest fixture) runs a helper on the Linux side that
// answers request frames over pseudo-terminals linked as COM ports of the Wine
// prefix and over a loopback TCP port. It describes what it set up in a file named
// by KVN_TEST_TERMINAL, one item a line:
//   tcp 127.0.0.1 PORT
//   serial COM5 COM6          (ports with the helper at the far end)
//   not-a-port COM7           (opens, but is no communication port)
//   sim-launcher 127.0.0.1 PORT  (when a Linux kvn-sim is at hand; see win32_remote_sim.cpp)
// Requests with command 1 get a line report (serial only), 2 an echo of the payload
// in three pieces, 3 the same echo after 1.5 s; see scripts/wine-terminal.c.
#pragma once

#include <winsock2.h>
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace kvntest {

struct TerminalConfig {
    std::string tcp_ip;
    uint16_t tcp_port = 0;
    std::vector<std::wstring> serial;  // device names, \\.\COMn
    std::wstring not_a_port;
    std::string sim_ip;
    uint16_t sim_port = 0;
};

inline std::wstring device_name(const char* com) { return L"\\\\.\\" + std::wstring(com, com + std::strlen(com)); }

// Empty when the test binary runs outside the fixture.
inline TerminalConfig terminal_config() {
    TerminalConfig cfg;
    const char* path = std::getenv("KVN_TEST_TERMINAL");
    FILE* f = path != nullptr ? std::fopen(path, "r") : nullptr;
    if (f == nullptr) return cfg;
    // An address and a port, taken only when the port is one.
    auto address = [](const char* ip, const char* port, std::string& ip_out, uint16_t& port_out) {
        const long p = std::strtol(port, nullptr, 10);
        if (p > 0 && p < 65536) {
            ip_out = ip;
            port_out = static_cast<uint16_t>(p);
        }
    };
    char line[256];
    while (std::fgets(line, sizeof line, f) != nullptr) {
        char kind[32] = {}, a[64] = {}, b[64] = {};
        const int n = std::sscanf(line, "%31s %63s %63s", kind, a, b);
        if (n >= 3 && std::strcmp(kind, "tcp") == 0) address(a, b, cfg.tcp_ip, cfg.tcp_port);
        if (n >= 3 && std::strcmp(kind, "sim-launcher") == 0) address(a, b, cfg.sim_ip, cfg.sim_port);
        if (n >= 2 && std::strcmp(kind, "serial") == 0) cfg.serial.push_back(device_name(a));
        if (n >= 3 && std::strcmp(kind, "serial") == 0) cfg.serial.push_back(device_name(b));
        if (n >= 2 && std::strcmp(kind, "not-a-port") == 0) cfg.not_a_port = device_name(a);
    }
    std::fclose(f);
    return cfg;
}

}  // namespace kvntest

#define KVN_SKIP_WITHOUT_TERMINAL() \
    GTEST_SKIP() << "KVN_TEST_TERMINAL is not set: run through ctest (mingw preset), whose fixture starts the terminal"
