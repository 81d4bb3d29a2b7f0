// Variances, means, mean absolute deviation and the edge detector: edge cases, anchors, SIMD
// twins; and the read bounds of every block metric.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "kvtvc.h"
#include "me/edges_kernels.h"
#include "me/variance_kernels.h"
#include "metric_blocks.h"

using namespace kvt::test;
using namespace metric_test;

namespace {

// VarMeanDiff from 64-bit sums; C++ division truncates toward zero like the mean's.
void anchor_varmeandiff(const uint8_t* c, int cs, const uint8_t* r, int rs, int h, int type,
                        const int32_t* sums, int32_t* var, int32_t* mean) {
    for (int k = 0; k < h / 4; ++k) {
        int64_t p = 0, q = 0;  // prediction sum, sum of squared residuals
        for (int y = (k >> 1) * 8; y < (k >> 1) * 8 + 8; ++y)
            for (int x = (k & 1) * 8; x < (k & 1) * 8 + 8; ++x) {
                const int pr = anchor_pred(r, rs, x, y, type), d = c[intptr_t(y) * cs + x] - pr;
                p += pr;
                q += d * d;
            }
        const int64_t m = (sums[k] - p) / 8, big_m = m * m + (h == 16 && m < 0 ? 1 : 0);
        mean[k] = int32_t(m);
        var[k] = q > big_m ? int32_t((q - big_m) >> 6) : 0;
    }
}

// 16-bit VarMean: column sums saturate in row order, squares wrap modulo 2^32.
void anchor_varmean16(const int16_t* src, int step, int32_t* var, int32_t* mean) {
    int64_t s = 0;
    uint32_t q = 0;
    for (int x = 0; x < 8; ++x) {
        int col = 0;
        for (int y = 0; y < 8; ++y) {
            const uint8_t* row = reinterpret_cast<const uint8_t*>(src) + intptr_t(y) * step;
            const int v = reinterpret_cast<const int16_t*>(row)[x];
            col = std::clamp(col + v, -32768, 32767);
            q += uint32_t(int64_t(v) * v);
        }
        s += col;
    }
    const int64_t m = s / 8;
    *mean = int32_t(s);
    *var = int32_t(uint32_t(q - uint32_t(m * m + (m < 0))) >> 6);
}

// Edge detector with the count test spelled out modulo 256.
uint8_t anchor_edges(const uint8_t* src, int step, int t, int n) {
    const int st = t >= 128 ? t - 256 : t;
    int k = 0;
    for (int r = 0; r < 15; ++r) {
        for (int i = 0; i < 15; ++i) {
            const uint8_t* p = src + intptr_t(r) * step + i;
            k += std::min(std::abs(p[0] - p[1]), 127) > st || std::min(std::abs(p[0] - p[step]), 127) > st;
        }
        if ((256 - k % 256) % 256 < (256 - n) % 256) return 1;
    }
    return 0;
}

}  // namespace

// Flat 200: VarMean gives the sum itself as mean. A flat -1 16-bit block has m = -8, M = 65 above
// Q = 64, and the unclamped difference wraps. In VarMeanDiff d = -8 gives mean -1: the 16x16 form
// subtracts 2, the 16x8 form 1, which with Q = 65 is the difference between variance 0 and 1.
TEST(VarMean, FlatAndNegativeMeans) {
    uint8_t b[64], cur[16 * 16], ref[17 * 17];
    int16_t w[64];
    std::fill(b, b + 64, 200);
    std::fill(w, w + 64, int16_t(-1));
    Kvt32s v[4] = {-1}, m[4] = {-1};
    ASSERT_EQ(kvtiVarMean8x8_8u32s_C1R(b, 8, v, m), kvtStsOk);
    EXPECT_TRUE(m[0] == 12800 && v[0] == 0) << m[0] << " " << v[0];
    ASSERT_EQ(kvtiVarMean8x8_16s32s_C1R(w, 16, v, m), kvtStsOk);
    EXPECT_TRUE(m[0] == -64 && uint32_t(v[0]) == 0xFFFFFFFFu >> 6) << m[0] << " " << v[0];
    std::fill(ref, ref + 289, 100);
    std::fill(cur, cur + 256, 100);
    cur[0] = 108;  // squares 64 + 1 in the top-left quarter
    cur[1] = 101;
    const Kvt32s sums[4] = {6400 - 8, 6400 - 8, 6400 - 8, 6400 - 8};
    ASSERT_EQ(kvtiVarMeanDiff16x16_8u32s_C1R(cur, 16, ref, 17, sums, v, m, 0), kvtStsOk);
    EXPECT_TRUE(m[0] == -1 && v[0] == 0 && v[1] == 0) << v[0];  // (65 - 2) >> 6; Q = 0 is not above M
    ASSERT_EQ(kvtiVarMeanDiff16x8_8u32s_C1R(cur, 16, ref, 17, sums, v, m, 0), kvtStsOk);
    EXPECT_TRUE(m[0] == -1 && v[0] == 1) << v[0];  // (65 - 1) >> 6
}

// A flat block has no flagged position: with K = 0 the wrap-around test passes for every count
// threshold but 0. In 0/255 columns every difference clamps to 127 before the signed compare.
TEST(Edges, WrapAroundAndClamp) {
    uint8_t flat[16 * 16], alt[16 * 16];
    std::fill(flat, flat + 256, 77);
    for (int i = 0; i < 256; ++i) alt[i] = (i & 1) ? 255 : 0;
    const struct {
        const uint8_t* b;
        int t, n, flag;
    } cases[] = {
        {flat, 0, 1, 1},     {flat, 0, 255, 1},   {flat, 0, 0, 0}, {flat, 255, 0, 0},
        {flat, 200, 20, 1},                        // T >= 128 flags all: K = 30 > 20 after row 1
        {flat, 128, 225, 0}, {flat, 128, 224, 1},  // K stops at 15 * 15 = 225
        {alt, 126, 224, 1},  {alt, 127, 1, 1},     {alt, 127, 0, 0},  // 225 flagged above 126, none above 127
    };
    for (const auto& c : cases) {
        Kvt8u flag = 9;
        ASSERT_EQ(kvtiEdgesDetect16x16_8u_C1R(c.b, 16, Kvt8u(c.t), Kvt8u(c.n), &flag), kvtStsOk);
        EXPECT_EQ(flag, c.flag) << (c.b == flat ? "flat" : "alternating") << " t " << c.t << " n " << c.n;
    }
}

// Every member on random blocks; trials 0..5 use each pattern once (all 255 makes S^2 exceed int32
// in Variance16x16). VarMeanDiff in other types returns 0 and writes nothing.
TEST(Variance, RandomBlocksMatchAnchors) {
    Rng rng(31);
    for (int trial = 0; trial < 200; ++trial) {
        const Pattern pat = trial < kPatternCount ? Pattern(trial) : any_pattern(rng);
        const int range = trial % 3 == 0 ? 300 : 32768;
        Block<> cur(rng, 16, 16, pat), ref(rng, 17, 17, any_pattern(rng));
        Block<int16_t> w(rng, 8, 8, pat, -range, range - 1);
        const uint8_t *c = cur.data(), *r = ref.data();
        const int cs = cur.step(), rs = ref.step();
        int64_t s = 0, q = 0, s8 = 0, q8 = 0, mad = 0;
        for (int i = 0; i < 256; ++i) {
            const int v = c[i / 16 * cs + i % 16];
            s += v, q += v * v;
            if (i % 16 < 8 && i < 128) s8 += v, q8 += v * v;
        }
        for (int i = 0; i < 256; ++i) mad += std::abs(c[i / 16 * cs + i % 16] - (s + 128) / 256);
        Kvt32s v[4], m[4], av[4], am[4];
        ASSERT_EQ(kvtiVariance16x16_8u32s(c, cs, v), kvtStsOk);
        ASSERT_EQ(kvtiVarMean8x8_8u32s_C1R(c, cs, v + 1, m), kvtStsOk);
        ASSERT_EQ(kvtiMeanAbsDev16x16_8u32s_C1R(c, cs, v + 2), kvtStsOk);
        EXPECT_TRUE(v[0] == q - s * s / 256 && v[2] == mad) << trial;
        EXPECT_TRUE(v[1] == (q8 - s8 / 8 * (s8 / 8)) / 64 && m[0] == s8) << trial;
        ASSERT_EQ(kvtiVarMean8x8_16s32s_C1R(w.data(), w.step(), v, m), kvtStsOk);
        anchor_varmean16(w.data(), w.step(), av, am);
        EXPECT_TRUE(v[0] == av[0] && m[0] == am[0]) << trial;
        const int t = rng.coin() ? rng.uniform(0, 40) : rng.uniform(0, 255), n = rng.uniform(0, 255);
        Kvt8u flag = 9;
        ASSERT_EQ(kvtiEdgesDetect16x16_8u_C1R(c, cs, Kvt8u(t), Kvt8u(n), &flag), kvtStsOk);
        EXPECT_EQ(flag, anchor_edges(c, cs, t, n)) << "t " << t << " n " << n;
        for (int type : {0, 4, 8, 12, 2, 1, 16, -12, 13})
            for (int h : {16, 8}) {
                int32_t sums[4];
                for (int32_t& x : sums) x = rng.uniform(0, 16320);
                for (int i = 0; i < 4; ++i) v[i] = m[i] = av[i] = am[i] = 7;
                auto fn = h == 16 ? kvtiVarMeanDiff16x16_8u32s_C1R : kvtiVarMeanDiff16x8_8u32s_C1R;
                ASSERT_EQ(fn(c, cs, r, rs, sums, v, m, type), kvtStsOk);
                if ((type & 12) == type) anchor_varmeandiff(c, cs, r, rs, h, type, sums, av, am);
                EXPECT_TRUE(std::equal(v, v + 4, av) && std::equal(m, m + 4, am)) << type << " h " << h;
            }
    }
}

// Every block metric in every phase reads its blocks plus exactly the column and row the half
// steps need: each block's last sample is the last byte before an inaccessible page.
TEST(MetricBounds, ReadsOnlyWhatThePhaseNeeds) {
    Rng rng(3);
    PageGuarded cb(4096), rb(4096), rb2(4096);
    auto at_end = [&](PageGuarded& b, int w, int h, int st) { return guarded_block(b, w, h, st, rng); };
    Kvt32s v[4], m[4], sums[4] = {};
    Kvt16u out[16];
    Kvt8u flag;
    for (int cs : {16, 40}) {  // 16 takes the aligned twins
        const uint8_t *c = at_end(cb, 16, 16, cs), *r = at_end(rb, 16, 16, 20);
        kvtiVariance16x16_8u32s(c, cs, v);
        kvtiMeanAbsDev16x16_8u32s_C1R(c, cs, v);
        kvtiEdgesDetect16x16_8u_C1R(c, cs, 255, 0, &flag);  // visits every row
        kvtiSAD16x16Blocks8x8_8u16u(c, cs, r, 20, out);
        kvtiSAD16x16Blocks4x4_8u16u(c, cs, r, 20, out);
        kvtiSAD4x4_8u32s(c + 12 * cs + 12, cs, r + 12 * 20 + 12, 20, v);
        kvtiVarMean8x8_8u32s_C1R(c + 8 * cs + 8, cs, v, m);
        for (int type : kPhaseTypes) {
            const int tb = 12 - type;  // backward phase
            r = at_end(rb, 16 + (type >> 3), 16 + (type >> 2 & 1), 20);
            const uint8_t* r2 = at_end(rb2, 16 + (tb >> 3), 16 + (tb >> 2 & 1), 33);
            kvtiSAD16x16_8u32s(c, cs, r, 20, v, type);
            kvtiSqrDiff16x16_8u32s(c, cs, r, 20, type, v);
            kvtiSqrDiff16x16B_8u32s(c, cs, r, 20, type, r2, 33, tb, v);
            kvtiVarMeanDiff16x16_8u32s_C1R(c, cs, r, 20, sums, v, m, type);
            kvtiVarMeanDiff16x8_8u32s_C1R(c + 8 * cs, cs, r + 8 * 20, 20, sums, v, m, type);  // bottom half
            kvtiSAD8x8_8u32s_C1R(c + 8 * cs + 8, cs, r + 8 * 20 + 8, 20, v, type);  // bottom-right quarter
        }
    }
    kvtiVarMean8x8_16s32s_C1R(reinterpret_cast<const int16_t*>(at_end(cb, 16, 8, 18)), 18, v, m);
}

TEST(VarianceSimd, MatchesReference) {
    using namespace kvt;
    compare_kernels("variance", 400, [](Rng& rng, Impl impl, Outputs& out) {
        const bool aligned = rng.uniform(0, 2) == 0;
        Block<> cur(rng, 16, 16, any_pattern(rng), 0, 255, aligned), ref(rng, 17, 17, any_pattern(rng));
        Block<int16_t> w(rng, 8, 8, any_pattern(rng), rng.coin() ? -32768 : -200, rng.coin() ? 32767 : 200);
        const uint8_t *c = cur.data(), *r = ref.data();
        const int cs = cur.step(), rs = ref.step();
        int32_t v[7] = {}, d[4][4], sums[4];
        KVT_PICK(impl, variance_16x16)(c, cs, v);
        if (aligned) KVT_PICK_A16(impl, variance_16x16)(c, cs, v + 1);
        KVT_PICK(impl, mean_abs_dev_16x16)(c, cs, v + 2);
        KVT_PICK(impl, varmean_8x8_8u)(c, cs, v + 3, v + 4);
        KVT_PICK(impl, varmean_8x8_16s)(w.data(), w.step(), v + 5, v + 6);
        out.add("variance, its aligned twin, mad, varmean 8u and 16s", v);
        for (int32_t& s : sums) s = rng.coin() ? rng.uniform(0, 16320) : int32_t(rng.next());
        for (int type : kPhaseTypes)
            with_phase(type, [&](auto phase) {
                std::fill(&d[0][0], &d[0][0] + 16, -7);  // the 16x8 form writes two entries
                KVT_PICK_T(impl, varmeandiff_16x16, decltype(phase)::value)(c, cs, r, rs, sums, d[0], d[1]);
                KVT_PICK_T(impl, varmeandiff_16x8, decltype(phase)::value)(c, cs, r, rs, sums, d[2], d[3]);
                out.add("varmeandiff 16x16 and 16x8 (var, mean)", d);
            });
        uint8_t flag = 9, t = uint8_t(rng.coin() ? rng.uniform(0, 40) : rng.next());
        KVT_PICK(impl, edges_16x16)(c, cs, t, uint8_t(rng.next()), &flag);
        out.add("edges", flag);
    });
}
