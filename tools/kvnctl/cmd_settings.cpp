// get, set, reset GROUP and groups: the settings groups, each as its record's JSON form.
#include "commands.h"
#include "groups.h"

namespace kvnctl {

namespace {
const Group& find(const std::string& name) {
    const Group* g = find_group(name);
    if (!g) throw Failure(kUsage, "unknown group \"" + name + "\" (kvnctl groups lists them)");
    return *g;
}
}  // namespace

void register_settings(CLI::App& app, Context& ctx) {
    struct Args {
        std::string group, file;
        uint32_t index = 0xFFFFFFFFu;  // none: the whole table
    };
    auto a = std::make_shared<Args>();

    auto* get = app.add_subcommand("get", "read a settings group as JSON");
    get->add_option("GROUP", a->group, "settings group (kvnctl groups lists them)")->required();
    ctx.on(get, [&ctx, a] {
        const Group& g = find(a->group);
        auto s = ctx.open();
        json j;
        check(g.get(&s->conn, j), "get " + g.name);
        ctx.emit(j);
        return kOk;
    });

    auto* set = app.add_subcommand("set", "write a settings group from JSON (a file, or stdin)");
    set->add_option("GROUP", a->group, "settings group")->required();
    set->add_option("FILE", a->file, "JSON file; - or nothing: stdin");
    ctx.on(set, [&ctx, a] {
        const Group& g = find(a->group);
        if (!g.set) throw Failure(kUsage, g.name + " is read only");
        const json j = parse_json(a->file);
        auto s = ctx.open();
        int32_t rc;
        try {
            rc = g.set(&s->conn, j);
        } catch (const BadJson& e) {
            throw Failure(kBadInput, e.what());
        }
        check(rc, "set " + g.name);
        return kOk;
    });

    auto* reset = app.add_subcommand("reset", "restore a settings group's defaults");
    reset->add_option("GROUP", a->group, "settings group")->required();
    reset->add_option("--index", a->index, "holiday-schedule, access-schedule: one schedule");
    ctx.on(reset, [&ctx, a] {
        const Group& g = find(a->group);
        if (!g.reset) throw Failure(kUsage, g.name + " has no reset");
        auto s = ctx.open();
        check(g.reset(&s->conn, a->index), "reset " + g.name);
        return kOk;
    });

    ctx.on(app.add_subcommand("groups", "list the settings groups"), [&ctx] {
        json list = json::array();
        std::string text;
        for (const auto& g : groups()) {
            const std::string ops = std::string("get") + (g.set ? " set" : "") + (g.reset ? " reset" : "");
            list.push_back({{"group", g.name}, {"operations", ops}});
            text += g.name + std::string(g.name.size() < 28 ? 28 - g.name.size() : 1, ' ') + ops + "\n";
        }
        text.pop_back();
        ctx.emit(list, text);
        return kOk;
    });
}

}  // namespace kvnctl
