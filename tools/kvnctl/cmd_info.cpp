// info: the library and the terminal; status: what a status code means.
#include <iostream>

#include "commands.h"

namespace kvnctl {

void register_info(CLI::App& app, Context& ctx) {
    ctx.on(app.add_subcommand("info", "library version and the terminal's device information"), [&ctx] {
        auto s = ctx.open();
        auto info = std::make_unique<kvn_device_info>();
        check(kvn_get_device_info(&s->conn, info.get()), "device information");
        json j = {{"library", kvn_get_sdk2_version()}, {"terminal", s->name}, {"device_info", to_json(*info)}};
        if (ctx.json_output) ctx.emit(j);
        else std::cout << "library " << kvn_get_sdk2_version() << ", terminal " << s->name << ": firmware "
                       << info->text_3 << ", serial " << info->text_4 << ", " << info->value_6 << " users, "
                       << info->value_7 << " journal entries\n" << j["device_info"].dump(2) << "\n";
        return kOk;
    });

    auto code = std::make_shared<int32_t>(0);
    auto* st = app.add_subcommand("status", "the message of a status code");
    st->add_option("CODE", *code, "status code, for example -5")->required();
    ctx.on(st, [&ctx, code] {
        ctx.emit(json{{"code", *code}, {"message", status_text(*code)}}, status_text(*code));
        return kOk;
    });
}

}  // namespace kvnctl
