// The command table: every command the terminal answers, with its family, the
// request types it takes, its handler and, for a settings group, the group's
// fields and defaults. The terminal looks a request up here and nowhere else;
// a command id missing from the table is "Command not found".
#pragma once

#include <cstdint>
#include <span>

#include "command_ids.h"
#include "setting_groups.h"
#include "request.h"

namespace kvnsim {

class State;
struct Command;

// One request being answered, with what its handler may touch.
struct Call {
    State& st;
    Session& session;  // the connection's (file transfers)
    const Request& rq;
    const Command& cmd;
    const Group& group() const;
};
using Handler = Reply (*)(Call&);

enum class Family : uint8_t {
    users,
    biometrics,
    user_groups,
    indication,
    sensors,
    door,
    network,
    device,
    wireless,
    certificates,
    io,
    voip,
    logs,
    files,
    schedules,
    cards,
    wiegand,
};

struct Command {
    Cmd id;
    Family family;
    uint8_t types;            // request types taken (bits of kSet ... kDownload)
    Handler handler;
    const Group* group;   // the settings group the command keeps, if any
};

// The whole table, in id order.
std::span<const Command> command_table();
// The row of a command id, or null.
const Command* find_command(uint32_t id);
// The settings group kept under a command id, or null.
const Group* group_of(Cmd id);

}  // namespace kvnsim
