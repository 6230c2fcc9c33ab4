// The simulated terminal as the connection loop sees it: requests in, replies
// out, one at a time under its lock, against the state it holds. Which handler
// answers a request is the command table's business (command_table.cpp).
#pragma once

#include <cstdint>
#include <mutex>
#include <string>

#include "request.h"
#include "state.h"
#include "store.h"

namespace kvnsim {

class Terminal {
public:
    Terminal(Store& store, uint32_t prefill_logs);
    ~Terminal();

    bool load(std::string* error);
    Reply handle(Session& session, const Request& request);

    void present_finger(const std::string& user_id, uint8_t finger);
    void remove_finger();
    void present_card(const Bytes& serial);
    void remove_card();

private:
    std::mutex mutex_;
    State state_;
};

}  // namespace kvnsim
