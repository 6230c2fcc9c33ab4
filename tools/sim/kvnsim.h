// kvnsim: a simulated access-control terminal that answers the library's request
// frames over TCP or a pseudo-terminal, for end-to-end tests, demos and
// integrators without hardware.
//
//   kvnsim::Simulator sim;                 // 127.0.0.1, a free port, state in memory
//   if (!sim.start()) ...;
//   conn.ip_address = "127.0.0.1"; conn.port = sim.port();
//
// Every request is answered on the connection it came in on; connections are
// served at the same time, each by its own thread, against one shared terminal.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kvnsim {

// Misbehaviour for testing a client's error paths. Faults apply to every
// answer of the connections accepted after they were set (serial: the line).
struct Faults {
    uint32_t latency_ms = 0;         // wait this long before each answer
    bool no_answer = false;          // read requests, never answer them
    int64_t close_after_bytes = -1;  // send only this many bytes of an answer, then close (-1: off)
    bool bad_sync = false;           // answers start with a wrong sync word
    bool bad_crc = false;            // answers carry a wrong CRC
    bool byte_by_byte = false;       // answers go out one byte per write
    uint32_t byte_delay_us = 100;    // pause between those writes
    uint32_t start_packets = 0;      // file transfer starts announce this many packets (0: what the file needs)
    uint32_t refuse_packet = 0;      // upload packet with this number: "Device failed to write file" (0: off)
};

struct Options {
    std::string listen = "127.0.0.1:0";  // address:port to listen on; port 0 picks a free one
    std::string state_dir;               // where the state survives restarts; empty: in memory
    bool serial = false;                 // serve a pseudo-terminal instead of TCP
    uint32_t prefill_logs = 0;           // a journal created now starts with this many entries
    Faults faults;
    std::vector<uint8_t> card;           // a card held to the reader from the start (kvn-sim --card)
};

class Simulator {
public:
    Simulator();
    explicit Simulator(Options options);
    ~Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

    // Loads the state and starts serving; false with a reason in *error.
    bool start(std::string* error = nullptr);
    // Closes the listener and every connection and waits for their threads.
    void stop();
    bool running() const;

    uint16_t port() const;            // TCP port listened on
    std::string address() const;      // "127.0.0.1:5005"
    std::string serial_path() const;  // the pseudo-terminal a client opens, with --serial

    // Faults for connections accepted from now on.
    void set_faults(const Faults& faults);
    Faults faults() const;

    // The finger on the sensor: enrolment, identification and verification
    // capture it. Without one, the finger enrolled last is taken.
    void present_finger(const std::string& user_id, uint8_t finger);
    void remove_finger();
    // The card held to the reader (its serial, at most 64 bytes).
    void present_card(const std::vector<uint8_t>& serial);
    void remove_card();

    uint64_t requests() const;     // requests answered or refused so far
    uint64_t connections() const;  // connections accepted so far

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kvnsim
