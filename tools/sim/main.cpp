// kvn-sim: a simulated terminal on a TCP port or a pseudo-terminal.
//
//   kvn-sim [--listen ADDRESS:PORT] [--state DIR] [--serial] [--prefill-logs N]
//           [--latency-ms N] [--no-answer] [--close-after N] [--bad-sync]
//           [--bad-crc] [--byte-by-byte] [--start-packets N] [--refuse-packet N]
//           [--card HEX]
//
// Prints the address it listens on (or the pseudo-terminal path) and serves
// until SIGINT or SIGTERM.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include "kvnsim.h"

namespace {

void usage(FILE* out) {
    std::fprintf(out,
                 "usage: kvn-sim [options]\n"
                 "  --listen ADDRESS:PORT  TCP address to serve (default 127.0.0.1:5005; port 0 picks one)\n"
                 "  --state DIR            keep the terminal's state under DIR across restarts\n"
                 "  --serial               serve a pseudo-terminal instead of TCP and print its path\n"
                 "  --prefill-logs N       a new transaction journal starts with N entries\n"
                 "  --card HEX             a card with this serial is held to the reader\n"
                 "faults, applied to every connection:\n"
                 "  --latency-ms N         wait N ms before each answer\n"
                 "  --no-answer            never answer\n"
                 "  --close-after N        send N bytes of each answer, then close\n"
                 "  --bad-sync             answers start with a wrong sync word\n"
                 "  --bad-crc              answers carry a wrong CRC\n"
                 "  --byte-by-byte         answers go out one byte per write\n"
                 "  --start-packets N      file transfer starts announce N packets\n"
                 "  --refuse-packet N      upload packet N is refused (\"Device failed to write file\")\n");
}

bool number(const char* text, unsigned long long max, unsigned long long* out) {
    char* end = nullptr;
    errno = 0;
    const unsigned long long v = std::strtoull(text, &end, 10);
    if (errno != 0 || end == text || *end != 0 || v > max) return false;
    *out = v;
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    kvnsim::Options opt;
    opt.listen = "127.0.0.1:5005";
    std::vector<uint8_t> card;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        auto value = [&]() -> const char* {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "kvn-sim: %s needs a value\n", a.c_str());
                std::exit(2);
            }
            return argv[++i];
        };
        unsigned long long n = 0;
        if (a == "--listen") {
            opt.listen = value();
        } else if (a == "--state") {
            opt.state_dir = value();
        } else if (a == "--serial") {
            opt.serial = true;
        } else if (a == "--prefill-logs") {
            if (!number(value(), 10'000'000, &n)) return std::fprintf(stderr, "kvn-sim: bad %s\n", a.c_str()), 2;
            opt.prefill_logs = uint32_t(n);
        } else if (a == "--latency-ms") {
            if (!number(value(), 3'600'000, &n)) return std::fprintf(stderr, "kvn-sim: bad --latency-ms\n"), 2;
            opt.faults.latency_ms = uint32_t(n);
        } else if (a == "--no-answer") {
            opt.faults.no_answer = true;
        } else if (a == "--close-after") {
            if (!number(value(), 1ull << 40, &n)) return std::fprintf(stderr, "kvn-sim: bad --close-after\n"), 2;
            opt.faults.close_after_bytes = int64_t(n);
        } else if (a == "--bad-sync") {
            opt.faults.bad_sync = true;
        } else if (a == "--bad-crc") {
            opt.faults.bad_crc = true;
        } else if (a == "--byte-by-byte") {
            opt.faults.byte_by_byte = true;
        } else if (a == "--start-packets" || a == "--refuse-packet") {
            if (!number(value(), 65536, &n)) return std::fprintf(stderr, "kvn-sim: bad %s\n", a.c_str()), 2;
            (a == "--start-packets" ? opt.faults.start_packets : opt.faults.refuse_packet) = uint32_t(n);
        } else if (a == "--card") {
            const std::string h = value();
            if (h.size() % 2 != 0 || h.empty() || h.size() > 128)
                return std::fprintf(stderr, "kvn-sim: bad --card\n"), 2;
            for (size_t k = 0; k < h.size(); k += 2) card.push_back(uint8_t(std::stoul(h.substr(k, 2), nullptr, 16)));
        } else if (a == "--help" || a == "-h") {
            usage(stdout);
            return 0;
        } else {
            std::fprintf(stderr, "kvn-sim: unknown option %s\n", a.c_str());
            usage(stderr);
            return 2;
        }
    }

    // SIGINT and SIGTERM are blocked before the serving threads start (they
    // inherit the mask) and taken here with sigwait, whichever thread they hit.
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t stop_signals;
    sigemptyset(&stop_signals);
    sigaddset(&stop_signals, SIGINT);
    sigaddset(&stop_signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stop_signals, nullptr);

    kvnsim::Simulator sim(opt);
    std::string error;
    if (!sim.start(&error)) {
        std::fprintf(stderr, "kvn-sim: %s\n", error.c_str());
        return 1;
    }
    if (!card.empty()) sim.present_card(card);
    if (opt.serial) std::printf("%s\n", sim.serial_path().c_str());
    else std::printf("%s\n", sim.address().c_str());
    std::fflush(stdout);
    int signal_number = 0;
    while (sigwait(&stop_signals, &signal_number) != 0) {
    }
    sim.stop();
    return 0;
}
