#include "context.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>

namespace kvnctl {

const char* const kExitHelp =
    "Exit codes: 0 success; 2 bad arguments; 3 bad input (JSON, files); 4 terminal unreachable or link "
    "failure; 5 request refused (the status message is printed); 6 database failure; 130 interrupted.";

std::string status_text(int32_t rc) {
    char text[KVN_STATUS_TEXT_MAX + 16] = {};
    kvn_utils_get_status_code_string(rc, text);
    return text;
}

int exit_for(int32_t rc) {
    switch (rc) {
        case 0: return kOk;
        case -2: case -3: case -5: case -6: case -12: return kLink;
        default: return kRefused;
    }
}

volatile sig_atomic_t g_interrupted = 0;

void catch_interrupts() {
    struct sigaction sa {};
    sa.sa_handler = [](int) { g_interrupted = 1; };
    sa.sa_flags = SA_RESTART;  // calls go on; the progress callback cancels the transfer
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

namespace {
constexpr int32_t kCancelled = 0x7FFF0001;  // what the progress callback returns to cancel
}

void check(int32_t rc, const std::string& what) {
    if (rc == kCancelled || g_interrupted) throw Failure(kInterrupted, what + ": interrupted");
    if (rc != 0) throw Failure(exit_for(rc), what + ": " + status_text(rc) + " (" + std::to_string(rc) + ")");
}

std::vector<uint8_t> parse_hex(const std::string& hex, const std::string& what) {
    std::vector<uint8_t> out;
    if (hex.size() % 2) throw Failure(kBadInput, what + ": odd number of hex digits");
    for (size_t i = 0; i < hex.size(); i += 2) {
        const int hi = hex_digit(hex[i]), lo = hex_digit(hex[i + 1]);
        if (hi < 0 || lo < 0) throw Failure(kBadInput, what + ": not hex");
        out.push_back(static_cast<uint8_t>(hi << 4 | lo));
    }
    return out;
}

std::string read_input(const std::string& path) {
    if (path.empty() || path == "-") return std::string(std::istreambuf_iterator<char>(std::cin), {});
    std::ifstream in(path, std::ios::binary);
    if (!in) throw Failure(kBadInput, path + ": cannot be read");
    return std::string(std::istreambuf_iterator<char>(in), {});
}

json parse_json(const std::string& path) {
    try {
        return json::parse(read_input(path));
    } catch (const json::exception& e) {
        throw Failure(kBadInput, (path.empty() ? std::string("stdin") : path) + ": " + e.what());
    }
}

std::string base_name(const std::string& path) {
    const auto slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

Session::~Session() {
    if (opened) kvn_close_device_conn(&conn);
}

void Session::open_host(const std::string& host) {
    name = host;
    ip = host;
    conn.port = 5005;
    if (auto colon = host.rfind(':'); colon != std::string::npos) {
        ip = host.substr(0, colon);
        const std::string p = host.substr(colon + 1);
        char* end = nullptr;
        const unsigned long v = std::strtoul(p.c_str(), &end, 10);
        if (p.empty() || *end || v == 0 || v > 65535) throw Failure(kUsage, "--host " + host + ": bad port");
        conn.port = static_cast<uint16_t>(v);
    }
    conn.ip_address = ip.c_str();
    conn.link.conn_type = KVN_CONN_TCP;
    finish_open();
}

void Session::open_default(const Context& ctx) {
    if (!ctx.serial.empty() && !ctx.sim) {
        name = ctx.serial;
        wpath.assign(ctx.serial.begin(), ctx.serial.end());
        conn.serial_port = wpath.c_str();
        conn.baud_rate = ctx.baud;
        conn.link.conn_type = KVN_CONN_SERIAL;
        finish_open();
        return;
    }
    if (!ctx.hosts.empty() && !ctx.sim) return open_host(ctx.hosts.front());
    kvnsim::Options so;
    so.state_dir = ctx.state;
    so.prefill_logs = ctx.prefill;
    sim = std::make_unique<kvnsim::Simulator>(so);
    std::string err;
    if (!sim->start(&err)) throw Failure(kLink, "built-in simulator: " + err);
    if (!ctx.finger.empty()) {
        const auto colon = ctx.finger.rfind(':');
        if (colon == std::string::npos) throw Failure(kUsage, "--finger: USER:FINGER expected");
        sim->present_finger(ctx.finger.substr(0, colon),
                            static_cast<uint8_t>(std::strtoul(ctx.finger.c_str() + colon + 1, nullptr, 10)));
    }
    if (!ctx.card.empty()) sim->present_card(parse_hex(ctx.card, "--card"));
    ip = "127.0.0.1";
    conn.ip_address = ip.c_str();
    conn.port = sim->port();
    conn.link.conn_type = KVN_CONN_TCP;
    finish_open();
    name = "sim";
}

void Session::finish_open() {
    const int32_t rc = kvn_open_device_conn(&conn);
    opened = true;
    check(rc, "connecting to " + name);
}

uint32_t Session::count(int32_t (*fn)(kvn_device_conn*, uint32_t*), const char* what) {
    uint32_t n = 0;
    check(fn(&conn, &n), what);
    return n;
}

void Context::add_options(CLI::App& app) {
    app.add_option("--host", hosts, "terminal IP[:PORT] (port 5005 by default); `logs sync` takes several")
        ->take_all()->allow_extra_args(false);
    app.add_option("--hosts-file", hosts_file, "file of IP[:PORT], one per line (for `logs sync`)");
    app.add_option("--serial", serial, "serial device, for example /dev/ttyUSB0");
    app.add_option("--baud", baud, "serial line speed")->capture_default_str();
    app.add_flag("--sim", sim, "the built-in simulator (the default without --host or --serial)");
    app.add_option("--state", state, "the built-in simulator's state directory (default: in memory)");
    app.add_option("--prefill-logs", prefill, "a new built-in simulator journal starts with N entries");
    app.add_flag("--json", json_output, "machine-readable output");
    app.add_option("--finger", finger, "built-in simulator: USER:FINGER on the sensor");
    app.add_option("--card", card, "built-in simulator: card serial number (hex) at the reader");
}

void Context::on(CLI::App* sub, std::function<int()> fn) {
    sub->callback([this, fn = std::move(fn)] { action = fn; });
}

std::unique_ptr<Session> Context::open() const {
    auto s = std::make_unique<Session>();
    s->open_default(*this);
    return s;
}

void Context::emit(const json& j, const std::string& text) const {
    if (json_output || text.empty()) std::cout << j.dump(json_output ? -1 : 2) << "\n";
    else std::cout << text << "\n";
}

bool Context::progress_enabled() const { return !json_output && isatty(STDERR_FILENO); }

void Context::draw_bar(const char* label, uint64_t done, uint64_t total) const {
    if (!progress_enabled()) return;
    const int width = 30;
    const double f = total ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
    const int fill = static_cast<int>(f * width);
    std::fprintf(stderr, "\r%-10s [%.*s%*s] %3d%% %llu/%llu", label, fill, "##############################",
                 width - fill, "", static_cast<int>(f * 100), static_cast<unsigned long long>(done),
                 static_cast<unsigned long long>(total));
    std::fflush(stderr);
}

void Context::end_bar() const {
    if (progress_enabled()) std::fputc('\n', stderr);
}

int32_t on_progress(const kvn_ext_transfer_progress* p, void* progress) {
    const auto* bar = static_cast<const Progress*>(progress);
    bar->ctx.draw_bar(bar->label, p->bytes_done, p->bytes_total);
    return g_interrupted ? kCancelled : 0;
}

}  // namespace kvnctl
