// time get|set: the terminal's clock as seconds since 1970 and UTC.
#include <ctime>

#include "commands.h"

namespace kvnctl {

void register_time(CLI::App& app, Context& ctx) {
    auto* time = app.add_subcommand("time", "the terminal's clock");
    time->require_subcommand(1);
    ctx.on(time->add_subcommand("get", "read the clock"), [&ctx] {
        auto s = ctx.open();
        auto dt = std::make_unique<kvn_device_date_time>();
        check(kvn_get_device_date_time(&s->conn, dt.get()), "reading the clock");
        const std::time_t t = dt->value_1;
        char iso[32] = {};
        std::strftime(iso, sizeof iso, "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&t));
        ctx.emit(json{{"time", dt->value_1}, {"utc", iso}}, iso);
        return kOk;
    });

    auto seconds = std::make_shared<int64_t>(-1);
    auto* set = time->add_subcommand("set", "set the clock (default: this machine's)");
    set->add_option("SECONDS", *seconds, "seconds since 1970");
    ctx.on(set, [&ctx, seconds] {
        auto s = ctx.open();
        auto dt = std::make_unique<kvn_device_date_time>();
        check(kvn_get_device_date_time(&s->conn, dt.get()), "reading the clock");
        const int64_t v = *seconds >= 0 ? *seconds : static_cast<int64_t>(std::time(nullptr));
        if (v > 0xFFFFFFFFll) throw Failure(kBadInput, "time out of range");
        dt->value_1 = static_cast<uint32_t>(v);
        check(kvn_set_device_date_time(&s->conn, dt.get()), "setting the clock");
        return kOk;
    });
}

}  // namespace kvnctl
