// cards read|read-data|write-user|revoke|unrevoke: the card at the reader, and revocation.
// The revoked list is a settings group: kvnctl get revoked-smart-card-list.
#include "commands.h"

namespace kvnctl {

void register_cards(CLI::App& app, Context& ctx) {
    struct Args {
        std::string user, card;
    };
    auto a = std::make_shared<Args>();
    auto* cards = app.add_subcommand("cards", "smart cards at the reader");
    cards->require_subcommand(1);

    ctx.on(cards->add_subcommand("read", "the card's serial number"), [&ctx] {
        auto s = ctx.open();
        kvn_card_serial_number c{};
        check(kvn_read_card_serial_number(&s->conn, &c), "card read");
        ctx.emit(to_json(c));
        return kOk;
    });

    ctx.on(cards->add_subcommand("read-data", "the user record on the card"), [&ctx] {
        auto s = ctx.open();
        auto d = std::make_unique<kvn_smart_card_data>();
        check(kvn_read_data_on_smart_card(&s->conn, d.get()), "card data");
        ctx.emit(to_json(*d));
        return kOk;
    });

    auto* write = cards->add_subcommand("write-user", "write a user's record to the card");
    write->add_option("ID", a->user, "user id")->required();
    ctx.on(write, [&ctx, a] {
        auto s = ctx.open();
        check(kvn_write_user_record_on_smart_card(&s->conn, get_user(*s, a->user).get()), "card write");
        return kOk;
    });

    for (const char* verb : {"revoke", "unrevoke"}) {
        auto* c = cards->add_subcommand(verb, std::string(verb) + " a card by its identifier (hex)");
        c->add_option("CARD", a->card, "card identifier, hex (up to 64 bytes)")->required();
        const bool revoke = verb[0] == 'r';
        ctx.on(c, [&ctx, a, revoke] {
            auto id = parse_hex(a->card, "card");
            if (id.size() > 64) throw Failure(kBadInput, "card: more than 64 bytes");
            id.resize(64);
            auto s = ctx.open();
            check(revoke ? kvn_revoke_smart_card(&s->conn, id.data()) : kvn_unrevoke_smart_card(&s->conn, id.data()),
                  revoke ? "revoke" : "unrevoke");
            return kOk;
        });
    }
}

}  // namespace kvnctl
