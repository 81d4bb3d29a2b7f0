// MPEG-4 motion vectors: the difference code at every offset, random differences for every
// fcode written with the shared table and read back through the predictor and the wrap, the
// predictor rules, direct mode, padding, chroma vectors, the rectangle limit and the checks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "bit_string.h"
#include "checkasm.h"
#include "kvtvc.h"
#include "mv_print.h"
#include "tsv.h"

using namespace kvt::test;

namespace {

// Magnitude codes of Table B-12, from the shared table.
const std::vector<std::string>& mvd_codes() {
    static const std::vector<std::string> codes = [] {
        std::vector<std::string> c(33);
        for (const TsvRow& r : read_table("mpeg4_mvd.tsv")) c[size_t(r.num("abs_value"))] = r["code"];
        return c;
    }();
    return codes;
}

// The encoder's side of ISO/IEC 14496-2 7.6.3: motion code, sign, then r_size residual bits.
std::string encode_mvd(int d, int fcode) {
    const int rsize = fcode - 1;
    if (d == 0) return mvd_codes()[0];
    const int mag = std::abs(d) - 1;
    std::string s = mvd_codes()[size_t((mag >> rsize) + 1)] + (d < 0 ? "1" : "0");
    if (rsize > 0) s += to_bits(uint32_t(mag & ((1 << rsize) - 1)), rsize);
    return s;
}

// The difference that takes predictor p to target t within the fcode range.
int wrapped_diff(int t, int p, int fcode) {
    int d = t - p;
    if (d < -(16 << fcode)) d += 32 << fcode;
    if (d > (16 << fcode) - 1) d -= 32 << fcode;
    return d;
}

KvtMotionVec random_mv(Rng& rng, int fcode) {
    return {int16_t(rng.uniform(-(16 << fcode), (16 << fcode) - 1)),
            int16_t(rng.uniform(-(16 << fcode), (16 << fcode) - 1))};
}

struct DirectOut {
    KvtMotionVec fwd[4], bwd[4];
};

}  // namespace

// Every code of B-12, both signs, at every offset: direct mode with the co-located flag clear
// hands back the raw difference, so no predictor or wrap hides the decoded value.
TEST(MpegMv, EveryDifferenceCodeAtEveryOffset) {
    Rng rng(21);
    const KvtMotionVec col[4] = {};
    alignas(4) const Kvt32u flag = 0;
    for (int d = -32; d <= 32; ++d) {
        for (int off = 0; off < 8; ++off) {
            const std::string code = encode_mvd(d, 1) + encode_mvd(-d, 1);
            Stream s(random_bits(rng, off) + code + random_bits(rng, 24), off, uint8_t(rng.next()));
            DirectOut o{};
            ASSERT_EQ(kvtiDecodeMV_BVOP_Direct_MPEG4(&s.p, &s.offset, col, o.fwd, o.bwd, &flag, 1, 2), kvtStsOk);
            EXPECT_EQ(o.fwd[3], (KvtMotionVec{int16_t(d), int16_t(-d)})) << d;
            EXPECT_EQ(o.bwd[0], (KvtMotionVec{int16_t(d), int16_t(-d)})) << d;
            EXPECT_EQ(s.pos(), off + long(code.size()));
        }
    }
}

// Random targets and predictors for fcode 1..7: the written difference (with residual bits and
// wrapped into range) must bring the predictor back to the target, also across both ends.
TEST(MpegMv, RandomDifferencesRoundTripForEveryFcode) {
    Rng rng(22);
    for (int fcode = 1; fcode <= 7; ++fcode) {
        int wraps = 0;
        for (int trial = 0; trial < 300; ++trial) {
            const KvtMotionVec pred = random_mv(rng, fcode);
            const KvtMotionVec want = random_mv(rng, fcode);
            const int dx = wrapped_diff(want.dx, pred.dx, fcode), dy = wrapped_diff(want.dy, pred.dy, fcode);
            wraps += (dx != want.dx - pred.dx) + (dy != want.dy - pred.dy);
            const int off = rng.uniform(0, 7);
            const std::string code = encode_mvd(dx, fcode) + encode_mvd(dy, fcode);
            Stream s(random_bits(rng, off) + code, off, uint8_t(rng.next()));
            KvtMotionVec mv = pred;
            const KvtStatus st = trial % 2 ? kvtiDecodeMV_BVOP_Forward_MPEG4(&s.p, &s.offset, &mv, fcode)
                                           : kvtiDecodeMV_BVOP_Backward_MPEG4(&s.p, &s.offset, &mv, fcode);
            ASSERT_EQ(st, kvtStsOk);
            ASSERT_EQ(mv, want) << "fcode " << fcode << " pred " << pred;
            ASSERT_EQ(s.pos(), off + long(code.size()));
        }
        EXPECT_GT(wraps, 10) << "the trials should cross the range ends";
    }
}

TEST(MpegMv, InterpolateReadsForwardThenBackward) {
    KvtMotionVec f{4, 4}, b{-64, 100};
    const std::string code = encode_mvd(3, 1) + encode_mvd(0, 1) + encode_mvd(-70, 3) + encode_mvd(5, 3);
    Stream s(code);
    ASSERT_EQ(kvtiDecodeMV_BVOP_Interpolate_MPEG4(&s.p, &s.offset, &f, &b, 1, 3), kvtStsOk);
    EXPECT_EQ(f, (KvtMotionVec{7, 4}));
    EXPECT_EQ(b, (KvtMotionVec{122, 105}));  // -134 wraps by 256
    EXPECT_EQ(s.pos(), long(code.size()));
    // A bad backward code keeps the decoded forward vector and stops the cursor after it.
    const std::string fwd = encode_mvd(1, 2) + encode_mvd(1, 2);
    Stream t(fwd + "000000000000" + "1");
    ASSERT_EQ(kvtiDecodeMV_BVOP_Interpolate_MPEG4(&t.p, &t.offset, &f, &b, 2, 2), kvtStsBadMvCode);
    EXPECT_EQ(f, (KvtMotionVec{8, 5}));
    EXPECT_EQ(b, (KvtMotionVec{122, 105}));  // -134 wraps by 256
    EXPECT_EQ(t.pos(), long(fwd.size()));
}

// Twelve zero bits are no code; a valid horizontal code before a bad vertical one is not
// consumed either.
TEST(MpegMv, InvalidCodeLeavesCursorAndVector) {
    Rng rng(23);
    for (int off = 0; off < 8; ++off) {
        for (const std::string& bad : {std::string("00000000000"), encode_mvd(-9, 2) + "00000000000"}) {
            Stream s(random_bits(rng, off) + bad + "1" + random_bits(rng, 8), off, 0);
            KvtMotionVec mv{3, -3};
            EXPECT_EQ(kvtiDecodeMV_BVOP_Forward_MPEG4(&s.p, &s.offset, &mv, 2), kvtStsBadMvCode);
            EXPECT_EQ(mv, (KvtMotionVec{3, -3}));
            EXPECT_EQ(s.pos(), off);
            DirectOut o{}, o0{};
            const KvtMotionVec col[4] = {};
            alignas(4) const Kvt32u flag = 1;
            EXPECT_EQ(kvtiDecodeMV_BVOP_Direct_MPEG4(&s.p, &s.offset, col, o.fwd, o.bwd, &flag, 1, 1), kvtStsBadMvCode);
            EXPECT_EQ(0, std::memcmp(&o, &o0, sizeof o));
            EXPECT_EQ(s.pos(), off);
        }
    }
}

namespace {

// The candidates of ISO/IEC 14496-2 Figure 7-32 by position, in 8x8 block units relative to the
// macroblock's top-left block: block b sits at (b & 1, b >> 1). A top-row block takes the blocks
// to its left and above it and the bottom-left block of the above-right macroblock; the bottom
// row takes left, above and above-right, except that the bottom-right block, whose right side is
// not decoded yet, takes left, above-left and above. Positions outside the macroblock fall into
// the left, above or above-right one.
struct Neighbourhood {
    KvtMotionVec left[4], upper[4], upper_right[4];
    alignas(4) Kvt32u ok[3];  // left, above, above-right usable
};

const KvtMotionVec* anchor_candidate(const Neighbourhood& n, const KvtMotionVec* cur, const Kvt8u* present, int x,
                                     int y) {
    const int block = (x & 1) + 2 * (y & 1);
    if (x < 0) return n.ok[0] ? &n.left[block] : nullptr;
    if (y < 0 && x > 1) return n.ok[2] ? &n.upper_right[block] : nullptr;
    if (y < 0) return n.ok[1] ? &n.upper[block] : nullptr;
    return present[block] ? &cur[block] : nullptr;
}

KvtMotionVec anchor_predictor(const Neighbourhood& n, const KvtMotionVec* cur, const Kvt8u* present, int b) {
    const int pos[4][3][2] = {
        {{-1, 0}, {0, -1}, {2, -1}}, {{0, 0}, {1, -1}, {2, -1}}, {{-1, 1}, {0, 0}, {1, 0}}, {{0, 1}, {0, 0}, {1, 0}}};
    std::vector<KvtMotionVec> usable;
    KvtMotionVec c[3];
    for (int i = 0; i < 3; ++i) {
        const KvtMotionVec* v = anchor_candidate(n, cur, present, pos[b][i][0], pos[b][i][1]);
        c[i] = v ? *v : KvtMotionVec{0, 0};
        if (v) usable.push_back(*v);
    }
    if (usable.size() <= 1) return usable.empty() ? KvtMotionVec{0, 0} : usable[0];
    auto med = [](int a, int b2, int c2) { return std::max(std::min(a, b2), std::min(std::max(a, b2), c2)); };
    return {int16_t(med(c[0].dx, c[1].dx, c[2].dx)), int16_t(med(c[0].dy, c[1].dy, c[2].dy))};
}

KvtStatus decode_pvop(Stream& s, Neighbourhood& n, KvtMotionVec* cur, const Kvt8u* present, int fcode, int type) {
    return kvtiDecodePadMV_PVOP_MPEG4(&s.p, &s.offset, n.left, n.upper, n.upper_right, cur, &n.ok[0], &n.ok[1],
                                      &n.ok[2], present, fcode, type);
}

}  // namespace

// Every combination of usable neighbours and present blocks, four-vector and one-vector types.
TEST(MpegMv, PredictorForEveryNeighbourAndBlockCombination) {
    Rng rng(24);
    for (int avail = 0; avail < 8; ++avail) {
        for (int mask = 0; mask < 16; ++mask) {
            for (int type : {2, 5, 0}) {
                const int fcode = rng.uniform(1, 7);
                Neighbourhood n{};
                for (int b = 0; b < 4; ++b) {
                    n.left[b] = random_mv(rng, fcode);
                    n.upper[b] = random_mv(rng, fcode);
                    n.upper_right[b] = random_mv(rng, fcode);
                }
                for (int i = 0; i < 3; ++i) n.ok[i] = (avail >> i) & 1 ? rng.next() | 1 : 0;
                alignas(4) Kvt8u present[4];
                for (int b = 0; b < 4; ++b) present[b] = (mask >> b) & 1 ? Kvt8u(rng.uniform(1, 255)) : 0;
                // Targets and the differences that reach them from the anchor's predictors.
                const bool four = type != 0;
                KvtMotionVec want[4] = {};
                std::string code;
                for (int b = 0; b < (four ? 4 : 1); ++b) {
                    if (four && !present[b]) continue;
                    const KvtMotionVec p = anchor_predictor(n, want, present, b);
                    want[b] = random_mv(rng, fcode);
                    code += encode_mvd(wrapped_diff(want[b].dx, p.dx, fcode), fcode) +
                            encode_mvd(wrapped_diff(want[b].dy, p.dy, fcode), fcode);
                }
                const int off = rng.uniform(0, 7);
                Stream s(random_bits(rng, off) + code, off, uint8_t(rng.next()));
                KvtMotionVec cur[4];
                ASSERT_EQ(decode_pvop(s, n, cur, present, fcode, type), kvtStsOk);
                SCOPED_TRACE(testing::Message() << "avail " << avail << " blocks " << mask << " type " << type);
                for (int b = 0; b < 4; ++b) {
                    if (!four || present[b]) {
                        EXPECT_EQ(cur[b], want[four ? b : 0]) << b;
                    }
                }
                EXPECT_EQ(s.pos(), off + long(code.size()));
            }
        }
    }
}

TEST(MpegMv, FourVectorErrorKeepsEarlierBlocks) {
    Neighbourhood n{};
    alignas(4) const Kvt8u present[4] = {1, 1, 1, 1};
    KvtMotionVec cur[4] = {{50, 50}, {50, 50}, {50, 50}, {50, 50}};
    const std::string good = encode_mvd(2, 1) + encode_mvd(-2, 1) + encode_mvd(1, 1) + encode_mvd(0, 1);
    Stream s(good + "000000000000");
    EXPECT_EQ(decode_pvop(s, n, cur, present, 1, 2), kvtStsBadMvCode);
    EXPECT_EQ(cur[0], (KvtMotionVec{2, -2}));
    EXPECT_EQ(cur[1], (KvtMotionVec{3, -2}));  // predicted from block 0 alone
    EXPECT_EQ(cur[2], (KvtMotionVec{50, 50}));
    EXPECT_EQ(cur[3], (KvtMotionVec{50, 50}));
    EXPECT_EQ(s.pos(), long(good.size()));
}

// Absent blocks copy a present neighbour: horizontal first, then vertical, then diagonal; later
// blocks see earlier replacements.
TEST(MpegMv, PaddingOfAbsentBlocks) {
    const KvtMotionVec a{1, 1}, b{2, 2}, c{3, 3}, d{4, 4};
    struct Case {
        Kvt8u present[4];
        KvtMotionVec want[4];
    };
    const Case cases[] = {
        {{1, 1, 1, 1}, {a, b, c, d}},
        {{0, 1, 1, 1}, {b, b, c, d}},
        {{0, 0, 1, 1}, {c, d, c, d}},
        {{1, 0, 0, 1}, {a, a, d, d}},
        {{0, 0, 0, 1}, {d, d, d, d}},
        {{0, 1, 0, 0}, {b, b, b, b}},
        {{0, 0, 0, 0}, {d, c, c, d}},
    };
    for (const Case& k : cases) {
        KvtMotionVec set[4] = {a, b, c, d};
        ASSERT_EQ(kvtiPadMV_MPEG4(set, k.present), kvtStsOk);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(set[i], k.want[i]) << "flags " << int(k.present[0]) << int(k.present[1]) << int(k.present[2])
                                          << int(k.present[3]) << " block " << i;
    }
}

// (TRB x m) / TRD + d forward; backward d ? forward - m : ((TRB - TRD) x m) / TRD, truncating.
TEST(MpegMv, DirectModeArithmeticWithNegativeVectors) {
    struct Case {
        int trb, trd, m, d, fwd, bwd;
    };
    const Case cases[] = {
        {1, 2, 3, 0, 1, -1},   {1, 2, -3, 0, -1, 1},   {2, 3, -7, 0, -4, 2},  {1, 3, -5, 2, 1, 6},
        {2, 5, 11, -3, 1, -10}, {3, 3, -9, 0, -9, 0},  {1, 4, -1, -1, -1, 0}, {5, 2, -4, 0, -10, -6},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(testing::Message() << k.trb << "/" << k.trd << " m " << k.m << " d " << k.d);
        const KvtMotionVec col[4] = {{int16_t(k.m), 0}, {0, int16_t(k.m)}, {int16_t(k.m), int16_t(k.m)}, {0, 0}};
        alignas(4) const Kvt32u flag = 7;
        DirectOut o{};
        const std::string code = encode_mvd(k.d, 1) + encode_mvd(k.d, 1);
        Stream s(code);
        ASSERT_EQ(kvtiDecodeMV_BVOP_Direct_MPEG4(&s.p, &s.offset, col, o.fwd, o.bwd, &flag, k.trb, k.trd), kvtStsOk);
        EXPECT_EQ(s.pos(), long(code.size()));
        const int zf = k.d, zb = k.d;  // a zero co-located component: d both ways
        EXPECT_EQ(o.fwd[0], (KvtMotionVec{int16_t(k.fwd), int16_t(zf)}));
        EXPECT_EQ(o.bwd[0], (KvtMotionVec{int16_t(k.bwd), int16_t(zb)}));
        EXPECT_EQ(o.fwd[2], (KvtMotionVec{int16_t(k.fwd), int16_t(k.fwd)}));
        EXPECT_EQ(o.bwd[2], (KvtMotionVec{int16_t(k.bwd), int16_t(k.bwd)}));
        if (k.d == 0) {  // the skip form is the same with a zero difference and reads nothing
            DirectOut sk{};
            ASSERT_EQ(kvtiDecodeMV_BVOP_DirectSkip_MPEG4(col, sk.fwd, sk.bwd, &flag, k.trb, k.trd), kvtStsOk);
            EXPECT_EQ(0, std::memcmp(&sk, &o, sizeof o));
        }
    }
}

TEST(MpegMv, ChromaVectors) {
    // One vector: v / 2 with the quarter positions sent to the half sample.
    const int luma[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 31, -1, -2, -3, -4, -5, -6, -32};
    const int chroma[] = {0, 1, 1, 1, 2, 3, 3, 3, 4, 5, 5, 15, -1, -1, -1, -2, -3, -3, -16};
    for (size_t i = 0; i < sizeof luma / sizeof luma[0]; ++i) {
        const KvtMotionVec v{int16_t(luma[i]), int16_t(-luma[i])};
        KvtMotionVec c{};
        ASSERT_EQ(kvtiComputeChromaMV_MPEG4(&v, &c), kvtStsOk);
        EXPECT_EQ(c, (KvtMotionVec{int16_t(chroma[i]), int16_t(-chroma[i])})) << luma[i];
    }
    // Four vectors: sum / (4 x blocks) x 2 plus the rounding of the remainder.
    struct Case {
        KvtMotionVec v[4];
        Kvt8u present[4];
        KvtMotionVec want;
    };
    const Case cases[] = {
        {{{1, 0}, {1, 0}, {1, 0}, {1, 0}}, {1, 1, 1, 1}, {1, 0}},         // 4 / 16 -> table[4] = 1
        {{{3, -5}, {3, -5}, {3, -5}, {3, -5}}, {1, 1, 1, 1}, {1, -3}},    // 12 -> 1; -20 -> -(2 + 1)
        {{{7, 9}, {7, 9}, {-4, 0}, {99, 99}}, {1, 1, 1, 0}, {2, 3}},      // 10 / 12 -> 2; 18 -> 2 + 1
        {{{5, -6}, {-1, 0}, {0, 0}, {0, 0}}, {0, 1, 0, 1}, {0, 0}},       // -1 / 8 -> 0; 0
        {{{5, -6}, {-1, 0}, {0, 0}, {0, 0}}, {1, 0, 0, 0}, {3, -3}},      // one block: as 1-vector
        {{{5, -6}, {-1, 0}, {0, 0}, {0, 0}}, {0, 0, 0, 0}, {0, 0}},       // none: zero
    };
    for (const Case& k : cases) {
        KvtMotionVec c{};
        ASSERT_EQ(kvtiComputeChroma4MV_MPEG4(k.v, &c, k.present), kvtStsOk);
        EXPECT_EQ(c, k.want) << k.v[0];
    }
}

// A block may start at o .. o + e - s; a position before is moved to o, one at or past the last
// start to the last start (vectors in half samples, positions in samples).
TEST(MpegMv, LimitToRectangle) {
    struct Case {
        int v;
        Kvt32u p;
        int o, e, s, want;
    };
    const Case cases[] = {
        {0, 0, -16, 64, 16, 0},   {-33, 0, -16, 64, 16, -32}, {-32, 0, -16, 64, 16, -32}, {31, 16, -16, 64, 16, 31},
        {63, 16, -16, 64, 16, 32}, {-100, 16, 8, 48, 8, -16}, {77, 16, 8, 48, 8, 64},     {-5, 100, 0, 16, 8, -184},
    };
    for (const Case& k : cases) {
        const KvtRegionRect rx{k.o, 0, k.e, 64}, ry{0, k.o, 64, k.e};
        const KvtMotionVec v{int16_t(k.v), 0}, vy{0, int16_t(k.v)};
        KvtMotionVec out{};
        ASSERT_EQ(kvtiLimitMVToRect_MPEG4(&v, &out, &rx, k.p, 8, k.s), kvtStsOk);
        EXPECT_EQ(out, (KvtMotionVec{int16_t(k.want), 0})) << k.v << " at " << k.p;
        ASSERT_EQ(kvtiLimitMVToRect_MPEG4(&vy, &out, &ry, 8, k.p, k.s), kvtStsOk);
        EXPECT_EQ(out, (KvtMotionVec{0, int16_t(k.want)})) << k.v << " at " << k.p;
    }
}

// Check order: cursor (-8), offset (-105), other pointers (-8), alignment (-97), then fcode (-98)
// or temporal distances (-96); nothing moves or is written on any of them.
TEST(MpegMv, ArgumentChecks) {
    Stream s(encode_mvd(1, 1) + encode_mvd(1, 1));
    Kvt8u* const p0 = s.p;
    Kvt8u* null_stream = nullptr;
    Neighbourhood n{};
    n.ok[0] = n.ok[1] = n.ok[2] = 1;
    alignas(4) Kvt8u flags[8] = {1, 1, 1, 1, 1, 1, 1, 1};
    alignas(4) Kvt32u raw[4] = {1, 1, 1, 1};
    const Kvt32u* odd = reinterpret_cast<const Kvt32u*>(reinterpret_cast<const Kvt8u*>(raw) + 2);
    KvtMotionVec cur[4] = {{5, 5}, {5, 5}, {5, 5}, {5, 5}};
    KvtMotionVec mv{5, 5}, mv2{5, 5};
    DirectOut o{};
    int bad_off = 8;
    auto pvop = [&](Kvt8u** pp, int* off, const KvtMotionVec* left, const Kvt32u* vl, const Kvt8u* present, int f) {
        return kvtiDecodePadMV_PVOP_MPEG4(pp, off, left, n.upper, n.upper_right, cur, vl, &n.ok[1], &n.ok[2], present,
                                          f, 2);
    };
    EXPECT_EQ(pvop(nullptr, &s.offset, n.left, &n.ok[0], flags, 1), kvtStsNullPointer);
    EXPECT_EQ(pvop(&null_stream, &bad_off, nullptr, odd, flags, 9), kvtStsNullPointer);
    EXPECT_EQ(pvop(&s.p, &bad_off, nullptr, odd, flags, 9), kvtStsBadBitOffset);
    EXPECT_EQ(pvop(&s.p, &s.offset, nullptr, odd, flags, 9), kvtStsNullPointer);
    EXPECT_EQ(pvop(&s.p, &s.offset, n.left, odd, flags, 9), kvtStsMisaligned);
    EXPECT_EQ(pvop(&s.p, &s.offset, n.left, &n.ok[0], flags + 1, 9), kvtStsMisaligned);
    EXPECT_EQ(pvop(&s.p, &s.offset, n.left, &n.ok[0], flags, 0), kvtStsBadFcode);
    EXPECT_EQ(kvtiDecodeMV_BVOP_Forward_MPEG4(&s.p, nullptr, &mv, 1), kvtStsNullPointer);
    EXPECT_EQ(kvtiDecodeMV_BVOP_Forward_MPEG4(&s.p, &bad_off, nullptr, 1), kvtStsBadBitOffset);
    EXPECT_EQ(kvtiDecodeMV_BVOP_Backward_MPEG4(&s.p, &s.offset, &mv, 0), kvtStsBadFcode);
    EXPECT_EQ(kvtiDecodeMV_BVOP_Interpolate_MPEG4(&s.p, &s.offset, &mv, nullptr, 1, 1), kvtStsNullPointer);
    EXPECT_EQ(kvtiDecodeMV_BVOP_Interpolate_MPEG4(&s.p, &s.offset, &mv, &mv2, 1, 8), kvtStsBadFcode);
    int neg_off = -1;
    EXPECT_EQ(kvtiDecodeMV_BVOP_Direct_MPEG4(&s.p, &neg_off, nullptr, o.fwd, o.bwd, odd, 0, 0), kvtStsBadBitOffset);
    EXPECT_EQ(kvtiDecodeMV_BVOP_Direct_MPEG4(&s.p, &s.offset, cur, o.fwd, nullptr, odd, 0, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtiDecodeMV_BVOP_Direct_MPEG4(&s.p, &s.offset, cur, o.fwd, o.bwd, odd, 0, 0), kvtStsMisaligned);
    EXPECT_EQ(kvtiDecodeMV_BVOP_Direct_MPEG4(&s.p, &s.offset, cur, o.fwd, o.bwd, raw, 0, 1), kvtStsBadTemporalDist);
    EXPECT_EQ(kvtiDecodeMV_BVOP_DirectSkip_MPEG4(cur, o.fwd, o.bwd, odd, 0, 0), kvtStsMisaligned);
    EXPECT_EQ(kvtiDecodeMV_BVOP_DirectSkip_MPEG4(cur, o.fwd, o.bwd, raw, -3, 1), kvtStsBadTemporalDist);
    EXPECT_EQ(s.p, p0);
    EXPECT_EQ(s.offset, 0);
    EXPECT_EQ(mv, (KvtMotionVec{5, 5}));
    EXPECT_EQ(mv2, (KvtMotionVec{5, 5}));
    for (int b = 0; b < 4; ++b) EXPECT_EQ(cur[b], (KvtMotionVec{5, 5}));
    const DirectOut zero{};
    EXPECT_EQ(0, std::memcmp(&o, &zero, sizeof o));

    const KvtRegionRect rect{0, 0, 32, 32};
    EXPECT_EQ(kvtiPadMV_MPEG4(cur, nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiComputeChromaMV_MPEG4(&mv, nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiComputeChroma4MV_MPEG4(cur, &mv2, nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiLimitMVToRect_MPEG4(&mv, &mv2, nullptr, 0, 0, 7), kvtStsNullPointer);
    EXPECT_EQ(kvtiLimitMVToRect_MPEG4(&mv, &mv2, &rect, 0, 0, 7), kvtStsBadBlockSize);
    const KvtRegionRect narrow{0, 0, 31, 64};
    EXPECT_EQ(kvtiLimitMVToRect_MPEG4(&mv, &mv2, &narrow, 0, 0, 16), kvtStsBadSize);
    EXPECT_EQ(kvtiLimitMVToRect_MPEG4(&mv, &mv2, &narrow, 0, 0, 8), kvtStsOk);
    EXPECT_EQ(mv2, mv);
}
