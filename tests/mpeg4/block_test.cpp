// H.263 and MPEG-4 block decoders on random blocks written with the code tables: each against the
// composition of the library's public steps it stands for (decoding, prediction, inverse
// quantization, scan, the full inverse DCT), which also shows that the reduced transforms it picks
// agree with the full one; runs of intra blocks carry the prediction state from block to block. Then
// the rejected codes (cursor and output untouched) and the argument checks in order.
#include <algorithm>
#include <array>
#include <cstring>
#include <functional>

#include "coef_codes.h"
#include "kvtvc.h"

using namespace kvt::test;

namespace {

using Block = std::array<Kvt16s, 64>;
using Pixels = std::array<Kvt8u, 64>;

const TcoefCodes& h263_codes() {
    static const TcoefCodes t("mpeg4_tcoef_inter.tsv");
    return t;
}

// The events in scan order (H.263 writes levels of 8 bits; now and then an escape carries 0 or -128).
std::string write_h263(Rng& rng, const TcoefCodes& t, std::vector<CoefEvent>& events) {
    std::string bits;
    for (CoefEvent& e : events) {
        if (rng.uniform(0, 40) == 0) e.level = rng.coin() ? 0 : -128;
        bits += e.level == 0 || e.level == -128 ? t.write(e, kH263Escape) : t.write_h263(e);
    }
    return bits;
}

std::string write_mpeg4(const TcoefCodes& t, const std::vector<CoefEvent>& events) {
    std::string bits;
    for (const CoefEvent& e : events) bits += t.write(e, t.mpeg4_forms(e)[0]);
    return bits;
}

bool dc_alone(const Block& c) {
    return std::all_of(c.begin() + 1, c.end(), [](Kvt16s v) { return v == 0; });
}

// Residual of dequantized raster coefficients: a DC alone fills the block with (F + 4) >> 3,
// anything else takes the full inverse DCT.
Block residual(Block c, bool fill) {
    if (fill) {
        const Kvt16s v = Kvt16s((c[0] + 4) >> 3);
        c.fill(v);
    } else {
        kvtiDCT8x8Inv_16s_C1I(c.data());
    }
    return c;
}

Pixels pixels(const Block& c) {
    Pixels p;
    kvtiDCT8x8Inv_16s8u_C1R(c.data(), p.data(), 8);
    return p;
}

// Runs `call` on a stream of `bits` at a random offset; moved = bits consumed.
KvtStatus run(Rng& rng, const std::string& bits, long& moved,
              const std::function<KvtStatus(Kvt8u**, int*)>& call) {
    Stream s(rng, bits, rng.uniform(0, 7));
    const long start = s.pos();
    const KvtStatus st = call(&s.p, &s.offset);
    moved = s.pos() - start;
    return st;
}

// H.263 6.2.1 and Annex I reconstruction of one level (no prediction).
int h263_inter_value(int l, int qp) {
    if (l == 0) return 0;
    const int m = 2 * qp * std::abs(l) + (qp % 2 ? qp : qp - 1);
    return std::clamp(l < 0 ? -m : m, -2048, 2047);
}

}  // namespace

TEST(BlockDecode, H263InterAndIntraMatchTheirSteps) {
    const std::vector<int> zigzag = scan_order("zigzag");
    for (int trial = 0; trial < 1500; ++trial) {
        Rng rng(test_seed() + uint64_t(trial));
        const int qp = rng.uniform(1, 31);
        const bool intra = trial % 2;
        std::vector<CoefEvent> events = random_events(rng, intra, 127);
        std::string bits = write_h263(rng, h263_codes(), events);
        Block scan = place(events, intra, [] {
            std::vector<int> identity(64);
            for (int i = 0; i < 64; ++i) identity[size_t(i)] = i;
            return identity;
        }());
        int n = intra;
        for (const CoefEvent& e : events) n += e.run + 1;
        long moved;
        if (!intra) {
            for (Kvt16s& v : scan) v = Kvt16s(h263_inter_value(v, qp));
            Block want{};
            for (int i = 0; i < n; ++i) want[size_t(zigzag[size_t(i)])] = scan[size_t(i)];
            Block got;
            ASSERT_EQ(run(rng, bits, moved,
                          [&](Kvt8u** p, int* o) {
                              return kvtiDecodeBlockCoef_Inter_H263_1u16s(p, o, got.data(), qp);
                          }),
                      0);
            ASSERT_EQ(got, residual(want, n == 1)) << "trial " << trial;
        } else {
            const int dc = rng.uniform(0, 20) ? rng.uniform(1, 254) : 255;
            if (dc == 128) continue;
            bits = to_bits(uint32_t(dc), 8) + bits;
            scan[0] = Kvt16s(dc);
            kvtiQuantInvIntra_Compact_H263_16s_I(scan.data(), n, qp);  // tested on its own
            Block want{};
            kvtiZigzagInvClassical_Compact_16s(scan.data(), n, want.data());
            Pixels got;
            ASSERT_EQ(run(rng, bits, moved,
                          [&](Kvt8u** p, int* o) {
                              return kvtiDecodeBlockCoef_Intra_H263_1u8u(p, o, got.data(), 8, qp);
                          }),
                      0);
            ASSERT_EQ(got, pixels(want)) << "trial " << trial;
        }
        ASSERT_EQ(moved, long(bits.size())) << "trial " << trial;
    }
}

TEST(BlockDecode, Mpeg4InterMatchesItsSteps) {
    const TcoefCodes codes("mpeg4_tcoef_inter.tsv");
    for (int trial = 0; trial < 1500; ++trial) {
        Rng rng(test_seed() + uint64_t(trial));
        const int qp = rng.uniform(1, 31);
        std::array<Kvt8u, 64> w;
        for (Kvt8u& x : w) x = Kvt8u(rng.uniform(8, 64));
        const Kvt8u* matrix = trial % 3 ? nullptr : w.data();
        const std::string bits = write_mpeg4(codes, random_events(rng, 0, rng.coin() ? 3 : 2047));
        Block want, got;
        Stream s(rng, bits, trial % 8);
        kvtiDecodeVLCZigzag_Inter_MPEG4_1u16s(&s.p, &s.offset, want.data());
        kvtiQuantInvInter_MPEG4_16s_I(want.data(), qp, matrix);
        long moved;
        ASSERT_EQ(run(rng, bits, moved,
                      [&](Kvt8u** p, int* o) {
                          return kvtiDecodeBlockCoef_Inter_MPEG4_1u16s(p, o, got.data(), qp, matrix);
                      }),
                  0);
        ASSERT_EQ(got, residual(want, dc_alone(want))) << "trial " << trial;
        ASSERT_EQ(moved, long(bits.size()));
    }
}

// A run of blocks through one prediction state: the same blocks go through the public steps with a
// second copy of the state. Neighbours are sometimes not available (negative DC).
TEST(BlockDecode, Mpeg4IntraRunsCarryThePredictionState) {
    const TcoefCodes codes("mpeg4_tcoef_intra.tsv");
    Rng rng(test_seed());
    for (int run_no = 0; run_no < 60; ++run_no) {
        Kvt16s row[2][8 * 5], col[2][8];
        for (int k = 0; k < 2; ++k) {
            std::fill(std::begin(row[k]), std::end(row[k]), Kvt16s(0));
            std::fill(std::begin(col[k]), std::end(col[k]), Kvt16s(0));
            for (int g = 0; g < 5; ++g) row[k][8 * g] = Kvt16s(-1);
        }
        std::array<Kvt8u, 64> w;
        for (Kvt8u& x : w) x = Kvt8u(rng.uniform(8, 64));
        const Kvt8u* matrix = run_no % 2 ? w.data() : nullptr;
        int prev_qp = rng.uniform(1, 31);
        for (int b = 0; b < 24; ++b) {
            const int group = 1 + b % 4, qp = rng.coin() ? prev_qp : rng.uniform(1, 31);
            const int dir = rng.uniform(0, 2), ac_pred = rng.coin(), dc_vlc = rng.coin(),
                      coded = rng.uniform(0, 3) != 0;
            const int index = rng.uniform(0, 9), chroma = index == 4 || index == 5;
            const int scan = ac_pred ? dir : 0;
            std::string bits = dc_vlc ? write_intra_dc(rng.uniform(-300, 300), chroma) : "";
            if (coded) bits += write_mpeg4(codes, random_events(rng, dc_vlc, rng.coin() ? 4 : 2047));
            // The steps: quantized coefficients, prediction, dequantization, the DC into the state.
            Block c{};
            Stream s(rng, bits, 0);
            if (coded && dc_vlc)
                kvtiDecodeVLCZigzag_IntraDCVLC_MPEG4_1u16s(&s.p, &s.offset, c.data(), scan, chroma);
            if (coded && !dc_vlc) kvtiDecodeVLCZigzag_IntraACVLC_MPEG4_1u16s(&s.p, &s.offset, c.data(), scan);
            if (!coded && dc_vlc) kvtiDecodeVLC_IntraDCVLC_MPEG4_1u16s(&s.p, &s.offset, c.data(), chroma);
            Kvt16s* want_row = row[0] + 8 * group;
            kvtiPredictReconCoefIntra_MPEG4_16s(c.data(), want_row, col[0], qp, prev_qp, dir, ac_pred,
                                                chroma);
            kvtiQuantInvIntra_MPEG4_16s_I(c.data(), qp, matrix, chroma);
            want_row[0] = c[0];
            Pixels got;
            long moved;
            const auto decode =
                coded ? kvtiDecodeBlockCoef_Intra_MPEG4_1u8u : kvtiDecodeBlockCoef_IntraDCOnly_MPEG4_1u8u;
            ASSERT_EQ(run(rng, bits, moved,
                          [&](Kvt8u** p, int* o) {
                              return decode(p, o, got.data(), 8, row[1] + 8 * group, col[1], qp, prev_qp, dir,
                                            ac_pred, index, dc_vlc, matrix);
                          }),
                      0);
            ASSERT_EQ(got, pixels(c)) << "run " << run_no << ", block " << b;
            ASSERT_EQ(moved, long(bits.size()));
            ASSERT_TRUE(std::equal(std::begin(row[0]), std::end(row[0]), row[1]) &&
                        std::equal(col[0], col[0] + 8, col[1]));
            if (rng.uniform(0, 5) == 0) row[0][8 * group] = row[1][8 * group] = -1;
            prev_qp = qp;
        }
    }
}

// H.263 Annex I: prediction from the available neighbours (a model of the rules), levels scaled by
// 2 QP without offset, the DC clamped and made odd, the state updated.
TEST(BlockDecode, H263AdvancedIntraModel) {
    const TcoefCodes codes("h263_advintra_tcoef.tsv");
    const char* const scan_of_mode[4] = {"", "zigzag", "alternate_horizontal", "alternate_vertical"};
    Rng rng(test_seed());
    Kvt16s row[2][24], col[2][8];
    for (int k = 0; k < 2; ++k) {
        std::fill(std::begin(row[k]), std::end(row[k]), Kvt16s(-1));
        std::fill(std::begin(col[k]), std::end(col[k]), Kvt16s(0));
    }
    for (int b = 0; b < 600; ++b) {
        const int group = 1 + b % 2, qp = rng.uniform(1, 31), mode = rng.uniform(1, 3),
                  coded = rng.uniform(0, 3) != 0;
        std::vector<CoefEvent> events = random_events(rng, 0, 127);
        const std::string bits = coded ? write_h263(rng, codes, events) : "";
        Block lv = coded ? place(events, 0, scan_order(scan_of_mode[mode])) : Block{};
        const Kvt16s* r = row[0] + 8 * group;
        const int left = r[-8], above = r[0];
        int dc = 1024;
        if (mode == 1 && (left >= 0 || above >= 0))
            dc = left < 0 ? above : above < 0 ? left : (left + above) / 2;
        if (mode > 1 && (mode == 2 ? above : left) >= 0) {
            dc = mode == 2 ? above : left;
            for (int i = 1; i < 8; ++i) {
                Kvt16s& l = lv[size_t(mode == 2 ? i : 8 * i)];
                l = Kvt16s(std::clamp(l + (mode == 2 ? r[i] : col[0][i]), -2048, 2047));
            }
        }
        Block rec;
        for (int i = 1; i < 64; ++i) rec[size_t(i)] = Kvt16s(std::clamp(lv[size_t(i)] * 2 * qp, -2048, 2047));
        const int d = std::clamp(lv[0] * 2 * qp + dc, 0, 2047);
        rec[0] = Kvt16s(d == 0 ? 0 : d | 1);
        Kvt16s* want_row = row[0] + 8 * group;
        for (int i = 1; i < 8; ++i) want_row[i] = lv[size_t(i)], col[0][i] = lv[size_t(8 * i)];
        want_row[0] = rec[0];
        Pixels got;
        long moved;
        ASSERT_EQ(run(rng, bits, moved,
                      [&](Kvt8u** p, int* o) {
                          return kvtiDecodeBlockCoef_AdvIntra_H263_1u8u(
                              p, o, got.data(), 8, row[1] + 8 * group, col[1], qp, mode, coded);
                      }),
                  0);
        ASSERT_EQ(got, pixels(rec)) << "block " << b;
        ASSERT_EQ(moved, long(bits.size()));
        ASSERT_TRUE(std::equal(std::begin(row[0]), std::end(row[0]), row[1]) &&
                    std::equal(col[0], col[0] + 8, col[1]));
        if (rng.uniform(0, 4) == 0) row[0][8 * group] = row[1][8 * group] = -1;
    }
}

// The INTRADC field, the rejected codes of every block decoder (cursor and output untouched, the
// INTRADC byte consumed), and the argument checks in order.
TEST(BlockDecode, IntraDcRejectedCodesAndChecks) {
    Rng rng(test_seed());
    const auto dc_only = [&](int v) {
        Pixels got;
        got.fill(9);
        long moved;
        const KvtStatus st = run(rng, to_bits(uint32_t(v), 8), moved, [&](Kvt8u** p, int* o) {
            return kvtiDecodeBlockCoef_IntraDCOnly_H263_1u8u(p, o, got.data(), 8);
        });
        EXPECT_EQ(moved, 8);
        return std::pair<KvtStatus, int>(st, std::count(got.begin(), got.end(), got[0]) == 64 ? got[0] : -1);
    };
    EXPECT_EQ(dc_only(255), std::make_pair(0, 128));
    EXPECT_EQ(dc_only(1), std::make_pair(0, 1));
    EXPECT_EQ(dc_only(0), std::make_pair(-73, 9));
    EXPECT_EQ(dc_only(128), std::make_pair(-73, 9));

    const std::string esc = h263_codes().escape(), nine_zeros(9, '0');
    const std::string past_63 = h263_codes().write({0, 0, 1}, kPlain) + esc + "1" + "111111" + "00000001";
    Kvt16s row[16], col[8];
    std::fill(row, row + 16, Kvt16s(-1));
    std::fill(col, col + 8, Kvt16s(0));
    struct Case {
        std::string bits;
        int status;
        long moved;
        std::function<KvtStatus(Kvt8u**, int*, void*)> call;
    } cases[] = {
        {nine_zeros, -74, 0,
         [](Kvt8u** p, int* o, void* d) {
             return kvtiDecodeBlockCoef_Inter_H263_1u16s(p, o, static_cast<Kvt16s*>(d), 5);
         }},
        {past_63, -72, 0,
         [](Kvt8u** p, int* o, void* d) {
             return kvtiDecodeBlockCoef_Inter_H263_1u16s(p, o, static_cast<Kvt16s*>(d), 5);
         }},
        {"00000001" + nine_zeros, -74, 8,
         [](Kvt8u** p, int* o, void* d) {
             return kvtiDecodeBlockCoef_Intra_H263_1u8u(p, o, static_cast<Kvt8u*>(d), 8, 5);
         }},
        {"10000000" + nine_zeros, -73, 8,
         [](Kvt8u** p, int* o, void* d) {
             return kvtiDecodeBlockCoef_Intra_H263_1u8u(p, o, static_cast<Kvt8u*>(d), 8, 5);
         }},
        {nine_zeros, -74, 0,
         [&](Kvt8u** p, int* o, void* d) {
             return kvtiDecodeBlockCoef_AdvIntra_H263_1u8u(p, o, static_cast<Kvt8u*>(d), 8, row + 8, col, 5,
                                                           1, 1);
         }},
        {nine_zeros, -100, 0,
         [](Kvt8u** p, int* o, void* d) {
             return kvtiDecodeBlockCoef_Inter_MPEG4_1u16s(p, o, static_cast<Kvt16s*>(d), 5, nullptr);
         }},
        {"011" + nine_zeros, -100, 3,
         [&](Kvt8u** p, int* o, void* d) {
             return kvtiDecodeBlockCoef_Intra_MPEG4_1u8u(p, o, static_cast<Kvt8u*>(d), 8, row + 8, col, 5, 5,
                                                         0, 0, 0, 1, nullptr);
         }},
        {std::string(12, '0') + "1", -100, 0,
         [&](Kvt8u** p, int* o, void* d) {
             return kvtiDecodeBlockCoef_IntraDCOnly_MPEG4_1u8u(p, o, static_cast<Kvt8u*>(d), 8, row + 8, col,
                                                               5, 5, 0, 0, 4, 1, nullptr);
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bits);
        Block out;
        out.fill(9);
        long moved;
        EXPECT_EQ(run(rng, c.bits, moved, [&](Kvt8u** p, int* o) { return c.call(p, o, out.data()); }),
                  c.status);
        EXPECT_EQ(moved, c.moved);
        EXPECT_TRUE(std::all_of(out.begin(), out.end(), [](Kvt16s v) { return v == 9; })) << "output written";
        EXPECT_TRUE(std::all_of(row, row + 16, [](Kvt16s v) { return v == -1; })) << "state written";
    }

    Kvt8u data[8] = {}, *p = data, *null_p = nullptr;
    int off = 0, bad_off = 9;
    Pixels px;
    Block res;
    const KvtStatus checks[][2] = {
        {kvtiDecodeBlockCoef_IntraDCOnly_H263_1u8u(&null_p, &off, px.data(), 7), -8},
        {kvtiDecodeBlockCoef_IntraDCOnly_H263_1u8u(&p, &off, px.data(), 7), -82},
        {kvtiDecodeBlockCoef_Intra_H263_1u8u(&p, &off, px.data(), 7, 0), -82},
        {kvtiDecodeBlockCoef_Intra_H263_1u8u(&p, &off, px.data(), 8, 32), -76},
        {kvtiDecodeBlockCoef_Inter_H263_1u16s(&p, nullptr, res.data(), 0), -8},
        {kvtiDecodeBlockCoef_Inter_H263_1u16s(&p, &off, res.data(), 0), -76},
        {kvtiDecodeBlockCoef_AdvIntra_H263_1u8u(&p, &off, px.data(), 8, row + 8, nullptr, 0, 0, 1), -8},
        {kvtiDecodeBlockCoef_AdvIntra_H263_1u8u(&p, &off, px.data(), 7, row + 8, col, 0, 0, 1), -82},
        {kvtiDecodeBlockCoef_AdvIntra_H263_1u8u(&p, &off, px.data(), 8, row + 8, col, 0, 0, 1), -76},
        {kvtiDecodeBlockCoef_AdvIntra_H263_1u8u(&p, &off, px.data(), 8, row + 8, col, 1, 4, 1), -83},
        {kvtiDecodeBlockCoef_Inter_MPEG4_1u16s(&p, &bad_off, nullptr, 0, nullptr), -8},
        {kvtiDecodeBlockCoef_Inter_MPEG4_1u16s(&p, &bad_off, res.data(), 0, nullptr), -104},
        {kvtiDecodeBlockCoef_Inter_MPEG4_1u16s(&p, &bad_off, res.data(), 1, nullptr), -105},
        {kvtiDecodeBlockCoef_Intra_MPEG4_1u8u(&p, &bad_off, px.data(), 8, nullptr, col, 0, 0, 3, 0, 10, 1,
                                              nullptr),
         -8},
        {kvtiDecodeBlockCoef_Intra_MPEG4_1u8u(&p, &bad_off, px.data(), 7, row + 8, col, 0, 0, 3, 0, 10, 1,
                                              nullptr),
         -14},
        {kvtiDecodeBlockCoef_Intra_MPEG4_1u8u(&p, &bad_off, px.data(), 8, row + 8, col, 1, 0, 3, 0, 10, 1,
                                              nullptr),
         -104},
        {kvtiDecodeBlockCoef_Intra_MPEG4_1u8u(&p, &bad_off, px.data(), 8, row + 8, col, 1, 1, 3, 0, 10, 1,
                                              nullptr),
         -93},
        {kvtiDecodeBlockCoef_Intra_MPEG4_1u8u(&p, &bad_off, px.data(), 8, row + 8, col, 1, 1, 2, 0, 10, 1,
                                              nullptr),
         -103},
        {kvtiDecodeBlockCoef_IntraDCOnly_MPEG4_1u8u(&p, &bad_off, px.data(), 8, row + 8, col, 1, 1, 2, 0, 9,
                                                    1, nullptr),
         -105},
    };
    for (size_t i = 0; i < std::size(checks); ++i) EXPECT_EQ(checks[i][0], checks[i][1]) << "check " << i;
    EXPECT_EQ(p, data);
    EXPECT_EQ(off, 0);
}
