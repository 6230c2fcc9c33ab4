// Specific-purpose inputs and outputs, time attendance and job codes.
#include <algorithm>

#include "handlers.h"
#include "kvnsdk2.h"

namespace kvnsim::io {

const Group kInputPurpose{{U32(2), U8(3), U32(1), U32(5), U8(6), U32(4), U32(8), U8(9), U32(7)},
                              {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}, {6, 0}, {7, 0}, {8, 0}, {9, 0}},
                              {}};
const Group kOutputPurpose{{U8(7), U8(8), U8(9), LIST(1, {U32(2), U32(3), U32(4), U8(5), U32(6)})},
                               {{7, 0}, {8, 0}, {9, 0}, entries(1, 9, {{2, 0}, {3, 0}, {4, 0}, {5, 0}, {6, 0}})},
                               {}};
// Items merge by their number (1 to 16); entries are replaced as a list.
const Group kTimeAttendance{{U32(10), U32(11), U32(19), KEYED(1, 3, 1, 16, {U8(3), TXT(12, 51), TXT(13, 51), U32(14)}),
                                 LIST(2, {U8(6), U8(7), U8(8), U8(9), U32(4)})},
                                {{10, 0}, {11, 0}, {19, 0}},
                                {}};
const Group kJobCodes{{LIST(16, {U32(17), TXT(18, 52)})}, {}, {}};

// Job codes: non-zero ids unique.
Reply job_codes(Call& c) {
    if (c.rq.type != kSet) return settings::plain(c);
    std::vector<Node> in;
    if (int32_t rc = settings::parse_set(c, &in); rc != 0) return Reply::of(rc);
    std::vector<uint32_t> ids;
    for (const Node& code : in) {
        for (const Node& k : code.kids) {
            if (k.tag != 17 || k.u32() == 0) continue;
            if (std::find(ids.begin(), ids.end(), k.u32()) != ids.end()) return Reply::of(KVN_E_JOBCODE_ID_MUST_BE_UNIQUE);
            ids.push_back(k.u32());
        }
    }
    return settings::store(c, std::move(in));
}

}  // namespace kvnsim::io
