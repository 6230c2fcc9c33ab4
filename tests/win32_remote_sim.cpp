// kvnsim::Simulator for the Windows test binary: the simulated terminal cannot run
// inside a Windows process, so each Simulator object starts a fresh Linux kvn-sim of
// its own through the launcher of scripts/wine-terminal (kvntest::RemoteSimulator)
// and reaches it over loopback TCP, or over a COM port with `serial`. The end-to-end
// tests written against the in-process simulator thus run unchanged on both builds.
//
// What a remote simulator cannot do is refused loudly rather than ignored: a state
// directory (it would be a Linux path), a prefilled journal, and changing faults or
// presenting a finger or a card after start (kvn-sim takes those on its command line
// only). Tests that need them stay Linux-only.
#if KVN_REMOTE_SIM

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "kvnsim.h"
#include "win32_terminal.h"

namespace kvnsim {

struct Simulator::Impl {
    Options options;
    std::vector<uint8_t> card;
    std::unique_ptr<kvntest::RemoteSimulator> remote;
};

namespace {

std::string command_line(const Options& o, const std::vector<uint8_t>& card) {
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
    if (!card.empty()) {
        static const char hex[] = "0123456789abcdef";
        std::string h;
        for (const uint8_t b : card) {
            h.push_back(hex[b >> 4]);
            h.push_back(hex[b & 15]);
        }
        add("--card " + h);
    }
    return args;
}

void refuse(const char* what) {
    ADD_FAILURE() << what << " needs the in-process simulator; the Windows build talks to a Linux kvn-sim "
                     "that takes it only on its command line (keep such tests in posix_*.cpp)";
}

}  // namespace

Simulator::Simulator() : Simulator(Options{}) {}
Simulator::Simulator(Options options) : impl_(std::make_unique<Impl>()) { impl_->options = std::move(options); }
Simulator::~Simulator() { stop(); }

bool Simulator::start(std::string* error) {
    stop();
    if (!impl_->options.state_dir.empty() || impl_->options.prefill_logs != 0) {
        if (error != nullptr) *error = "a state directory or a prefilled journal needs the in-process simulator";
        return false;
    }
    auto remote = std::make_unique<kvntest::RemoteSimulator>(command_line(impl_->options, impl_->card));
    std::string why;
    if (!remote->start(&why)) {
        if (error != nullptr) {
            *error = "no Linux kvn-sim (" + why + "): build it with the default preset and run through ctest";
        }
        return false;
    }
    impl_->remote = std::move(remote);
    return true;
}

void Simulator::stop() { impl_->remote.reset(); }
bool Simulator::running() const { return impl_->remote != nullptr; }
uint16_t Simulator::port() const { return impl_->remote ? impl_->remote->port() : 0; }

std::string Simulator::address() const {
    return impl_->remote ? impl_->remote->ip() + ":" + std::to_string(impl_->remote->port()) : std::string();
}

// The COM port's device name (\\.\COMn), in narrow text.
std::string Simulator::serial_path() const {
    if (!impl_->remote) return std::string();
    const std::wstring& w = impl_->remote->serial_port();
    return std::string(w.begin(), w.end());
}

void Simulator::set_faults(const Faults& faults) {
    if (running()) refuse("changing faults of a running simulator");
    impl_->options.faults = faults;
}

Faults Simulator::faults() const { return impl_->options.faults; }

void Simulator::present_finger(const std::string&, uint8_t) { refuse("present_finger"); }
void Simulator::remove_finger() { refuse("remove_finger"); }

void Simulator::present_card(const std::vector<uint8_t>& serial) {
    if (running()) refuse("presenting a card to a running simulator");
    impl_->card = serial;
}

void Simulator::remove_card() {
    if (running()) refuse("removing the card from a running simulator");
    impl_->card.clear();
}

uint64_t Simulator::requests() const {
    refuse("requests()");
    return 0;
}

uint64_t Simulator::connections() const {
    refuse("connections()");
    return 0;
}

}  // namespace kvnsim

#endif  // KVN_REMOTE_SIM
