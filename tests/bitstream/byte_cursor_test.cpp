// Byte bit cursor: reads and writes against a bit-by-bit model of the stream, cursor movement in
// both directions, the documented edge cases and the two exported mask tables.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "bitstream/byte_cursor.h"
#include "checkasm.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::test;

namespace {

// Bit i of the stream, most significant bit of byte 0 first.
int bit_at(const std::vector<uint8_t>& s, size_t i) { return (s[i / 8] >> (7 - i % 8)) & 1; }

uint32_t model_read(const std::vector<uint8_t>& s, size_t pos, int n) {
    uint32_t v = 0;
    for (int i = 0; i < n; ++i) v = v << 1 | uint32_t(bit_at(s, pos + size_t(i)));
    return v;
}

std::vector<uint8_t> random_bytes(Rng& rng, size_t n) {
    std::vector<uint8_t> b(n);
    rng.fill(b.data(), n, 0, 255);
    return b;
}

}  // namespace

TEST(ByteCursor, ShowAndGetMatchTheBitModelAtEveryOffsetAndCount) {
    Rng rng(1);
    for (int trial = 0; trial < 20; ++trial) {
        std::vector<uint8_t> s = random_bytes(rng, 16);
        for (int off = 0; off < 8; ++off) {
            for (uint32_t n = 0; n < 32; ++n) {
                const uint32_t want = model_read(s, size_t(8 + off), int(n));
                ASSERT_EQ(ownShowBits(s.data() + 1, uint32_t(off), n), want) << off << " " << n;
                if (n <= 9) {
                    ASSERT_EQ(ownShowBits16(s.data() + 1, uint32_t(off), n), want) << off << " " << n;
                }
                uint8_t* p = s.data() + 1;
                int o = off;
                ASSERT_EQ(ownGetBits(&p, &o, n), want);
                EXPECT_EQ((p - s.data()) * 8 + o, 8 + off + int(n));
                EXPECT_TRUE(o >= 0 && o <= 7);
            }
        }
    }
}

TEST(ByteCursor, FlushMovesBothWaysAcrossBytes) {
    uint8_t s[8] = {};
    for (int off = 0; off < 8; ++off) {
        for (int n = -24; n <= 24; ++n) {
            uint8_t* p = s + 4;
            int o = off;
            ownFlushBits(&p, &o, n);
            EXPECT_EQ((p - s) * 8 + o, 32 + off + n) << off << " " << n;
            EXPECT_TRUE(o >= 0 && o <= 7);
        }
    }
    uint8_t* p = s + 4;
    int o = 0;
    ownFlushBits(&p, &o, -1);
    EXPECT_EQ(p, s + 3);
    EXPECT_EQ(o, 7);
}

// Writes a random sequence of codes and checks the stream bit by bit after every write: the bits
// before the cursor are kept, the code follows, the rest of its last byte is zero and the bytes
// after it are untouched.
TEST(ByteCursor, PutBitsMatchesTheBitModel) {
    Rng rng(2);
    for (int trial = 0; trial < 200; ++trial) {
        std::vector<uint8_t> s = random_bytes(rng, 64);
        uint8_t* p = s.data();
        int o = rng.uniform(0, 7);
        size_t pos = size_t(o);
        std::vector<uint8_t> before = s;
        for (int w = 0; w < 8; ++w) {
            const int n = rng.uniform(1, 32);
            const int value = int(rng.next());
            PutBits(&p, &o, value, n);
            const size_t end = pos + size_t(n);
            for (size_t i = 0; i < s.size() * 8; ++i) {
                int want = bit_at(before, i);
                if (i >= pos && i < end) want = int((uint32_t(value) >> (n - 1 - int(i - pos))) & 1);
                else if (i >= end && i < (end + 7) / 8 * 8) want = 0;
                ASSERT_EQ(bit_at(s, i), want) << "trial " << trial << " write " << w << " bit " << i;
            }
            ASSERT_EQ(size_t(p - s.data()) * 8 + size_t(o), end);
            pos = end;
            before = s;
        }
    }
}

TEST(ByteCursor, PutThreeBitsAtOffsetSix) {
    uint8_t s[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    uint8_t* p = s;
    int o = 6;
    PutBits(&p, &o, 0x5, 3);  // 101
    EXPECT_EQ(s[0], 0xFE);    // 111111 10
    EXPECT_EQ(s[1], 0x80);    // 1 0000000
    EXPECT_EQ(s[2], 0xFF);
    EXPECT_EQ(p, s + 1);
    EXPECT_EQ(o, 1);
}

TEST(ByteCursor, MaskTables) {
    for (int i = 0; i <= 32; ++i) {
        EXPECT_EQ(_kvtGetBitsMask[i], uint32_t((uint64_t(1) << i) - 1)) << i;
        EXPECT_EQ(ownvBitMask[i], _kvtGetBitsMask[i]) << i;
    }
}
