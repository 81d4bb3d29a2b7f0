// Motion vectors, H.263 and MPEG-4: rejected and partial codes at every offset, random vectors
// written with the shared tables and read back through the predictor and the wrap (every fcode),
// the predictor and padding rules against an anchor, direct mode, chroma vectors, the rectangle
// limit, and the argument checks of every function in this folder.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>

#include "bit_string.h"
#include "tsv.h"

using namespace kvt::test;

namespace {

using Vecs = std::array<KvtMotionVec, 4>;

// Motion code, sign, then fcode - 1 residual bits; magnitude codes from the shared table.
std::string encode_mvd(int d, int fcode) {
    static std::vector<std::string> codes(33);
    if (codes[0].empty())
        for (const TsvRow& r : read_table("mpeg4_mvd.tsv")) codes[size_t(r.num("abs_value"))] = r["code"];
    const int r = fcode - 1, mag = std::abs(d) - 1;
    if (d == 0) return codes[0];
    return codes[size_t((mag >> r) + 1)] + (d < 0 ? "1" : "0") + (r ? to_bits(uint32_t(mag), r) : "");
}

KvtMotionVec random_mv(Rng& rng, int fcode) {
    const int r = 16 << fcode;
    return {int16_t(rng.uniform(-r, r - 1)), int16_t(rng.uniform(-r, r - 1))};
}

int median(int a, int b, int c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }

// The candidates by position, in 8x8 block units relative to the macroblock's top-left block
// (block b at (b & 1, b >> 1)): a top-row block takes the blocks to its left and above it and the
// bottom-left block of the above-right macroblock; the bottom row takes left, above and
// above-right, except the bottom-right block (its right side not decoded yet), which takes left,
// above-left and above. Positions outside fall into the left, above or above-right macroblock.
struct Neighbourhood {
    KvtMotionVec mb[3][4];    // left, above, above-right
    alignas(4) Kvt32u ok[3];  // usable
};

KvtMotionVec anchor_predictor(const Neighbourhood& n, const KvtMotionVec* cur, const Kvt8u* present, int b) {
    static const int pos[4][3][2] = {{{-1, 0}, {0, -1}, {2, -1}},
                                     {{0, 0}, {1, -1}, {2, -1}},
                                     {{-1, 1}, {0, 0}, {1, 0}},
                                     {{0, 1}, {0, 0}, {1, 0}}};
    KvtMotionVec c[3] = {}, last{0, 0};  // unusable candidates count as zero when two or three are usable
    int usable = 0;
    for (int i = 0; i < 3; ++i) {
        const int x = pos[b][i][0], y = pos[b][i][1], blk = (x & 1) + 2 * (y & 1);
        const int src = x < 0 ? 0 : y >= 0 ? 3 : x > 1 ? 2 : 1;  // left, above, above-right, current
        if (src < 3 ? !n.ok[src] : !present[blk]) continue;
        c[i] = last = src < 3 ? n.mb[src][blk] : cur[blk];
        ++usable;
    }
    if (usable <= 1) return last;
    return {int16_t(median(c[0].dx, c[1].dx, c[2].dx)), int16_t(median(c[0].dy, c[1].dy, c[2].dy))};
}

}  // namespace

// Eleven zeros start no vector code, the word for +32 is no H.263 code (but an MPEG-4 one), and a
// good horizontal code before a bad vertical one is not consumed: nothing moves or is written. An
// interpolated pair keeps its forward vector and a four-vector macroblock its earlier blocks, the
// cursor after the last good code. Direct mode with the co-located flag clear returns the raw
// difference.
TEST(MpegMv, RejectedAndPartialCodesAtEveryOffset) {
    using Read = std::function<KvtStatus(Kvt8u**, int*, KvtMotionVec*)>;
    const KvtMotionVec z{0, 0}, n9{9, 9}, col[4] = {};
    alignas(4) const Kvt32u flag[2] = {0, 1};
    alignas(4) const Kvt8u all[4] = {1, 1, 1, 1};
    const Read h263 = [&](auto p, auto o, auto v) { return kvtiDecodeMV_H263(p, o, &z, &z, &z, v); };
    const Read top = [&](auto p, auto o, auto v) { return kvtiDecodeMV_TopBorder_H263(p, o, &z, v); };
    const Read fwd = [](auto p, auto o, auto v) { return kvtiDecodeMV_BVOP_Forward_MPEG4(p, o, v, 3); };
    const Read interp = [](auto p, auto o, auto v) {
        return kvtiDecodeMV_BVOP_Interpolate_MPEG4(p, o, v, v + 1, 2, 1);
    };
    const Read direct[2] = {[&](auto p, auto o, auto v) {
                                return kvtiDecodeMV_BVOP_Direct_MPEG4(p, o, col, v, v, &flag[0], 1, 1);
                            },
                            [&](auto p, auto o, auto v) {
                                return kvtiDecodeMV_BVOP_Direct_MPEG4(p, o, col, v, v, &flag[1], 1, 1);
                            }};
    const Read pvop = [&](auto p, auto o, auto v) {
        return kvtiDecodePadMV_PVOP_MPEG4(p, o, col, col, col, v, &flag[0], &flag[0], &flag[0], all, 1, 2);
    };
    const std::string zeros(11, '0'),
        plus32 = "0000000000100", mv12 = encode_mvd(1, 2) + encode_mvd(1, 2),
        four = encode_mvd(2, 1) + encode_mvd(-2, 1) + encode_mvd(1, 1) + encode_mvd(0, 1);
    const Vecs none = {n9, n9, n9, n9};
    const struct {
        const Read* read;
        std::string bits;
        KvtStatus st;
        Vecs want;
        long moved;
    } rows[] = {
        {&h263, zeros, kvtStsBadMvdCode, none, 0},
        {&h263, plus32, kvtStsBadMvdCode, none, 0},
        {&h263, encode_mvd(-7, 1) + plus32, kvtStsBadMvdCode, none, 0},
        {&top, encode_mvd(0, 1) + zeros, kvtStsBadMvdCode, none, 0},
        {&fwd, zeros, kvtStsBadMvCode, none, 0},
        {&fwd, encode_mvd(-9, 3) + zeros, kvtStsBadMvCode, none, 0},
        {&direct[1], encode_mvd(5, 1) + zeros, kvtStsBadMvCode, none, 0},
        {&direct[0], plus32 + encode_mvd(-32, 1), kvtStsOk,
         Vecs{{{32, -32}, {32, -32}, {32, -32}, {32, -32}}}, -1},
        {&interp, mv12 + zeros, kvtStsBadMvCode, Vecs{{{10, 10}, n9, n9, n9}}, long(mv12.size())},
        {&pvop, four + zeros, kvtStsBadMvCode, Vecs{{{2, -2}, {3, -2}, n9, n9}}, long(four.size())},
    };
    Rng rng(23);
    for (int off = 0; off < 8; ++off) {
        for (const auto& r : rows) {
            const auto read = [&](Kvt8u** pp, int* o, Vecs* v) {
                return v->fill(n9), (*r.read)(pp, o, v->data());
            };
            expect_code(rng, read, r.bits, off, r.st, r.want, r.moved);
        }
    }
}

// Random neighbours and targets: the median predictor (the left vector alone on the top border)
// plus the Table 14 difference, wrapped into [-16, 15.5], gives the target back.
TEST(MpegMv, H263RandomVectorsRoundTrip) {
    std::map<int, std::string> mvd;  // code words by difference in half samples
    for (const TsvRow& r : read_table("h263_mvd.tsv")) mvd[r.num("index") - 32] = r["code"];
    ASSERT_EQ(mvd.size(), 64u);
    Rng rng(32);
    int wraps = 0;
    for (int trial = 0; trial < 3000; ++trial) {
        KvtMotionVec v[4];  // left, above, above-right, target
        for (auto& x : v) x = random_mv(rng, 1);
        const bool top = trial % 4 == 0;
        const int px = top ? v[0].dx : median(v[0].dx, v[1].dx, v[2].dx);
        const int py = top ? v[0].dy : median(v[0].dy, v[1].dy, v[2].dy);
        const int dx = wrap_mv(v[3].dx - px, 1), dy = wrap_mv(v[3].dy - py, 1);
        wraps += (dx != v[3].dx - px) + (dy != v[3].dy - py);
        const auto read = [&](Kvt8u** pp, int* off, KvtMotionVec* mv) {
            return top ? kvtiDecodeMV_TopBorder_H263(pp, off, &v[0], mv)
                       : kvtiDecodeMV_H263(pp, off, &v[0], &v[1], &v[2], mv);
        };
        expect_code(rng, read, mvd.at(dx) + mvd.at(dy), trial % 8, kvtStsOk, v[3]);
    }
    EXPECT_GT(wraps, 100);
}

// Random targets and predictors for fcode 1..7 (forward, backward, and interpolated with the
// other fcode behind): the written difference, wrapped into range, brings the predictor back.
TEST(MpegMv, RandomDifferencesRoundTripForEveryFcode) {
    Rng rng(22);
    for (int fcode = 1; fcode <= 7; ++fcode) {
        int wraps = 0;
        for (int trial = 0; trial < 300; ++trial) {
            const int fc[2] = {fcode, 8 - fcode}, kind = trial % 3;  // forward, backward, or both
            std::array<KvtMotionVec, 2> pred, want;
            std::string code;
            for (int i = 0; i < 2; ++i) {
                pred[i] = random_mv(rng, fc[i]);
                want[i] = kind == 2 || kind == i ? random_mv(rng, fc[i]) : pred[i];
                for (int t : {want[i].dx - pred[i].dx, want[i].dy - pred[i].dy}) {
                    wraps += wrap_mv(t, fc[i]) != t;
                    if (kind == 2 || kind == i) code += encode_mvd(wrap_mv(t, fc[i]), fc[i]);
                }
            }
            const auto read = [&](Kvt8u** pp, int* off, std::array<KvtMotionVec, 2>* mv) {
                *mv = pred;
                if (kind == 2)
                    return kvtiDecodeMV_BVOP_Interpolate_MPEG4(pp, off, &(*mv)[0], &(*mv)[1], fc[0], fc[1]);
                return (kind ? kvtiDecodeMV_BVOP_Backward_MPEG4 : kvtiDecodeMV_BVOP_Forward_MPEG4)(
                    pp, off, &(*mv)[kind], fc[kind]);
            };
            expect_code(rng, read, code, rng.uniform(0, 7), kvtStsOk, want);
        }
        EXPECT_GT(wraps, 20) << "fcode " << fcode;
    }
}

// Every combination of usable neighbours and present blocks, four-vector and one-vector types.
// An absent block of a four-vector macroblock copies a present neighbour: horizontal first, then
// vertical, then diagonal (taken present or not), block by block so later ones see replacements.
TEST(MpegMv, PredictorAndPaddingForEveryNeighbourAndBlockCombination) {
    Rng rng(24);
    for (int avail = 0; avail < 8; ++avail) {
        for (int mask = 0; mask < 16; ++mask) {
            for (int type : {2, 5, 0}) {
                const int fcode = rng.uniform(1, 7);
                Neighbourhood n{};
                for (auto& mb : n.mb) std::generate(mb, mb + 4, [&] { return random_mv(rng, fcode); });
                for (int i = 0; i < 3; ++i) n.ok[i] = (avail >> i) & 1 ? rng.next() | 1 : 0;
                alignas(4) Kvt8u present[4];
                for (int b = 0; b < 4; ++b) present[b] = (mask >> b) & 1 ? Kvt8u(rng.uniform(1, 255)) : 0;
                const bool four = type != 0;
                Vecs want, cur, set;
                std::generate(want.begin(), want.end(), [&] { return random_mv(rng, fcode); });
                cur = want;
                std::string code;
                for (int b = 0; b < (four ? 4 : 1); ++b) {
                    if (four && !present[b]) continue;
                    const KvtMotionVec p = anchor_predictor(n, want.data(), present, b);
                    want[b] = random_mv(rng, fcode);
                    code += encode_mvd(wrap_mv(want[b].dx - p.dx, fcode), fcode) +
                            encode_mvd(wrap_mv(want[b].dy - p.dy, fcode), fcode);
                }
                set = want;
                for (int b = 0; b < 4; ++b) {
                    if (four && present[b]) continue;
                    const int from = present[b ^ 1] ? b ^ 1 : present[b ^ 2] ? b ^ 2 : b ^ 3;
                    want[b] = want[four ? from : 0];
                }
                const int off = rng.uniform(0, 7);
                Stream s(random_bits(rng, off) + code, off, uint8_t(rng.next()));
                ASSERT_EQ(kvtiDecodePadMV_PVOP_MPEG4(&s.p, &s.offset, n.mb[0], n.mb[1], n.mb[2], cur.data(),
                                                     &n.ok[0], &n.ok[1], &n.ok[2], present, fcode, type),
                          kvtStsOk);
                SCOPED_TRACE(testing::Message()
                             << "avail " << avail << " blocks " << mask << " type " << type);
                EXPECT_EQ(cur, want);
                EXPECT_EQ(s.pos(), off + long(code.size()));
                ASSERT_EQ(kvtiPadMV_MPEG4(set.data(), present), kvtStsOk);
                EXPECT_TRUE(!four || set == want);
            }
        }
    }
}

// (TRB x m) / TRD + d forward; backward d ? forward - m : ((TRB - TRD) x m) / TRD, truncating. The
// skip form is the same with a zero difference and reads nothing.
TEST(MpegMv, DirectModeArithmeticWithNegativeVectors) {
    const struct {
        int trb, trd, m, d, fwd, bwd;
    } cases[] = {{1, 2, 3, 0, 1, -1},    {1, 2, -3, 0, -1, 1}, {2, 3, -7, 0, -4, 2},  {1, 3, -5, 2, 1, 6},
                 {2, 5, 11, -3, 1, -10}, {3, 3, -9, 0, -9, 0}, {1, 4, -1, -1, -1, 0}, {5, 2, -4, 0, -10, -6}};
    for (const auto& k : cases) {
        SCOPED_TRACE(testing::Message() << k.trb << "/" << k.trd << " m " << k.m << " d " << k.d);
        const int16_t m = int16_t(k.m), f = int16_t(k.fwd), b = int16_t(k.bwd), d = int16_t(k.d);
        const KvtMotionVec col[4] = {{m, 0}, {0, m}, {m, m}, {0, 0}};
        alignas(4) const Kvt32u flag = 7;
        Vecs o[2] = {}, sk[2] = {};
        const std::string code = encode_mvd(k.d, 1) + encode_mvd(k.d, 1);
        Stream s(code);
        ASSERT_EQ(kvtiDecodeMV_BVOP_Direct_MPEG4(&s.p, &s.offset, col, o[0].data(), o[1].data(), &flag, k.trb,
                                                 k.trd),
                  kvtStsOk);
        EXPECT_EQ(s.pos(), long(code.size()));
        EXPECT_EQ(o[0],
                  (Vecs{{{f, d}, {d, f}, {f, f}, {d, d}}}));  // a zero co-located component: d both ways
        EXPECT_EQ(o[1], (Vecs{{{b, d}, {d, b}, {b, b}, {d, d}}}));
        ASSERT_EQ(kvtiDecodeMV_BVOP_DirectSkip_MPEG4(col, sk[0].data(), sk[1].data(), &flag, k.trb, k.trd),
                  kvtStsOk);
        EXPECT_TRUE(k.d != 0 || (sk[0] == o[0] && sk[1] == o[1]));
    }
}

// One vector: v / 2 with the quarter positions sent to the half sample, as four vectors with one
// block present. Four: sum / (4 x blocks) x 2 plus the rounding of the remainder by block count.
TEST(MpegMv, ChromaVectors) {
    const int luma[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 31, -1, -2, -3, -4, -5, -6, -32};
    const int chroma[] = {0, 1, 1, 1, 2, 3, 3, 3, 4, 5, 5, 15, -1, -1, -1, -2, -3, -3, -16};
    for (size_t i = 0; i < std::size(luma); ++i) {
        Vecs v = {{{99, 99}, {99, 99}, {99, 99}, {99, 99}}};
        v[i % 4] = {int16_t(luma[i]), int16_t(-luma[i])};
        alignas(4) Kvt8u present[4] = {};
        present[i % 4] = 1;
        KvtMotionVec c[2];
        ASSERT_EQ(kvtiComputeChromaMV_MPEG4(&v[i % 4], &c[0]) |
                      kvtiComputeChroma4MV_MPEG4(v.data(), &c[1], present),
                  0);
        EXPECT_EQ(c[0], (KvtMotionVec{int16_t(chroma[i]), int16_t(-chroma[i])})) << luma[i];
        EXPECT_EQ(c[1], c[0]) << luma[i];
    }
    // {present blocks (bit b for block b), sum x, sum y, chroma x, y}: the sum sits in the first
    // present block, zeros in the others, junk in absent ones; the rows pin each end of the
    // rounding steps for four, three and two blocks.
    const int cases[][5] = {{15, 2, 3, 0, 1}, {15, 13, -14, 1, -2}, {15, 4, -20, 1, -3},
                            {7, 2, 3, 0, 1},  {7, 9, -10, 1, -2},   {7, 10, 18, 2, 3},
                            {10, 1, 2, 0, 1}, {10, -6, 7, -1, 2},   {0, 5, -6, 0, 0}};
    for (const auto& k : cases) {
        Vecs v;
        alignas(4) Kvt8u present[4];
        for (int b = 0, first = 1; b < 4; ++b) {
            present[b] = (k[0] >> b) & 1;
            v[b] = !present[b] ? KvtMotionVec{99, -99}
                   : first     ? KvtMotionVec{int16_t(k[1]), int16_t(k[2])}
                               : KvtMotionVec{0, 0};
            first &= !present[b];
        }
        KvtMotionVec c{};
        ASSERT_EQ(kvtiComputeChroma4MV_MPEG4(v.data(), &c, present), kvtStsOk);
        EXPECT_EQ(c, (KvtMotionVec{int16_t(k[3]), int16_t(k[4])})) << "case " << &k - cases;
    }
}

// A block may start at o .. o + e - s; a position before is moved to o, one at or past the last
// start to the last start (vectors in half samples, positions in samples).
TEST(MpegMv, LimitToRectangle) {
    const struct {
        int v;
        Kvt32u p;
        int o, e, s, want;
    } cases[] = {{0, 0, -16, 64, 16, 0},    {-33, 0, -16, 64, 16, -32}, {-32, 0, -16, 64, 16, -32},
                 {31, 16, -16, 64, 16, 31}, {63, 16, -16, 64, 16, 32},  {-100, 16, 8, 48, 8, -16},
                 {77, 16, 8, 48, 8, 64},    {-5, 100, 0, 16, 8, -184}};
    for (const auto& k : cases) {
        const KvtRegionRect rx{k.o, 0, k.e, 64}, ry{0, k.o, 64, k.e};
        const int16_t v = int16_t(k.v), w = int16_t(k.want);
        const KvtMotionVec in[2] = {{v, 0}, {0, v}};
        KvtMotionVec out[2];
        ASSERT_EQ(kvtiLimitMVToRect_MPEG4(&in[0], &out[0], &rx, k.p, 8, k.s), kvtStsOk);
        ASSERT_EQ(kvtiLimitMVToRect_MPEG4(&in[1], &out[1], &ry, 8, k.p, k.s), kvtStsOk);
        EXPECT_EQ(out[0], (KvtMotionVec{w, 0})) << k.v << " at " << k.p;
        EXPECT_EQ(out[1], (KvtMotionVec{0, w})) << k.v << " at " << k.p;
    }
}

// Each row passes one or more bad arguments; the status names the first check in the order:
// cursor (-8), offset (-105, MPEG-4 readers only), other pointers (-8), flag alignment (-97),
// then fcode (-98), temporal distances (-96) or sizes. No row moves the cursor or writes.
TEST(MpegMv, ArgumentChecksOfEveryFunctionInOrderChangeNothing) {
    Stream s(encode_mvd(1, 1) + encode_mvd(1, 1), 3);
    Kvt8u *const p0 = s.p, *nul = nullptr, **pp = &s.p;
    int bad = 8, neg = -1, *off = &s.offset;
    const KvtMotionVec z{0, 0}, col[4] = {};
    alignas(4) Kvt32u ok[3] = {1, 1, 1};
    alignas(4) Kvt8u flags[8] = {1, 1, 1, 1, 1, 1, 1, 1};
    const Kvt32u* odd = reinterpret_cast<const Kvt32u*>(flags + 2);
    const KvtRegionRect rect{0, 0, 32, 32}, narrow{0, 0, 31, 64};
    struct Outs {
        Kvt32u q = 5;
        KvtMotionVec mv{5, 5}, mv2{5, 5}, cur[4] = {{5, 5}, {5, 5}, {5, 5}, {5, 5}}, fwd[4] = {}, bwd[4] = {};
        Kvt8u u8[4] = {7, 7, 7, 7};  // no padding bytes for the comparison
    } o;
    const Outs o0 = o;
    const auto pvop = [&](Kvt8u** p, int* bo, const KvtMotionVec* left, const Kvt32u* vl, const Kvt8u* pres,
                          int f) {
        return kvtiDecodePadMV_PVOP_MPEG4(p, bo, left, col, col, o.cur, vl, &ok[1], &ok[2], pres, f, 2);
    };
    const auto direct = kvtiDecodeMV_BVOP_Direct_MPEG4;
    const auto interp = kvtiDecodeMV_BVOP_Interpolate_MPEG4;
    const std::pair<KvtStatus, std::function<KvtStatus()>> rows[] = {
        {kvtStsNullPointer, [&] { return kvtiDecodeMCBPCIntra_H263(nullptr, off, o.u8); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMCBPCInter_H263(&nul, off, o.u8); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeCBPY_H263(pp, nullptr, o.u8); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMODB_H263(pp, off, nullptr); }},
        {kvtStsNullPointer, [&] { return kvtiUpdateQuant_MQ_H263_1u32s_I(pp, off, nullptr); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMV_H263(&nul, off, &z, &z, nullptr, &o.mv); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMV_H263(pp, off, &z, &z, nullptr, &o.mv); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMV_TopBorder_H263(pp, off, &z, nullptr); }},
        {kvtStsNullPointer, [&] { return pvop(nullptr, off, col, ok, flags, 1); }},
        {kvtStsNullPointer, [&] { return pvop(&nul, &bad, nullptr, odd, flags, 9); }},
        {kvtStsBadBitOffset, [&] { return pvop(pp, &bad, nullptr, odd, flags, 9); }},
        {kvtStsNullPointer, [&] { return pvop(pp, off, nullptr, odd, flags, 9); }},
        {kvtStsMisaligned, [&] { return pvop(pp, off, col, odd, flags, 9); }},
        {kvtStsMisaligned, [&] { return pvop(pp, off, col, ok, flags + 1, 9); }},
        {kvtStsBadFcode, [&] { return pvop(pp, off, col, ok, flags, 0); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMV_BVOP_Forward_MPEG4(pp, nullptr, &o.mv, 1); }},
        {kvtStsBadBitOffset, [&] { return kvtiDecodeMV_BVOP_Forward_MPEG4(pp, &bad, nullptr, 1); }},
        {kvtStsBadFcode, [&] { return kvtiDecodeMV_BVOP_Backward_MPEG4(pp, off, &o.mv, 0); }},
        {kvtStsNullPointer, [&] { return interp(pp, off, &o.mv, nullptr, 1, 1); }},
        {kvtStsBadFcode, [&] { return interp(pp, off, &o.mv, &o.mv2, 1, 8); }},
        {kvtStsBadBitOffset, [&] { return direct(pp, &neg, nullptr, o.fwd, o.bwd, odd, 0, 0); }},
        {kvtStsNullPointer, [&] { return direct(pp, off, col, o.fwd, nullptr, odd, 0, 0); }},
        {kvtStsMisaligned, [&] { return direct(pp, off, col, o.fwd, o.bwd, odd, 0, 0); }},
        {kvtStsBadTemporalDist, [&] { return direct(pp, off, col, o.fwd, o.bwd, ok, 0, 1); }},
        {kvtStsMisaligned, [&] { return kvtiDecodeMV_BVOP_DirectSkip_MPEG4(col, o.fwd, o.bwd, odd, 0, 0); }},
        {kvtStsBadTemporalDist,
         [&] { return kvtiDecodeMV_BVOP_DirectSkip_MPEG4(col, o.fwd, o.bwd, ok, 1, -3); }},
        {kvtStsNullPointer, [&] { return kvtiPadMV_MPEG4(o.cur, nullptr); }},
        {kvtStsNullPointer, [&] { return kvtiComputeChromaMV_MPEG4(&z, nullptr); }},
        {kvtStsNullPointer, [&] { return kvtiComputeChroma4MV_MPEG4(o.cur, &o.mv2, nullptr); }},
        {kvtStsNullPointer, [&] { return kvtiLimitMVToRect_MPEG4(&z, &o.mv2, nullptr, 0, 0, 7); }},
        {kvtStsBadBlockSize, [&] { return kvtiLimitMVToRect_MPEG4(&z, &o.mv2, &rect, 0, 0, 7); }},
        {kvtStsBadSize, [&] { return kvtiLimitMVToRect_MPEG4(&z, &o.mv2, &narrow, 0, 0, 16); }},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(rows[i].second(), rows[i].first) << "row " << i;
        EXPECT_TRUE(s.p == p0 && s.offset == 3 && std::memcmp(&o, &o0, sizeof o) == 0) << "row " << i;
    }
    EXPECT_EQ(kvtiLimitMVToRect_MPEG4(&z, &o.mv2, &narrow, 0, 0, 8), kvtStsOk);  // 31 wide holds two 8s
}
