// Door and DAC: the settings record, and the door actions that share its
// command. The door open time (tag 8) is set by the open action (tags 8 and 7)
// and read back with the record; tag 15 clears the forced-open alarm.
#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::door {

const Group kDac{cat({{U8(1)}, range(U32, 2, 4), {U32(6), U32(7), U32(8)}, range(U32, 10, 16)}),
                     {{1, 1}, {2, 5}, {3, 0}, {4, 0}, {10, 0}, {11, 0}, {12, 0}, {13, 0}, {14, 0}, {6, 0}, {8, 5}, {16, 0}},
                     {7, 15}};

Reply dac(Call& c) {
    if (c.rq.type != kSet) return settings::plain(c);
    std::vector<Node> in;
    if (int32_t rc = settings::parse_set(c, &in); rc != 0) return Reply::of(rc);
    const Node* open_time = find(in, 8);
    const Node* option = find(in, 7);
    if (find(in, 15) != nullptr) {
        if (in.size() != 1 || in[0].u32() != 1) return Reply::of(KVN_E_INVALID_VALUE_RECEIVED);
        c.st.log_event(kEventAlarmClear, 0, "", 0, 0, "Door forced-open alarm cleared");
        return Reply{};
    }
    if (open_time != nullptr || option != nullptr) {
        if (open_time == nullptr || option == nullptr || in.size() != 2) return Reply::of(KVN_E_INVALID_DATA_RECEIVED);
        const uint32_t t = open_time->u32();
        c.st.groups.set_value(c.cmd.id, 8, t);
        c.st.groups.save(c.cmd.id);
        if (t == 0) c.st.log_event(kEventDoorClose, 0, "", 0, 0, "Door closed");
        else c.st.log_event(kEventDoorOpen, 0, "", 0, 0, "Door opened for " + std::to_string(t) + " s");
        return Reply{};
    }
    overlay(c.st.groups.nodes(c.cmd.id), std::move(in));
    c.st.groups.save(c.cmd.id);
    return Reply{};
}

}  // namespace kvnsim::door
