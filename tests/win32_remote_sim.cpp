// kvnsim::Simulator for the Windows test binary: the simulated terminal cannot run
// inside a Windows process, so each Simulator object starts a fresh Linux kvn-sim of
// its own through the launcher port of scripts/wine-terminal and reaches it over
// loopback TCP, or over a COM port with `serial`. The end-to-end tests written against
// the in-process simulator thus run unchanged on both builds.
//
// The launcher protocol: connect, send one line of extra kvn-sim options, read back
// "ok 127.0.0.1:PORT", "ok COMn" (with --serial) or "error TEXT"; the simulator runs
// until that connection closes. The object holds a Windows Sockets start-up of its
// own while it runs.
//
// What a remote simulator cannot do is refused rather than ignored: start() fails with
// a state directory (it would be a Linux path) or a prefilled journal, and the controls
// of a running simulator (faults, finger, card, counters) are not defined here, so that
// a Windows test calling them fails to link. Tests that need them stay in posix_*.cpp.
#if KVN_REMOTE_SIM

#include <string>

#include "kvnsim.h"
#include "win32_terminal.h"

namespace kvnsim {

struct Simulator::Impl {
    Options options;
    SOCKET control = INVALID_SOCKET;
    bool wsa = false;
    std::string ip, com;
    uint16_t port = 0;
};

namespace {

std::string command_line(const Options& o) {
    std::string args;
    auto add = [&](const std::string& a) { args += (args.empty() ? "" : " ") + a; };
    if (o.serial) add("--serial");
    const Faults& f = o.faults;
    if (f.latency_ms != 0) add("--latency-ms " + std::to_string(f.latency_ms));
    if (f.no_answer) add("--no-answer");
    if (f.close_after_bytes >= 0) add("--close-after " + std::to_string(f.close_after_bytes));
    if (f.bad_sync) add("--bad-sync");
    if (f.bad_crc) add("--bad-crc");
    if (f.byte_by_byte) add("--byte-by-byte");
    std::string card;
    for (uint8_t b : o.card) card += {"0123456789ABCDEF"[b >> 4], "0123456789ABCDEF"[b & 15]};
    if (!card.empty()) add("--card " + card);
    if (f.start_packets != 0) add("--start-packets " + std::to_string(f.start_packets));
    if (f.refuse_packet != 0) add("--refuse-packet " + std::to_string(f.refuse_packet));
    return args;
}

}  // namespace

Simulator::Simulator() : Simulator(Options{}) {}
Simulator::Simulator(Options options) : impl_(std::make_unique<Impl>()) { impl_->options = std::move(options); }
Simulator::~Simulator() { stop(); }

bool Simulator::start(std::string* error) {
    stop();
    Impl& m = *impl_;
    auto fail = [&](const std::string& why) {
        if (error != nullptr) *error = why;
        stop();
        return false;
    };
    if (!m.options.state_dir.empty() || m.options.prefill_logs != 0)
        return fail("a state directory or a prefilled journal needs the in-process simulator");
    const kvntest::TerminalConfig cfg = kvntest::terminal_config();
    if (cfg.sim_port == 0)
        return fail("no simulator launcher (KVN_TEST_TERMINAL): build kvn-sim with the default preset, run through ctest");
    WSADATA wsa;
    if (WSAStartup(MAKEWORD(2, 2), &wsa) != 0) return fail("WSAStartup");
    m.wsa = true;
    m.control = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(cfg.sim_port);
    addr.sin_addr.s_addr = inet_addr(cfg.sim_ip.c_str());
    if (m.control == INVALID_SOCKET || ::connect(m.control, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0)
        return fail("cannot reach the simulator launcher");
    const std::string request = command_line(m.options) + "\n";
    if (::send(m.control, request.data(), static_cast<int>(request.size()), 0) != static_cast<int>(request.size()))
        return fail("send");
    const DWORD limit_ms = 15000;  // for each byte of the answer line
    ::setsockopt(m.control, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&limit_ms), sizeof limit_ms);
    std::string line;
    char c = 0;
    while (line.size() < 512 && ::recv(m.control, &c, 1, 0) == 1 && c != '\n') line.push_back(c);
    if (c != '\n') return fail("no answer from the launcher");
    const size_t colon = line.rfind(':');
    if (line.rfind("ok COM", 0) == 0) {
        m.com = "\\\\.\\" + line.substr(3);
    } else if (line.rfind("ok ", 0) == 0 && colon != std::string::npos) {
        m.ip = line.substr(3, colon - 3);
        m.port = static_cast<uint16_t>(std::strtol(line.c_str() + colon + 1, nullptr, 10));
    } else {
        return fail(line);
    }
    return true;
}

void Simulator::stop() {
    Impl& m = *impl_;
    if (m.control != INVALID_SOCKET) ::closesocket(m.control);  // ends the Linux simulator
    if (m.wsa) WSACleanup();
    Options options = std::move(m.options);
    m = Impl{};
    m.options = std::move(options);
}

bool Simulator::running() const { return impl_->port != 0 || !impl_->com.empty(); }
uint16_t Simulator::port() const { return impl_->port; }
std::string Simulator::address() const { return running() ? impl_->ip + ":" + std::to_string(impl_->port) : ""; }
std::string Simulator::serial_path() const { return impl_->com; }  // \\.\COMn

}  // namespace kvnsim

#endif  // KVN_REMOTE_SIM
