// A request of nine payload pieces, the most send_frame takes, made eleven gather parts, and the TCP transport refused more than eight with a write error.
#include <gtest/gtest.h>

#include "kvnsdk2.h"
#include "link/frame.h"
#include "peer.h"

using kvntest::Bytes;

TEST(RegressionSendFrame, EveryPieceCountUpToTheMostGoesOutAsOneFrame) {
    for (size_t count = 0; count <= kvn::kMaxPayloadPieces; ++count) {
        SCOPED_TRACE(testing::Message() << count << " pieces");
        // Piece i holds i + 1 bytes, so a lost or reordered piece changes the frame.
        std::vector<Bytes> data;
        std::vector<kvn::ConstBuf> pieces;
        Bytes payload;
        for (size_t i = 0; i < count; ++i) {
            data.emplace_back(i + 1, static_cast<uint8_t>(0x10 * (i + 1)));
            payload.insert(payload.end(), data.back().begin(), data.back().end());
        }
        for (const Bytes& d : data) pieces.push_back({d.data(), static_cast<uint32_t>(d.size())});
        const auto length = static_cast<uint32_t>(payload.size());

        Bytes want;
        for (uint32_t w : {KVN_SYNC_WORD, 5u, KVN_REQUEST_WORD(KVN_REQ_SET), 0u, 7u, length}) kvntest::put_le32(want, w);
        want.insert(want.end(), payload.begin(), payload.end());
        kvntest::put_le32(want, kvntest::crc32(0, want.data() + 4, want.size() - 4));

        Bytes seen;
        {
            kvntest::LoopbackPeer peer([&](kvntest::sock_t s) { seen = kvntest::read_bytes(s, want.size()); });
            kvn_device_conn c = peer.conn();
            c.header_id = 5;
            ASSERT_EQ(kvn_open_device_conn(&c), 0);
            EXPECT_EQ(kvn::send_frame(&c, KVN_REQUEST_WORD(KVN_REQ_SET), 7, pieces.data(), count, length), 0);
            kvn_close_device_conn(&c);
        }
        EXPECT_BYTES(seen, want);
    }
}
