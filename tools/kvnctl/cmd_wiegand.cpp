// wiegand upload|delete: the terminal's Wiegand formats. The list and the port settings
// are settings groups (kvnctl get wiegand-format-list, wiegand-input, ...).
#include "commands.h"

namespace kvnctl {

void register_wiegand(CLI::App& app, Context& ctx) {
    struct Args {
        std::string file;
        uint32_t id = 0;
    };
    auto a = std::make_shared<Args>();
    auto* wg = app.add_subcommand("wiegand", "Wiegand formats (get|set|reset GROUP for the list and the ports)");
    wg->require_subcommand(1);

    auto* up = wg->add_subcommand("upload", "store a format from JSON (a file, or stdin)");
    up->add_option("FILE", a->file, "JSON file; - or nothing: stdin");
    ctx.on(up, [&ctx, a] {
        const json j = parse_json(a->file);
        auto f = std::make_unique<kvn_wiegand_format>();
        read_record(j, *f, "format");
        auto s = ctx.open();
        check(kvn_upload_wiegand_format(&s->conn, f.get()), "format upload");
        ctx.emit(json{{"format_id", f->format_id}}, "format " + std::to_string(f->format_id));
        return kOk;
    });

    auto* del = wg->add_subcommand("delete", "delete a format");
    del->add_option("ID", a->id, "format id")->required()->check(CLI::Range(0, 255));
    ctx.on(del, [&ctx, a] {
        auto s = ctx.open();
        check(kvn_delete_wiegand_format(&s->conn, static_cast<uint8_t>(a->id)), "format delete");
        return kOk;
    });
}

}  // namespace kvnctl
