// kvnctl: a terminal from the command line, over the library's public interface. Each
// command group lives in its own cmd_*.cpp; what they share is in context.h.
#include <iostream>

#include "commands.h"

using namespace kvnctl;

int main(int argc, char** argv) {
    catch_interrupts();
    CLI::App app{"kvnctl: drive a terminal from the command line.\n"
                 "Without --host or --serial it uses the built-in simulator.",
                 "kvnctl"};
    app.footer(kExitHelp);
    app.require_subcommand(1);
    Context ctx;
    ctx.add_options(app);
    // In this order in --help.
    register_info(app, ctx);
    register_raw(app, ctx);
    register_settings(app, ctx);
    register_time(app, ctx);
    register_door(app, ctx);
    register_users(app, ctx);
    register_logs(app, ctx);
    register_files(app, ctx);
    register_cards(app, ctx);
    register_wiegand(app, ctx);
    register_tour(app, ctx);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        app.exit(e);
        return kUsage;
    }
    try {
        return ctx.action ? ctx.action() : kUsage;
    } catch (const Failure& f) {
        std::cerr << "kvnctl: " << f.what() << "\n";
        if (ctx.json_output) std::cout << json{{"error", f.what()}, {"exit", f.code}}.dump() << "\n";
        return f.code;
    }
}
