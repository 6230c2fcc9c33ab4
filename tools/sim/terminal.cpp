// Request dispatch: the command table names the handler and the request types a
// command takes; a handler's failure to allocate or to read its payload becomes
// a status instead of ending the connection.
#include "terminal.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "command_table.h"
#include "kvnsdk2.h"

namespace kvnsim {

Terminal::Terminal(Store& store, uint32_t prefill_logs) : state_(store, prefill_logs) {}
Terminal::~Terminal() = default;

bool Terminal::load(std::string* error) {
    std::lock_guard<std::mutex> lock(mutex_);
    return state_.load(error);
}

Reply Terminal::handle(Session& session, const Request& rq) {
    std::lock_guard<std::mutex> lock(mutex_);
    const Command* cmd = find_command(rq.command);
    if (cmd == nullptr) return Reply::of(KVN_E_COMMAND_NOT_FOUND);
    if ((rq.word & 0xFFFFu) != 2 || rq.type > 7 || (cmd->types & bit(rq.type)) == 0) {
        return Reply::of(KVN_E_INVALID_REQUEST_TYPE);
    }
    try {
        Call call{state_, session, rq, *cmd};
        return cmd->handler(call);
    } catch (const std::bad_alloc&) {
        return Reply::of(KVN_E_FAILED_TO_ALLOCATE_MEMORY);
    } catch (const std::exception&) {
        return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
    }
}

// The finger on the sensor: enrolment, identification and verification capture it.
void Terminal::present_finger(const std::string& user_id, uint8_t finger) {
    std::lock_guard<std::mutex> lock(mutex_);
    state_.finger = std::make_pair(user_id, finger);
}

void Terminal::remove_finger() {
    std::lock_guard<std::mutex> lock(mutex_);
    state_.finger.reset();
    state_.last_enrolled.reset();
}

// The card at the reader: its serial (at most 64 bytes), with nothing written on it yet.
void Terminal::present_card(const Bytes& serial) {
    std::lock_guard<std::mutex> lock(mutex_);
    state_.card = Bytes(serial.begin(), serial.begin() + long(std::min<size_t>(serial.size(), 64)));
    state_.card_data.clear();
    state_.card_user.reset();
}

void Terminal::remove_card() {
    std::lock_guard<std::mutex> lock(mutex_);
    state_.card.reset();
    state_.card_data.clear();
    state_.card_user.reset();
}

}  // namespace kvnsim
