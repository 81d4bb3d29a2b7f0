// H.264 transform and quantization: the tables against the standard's definitions, argument
// checks, anchors written from the formulas, encode-decode round trips whose error the quantizer
// step bounds, and every tier against the oracle at every QP.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>

#include "checkasm.h"
#include "h264/quant_dsp.h"
#include "h264/tables.h"
#include "h264/transform_dsp.h"
#include "kvtvc.h"
#include "tsv.h"

using namespace kvt;
using namespace kvt::test;

namespace {

// The standard's dequantization scale v (H.264 8.5.12.1) and the model encoder's factors, by
// QP % 6 and position class (0: both coordinates even, 1: both odd, 2: the others).
constexpr int kV[6][3] = {{10, 16, 13}, {11, 18, 14}, {13, 20, 16}, {14, 23, 18}, {16, 25, 20}, {18, 29, 23}};
constexpr int kMF[6][3] = {{13107, 5243, 8066}, {11916, 4660, 7490}, {10082, 4194, 6554},
                           {9362, 3647, 5825},  {8192, 3355, 5243},  {7282, 2893, 4559}};

constexpr int kMATR[3] = {16, 25, 20};  // SP/SI weights by class
constexpr double kStep[6] = {0.625, 0.6875, 0.8125, 0.875, 1.0, 1.125};

int cls(int i) { return (i / 4 % 2 == 0 && i % 2 == 0) ? 0 : (i / 4 % 2 == 1 && i % 2 == 1) ? 1 : 2; }
int floor_div(int64_t a, int64_t b) { return int(std::floor(double(a) / double(b))); }
double qstep(int qp) { return kStep[qp % 6] * (1 << qp / 6); }

using Blk = std::array<int16_t, 16>;

// Random coefficients: small, full 16-bit range, the 16-bit limits only, or sparse.
Blk random_block(Rng& rng, int pattern) {
    Blk b;
    for (int16_t& v : b) {
        constexpr int kLimits[4] = {-32768, 32767, 0, -1};
        const int r[4] = {rng.uniform(-300, 300), rng.uniform(-32768, 32767), kLimits[rng.uniform(0, 3)],
                          rng.uniform(0, 5) ? 0 : rng.uniform(-40, 40)};
        v = int16_t(r[pattern]);
    }
    return b;
}

// The zigzag scan as the caller's scan-position table: the scan index of each raster position.
std::array<int16_t, 16> zigzag_positions() {
    std::array<int16_t, 16> pos{};
    for (const TsvRow& r : read_table("h264_scan_4x4.tsv"))
        pos[size_t(r.num("zigzag"))] = int16_t(r.num("scan_index"));
    return pos;
}

// Inverse core transform of one line written out per output (H.264 8.5.12.2, no wrap).
void inverse_line(int* v, int s) {
    const int a0 = v[0], a1 = v[s], a2 = v[2 * s], a3 = v[3 * s];
    v[0] = a0 + a1 + a2 + floor_div(a3, 2), v[s] = a0 + floor_div(a1, 2) - a2 - a3;
    v[2 * s] = a0 - floor_div(a1, 2) - a2 + a3, v[3 * s] = a0 - a1 + a2 - floor_div(a3, 2);
}

// The forward core transform as the matrix product Cf X Cf^T.
std::array<int, 16> forward_matrix(const int* x) {
    constexpr int C[4][4] = {{1, 1, 1, 1}, {2, 1, -1, -2}, {1, -1, -1, 1}, {1, -2, 2, -1}};
    std::array<int, 16> out{};
    for (int u = 0; u < 4; ++u)
        for (int v = 0; v < 4; ++v)
            for (int i = 0; i < 4; ++i)
                for (int j = 0; j < 4; ++j) out[size_t(4 * u + v)] += C[u][i] * x[4 * i + j] * C[v][j];
    return out;
}

}  // namespace

TEST(H264Tables, FollowTheStandardsDefinitions) {
    using namespace kvt::h264;
    for (int qp = 0; qp < 52; ++qp)
        for (int k = 0; k < 3; ++k) EXPECT_EQ(InvQuantTable[qp][k], kV[qp % 6][k] << qp / 6) << qp;
    for (int qp = 0; qp < 52; ++qp)
        EXPECT_EQ(InvQuantLuma16x16DCTable[qp], qp < 12 ? kV[qp % 6][0] : kV[qp % 6][0] << (qp / 6 - 2))
            << qp;
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(QuantIndex[i], cls(i));
        EXPECT_EQ(MATR[i], kMATR[cls(i)]);
        for (int r = 0; r < 6; ++r) EXPECT_EQ(QuantCoef[size_t(r)][size_t(i)], kMF[r][cls(i)]);
    }
    for (int r = 0; r < 6; ++r)
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(FwdQuantTable[r][k], kMF[r][k]);
            // The forward factor inverts the scale: MF * v * weight / 16 = 2^17 (nearly).
            EXPECT_NEAR(double(kMF[r][k]) * kV[r][k] * kMATR[k] / 16 / (1 << 17), 1.0, 0.001);
        }
    for (int qp = 0; qp < 54; ++qp) EXPECT_TRUE(dc_q[size_t(qp)] == qp / 6 && dc_rems[size_t(qp)] == qp % 6);
    for (int q = 0; q < 9; ++q)
        EXPECT_TRUE(dc_rounds[0][q] == (1 << (16 + q)) / 6 && dc_rounds[1][q] == (1 << (16 + q)) / 3) << q;
    for (int i = -256; i < 512; ++i) EXPECT_EQ(ClampTbl[size_t(i + 256)], std::clamp(i, 0, 255));
}

// Checks in the documented order; a failing call writes nothing.
TEST(H264Transform, ArgumentChecks) {
    Kvt16s c[16], t[16], dc = 0, scan[16] = {};
    Kvt8u pred[64], dst[64], last = 0xEE;
    Kvt8s count = 0x55;
    std::fill(c, c + 16, 7), std::fill(t, t + 16, 7), std::fill(pred, pred + 64, 9),
        std::fill(dst, dst + 64, 9);
    const auto untouched = [&] {
        return std::all_of(c, c + 16, [](Kvt16s v) { return v == 7; }) &&
               std::all_of(t, t + 16, [](Kvt16s v) { return v == 7; }) &&
               std::all_of(dst, dst + 64, [](Kvt8u v) { return v == 9; }) && count == 0x55 && last == 0xEE;
    };
    struct Case {
        const char* what;
        KvtStatus got, want;
    };
    const Case cases[] = {
        {"luma DC null", kvtiTransformDequantLumaDC_H264_16s_C1I(nullptr, 60), kvtStsNullPointer},
        {"luma DC QP 52", kvtiTransformDequantLumaDC_H264_16s_C1I(c, 52), kvtStsOutOfRange},
        {"luma DC QP -1", kvtiTransformDequantLumaDC_H264_16s_C1I(c, -1), kvtStsOutOfRange},
        {"chroma DC null", kvtiTransformDequantChromaDC_H264_16s_C1I(nullptr, 0), kvtStsNullPointer},
        {"chroma DC QP 52", kvtiTransformDequantChromaDC_H264_16s_C1I(c, 52), kvtStsOutOfRange},
        {"residual null", kvtiDequantTransformResidual_H264_16s_C1I(nullptr, 6, &dc, 1, 52),
         kvtStsNullPointer},
        {"residual QP before step", kvtiDequantTransformResidual_H264_16s_C1I(c, 6, &dc, 1, 52),
         kvtStsOutOfRange},
        {"residual step 6", kvtiDequantTransformResidual_H264_16s_C1I(c, 6, &dc, 1, 51), kvtStsBadStep},
        {"add pred null", kvtiDequantTransformResidualAndAdd_H264_16s_C1I(nullptr, c, &dc, dst, 4, 4, 60, 1),
         kvtStsNullPointer},
        {"add dst null", kvtiDequantTransformResidualAndAdd_H264_16s_C1I(pred, c, &dc, nullptr, 4, 4, 60, 1),
         kvtStsNullPointer},
        {"add QP -1",
         kvtiDequantTransformResidualAndAdd_H264_16s_C1I(pred, nullptr, nullptr, dst, 4, 4, -1, 0),
         kvtStsOutOfRange},
        {"add DC-only, no sources",
         kvtiDequantTransformResidualAndAdd_H264_16s_C1I(pred, nullptr, nullptr, dst, 4, 4, 0, 1),
         kvtStsNullPointer},
        {"prediction null", kvtiTransformPrediction_H264_8u16s_C1(pred, 4, nullptr), kvtStsNullPointer},
        {"SP levels null", kvtiDequantTransformResidual_SISP_H264_16s_C1I(nullptr, t, &dc, 1, 0, 0, 0),
         kvtStsNullPointer},
        {"SP prediction null", kvtiDequantTransformResidual_SISP_H264_16s_C1I(c, nullptr, &dc, 1, 0, 0, 0),
         kvtStsNullPointer},
        {"SP chroma null", kvtiTransformDequantChromaDC_SISP_H264_16s_C1I(c, nullptr, 0, 0, 0),
         kvtStsNullPointer},
        {"fwd chroma count null", kvtiTransformQuantChromaDC_H264_16s_C1I(c, t, 60, nullptr, 1, 1),
         kvtStsNullPointer},
        {"fwd chroma QP 40", kvtiTransformQuantChromaDC_H264_16s_C1I(c, t, 40, &count, 1, 1),
         kvtStsOutOfRange},
        {"fwd luma DC scan null", kvtiTransformQuantLumaDC_H264_16s_C1I(c, t, 60, &count, 1, nullptr, &last),
         kvtStsNullPointer},
        {"fwd luma DC last null", kvtiTransformQuantLumaDC_H264_16s_C1I(c, t, 60, &count, 1, scan, nullptr),
         kvtStsNullPointer},
        {"fwd luma DC QP 52", kvtiTransformQuantLumaDC_H264_16s_C1I(c, t, 52, &count, 1, scan, &last),
         kvtStsOutOfRange},
        {"fwd residual count null", kvtiTransformQuantResidual_H264_16s_C1I(c, 60, nullptr, 1, scan, &last),
         kvtStsNullPointer},
        {"fwd residual QP -1", kvtiTransformQuantResidual_H264_16s_C1I(c, -1, &count, 1, scan, &last),
         kvtStsOutOfRange},
    };
    for (const Case& k : cases) EXPECT_EQ(k.got, k.want) << k.what;
    EXPECT_TRUE(untouched());
}

// The Part's worked values and the decided points.
TEST(H264Transform, EdgeCases) {
    Kvt16s c[16] = {1};
    ASSERT_EQ(kvtiDequantTransformResidual_H264_16s_C1I(c, 8, nullptr, 0, 0), kvtStsOk);
    EXPECT_TRUE(std::all_of(c, c + 16, [](Kvt16s v) { return v == 0; }));  // (10 + 32) >> 6
    // The DC without a DC pointer is the 16-bit product: 4096 * 10 = -24576, residual -384.
    Kvt16s d[16] = {4096};
    ASSERT_EQ(kvtiDequantTransformResidual_H264_16s_C1I(d, 8, nullptr, 0, 0), kvtStsOk);
    EXPECT_EQ(d[15], -384);
    // The fused form limits that residual to -256 (and 32767 from a DC pointer to 256).
    Kvt8u pred[16], out[16];
    std::fill(pred, pred + 16, 255);
    Kvt16s e[16] = {4096}, big = 32767;
    ASSERT_EQ(kvtiDequantTransformResidualAndAdd_H264_16s_C1I(pred, e, nullptr, out, 4, 4, 0, 0), kvtStsOk);
    EXPECT_EQ(out[5], 0);
    EXPECT_TRUE(e[0] == 4096 && e[3] == 0);  // the DC-only path only reads the block
    std::fill(pred, pred + 16, 0);
    ASSERT_EQ(kvtiDequantTransformResidualAndAdd_H264_16s_C1I(pred, nullptr, &big, out, 4, 4, 51, 1),
              kvtStsOk);
    EXPECT_EQ(out[15], 255);
    // A luma DC of 1 at QP 0: every value of the Hadamard is +-1, then (f * 10 + 2) >> 2.
    Kvt16s l[16] = {1};
    ASSERT_EQ(kvtiTransformDequantLumaDC_H264_16s_C1I(l, 0), kvtStsOk);
    EXPECT_TRUE(std::all_of(l, l + 16, [](Kvt16s v) { return v == 3; }));
    // A block whose only level is at raster position 0 reports -1; the last position is 0.
    Kvt16s r[16] = {};
    std::fill(r, r + 16, 40);
    Kvt8s count = 0;
    Kvt8u last = 99;
    const std::array<int16_t, 16> scan = zigzag_positions();
    ASSERT_EQ(kvtiTransformQuantResidual_H264_16s_C1I(r, 28, &count, 1, scan.data(), &last), kvtStsOk);
    EXPECT_EQ(count, -1);
    EXPECT_EQ(last, 0);
}

// The smallest transformed luma DC value whose level at QP qp is `level` (0 when out of reach).
static int luma_dc_for_level(int qp, int level) {
    for (int t = 0; t < 32768; ++t)
        if (((t * kMF[qp % 6][0] + (1 << (16 + qp / 6)) / 3) >> (16 + qp / 6)) == level) return t;
    return 0;
}

// The limit is a level magnitude of 2063: one more returns -13, writes the levels and leaves the
// count and last position alone. Luma DC values given transformed reach it exactly; a flat residual
// block (one coefficient, 16 s) crosses it.
TEST(H264Transform, LevelLimit) {
    const std::array<int16_t, 16> scan = zigzag_positions();
    for (int qp = 0; qp < 52; ++qp)
        for (int level : {2063, 2064}) {
            const int t = luma_dc_for_level(qp, level);
            if (!t) continue;
            Kvt16s c[16] = {}, tb[16] = {};
            tb[5] = Kvt16s(-t);
            Kvt8s count = 99;
            Kvt8u last = 99;
            const KvtStatus st =
                kvtiTransformQuantLumaDC_H264_16s_C1I(c, tb, qp, &count, 0, scan.data(), &last);
            EXPECT_EQ(st, level == 2063 ? kvtStsOk : kvtStsLevelOverflow) << "QP " << qp;
            EXPECT_EQ(c[5], -level);
            EXPECT_EQ(count, level == 2063 ? 1 : 99);
            EXPECT_EQ(last, level == 2063 ? scan[5] : 99);
        }
    int s = 1;
    while ((16 * s * 13107 + (1 << 15) / 3) >> 15 <= 2063) ++s;
    for (int v : {s - 1, s}) {
        Kvt16s b[16];
        std::fill(b, b + 16, Kvt16s(v));
        Kvt8s count = 99;
        Kvt8u last = 99;
        EXPECT_EQ(kvtiTransformQuantResidual_H264_16s_C1I(b, 0, &count, 1, scan.data(), &last),
                  v == s ? kvtStsLevelOverflow : kvtStsOk);
        EXPECT_EQ(count, v == s ? 99 : -1);
    }
}

// The public inverse functions against anchors from the formulas, every QP, on blocks small
// enough that no 16-bit sum wraps.
TEST(H264Transform, InverseMatchesFormulas) {
    Rng rng(test_seed() + 2);
    for (int qp = 0; qp < 52; ++qp)
        for (int trial = 0; trial < 20; ++trial) {
            // Sparse levels small enough for the 16-bit sums; a block whose sums would wrap is drawn again.
            const int lim = std::max(1, 4000 / (kV[qp % 6][1] << qp / 6));
            Blk b;
            for (int16_t& v : b) v = int16_t(rng.coin() ? 0 : rng.uniform(-lim, lim));
            int w[16];
            for (int i = 0; i < 16; ++i) w[i] = b[size_t(i)] * (kV[qp % 6][cls(i)] << qp / 6);
            for (int k = 0; k < 4; ++k) inverse_line(w + 4 * k, 1);
            const auto wraps = [&] {
                return std::any_of(w, w + 16, [](int v) { return v < -32768 || v > 32767; });
            };
            if (wraps()) continue;
            for (int k = 0; k < 4; ++k) inverse_line(w + k, 4);
            if (wraps()) continue;
            Blk got = b;
            ASSERT_EQ(kvtiDequantTransformResidual_H264_16s_C1I(got.data(), 8, nullptr, 1, qp), kvtStsOk);
            for (int i = 0; i < 16; ++i)
                ASSERT_EQ(got[size_t(i)], floor_div(w[i] + 32, 64)) << "QP " << qp << " at " << i;

            // Luma DC: Hadamard as the matrix product H X H, then the QP's rounding.
            constexpr int H[4][4] = {{1, 1, 1, 1}, {1, 1, -1, -1}, {1, -1, -1, 1}, {1, -1, 1, -1}};
            Blk l = b;
            ASSERT_EQ(kvtiTransformDequantLumaDC_H264_16s_C1I(l.data(), qp), kvtStsOk);
            const int t = qp < 12 ? kV[qp % 6][0] : kV[qp % 6][0] << (qp / 6 - 2);
            for (int u = 0; u < 4; ++u)
                for (int v = 0; v < 4; ++v) {
                    int f = 0;
                    for (int i = 0; i < 4; ++i)
                        for (int j = 0; j < 4; ++j) f += H[u][i] * b[size_t(4 * i + j)] * H[j][v];
                    const int want = qp < 6    ? floor_div(f * t + 2, 4)
                                     : qp < 12 ? floor_div(f * t + 1, 2)
                                               : f * t;
                    ASSERT_EQ(l[size_t(4 * u + v)], int16_t(want)) << "luma DC, QP " << qp;
                }
            // Chroma DC: 2x2 transform of the raster 2x2 block, then (f * v(QP, 0)) >> 1.
            Kvt16s ch[4] = {b[0], b[1], b[2], b[3]};
            ASSERT_EQ(kvtiTransformDequantChromaDC_H264_16s_C1I(ch, qp), kvtStsOk);
            for (int k = 0; k < 4; ++k) {
                const int f = b[0] + (k & 1 ? -1 : 1) * b[1] + (k & 2 ? -1 : 1) * b[2] +
                              (k == 1 || k == 2 ? -1 : 1) * b[3];
                ASSERT_EQ(ch[k], int16_t(floor_div(f * (kV[qp % 6][0] << qp / 6), 2)))
                    << "chroma DC, QP " << qp;
            }
        }
}

// The forward quantizer against the formulas: the transform as a matrix product, level =
// (|c| * MF + f) >> (15 + q), the signed count and the last zigzag position.
TEST(H264Transform, ForwardQuantMatchesFormulas) {
    const std::array<int16_t, 16> scan = zigzag_positions();
    Rng rng(test_seed() + 3);
    for (int qp = 0; qp < 52; ++qp)
        for (int trial = 0; trial < 20; ++trial) {
            int x[16];
            Blk b;
            for (int i = 0; i < 16; ++i)
                b[size_t(i)] = int16_t(x[i] = rng.uniform(-255, 255) >> rng.uniform(0, 8));
            const bool intra = rng.coin();
            const std::array<int, 16> c = forward_matrix(x);
            Blk want;
            int nonzero = 0, last = 0;
            for (int i = 0; i < 16; ++i) {
                const int q = qp / 6, f = (1 << (15 + q)) / (intra ? 3 : 6);
                const int m = (std::abs(c[size_t(i)]) * kMF[qp % 6][cls(i)] + f) >> (15 + q);
                want[size_t(i)] = int16_t(c[size_t(i)] < 0 ? -m : m);
                if (m) ++nonzero, last = std::max(last, int(scan[size_t(i)]));
            }
            Kvt8s count = 0;
            Kvt8u lastpos = 0;
            ASSERT_EQ(
                kvtiTransformQuantResidual_H264_16s_C1I(b.data(), qp, &count, intra, scan.data(), &lastpos),
                kvtStsOk);
            ASSERT_EQ(b, want) << "QP " << qp;
            EXPECT_EQ(count, want[0] ? -nonzero : nonzero);
            EXPECT_EQ(lastpos, last);
        }
}

// Quantize a random residual, dequantize and inverse-transform it: the error stays within what
// the quantizer step allows (coefficient errors up to (1 - rounding) steps, summed over the
// orthonormal basis: 4 x that per sample, plus the integer rounding).
TEST(H264Transform, ResidualRoundTrip) {
    Rng rng(test_seed() + 4);
    for (int qp = 0; qp < 52; ++qp)
        for (int trial = 0; trial < 40; ++trial) {
            const bool intra = trial & 1;
            Blk r, b;
            for (int16_t& v : r) v = int16_t(rng.uniform(-128, 127));
            b = r;
            Kvt8s count;
            Kvt8u last;
            const std::array<int16_t, 16> scan = zigzag_positions();
            ASSERT_EQ(
                kvtiTransformQuantResidual_H264_16s_C1I(b.data(), qp, &count, intra, scan.data(), &last),
                kvtStsOk);
            ASSERT_EQ(kvtiDequantTransformResidual_H264_16s_C1I(b.data(), 8, nullptr, 1, qp), kvtStsOk);
            const double bound = 4 * (intra ? 2.0 / 3 : 5.0 / 6) * qstep(qp) + 2;
            for (int i = 0; i < 16; ++i)
                ASSERT_LE(std::abs(b[size_t(i)] - r[size_t(i)]), bound) << "QP " << qp;
        }
}

// A 16x16 intra macroblock and an 8x8 chroma block through the whole chain: AC levels by the
// residual quantizer, DC levels by the DC quantizers, then the DC inverse transforms feeding the
// residual inverse transform through its DC pointer.
TEST(H264Transform, DcRoundTrip) {
    Rng rng(test_seed() + 5);
    const std::array<int16_t, 16> scan = zigzag_positions();
    for (int blocks : {16, 4})
        for (int qp = 0; qp < (blocks == 16 ? 52 : 40); ++qp)
            for (int trial = 0; trial < 10; ++trial) {
                Blk res[16], lv[16];
                Kvt16s dc[16], t[16];
                const int base = rng.uniform(-60, 60);  // DC levels stay below the 2063 limit at QP 0
                for (int k = 0; k < blocks; ++k) {
                    dc[k] = 0;
                    for (int16_t& v : res[k])
                        dc[k] = Kvt16s(dc[k] + (v = int16_t(base + rng.uniform(-15, 15))));
                    lv[k] = res[k];
                    Kvt8s n;
                    Kvt8u last;
                    ASSERT_EQ(
                        kvtiTransformQuantResidual_H264_16s_C1I(lv[k].data(), qp, &n, 1, scan.data(), &last),
                        kvtStsOk);
                }
                Kvt8s n;
                Kvt8u last;
                if (blocks == 16) {
                    ASSERT_EQ(kvtiTransformQuantLumaDC_H264_16s_C1I(dc, t, qp, &n, 1, scan.data(), &last),
                              kvtStsOk);
                    ASSERT_EQ(kvtiTransformDequantLumaDC_H264_16s_C1I(dc, qp), kvtStsOk);
                } else {
                    ASSERT_EQ(kvtiTransformQuantChromaDC_H264_16s_C1I(dc, t, qp, &n, 1, 1), kvtStsOk);
                    ASSERT_EQ(kvtiTransformDequantChromaDC_H264_16s_C1I(dc, qp), kvtStsOk);
                }
                const double bound = 4 * (2.0 / 3) * qstep(qp) + 3;
                for (int k = 0; k < blocks; ++k) {
                    ASSERT_EQ(kvtiDequantTransformResidual_H264_16s_C1I(lv[k].data(), 8, &dc[k], 1, qp),
                              kvtStsOk);
                    for (int i = 0; i < 16; ++i)
                        ASSERT_LE(std::abs(lv[k][size_t(i)] - res[k][size_t(i)]), bound)
                            << blocks << " blocks, QP " << qp;
                }
            }
}

// SP decoding: the levels of (original - prediction) in the transform domain, dequantized with QP
// and added to the transformed prediction, requantized with QS: the reconstruction stays within
// both steps of the original. Without levels the chroma DC path returns the prediction's DC
// coefficients scaled to the DC-pointer domain (x4).
TEST(H264Transform, SpRoundTrip) {
    Rng rng(test_seed() + 6);
    for (int qp = 0; qp < 40; ++qp)
        for (int trial = 0; trial < 20; ++trial) {
            const int qs = rng.uniform(0, 30);
            Kvt8u o[16], p[16];
            for (int i = 0; i < 16; ++i)
                o[i] = Kvt8u(rng.uniform(30, 220)),
                p[i] = Kvt8u(std::clamp(o[i] + rng.uniform(-20, 20), 0, 255));
            Kvt16s to[16], tp[16], lv[16];
            kvtiTransformPrediction_H264_8u16s_C1(o, 4, to);
            kvtiTransformPrediction_H264_8u16s_C1(p, 4, tp);
            for (int i = 0; i < 16; ++i) {
                const double scale = (kV[qp % 6][cls(i)] << qp / 6) * kMATR[cls(i)] / 64.0;
                lv[i] = Kvt16s(std::lround((to[i] - tp[i]) / scale));
            }
            ASSERT_EQ(kvtiDequantTransformResidual_SISP_H264_16s_C1I(lv, tp, nullptr, 1, qp, qs, 0),
                      kvtStsOk);
            const double bound = 4 * (qstep(qp) / 2 + qstep(qs) / 2) + 2;
            for (int i = 0; i < 16; ++i)
                ASSERT_LE(std::abs(lv[i] - o[i]), bound) << "QP " << qp << " QS " << qs;

            Kvt16s zero[4] = {}, pdc[4] = {tp[0], Kvt16s(tp[0] + 40), Kvt16s(tp[0] - 40), tp[0]};
            ASSERT_EQ(kvtiTransformDequantChromaDC_SISP_H264_16s_C1I(zero, pdc, qp, qs, 1), kvtStsOk);
            for (int k = 0; k < 4; ++k)
                EXPECT_LE(std::abs(zero[k] - 4 * pdc[k]), 2 * (kV[qs % 6][0] << qs / 6) + 4) << "QS " << qs;
        }
}

// Every tier against the oracle, every slot at every QP, on random, full-range, limit-only and
// sparse blocks; strided blocks at random (also negative) steps.
TEST(H264Transform, EveryTierMatchesOracle) {
    compare_tiers<TransformDsp>(
        "transform", init_transform_dsp, ref::init_transform, 30,
        [](Rng& rng, const TransformDsp& d, Outputs& out) {
            for (int qp = 0; qp < 52; ++qp) {
                const std::string q = " QP " + std::to_string(qp);
                Blk b = random_block(rng, rng.uniform(0, 3));
                const Kvt16s dc = Kvt16s(rng.next());
                const Kvt16s* dcp = rng.coin() ? &dc : nullptr;
                Blk l = b;
                out.add("luma DC" + q, d.luma_dc(l.data(), qp)), out.add("luma DC out" + q, l);
                l = b;
                out.add("chroma DC" + q, d.chroma_dc(l.data(), qp)), out.add("chroma DC out" + q, l);
                for (int dc_only = 0; dc_only < 2; ++dc_only) {
                    const std::string what = (dc_only ? " DC-only" : " residual") + q;
                    const int step = (rng.coin() ? 2 : -2) * rng.uniform(4, 20);  // bytes, 16-bit aligned
                    Plane<uint8_t> s(8, 4, step, size_t(rng.uniform(0, 7)) * 2);
                    for (int y = 0; y < 4; ++y) std::memcpy(s.row(y), b.data() + 4 * y, 8);
                    auto* sp = reinterpret_cast<int16_t*>(s.data());
                    const int16_t* factors = h264::InvQuantCoef[size_t(qp)].data();
                    out.add(what, (dc_only ? d.residual_dc : d.residual)(sp, s.step(), dcp, factors));
                    out.add_buffer(what, s);

                    Plane<uint8_t> pred(4, 4, (rng.coin() ? 1 : -1) * rng.uniform(4, 40)),
                        dst(4, 4, (rng.coin() ? 1 : -1) * rng.uniform(4, 40), size_t(rng.uniform(0, 15)));
                    for (int y = 0; y < 4; ++y) rng.fill(pred.row(y), 4, 0, rng.coin() ? 255 : 20);
                    Guarded<int16_t> c(16, size_t(rng.uniform(0, 7)) * 2);
                    std::copy(b.begin(), b.end(), c.data());
                    const bool no_block = dc_only && dcp && rng.coin();
                    KvtStatus st;
                    if (dcp)
                        st = (dc_only ? d.residual_dc_add_dc : d.residual_add_dc)(
                            pred.data(), no_block ? nullptr : c.data(), dcp, dst.data(), pred.step(),
                            dst.step(), qp);
                    else
                        st = (dc_only ? d.residual_dc_add : d.residual_add)(
                            pred.data(), c.data(), factors, dst.data(), pred.step(), dst.step());
                    out.add(what + " add", st);
                    out.add_buffer(what + " add", dst), out.add_buffer(what + " add block", c);
                }
                Kvt8u px[16];
                Kvt16s tp[16];
                rng.fill(px, 16, 0, 255);
                out.add("prediction", d.transform_prediction(px, 4, tp)), out.add("prediction out", tp);
                Blk sp = random_block(rng, 0);
                const int qs = rng.uniform(0, 51), si = rng.coin();
                out.add("SP" + q, d.sisp_residual(sp.data(), tp, dcp, rng.coin(), qp, qs, si)),
                    out.add("SP out" + q, sp);
                out.add("SP DC" + q, d.sisp_chroma_dc(sp.data(), tp, qp, qs, si)),
                    out.add("SP DC out" + q, sp);
            }
        });
}

TEST(H264Quant, EveryTierMatchesOracle) {
    compare_tiers<QuantDsp>(
        "quant", init_quant_dsp, ref::init_quant, 40, [](Rng& rng, const QuantDsp& d, Outputs& out) {
            std::array<int16_t, 16> scan = zigzag_positions();
            if (rng.coin()) rng.fill(scan.data(), 16, -32768, 32767);
            for (int qp = 0; qp < 52; ++qp) {
                const std::string q = " QP " + std::to_string(qp);
                const int pattern = rng.uniform(0, 3);
                const bool intra = rng.coin(), transform = rng.coin();
                Blk c = random_block(rng, pattern), t = random_block(rng, pattern);
                if (rng.coin())
                    t[size_t(rng.uniform(0, 15))] = Kvt16s(luma_dc_for_level(qp, rng.uniform(2063, 2064)));
                Kvt8s count = 99;
                Kvt8u last = 99;
                out.add("residual" + q, d.residual(c.data(), qp, &count, intra, scan.data(), &last));
                out.add("residual out" + q, c), out.add("count" + q, count), out.add("last" + q, last);
                c = random_block(rng, pattern);
                out.add("luma DC" + q,
                        d.luma_dc(c.data(), t.data(), qp, &count, transform, scan.data(), &last));
                out.add("luma DC out" + q, c), out.add("luma DC t" + q, t), out.add("count" + q, count);
                out.add("last" + q, last);
                if (qp < 40) {
                    out.add("chroma DC" + q, d.chroma_dc(c.data(), t.data(), qp, &count, intra, transform));
                    out.add("chroma DC out" + q, c), out.add("chroma DC t" + q, t),
                        out.add("count" + q, count);
                }
            }
        });
}
