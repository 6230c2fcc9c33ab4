// users count|list|get|put|delete|clone, and the sensor's enroll, identify and verify.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>

#include "commands.h"

namespace kvnctl {

std::unique_ptr<kvn_user_record> get_user(Session& s, const std::string& id) {
    auto rec = std::make_unique<kvn_user_record>();
    if (id.size() >= sizeof rec->user_id) throw Failure(kBadInput, id + ": user id too long");
    std::memcpy(rec->user_id, id.data(), id.size());
    check(kvn_get_user_record(&s.conn, rec.get()), "user " + id);
    return rec;
}

void put_user(Session& s, kvn_user_record& rec) {
    kvn_user_store_result result{};
    kvn_user_store_request req{&rec, &result};
    const int32_t rc = kvn_store_user_record(&s.conn, &req);
    if (rc != 0 && result.user_id[0])
        throw Failure(exit_for(rc), std::string("storing ") + rec.user_id + ": " + status_text(rc) +
                                        "; the template is user " + result.user_id + "'s");
    check(rc, std::string("storing user ") + rec.user_id);
}

namespace {

// The user ids, from the terminal's CSV export (the interface has no list of users).
std::vector<std::string> list_users(Session& s) {
    const std::string name = "kvnctl-users.csv";
    check(kvn_upgrade_firware_export_csv_file(&s.conn, name.c_str()), "exporting the users");
    char tmpl[] = "/tmp/kvnctl-users-XXXXXX";
    const int fd = mkstemp(tmpl);
    if (fd < 0) throw Failure(kBadInput, "cannot create a temporary file");
    close(fd);
    kvn_file_transfer_request req{};
    req.file_type = 3;
    req.local_path = tmpl;
    std::memcpy(req.file_name, name.data(), name.size());
    const int32_t rc = kvn_ext_download_file(&s.conn, &req, nullptr, nullptr);
    std::ifstream in(tmpl);
    std::vector<std::string> ids;
    std::string line;
    for (bool header = true; std::getline(in, line); header = false)
        if (!header && !line.empty()) ids.push_back(line.substr(0, line.find(',')));
    std::remove(tmpl);
    check(rc, "reading the user list");
    kvn_delete_file(&s.conn, &req);  // the export is not kept on the terminal
    return ids;
}

template <class Request> void set_user_id(Request& req, const std::string& id) {
    if (id.size() >= sizeof req.user_id) throw Failure(kBadInput, "user id too long");
    std::memcpy(req.user_id, id.data(), id.size());
}

void register_sensor(CLI::App& app, Context& ctx) {
    struct Args {
        std::string user;
        uint32_t finger = 1;
    };
    auto a = std::make_shared<Args>();
    auto* enroll = app.add_subcommand("enroll", "enrol the finger on the sensor for a user");
    enroll->add_option("ID", a->user, "user id")->required();
    enroll->add_option("--finger", a->finger, "finger index")->capture_default_str()->check(CLI::Range(0, 9));
    ctx.on(enroll, [&ctx, a] {
        auto s = ctx.open();
        kvn_enrollment_request req{};
        set_user_id(req, a->user);
        req.attr_t09 = static_cast<uint8_t>(a->finger);
        check(kvn_enrollment(&s->conn, &req), "enrolment");
        ctx.emit(json{{"user_id", a->user}, {"finger", req.attr_t02}, {"template_length", req.attr_t04},
                      {"templates", req.attr_t05}, {"quality", req.attr_t08}},
                 "enrolled " + a->user + ", finger " + std::to_string(req.attr_t02) + ", " +
                     std::to_string(req.attr_t05) + " templates held");
        return kOk;
    });

    ctx.on(app.add_subcommand("identify", "identify the finger on the sensor"), [&ctx] {
        auto s = ctx.open();
        auto req = std::make_unique<kvn_identify_request>();
        check(kvn_identify_user(&s->conn, req.get()), "identification");
        const std::string id(req->user_id, strnlen(req->user_id, sizeof req->user_id));
        ctx.emit(json{{"user_id", id}, {"finger", req->attr_t03}, {"score", req->attr_t01}},
                 id + " (finger " + std::to_string(req->attr_t03) + ", score " + std::to_string(req->attr_t01) + ")");
        return kOk;
    });

    auto* verify = app.add_subcommand("verify", "verify the finger on the sensor against a user");
    verify->add_option("ID", a->user, "user id")->required();
    ctx.on(verify, [&ctx, a] {
        auto s = ctx.open();
        kvn_verify_user_id_request req{};
        set_user_id(req, a->user);
        check(kvn_verify_by_user_id(&s->conn, &req), "verification");
        ctx.emit(json{{"user_id", a->user}, {"score", req.result.attr_t01}, {"finger", req.result.attr_t02}},
                 "verified " + a->user + " (score " + std::to_string(req.result.attr_t01) + ")");
        return kOk;
    });
}

}  // namespace

void register_users(CLI::App& app, Context& ctx) {
    struct Args {
        std::vector<std::string> ids;
        std::string file, clone_to;
    };
    auto a = std::make_shared<Args>();
    auto* users = app.add_subcommand("users", "user records and templates");
    users->require_subcommand(1);

    ctx.on(users->add_subcommand("count", "users and templates held"), [&ctx] {
        auto s = ctx.open();
        const uint32_t u = s->count(kvn_get_user_count, "user count");
        const uint32_t t = s->count(kvn_get_biometric_count, "template count");
        ctx.emit(json{{"users", u}, {"templates", t}},
                 std::to_string(u) + " users, " + std::to_string(t) + " templates");
        return kOk;
    });

    ctx.on(users->add_subcommand("list", "user ids"), [&ctx] {
        auto s = ctx.open();
        const auto ids = list_users(*s);
        std::string text;
        for (const auto& id : ids) text += id + "\n";
        if (!text.empty()) text.pop_back();
        ctx.emit(json(ids), text.empty() ? std::string("(no users)") : text);
        return kOk;
    });

    auto* get = users->add_subcommand("get", "a user record as JSON");
    get->add_option("ID", a->ids, "user id")->required()->expected(1);
    ctx.on(get, [&ctx, a] {
        auto s = ctx.open();
        ctx.emit(to_json(*get_user(*s, a->ids.at(0))));
        return kOk;
    });

    auto* put = users->add_subcommand("put", "store a user record from JSON (a file, or stdin)");
    put->add_option("FILE", a->file, "JSON file; - or nothing: stdin");
    ctx.on(put, [&ctx, a] {
        const json j = parse_json(a->file);
        auto rec = std::make_unique<kvn_user_record>();
        read_record(j, *rec, "user");
        auto s = ctx.open();
        put_user(*s, *rec);
        return kOk;
    });

    auto* del = users->add_subcommand("delete", "delete users");
    del->add_option("ID", a->ids, "user ids")->required();
    ctx.on(del, [&ctx, a] {
        auto s = ctx.open();
        for (const auto& id : a->ids) {
            auto rec = std::make_unique<kvn_user_record>();
            if (id.size() >= sizeof rec->user_id) throw Failure(kBadInput, id + ": user id too long");
            std::memcpy(rec->user_id, id.data(), id.size());
            check(kvn_delete_user_record(&s->conn, rec.get()), "deleting " + id);
        }
        return kOk;
    });

    auto* clone = users->add_subcommand("clone", "copy users with their templates to another terminal");
    clone->add_option("ID", a->ids, "user ids (default: all)");
    clone->add_option("--to", a->clone_to, "target terminal IP[:PORT]")->required();
    ctx.on(clone, [&ctx, a] {
        auto s = ctx.open();
        const auto ids = a->ids.empty() ? list_users(*s) : a->ids;
        Session to;
        to.open_host(a->clone_to);
        for (const auto& id : ids) put_user(to, *get_user(*s, id));
        ctx.emit(json{{"cloned", ids.size()}}, std::to_string(ids.size()) + " users cloned to " + a->clone_to);
        return kOk;
    });

    register_sensor(app, ctx);
}

}  // namespace kvnctl
