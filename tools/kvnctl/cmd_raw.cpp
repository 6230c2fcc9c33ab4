// raw: one request frame as given, and the terminal's answer.
#include <cstdio>
#include <map>

#include "commands.h"

namespace kvnctl {

void register_raw(CLI::App& app, Context& ctx) {
    struct Args {
        uint32_t cmd = 0;
        std::string type, hex;
    };
    auto a = std::make_shared<Args>();
    auto* raw = app.add_subcommand("raw", "send one request frame and show the answer");
    raw->add_option("CMD", a->cmd, "command id")->required();
    raw->add_option("TYPE", a->type, "request type: set, get, reset, upload, download or a number")->required();
    raw->add_option("HEX", a->hex, "payload as hex");
    ctx.on(raw, [&ctx, a] {
        static const std::map<std::string, uint32_t> types = {
            {"set", KVN_REQ_SET}, {"get", KVN_REQ_GET}, {"reset", KVN_REQ_RESET},
            {"upload", KVN_REQ_UPLOAD}, {"download", KVN_REQ_DOWNLOAD}};
        uint32_t type = 0;
        if (auto it = types.find(a->type); it != types.end()) type = it->second;
        else try { type = static_cast<uint32_t>(std::stoul(a->type, nullptr, 0)); }
            catch (...) { throw Failure(kUsage, a->type + ": not a request type"); }
        const auto payload = parse_hex(a->hex, "payload");
        auto s = ctx.open();
        const uint32_t word = KVN_REQUEST_WORD(type);
        check(kvn_send_command(&s->conn, &word, a->cmd, payload.data(), static_cast<uint32_t>(payload.size())),
              "sending");
        std::vector<uint8_t> buf(1 << 20);
        uint32_t len = static_cast<uint32_t>(buf.size());
        const int32_t rc = kvn_receive_response(&s->conn, buf.data(), &len);
        if (rc != 0 && rc != -1) {
            ctx.emit(json{{"status", rc}, {"message", status_text(rc)}},
                     status_text(rc) + " (" + std::to_string(rc) + ")");
            return exit_for(rc);
        }
        check(rc, "reading the answer");
        std::string hex;
        for (uint32_t i = 0; i < len; ++i) {
            char b[3];
            std::snprintf(b, sizeof b, "%02x", buf[i]);
            hex += b;
        }
        ctx.emit(json{{"status", 0}, {"payload", hex}}, hex.empty() ? "Success (no payload)" : hex);
        return kOk;
    });
}

}  // namespace kvnctl
