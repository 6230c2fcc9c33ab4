// What every kvnctl command shares: the target and output options, the connection to the
// chosen terminal, the exit codes and the failures that carry them, reading input and
// drawing progress.
#pragma once

#include <CLI/CLI.hpp>

#include <signal.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "kvnsim.h"
#include "records.h"

namespace kvnctl {

// Exit codes (README and --help): one per kind of failure.
constexpr int kOk = 0;
constexpr int kUsage = 2;         // bad arguments, unknown group or subcommand
constexpr int kBadInput = 3;      // JSON of the wrong shape or out of range, a missing or unreadable file
constexpr int kLink = 4;          // terminal unreachable; read, write, CRC or sync failure
constexpr int kRefused = 5;       // the terminal (or the library) refused the request: its status
constexpr int kDatabase = 6;      // the SQLite database failed; nothing was marked as read
constexpr int kInterrupted = 130; // Ctrl-C

extern const char* const kExitHelp;

// A command that cannot go on: main() prints the message and exits with the code.
struct Failure : std::runtime_error {
    int code;
    Failure(int c, const std::string& what) : std::runtime_error(what), code(c) {}
};

std::string status_text(int32_t rc);
int exit_for(int32_t rc);  // the exit code for a library status

// Set by SIGINT and SIGTERM: calls go on, transfers cancel at their next packet and syncs
// stop after their page.
extern volatile sig_atomic_t g_interrupted;
void catch_interrupts();

// Throws the Failure for a status that is not 0 (kInterrupted after Ctrl-C).
void check(int32_t rc, const std::string& what);

std::vector<uint8_t> parse_hex(const std::string& hex, const std::string& what);
std::string read_input(const std::string& path);  // empty or "-": stdin
json parse_json(const std::string& path);

template <class T> void read_record(const json& j, T& v, const std::string& what) {
    try {
        from_json(j, v, what);
    } catch (const BadJson& e) {
        throw Failure(kBadInput, e.what());
    }
}

std::string base_name(const std::string& path);

struct Context;

// One open connection to the chosen terminal; the built-in simulator lives as long as it.
struct Session {
    std::unique_ptr<kvnsim::Simulator> sim;
    std::string ip;
    std::wstring wpath;
    std::string name;  // the terminal in messages and in the log database: the --host as given, or "sim"
    kvn_device_conn conn{};
    bool opened = false;

    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    void open_host(const std::string& host);      // IP[:PORT]
    void open_default(const Context& ctx);        // the serial line, the first --host or the built-in simulator
    uint32_t count(int32_t (*fn)(kvn_device_conn*, uint32_t*), const char* what);

private:
    void finish_open();
};

// The global options and the subcommand chosen, shared by every command group.
struct Context {
    // Where the terminal is.
    std::vector<std::string> hosts;
    std::string hosts_file;
    std::string serial;
    uint32_t baud = 115200;
    bool sim = false;
    // The built-in simulator.
    std::string state;
    uint32_t prefill = 0;
    std::string finger;  // USER:FINGER on the sensor
    std::string card;    // card serial (hex) at the reader
    // Output.
    bool json_output = false;

    // The chosen subcommand's work, run after parsing; it returns the exit code.
    std::function<int()> action;

    void add_options(CLI::App& app);
    void on(CLI::App* sub, std::function<int()> fn);  // fn runs when sub is the command given

    std::unique_ptr<Session> open() const;

    // Text for people unless --json, or JSON alone when there is no text form.
    void emit(const json& j, const std::string& text = {}) const;

    // A progress bar on stderr when it is a terminal and the output is not JSON.
    bool progress_enabled() const;
    void draw_bar(const char* label, uint64_t done, uint64_t total) const;
    void end_bar() const;
};

// A transfer's progress callback and its argument: draws the bar, cancels on Ctrl-C.
struct Progress {
    const Context& ctx;
    const char* label;
};
int32_t on_progress(const kvn_ext_transfer_progress* p, void* progress);

}  // namespace kvnctl
