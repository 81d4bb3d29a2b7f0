// SAD and squared-difference metrics: statuses, anchors, extremes, read bounds, SIMD twins.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "checkasm.h"
#include "kvtvc.h"
#include "me/sad_kernels.h"
#include "me/sqrdiff_kernels.h"
#include "metric_blocks.h"
#include "page_guard.h"

using namespace kvt::test;
using namespace metric_test;

namespace {

// Independent sums over a W x H block against the anchor prediction at `type`.
int64_t anchor_sad(const uint8_t* cur, int cs, const uint8_t* ref, int rs, int w, int h, int type) {
    int64_t s = 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) s += std::abs(cur[intptr_t(y) * cs + x] - anchor_pred(ref, rs, x, y, type));
    return s;
}

int64_t anchor_sqr(const uint8_t* cur, int cs, const uint8_t* f, int fs, int tf, const uint8_t* b, int bs, int tb) {
    int64_t s = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            int p = anchor_pred(f, fs, x, y, tf);
            if (b) p = (p + anchor_pred(b, bs, x, y, tb) + 1) / 2;
            const int64_t d = cur[intptr_t(y) * cs + x] - p;
            s += d * d;
        }
    return s;
}

// A current block (aligned one time in three, for the aligned twins) and two references.
struct Pair {
    Block<> cur, ref, ref2;
    Pair(Rng& rng, Pattern pc, Pattern pr)
        : cur(rng, 16, 16, pc, 0, 255, rng.uniform(0, 2) == 0), ref(rng, 17, 17, pr),
          ref2(rng, 17, 17, random_pattern(rng)) {}
    bool aligned() { return kvt::aligned16(cur.data(), cur.step()); }
};

}  // namespace

TEST(SadStatus, NullPointersAndWhatIsChecked) {
    uint8_t blk[17 * 17] = {};
    Kvt32s r = 77;
    Kvt16u r16[16] = {5};
    EXPECT_EQ(kvtiSAD16x16_8u32s(nullptr, 16, blk, 17, &r, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtiSAD16x16_8u32s(blk, 16, nullptr, 17, &r, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtiSAD8x8_8u32s_C1R(blk, 16, nullptr, 17, &r, 12), kvtStsNullPointer);
    EXPECT_EQ(kvtiSAD4x4_8u32s(blk, 16, blk, 17, nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiSAD4x4_8u32s(nullptr, 16, blk, 17, &r), kvtStsNullPointer);
    EXPECT_EQ(kvtiSAD16x16Blocks8x8_8u16u(blk, 16, blk, 17, nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiSAD16x16Blocks4x4_8u16u(blk, 16, nullptr, 17, r16), kvtStsNullPointer);
    EXPECT_EQ(kvtiSqrDiff16x16_8u32s(blk, 16, blk, 17, 0, nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiSqrDiff16x16B_8u32s(blk, 16, blk, 17, 0, nullptr, 17, 0, &r), kvtStsNullPointer);
    EXPECT_EQ(kvtiSqrDiff16x16B_8u32s(blk, 16, blk, 17, 0, blk, 17, 0, nullptr), kvtStsNullPointer);
    EXPECT_EQ(r, 77);
    EXPECT_EQ(r16[0], 5);
}

// The 16x16 and 8x8 SADs do not check the result pointer: the call goes on and stores through it.
TEST(SadStatusDeathTest, ResultPointerIsNotChecked) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    uint8_t blk[17 * 17] = {};
    EXPECT_DEATH(kvtiSAD16x16_8u32s(blk, 17, blk, 17, nullptr, 0), "");
    EXPECT_DEATH(kvtiSAD8x8_8u32s_C1R(blk, 17, blk, 17, nullptr, 0), "");
}

// All four phases, every member, against the independent anchor on random and extreme blocks.
TEST(SadModel, EveryPhaseMatchesAnchor) {
    Rng rng(21);
    for (int trial = 0; trial < 120; ++trial) {
        Pair b(rng, random_pattern(rng), random_pattern(rng));
        const uint8_t *c = b.cur.data(), *r = b.ref.data();
        const int cs = b.cur.step(), rs = b.ref.step();
        for (int type : kPhaseTypes) {
            Kvt32s s16 = -1, s8 = -1, sq = -1;
            ASSERT_EQ(kvtiSAD16x16_8u32s(c, cs, r, rs, &s16, type), kvtStsOk);
            ASSERT_EQ(kvtiSAD8x8_8u32s_C1R(c, cs, r, rs, &s8, type), kvtStsOk);
            ASSERT_EQ(kvtiSqrDiff16x16_8u32s(c, cs, r, rs, type, &sq), kvtStsOk);
            EXPECT_EQ(s16, anchor_sad(c, cs, r, rs, 16, 16, type)) << "type " << type << " trial " << trial;
            EXPECT_EQ(s8, anchor_sad(c, cs, r, rs, 8, 8, type)) << "type " << type << " trial " << trial;
            EXPECT_EQ(sq, anchor_sqr(c, cs, r, rs, type, nullptr, 0, 0)) << "type " << type << " trial " << trial;
            for (int tb : kPhaseTypes) {
                ASSERT_EQ(kvtiSqrDiff16x16B_8u32s(c, cs, r, rs, type, b.ref2.data(), b.ref2.step(), tb, &sq), kvtStsOk);
                EXPECT_EQ(sq, anchor_sqr(c, cs, r, rs, type, b.ref2.data(), b.ref2.step(), tb)) << type << "/" << tb;
            }
        }
        Kvt32s s4 = -1;
        ASSERT_EQ(kvtiSAD4x4_8u32s(c, cs, r, rs, &s4), kvtStsOk);
        EXPECT_EQ(s4, anchor_sad(c, cs, r, rs, 4, 4, 0));
    }
}

// Types beyond the four codes: the 8x8 SAD takes any other value as both halves, the 16x16 SAD
// uses the phase bits (this library's choice), the bidirectional squared difference its bits 8
// and 4, and the single squared difference succeeds without writing.
TEST(SadModel, OtherTypeValues) {
    Rng rng(5);
    Pair b(rng, kRandom, kRandom);
    const uint8_t *c = b.cur.data(), *r = b.ref.data(), *r2 = b.ref2.data();
    const int cs = b.cur.step(), rs = b.ref.step(), rs2 = b.ref2.step();
    for (int type : {1, 2, 3, 5, 6, 9, 13, 15, 16, 20, 28, -1, -4, -8, 0x40000008}) {
        Kvt32s s = -1;
        ASSERT_EQ(kvtiSAD8x8_8u32s_C1R(c, cs, r, rs, &s, type), kvtStsOk);
        EXPECT_EQ(s, anchor_sad(c, cs, r, rs, 8, 8, 12)) << type;
        ASSERT_EQ(kvtiSAD16x16_8u32s(c, cs, r, rs, &s, type), kvtStsOk);
        EXPECT_EQ(s, anchor_sad(c, cs, r, rs, 16, 16, type & 12)) << type;
        ASSERT_EQ(kvtiSqrDiff16x16B_8u32s(c, cs, r, rs, type, r2, rs2, ~type, &s), kvtStsOk);
        EXPECT_EQ(s, anchor_sqr(c, cs, r, rs, type & 12, r2, rs2, ~type & 12)) << type;
        s = -123;
        EXPECT_EQ(kvtiSqrDiff16x16_8u32s(c, cs, r, rs, type, &s), kvtStsOk);
        EXPECT_EQ(s, -123) << type;
    }
}

// Forward 10 and backward 11 at the integer position: the bidirectional prediction rounds up to 11.
TEST(SqrDiff, BidirectionalAverageRoundsUp) {
    uint8_t cur[16 * 16], f[17 * 17], b[17 * 17];
    std::fill(cur, cur + 256, 10);
    std::fill(f, f + 289, 10);
    std::fill(b, b + 289, 11);
    Kvt32s s = -1;
    ASSERT_EQ(kvtiSqrDiff16x16B_8u32s(cur, 16, f, 17, 0, b, 17, 0, &s), kvtStsOk);
    EXPECT_EQ(s, 256);
}

// All 255 against all 0 is the largest sum each member can reach, in every phase.
TEST(SadModel, LargestSumsDoNotOverflow) {
    uint8_t zero[17 * 17] = {}, full[17 * 17];
    std::fill(full, full + 289, 255);
    for (int type : kPhaseTypes) {
        Kvt32s s16 = -1, s8 = -1, sq = -1;
        ASSERT_EQ(kvtiSAD16x16_8u32s(full, 17, zero, 17, &s16, type), kvtStsOk);
        ASSERT_EQ(kvtiSAD8x8_8u32s_C1R(zero, 17, full, 17, &s8, type), kvtStsOk);
        ASSERT_EQ(kvtiSqrDiff16x16B_8u32s(full, 17, zero, 17, type, zero, 17, 12 - type, &sq), kvtStsOk);
        EXPECT_TRUE(s16 == 65280 && s8 == 16320 && sq == 256 * 65025) << type;
    }
    Kvt16u q[4], b4[16];
    ASSERT_EQ(kvtiSAD16x16Blocks8x8_8u16u(full, 17, zero, 17, q), kvtStsOk);
    ASSERT_EQ(kvtiSAD16x16Blocks4x4_8u16u(zero, 17, full, 17, b4), kvtStsOk);
    EXPECT_TRUE(std::all_of(q, q + 4, [](Kvt16u v) { return v == 16320; }));
    EXPECT_TRUE(std::all_of(b4, b4 + 16, [](Kvt16u v) { return v == 4080; }));
}

// Sub-block SADs land in raster order: each equals the SAD of its own sub-block.
TEST(SadModel, SubBlockOrder) {
    Rng rng(8);
    for (int trial = 0; trial < 40; ++trial) {
        Pair b(rng, random_pattern(rng), random_pattern(rng));
        const uint8_t *c = b.cur.data(), *r = b.ref.data();
        const int cs = b.cur.step(), rs = b.ref.step();
        Kvt16u q[4], s4[16];
        ASSERT_EQ(kvtiSAD16x16Blocks8x8_8u16u(c, cs, r, rs, q), kvtStsOk);
        ASSERT_EQ(kvtiSAD16x16Blocks4x4_8u16u(c, cs, r, rs, s4), kvtStsOk);
        for (int k = 0; k < 4; ++k) {
            const intptr_t oc = intptr_t(k >> 1) * 8 * cs + (k & 1) * 8, orr = intptr_t(k >> 1) * 8 * rs + (k & 1) * 8;
            EXPECT_EQ(q[k], anchor_sad(c + oc, cs, r + orr, rs, 8, 8, 0)) << k;
        }
        for (int k = 0; k < 16; ++k) {
            const intptr_t oc = intptr_t(k >> 2) * 4 * cs + (k & 3) * 4, orr = intptr_t(k >> 2) * 4 * rs + (k & 3) * 4;
            EXPECT_EQ(s4[k], anchor_sad(c + oc, cs, r + orr, rs, 4, 4, 0)) << k;
        }
    }
}

// Each phase reads the block plus exactly the column and row its half steps need: the last
// sample it may read is the last byte before an inaccessible page.
TEST(SadBounds, ReadsOnlyWhatThePhaseNeeds) {
    Rng rng(3);
    for (int type : kPhaseTypes) {
        const int cols = 16 + (type & 8 ? 1 : 0), rows = 16 + (type & 4 ? 1 : 0);
        for (int size : {16, 8}) {
            const int rc = size + (cols - 16), rr = size + (rows - 16);
            PageGuarded cbuf(4096), rbuf(4096);
            const uint8_t* c = guarded_block(cbuf, size, size, 40, rng);
            const uint8_t* r = guarded_block(rbuf, rc, rr, 33, rng);
            Kvt32s s = -1;
            if (size == 16) {
                ASSERT_EQ(kvtiSAD16x16_8u32s(c, 40, r, 33, &s, type), kvtStsOk);
                EXPECT_EQ(s, anchor_sad(c, 40, r, 33, 16, 16, type));
                ASSERT_EQ(kvtiSqrDiff16x16_8u32s(c, 40, r, 33, type, &s), kvtStsOk);
                ASSERT_EQ(kvtiSqrDiff16x16B_8u32s(c, 40, r, 33, type, r, 33, type, &s), kvtStsOk);
            } else {
                ASSERT_EQ(kvtiSAD8x8_8u32s_C1R(c, 40, r, 33, &s, type), kvtStsOk);
                EXPECT_EQ(s, anchor_sad(c, 40, r, 33, 8, 8, type));
            }
        }
    }
    PageGuarded cbuf(4096), rbuf(4096);
    const uint8_t* c = guarded_block(cbuf, 16, 16, 16, rng);
    const uint8_t* r = guarded_block(rbuf, 16, 16, 20, rng);
    Kvt16u out[16];
    Kvt32s s;
    EXPECT_EQ(kvtiSAD16x16Blocks8x8_8u16u(c, 16, r, 20, out), kvtStsOk);
    EXPECT_EQ(kvtiSAD16x16Blocks4x4_8u16u(c, 16, r, 20, out), kvtStsOk);
    EXPECT_EQ(kvtiSAD4x4_8u32s(c + 12 * 16 + 12, 16, r + 12 * 20 + 12, 20, &s), kvtStsOk);
}

// ---- Reference against SIMD ------------------------------------------------------------------

TEST(SadSimd, MatchesReference) {
    using namespace kvt;
    compare_kernels("sad", 400, [](Rng& rng, Impl impl, Outputs& out) {
        Pair b(rng, random_pattern(rng), random_pattern(rng));
        const uint8_t *c = b.cur.data(), *r = b.ref.data(), *r2 = b.ref2.data();
        const int cs = b.cur.step(), rs = b.ref.step(), rs2 = b.ref2.step();
        int32_t s = 0;
        for (int type : kPhaseTypes)
            with_phase(type, [&](auto phase) {
                constexpr int t = decltype(phase)::value;
                KVT_PICK_T(impl, sad_16x16, t)(c, cs, r, rs, &s);
                out.add("sad16x16", s);
                KVT_PICK_T(impl, sad_8x8, t)(c, cs, r, rs, &s);
                out.add("sad8x8", s);
                KVT_PICK_T(impl, sqrdiff_16x16, t)(c, cs, r, rs, &s);
                out.add("sqrdiff", s);
                if (b.aligned()) {
                    KVT_PICK_A16_T(impl, sad_16x16, t)(c, cs, r, rs, &s);
                    out.add("sad16x16 aligned", s);
                    KVT_PICK_A16_T(impl, sqrdiff_16x16, t)(c, cs, r, rs, &s);
                    out.add("sqrdiff aligned", s);
                }
                for (int tb : kPhaseTypes)
                    with_phase(tb, [&](auto bwd) {
                        KVT_PICK_T(impl, sqrdiff_16x16b, t, decltype(bwd)::value)(c, cs, r, rs, r2, rs2, &s);
                        out.add("sqrdiff_b", s);
                        if (!b.aligned()) return;
                        KVT_PICK_A16_T(impl, sqrdiff_16x16b, t, decltype(bwd)::value)(c, cs, r, rs, r2, rs2, &s);
                        out.add("sqrdiff_b aligned", s);
                    });
            });
        KVT_PICK(impl, sad_4x4)(c, cs, r, rs, &s);
        out.add("sad4x4", s);
        Kvt16u q[4 + 2], s4[16 + 2];  // one guard entry on each side
        q[0] = q[5] = s4[0] = s4[17] = 0xBEEF;
        KVT_PICK(impl, sad_16x16_blocks8x8)(c, cs, r, rs, q + 1);
        KVT_PICK(impl, sad_16x16_blocks4x4)(c, cs, r, rs, s4 + 1);
        out.add("blocks8x8", q);
        out.add("blocks4x4", s4);
    });
}
