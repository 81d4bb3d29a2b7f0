// Inverse quantization, MPEG-4 intra prediction and the inverse scans: every kernel of every tier
// against the oracle on random blocks (with guards around compact lengths); every exported
// quantizer against small anchors of the formulas for QP 1..31, bit depths 4..12 and both block
// types; the worked values of the standards; the argument checks in their documented orders.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <vector>

#include "checkasm.h"
#include "coef_codes.h"
#include "kvtvc.h"
#include "mpeg4/quant_inv_dsp.h"
#include "mpeg4/zigzag_dsp.h"

using namespace kvt;
using namespace kvt::test;

namespace {

using Block = std::array<Kvt16s, 64>;

// Levels as they come out of the decoders, with the extremes of 16 bits now and then.
Block random_block(Rng& rng) {
    Block b{};
    const int density = rng.uniform(0, 3);
    for (Kvt16s& v : b) {
        const int pick = rng.uniform(0, 99);
        if (pick < 60 - density * 15) continue;
        v = Kvt16s(pick < 95    ? random_level(rng, 300)
                   : rng.coin() ? rng.uniform(-32768, -30000)
                                : rng.uniform(30000, 32767));
    }
    return b;
}

std::array<Kvt8u, 64> random_matrix(Rng& rng) {
    std::array<Kvt8u, 64> w;
    for (Kvt8u& x : w) x = Kvt8u(rng.uniform(rng.coin() ? 1 : 8, rng.coin() ? 255 : 40));
    return w;
}

// ---- Anchors: the formulas of ISO/IEC 14496-2 7.4.3, 7.4.4 and H.263 6.2.1, one value at a time ----

int clamp(long v, int lo, int hi) { return int(std::min<long>(std::max<long>(v, lo), hi)); }

int h263_value(int level, int qp, int lo, int hi) {
    if (level == 0) return 0;
    const long magnitude = 2L * qp * std::abs(level) + (qp % 2 ? qp : qp - 1);
    return clamp(level < 0 ? -magnitude : magnitude, lo, hi);
}

int dc_scaler_of(int qp, bool chroma) {
    if (qp < 5) return 8;
    if (chroma) return qp < 25 ? (qp + 13) / 2 : qp - 6;
    return qp < 9 ? 2 * qp : qp < 25 ? qp + 8 : 2 * qp - 16;
}

void mismatch(Block& b) {
    long sum = 0;
    for (Kvt16s v : b) sum += v;
    if (sum % 2 == 0) b[63] = Kvt16s(b[63] % 2 ? b[63] - 1 : b[63] + 1);
}

// Matrix method; intra keeps entry 0 as `dc` (already reconstructed).
Block matrix_method(const Block& in, int qp, const Kvt8u* w, int lo, int hi, bool intra, int dc) {
    Block out{};
    for (int i = 0; i < 64; ++i) {
        const long l = in[size_t(i)];
        const long num = intra ? l * qp * w[i] : (l ? (2 * l + (l > 0 ? 1 : -1)) * qp * w[i] : 0);
        out[size_t(i)] = Kvt16s(clamp(num / (intra ? 8 : 16), lo, hi));  // C division truncates
    }
    if (intra) out[0] = Kvt16s(dc);
    mismatch(out);
    return out;
}

Block h263_method(const Block& in, int qp, int lo, int hi, int from) {
    Block out = in;
    for (int i = from; i < 64; ++i) out[size_t(i)] = Kvt16s(h263_value(in[size_t(i)], qp, lo, hi));
    return out;
}

}  // namespace

// Every slot of every tier against the oracle: random lengths, bounds of every bit depth, QP 1..31;
// guard bytes around the len entries of the compact forms.
TEST(QuantInv, EveryTierMatchesTheOracle) {
    compare_tiers<QuantInvDsp>(
        "inverse quantizers", init_quant_inv_dsp, ref::init_quant_inv, 600,
        [](Rng& rng, const QuantInvDsp& d, Outputs& out) {
            const int qp = rng.uniform(1, 31), bits = rng.uniform(4, 12),
                      len = rng.coin() ? 64 : rng.uniform(1, 64);
            const int hi = (1 << (bits + 3)) - 1, lo = -hi - 1, dc_scale = rng.uniform(1, 46);
            const Block src = random_block(rng);
            const std::array<Kvt8u, 64> w = random_matrix(rng);
            Guarded<Kvt16s> c(size_t(len), size_t(rng.uniform(0, 7)) * 2);
            const auto run = [&](const char* name, auto call) {
                std::copy(src.begin(), src.begin() + len, c.data());
                out.add(name, call());
                out.add_buffer(name, c);
            };
            run("h263", [&] { return d.h263(c.data(), len, qp, lo, hi); });
            run("h263_intra", [&] { return d.h263_intra(c.data(), len, qp, dc_scale, lo, hi); });
            run("h263_intradc", [&] { return d.h263_intradc(c.data(), len, qp); });
            if (len == 64) {
                run("matrix_inter", [&] { return d.matrix_inter(c.data(), qp, w.data(), lo, hi); });
                run("matrix_intra", [&] { return d.matrix_intra(c.data(), qp, w.data(), dc_scale, lo, hi); });
            }
        });
}

// The exported MPEG-4 and H.263 quantizers against the anchors for every QP, bit depth and block
// type, on random blocks with and without a matrix.
TEST(QuantInv, EveryQuantizerMatchesTheFormulasForEveryQpAndBitDepth) {
    Rng rng(test_seed());
    for (int qp = 1; qp <= 31; ++qp)
        for (int bits = 4; bits <= 12; ++bits)
            for (int type = 0; type < 2; ++type) {
                SCOPED_TRACE("QP " + std::to_string(qp) + ", bits " + std::to_string(bits) + ", type " +
                             std::to_string(type));
                const Block in = random_block(rng);
                const std::array<Kvt8u, 64> w = random_matrix(rng);
                const int hi = (1 << (bits + 3)) - 1, lo = -hi - 1, flag = rng.coin();
                const int dc = clamp(long(in[0]) * (flag ? dc_scaler_of(qp, type) : 8), lo, hi);
                const int dc8 = clamp(long(in[0]) * dc_scaler_of(qp, type), -2048, 2047);
                Block h263_intra = h263_method(in, qp, lo, hi, 1),
                      h263_intra8 = h263_method(in, qp, -2048, 2047, 1);
                h263_intra[0] = Kvt16s(dc);
                h263_intra8[0] = Kvt16s(dc8);
                const auto check = [&](const char* name, const Block& want, auto call) {
                    Block b = in;
                    EXPECT_EQ(call(b.data()), kvtStsOk) << name;
                    EXPECT_EQ(b, want) << name;
                };
                check("IntraFirst", matrix_method(in, qp, w.data(), lo, hi, true, dc), [&](Kvt16s* b) {
                    return kvtiQuantInvIntraFirst_MPEG4_16s_I(b, qp, w.data(), flag, type, bits);
                });
                check("IntraSecond", h263_intra, [&](Kvt16s* b) {
                    return kvtiQuantInvIntraSecond_MPEG4_16s_I(b, qp, flag, type, bits);
                });
                check("InterFirst", matrix_method(in, qp, w.data(), lo, hi, false, 0),
                      [&](Kvt16s* b) { return kvtiQuantInvInterFirst_MPEG4_16s_I(b, qp, w.data(), bits); });
                check("InterSecond", h263_method(in, qp, lo, hi, 0),
                      [&](Kvt16s* b) { return kvtiQuantInvInterSecond_MPEG4_16s_I(b, qp, bits); });
                if (bits != 8) continue;
                check("Intra matrix", matrix_method(in, qp, w.data(), -2048, 2047, true, dc8),
                      [&](Kvt16s* b) { return kvtiQuantInvIntra_MPEG4_16s_I(b, qp, w.data(), type); });
                check("Intra", h263_intra8,
                      [&](Kvt16s* b) { return kvtiQuantInvIntra_MPEG4_16s_I(b, qp, nullptr, type); });
                check("Inter matrix", matrix_method(in, qp, w.data(), -2048, 2047, false, 0),
                      [&](Kvt16s* b) { return kvtiQuantInvInter_MPEG4_16s_I(b, qp, w.data()); });
                check("Inter", h263_method(in, qp, -2048, 2047, 0),
                      [&](Kvt16s* b) { return kvtiQuantInvInter_MPEG4_16s_I(b, qp, nullptr); });
                check("C1I intra matrix",
                      matrix_method(in, qp, w.data(), -2048, 2047, true, clamp(in[0], -2048, 2047)),
                      [&](Kvt16s* b) { return kvtiQuantInvIntra_MPEG4_16s_C1I(b, qp, w.data()); });
                check("C1I inter", h263_method(in, qp, -2048, 2047, 0),
                      [&](Kvt16s* b) { return kvtiQuantInv_MPEG4_16s_C1I(b, qp, nullptr); });
                check("C1I inter matrix", matrix_method(in, qp, w.data(), -2048, 2047, false, 0),
                      [&](Kvt16s* b) { return kvtiQuantInv_MPEG4_16s_C1I(b, qp, w.data()); });
                check("C1I H.263 inter", h263_method(in, qp, -2048, 2047, 0),
                      [&](Kvt16s* b) { return kvtiQuantInv_H263_C1I(b, qp); });
                Block intradc = h263_method(in, qp, -2048, 2047, 1);
                intradc[0] = Kvt16s(in[0] == 255 ? 1024 : Kvt16s(in[0] * 8));
                check("C1I H.263 intra", intradc,
                      [&](Kvt16s* b) { return kvtiQuantInvIntra_H263_C1I(b, qp); });
                const int n = rng.uniform(1, 64);
                Block compact = h263_method(in, qp, -2048, 2047, 0), compact_intra = intradc;
                std::copy(in.begin() + n, in.end(), compact.begin() + n);
                std::copy(in.begin() + n, in.end(), compact_intra.begin() + n);
                check("Compact inter", compact,
                      [&](Kvt16s* b) { return kvtiQuantInvInter_Compact_H263_16s_I(b, n, qp); });
                check("Compact intra", compact_intra,
                      [&](Kvt16s* b) { return kvtiQuantInvIntra_Compact_H263_16s_I(b, n, qp); });
            }
}

// Worked values: DC scalers at the breaks, the H.263 method with even and odd QP, the matrix method
// with and without a mismatch correction, INTRADC 255, and the whole-block forms' QP clamp.
TEST(QuantInv, WorkedValues) {
    const std::array<Kvt8u, 64> w16 = [] {
        std::array<Kvt8u, 64> w;
        w.fill(16);
        return w;
    }();
    const auto one = [](int pos, int v) {
        Block b{};
        b[size_t(pos)] = Kvt16s(v);
        return b;
    };
    struct Case {
        const char* what;
        Block in;
        std::function<KvtStatus(Kvt16s*)> call;
        int pos, want, want63;
    } cases[] = {
        {"luma QP 4 DC", one(0, 1), [](Kvt16s* b) { return kvtiQuantInvIntra_MPEG4_16s_I(b, 4, nullptr, 0); },
         0, 8, 0},
        {"luma QP 5 DC", one(0, 1), [](Kvt16s* b) { return kvtiQuantInvIntra_MPEG4_16s_I(b, 5, nullptr, 0); },
         0, 10, 0},
        {"luma QP 24 DC", one(0, 1),
         [](Kvt16s* b) { return kvtiQuantInvIntra_MPEG4_16s_I(b, 24, nullptr, 0); }, 0, 32, 0},
        {"luma QP 25 DC", one(0, 1),
         [](Kvt16s* b) { return kvtiQuantInvIntra_MPEG4_16s_I(b, 25, nullptr, 0); }, 0, 34, 0},
        {"chroma QP 24 DC", one(0, 1),
         [](Kvt16s* b) { return kvtiQuantInvIntra_MPEG4_16s_I(b, 24, nullptr, 1); }, 0, 18, 0},
        {"chroma QP 25 DC", one(0, 1),
         [](Kvt16s* b) { return kvtiQuantInvIntra_MPEG4_16s_I(b, 25, nullptr, 1); }, 0, 19, 0},
        {"QP 4, L 1", one(5, 1), [](Kvt16s* b) { return kvtiQuantInvInter_MPEG4_16s_I(b, 4, nullptr); }, 5,
         11, 0},
        {"QP 5, L -1", one(5, -1), [](Kvt16s* b) { return kvtiQuantInvInter_MPEG4_16s_I(b, 5, nullptr); }, 5,
         -15, 0},
        {"matrix QP 1, L -1", one(5, -1),
         [&](Kvt16s* b) { return kvtiQuantInvInter_MPEG4_16s_I(b, 1, w16.data()); }, 5, -3, 0},
        {"matrix QP 2, L 1", one(5, 1),
         [&](Kvt16s* b) { return kvtiQuantInvInter_MPEG4_16s_I(b, 2, w16.data()); }, 5, 6, 1},
        {"INTRADC 255", one(0, 255), [](Kvt16s* b) { return kvtiQuantInvIntra_Compact_H263_16s_I(b, 1, 7); },
         0, 1024, 0},
        {"C1I QP 40 as 31", one(5, 1), [](Kvt16s* b) { return kvtiQuantInv_H263_C1I(b, 40); }, 5, 93, 0},
        {"C1I QP -3 as 1", one(5, 1), [](Kvt16s* b) { return kvtiQuantInv_H263_C1I(b, -3); }, 5, 3, 0},
    };
    for (Case& c : cases) {
        EXPECT_EQ(c.call(c.in.data()), kvtStsOk) << c.what;
        EXPECT_EQ(c.in[size_t(c.pos)], c.want) << c.what;
        EXPECT_EQ(c.in[63], c.want63) << c.what;
    }
}

// The checks run in the documented order (the First and Second intra forms differ); a failing call
// writes nothing.
TEST(QuantInv, ArgumentChecksInOrder) {
    Block b;
    b.fill(5);
    Kvt16s row[16] = {}, col[8] = {};
    const Kvt8u w[64] = {};
    struct Case {
        KvtStatus got, want;
    } cases[] = {
        {kvtiQuantInvIntraFirst_MPEG4_16s_I(b.data(), 1, nullptr, 2, 0, 3), -8},
        {kvtiQuantInvIntraFirst_MPEG4_16s_I(b.data(), 32, w, 2, 0, 3), -104},
        {kvtiQuantInvIntraFirst_MPEG4_16s_I(b.data(), 31, w, 2, 0, 3), -92},  // bit depth before the flag
        {kvtiQuantInvIntraFirst_MPEG4_16s_I(b.data(), 31, w, 2, 0, 12), -90},
        {kvtiQuantInvIntraSecond_MPEG4_16s_I(nullptr, 0, 2, 2, 3), -8},
        {kvtiQuantInvIntraSecond_MPEG4_16s_I(b.data(), 0, 2, 2, 3), -104},
        {kvtiQuantInvIntraSecond_MPEG4_16s_I(b.data(), 1, 2, 2, 3), -90},  // flag, block type, then bits
        {kvtiQuantInvIntraSecond_MPEG4_16s_I(b.data(), 1, 1, 2, 3), -91},
        {kvtiQuantInvIntraSecond_MPEG4_16s_I(b.data(), 1, 1, 1, 13), -92},
        {kvtiQuantInvInterFirst_MPEG4_16s_I(b.data(), 1, nullptr, 0), -8},
        {kvtiQuantInvInterFirst_MPEG4_16s_I(b.data(), 0, w, 0), -104},
        {kvtiQuantInvInterFirst_MPEG4_16s_I(b.data(), 1, w, 13), -92},
        {kvtiQuantInvInterSecond_MPEG4_16s_I(b.data(), 1, 3), -92},
        {kvtiQuantInvIntra_MPEG4_16s_I(nullptr, 0, w, 0), -8},
        {kvtiQuantInvIntra_MPEG4_16s_I(b.data(), 0, w, 0), -104},
        {kvtiQuantInvInter_MPEG4_16s_I(b.data(), 32, nullptr), -104},
        {kvtiQuantInvIntra_Compact_H263_16s_I(nullptr, 0, 0), -8},
        {kvtiQuantInvIntra_Compact_H263_16s_I(b.data(), 0, 0), -6},
        {kvtiQuantInvInter_Compact_H263_16s_I(b.data(), 1, 0), -76},
        {kvtiQuantInvInter_Compact_H263_16s_I(b.data(), -1, 32), -6},
        {kvtiQuantInvIntra_MPEG4_16s_C1I(b.data(), 1, nullptr), -8},
        {kvtiQuantInv_MPEG4_16s_C1I(nullptr, 1, w), -8},
        {kvtiQuantInv_H263_C1I(nullptr, 1), -8},
        {kvtiQuantInvIntra_H263_C1I(nullptr, 1), -8},
        {kvtiPredictReconCoefIntra_MPEG4_16s(b.data(), row + 8, nullptr, 0, 1, 3, 1, 0), -8},
        {kvtiPredictReconCoefIntra_MPEG4_16s(b.data(), row + 8, col, 1, 0, 3, 1, 0), -104},
        {kvtiPredictReconCoefIntra_MPEG4_16s(b.data(), row + 8, col, 1, 1, 3, 1, 0), -93},
    };
    for (size_t i = 0; i < std::size(cases); ++i) EXPECT_EQ(cases[i].got, cases[i].want) << "case " << i;
    EXPECT_TRUE(std::all_of(b.begin(), b.end(), [](Kvt16s v) { return v == 5; }));
}

// ISO/IEC 14496-2 7.4.3: DC from the left, above or 1024 (also for a negative stored DC), the first
// row or column from the predicting block scaled to the current QP, the state stored for the next
// blocks; a model on random blocks and the worked values.
TEST(PredictIntra, ModelAndWorkedValues) {
    Rng rng(test_seed());
    for (int trial = 0; trial < 2000; ++trial) {
        const int qp = rng.uniform(1, 31), pred_qp = rng.uniform(0, 3) ? rng.uniform(1, 31) : qp;
        const int dir = rng.uniform(0, 2), ac = rng.coin(), chroma = rng.coin();
        Block in = random_block(rng);
        in[0] = Kvt16s(rng.uniform(-300, 300));
        Kvt16s row[16], col[8];
        for (Kvt16s& v : row)
            v = Kvt16s(rng.uniform(0, 3) ? rng.uniform(-100, 2047) : rng.uniform(-2048, 2047));
        for (Kvt16s& v : col) v = Kvt16s(rng.uniform(-2048, 2047));
        Block want = in;
        const int p = dir == 0 || (dir == 2 ? row[8] : row[0]) < 0 ? 1024 : dir == 2 ? row[8] : row[0];
        const int s = dc_scaler_of(qp, chroma);
        want[0] = Kvt16s(clamp(Kvt16s(in[0] + (p + s / 2) / s), -2048, 2047));
        for (int i = 1; ac && dir && i < 8; ++i) {
            const int a = dir == 2 ? row[8 + i] : col[i], pos = dir == 2 ? i : 8 * i;
            if (a == 0) continue;
            const int q = pred_qp == qp ? a : Kvt16s((a * pred_qp + (a > 0 ? qp / 2 : -(qp / 2))) / qp);
            want[size_t(pos)] = Kvt16s(clamp(in[size_t(pos)] + q, -2048, 2047));
        }
        Kvt16s want_row[16], want_col[8];
        std::copy(row, row + 16, want_row);
        std::copy(col, col + 8, want_col);
        for (int i = 1; i < 8; ++i) want_row[8 + i] = want[size_t(i)], want_col[i] = want[size_t(8 * i)];
        ASSERT_EQ(kvtiPredictReconCoefIntra_MPEG4_16s(in.data(), row + 8, col, qp, pred_qp, dir, ac, chroma),
                  0);
        ASSERT_EQ(in, want) << "trial " << trial;
        ASSERT_TRUE(std::equal(row, row + 16, want_row) && std::equal(col, col + 8, want_col))
            << "trial " << trial;
    }
    const auto predict = [](int diff, int stored_dc, int dir, int a, int qp, int pred_qp) {
        Block b{};
        b[0] = Kvt16s(diff);
        Kvt16s row[16] = {}, col[8] = {};
        row[8] = row[0] = Kvt16s(stored_dc);
        row[9] = Kvt16s(a);
        kvtiPredictReconCoefIntra_MPEG4_16s(b.data(), row + 8, col, qp, pred_qp, dir, 1, 0);
        return std::pair<int, int>(b[0], b[1]);
    };
    EXPECT_EQ(predict(0, 0, 0, 0, 3, 3).first, 128);                   // 1024 / 8
    EXPECT_EQ(predict(5, -1, 2, 0, 3, 3), predict(5, 0, 0, 0, 3, 3));  // negative DC: not available
    EXPECT_EQ(predict(0, 800, 2, 1, 2, 3).second, 2);                  // (3 + 1) / 2
    EXPECT_EQ(predict(0, 800, 2, -1, 2, 3).second, -2);                // (-3 - 1) / 2
}

// Inverse scans: every tier against the oracle (compact lengths with guards: nothing read or written
// beyond), the exported forms against the scan orders of the code tables, lengths outside 1..64.
TEST(ZigzagInv, TiersOrdersAndLengths) {
    compare_tiers<ZigzagDsp>("inverse scans", init_zigzag_dsp, ref::init_zigzag, 300,
                             [](Rng& rng, const ZigzagDsp& d, Outputs& out) {
                                 const int scan = rng.uniform(0, 2), len = rng.uniform(1, 64);
                                 Guarded<Kvt16s> src(size_t(len), size_t(rng.uniform(0, 31)) * 2),
                                     dst(64, size_t(rng.uniform(0, 31)) * 2);
                                 rng.fill(src.data(), size_t(len), -32768, 32767);
                                 rng.fill(dst.data(), 64, -32768, 32767);
                                 out.add("compact", d.compact[scan](src.data(), len, dst.data()));
                                 out.add_buffer("compact", dst);
                                 Guarded<Kvt16s> full(64);
                                 rng.fill(full.data(), 64, -32768, 32767);
                                 out.add("full", d.full[scan](full.data(), dst.data()));
                                 out.add_buffer("full", dst);
                             });
    Rng rng(test_seed());
    Block src, dst;
    rng.fill(src.data(), 64, -32768, 32767);
    const auto scatter = [&](const std::vector<int>& order, int len) {
        Block b;
        b.fill(-7);
        for (int i = 0; i < len; ++i) b[size_t(order[size_t(i)])] = src[size_t(i)];
        return b;
    };
    const std::vector<int> zz = scan_order("zigzag"), h = scan_order("alternate_horizontal"),
                           v = scan_order("alternate_vertical");
    for (int len : {1, 2, 17, 63, 64}) {
        dst.fill(-7);
        EXPECT_EQ(kvtiZigzagInvClassical_Compact_16s(src.data(), len, dst.data()), 0);
        EXPECT_EQ(dst, scatter(zz, len));
        dst.fill(-7);
        EXPECT_EQ(kvtiZigzagInvHorizontal_Compact_16s(src.data(), len, dst.data()), 0);
        EXPECT_EQ(dst, scatter(h, len));
        dst.fill(-7);
        EXPECT_EQ(kvtiZigzagInvVertical_Compact_16s(src.data(), len, dst.data()), 0);
        EXPECT_EQ(dst, scatter(v, len));
    }
    EXPECT_EQ(kvtiZigzagInv_Horizontal_16s(src.data(), dst.data()), 0);
    EXPECT_EQ(dst, scatter(h, 64));
    EXPECT_EQ(kvtiZigzagInv_Vertical_16s(src.data(), dst.data()), 0);
    EXPECT_EQ(dst, scatter(v, 64));
    dst.fill(-7);
    for (int len : {0, 65, -1})
        EXPECT_EQ(kvtiZigzagInvClassical_Compact_16s(src.data(), len, dst.data()), -72);
    EXPECT_EQ(kvtiZigzagInvVertical_Compact_16s(nullptr, 0, dst.data()), -8);
    EXPECT_EQ(kvtiZigzagInv_Horizontal_16s(src.data(), nullptr), -8);
    EXPECT_EQ(dst, scatter(zz, 0));
}
