// MPEG-1/2 block motion compensation: every tier against the oracle on random blocks, reads kept
// inside the block and its half-sample column and row, the public functions against a per-sample
// model written here from the formulas, the standard's edge cases and the argument checks.
#include <gtest/gtest.h>

#include <string>

#include "blocks.h"
#include "kvtvc.h"
#include "mpeg2/mc_dsp.h"

using namespace kvt;
using namespace kvt::test;

namespace {

const char* const kPhaseNames[4] = {"ff", "fh", "hf", "hh"};

std::string shape_name(int shape) {
    const McShape s = kMcShapes[shape];
    return std::to_string(s.w) + "x" + std::to_string(s.h) + (s.nb == 2 ? "UV" : "");
}

// Rounding control 0 or 1 mostly; now and then another value, which the residual kernels take as given.
int any_rounding(Rng& rng) {
    const int r = rng.uniform(-4, 11);
    return r < 0 || r > 7 ? r / 2 : r & 1;
}

TEST(Mpeg2Mc, TiersMatchOracle) {
    compare_tiers<McDsp>("mc", init_mc_dsp, ref::init_mc, 4, [](Rng& rng, const McDsp& d, Outputs& out) {
        for (int i = 0; i < kMcShapeCount * 16; ++i) {
            const int shape = i / 16, f = i % 4, b = i / 4 % 4, r = any_rounding(rng);
            const McShape s = kMcShapes[shape];
            auto rf = samples(rng, s.w + s.nb, s.h + 1), rb = samples(rng, s.w + s.nb, s.h + 1);
            auto res = residuals(rng, s.w, s.h);
            auto o = output(rng, s.w, s.h);
            d.mc_bi[i](rf.data(), rf.step(), rb.data(), rb.step(), res.data(), res.step(), o.data(), o.step(),
                       r);
            out.add_buffer("mc_bi " + shape_name(shape) + " " + kPhaseNames[f] + kPhaseNames[b], o);
            if (b != 0) continue;
            auto o1 = output(rng, s.w, s.h);
            d.mc[mc_index(shape, f)](rf.data(), rf.step(), res.data(), res.step(), o1.data(), o1.step(), r);
            out.add_buffer("mc " + shape_name(shape) + " " + kPhaseNames[f], o1);
        }
        for (int i = 0; i < 72; ++i) {
            const int w = kMcBlockSizes[i / 24], h = kMcBlockSizes[i / 8 % 3];
            auto src = samples(rng, w + 1, h + 1);
            auto o = output(rng, w, h);
            d.copy[i](src.data(), src.step(), o.data(), o.step());
            out.add_buffer("copy " + std::to_string(w) + "x" + std::to_string(h) + " " +
                               kPhaseNames[i / 2 % 4] + " r" + std::to_string(i % 2),
                           o);
        }
    });
}

// Each kernel reads only the block plus the column and row of its half steps: the area ends at an
// inaccessible page, the residual too.
TEST(Mpeg2Mc, ReadsStayInsideTheBlock) {
    PageGuarded fwd(4096), bwd(4096), res(4096), dst(4096);
    Rng rng(test_seed());
    for_each_tier<McDsp>(init_mc_dsp, [&](const McDsp& d, const Tier&) {
        for (int i = 0; i < kMcShapeCount * 16; ++i) {
            const McShape s = kMcShapes[i / 16];
            const int f = i % 4, b = i / 4 % 4, rw = s.w * 2 + 6;
            auto area = [&](PageGuarded& buf, int ph) {
                return guarded_area(buf, rng, s.w + s.nb * mc_half_h(ph), s.h + mc_half_v(ph), s.w + 5);
            };
            const int16_t* e = guarded_area<int16_t>(res, rng, s.w, s.h, rw);
            d.mc_bi[i](area(fwd, f), s.w + 5, area(bwd, b), s.w + 5, e, rw, dst.data(), s.w, 0);
            if (b == 0) d.mc[mc_index(i / 16, f)](area(fwd, f), s.w + 5, e, rw, dst.data(), s.w, 1);
        }
        for (int i = 0; i < 72; ++i) {
            const int w = kMcBlockSizes[i / 24], h = kMcBlockSizes[i / 8 % 3], ph = i / 2 % 4;
            d.copy[i](guarded_area(fwd, rng, w + mc_half_h(ph), h + mc_half_v(ph), w + 3), w + 3, dst.data(),
                      w);
        }
    });
}

// ---- Public functions against a model ---------------------------------------------------------

using SingleFn = decltype(&kvtiMC16x16_8u_C1);
using BiFn = decltype(&kvtiMC16x16B_8u_C1);
struct Api {
    int shape;
    SingleFn single;
    BiFn bidir;
};
const Api kApi[] = {
    {kMc16x16, kvtiMC16x16_8u_C1, kvtiMC16x16B_8u_C1}, {kMc16x8, kvtiMC16x8_8u_C1, kvtiMC16x8B_8u_C1},
    {kMc16x4, kvtiMC16x4_8u_C1, kvtiMC16x4B_8u_C1},    {kMc8x16, kvtiMC8x16_8u_C1, kvtiMC8x16B_8u_C1},
    {kMc8x8, kvtiMC8x8_8u_C1, kvtiMC8x8B_8u_C1},       {kMc8x4, kvtiMC8x4_8u_C1, kvtiMC8x4B_8u_C1},
    {kMc4x8, kvtiMC4x8_8u_C1, kvtiMC4x8B_8u_C1},       {kMc4x4, kvtiMC4x4_8u_C1, kvtiMC4x4B_8u_C1},
    {kMc4x2, kvtiMC4x2_8u_C1, kvtiMC4x2B_8u_C1},       {kMc2x4, kvtiMC2x4_8u_C1, kvtiMC2x4B_8u_C1},
    {kMc2x2, kvtiMC2x2_8u_C1, kvtiMC2x2B_8u_C1},       {kMc16x8UV, kvtiMC16x8UV_8u_C1, kvtiMC16x8BUV_8u_C1}};

// ISO/IEC 13818-2 7.6.4 half-sample prediction, r in {0, 1}; bits 3 and 2 of the type ask for a
// half step right (to the sample nb bytes on) and down.
int model_predict(Plane<uint8_t>& ref, int x, int y, int nb, int type, int r) {
    const bool h = type & 8, v = type & 4;
    const int a = ref.row(y)[x], b = ref.row(y)[x + nb], c = ref.row(y + 1)[x], d = ref.row(y + 1)[x + nb];
    if (h && v) return (a + b + c + d + 2 - r) / 4;
    if (h) return (a + b + 1 - r) / 2;
    if (v) return (a + c + 1 - r) / 2;
    return a;
}

int clamp255(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

// A phase code with the ignored bits set at random.
int with_noise(Rng& rng, int phase_code) { return phase_code | (int(rng.next()) & ~12); }

TEST(Mpeg2Mc, PublicFunctionsMatchModel) {
    Rng rng(test_seed());
    for (const Api& api : kApi) {
        const McShape s = kMcShapes[api.shape];
        for (int pair = 0; pair < 16; ++pair) {
            const int tf = with_noise(rng, pair % 4 * 4), tb = with_noise(rng, pair / 4 * 4),
                      r = rng.uniform(0, 1);
            auto rf = samples(rng, s.w + s.nb, s.h + 1), rb = samples(rng, s.w + s.nb, s.h + 1);
            auto res = residuals(rng, s.w, s.h);
            auto o1 = output(rng, s.w, s.h), o2 = output(rng, s.w, s.h);
            ASSERT_EQ(api.single(rf.data(), rf.step(), res.data(), res.step(), o1.data(), o1.step(), tf, r),
                      0);
            ASSERT_EQ(api.bidir(rf.data(), rf.step(), tf, rb.data(), rb.step(), tb, res.data(), res.step(),
                                o2.data(), o2.step(), r),
                      0);
            for (int y = 0; y < s.h; ++y)
                for (int x = 0; x < s.w; ++x) {
                    const int pf = model_predict(rf, x, y, s.nb, tf, r),
                              pb = model_predict(rb, x, y, s.nb, tb, r);
                    const int e = res.row(y)[x];
                    ASSERT_EQ(o1.row(y)[x], clamp255(e + pf))
                        << shape_name(api.shape) << " type " << tf << " at " << x << "," << y;
                    ASSERT_EQ(o2.row(y)[x], clamp255(e + (pf + pb + 1) / 2))
                        << shape_name(api.shape) << "B types " << tf << ", " << tb << " at " << x << "," << y;
                }
            EXPECT_TRUE(o1.guards_intact() && o2.guards_intact());
        }
    }
}

TEST(Mpeg2Mc, CopiesMatchModel) {
    Rng rng(test_seed());
    for (int w : kMcBlockSizes)
        for (int h : kMcBlockSizes)
            for (int i = 0; i < 8; ++i) {
                const int type = with_noise(rng, i / 2 * 4), r = i % 2;
                auto src = samples(rng, w + 1, h + 1);
                auto o = output(rng, w, h);
                const auto fn = r ? kvtiMCBlock_RoundOn_8u : kvtiMCBlock_RoundOff_8u;
                ASSERT_EQ(fn(src.data(), src.step(), o.data(), o.step(), w, h, type), 0);
                for (int y = 0; y < h; ++y)
                    for (int x = 0; x < w; ++x)
                        ASSERT_EQ(o.row(y)[x], model_predict(src, x, y, 1, type, r))
                            << w << "x" << h << " type " << type;
                EXPECT_TRUE(o.guards_intact());
            }
    for (int n : {8, 16}) {  // the plain copies take positive steps
        Plane<uint8_t> src(n, n, n + rng.uniform(0, 9), size_t(rng.uniform(0, 15))),
            o(n, n, n + rng.uniform(0, 9));
        for (int y = 0; y < n; ++y) rng.fill(src.row(y), size_t(n), 0, 255);
        const auto fn = n == 8 ? kvtiCopyBlock_8x8_8u : kvtiCopyBlock_16x16_8u;
        ASSERT_EQ(fn(src.data(), src.step(), o.data(), o.step()), 0);
        for (int y = 0; y < n; ++y) ASSERT_EQ(std::memcmp(o.row(y), src.row(y), size_t(n)), 0) << n;
        EXPECT_TRUE(o.guards_intact());
    }
}

// ---- The standard's edge cases ---------------------------------------------------------------

// One 8x8 call on a reference whose rows repeat `row` (columns alternate its two values) and a
// constant residual; returns the top-left result.
int mc8x8(int a, int b, int type, int residual, int r) {
    uint8_t ref[9 * 9];
    for (int i = 0; i < 81; ++i) ref[i] = uint8_t(i % 9 % 2 ? b : a);
    int16_t res[64];
    for (int16_t& e : res) e = int16_t(residual);
    uint8_t dst[64];
    EXPECT_EQ(kvtiMC8x8_8u_C1(ref, 9, res, 16, dst, 8, type, r), 0);
    return dst[0];
}

TEST(Mpeg2Mc, EdgeCases) {
    EXPECT_EQ(mc8x8(0, 1, 8, 0, 0), 1);
    EXPECT_EQ(mc8x8(0, 1, 8, 0, 1), 0);
    EXPECT_EQ(mc8x8(255, 255, 12, 0, 0), 255);
    EXPECT_EQ(mc8x8(255, 255, 12, 0, 1), 255);
    EXPECT_EQ(mc8x8(10, 10, 0, 300, 0), 255);
    EXPECT_EQ(mc8x8(10, 10, 0, -300, 0), 0);
    EXPECT_EQ(mc8x8(10, 10, 0, 32767, 1), 255);
    EXPECT_EQ(mc8x8(7, 200, 0, 0, 1), 7);     // FF ignores r
    EXPECT_EQ(mc8x8(7, 200, 3, 0, 0), 7);     // types 1, 2, 3 are FF
    EXPECT_EQ(mc8x8(7, 200, 13, 0, 0), 104);  // 13 is HH: (7 + 200 + 7 + 200 + 2) >> 2
    // Bidirectional: forward prediction 0, backward 1 averages up to 1 at both roundings.
    const uint8_t zero[9 * 9] = {}, one[9 * 9] = {1};
    const int16_t res[64] = {};
    for (int r : {0, 1}) {
        uint8_t dst[64];
        ASSERT_EQ(kvtiMC8x8B_8u_C1(zero, 9, 0, one, 9, 0, res, 16, dst, 8, r), 0);
        EXPECT_EQ(dst[0], 1);
    }
}

// ---- Argument checks ---------------------------------------------------------------------------

TEST(Mpeg2Mc, NullPointersWriteNothing) {
    uint8_t ref[32 * 17] = {}, dst[16 * 16];
    const int16_t res[256] = {};
    std::memset(dst, 0xA5, sizeof dst);
    for (const Api& api : kApi) {
        EXPECT_EQ(api.single(nullptr, 32, res, 32, dst, 16, 0, 0), kvtStsNullPointer);
        EXPECT_EQ(api.single(ref, 32, nullptr, 32, dst, 16, 0, 0), kvtStsNullPointer);
        EXPECT_EQ(api.single(ref, 32, res, 32, nullptr, 16, 0, 0), kvtStsNullPointer);
        EXPECT_EQ(api.bidir(nullptr, 32, 0, ref, 32, 0, res, 32, dst, 16, 0), kvtStsNullPointer);
        EXPECT_EQ(api.bidir(ref, 32, 0, nullptr, 32, 0, res, 32, dst, 16, 0), kvtStsNullPointer);
        EXPECT_EQ(api.bidir(ref, 32, 0, ref, 32, 0, nullptr, 32, dst, 16, 0), kvtStsNullPointer);
        EXPECT_EQ(api.bidir(ref, 32, 0, ref, 32, 0, res, 32, nullptr, 16, 0), kvtStsNullPointer);
    }
    for (auto fn : {kvtiMCBlock_RoundOff_8u, kvtiMCBlock_RoundOn_8u}) {
        EXPECT_EQ(fn(nullptr, 32, dst, 16, 3, 8, 0), kvtStsNullPointer);  // pointers before sizes
        EXPECT_EQ(fn(ref, 32, nullptr, 16, 8, 8, 0), kvtStsNullPointer);
        for (int n : {0, 2, 3, 12, 32, -8}) {
            EXPECT_EQ(fn(ref, 32, dst, 16, n, 8, 0), kvtStsBadSize) << n;
            EXPECT_EQ(fn(ref, 32, dst, 16, 16, n, 0), kvtStsBadSize) << n;
        }
    }
    EXPECT_EQ(kvtiCopyBlock_8x8_8u(ref, 4, nullptr, 4), kvtStsNullPointer);  // before the steps
    EXPECT_EQ(kvtiCopyBlock_8x8_8u(nullptr, 8, dst, 8), kvtStsNullPointer);
    EXPECT_EQ(kvtiCopyBlock_8x8_8u(ref, 7, dst, 8), kvtStsStepBelow8);
    EXPECT_EQ(kvtiCopyBlock_8x8_8u(ref, 8, dst, 7), kvtStsStepBelow8);
    EXPECT_EQ(kvtiCopyBlock_16x16_8u(ref, 16, dst, 15), kvtStsStepBelow16);
    EXPECT_EQ(kvtiCopyBlock_16x16_8u(ref, 15, dst, 16), kvtStsStepBelow16);
    EXPECT_EQ(kvtiCopyBlock_16x16_8u(ref, 16, nullptr, 16), kvtStsNullPointer);
    for (uint8_t v : dst) ASSERT_EQ(v, 0xA5);
}

}  // namespace
