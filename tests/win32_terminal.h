// The terminal stand-in that the Windows tests talk to under Wine.
//
// scripts/wine-terminal (a CTest fixture) runs a helper on the Linux side that
// answers request frames over pseudo-terminals linked as COM ports of the Wine
// prefix and over a loopback TCP port. It describes what it set up in a file named
// by KVN_TEST_TERMINAL, one item a line:
//   tcp 127.0.0.1 PORT
//   serial COM5 COM6          (ports with the helper at the far end)
//   not-a-port COM7           (opens, but is no communication port)
//   sim-launcher 127.0.0.1 PORT  (when a Linux kvn-sim is at hand; see RemoteSimulator)
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

inline std::wstring device_name(const char* com) {
    std::wstring name = L"\\\\.\\";
    for (const char* p = com; *p != '\0'; ++p) name.push_back(static_cast<wchar_t>(*p));
    return name;
}

// Empty when the test binary runs outside the fixture.
inline TerminalConfig terminal_config() {
    TerminalConfig cfg;
    const char* path = std::getenv("KVN_TEST_TERMINAL");
    if (path == nullptr) return cfg;
    FILE* f = std::fopen(path, "r");
    if (f == nullptr) return cfg;
    char line[256];
    while (std::fgets(line, sizeof line, f) != nullptr) {
        char kind[32] = {}, a[64] = {}, b[64] = {};
        const int n = std::sscanf(line, "%31s %63s %63s", kind, a, b);
        if (n >= 3 && std::strcmp(kind, "tcp") == 0) {
            const long port = std::strtol(b, nullptr, 10);
            if (port > 0 && port < 65536) {
                cfg.tcp_ip = a;
                cfg.tcp_port = static_cast<uint16_t>(port);
            }
        } else if (n >= 2 && std::strcmp(kind, "serial") == 0) {
            cfg.serial.push_back(device_name(a));
            if (n >= 3) cfg.serial.push_back(device_name(b));
        } else if (n >= 2 && std::strcmp(kind, "not-a-port") == 0) {
            cfg.not_a_port = device_name(a);
        } else if (n >= 3 && std::strcmp(kind, "sim-launcher") == 0) {
            const long port = std::strtol(b, nullptr, 10);
            if (port > 0 && port < 65536) {
                cfg.sim_ip = a;
                cfg.sim_port = static_cast<uint16_t>(port);
            }
        }
    }
    std::fclose(f);
    return cfg;
}

// Wine exports wine_get_version from its ntdll; Windows does not.
inline bool under_wine() {
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

// A fresh simulated terminal (the Linux kvn-sim) for as long as the object runs:
// start() asks the launcher port of scripts/wine-terminal for one, passing extra
// kvn-sim options (for example "--bad-crc" or "--serial"); stop() closes that
// connection, which ends the simulator. Like the in-process simulator it offers
// start(), port() and stop(); a serial one names its COM port instead.
// It holds a Windows Sockets start-up of its own while it runs.
class RemoteSimulator {
public:
    explicit RemoteSimulator(std::string options = std::string()) : options_(std::move(options)) {}
    ~RemoteSimulator() { stop(); }
    RemoteSimulator(const RemoteSimulator&) = delete;
    RemoteSimulator& operator=(const RemoteSimulator&) = delete;

    // Whether the fixture offers simulators (a kvn-sim was found when it started).
    static bool available() { return terminal_config().sim_port != 0; }

    bool start(std::string* error = nullptr) {
        stop();
        auto fail = [&](const std::string& why) {
            if (error != nullptr) *error = why;
            stop();
            return false;
        };
        const TerminalConfig cfg = terminal_config();
        if (cfg.sim_port == 0) return fail("no simulator launcher (KVN_TEST_TERMINAL)");
        WSADATA wsa;
        if (WSAStartup(MAKEWORD(2, 2), &wsa) != 0) return fail("WSAStartup");
        started_ = true;
        control_ = ::socket(AF_INET, SOCK_STREAM, 0);
        if (control_ == INVALID_SOCKET) return fail("socket");
        sockaddr_in addr;
        std::memset(&addr, 0, sizeof addr);
        addr.sin_family = AF_INET;
        addr.sin_port = htons(cfg.sim_port);
        addr.sin_addr.s_addr = inet_addr(cfg.sim_ip.c_str());
        if (::connect(control_, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) return fail("connect");
        const std::string request = options_ + "\n";
        if (::send(control_, request.data(), static_cast<int>(request.size()), 0) != static_cast<int>(request.size()))
            return fail("send");
        std::string line;
        char c = 0;
        while (line.size() < 512) {
            fd_set set;
            FD_ZERO(&set);
            FD_SET(control_, &set);
            timeval limit{15, 0};
            if (::select(0, &set, nullptr, nullptr, &limit) != 1 || ::recv(control_, &c, 1, 0) != 1)
                return fail("no answer from the launcher");
            if (c == '\n') break;
            line.push_back(c);
        }
        if (line.rfind("ok ", 0) != 0) return fail(line);
        const std::string where = line.substr(3);
        if (where.rfind("COM", 0) == 0) {
            serial_ = device_name(where.c_str());
        } else {
            const size_t colon = where.rfind(':');
            if (colon == std::string::npos) return fail(line);
            ip_ = where.substr(0, colon);
            port_ = static_cast<uint16_t>(std::strtol(where.c_str() + colon + 1, nullptr, 10));
        }
        return true;
    }

    void stop() {
        if (control_ != INVALID_SOCKET) ::closesocket(control_);
        control_ = INVALID_SOCKET;
        if (started_) WSACleanup();
        started_ = false;
        ip_.clear();
        port_ = 0;
        serial_.clear();
    }

    bool running() const { return control_ != INVALID_SOCKET; }
    const std::string& ip() const { return ip_; }
    uint16_t port() const { return port_; }
    const std::wstring& serial_port() const { return serial_; }  // \\.\COMn, with "--serial"

private:
    std::string options_;
    SOCKET control_ = INVALID_SOCKET;
    bool started_ = false;
    std::string ip_;
    uint16_t port_ = 0;
    std::wstring serial_;
};

}  // namespace kvntest

#define KVN_SKIP_WITHOUT_TERMINAL() \
    GTEST_SKIP() << "KVN_TEST_TERMINAL is not set: run through ctest (mingw preset), whose fixture starts the terminal"
