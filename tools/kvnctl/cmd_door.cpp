// door open|close|clear-alarm.
#include "commands.h"

namespace kvnctl {

void register_door(CLI::App& app, Context& ctx) {
    auto* door = app.add_subcommand("door", "open, close, clear the alarm");
    door->require_subcommand(1);
    auto seconds = std::make_shared<uint32_t>(0);
    auto* open = door->add_subcommand("open", "open the door for SECONDS");
    open->add_option("SECONDS", *seconds, "seconds")->required();
    ctx.on(open, [&ctx, seconds] {
        auto s = ctx.open();
        check(kvn_open_door_for_time(&s->conn, *seconds, 0), "door open");
        return kOk;
    });
    ctx.on(door->add_subcommand("close", "close the door"), [&ctx] {
        auto s = ctx.open();
        check(kvn_close_door(&s->conn), "door close");
        return kOk;
    });
    ctx.on(door->add_subcommand("clear-alarm", "clear the forced-open alarm"), [&ctx] {
        auto s = ctx.open();
        check(kvn_clear_door_force_open_alarm(&s->conn), "clear alarm");
        return kOk;
    });
}

}  // namespace kvnctl
