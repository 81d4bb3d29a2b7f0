// SAD and squared-difference metrics: null pointers of every block metric, anchor model, SIMD twins.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "kvtvc.h"
#include "me/sad_kernels.h"
#include "me/sqrdiff_kernels.h"
#include "metric_blocks.h"

using namespace kvt::test;
using namespace metric_test;

namespace {

// Sum over a w x w block of |d|, or d^2 with `sq`, against the prediction from f at type tf; with
// b, against the average of both predictions rounded up.
int64_t anchor(const uint8_t* c, int cs, const uint8_t* f, int fs, int tf, int w, bool sq,
               const uint8_t* b = nullptr, int bs = 0, int tb = 0) {
    int64_t s = 0;
    for (int y = 0; y < w; ++y)
        for (int x = 0; x < w; ++x) {
            int p = anchor_pred(f, fs, x, y, tf);
            if (b) p = (p + anchor_pred(b, bs, x, y, tb) + 1) / 2;
            const int64_t d = c[intptr_t(y) * cs + x] - p;
            s += sq ? d * d : std::abs(d);
        }
    return s;
}

// A current block (aligned one time in three, for the aligned twins) and two references.
struct Pair {
    Block<> cur, ref, ref2;
    Pair(Rng& rng, Pattern pc, Pattern pr)
        : cur(rng, 16, 16, pc, 0, 255, rng.uniform(0, 2) == 0), ref(rng, 17, 17, pr),
          ref2(rng, 17, 17, any_pattern(rng)) {}
    bool aligned() { return kvt::aligned16(cur.data(), cur.step()); }
};

}  // namespace

// Every block metric: each pointer it checks gives -NullPointer and leaves the outputs alone;
// VarMeanDiff checks its pointers before the type.
TEST(MetricStatus, NullPointers) {
    static uint8_t b[17 * 17];
    static int16_t w[64];
    static Kvt32s r[4] = {7, 7, 7, 7}, sums[4];
    static Kvt16u r16[16] = {5};
    KvtStatus (*const calls[])() = {
        [] { return kvtiSAD16x16_8u32s(nullptr, 16, b, 17, r, 0); },
        [] { return kvtiSAD16x16_8u32s(b, 16, nullptr, 17, r, 0); },
        [] { return kvtiSAD8x8_8u32s_C1R(b, 16, nullptr, 17, r, 12); },
        [] { return kvtiSAD4x4_8u32s(nullptr, 16, b, 17, r); },
        [] { return kvtiSAD4x4_8u32s(b, 16, b, 17, nullptr); },
        [] { return kvtiSAD16x16Blocks8x8_8u16u(b, 16, b, 17, nullptr); },
        [] { return kvtiSAD16x16Blocks4x4_8u16u(b, 16, nullptr, 17, r16); },
        [] { return kvtiSqrDiff16x16_8u32s(b, 16, b, 17, 0, nullptr); },
        [] { return kvtiSqrDiff16x16B_8u32s(b, 16, b, 17, 0, nullptr, 17, 0, r); },
        [] { return kvtiSqrDiff16x16B_8u32s(b, 16, b, 17, 0, b, 17, 0, nullptr); },
        [] { return kvtiVariance16x16_8u32s(b, 16, nullptr); },
        [] { return kvtiVarMean8x8_8u32s_C1R(b, 16, nullptr, r); },
        [] { return kvtiVarMean8x8_16s32s_C1R(w, 16, r, nullptr); },
        [] { return kvtiMeanAbsDev16x16_8u32s_C1R(nullptr, 16, r); },
        [] { return kvtiEdgesDetect16x16_8u_C1R(b, 16, 1, 1, nullptr); },
        [] { return kvtiVarMeanDiff16x16_8u32s_C1R(b, 16, nullptr, 17, sums, r, r, 0); },
        [] { return kvtiVarMeanDiff16x16_8u32s_C1R(b, 16, b, 17, nullptr, r, r, 0); },
        [] { return kvtiVarMeanDiff16x8_8u32s_C1R(b, 16, b, 17, sums, nullptr, r, 3); },
        [] { return kvtiVarMeanDiff16x8_8u32s_C1R(b, 16, b, 17, sums, r, nullptr, 0); },
    };
    for (size_t i = 0; i < std::size(calls); ++i) EXPECT_EQ(calls[i](), kvtStsNullPointer) << "call " << i;
    EXPECT_TRUE(std::all_of(r, r + 4, [](Kvt32s v) { return v == 7; }) && r16[0] == 5);
}

// Every member against the anchor in the four phases and in other type values: the 8x8 SAD takes
// them as both halves, the 16x16 SAD and the bidirectional form use bits 8 and 4, and the single
// squared difference returns 0 without writing. Trials 0..35 pair every two patterns (all 255
// against all 0 gives the largest sums).
TEST(SadModel, EveryMemberMatchesAnchor) {
    Rng rng(21);
    for (int trial = 0; trial < 100; ++trial) {
        const bool fixed = trial < 36;
        const Pattern pc = fixed ? Pattern(trial % 6) : any_pattern(rng);
        Pair b(rng, pc, fixed ? Pattern(trial / 6) : any_pattern(rng));
        const uint8_t *c = b.cur.data(), *r = b.ref.data(), *r2 = b.ref2.data();
        const int cs = b.cur.step(), rs = b.ref.step(), rs2 = b.ref2.step();
        for (int type : {0, 4, 8, 12, 1, 6, 13, 20, -4, 0x40000008}) {
            const int t = type & 12;
            const bool code = type == t;
            Kvt32s s16 = -1, s8 = -1, sq = -123;
            ASSERT_EQ(kvtiSAD16x16_8u32s(c, cs, r, rs, &s16, type), kvtStsOk);
            ASSERT_EQ(kvtiSAD8x8_8u32s_C1R(c, cs, r, rs, &s8, type), kvtStsOk);
            ASSERT_EQ(kvtiSqrDiff16x16_8u32s(c, cs, r, rs, type, &sq), kvtStsOk);
            EXPECT_EQ(s16, anchor(c, cs, r, rs, t, 16, false)) << type << " " << trial;
            EXPECT_EQ(s8, anchor(c, cs, r, rs, code && t < 12 ? t : 12, 8, false)) << type << " " << trial;
            EXPECT_EQ(sq, code ? anchor(c, cs, r, rs, t, 16, true) : -123) << type << " " << trial;
            for (int tb : {0, 4, 8, 12, ~type}) {
                ASSERT_EQ(kvtiSqrDiff16x16B_8u32s(c, cs, r, rs, type, r2, rs2, tb, &sq), kvtStsOk);
                EXPECT_EQ(sq, anchor(c, cs, r, rs, t, 16, true, r2, rs2, tb & 12)) << type << "/" << tb;
            }
        }
        Kvt32s s4 = -1;
        Kvt16u q[4], s16[16];
        ASSERT_EQ(kvtiSAD4x4_8u32s(c, cs, r, rs, &s4), kvtStsOk);
        ASSERT_EQ(kvtiSAD16x16Blocks8x8_8u16u(c, cs, r, rs, q), kvtStsOk);
        ASSERT_EQ(kvtiSAD16x16Blocks4x4_8u16u(c, cs, r, rs, s16), kvtStsOk);
        EXPECT_EQ(s4, anchor(c, cs, r, rs, 0, 4, false));
        auto sub = [&](int size, int i) {  // sub-blocks in raster order
            const int y = i / (16 / size) * size, x = i % (16 / size) * size;
            return anchor(c + y * cs + x, cs, r + y * rs + x, rs, 0, size, false);
        };
        for (int k = 0; k < 16; ++k) EXPECT_EQ(s16[k], sub(4, k)) << k;
        for (int k = 0; k < 4; ++k) EXPECT_EQ(q[k], sub(8, k)) << k;
    }
}

// Forward 10 and backward 11 at the integer position: the bidirectional prediction rounds up to 11.
TEST(SadModel, BidirectionalAverageRoundsUp) {
    uint8_t cur[17 * 17], f[17 * 17], b[17 * 17];
    std::fill(cur, cur + 289, 10), std::fill(f, f + 289, 10), std::fill(b, b + 289, 11);
    Kvt32s s = -1;
    ASSERT_EQ(kvtiSqrDiff16x16B_8u32s(cur, 16, f, 17, 0, b, 17, 0, &s), kvtStsOk);
    EXPECT_EQ(s, 256);
}

TEST(SadSimd, MatchesReference) {
    using namespace kvt;
    compare_kernels("sad", 400, [](Rng& rng, Impl impl, Outputs& out) {
        Pair b(rng, any_pattern(rng), any_pattern(rng));
        const uint8_t *c = b.cur.data(), *r = b.ref.data(), *r2 = b.ref2.data();
        const int cs = b.cur.step(), rs = b.ref.step(), rs2 = b.ref2.step();
        const bool a = b.aligned();
        for (int type : kPhaseTypes)
            with_phase(type, [&](auto phase) {
                constexpr int t = decltype(phase)::value;
                int32_t s[5 + 8] = {};
                KVT_PICK_T(impl, sad_16x16, t)(c, cs, r, rs, s);
                KVT_PICK_T(impl, sad_8x8, t)(c, cs, r, rs, s + 1);
                KVT_PICK_T(impl, sqrdiff_16x16, t)(c, cs, r, rs, s + 2);
                if (a) KVT_PICK_A16_T(impl, sad_16x16, t)(c, cs, r, rs, s + 3);
                if (a) KVT_PICK_A16_T(impl, sqrdiff_16x16, t)(c, cs, r, rs, s + 4);
                for (int tb : kPhaseTypes)
                    with_phase(tb, [&](auto bwd) {
                        constexpr int u = decltype(bwd)::value;
                        int32_t* o = s + 5 + tb / 2;
                        KVT_PICK_T(impl, sqrdiff_16x16b, t, u)(c, cs, r, rs, r2, rs2, o);
                        if (a) KVT_PICK_A16_T(impl, sqrdiff_16x16b, t, u)(c, cs, r, rs, r2, rs2, o + 1);
                    });
                out.add("sad16x16, sad8x8, sqrdiff, aligned twins; sqrdiff_b (aligned) per backward type", s);
            });
        int32_t s4 = 0;
        KVT_PICK(impl, sad_4x4)(c, cs, r, rs, &s4);
        out.add("sad4x4", s4);
        Kvt16u q[4 + 2], s16[16 + 2];  // one guard entry on each side
        q[0] = q[5] = s16[0] = s16[17] = 0xBEEF;
        KVT_PICK(impl, sad_16x16_blocks8x8)(c, cs, r, rs, q + 1);
        KVT_PICK(impl, sad_16x16_blocks4x4)(c, cs, r, rs, s16 + 1);
        out.add("blocks8x8", q);
        out.add("blocks4x4", s16);
    });
}
