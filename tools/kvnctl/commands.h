// kvnctl's command groups, one file each: register_<noun> adds the group's subcommands to
// the app, their options bound to storage that lives as long as the app.
#pragma once

#include <memory>
#include <string>

#include "context.h"

namespace kvnctl {

void register_info(CLI::App& app, Context& ctx);       // info, status
void register_raw(CLI::App& app, Context& ctx);        // raw
void register_settings(CLI::App& app, Context& ctx);   // get, set, reset, groups
void register_time(CLI::App& app, Context& ctx);       // time
void register_door(CLI::App& app, Context& ctx);       // door
void register_users(CLI::App& app, Context& ctx);      // users, enroll, identify, verify
void register_logs(CLI::App& app, Context& ctx);       // logs
void register_files(CLI::App& app, Context& ctx);      // file, firmware
void register_cards(CLI::App& app, Context& ctx);      // cards
void register_wiegand(CLI::App& app, Context& ctx);    // wiegand
void register_tour(CLI::App& app, Context& ctx);       // tour

// Used by more than one group.
std::unique_ptr<kvn_user_record> get_user(Session& s, const std::string& id);  // cmd_users.cpp
void put_user(Session& s, kvn_user_record& rec);
void upload(const Context& ctx, Session& s, const std::string& local, const std::string& name,
            uint32_t type);  // cmd_files.cpp

}  // namespace kvnctl
