// kvnctl: a terminal from the command line, over the library's public interface.
#include <CLI/CLI.hpp>

#include <signal.h>
#include <sqlite3.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <thread>

#include "groups.h"
#include "kvnsim.h"
#include "records.h"
#include "sync.h"

using namespace kvnctl;

namespace {

// Exit codes (README and --help): one per kind of failure.
constexpr int kOk = 0;
constexpr int kUsage = 2;         // bad arguments, unknown group or subcommand
constexpr int kBadInput = 3;      // JSON of the wrong shape or out of range, a missing or unreadable file
constexpr int kLink = 4;          // terminal unreachable; read, write, CRC or sync failure
constexpr int kRefused = 5;       // the terminal (or the library) refused the request: its status
constexpr int kDatabase = 6;      // the SQLite database failed; nothing was marked as read
constexpr int kInterrupted = 130; // Ctrl-C

const char* const kExitHelp =
    "Exit codes: 0 success; 2 bad arguments; 3 bad input (JSON, files); 4 terminal unreachable or link "
    "failure; 5 request refused (the status message is printed); 6 database failure; 130 interrupted.";

struct Failure : std::runtime_error {
    int code;
    Failure(int c, const std::string& what) : std::runtime_error(what), code(c) {}
};

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
constexpr int32_t kCancelled = 0x7FFF0001;  // what the progress callback returns to cancel

void check(int32_t rc, const std::string& what) {
    if (rc == kCancelled || g_interrupted) throw Failure(kInterrupted, what + ": interrupted");
    if (rc != 0) throw Failure(exit_for(rc), what + ": " + status_text(rc) + " (" + std::to_string(rc) + ")");
}

struct Options {
    std::vector<std::string> hosts;
    std::string hosts_file;
    std::string serial;
    uint32_t baud = 115200;
    bool sim = false;
    std::string state;
    uint32_t prefill = 0;
    bool json = false;
    std::string finger;  // built-in simulator: USER:FINGER on the sensor
    std::string card;    // built-in simulator: card serial (hex) at the reader
};
Options opt;

bool progress_enabled() { return !opt.json && isatty(STDERR_FILENO); }

void draw_bar(const char* label, uint64_t done, uint64_t total) {
    if (!progress_enabled()) return;
    const int width = 30;
    const double f = total ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
    const int fill = static_cast<int>(f * width);
    std::fprintf(stderr, "\r%-10s [%.*s%*s] %3d%% %llu/%llu", label, fill, "##############################",
                 width - fill, "", static_cast<int>(f * 100), static_cast<unsigned long long>(done),
                 static_cast<unsigned long long>(total));
    std::fflush(stderr);
}
void end_bar() {
    if (progress_enabled()) std::fputc('\n', stderr);
}

void emit(const json& j, const std::string& text = {}) {
    if (opt.json || text.empty()) std::cout << j.dump(opt.json ? -1 : 2) << "\n";
    else std::cout << text << "\n";
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

// One open connection to the chosen terminal; the built-in simulator lives as long as it.
struct Session {
    std::unique_ptr<kvnsim::Simulator> sim;
    std::string ip;
    std::wstring wpath;
    std::string name;
    kvn_device_conn conn{};
    bool opened = false;

    ~Session() {
        if (opened) kvn_close_device_conn(&conn);
    }

    void open_host(const std::string& host) {
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

    void open_default() {
        if (!opt.serial.empty() && !opt.sim) {
            name = opt.serial;
            wpath.assign(opt.serial.begin(), opt.serial.end());
            conn.serial_port = wpath.c_str();
            conn.baud_rate = opt.baud;
            conn.link.conn_type = KVN_CONN_SERIAL;
            finish_open();
            return;
        }
        if (!opt.hosts.empty() && !opt.sim) return open_host(opt.hosts.front());
        kvnsim::Options so;
        so.state_dir = opt.state;
        so.prefill_logs = opt.prefill;
        sim = std::make_unique<kvnsim::Simulator>(so);
        std::string err;
        if (!sim->start(&err)) throw Failure(kLink, "built-in simulator: " + err);
        if (!opt.finger.empty()) {
            const auto colon = opt.finger.rfind(':');
            if (colon == std::string::npos) throw Failure(kUsage, "--finger: USER:FINGER expected");
            sim->present_finger(opt.finger.substr(0, colon),
                                static_cast<uint8_t>(std::strtoul(opt.finger.c_str() + colon + 1, nullptr, 10)));
        }
        if (!opt.card.empty()) sim->present_card(parse_hex(opt.card, "--card"));
        ip = "127.0.0.1";
        conn.ip_address = ip.c_str();
        conn.port = sim->port();
        conn.link.conn_type = KVN_CONN_TCP;
        finish_open();
        name = "sim";
    }

    void finish_open() {
        const int32_t rc = kvn_open_device_conn(&conn);
        opened = true;
        check(rc, "connecting to " + name);
    }
};

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

template <class T> void read_record(const json& j, T& v, const std::string& what) {
    try {
        from_json(j, v, what);
    } catch (const BadJson& e) {
        throw Failure(kBadInput, e.what());
    }
}

// The transfer extension's callback: draws the bar and cancels on Ctrl-C.
int32_t on_progress(const kvn_ext_transfer_progress* p, void* label) {
    draw_bar(static_cast<const char*>(label), p->bytes_done, p->bytes_total);
    return g_interrupted ? kCancelled : 0;
}

void upload(Session& s, const std::string& local, const std::string& name, uint32_t type) {
    kvn_file_transfer_request req{};
    req.file_type = type;
    req.local_path = local.c_str();
    if (name.size() >= sizeof req.file_name) throw Failure(kBadInput, name + ": name too long");
    std::memcpy(req.file_name, name.data(), name.size());
    if (!std::ifstream(local)) throw Failure(kBadInput, local + ": cannot be read");
    const int32_t rc = kvn_ext_upload_file(&s.conn, &req, on_progress, const_cast<char*>("upload"));
    end_bar();
    check(rc, "upload of " + local);
}

std::string base_name(const std::string& path) {
    const auto slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

uint32_t count_of(Session& s, int32_t (*fn)(kvn_device_conn*, uint32_t*), const char* what) {
    uint32_t n = 0;
    check(fn(&s.conn, &n), what);
    return n;
}

std::unique_ptr<kvn_user_record> get_user(Session& s, const std::string& id) {
    auto rec = std::make_unique<kvn_user_record>();
    if (id.size() >= sizeof rec->user_id) throw Failure(kBadInput, id + ": user id too long");
    std::memcpy(rec->user_id, id.data(), id.size());
    check(kvn_get_user_record(&s.conn, rec.get()), "user " + id);
    return rec;
}

void put_user(Session& s, kvn_user_record& rec) {
    kvn_user_store_result result{};
    kvn_user_store_request req{&rec, &result};
    const int32_t rc = kvn_store_user_record(&s.conn, &req);
    if (rc != 0 && result.user_id[0])
        throw Failure(exit_for(rc), std::string("storing ") + rec.user_id + ": " + status_text(rc) +
                                        "; the template is user " + result.user_id + "'s");
    check(rc, std::string("storing user ") + rec.user_id);
}

// The user ids, from the terminal's CSV export (the interface has no list of users).
std::vector<std::string> list_users(Session& s) {
    const std::string name = "kvnctl-users.csv";
    check(kvn_upgrade_firware_export_csv_file(&s.conn, name.c_str()), "exporting the users");
    char tmpl[] = "/tmp/kvnctl-users-XXXXXX";
    const int fd = mkstemp(tmpl);
    if (fd < 0) throw Failure(kBadInput, "cannot create a temporary file");
    close(fd);
    kvn_file_transfer_request req{};
    req.file_type = 3;
    req.local_path = tmpl;
    std::memcpy(req.file_name, name.data(), name.size());
    const int32_t rc = kvn_ext_download_file(&s.conn, &req, nullptr, nullptr);
    std::ifstream in(tmpl);
    std::vector<std::string> ids;
    std::string line;
    for (bool header = true; std::getline(in, line); header = false)
        if (!header && !line.empty()) ids.push_back(line.substr(0, line.find(',')));
    std::remove(tmpl);
    check(rc, "reading the user list");
    kvn_delete_file(&s.conn, &req);  // the export is not kept on the terminal
    return ids;
}

json log_page(Session& s, bool unread, uint32_t limit) {
    auto q = std::make_unique<kvn_transaction_log_query>();
    q->attr_t02 = static_cast<uint8_t>(std::min<uint32_t>(limit ? limit : 255, 255));
    check(unread ? kvn_get_unread_transaction_logs(&s.conn, q.get()) : kvn_get_transaction_logs(&s.conn, q.get()),
          "reading the journal");
    json a = json::array();
    for (uint32_t i = 0; i < (q->log_count & 0xFFu); ++i) a.push_back(to_json(q->entries[i]));
    return a;
}

// `logs sync`: one thread and one connection per terminal, all into the same database.
int run_sync(const std::string& db) {
    std::vector<std::string> hosts = opt.hosts;
    if (!opt.hosts_file.empty()) {
        std::istringstream in(read_input(opt.hosts_file));
        for (std::string h; in >> h;) hosts.push_back(h);
    }
    if (hosts.empty() || opt.sim) hosts.assign(1, "");  // the serial line or the built-in simulator
    std::vector<SyncResult> results(hosts.size());
    std::vector<std::string> names(hosts.size());
    std::vector<std::string> open_errors(hosts.size());
    std::vector<int> open_codes(hosts.size(), 0);
    std::atomic<uint64_t> done{0}, total{0};
    std::vector<std::thread> threads;
    for (size_t i = 0; i < hosts.size(); ++i)
        threads.emplace_back([&, i] {
            Session s;
            try {
                if (hosts[i].empty()) s.open_default(); else s.open_host(hosts[i]);
            } catch (const Failure& f) {
                open_errors[i] = f.what();
                open_codes[i] = f.code;
                return;
            }
            names[i] = s.name;
            uint64_t mine = 0, seen_total = 0;
            results[i] = sync_logs(&s.conn, s.name, db, [&](uint64_t read, uint64_t unread) {
                if (seen_total == 0) total += seen_total = std::max<uint64_t>(unread, 1);
                done += read - mine;
                mine = read;
                if (hosts.size() == 1 || i == 0) draw_bar("sync", done, std::max<uint64_t>(done, total));
                return !g_interrupted;
            });
        });
    for (auto& t : threads) t.join();
    end_bar();
    int code = kOk;
    json out = json::array();
    for (size_t i = 0; i < hosts.size(); ++i) {
        const auto& r = results[i];
        json j = {{"terminal", names[i].empty() ? hosts[i] : names[i]}, {"read", r.read}, {"inserted", r.inserted}};
        int c = kOk;
        std::string err = open_errors[i];
        if (!err.empty()) c = open_codes[i];
        else if (g_interrupted) c = kInterrupted, err = "interrupted";
        else if (r.database_error) c = kDatabase, err = r.error;
        else if (r.status) c = exit_for(r.status), err = r.error + ": " + status_text(r.status);
        if (c) {
            j["error"] = err;
            if (open_errors[i].empty()) err = j["terminal"].get<std::string>() + ": " + err;
            std::cerr << "kvnctl: " << err << "\n";
            if (!code) code = c;
        }
        out.push_back(j);
    }
    if (opt.json) emit(out);
    else for (auto& j : out) std::cout << j["terminal"].get<std::string>() << ": " << j["read"] << " read, "
                                       << j["inserted"] << " new in " << db << "\n";
    return code;
}

}  // namespace

int main(int argc, char** argv) {
    struct sigaction sa {};
    sa.sa_handler = [](int) { g_interrupted = 1; };
    sa.sa_flags = SA_RESTART;  // calls go on; the progress callback cancels the transfer
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);
    signal(SIGPIPE, SIG_IGN);

    CLI::App app{"kvnctl: drive a terminal from the command line.\n"
                 "Without --host or --serial it uses the built-in simulator.",
                 "kvnctl"};
    app.footer(kExitHelp);
    app.require_subcommand(1);
    app.add_option("--host", opt.hosts, "terminal IP[:PORT] (port 5005 by default); `logs sync` takes several")
        ->take_all()->allow_extra_args(false);
    app.add_option("--hosts-file", opt.hosts_file, "file of IP[:PORT], one per line (for `logs sync`)");
    app.add_option("--serial", opt.serial, "serial device, for example /dev/ttyUSB0");
    app.add_option("--baud", opt.baud, "serial line speed")->capture_default_str();
    app.add_flag("--sim", opt.sim, "the built-in simulator (the default without --host or --serial)");
    app.add_option("--state", opt.state, "the built-in simulator's state directory (default: in memory)");
    app.add_option("--prefill-logs", opt.prefill, "a new built-in simulator journal starts with N entries");
    app.add_flag("--json", opt.json, "machine-readable output");
    app.add_option("--finger", opt.finger, "built-in simulator: USER:FINGER on the sensor");
    app.add_option("--card", opt.card, "built-in simulator: card serial number (hex) at the reader");

    std::function<int()> action;
    auto on = [&](CLI::App* sub, std::function<int()> fn) { sub->callback([&action, fn] { action = fn; }); };
    auto session = [] {
        auto s = std::make_unique<Session>();
        s->open_default();
        return s;
    };

    // info, status, raw
    on(app.add_subcommand("info", "library version and the terminal's device information"), [&] {
        auto s = session();
        auto info = std::make_unique<kvn_device_info>();
        check(kvn_get_device_info(&s->conn, info.get()), "device information");
        json j = {{"library", kvn_get_sdk2_version()}, {"terminal", s->name}, {"device_info", to_json(*info)}};
        if (opt.json) emit(j);
        else std::cout << "library " << kvn_get_sdk2_version() << ", terminal " << s->name << ": firmware "
                       << info->text_3 << ", serial " << info->text_4 << ", " << info->value_6 << " users, "
                       << info->value_7 << " journal entries\n" << j["device_info"].dump(2) << "\n";
        return kOk;
    });
    int32_t code_arg = 0;
    auto* st = app.add_subcommand("status", "the message of a status code");
    st->add_option("CODE", code_arg, "status code, for example -5")->required();
    on(st, [&] {
        emit(json{{"code", code_arg}, {"message", status_text(code_arg)}}, status_text(code_arg));
        return kOk;
    });
    uint32_t raw_cmd = 0;
    std::string raw_type, raw_hex;
    auto* raw = app.add_subcommand("raw", "send one request frame and show the answer");
    raw->add_option("CMD", raw_cmd, "command id")->required();
    raw->add_option("TYPE", raw_type, "request type: set, get, reset, upload, download or a number")->required();
    raw->add_option("HEX", raw_hex, "payload as hex");
    on(raw, [&] {
        static const std::map<std::string, uint32_t> types = {
            {"set", KVN_REQ_SET}, {"get", KVN_REQ_GET}, {"reset", KVN_REQ_RESET},
            {"upload", KVN_REQ_UPLOAD}, {"download", KVN_REQ_DOWNLOAD}};
        uint32_t type = 0;
        if (auto it = types.find(raw_type); it != types.end()) type = it->second;
        else try { type = static_cast<uint32_t>(std::stoul(raw_type, nullptr, 0)); }
            catch (...) { throw Failure(kUsage, raw_type + ": not a request type"); }
        const auto payload = parse_hex(raw_hex, "payload");
        auto s = session();
        const uint32_t word = KVN_REQUEST_WORD(type);
        check(kvn_send_command(&s->conn, &word, raw_cmd, payload.data(), static_cast<uint32_t>(payload.size())),
              "sending");
        std::vector<uint8_t> buf(1 << 20);
        uint32_t len = static_cast<uint32_t>(buf.size());
        const int32_t rc = kvn_receive_response(&s->conn, buf.data(), &len);
        if (rc != 0 && rc != -1) {
            emit(json{{"status", rc}, {"message", status_text(rc)}}, status_text(rc) + " (" + std::to_string(rc) + ")");
            return exit_for(rc);
        }
        check(rc, "reading the answer");
        std::string hex;
        for (uint32_t i = 0; i < len; ++i) {
            char b[3];
            std::snprintf(b, sizeof b, "%02x", buf[i]);
            hex += b;
        }
        emit(json{{"status", 0}, {"payload", hex}}, hex.empty() ? "Success (no payload)" : hex);
        return kOk;
    });

    // get|set|reset GROUP, groups
    std::string group_name, group_file;
    uint32_t group_index = 0xFFFFFFFFu;
    auto find = [&] {
        const Group* g = find_group(group_name);
        if (!g) throw Failure(kUsage, "unknown group \"" + group_name + "\" (kvnctl groups lists them)");
        return g;
    };
    auto* get = app.add_subcommand("get", "read a settings group as JSON");
    get->add_option("GROUP", group_name, "settings group (kvnctl groups lists them)")->required();
    on(get, [&] {
        const Group* g = find();
        auto s = session();
        json j;
        check(g->get(&s->conn, j), "get " + g->name);
        emit(j);
        return kOk;
    });
    auto* set = app.add_subcommand("set", "write a settings group from JSON (a file, or stdin)");
    set->add_option("GROUP", group_name, "settings group")->required();
    set->add_option("FILE", group_file, "JSON file; - or nothing: stdin");
    on(set, [&] {
        const Group* g = find();
        if (!g->set) throw Failure(kUsage, g->name + " is read only");
        const json j = parse_json(group_file);
        auto s = session();
        int32_t rc;
        try {
            rc = g->set(&s->conn, j);
        } catch (const BadJson& e) {
            throw Failure(kBadInput, e.what());
        }
        check(rc, "set " + g->name);
        return kOk;
    });
    auto* reset = app.add_subcommand("reset", "restore a settings group's defaults");
    reset->add_option("GROUP", group_name, "settings group")->required();
    reset->add_option("--index", group_index, "holiday-schedules, access-schedules: one schedule");
    on(reset, [&] {
        const Group* g = find();
        if (!g->reset) throw Failure(kUsage, g->name + " has no reset");
        auto s = session();
        check(g->reset(&s->conn, group_index), "reset " + g->name);
        return kOk;
    });
    on(app.add_subcommand("groups", "list the settings groups"), [&] {
        json a = json::array();
        std::string text;
        for (const auto& g : groups()) {
            const std::string ops = std::string("get") + (g.set ? " set" : "") + (g.reset ? " reset" : "");
            a.push_back({{"group", g.name}, {"operations", ops}});
            text += g.name + std::string(g.name.size() < 28 ? 28 - g.name.size() : 1, ' ') + ops + "\n";
        }
        text.pop_back();
        emit(a, text);
        return kOk;
    });

    // time, door
    auto* time = app.add_subcommand("time", "the terminal's clock");
    time->require_subcommand(1);
    on(time->add_subcommand("get", "read the clock"), [&] {
        auto s = session();
        auto dt = std::make_unique<kvn_device_date_time>();
        check(kvn_get_device_date_time(&s->conn, dt.get()), "reading the clock");
        const std::time_t t = dt->value_1;
        char iso[32] = {};
        std::strftime(iso, sizeof iso, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&t));
        emit(json{{"time", dt->value_1}, {"utc", iso}}, iso);
        return kOk;
    });
    int64_t time_value = -1;
    auto* tset = time->add_subcommand("set", "set the clock (default: this machine's)");
    tset->add_option("SECONDS", time_value, "seconds since 1970");
    on(tset, [&] {
        auto s = session();
        auto dt = std::make_unique<kvn_device_date_time>();
        check(kvn_get_device_date_time(&s->conn, dt.get()), "reading the clock");
        const int64_t v = time_value >= 0 ? time_value : static_cast<int64_t>(std::time(nullptr));
        if (v > 0xFFFFFFFFll) throw Failure(kBadInput, "time out of range");
        dt->value_1 = static_cast<uint32_t>(v);
        check(kvn_set_device_date_time(&s->conn, dt.get()), "setting the clock");
        return kOk;
    });
    auto* door = app.add_subcommand("door", "open, close, clear the alarm");
    door->require_subcommand(1);
    uint32_t door_seconds = 0;
    auto* dopen = door->add_subcommand("open", "open the door for SECONDS");
    dopen->add_option("SECONDS", door_seconds, "seconds")->required();
    on(dopen, [&] { auto s = session(); check(kvn_open_door_for_time(&s->conn, door_seconds, 0), "door open"); return kOk; });
    on(door->add_subcommand("close", "close the door"),
       [&] { auto s = session(); check(kvn_close_door(&s->conn), "door close"); return kOk; });
    on(door->add_subcommand("clear-alarm", "clear the forced-open alarm"), [&] {
        auto s = session();
        check(kvn_clear_door_force_open_alarm(&s->conn), "clear alarm");
        return kOk;
    });

    // users
    auto* users = app.add_subcommand("users", "user records and templates");
    users->require_subcommand(1);
    std::vector<std::string> user_ids;
    std::string user_file, clone_to;
    on(users->add_subcommand("count", "users and templates held"), [&] {
        auto s = session();
        const uint32_t u = count_of(*s, kvn_get_user_count, "user count");
        const uint32_t t = count_of(*s, kvn_get_biometric_count, "template count");
        emit(json{{"users", u}, {"templates", t}}, std::to_string(u) + " users, " + std::to_string(t) + " templates");
        return kOk;
    });
    on(users->add_subcommand("list", "user ids"), [&] {
        auto s = session();
        const auto ids = list_users(*s);
        std::string text;
        for (const auto& id : ids) text += id + "\n";
        if (!text.empty()) text.pop_back();
        emit(json(ids), text.empty() ? std::string("(no users)") : text);
        return kOk;
    });
    auto* uget = users->add_subcommand("get", "a user record as JSON");
    uget->add_option("ID", user_ids, "user id")->required()->expected(1);
    on(uget, [&] { auto s = session(); emit(to_json(*get_user(*s, user_ids.at(0)))); return kOk; });
    auto* uput = users->add_subcommand("put", "store a user record from JSON (a file, or stdin)");
    uput->add_option("FILE", user_file, "JSON file; - or nothing: stdin");
    on(uput, [&] {
        const json j = parse_json(user_file);
        auto rec = std::make_unique<kvn_user_record>();
        read_record(j, *rec, "user");
        auto s = session();
        put_user(*s, *rec);
        return kOk;
    });
    auto* udel = users->add_subcommand("delete", "delete users");
    udel->add_option("ID", user_ids, "user ids")->required();
    on(udel, [&] {
        auto s = session();
        for (const auto& id : user_ids) {
            auto rec = std::make_unique<kvn_user_record>();
            if (id.size() >= sizeof rec->user_id) throw Failure(kBadInput, id + ": user id too long");
            std::memcpy(rec->user_id, id.data(), id.size());
            check(kvn_delete_user_record(&s->conn, rec.get()), "deleting " + id);
        }
        return kOk;
    });
    auto* uclone = users->add_subcommand("clone", "copy users with their templates to another terminal");
    uclone->add_option("ID", user_ids, "user ids (default: all)");
    uclone->add_option("--to", clone_to, "target terminal IP[:PORT]")->required();
    on(uclone, [&] {
        auto s = session();
        const auto ids = user_ids.empty() ? list_users(*s) : user_ids;
        Session to;
        to.open_host(clone_to);
        for (const auto& id : ids) put_user(to, *get_user(*s, id));
        emit(json{{"cloned", ids.size()}}, std::to_string(ids.size()) + " users cloned to " + clone_to);
        return kOk;
    });

    // enroll, identify, verify
    std::string bio_user;
    uint32_t finger = 1;
    auto* enroll = app.add_subcommand("enroll", "enrol the finger on the sensor for a user");
    enroll->add_option("ID", bio_user, "user id")->required();
    enroll->add_option("--finger", finger, "finger index")->capture_default_str()->check(CLI::Range(0, 9));
    on(enroll, [&] {
        auto s = session();
        kvn_enrollment_request req{};
        if (bio_user.size() >= sizeof req.user_id) throw Failure(kBadInput, "user id too long");
        std::memcpy(req.user_id, bio_user.data(), bio_user.size());
        req.attr_t09 = static_cast<uint8_t>(finger);
        check(kvn_enrollment(&s->conn, &req), "enrolment");
        emit(json{{"user_id", bio_user}, {"finger", req.attr_t02}, {"template_length", req.attr_t04},
                  {"templates", req.attr_t05}, {"quality", req.attr_t08}},
             "enrolled " + bio_user + ", finger " + std::to_string(req.attr_t02) + ", " +
                 std::to_string(req.attr_t05) + " templates held");
        return kOk;
    });
    on(app.add_subcommand("identify", "identify the finger on the sensor"), [&] {
        auto s = session();
        auto req = std::make_unique<kvn_identify_request>();
        check(kvn_identify_user(&s->conn, req.get()), "identification");
        const std::string id(req->user_id, strnlen(req->user_id, sizeof req->user_id));
        emit(json{{"user_id", id}, {"finger", req->attr_t03}, {"score", req->attr_t01}},
             id + " (finger " + std::to_string(req->attr_t03) + ", score " + std::to_string(req->attr_t01) + ")");
        return kOk;
    });
    auto* verify = app.add_subcommand("verify", "verify the finger on the sensor against a user");
    verify->add_option("ID", bio_user, "user id")->required();
    on(verify, [&] {
        auto s = session();
        kvn_verify_user_id_request req{};
        if (bio_user.size() >= sizeof req.user_id) throw Failure(kBadInput, "user id too long");
        std::memcpy(req.user_id, bio_user.data(), bio_user.size());
        check(kvn_verify_by_user_id(&s->conn, &req), "verification");
        emit(json{{"user_id", bio_user}, {"score", req.result.attr_t01}, {"finger", req.result.attr_t02}},
             "verified " + bio_user + " (score " + std::to_string(req.result.attr_t01) + ")");
        return kOk;
    });

    // logs
    auto* logs = app.add_subcommand("logs", "the transaction journal");
    logs->require_subcommand(1);
    on(logs->add_subcommand("count", "total, unread and read entries"), [&] {
        auto s = session();
        const uint32_t t = count_of(*s, kvn_get_transaction_log_total_count, "total count");
        const uint32_t u = count_of(*s, kvn_get_transaction_log_unread_count, "unread count");
        const uint32_t r = count_of(*s, kvn_get_transaction_log_read_count, "read count");
        emit(json{{"total", t}, {"unread", u}, {"read", r}},
             std::to_string(t) + " entries, " + std::to_string(u) + " unread, " + std::to_string(r) + " read");
        return kOk;
    });
    bool pull_unread = false;
    uint32_t pull_limit = 0;
    auto* pull = logs->add_subcommand("pull", "one page of entries as JSON (nothing is marked)");
    pull->add_flag("--unread", pull_unread, "only unread entries");
    pull->add_option("--limit", pull_limit, "at most N entries (1 to 255)");
    on(pull, [&] { auto s = session(); emit(log_page(*s, pull_unread, pull_limit)); return kOk; });
    std::vector<uint32_t> mark_ids;
    auto* mark = logs->add_subcommand("mark", "mark entries as read");
    mark->add_option("ID", mark_ids, "log ids")->required();
    on(mark, [&] {
        auto s = session();
        for (size_t i = 0; i < mark_ids.size(); i += KVN_TRANSACTION_LOG_ID_MAX) {
            kvn_transaction_log_id_list ids{};
            for (size_t k = i; k < mark_ids.size() && k < i + KVN_TRANSACTION_LOG_ID_MAX; ++k)
                ids.log_ids[ids.count++] = mark_ids[k];
            check(kvn_mark_transaction_logs_as_read(&s->conn, &ids), "marking");
        }
        return kOk;
    });
    std::string sync_db;
    auto* sync = logs->add_subcommand(
        "sync", std::string("copy unread entries into SQLite exactly once, then mark them read.\nSchema:\n") +
                    kSyncSchema);
    sync->add_option("--db", sync_db, "SQLite database file")->required();
    on(sync, [&] { return run_sync(sync_db); });

    // file, firmware
    auto* file = app.add_subcommand("file", "files on the terminal");
    file->require_subcommand(1);
    std::string local, remote;
    uint32_t file_type = 1;
    auto* fup = file->add_subcommand("upload", "send a file");
    fup->add_option("LOCAL", local, "local file")->required();
    fup->add_option("--name", remote, "name on the terminal (default: the local file's)");
    fup->add_option("--type", file_type, "file type: 1 firmware, 2 backup, 3 CSV, 4 image, 5 audio, 6 certificate")
        ->capture_default_str();
    on(fup, [&] { auto s = session(); upload(*s, local, remote.empty() ? base_name(local) : remote, file_type); return kOk; });
    auto* fdown = file->add_subcommand("download", "fetch a file");
    fdown->add_option("NAME", remote, "name on the terminal")->required();
    fdown->add_option("LOCAL", local, "local file (default: NAME)");
    fdown->add_option("--type", file_type, "file type")->capture_default_str();
    on(fdown, [&] {
        auto s = session();
        const std::string out = local.empty() ? base_name(remote) : local;
        kvn_file_transfer_request req{};
        req.file_type = file_type;
        req.local_path = out.c_str();
        if (remote.size() >= sizeof req.file_name) throw Failure(kBadInput, "name too long");
        std::memcpy(req.file_name, remote.data(), remote.size());
        const int32_t rc = kvn_ext_download_file(&s->conn, &req, on_progress, const_cast<char*>("download"));
        end_bar();
        if (rc != 0) std::remove(out.c_str());  // no half-written file stays behind
        check(rc, "download of " + remote);
        return kOk;
    });
    auto* fdel = file->add_subcommand("delete", "delete a file");
    fdel->add_option("NAME", remote, "name on the terminal")->required();
    fdel->add_option("--type", file_type, "file type")->capture_default_str();
    on(fdel, [&] {
        auto s = session();
        kvn_file_transfer_request req{};
        req.file_type = file_type;
        if (remote.size() >= sizeof req.file_name) throw Failure(kBadInput, "name too long");
        std::memcpy(req.file_name, remote.data(), remote.size());
        check(kvn_delete_file(&s->conn, &req), "delete of " + remote);
        return kOk;
    });
    auto* fw = app.add_subcommand("firmware", "firmware upgrade");
    fw->require_subcommand(1);
    auto* fwup = fw->add_subcommand("upgrade", "upload a firmware package and install it");
    fwup->add_option("FILE", local, "firmware package")->required();
    on(fwup, [&] {
        auto s = session();
        upload(*s, local, base_name(local), 1);
        check(kvn_upgrade_firware(&s->conn), "firmware upgrade");
        return kOk;
    });

    // schedules, cards, wiegand
    auto* sched = app.add_subcommand("schedules", "access and holiday schedules (get|set|reset GROUP for the tables)");
    sched->require_subcommand(1);
    on(sched->add_subcommand("names", "the access schedules' names"), [&] {
        auto s = session();
        auto l = std::make_unique<kvn_access_schedule_name_list>();
        check(kvn_get_access_schedule_list(&s->conn, l.get()), "schedule names");
        emit(to_json(*l));
        return kOk;
    });
    std::string sched_kind;
    uint32_t sched_index = 0;
    auto* sreset = sched->add_subcommand("reset", "reset one schedule");
    sreset->add_option("KIND", sched_kind, "access or holiday")->required()->check(CLI::IsMember({"access", "holiday"}));
    sreset->add_option("INDEX", sched_index, "schedule index")->required();
    on(sreset, [&] {
        auto s = session();
        check(sched_kind == "access" ? kvn_reset_access_schedule_setting(&s->conn, sched_index)
                                     : kvn_reset_holiday_schedule_setting(&s->conn, sched_index),
              "schedule reset");
        return kOk;
    });
    auto* cards = app.add_subcommand("cards", "smart cards at the reader");
    cards->require_subcommand(1);
    on(cards->add_subcommand("read", "the card's serial number"), [&] {
        auto s = session();
        kvn_card_serial_number c{};
        check(kvn_read_card_serial_number(&s->conn, &c), "card read");
        emit(to_json(c));
        return kOk;
    });
    on(cards->add_subcommand("read-data", "the user record on the card"), [&] {
        auto s = session();
        auto d = std::make_unique<kvn_smart_card_data>();
        check(kvn_read_data_on_smart_card(&s->conn, d.get()), "card data");
        emit(to_json(*d));
        return kOk;
    });
    auto* cwrite = cards->add_subcommand("write-user", "write a user's record to the card");
    cwrite->add_option("ID", bio_user, "user id")->required();
    on(cwrite, [&] {
        auto s = session();
        check(kvn_write_user_record_on_smart_card(&s->conn, get_user(*s, bio_user).get()), "card write");
        return kOk;
    });
    std::string card_hex;
    for (const char* verb : {"revoke", "unrevoke"}) {
        auto* c = cards->add_subcommand(verb, std::string(verb) + " a card by its identifier (hex)");
        c->add_option("CARD", card_hex, "card identifier, hex (up to 64 bytes)")->required();
        const bool revoke = verb[0] == 'r';
        on(c, [&, revoke] {
            auto id = parse_hex(card_hex, "card");
            if (id.size() > 64) throw Failure(kBadInput, "card: more than 64 bytes");
            id.resize(64);
            auto s = session();
            check(revoke ? kvn_revoke_smart_card(&s->conn, id.data()) : kvn_unrevoke_smart_card(&s->conn, id.data()),
                  revoke ? "revoke" : "unrevoke");
            return kOk;
        });
    }
    on(cards->add_subcommand("revoked", "the revoked cards"), [&] {
        auto s = session();
        auto l = std::make_unique<kvn_revoked_card_list>();
        check(kvn_get_revoked_smart_card_list(&s->conn, l.get()), "revoked list");
        emit(to_json(*l));
        return kOk;
    });
    auto* wg = app.add_subcommand("wiegand", "Wiegand formats (get|set|reset GROUP for the ports)");
    wg->require_subcommand(1);
    on(wg->add_subcommand("list", "the formats held"), [&] {
        auto s = session();
        auto l = std::make_unique<kvn_wiegand_format_list>();
        check(kvn_get_wiegand_format_list(&s->conn, l.get()), "format list");
        emit(to_json(*l));
        return kOk;
    });
    std::string wg_file;
    auto* wup = wg->add_subcommand("upload", "store a format from JSON (a file, or stdin)");
    wup->add_option("FILE", wg_file, "JSON file; - or nothing: stdin");
    on(wup, [&] {
        const json j = parse_json(wg_file);
        auto f = std::make_unique<kvn_wiegand_format>();
        read_record(j, *f, "format");
        auto s = session();
        check(kvn_upload_wiegand_format(&s->conn, f.get()), "format upload");
        emit(json{{"format_id", f->format_id}}, "format " + std::to_string(f->format_id));
        return kOk;
    });
    uint32_t wg_id = 0;
    auto* wdel = wg->add_subcommand("delete", "delete a format");
    wdel->add_option("ID", wg_id, "format id")->required()->check(CLI::Range(0, 255));
    on(wdel, [&] {
        auto s = session();
        check(kvn_delete_wiegand_format(&s->conn, static_cast<uint8_t>(wg_id)), "format delete");
        return kOk;
    });

    // tour
    std::string tour_db;
    auto* tour = app.add_subcommand("tour", "a walk through the families against the built-in simulator: information, door, a user, a file, logs");
    tour->add_option("--db", tour_db, "SQLite database for the log step (default: a temporary file)");
    on(tour, [&] {
        // It enrols, uploads and marks the journal read: not something to do to a real terminal.
        if (!opt.hosts.empty() || !opt.serial.empty())
            throw Failure(kUsage, "tour runs against the built-in simulator only");
        auto s = session();
        auto step = [](const std::string& t) { if (!opt.json) std::cout << "== " << t << "\n"; };
        json out;
        step("information");
        auto info = std::make_unique<kvn_device_info>();
        check(kvn_get_device_info(&s->conn, info.get()), "device information");
        out["terminal"] = {{"library", kvn_get_sdk2_version()}, {"firmware", info->text_3}, {"serial", info->text_4}};
        if (!opt.json) std::cout << "library " << kvn_get_sdk2_version() << ", firmware " << info->text_3
                                 << ", serial " << info->text_4 << "\n";
        step("door opened for 3 s");
        check(kvn_open_door_for_time(&s->conn, 3, 0), "door open");
        out["door"] = "opened";
        step("a user enrolled, its template stored and read back");
        kvn_enrollment_request req{};
        std::snprintf(req.user_id, sizeof req.user_id, "tour-%ld", static_cast<long>(std::time(nullptr)));
        req.attr_t09 = 1;
        check(kvn_enrollment(&s->conn, &req), "enrolment");
        auto rec = get_user(*s, req.user_id);
        out["user"] = {{"user_id", rec->user_id}, {"templates", rec->template_count},
                       {"template_length", rec->templates[0].template_length}};
        if (!opt.json) std::cout << rec->user_id << ": " << rec->template_count << " template(s), "
                                 << rec->templates[0].template_length << " bytes read back\n";
        step("a firmware-sized file uploaded");
        char path[] = "/tmp/kvnctl-tour-XXXXXX";
        const int fd = mkstemp(path);
        if (fd < 0) throw Failure(kBadInput, "cannot create a temporary file");
        std::vector<uint8_t> block(1 << 20);
        for (size_t i = 0; i < block.size(); ++i) block[i] = static_cast<uint8_t>(i * 2654435761u >> 24);
        bool written = true;
        for (int i = 0; i < 8 && written; ++i) written = write(fd, block.data(), block.size()) == static_cast<ssize_t>(block.size());
        close(fd);
        try {
            if (!written) throw Failure(kBadInput, std::string(path) + ": cannot be written");
            upload(*s, path, "tour-firmware.bin", 1);
        } catch (...) {
            std::remove(path);
            throw;
        }
        std::remove(path);
        out["file"] = {{"name", "tour-firmware.bin"}, {"bytes", 8 << 20}};
        if (!opt.json) std::cout << "8 MiB uploaded as tour-firmware.bin\n";
        step("logs synced into SQLite and counted");
        std::string db = tour_db;
        if (db.empty()) {
            char dbt[] = "/tmp/kvnctl-tour-db-XXXXXX";
            const int dfd = mkstemp(dbt);
            if (dfd >= 0) close(dfd);
            db = dbt;
        }
        const SyncResult r = sync_logs(&s->conn, s->name, db, [](uint64_t done, uint64_t total) {
            draw_bar("sync", done, std::max(done, total));
            return !g_interrupted;
        });
        end_bar();
        if (r.database_error) throw Failure(kDatabase, r.error);
        check(r.status, r.error.empty() ? "sync" : r.error);
        sqlite3* h = nullptr;
        int64_t rows = -1;
        if (sqlite3_open(db.c_str(), &h) == SQLITE_OK) {
            sqlite3_stmt* q = nullptr;
            if (sqlite3_prepare_v2(h, "SELECT count(*) FROM transaction_log", -1, &q, nullptr) == SQLITE_OK &&
                sqlite3_step(q) == SQLITE_ROW)
                rows = sqlite3_column_int64(q, 0);
            sqlite3_finalize(q);
        }
        sqlite3_close(h);
        if (tour_db.empty()) {
            for (const char* sfx : {"", "-wal", "-shm"}) std::remove((db + sfx).c_str());
        }
        const uint32_t unread = count_of(*s, kvn_get_transaction_log_unread_count, "unread count");
        out["logs"] = {{"synced", r.read}, {"rows", rows}, {"unread", unread}};
        if (!opt.json) std::cout << r.read << " entries synced, " << rows << " rows in the database, " << unread
                                 << " unread on the terminal\n";
        else emit(out);
        return kOk;
    });

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return kUsage;
    }
    try {
        return action ? action() : kUsage;
    } catch (const Failure& f) {
        std::cerr << "kvnctl: " << f.what() << "\n";
        if (opt.json) std::cout << json{{"error", f.what()}, {"exit", f.code}}.dump() << "\n";
        return f.code;
    }
}
