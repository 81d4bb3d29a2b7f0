// H.263 / MPEG-4 prediction, reconstruction, overlapped motion compensation and frame expansion:
// every tier against the oracle, reads kept inside the block, the public functions against
// per-sample models written here (Annex F from the shared weight table), the standard's edge
// cases and the argument checks.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "blocks.h"
#include "kvtvc.h"
#include "mpeg4/obmc_dsp.h"
#include "mpeg4/recon_dsp.h"
#include "tsv.h"

using namespace kvt;
using namespace kvt::test;

namespace {

const char* const kPhaseNames[4] = {"ff", "hf", "fh", "hh"};

std::string slot_name(const char* what, int i) {
    return std::string(what) + " " + kPhaseNames[i / 2] + " r" + std::to_string(i % 2);
}

TEST(Mpeg4Recon, TiersMatchOracle) {
    compare_tiers<ReconDsp>(
        "recon", init_recon_dsp, ref::init_recon, 4, [](Rng& rng, const ReconDsp& d, Outputs& out) {
            for (int i = 0; i < 8; ++i) {
                for (int n : {8, 16}) {
                    auto src = samples(rng, n + 1, n + 1);
                    auto o = output(rng, n, n);
                    (n == 8 ? d.predict8 : d.predict16)[i](src.data(), src.step(), o.data(), o.step());
                    out.add_buffer(slot_name(n == 8 ? "predict8" : "predict16", i), o);
                }
                auto src = samples(rng, 9, 9);
                auto o = output(rng, 8, 8);
                const std::vector<int16_t> res = residual_block(rng, 64);
                d.recon8[i](src.data(), src.step(), res.data(), o.data(), o.step());
                out.add_buffer(slot_name("recon8", i), o);
            }
            auto src = samples(rng, 16, 16), a = samples(rng, 16, 16);
            auto o = output(rng, 16, 16), o16 = output(rng, 16, 16), o8 = output(rng, 8, 8);
            const std::vector<int16_t> res = residual_block(rng, 256);
            d.recon16(src.data(), src.step(), res.data(), o.data(), o.step());
            d.average16(src.data(), src.step(), a.data(), a.step(), o16.data(), o16.step());
            d.average8(src.data(), src.step(), a.data(), a.step(), o8.data(), o8.step());
            out.add_buffer("recon16", o);
            out.add_buffer("average16", o16);
            out.add_buffer("average8", o8);
        });
}

// A vector whose whole-sample part stays within +-range samples, either parity.
KvtMotionVec any_vector(Rng& rng, int range) {
    return {int16_t(rng.uniform(-2 * range, 2 * range + 1)), int16_t(rng.uniform(-2 * range, 2 * range + 1))};
}

constexpr int kMargin = 10;  // reference samples around an OBMC block, enough for vectors of +-8

TEST(Mpeg4Recon, ObmcTiersMatchOracle) {
    compare_tiers<ObmcDsp>(
        "obmc", init_obmc_dsp, ref::init_obmc, 32, [](Rng& rng, const ObmcDsp& d, Outputs& out) {
            for (int r = 0; r < 2; ++r) {
                auto area = samples(rng, 8 + 2 * kMargin, 8 + 2 * kMargin);
                KvtMotionVec v[kObmcVectors];
                for (KvtMotionVec& m : v) m = any_vector(rng, 8);
                const KvtMotionVec* const mv[kObmcVectors] = {&v[0], &v[1], &v[2], &v[3], &v[4]};
                auto o = output(rng, 8, 8);
                d.obmc[r](area.row(kMargin) + kMargin, area.step(), o.data(), o.step(), mv);
                out.add_buffer("obmc r" + std::to_string(r), o);
            }
        });
}

TEST(Mpeg4Recon, ReadsStayInsideTheBlock) {
    PageGuarded src(4096), res(4096), dst(4096);
    Rng rng(test_seed());
    for_each_tier<ReconDsp>(init_recon_dsp, [&](const ReconDsp& d, const Tier&) {
        for (int i = 0; i < 8; ++i) {
            const int h = recon_half_h(i / 2), v = recon_half_v(i / 2);
            for (int n : {8, 16})
                (n == 8 ? d.predict8 : d.predict16)[i](guarded_area(src, rng, n + h, n + v, n + 3), n + 3,
                                                       dst.data(), n);
            const int16_t* e = guarded_area<int16_t>(res, rng, 64, 1, 128);
            d.recon8[i](guarded_area(src, rng, 8 + h, 8 + v, 11), 11, e, dst.data(), 8);
        }
        d.recon16(guarded_area(src, rng, 16, 16, 19), 19, guarded_area<int16_t>(res, rng, 256, 1, 512),
                  dst.data(), 16);
        const uint8_t* a = guarded_area(res, rng, 16, 16, 17);
        d.average16(guarded_area(src, rng, 16, 16, 16), 16, a, 17, dst.data(), 16);
        d.average8(guarded_area(src, rng, 8, 8, 9), 9, guarded_area(res, rng, 8, 8, 8), 8, dst.data(), 8);
    });
}

// ---- Public functions against models ----------------------------------------------------------

// H.263 6.1.2 / ISO/IEC 14496-2 7.6.2 half-sample prediction at (x, y) + the half-sample vector.
int model_predict(const uint8_t* ref, int step, KvtMotionVec mv, int x, int y, int r) {
    const int fx = mv.dx >= 0 ? mv.dx / 2 : -((1 - mv.dx) / 2),
              fy = mv.dy >= 0 ? mv.dy / 2 : -((1 - mv.dy) / 2);
    const bool h = mv.dx % 2 != 0, v = mv.dy % 2 != 0;
    const uint8_t* p = ref + (y + fy) * step + x + fx;
    if (h && v) return (p[0] + p[1] + p[step] + p[step + 1] + 2 - r) / 4;
    if (h) return (p[0] + p[1] + 1 - r) / 2;
    if (v) return (p[0] + p[step] + 1 - r) / 2;
    return p[0];
}

int clamp255(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

// A reference with a margin of 4 samples around a 16x16 block; origin() is the block.
struct Reference {
    Plane<uint8_t> plane;
    explicit Reference(Rng& rng) : plane(samples(rng, 24, 24)) {}
    uint8_t* origin() { return plane.row(4) + 4; }
    int step() const { return plane.step(); }
};

TEST(Mpeg4Recon, H263FunctionsMatchModel) {
    using Copy = decltype(&kvtiCopyMB_H263_8u);
    struct {
        Copy fn;
        int n, dx, dy;
    } const copies[] = {{kvtiCopyMB_H263_8u, 16, 0, 0},         {kvtiCopyBlock_H263_8u, 8, 0, 0},
                        {kvtiCopyApproxHMB_H263_8u, 16, 1, 0},  {kvtiCopyApproxHBlock_H263_8u, 8, 1, 0},
                        {kvtiCopyApproxVMB_H263_8u, 16, 0, 1},  {kvtiCopyApproxVBlock_H263_8u, 8, 0, 1},
                        {kvtiCopyApproxHVMB_H263_8u, 16, 1, 1}, {kvtiCopyApproxHVBlock_H263_8u, 8, 1, 1}};
    Rng rng(test_seed());
    for (int trial = 0; trial < 8; ++trial) {
        const int step = 17 + rng.uniform(0, 20);
        std::vector<uint8_t> src(size_t(step) * 17), dst(size_t(step) * 16, 0xA5);
        rng.fill(src.data(), src.size(), 0, 255);
        for (const auto& c : copies) {
            std::vector<uint8_t> got = dst;
            ASSERT_EQ(c.fn(src.data(), got.data(), step), 0);
            for (int y = 0; y < 16; ++y)
                for (int x = 0; x < step; ++x) {
                    const int want =
                        x < c.n && y < c.n
                            ? model_predict(src.data(), step, {int16_t(c.dx), int16_t(c.dy)}, x, y, 0)
                            : 0xA5;
                    ASSERT_EQ(got[size_t(y * step + x)], want)
                        << c.n << " " << c.dx << c.dy << " at " << x << "," << y;
                }
        }
        // Reconstructions: one 16x16 macroblock of four residual blocks, or its top-left block.
        const std::vector<int16_t> res = residual_block(rng, 256);
        auto expect_recon = [&](const std::vector<uint8_t>& got, int n, const char* what) {
            for (int y = 0; y < 16; ++y)
                for (int x = 0; x < step; ++x) {
                    const bool inside = x < n && y < n;
                    const int e = inside ? res[size_t((y / 8 * 2 + x / 8) * 64 + y % 8 * 8 + x % 8)] : 0;
                    const int want = inside ? clamp255(src[size_t(y * step + x)] + e) : 0xA5;
                    ASSERT_EQ(got[size_t(y * step + x)], want) << what << " at " << x << "," << y;
                }
        };
        std::vector<uint8_t> a = dst, b = dst, c = dst;
        ASSERT_EQ(kvtiReconMB_H263(src.data(), res.data(), a.data(), step), 0);
        ASSERT_EQ(kvtiReconBlock_H263(src.data(), res.data(), b.data(), step), 0);
        ASSERT_EQ(kvtiReconBlock_8x8(src.data(), res.data(), c.data(), step), 0);
        expect_recon(a, 16, "ReconMB");
        expect_recon(b, 8, "ReconBlock");
        expect_recon(c, 8, "ReconBlock_8x8");
        std::vector<uint8_t> in_place(src.begin(), src.begin() + step * 16), in_block = in_place;
        ASSERT_EQ(kvtiReconMB_H263_I(in_place.data(), res.data(), step), 0);
        ASSERT_EQ(kvtiReconBlock_H263_I(in_block.data(), res.data(), step), 0);
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < step; ++x) {
                const size_t i = size_t(y * step + x);
                EXPECT_EQ(in_place[i], x < 16 ? a[i] : src[i]);
                EXPECT_EQ(in_block[i], x < 8 && y < 8 ? b[i] : src[i]);
            }
    }
}

TEST(Mpeg4Recon, Mpeg4FunctionsMatchModel) {
    Rng rng(test_seed());
    for (int trial = 0; trial < 64; ++trial) {
        Reference ref(rng);
        const KvtMotionVec mv = any_vector(rng, 3);
        const int rc = trial % 4 == 3 ? rng.uniform(-9, 9) : trial % 2, r = rc != 0;
        auto mb = output(rng, 16, 16), blk = output(rng, 8, 8), rec = output(rng, 8, 8);
        const std::vector<int16_t> res = residual_block(rng, 64);
        ASSERT_EQ(kvtiCopyMBHalfpel_MPEG4_8u(ref.origin(), ref.step(), mb.data(), mb.step(), &mv, rc), 0);
        ASSERT_EQ(kvtiCopyBlockHalfpel_MPEG4_8u(ref.origin(), ref.step(), blk.data(), blk.step(), &mv, rc),
                  0);
        ASSERT_EQ(kvtiReconBlockHalfpel_MPEG4_8u(ref.origin(), ref.step(), res.data(), rec.data(), rec.step(),
                                                 &mv, rc),
                  0);
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x) {
                const int p = model_predict(ref.origin(), ref.step(), mv, x, y, r);
                ASSERT_EQ(mb.row(y)[x], p) << "MB vector " << mv.dx << "," << mv.dy << " rc " << rc;
                if (x >= 8 || y >= 8) continue;
                ASSERT_EQ(blk.row(y)[x], p) << "block vector " << mv.dx << "," << mv.dy << " rc " << rc;
                ASSERT_EQ(rec.row(y)[x], clamp255(p + res[size_t(y * 8 + x)])) << "recon";
            }
        EXPECT_TRUE(mb.guards_intact() && blk.guards_intact() && rec.guards_intact());
    }
}

TEST(Mpeg4Recon, AveragesMatchModel) {
    Rng rng(test_seed());
    for (int n : {8, 16}) {
        auto a = samples(rng, n, n), b = samples(rng, n, n);
        auto o = output(rng, n, n);
        std::vector<uint8_t> in_place(size_t(n) * 20, 0xA5);
        for (int y = 0; y < n; ++y) std::memcpy(&in_place[size_t(y) * 20], b.row(y), size_t(n));
        if (n == 8) {
            ASSERT_EQ(kvtiAverageBlock_MPEG4_8u(a.data(), a.step(), b.data(), b.step(), o.data(), o.step()),
                      0);
            ASSERT_EQ(kvtiAverageBlock_MPEG4_8u_I(a.data(), a.step(), in_place.data(), 20), 0);
        } else {
            ASSERT_EQ(kvtiAverageMB_MPEG4_8u(a.data(), a.step(), b.data(), b.step(), o.data(), o.step()), 0);
            ASSERT_EQ(kvtiAverageMB_MPEG4_8u_I(a.data(), a.step(), in_place.data(), 20), 0);
        }
        for (int y = 0; y < n; ++y)
            for (int x = 0; x < 20; ++x) {
                const int want = (a.row(y)[x % n] + b.row(y)[x % n] + 1) / 2;
                if (x < n) {
                    ASSERT_EQ(o.row(y)[x], want) << n;
                }
                ASSERT_EQ(in_place[size_t(y * 20 + x)], x < n ? want : 0xA5) << n << " in place";
            }
        EXPECT_TRUE(o.guards_intact());
    }
}

// ---- Overlapped motion compensation against H.263 Annex F --------------------------------------

// Weights H0, H1, H2 of Annex F as the shared table gives them: [matrix][row * 8 + column].
std::vector<std::vector<int>> annex_f_weights() {
    std::vector<std::vector<int>> w(3, std::vector<int>(64, -1));
    const char* const names[3] = {"current", "top_bottom", "left_right"};
    for (const TsvRow& row : read_table("h263_obmc_weights.tsv"))
        for (int m = 0; m < 3; ++m)
            if (row["matrix"] == names[m])
                for (int c = 0; c < 8; ++c)
                    w[size_t(m)][size_t(row.num("row") * 8 + c)] = row.num("c" + std::to_string(c));
    return w;
}

TEST(Mpeg4Recon, ObmcMatchesAnnexF) {
    const std::vector<std::vector<int>> w = annex_f_weights();
    for (int i = 0; i < 64; ++i)
        ASSERT_EQ(w[0][size_t(i)] + w[1][size_t(i)] + w[2][size_t(i)], 8) << "table at " << i;
    Rng rng(test_seed());
    for (int trial = 0; trial < 200; ++trial) {
        const bool h263 = trial % 2 == 0;
        const int r = h263 ? 0 : rng.uniform(0, 1);
        auto area = samples(rng, 8 + 2 * kMargin, 8 + 2 * kMargin, h263);  // H.263 takes one positive step
        const uint8_t* ref = area.row(kMargin) + kMargin;
        KvtMotionVec cur = any_vector(rng, 8), left = any_vector(rng, 8), right = any_vector(rng, 8),
                     above = any_vector(rng, 8), below = any_vector(rng, 8);
        auto o = h263 ? Plane<uint8_t>(8, 8, area.step()) : output(rng, 8, 8);
        const KvtStatus st =
            h263 ? kvtiPredictBlock_OBMC_8u(ref, o.data(), area.step(), &cur, &left, &right, &above, &below)
                 : kvtiOBMCHalfpel_MPEG4_8u(ref, area.step(), o.data(), o.step(), &cur, &left, &right, &above,
                                            &below, r ? 7 : 0);
        ASSERT_EQ(st, 0);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                // Annex F: rows 0..3 take the vector above, 4..7 below; columns 0..3 left, 4..7 right.
                const int q = model_predict(ref, area.step(), cur, x, y, r);
                const int t = model_predict(ref, area.step(), y < 4 ? above : below, x, y, r);
                const int s = model_predict(ref, area.step(), x < 4 ? left : right, x, y, r);
                const size_t i = size_t(y * 8 + x);
                ASSERT_EQ(o.row(y)[x], (q * w[0][i] + t * w[1][i] + s * w[2][i] + 4) / 8)
                    << (h263 ? "H.263" : "MPEG-4") << " at " << x << "," << y;
            }
        EXPECT_TRUE(o.guards_intact());
    }
}

// ---- Frame expansion ---------------------------------------------------------------------------

TEST(Mpeg4Recon, ExpandFrameReplicatesBorders) {
    Rng rng(test_seed());
    const int sizes[][3] = {{8, 1, 8}, {9, 3, 8}, {17, 11, 9}, {33, 7, 16}, {11, 13, 13}};
    for (const auto& sz : sizes) {
        const int w = sz[0], h = sz[1], e = sz[2], step = w + 2 * e + rng.uniform(0, 5), rows = h + 2 * e;
        std::vector<uint8_t> frame(size_t(step) * size_t(rows));
        rng.fill(frame.data(), frame.size(), 0, 255);
        const std::vector<uint8_t> before = frame;
        ASSERT_EQ(kvtiExpandFrame_H263_8u(&frame[size_t(e * step + e)], w, h, e, step), 0);
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < step; ++x) {
                const int sy = std::min(std::max(y, e), e + h - 1), sx = std::min(std::max(x, e), e + w - 1);
                const size_t i = size_t(y * step + x);
                const int want = x < w + 2 * e ? before[size_t(sy * step + sx)]
                                               : before[i];  // past the expansion: untouched
                ASSERT_EQ(frame[i], want) << w << "x" << h << " expansion " << e << " at " << x << "," << y;
            }
    }
}

TEST(Mpeg4Recon, ExpandFrameChecksInOrder) {
    std::vector<uint8_t> frame(64 * 40, 7);
    uint8_t* pic = &frame[16 * 64 + 16];
    EXPECT_EQ(kvtiExpandFrame_H263_8u(nullptr, 0, 0, 0, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtiExpandFrame_H263_8u(pic, 7, 0, 0, 0), kvtStsBadFrameWidth);
    EXPECT_EQ(kvtiExpandFrame_H263_8u(pic, 8, 0, 0, 0), kvtStsBadFrameHeight);
    EXPECT_EQ(kvtiExpandFrame_H263_8u(pic, 8, 1, 7, 0), kvtStsBadExpansion);
    EXPECT_EQ(kvtiExpandFrame_H263_8u(pic, 8, 1, 8, 7), kvtStsStepBelowBlock);
    EXPECT_EQ(kvtiExpandFrame_H263_8u(pic, 16, 1, 16, 47), kvtStsBadFrameStep);
    EXPECT_EQ(kvtiExpandFrame_H263_8u(pic, 16, 1, 24, 63), kvtStsBadFrameStep);
    for (uint8_t v : frame) ASSERT_EQ(v, 7);
}

// ---- The standard's edge cases -----------------------------------------------------------------

// The top-left sample of the 8x8 prediction at mv from a reference given by value(x, y), the
// block's own top-left sample at (2, 2).
template <class Value>
int predict_one(Value value, KvtMotionVec mv, int rc) {
    uint8_t ref[12 * 12];
    for (int i = 0; i < 144; ++i) ref[i] = uint8_t(value(i % 12 - 2, i / 12 - 2));
    uint8_t dst[64];
    EXPECT_EQ(kvtiCopyBlockHalfpel_MPEG4_8u(ref + 2 * 12 + 2, 12, dst, 8, &mv, rc), 0);
    return dst[0];
}

TEST(Mpeg4Recon, EdgeCases) {
    // (-1, 0): one sample to the left, then the horizontal half between samples -1 and 0.
    const auto columns = [](int x, int) { return x == -1 ? 13 : x == 0 ? 10 : 99; };
    EXPECT_EQ(predict_one(columns, {-1, 0}, 0), 12);
    EXPECT_EQ(predict_one(columns, {-1, 0}, 1), 11);
    const auto white = [](int, int) { return 255; };
    EXPECT_EQ(predict_one(white, {1, 1}, 0), 255);
    EXPECT_EQ(predict_one(white, {1, 1}, 1), 255);
    const auto lower_ones = [](int, int y) { return y == 1 ? 1 : 0; };  // a, b = 0, 0; c, d = 1, 1
    EXPECT_EQ(predict_one(lower_ones, {1, 1}, 0), 1);
    EXPECT_EQ(predict_one(lower_ones, {1, 1}, 1), 0);
    const auto one_zero = [](int x, int y) { return x == 1 && y == 1 ? 0 : 1; };  // 1, 1, 1, 0
    EXPECT_EQ(predict_one(one_zero, {1, 1}, 0), 1);
    EXPECT_EQ(predict_one(one_zero, {1, 1}, 1), 1);
    uint8_t pred[64], dst[64];
    int16_t res[64];
    for (int i = 0; i < 64; ++i) pred[i] = i % 2 ? 250 : 3, res[i] = i % 2 ? 10 : -10;
    ASSERT_EQ(kvtiReconBlock_H263(pred, res, dst, 8), 0);
    EXPECT_EQ(dst[1], 255);
    EXPECT_EQ(dst[0], 0);
    const uint8_t zeros[64] = {}, ones[64] = {1, 1, 1, 1, 1, 1, 1, 1};
    ASSERT_EQ(kvtiAverageBlock_MPEG4_8u(zeros, 8, ones, 8, dst, 8), 0);
    EXPECT_EQ(dst[0], 1);
}

// ---- Argument checks ---------------------------------------------------------------------------

TEST(Mpeg4Recon, ChecksInOrderWriteNothing) {
    uint8_t src[40 * 17] = {}, dst[40 * 16];
    const int16_t res[256] = {};
    const KvtMotionVec mv = {0, 0};
    std::memset(dst, 0xA5, sizeof dst);
    using Copy = decltype(&kvtiCopyMB_H263_8u);
    struct {
        Copy fn;
        int n;
        KvtStatus short_step;
    } const copies[] = {{kvtiCopyMB_H263_8u, 16, kvtStsStepBelowMB},
                        {kvtiCopyBlock_H263_8u, 8, kvtStsStepBelowBlock},
                        {kvtiCopyApproxHMB_H263_8u, 16, kvtStsStepBelowBlock},
                        {kvtiCopyApproxHBlock_H263_8u, 8, kvtStsStepBelowBlock},
                        {kvtiCopyApproxVMB_H263_8u, 16, kvtStsStepBelowBlock},
                        {kvtiCopyApproxVBlock_H263_8u, 8, kvtStsStepBelowBlock},
                        {kvtiCopyApproxHVMB_H263_8u, 16, kvtStsStepBelowBlock},
                        {kvtiCopyApproxHVBlock_H263_8u, 8, kvtStsStepBelowBlock}};
    for (const auto& c : copies) {
        EXPECT_EQ(c.fn(nullptr, dst, 0), kvtStsNullPointer);
        EXPECT_EQ(c.fn(src, nullptr, 40), kvtStsNullPointer);
        EXPECT_EQ(c.fn(src, dst, c.n - 1), c.short_step) << c.n;
    }
    EXPECT_EQ(kvtiReconBlock_H263(src, nullptr, dst, 8), kvtStsNullPointer);
    EXPECT_EQ(kvtiReconBlock_H263(src, res, dst, 7), kvtStsStepBelowBlock);
    EXPECT_EQ(kvtiReconBlock_H263_I(dst, res, 7), kvtStsStepBelowBlock);
    EXPECT_EQ(kvtiReconBlock_H263_I(dst, nullptr, 8), kvtStsNullPointer);
    EXPECT_EQ(kvtiReconMB_H263(src, res, nullptr, 16), kvtStsNullPointer);
    EXPECT_EQ(kvtiReconMB_H263(src, res, dst, 15), kvtStsStepBelowMB);
    EXPECT_EQ(kvtiReconMB_H263_I(dst, res, 15), kvtStsStepBelowMB);
    EXPECT_EQ(kvtiReconMB_H263_I(nullptr, res, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtiReconBlock_8x8(nullptr, res, dst, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtiReconBlock_8x8(src, res, dst, 7), kvtStsStepBelow8);
    EXPECT_EQ(kvtiCopyMBHalfpel_MPEG4_8u(nullptr, 40, dst, 40, &mv, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtiCopyBlockHalfpel_MPEG4_8u(src, 40, nullptr, 40, &mv, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtiReconBlockHalfpel_MPEG4_8u(src, 40, res, nullptr, 40, &mv, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtiAverageMB_MPEG4_8u(src, 40, nullptr, 40, dst, 40), kvtStsNullPointer);
    EXPECT_EQ(kvtiAverageBlock_MPEG4_8u(src, 40, src, 40, nullptr, 40), kvtStsNullPointer);
    EXPECT_EQ(kvtiAverageMB_MPEG4_8u_I(nullptr, 40, dst, 40), kvtStsNullPointer);
    EXPECT_EQ(kvtiAverageBlock_MPEG4_8u_I(src, 40, nullptr, 40), kvtStsNullPointer);
    // OBMC: reference, destination, then the five vectors, all before the step.
    const KvtMotionVec* v[5] = {&mv, &mv, &mv, &mv, &mv};
    EXPECT_EQ(kvtiPredictBlock_OBMC_8u(nullptr, dst, 0, v[0], v[1], v[2], v[3], v[4]), kvtStsNullPointer);
    EXPECT_EQ(kvtiPredictBlock_OBMC_8u(src + 41, dst, 7, v[0], v[1], v[2], v[3], v[4]), kvtStsStepBelowBlock);
    for (int i = 0; i < 5; ++i) {
        const KvtMotionVec* w[5] = {&mv, &mv, &mv, &mv, &mv};
        w[i] = nullptr;
        EXPECT_EQ(kvtiPredictBlock_OBMC_8u(src + 41, dst, 0, w[0], w[1], w[2], w[3], w[4]), kvtStsNullPointer)
            << i;
        EXPECT_EQ(kvtiOBMCHalfpel_MPEG4_8u(src + 41, 40, dst, 40, w[0], w[1], w[2], w[3], w[4], 0),
                  kvtStsNullPointer)
            << i;
    }
    EXPECT_EQ(kvtiOBMCHalfpel_MPEG4_8u(src, 40, nullptr, 40, v[0], v[1], v[2], v[3], v[4], 0),
              kvtStsNullPointer);
    for (uint8_t x : dst) ASSERT_EQ(x, 0xA5);
}

}  // namespace
