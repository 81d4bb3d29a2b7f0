// Variances, means, mean absolute deviation and the edge detector: statuses, edge cases,
// independent anchors, read bounds and SIMD twins.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "checkasm.h"
#include "kvtvc.h"
#include "me/edges_kernels.h"
#include "me/variance_kernels.h"
#include "metric_blocks.h"
#include "page_guard.h"

using namespace kvt::test;
using namespace metric_test;

namespace {

struct Quarter {
    int64_t p = 0, q = 0;  // prediction sum, sum of squared residuals
};

// Anchor of VarMeanDiff: 64-bit sums, then the finishing formula, written out separately.
void anchor_varmeandiff(const uint8_t* c, int cs, const uint8_t* r, int rs, int h, int type, const int32_t* sums,
                        int32_t* var, int32_t* mean) {
    for (int k = 0; k < h / 4; ++k) {
        Quarter s;
        for (int y = (k >> 1) * 8; y < (k >> 1) * 8 + 8; ++y)
            for (int x = (k & 1) * 8; x < (k & 1) * 8 + 8; ++x) {
                const int p = anchor_pred(r, rs, x, y, type), d = c[intptr_t(y) * cs + x] - p;
                s.p += p;
                s.q += d * d;
            }
        const int64_t m = (sums[k] - s.p) / 8;  // C++ division truncates toward zero
        const int64_t big_m = m * m + (h == 16 && m < 0 ? 1 : 0);
        mean[k] = int32_t(m);
        var[k] = s.q > big_m ? int32_t((s.q - big_m) >> 6) : 0;
    }
}

// Anchor of the 16-bit VarMean: saturating column sums in row order.
void anchor_varmean16(const int16_t* src, int step, int32_t* var, int32_t* mean) {
    int64_t s = 0;
    uint32_t q = 0;
    for (int x = 0; x < 8; ++x) {
        int col = 0;
        for (int y = 0; y < 8; ++y) {
            const int v = reinterpret_cast<const int16_t*>(reinterpret_cast<const uint8_t*>(src) + intptr_t(y) * step)[x];
            col = std::clamp(col + v, -32768, 32767);
            q += uint32_t(int64_t(v) * v);
        }
        s += col;
    }
    const int64_t m = s / 8;
    *mean = int32_t(s);
    *var = int32_t(uint32_t(q - uint32_t(m * m + (m < 0))) >> 6);
}

// Anchor of the edge detector with the count test spelled out modulo 256.
uint8_t anchor_edges(const uint8_t* src, int step, int t, int n) {
    const int st = t >= 128 ? t - 256 : t;
    int k = 0;
    for (int r = 0; r < 15; ++r) {
        for (int i = 0; i < 15; ++i) {
            const uint8_t* p = src + intptr_t(r) * step + i;
            const int h = std::min(std::abs(p[0] - p[1]), 127), v = std::min(std::abs(p[0] - p[step]), 127);
            k += (h > st || v > st);
        }
        if ((256 - k % 256) % 256 < (256 - n) % 256) return 1;
    }
    return 0;
}

}  // namespace

TEST(VarianceStatus, NullPointersAndUnknownTypes) {
    uint8_t b[17 * 17] = {};
    int16_t w[64] = {};
    Kvt32s v[4] = {7, 7, 7, 7}, m[4] = {7, 7, 7, 7}, sums[4] = {};
    Kvt8u flag = 9;
    EXPECT_EQ(kvtiVariance16x16_8u32s(b, 16, nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiVarMean8x8_8u32s_C1R(b, 16, nullptr, m), kvtStsNullPointer);
    EXPECT_EQ(kvtiVarMean8x8_16s32s_C1R(w, 16, v, nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiMeanAbsDev16x16_8u32s_C1R(nullptr, 16, v), kvtStsNullPointer);
    EXPECT_EQ(kvtiEdgesDetect16x16_8u_C1R(b, 16, 1, 1, nullptr), kvtStsNullPointer);
    for (auto fn : {kvtiVarMeanDiff16x16_8u32s_C1R, kvtiVarMeanDiff16x8_8u32s_C1R}) {
        EXPECT_EQ(fn(b, 16, nullptr, 17, sums, v, m, 0), kvtStsNullPointer);
        EXPECT_EQ(fn(b, 16, b, 17, nullptr, v, m, 0), kvtStsNullPointer);
        EXPECT_EQ(fn(b, 16, b, 17, sums, nullptr, m, 3), kvtStsNullPointer);  // pointers before the type
        for (int type : {2, 1, 16, -12, 13}) EXPECT_EQ(fn(b, 17, b, 17, sums, v, m, type), kvtStsOk);  // no write
    }
    EXPECT_EQ(flag, 9);
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(v[i] == 7 && m[i] == 7);
}

TEST(VarianceStatusDeathTest, MeanAbsDevResultPointerIsNotChecked) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    uint8_t b[16 * 16] = {};
    EXPECT_DEATH(kvtiMeanAbsDev16x16_8u32s_C1R(b, 16, nullptr), "");
}

// Variance16x16 takes S * S unsigned: all 255 gives S^2 = 4261478400, beyond int32.
TEST(Variance, FlatBlocksAndUnsignedSquare) {
    uint8_t b[16 * 16];
    Kvt32s v = -1, m = -1;
    std::fill(b, b + 256, 255);
    ASSERT_EQ(kvtiVariance16x16_8u32s(b, 16, &v), kvtStsOk);
    EXPECT_EQ(v, 0);
    for (int i = 0; i < 256; ++i) b[i] = i < 128 ? 0 : 255;
    ASSERT_EQ(kvtiVariance16x16_8u32s(b, 16, &v), kvtStsOk);
    EXPECT_EQ(v, 128 * 65025 - 32640 * 32640 / 256);
    std::fill(b, b + 64, 200);
    ASSERT_EQ(kvtiVarMean8x8_8u32s_C1R(b, 8, &v, &m), kvtStsOk);
    EXPECT_EQ(m, 12800);  // the sum, not divided
    EXPECT_EQ(v, 0);
}

TEST(Variance, RandomBlocksMatchAnchor) {
    Rng rng(31);
    for (int trial = 0; trial < 150; ++trial) {
        Block<> b(rng, 16, 16, random_pattern(rng));
        int64_t s = 0, q = 0, s8 = 0, q8 = 0;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) {
                const int v = b.plane.row(y)[x];
                s += v;
                q += v * v;
                if (x < 8 && y < 8) s8 += v, q8 += v * v;
            }
        int64_t mad = 0;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) mad += std::abs(b.plane.row(y)[x] - (s + 128) / 256);
        Kvt32s v = -1, m = -1;
        ASSERT_EQ(kvtiVariance16x16_8u32s(b.data(), b.step(), &v), kvtStsOk);
        EXPECT_EQ(v, q - s * s / 256);
        ASSERT_EQ(kvtiVarMean8x8_8u32s_C1R(b.data(), b.step(), &v, &m), kvtStsOk);
        EXPECT_EQ(m, s8);
        EXPECT_EQ(v, (q8 - (s8 / 8) * (s8 / 8)) / 64);
        ASSERT_EQ(kvtiMeanAbsDev16x16_8u32s_C1R(b.data(), b.step(), &v), kvtStsOk);
        EXPECT_EQ(v, mad);
    }
}

// Columns saturate as they are summed, in row order; a negative mean squares to m^2 + 1 and the
// result is not clamped at zero.
TEST(VarMean16s, SaturatingColumnsAndNegativeMean) {
    int16_t b[64];
    Kvt32s v = -1, m = -1;
    std::fill(b, b + 64, int16_t(-1));  // S = -64, m = -8, M = 65 > Q = 64
    ASSERT_EQ(kvtiVarMean8x8_16s32s_C1R(b, 16, &v, &m), kvtStsOk);
    EXPECT_EQ(m, -64);
    EXPECT_EQ(uint32_t(v), 0xFFFFFFFFu >> 6);
    for (int i = 0; i < 64; ++i) b[i] = int16_t(i < 16 ? 30000 : (i < 24 ? -30000 : 0));  // rows 0, 1 up, row 2 down
    ASSERT_EQ(kvtiVarMean8x8_16s32s_C1R(b, 16, &v, &m), kvtStsOk);
    EXPECT_EQ(m, 8 * (32767 - 30000));
    int32_t av, am;
    anchor_varmean16(b, 16, &av, &am);
    EXPECT_EQ(v, av);
    std::fill(b, b + 64, int16_t(-32768));  // squares wrap 64 * 2^30 = 0 mod 2^32
    ASSERT_EQ(kvtiVarMean8x8_16s32s_C1R(b, 16, &v, &m), kvtStsOk);
    EXPECT_EQ(m, -8 * 32768);
    EXPECT_EQ(uint32_t(v), uint32_t(0u - (uint32_t(32768) * 32768 + 1)) >> 6);
}

TEST(VarMean16s, RandomBlocksMatchAnchor) {
    Rng rng(41);
    for (int trial = 0; trial < 200; ++trial) {
        const int range = trial % 3 == 0 ? 300 : 32768;
        Block<int16_t> b(rng, 8, 8, random_pattern(rng), -range, range - 1);
        int32_t v = -1, m = -1, av, am;
        ASSERT_EQ(kvtiVarMean8x8_16s32s_C1R(b.data(), b.step(), &v, &m), kvtStsOk);
        anchor_varmean16(b.data(), b.step(), &av, &am);
        EXPECT_EQ(v, av) << trial;
        EXPECT_EQ(m, am) << trial;
    }
}

// d = -8 gives mean -1: the 16x16 form subtracts 2, the 16x8 form 1. With Q = 65 that is the
// difference between variance 0 and variance 1.
TEST(VarMeanDiff, NegativeMeanDiffersBetweenTheTwoSizes) {
    uint8_t cur[16 * 16], ref[17 * 17];
    std::fill(ref, ref + 289, 100);
    std::fill(cur, cur + 256, 100);
    cur[0] = 108;  // squares 64 + 1 in the top-left quarter
    cur[1] = 101;
    const Kvt32s sums[4] = {6400 - 8, 6400 - 8, 6400 - 8, 6400 - 8};
    Kvt32s v[4], m[4];
    ASSERT_EQ(kvtiVarMeanDiff16x16_8u32s_C1R(cur, 16, ref, 17, sums, v, m, 0), kvtStsOk);
    EXPECT_EQ(m[0], -1);
    EXPECT_EQ(v[0], 0);  // (65 - 2) >> 6
    EXPECT_EQ(v[1], 0);  // Q = 0 is not above M
    ASSERT_EQ(kvtiVarMeanDiff16x8_8u32s_C1R(cur, 16, ref, 17, sums, v, m, 0), kvtStsOk);
    EXPECT_EQ(m[0], -1);
    EXPECT_EQ(v[0], 1);  // (65 - 1) >> 6
}

TEST(VarMeanDiff, EveryPhaseMatchesAnchor) {
    Rng rng(51);
    for (int trial = 0; trial < 100; ++trial) {
        Block<> cur(rng, 16, 16, random_pattern(rng)), ref(rng, 17, 17, random_pattern(rng));
        for (int type : kPhaseTypes)
            for (int h : {16, 8}) {
                int32_t sums[4];
                for (int32_t& s : sums) s = rng.uniform(0, 16320);
                int32_t v[4] = {}, m[4] = {}, av[4] = {}, am[4] = {};
                auto fn = h == 16 ? kvtiVarMeanDiff16x16_8u32s_C1R : kvtiVarMeanDiff16x8_8u32s_C1R;
                ASSERT_EQ(fn(cur.data(), cur.step(), ref.data(), ref.step(), sums, v, m, type), kvtStsOk);
                anchor_varmeandiff(cur.data(), cur.step(), ref.data(), ref.step(), h, type, sums, av, am);
                for (int k = 0; k < h / 4; ++k) {
                    EXPECT_EQ(v[k], av[k]) << "type " << type << " h " << h << " k " << k;
                    EXPECT_EQ(m[k], am[k]) << "type " << type << " h " << h << " k " << k;
                }
            }
    }
}

// A flat block has no flagged position: with K = 0 the wrap-around test passes for any
// non-zero count threshold, and no count passes a threshold of 0.
TEST(Edges, WrapAroundCountComparison) {
    uint8_t b[16 * 16];
    std::fill(b, b + 256, 77);
    const struct {
        int t, n, flag;
    } cases[] = {
        {0, 1, 1}, {0, 255, 1}, {0, 0, 0}, {255, 0, 0},  // K = 0 passes every N but 0
        {200, 20, 1},                                    // T >= 128 flags all: K = 30 > 20 after row 1
        {128, 225, 0}, {128, 224, 1},                    // K stops at 15 * 15 = 225
    };
    for (const auto& c : cases) {
        Kvt8u flag = 9;
        ASSERT_EQ(kvtiEdgesDetect16x16_8u_C1R(b, 16, Kvt8u(c.t), Kvt8u(c.n), &flag), kvtStsOk);
        EXPECT_EQ(flag, c.flag) << "t " << c.t << " n " << c.n;
    }
}

// Differences clamp at 127 before the signed compare: 255 against 0 is flagged above 126.
TEST(Edges, DifferencesClampBeforeTheSignedCompare) {
    uint8_t b[16 * 16];
    for (int i = 0; i < 256; ++i) b[i] = (i & 1) ? 255 : 0;  // every h difference is 255
    Kvt8u flag = 9;
    ASSERT_EQ(kvtiEdgesDetect16x16_8u_C1R(b, 16, 126, 224, &flag), kvtStsOk);  // 225 flagged
    EXPECT_EQ(flag, 1);
    ASSERT_EQ(kvtiEdgesDetect16x16_8u_C1R(b, 16, 127, 1, &flag), kvtStsOk);  // none flagged, K = 0 passes
    EXPECT_EQ(flag, 1);
    ASSERT_EQ(kvtiEdgesDetect16x16_8u_C1R(b, 16, 127, 0, &flag), kvtStsOk);
    EXPECT_EQ(flag, 0);
}

TEST(Edges, RandomBlocksMatchAnchor) {
    Rng rng(61);
    for (int trial = 0; trial < 400; ++trial) {
        Block<> b(rng, 16, 16, random_pattern(rng));
        const int t = rng.coin() ? rng.uniform(0, 40) : rng.uniform(0, 255), n = rng.uniform(0, 255);
        Kvt8u flag = 9;
        ASSERT_EQ(kvtiEdgesDetect16x16_8u_C1R(b.data(), b.step(), Kvt8u(t), Kvt8u(n), &flag), kvtStsOk);
        EXPECT_EQ(flag, anchor_edges(b.data(), b.step(), t, n)) << "t " << t << " n " << n;
    }
}

// Each function reads its block and, for the half steps, exactly one more column and row.
TEST(VarianceBounds, ReadsOnlyTheBlock) {
    Rng rng(2);
    PageGuarded a(4096), c(4096);
    Kvt32s v[4], m[4];
    const Kvt32s sums[4] = {};
    Kvt8u flag;
    const uint8_t* blk16 = guarded_block(a, 16, 16, 24, rng);
    EXPECT_EQ(kvtiVariance16x16_8u32s(blk16, 24, v), kvtStsOk);
    EXPECT_EQ(kvtiMeanAbsDev16x16_8u32s_C1R(blk16, 24, v), kvtStsOk);
    EXPECT_EQ(kvtiEdgesDetect16x16_8u_C1R(blk16, 24, 255, 0, &flag), kvtStsOk);  // visits every row
    EXPECT_EQ(kvtiVarMean8x8_8u32s_C1R(guarded_block(a, 8, 8, 9, rng), 9, v, m), kvtStsOk);
    EXPECT_EQ(kvtiVarMean8x8_16s32s_C1R(reinterpret_cast<const int16_t*>(guarded_block(a, 16, 8, 18, rng)), 18, v, m),
              kvtStsOk);
    for (int type : kPhaseTypes)
        for (int h : {16, 8}) {
            const uint8_t* cur = guarded_block(c, 16, h, 16, rng);
            const uint8_t* ref = guarded_block(a, 16 + (type & 8 ? 1 : 0), h + (type & 4 ? 1 : 0), 20, rng);
            auto fn = h == 16 ? kvtiVarMeanDiff16x16_8u32s_C1R : kvtiVarMeanDiff16x8_8u32s_C1R;
            EXPECT_EQ(fn(cur, 16, ref, 20, sums, v, m, type), kvtStsOk);
        }
}

// ---- Reference against SIMD ------------------------------------------------------------------

TEST(VarianceSimd, MatchesReference) {
    using namespace kvt;
    compare_kernels("variance", 400, [](Rng& rng, Impl impl, Outputs& out) {
        const bool aligned = rng.uniform(0, 2) == 0;
        Block<> cur(rng, 16, 16, random_pattern(rng), 0, 255, aligned), ref(rng, 17, 17, random_pattern(rng));
        const uint8_t *c = cur.data(), *r = ref.data();
        const int cs = cur.step(), rs = ref.step();
        int32_t v[4] = {}, m[4] = {};
        KVT_PICK(impl, variance_16x16)(c, cs, v);
        if (aligned) KVT_PICK_A16(impl, variance_16x16)(c, cs, v + 1);
        KVT_PICK(impl, mean_abs_dev_16x16)(c, cs, v + 2);
        out.add("variance16x16 (aligned), mad16x16", v, 3 * sizeof(int32_t));
        KVT_PICK(impl, varmean_8x8_8u)(c, cs, v, m);
        out.add("varmean8u", v[0]);
        out.add("mean8u", m[0]);
        Block<int16_t> w(rng, 8, 8, random_pattern(rng), rng.coin() ? -32768 : -200, rng.coin() ? 32767 : 200);
        KVT_PICK(impl, varmean_8x8_16s)(w.data(), w.step(), v, m);
        out.add("varmean16s", v[0]);
        out.add("mean16s", m[0]);
        int32_t sums[4];
        for (int32_t& s : sums) s = rng.coin() ? rng.uniform(0, 16320) : int32_t(rng.next());
        for (int type : kPhaseTypes)
            with_phase(type, [&](auto phase) {
                constexpr int t = decltype(phase)::value;
                std::fill(v, v + 4, -7);  // the 16x8 form writes two entries
                std::fill(m, m + 4, -7);
                KVT_PICK_T(impl, varmeandiff_16x16, t)(c, cs, r, rs, sums, v, m);
                out.add("varmeandiff16x16", v);
                out.add("meandiff16x16", m);
                KVT_PICK_T(impl, varmeandiff_16x8, t)(c, cs, r, rs, sums, v, m);
                out.add("varmeandiff16x8", v);
                out.add("meandiff16x8", m);
            });
        const uint8_t t = uint8_t(rng.coin() ? rng.uniform(0, 40) : rng.uniform(0, 255));
        uint8_t flag = 9;
        KVT_PICK(impl, edges_16x16)(c, cs, t, uint8_t(rng.next()), &flag);
        out.add("edges", flag);
    });
}
