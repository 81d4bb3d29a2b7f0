// H.263 and MPEG-4 macroblock headers and motion vectors: every header code and rejected prefix, the
// quantizer updates and random vector differences (every fcode, with wraps), written from the code
// tables and read back at every bit offset; the predictor, padding, chroma and direct-mode vectors
// against models, the rectangle limit, and the argument checks of every function. Test streams are
// strings of '0' and '1', independent of the library's bit writer.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <map>

#include "bit_string.h"
#include "checkasm.h"
#include "kvtvc.h"
#include "mpeg4/h263_mv_dsp.h"
#include "mpeg4/mb_header_dsp.h"
#include "mpeg4/motion_vector_dsp.h"
#include "tsv.h"

using namespace kvt;
using namespace kvt::test;
using Vecs = std::array<KvtMotionVec, 4>;

static bool operator==(KvtMotionVec a, KvtMotionVec b) { return a.dx == b.dx && a.dy == b.dy; }
static std::ostream& operator<<(std::ostream& o, KvtMotionVec v) {
    return o << '(' << v.dx << ',' << v.dy << ')';
}

namespace {

constexpr KvtMotionVec n9{9, 9};  // outputs start as this, so what a reader left alone shows
constexpr Vecs none{{n9, n9, n9, n9}};

// A difference d brought into the range of 32 << fcode half samples centred on zero.
int wrap_mv(int d, int fcode) { return ((d + (48 << fcode)) & ((32 << fcode) - 1)) - (16 << fcode); }

KvtMotionVec random_mv(Rng& rng, int fcode) {
    const int r = 16 << fcode;
    return {int16_t(rng.uniform(-r, r - 1)), int16_t(rng.uniform(-r, r - 1))};
}

int median(int a, int b, int c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }

// MPEG-4 motion code from tables/, sign, then fcode - 1 residual bits.
std::string encode_mvd(int d, int fcode) {
    static std::vector<std::string> codes(33);
    if (codes[0].empty())
        for (const TsvRow& r : read_table("mpeg4_mvd.tsv")) codes[size_t(r.num("abs_value"))] = r["code"];
    const int r = fcode - 1, mag = std::abs(d) - 1;
    if (d == 0) return codes[0];
    return codes[size_t((mag >> r) + 1)] + (d < 0 ? "1" : "0") + (r ? to_bits(uint32_t(mag), r) : "");
}

}  // namespace

// `check` decodes into four vectors preset to n9, four times at each offset: an accepted code moves
// the cursor by its length, a rejected one by `moved` (default nothing), the offset left in 0..7.
// Cases, written from the code tables:
// - every H.263 header code and the prefixes that start no code (MCBPC: type in bits 0..2, Cb coded
//   in bit 5, Cr in bit 4, the INTER4V+Q codes rejected), and the quantizer update in its three
//   forms from every prior quantizer (Annex T);
// - eleven zeros start no H.263 vector code, the word for +32 is no H.263 code (but an MPEG-4 one), and a
//   good horizontal code before a bad vertical one is not consumed; an interpolated pair keeps its
//   forward vector and a four-vector macroblock its earlier blocks;
// - random H.263 vectors: Table 14 differences, wrapped into [-16, 15.5], against the median of the
//   three neighbours or, on the top border, the left one;
// - random MPEG-4 B-VOP vectors for every fcode, forward, backward, or both (the other direction at
//   fcode 8 - fcode): the written difference, wrapped into range, brings the target back.
TEST(H263Mpeg4, EveryCodeAtEveryOffsetAndRandomVectorsRoundTrip) {
    using Read = std::function<KvtStatus(Kvt8u**, int*, KvtMotionVec*)>;
    Rng rng(11);
    const auto check = [&](const Read& read, const std::string& bits, int st, const Vecs& want = none,
                           long moved = -1) {
        for (int i = 0; i < 32; ++i) {
            const int off = i % 8;
            SCOPED_TRACE(bits + " at offset " + std::to_string(off));
            Stream s(rng, bits, off);
            Vecs out = none;
            EXPECT_EQ(read(&s.p, &s.offset, out.data()), st);
            EXPECT_EQ(out, want);
            EXPECT_EQ(s.pos(), off + (moved >= 0 ? moved : st < 0 ? 0 : long(bits.size())));
        }
    };
    // A reader of one value (started as `init`), which lands in the first dx; value < 0: a status.
    const auto add = [&](auto read, auto init, const std::string& bits, int value) {
        const Read r = [=](Kvt8u** p, int* o, KvtMotionVec* v) {
            auto u = init;
            const KvtStatus st = read(p, o, &u);
            v->dx = int16_t(u);
            return st;
        };
        check(r, bits, std::min(value, 0), {{{int16_t(value < 0 ? init : value), 9}, n9, n9, n9}});
    };
    for (int i = 0; i < 2; ++i)
        for (const TsvRow& r : read_table(i ? "h263_mcbpc_inter.tsv" : "h263_mcbpc_intra.tsv")) {
            const std::string t = r["mb_type"];
            const int v = t[0] == 'S' ? 255 : t == "5" ? -109 - i : stoi(t) | int(bits_value(r["cbpc"])) << 4;
            add(i ? kvtiDecodeMCBPCInter_H263 : kvtiDecodeMCBPCIntra_H263, Kvt8u(9), r["code"], v);
        }
    for (uint32_t v : {0u, 2u, 3u, 4u, 7u}) add(kvtiDecodeMCBPCIntra_H263, Kvt8u(9), to_bits(v, 9), -109);
    add(kvtiDecodeMCBPCInter_H263, Kvt8u(9), std::string(9, '0'), -110);
    for (const char* c : {"000000", "000001"}) add(kvtiDecodeCBPY_H263, Kvt8u(9), c, -111);
    for (const TsvRow& r : read_table("h263_cbpy.tsv"))
        add(kvtiDecodeCBPY_H263, Kvt8u(9), r["code"], int(bits_value(r["cbpy_inter"])));
    for (const TsvRow& r : read_table("h263_modb.tsv"))
        add(kvtiDecodeMODB_H263, Kvt8u(9), r["code"], r.num("cbpb_present") | r.num("mvdb_present") << 1);
    for (const TsvRow& r : read_table("h263_annex_t_dquant.tsv")) {
        const Kvt32u prior = Kvt32u(r.num("prior_quant")), q = Kvt32u(rng.uniform(1, 31));
        add(kvtiUpdateQuant_MQ_H263_1u32s_I, prior, "10", r.num("new_quant_10"));
        add(kvtiUpdateQuant_MQ_H263_1u32s_I, prior, "11", r.num("new_quant_11"));
        add(kvtiUpdateQuant_MQ_H263_1u32s_I, prior, "0" + to_bits(q, 5), int(q));
    }
    const KvtMotionVec z{0, 0}, col[4] = {};
    alignas(4) const Kvt32u no = 0;
    alignas(4) const Kvt8u all[4] = {1, 1, 1, 1};
    const Read h263 = [&](auto p, auto o, auto v) { return kvtiDecodeMV_H263(p, o, &z, &z, &z, v); };
    const Read ip = [](auto p, auto o, auto v) {
        return kvtiDecodeMV_BVOP_Interpolate_MPEG4(p, o, v, v + 1, 2, 1);
    };
    const Read pvop = [&](auto p, auto o, auto v) {
        return kvtiDecodePadMV_PVOP_MPEG4(p, o, col, col, col, v, &no, &no, &no, all, 1, 2);
    };
    const std::string zeros(11, '0'),
        plus32 = "0000000000100", mv12 = encode_mvd(1, 2) + encode_mvd(1, 2),
        four = encode_mvd(2, 1) + encode_mvd(-2, 1) + encode_mvd(1, 1) + encode_mvd(0, 1);
    const int bad = kvtStsBadMvdCode, bad4 = kvtStsBadMvCode;
    check(h263, zeros, bad);
    check(h263, plus32, bad);
    check(h263, encode_mvd(-7, 1) + plus32, bad);
    check(ip, mv12 + zeros, bad4, {{{10, 10}, n9, n9, n9}}, long(mv12.size()));
    check(pvop, four + zeros, bad4, {{{2, -2}, {3, -2}, n9, n9}}, long(four.size()));
    std::map<int, std::string> mvd;  // H.263 Table 14 code words by difference in half samples
    for (const TsvRow& r : read_table("h263_mvd.tsv")) mvd[r.num("index") - 32] = r["code"];
    for (int i = 0; i < 1120; ++i) {
        // Kind 0: H.263 from the left, above and above-right v[0..2] (on the top border the left one) to
        // v[3]; kind 1: B-VOP forward or backward from v[0]; kind 2: both, from v[0] and v[1].
        const int kind = i % 3, fc[2] = {kind ? i % 7 + 1 : 1, kind ? 7 - i % 7 : 1};
        Vecs v;
        for (size_t k = 0; k < 4; ++k) v[k] = random_mv(rng, fc[k & 1]);
        if (i % 6 == 0) v[1] = v[2] = v[0];  // top border
        const Vecs want{
            {kind ? random_mv(rng, fc[0]) : v[3], kind == 2 ? random_mv(rng, fc[1]) : v[1], n9, n9}};
        std::string code;
        for (size_t k = 0; k < size_t(std::max(kind, 1)); ++k) {
            const int px = kind ? v[k].dx : median(v[0].dx, v[1].dx, v[2].dx);
            const int py = kind ? v[k].dy : median(v[0].dy, v[1].dy, v[2].dy);
            for (int d : {want[k].dx - px, want[k].dy - py})
                code += kind ? encode_mvd(wrap_mv(d, fc[k]), fc[k]) : mvd.at(wrap_mv(d, 1));
        }
        const Read read = [=](Kvt8u** p, int* o, KvtMotionVec* out) {
            out[0] = v[0];
            out[1] = v[1];
            if (kind == 2) return kvtiDecodeMV_BVOP_Interpolate_MPEG4(p, o, out, out + 1, fc[0], fc[1]);
            if (kind == 1 && i % 2) return kvtiDecodeMV_BVOP_Backward_MPEG4(p, o, out, fc[0]);
            if (kind == 1) return kvtiDecodeMV_BVOP_Forward_MPEG4(p, o, out, fc[0]);
            return i % 6 ? kvtiDecodeMV_H263(p, o, &v[0], &v[1], &v[2], out)
                         : kvtiDecodeMV_TopBorder_H263(p, o, &v[0], out);
        };
        check(read, code, 0, want);
    }
}

// Every combination of usable neighbours and present blocks, four-vector and one-vector types. The
// predictor candidates of each block (numbered 0 1 / 2 3) as (macroblock, block), the macroblock
// left, above, above-right or current (0..3): the median of the usable ones with the unusable as
// zero, or the single usable one, or zero. An absent block of a four-vector macroblock copies a
// present neighbour: horizontal first, then vertical, then diagonal (taken present or not), block by
// block so later ones see replacements. The chroma vector of n present blocks is sign x (|sum| / 4n
// x 2 + round[|sum| % 4n]) with the rounding tables for sixteenths, twelfths, eighths and quarters;
// one vector is n = 1, none present gives zero.
TEST(H263Mpeg4, Mpeg4PredictorPaddingAndChromaForEveryNeighbourAndBlockCombination) {
    const int cand[4][3][2] = {{{0, 1}, {1, 2}, {2, 2}},
                               {{3, 0}, {1, 3}, {2, 2}},
                               {{0, 3}, {3, 0}, {3, 1}},
                               {{3, 2}, {3, 0}, {3, 1}}};
    const std::string round[5] = {"0", "0111", "00111112", "000111111122", "0001111111111122"};
    const auto chroma = [&](int sum, int n) {
        const int a = std::abs(sum), q = a / (4 * n + !n) * 2 + round[n][size_t(a % (4 * n + !n))] - '0';
        return int16_t(sum < 0 ? -q : q);
    };
    Rng rng(24);
    for (int combo = 0; combo < 8 * 16 * 3 * 4; ++combo) {
        const int avail = combo & 7, mask = combo >> 3 & 15,
                  type = std::array{2, 5, 0}[size_t(combo >> 7) % 3];
        const int fcode = rng.uniform(1, 7), off = rng.uniform(0, 7);
        const bool four = type != 0;
        KvtMotionVec mb[3][4];  // left, above, above-right
        alignas(4) Kvt32u ok[3];
        for (int i = 0; i < 3; ++i) {
            std::generate(mb[i], mb[i] + 4, [&] { return random_mv(rng, fcode); });
            ok[i] = (avail >> i) & 1 ? rng.next() | 1 : 0;
        }
        alignas(4) Kvt8u present[4];
        for (int b = 0; b < 4; ++b) present[b] = (mask >> b) & 1 ? Kvt8u(rng.uniform(1, 255)) : 0;
        Vecs want, cur;
        for (auto& v : want) v = random_mv(rng, fcode);
        cur = want;
        std::string code;
        for (size_t b = 0; b < (four ? 4 : 1); ++b) {
            if (four && !present[b]) continue;
            KvtMotionVec c[3] = {}, p{0, 0};
            int usable = 0;
            for (const auto& [m, blk] : cand[b]) {
                if (m < 3 ? !ok[m] : !present[blk]) continue;
                c[usable++] = p = m < 3 ? mb[m][blk] : want[size_t(blk)];
            }
            if (usable > 1)
                p = {int16_t(median(c[0].dx, c[1].dx, c[2].dx)), int16_t(median(c[0].dy, c[1].dy, c[2].dy))};
            want[b] = random_mv(rng, fcode);
            for (int d : {want[b].dx - p.dx, want[b].dy - p.dy}) code += encode_mvd(wrap_mv(d, fcode), fcode);
        }
        Vecs set = want;
        int n = 0, sx = 0, sy = 0;
        for (int b = 0; b < 4; ++b) {
            const int from = !four ? 0 : present[b ^ 1] ? b ^ 1 : present[b ^ 2] ? b ^ 2 : b ^ 3;
            if (!four || !present[b]) want[size_t(b)] = want[size_t(from)];
            n += present[b] != 0;
            sx += present[b] ? set[size_t(b)].dx : 0;
            sy += present[b] ? set[size_t(b)].dy : 0;
        }
        Stream s(rng, code, off);
        SCOPED_TRACE(testing::Message() << "avail " << avail << " blocks " << mask << " type " << type);
        ASSERT_EQ(kvtiDecodePadMV_PVOP_MPEG4(&s.p, &s.offset, mb[0], mb[1], mb[2], cur.data(), ok, ok + 1,
                                             ok + 2, present, fcode, type),
                  0);
        EXPECT_EQ(cur, want);
        EXPECT_EQ(s.pos(), off + long(code.size()));
        KvtMotionVec c[2];
        ASSERT_EQ(kvtiComputeChroma4MV_MPEG4(set.data(), &c[0], present), kvtStsOk);
        ASSERT_EQ(kvtiComputeChromaMV_MPEG4(&set[0], &c[1]), kvtStsOk);
        EXPECT_EQ(c[0], (KvtMotionVec{chroma(sx, n), chroma(sy, n)}));
        EXPECT_EQ(c[1], (KvtMotionVec{chroma(set[0].dx, 1), chroma(set[0].dy, 1)}));
        ASSERT_EQ(kvtiPadMV_MPEG4(set.data(), present), kvtStsOk);
        EXPECT_TRUE(!four || set == want);
    }
}

// Forward (TRB x m) / TRD + d; backward d ? forward - m : ((TRB - TRD) x m) / TRD, the divisions
// truncating toward zero; both d with the co-located flag clear. The skip form is the d = 0 case
// and reads nothing. The differences take the whole fcode-1 range, +32 included.
TEST(H263Mpeg4, Mpeg4DirectModeAgainstModelWithNegativeVectors) {
    Rng rng(31);
    for (int trial = 0; trial < 600; ++trial) {
        const int trb = rng.uniform(1, 9), trd = rng.uniform(1, 9), off = trial % 8, zero = trial % 3 == 0;
        const int dx = zero ? 0 : rng.uniform(-32, 32), dy = zero ? 0 : rng.uniform(-32, 32);
        alignas(4) const Kvt32u flag = trial % 5 ? rng.next() | 1 : 0;
        const auto model = [&](int m, int d, int bwd) {
            const int f = trb * m / trd + d;
            return int16_t(!flag ? d : !bwd ? f : d ? f - m : (trb - trd) * m / trd);
        };
        KvtMotionVec col[4];
        Vecs want[2], o[4];  // direct forward and backward, then the skip form's
        for (auto& m : col) m = random_mv(rng, 6);
        for (size_t b = 0; b < 4; ++b)
            for (int k = 0; k < 2; ++k) want[k][b] = {model(col[b].dx, dx, k), model(col[b].dy, dy, k)};
        const std::string code = encode_mvd(dx, 1) + encode_mvd(dy, 1);
        Stream s(rng, code, off);
        SCOPED_TRACE(testing::Message() << trb << "/" << trd << " d " << dx << "," << dy << " flag " << flag);
        ASSERT_EQ(kvtiDecodeMV_BVOP_Direct_MPEG4(&s.p, &s.offset, col, &o[0][0], &o[1][0], &flag, trb, trd),
                  0);
        ASSERT_EQ(kvtiDecodeMV_BVOP_DirectSkip_MPEG4(col, &o[2][0], &o[3][0], &flag, trb, trd), 0);
        EXPECT_TRUE(o[0] == want[0] && o[1] == want[1] && s.pos() == off + long(code.size()));
        EXPECT_TRUE(!zero || (o[2] == want[0] && o[3] == want[1]));
    }
}

// A block may start at o .. o + e - s; a position before is moved to o, one at or past the last
// start to the last start (vectors in half samples, positions in samples).
TEST(H263Mpeg4, Mpeg4LimitToRectangle) {
    const int cases[][6] = {{0, 0, -16, 64, 16, 0},    {-33, 0, -16, 64, 16, -32}, {-32, 0, -16, 64, 16, -32},
                            {31, 16, -16, 64, 16, 31}, {63, 16, -16, 64, 16, 32},  {-100, 16, 8, 48, 8, -16},
                            {77, 16, 8, 48, 8, 64},    {-5, 100, 0, 16, 8, -184}};  // v, p, o, e, s, result
    for (const auto& k : cases) {
        const KvtRegionRect r{k[2], k[2], k[3], k[3]};
        const KvtMotionVec in{int16_t(k[0]), int16_t(k[0])};
        KvtMotionVec out;
        ASSERT_EQ(kvtiLimitMVToRect_MPEG4(&in, &out, &r, Kvt32u(k[1]), Kvt32u(k[1]), k[4]), kvtStsOk);
        EXPECT_EQ(out, (KvtMotionVec{int16_t(k[5]), int16_t(k[5])})) << k[0] << " at " << k[1];
    }
}

// The three C tables against the oracle (the same source, unvectorised): every slot on random
// streams at random offsets, random vectors, flags and temporal distances.
struct Mpeg4Tables {
    H263MvDsp h263;
    MbHeaderDsp header;
    MotionVectorDsp mv;
};
TEST(H263Mpeg4, KernelTablesMatchOracle) {
    const auto init = [](Mpeg4Tables& t, unsigned f) {
        init_h263_mv_dsp(t.h263, f), init_mb_header_dsp(t.header, f), init_motion_vector_dsp(t.mv, f);
    };
    const auto oracle = [](Mpeg4Tables& t) {
        ref::init_h263_mv(t.h263), ref::init_mb_header(t.header), ref::init_motion_vector(t.mv);
    };
    compare_tiers<Mpeg4Tables>("mpeg4", init, oracle, 300, [](Rng& rng, const Mpeg4Tables& t, Outputs& out) {
        std::string bits(512, '0');
        for (char& c : bits) c = char('0' + rng.coin());
        Stream s(rng, bits, rng.uniform(0, 7));
        Vecs v[4];
        for (Vecs& set : v) std::generate(set.begin(), set.end(), [&] { return random_mv(rng, 1); });
        uint8_t present[4], hdr = 0;
        rng.fill(present, 4, 0, 1);
        uint32_t quant = uint32_t(rng.uniform(1, 31));
        const int fcode = rng.uniform(1, 7), trd = rng.uniform(1, 30), trb = rng.uniform(1, trd);
        const MvNeighbours nb{v[0].data(), v[1].data(), v[2].data(), rng.coin(), rng.coin(), rng.coin()};
        const KvtRegionRect rect{rng.uniform(-64, 64), rng.uniform(-64, 64), 64, 48};
        const auto sink = [&](const char* name, KvtStatus st) {
            out.add(name, st), out.add(name, s.pos()), out.add(name, v), out.add(name, hdr),
                out.add(name, quant);
        };
        sink("h263 mv", t.h263.decode_mv(&s.p, &s.offset, v[0][0], v[1][1], v[2][2], &v[3][0]));
        for (auto k : {t.header.mcbpc_intra, t.header.mcbpc_inter, t.header.modb, t.header.cbpy})
            sink("header", k(&s.p, &s.offset, &hdr));
        sink("quant", t.header.update_quant_mq(&s.p, &s.offset, &quant));
        sink("mv", t.mv.decode_mv(&s.p, &s.offset, &v[3][1], fcode));
        sink("pvop",
             t.mv.decode_pad_mv_pvop(&s.p, &s.offset, nb, v[3].data(), present, fcode, rng.uniform(0, 5)));
        sink("direct", t.mv.decode_direct_mv(&s.p, &s.offset, v[0].data(), v[1].data(), v[2].data(),
                                             rng.coin(), trb, trd));
        sink("skip", t.mv.direct_mv(v[3].data(), v[0].data(), v[1].data(), true, trb, trd, 0, 0));
        sink("pad", t.mv.pad_mv(v[2].data(), present));
        sink("chroma", t.mv.chroma_mv(&v[1][0], &v[0][3]));
        sink("chroma4", t.mv.chroma4_mv(v[1].data(), present, &v[0][2]));
        sink("limit", t.mv.limit_mv_to_rect(&v[3][3], rect, uint32_t(rng.uniform(0, 200)), 40,
                                            8 << rng.coin(), &v[0][1]));
    });
}

// Each row passes one or more bad arguments; the status names the first check in the order:
// cursor (-8), offset (-105, MPEG-4 readers only), other pointers (-8), flag alignment (-97),
// then fcode (-98), temporal distances (-96) or sizes. No row moves the cursor or writes.
TEST(H263Mpeg4, ArgumentChecksOfEveryFunctionInOrderChangeNothing) {
    Rng rng(3);
    Stream s(rng, encode_mvd(1, 1) + encode_mvd(1, 1), 3);
    Kvt8u *const p0 = s.p, *nul = nullptr, **pp = &s.p;
    int bad = 8, neg = -1, *off = &s.offset;
    const KvtMotionVec z{0, 0}, col[4] = {};
    alignas(4) Kvt32u ok[3] = {1, 1, 1};
    alignas(4) Kvt8u flags[8] = {1, 1, 1, 1, 1, 1, 1, 1};
    const Kvt32u* odd = reinterpret_cast<const Kvt32u*>(flags + 2);
    const KvtRegionRect narrow{0, 0, 31, 64};
    // Outputs: o[0], o[1] single vectors, o + 2 the current set, o + 6 and o + 10 forward and backward
    // sets, u8 the header values.
    KvtMotionVec o[15];
    std::fill(o, o + 15, KvtMotionVec{0x55, 0x55});
    const std::vector<KvtMotionVec> o0(o, o + 15);
    Kvt8u* const u8 = reinterpret_cast<Kvt8u*>(o + 14);
    const auto pvop = [&](Kvt8u** p, int* b, const KvtMotionVec* l, const Kvt32u* v, const Kvt8u* pr, int f) {
        return kvtiDecodePadMV_PVOP_MPEG4(p, b, l, col, col, o + 2, v, &ok[1], &ok[2], pr, f, 2);
    };
    const auto direct = kvtiDecodeMV_BVOP_Direct_MPEG4;
    const std::pair<KvtStatus, std::function<KvtStatus()>> rows[] = {
        {kvtStsNullPointer, [&] { return kvtiDecodeMCBPCIntra_H263(nullptr, off, u8); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMCBPCInter_H263(&nul, off, u8); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeCBPY_H263(pp, nullptr, u8); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMODB_H263(pp, off, nullptr); }},
        {kvtStsNullPointer, [&] { return kvtiUpdateQuant_MQ_H263_1u32s_I(pp, off, nullptr); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMV_H263(pp, off, &z, &z, nullptr, o); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMV_TopBorder_H263(pp, off, &z, nullptr); }},
        {kvtStsNullPointer, [&] { return pvop(&nul, &bad, nullptr, odd, flags, 9); }},
        {kvtStsBadBitOffset, [&] { return pvop(pp, &bad, nullptr, odd, flags, 9); }},
        {kvtStsNullPointer, [&] { return pvop(pp, off, nullptr, odd, flags, 9); }},
        {kvtStsMisaligned, [&] { return pvop(pp, off, col, odd, flags, 9); }},
        {kvtStsMisaligned, [&] { return pvop(pp, off, col, ok, flags + 1, 9); }},
        {kvtStsBadFcode, [&] { return pvop(pp, off, col, ok, flags, 0); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMV_BVOP_Forward_MPEG4(pp, nullptr, o, 1); }},
        {kvtStsBadBitOffset, [&] { return kvtiDecodeMV_BVOP_Forward_MPEG4(pp, &bad, nullptr, 1); }},
        {kvtStsNullPointer, [&] { return kvtiDecodeMV_BVOP_Interpolate_MPEG4(pp, off, o, nullptr, 1, 1); }},
        {kvtStsBadFcode, [&] { return kvtiDecodeMV_BVOP_Interpolate_MPEG4(pp, off, o, o + 1, 1, 8); }},
        {kvtStsBadBitOffset, [&] { return direct(pp, &neg, nullptr, o + 6, o + 10, odd, 0, 0); }},
        {kvtStsNullPointer, [&] { return direct(pp, off, col, o + 6, nullptr, odd, 0, 0); }},
        {kvtStsMisaligned, [&] { return direct(pp, off, col, o + 6, o + 10, odd, 0, 0); }},
        {kvtStsBadTemporalDist, [&] { return direct(pp, off, col, o + 6, o + 10, ok, 0, 1); }},
        {kvtStsBadTemporalDist,
         [&] { return kvtiDecodeMV_BVOP_DirectSkip_MPEG4(col, o + 6, o + 10, ok, 1, -3); }},
        {kvtStsNullPointer, [&] { return kvtiPadMV_MPEG4(o + 2, nullptr); }},
        {kvtStsNullPointer, [&] { return kvtiComputeChromaMV_MPEG4(&z, nullptr); }},
        {kvtStsNullPointer, [&] { return kvtiComputeChroma4MV_MPEG4(o + 2, o + 1, nullptr); }},
        {kvtStsNullPointer, [&] { return kvtiLimitMVToRect_MPEG4(&z, o + 1, nullptr, 0, 0, 7); }},
        {kvtStsBadBlockSize, [&] { return kvtiLimitMVToRect_MPEG4(&z, o + 1, &narrow, 0, 0, 7); }},
        {kvtStsBadSize, [&] { return kvtiLimitMVToRect_MPEG4(&z, o + 1, &narrow, 0, 0, 16); }},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(rows[i].second(), rows[i].first) << "row " << i;
        EXPECT_TRUE(s.p == p0 && s.offset == 3 && std::equal(o, o + 15, o0.begin())) << "row " << i;
    }
    EXPECT_EQ(kvtiLimitMVToRect_MPEG4(&z, o + 1, &narrow, 0, 0, 8), kvtStsOk);  // 31 wide holds two 8s
}
