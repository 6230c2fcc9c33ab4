// file upload|download|delete and firmware upgrade.
#include <cstdio>
#include <cstring>
#include <fstream>

#include "commands.h"

namespace kvnctl {

void upload(const Context& ctx, Session& s, const std::string& local, const std::string& name, uint32_t type) {
    kvn_file_transfer_request req{};
    req.file_type = type;
    req.local_path = local.c_str();
    if (name.size() >= sizeof req.file_name) throw Failure(kBadInput, name + ": name too long");
    std::memcpy(req.file_name, name.data(), name.size());
    if (!std::ifstream(local)) throw Failure(kBadInput, local + ": cannot be read");
    Progress bar{ctx, "upload"};
    const int32_t rc = kvn_ext_upload_file(&s.conn, &req, on_progress, &bar);
    ctx.end_bar();
    check(rc, "upload of " + local);
}

namespace {

kvn_file_transfer_request named(const std::string& name, uint32_t type) {
    kvn_file_transfer_request req{};
    req.file_type = type;
    if (name.size() >= sizeof req.file_name) throw Failure(kBadInput, "name too long");
    std::memcpy(req.file_name, name.data(), name.size());
    return req;
}

}  // namespace

void register_files(CLI::App& app, Context& ctx) {
    struct Args {
        std::string local, remote;
        uint32_t type = 1;
    };
    auto a = std::make_shared<Args>();
    auto* file = app.add_subcommand("file", "files on the terminal");
    file->require_subcommand(1);

    auto* up = file->add_subcommand("upload", "send a file");
    up->add_option("LOCAL", a->local, "local file")->required();
    up->add_option("--name", a->remote, "name on the terminal (default: the local file's)");
    up->add_option("--type", a->type, "file type: 1 firmware, 2 backup, 3 CSV, 4 image, 5 audio, 6 certificate")
        ->capture_default_str();
    ctx.on(up, [&ctx, a] {
        auto s = ctx.open();
        upload(ctx, *s, a->local, a->remote.empty() ? base_name(a->local) : a->remote, a->type);
        return kOk;
    });

    auto* down = file->add_subcommand("download", "fetch a file");
    down->add_option("NAME", a->remote, "name on the terminal")->required();
    down->add_option("LOCAL", a->local, "local file (default: NAME)");
    down->add_option("--type", a->type, "file type")->capture_default_str();
    ctx.on(down, [&ctx, a] {
        auto s = ctx.open();
        const std::string out = a->local.empty() ? base_name(a->remote) : a->local;
        kvn_file_transfer_request req = named(a->remote, a->type);
        req.local_path = out.c_str();
        Progress bar{ctx, "download"};
        const int32_t rc = kvn_ext_download_file(&s->conn, &req, on_progress, &bar);
        ctx.end_bar();
        if (rc != 0) std::remove(out.c_str());  // no half-written file stays behind
        check(rc, "download of " + a->remote);
        return kOk;
    });

    auto* del = file->add_subcommand("delete", "delete a file");
    del->add_option("NAME", a->remote, "name on the terminal")->required();
    del->add_option("--type", a->type, "file type")->capture_default_str();
    ctx.on(del, [&ctx, a] {
        auto s = ctx.open();
        kvn_file_transfer_request req = named(a->remote, a->type);
        check(kvn_delete_file(&s->conn, &req), "delete of " + a->remote);
        return kOk;
    });

    auto* fw = app.add_subcommand("firmware", "firmware upgrade");
    fw->require_subcommand(1);
    auto* upgrade = fw->add_subcommand("upgrade", "upload a firmware package and install it");
    upgrade->add_option("FILE", a->local, "firmware package")->required();
    ctx.on(upgrade, [&ctx, a] {
        auto s = ctx.open();
        upload(ctx, *s, a->local, base_name(a->local), 1);
        check(kvn_upgrade_firware(&s->conn), "firmware upgrade");
        return kOk;
    });
}

}  // namespace kvnctl
