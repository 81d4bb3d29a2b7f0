// Motion-estimation block metrics and residuals: null-pointer statuses, one list of every kernel
// that is run both against page guards and as reference against SIMD, and one model of every
// public function on random blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "checkasm.h"
#include "kvtvc.h"
#include "me/halfpel.h"
#include "me/me_dsp.h"
#include "me/sad_dsp.h"
#include "page_guard.h"

using namespace kvt;
using namespace kvt::test;

namespace {

// The two tables of the motion-estimation families, per tier and as the oracle.
struct MeTables {
    SadDsp sad;
    MeDsp me;
};
void init_tables(MeTables& t, unsigned flags) { init_sad_dsp(t.sad, flags), init_me_dsp(t.me, flags); }
void init_oracle(MeTables& t) { ref::init_sad(t.sad), ref::init_me(t.me); }

constexpr int kPhaseTypes[4] = {0, 4, 8, 12};

// kLowBits (lo + 0..3) stresses rounding carries; kExtremes is lo or hi at random.
enum Pattern { kRandom, kZero, kFull, kChecker, kLowBits, kExtremes, kPatternCount };

Pattern any_pattern(Rng& rng) { return Pattern(rng.uniform(0, kPatternCount - 1)); }

// cols x rows samples with a random step (negative half the time) and misalignment; `aligned`
// puts the rows on 16-byte boundaries instead.
template <class T = uint8_t>
struct Block : Plane<T> {
    Block(Rng& rng, int cols, int rows, Pattern pat, int lo = 0, int hi = 255, bool aligned = false)
        : Plane<T>(cols, rows, step_for(rng, cols * int(sizeof(T)), aligned),
                   aligned ? 0 : size_t(rng.uniform(0, 15)) * sizeof(T)) {
        for (int i = 0; i < cols * rows; ++i) {
            const int r = rng.uniform(lo, hi), x = i % cols, y = i / cols;
            const int v[kPatternCount] = {
                r, lo < 0 && hi > 0 ? 0 : lo, hi, (x + y) & 1 ? hi : lo, lo + (r & 3), r & 1 ? hi : lo};
            at(x, y) = T(v[pat]);
        }
    }
    static int step_for(Rng& rng, int bytes, bool aligned) {
        const int s = aligned ? (bytes + 15) / 16 * 16 + 16 * rng.uniform(0, 2)
                              : bytes + int(sizeof(T)) * rng.uniform(0, 40);
        return rng.coin() ? -s : s;
    }
    T& at(int x, int y) { return this->row(y)[x]; }
};

// A random block of byte step `step`, cols x rows plus the column and row the half steps of `type`
// need, whose last byte in memory (the top row's for a negative step) is the last one before an
// inaccessible page.
uint8_t* guarded_block(PageGuarded& buf, int cols, int rows, int step, Rng& rng, int type = 0) {
    cols += type >> 3, rows += type >> 2 & 1;
    const size_t up = size_t(rows - 1) * size_t(step < 0 ? -step : step), span = up + size_t(cols);
    uint8_t* p = buf.data() + buf.size() - span;
    for (size_t i = 0; i < span; ++i) p[i] = uint8_t(rng.next());
    return step < 0 ? p + up : p;
}

// The residual fronts of one block size (in the order of ResidualSize).
struct Size {
    int w, h;
    decltype(&kvtiGetDiff16x16_8u16s_C1) fn;
    decltype(&kvtiGetDiff16x16B_8u16s_C1) fn_b;
};
#define KVT_SIZE(w, h) \
    Size { w, h, kvtiGetDiff##w##x##h##_8u16s_C1, kvtiGetDiff##w##x##h##B_8u16s_C1 }
const Size kSizes[] = {KVT_SIZE(16, 16), KVT_SIZE(16, 8), KVT_SIZE(8, 16), KVT_SIZE(8, 8), KVT_SIZE(8, 4)};
#undef KVT_SIZE

// Prediction at (x, y) written from the H.263 / MPEG-4 half-sample formulas, independently of
// the library: bit 8 of `type` is a half step right, bit 4 one down. `extra` shifts the rounding
// terms (1, 2) of the fixed form: -r for the narrow residual form, 1 - r for the wide one.
int predict(const uint8_t* ref, int step, int x, int y, int type, int extra = 0) {
    const int h = type >> 3 & 1, v = type >> 2 & 1;
    auto at = [&](int dx, int dy) { return int(ref[intptr_t(y + dy) * step + x + dx]); };
    if (h && v) return (at(0, 0) + at(1, 0) + at(0, 1) + at(1, 1) + 2 + extra) >> 2;
    if (h || v) return (at(0, 0) + at(h, v) + 1 + extra) >> 1;
    return at(0, 0);
}

// Sum over a w x w block of |d|, or d^2 with `sq`, against the prediction from f at type tf; with
// b, against the average of both predictions rounded up.
int64_t anchor(const uint8_t* c, int cs, const uint8_t* f, int fs, int tf, int w, bool sq,
               const uint8_t* b = nullptr, int bs = 0, int tb = 0) {
    int64_t s = 0;
    for (int i = 0; i < w * w; ++i) {
        const int x = i % w, y = i / w, p = predict(f, fs, x, y, tf);
        const int64_t d = c[intptr_t(y) * cs + x] - (b ? (p + predict(b, bs, x, y, tb) + 1) / 2 : p);
        s += sq ? d * d : std::abs(d);
    }
    return s;
}

// Current block and references of one kernel call.
struct In {
    const uint8_t *c, *r, *r2;
    int cs, rs, rs2;
};

// Everything else a call takes: the residual planes (16-bit rows at byte steps) and tiles, an
// output area for the other results, and the inputs only some kernels read.
struct Args {
    int16_t *diff, *pred, *tiles;  // tiles: 256 contiguous values
    int ds, ps, rc;
    uint8_t* s;  // 64 bytes
    const int32_t* sums;
    const int16_t* w;  // 8x8 16-bit block
    int ws;
    const uint8_t* tp;  // 64 contiguous predictions
    uint8_t et, en;     // edge thresholds
};

// Calls every kernel of the tables (the aligned ones when the current block allows) in every
// phase, phase pair and residual entry, taking blocks from blk(w, h, f, b) for a w x h current
// block whose references take half steps f and b; sink(name, variant) after each call.
template <class Blocks, class Sink>
void every_kernel(const MeTables& tables, const Args& a, Blocks&& blk, Sink&& sink) {
    int32_t* const s = reinterpret_cast<int32_t*>(a.s);
    const SadDsp& sad = tables.sad;
    const MeDsp& me = tables.me;
    for (int p = 0; p < 4; ++p) {
        const In x = blk(16, 16, 4 * p, 0), y = blk(8, 8, 4 * p, 0), h = blk(16, 8, 4 * p, 0);
        const bool al = aligned16(x.c, x.cs);
        sad.sad16[p](x.c, x.cs, x.r, x.rs, s), sink("sad16x16", p);
        sad.sad8[p](y.c, y.cs, y.r, y.rs, s), sink("sad8x8", p);
        me.sqrdiff16[p](x.c, x.cs, x.r, x.rs, s), sink("sqrdiff", p);
        if (al) sad.sad16_a16[p](x.c, x.cs, x.r, x.rs, s), sink("sad16x16 a16", p);
        me.varmeandiff16x16[p](x.c, x.cs, x.r, x.rs, a.sums, s, s + 4), sink("vmd16", p);
        me.varmeandiff16x8[p](h.c, h.cs, h.r, h.rs, a.sums, s, s + 4), sink("vmd8", p);
        for (int q = 0; q < 4; ++q) {
            const In z = blk(16, 16, 4 * p, 4 * q);
            me.sqrdiff16b[p + 4 * q](z.c, z.cs, z.r, z.rs, z.r2, z.rs2, s), sink("sqrdiff_b", p + 4 * q);
        }
    }
    const In x = blk(16, 16, 0, 0), y = blk(8, 8, 0, 0), q = blk(4, 4, 0, 0);
    int16_t* const s16 = reinterpret_cast<int16_t*>(a.s);
    uint16_t* const u16 = reinterpret_cast<uint16_t*>(a.s);
    int16_t* const tiles = a.rc ? a.tiles : nullptr;
    me.variance16(x.c, x.cs, s), sink("variance", 0);
    me.mean_abs_dev16(x.c, x.cs, s), sink("mad", 0);
    me.edges16(x.c, x.cs, a.et, a.en, a.s), sink("edges", 0);
    sad.blocks8x8(x.c, x.cs, x.r, x.rs, u16), sink("blocks8x8", 0);
    sad.blocks4x4(x.c, x.cs, x.r, x.rs, u16), sink("blocks4x4", 0);
    me.sums_diff16x16(x.c, x.cs, x.r, x.rs, s16, tiles), sink("sums16", 0);
    me.varmean8x8(y.c, y.cs, s, s + 1), sink("varmean", 0);
    me.varmean8x8_16s(a.w, a.ws, s, s + 1), sink("varmean 16s", 0);
    me.sums_diff8x8(y.c, y.cs, y.r, y.rs, s16, tiles), sink("sums8", 0);
    me.texture_error(y.c, y.cs, a.tp, a.tiles, a.rc ? s : nullptr), sink("texture error", 0);
    sad.sad4(q.c, q.cs, q.r, q.rs, s), sink("sad4x4", 0);
    me.get_diff4x4(q.c, q.cs, q.r, q.rs, a.diff, a.ds), sink("get_diff 4x4", 0);
    for (int z = 0; z < kResidualSizes; ++z)
        for (int i = 0; i < 16; ++i) {  // variant: size and table entry
            const In g = blk(kSizes[z].w, kSizes[z].h, (i & 6) << 1, 0);
            const In gb = blk(kSizes[z].w, kSizes[z].h, (i & 3) << 2, i & 12);
            if (i < 8)
                me.get_diff[z][i](g.c, g.cs, g.r, g.rs, a.diff, a.ds, a.pred, a.ps, a.rc),
                    sink("get_diff", z * 16 + i);
            me.get_diff_b[z][i](gb.c, gb.cs, gb.r, gb.rs, gb.r2, gb.rs2, a.diff, a.ds, a.rc);
            sink("get_diff_b", z * 16 + i);
        }
}

uint8_t b[17 * 17], o[1024];  // input block; outputs, which must stay untouched, and views of them
Kvt32s* const o4 = reinterpret_cast<Kvt32s*>(o);
Kvt16s* const o2 = reinterpret_cast<Kvt16s*>(o);
Kvt16u* const o2u = reinterpret_cast<Kvt16u*>(o);

}  // namespace

// One status case: a call whose checked pointers are written as P(i, p), so that the k-th is null.
#define KVT_CALL(call) [](const Size& s, int k) { return (void)s, call; }
#define P(i, p) (k == (i) ? nullptr : (p))

// Each pointer a function checks, null in turn, gives its status and writes nothing (unchecked
// outputs still point at the untouched buffer); VarMeanDiff checks its pointers before the type.
TEST(MeStatus, NullPointersWriteNothing) {
    std::fill(o, o + sizeof o, 0xA5);
    const struct {
        int pointers;
        KvtStatus (*call)(const Size& s, int k);
        KvtStatus want = kvtStsNullPointer;
    } cases[] = {
        {2, KVT_CALL(kvtiSAD16x16_8u32s(P(0, b), 16, P(1, b), 17, o4, 0))},
        {2, KVT_CALL(kvtiSAD8x8_8u32s_C1R(P(0, b), 16, P(1, b), 17, o4, 12))},
        {3, KVT_CALL(kvtiSAD4x4_8u32s(P(0, b), 16, P(1, b), 17, P(2, o4)))},
        {3, KVT_CALL(kvtiSAD16x16Blocks8x8_8u16u(P(0, b), 16, P(1, b), 17, P(2, o2u)))},
        {3, KVT_CALL(kvtiSAD16x16Blocks4x4_8u16u(P(0, b), 16, P(1, b), 17, P(2, o2u)))},
        {3, KVT_CALL(kvtiSqrDiff16x16_8u32s(P(0, b), 16, P(1, b), 17, 0, P(2, o4)))},
        {4, KVT_CALL(kvtiSqrDiff16x16B_8u32s(P(0, b), 16, P(1, b), 17, 0, P(2, b), 17, 0, P(3, o4)))},
        {2, KVT_CALL(kvtiVariance16x16_8u32s(P(0, b), 16, P(1, o4)))},
        {3, KVT_CALL(kvtiVarMean8x8_8u32s_C1R(P(0, b), 16, P(1, o4), P(2, o4)))},
        {3, KVT_CALL(kvtiVarMean8x8_16s32s_C1R(P(0, o2), 16, P(1, o4), P(2, o4)))},
        {1, KVT_CALL(kvtiMeanAbsDev16x16_8u32s_C1R(P(0, b), 16, o4))},
        {2, KVT_CALL(kvtiEdgesDetect16x16_8u_C1R(P(0, b), 16, 1, 1, P(1, o)))},
        {5,
         KVT_CALL(kvtiVarMeanDiff16x16_8u32s_C1R(P(0, b), 8, P(1, b), 17, P(2, o4), P(3, o4), P(4, o4), 3))},
        {5,
         KVT_CALL(kvtiVarMeanDiff16x8_8u32s_C1R(P(0, b), 16, P(1, b), 17, P(2, o4), P(3, o4), P(4, o4), 3))},
        {3, KVT_CALL(s.fn(P(0, b), 16, P(1, b), 17, P(2, o2), 32, o2, 32, 12, 1))},
        {4, KVT_CALL(s.fn_b(P(0, b), 16, P(1, b), 17, 0, P(2, b), 17, 0, P(3, o2), 32, 0))},
        {3, KVT_CALL(kvtiGetDiff4x4_8u16s_C1(P(0, b), 4, P(1, b), 4, P(2, o2), 8))},
        {3, KVT_CALL(kvtiSumsDiff16x16Blocks4x4_8u16s_C1(P(0, b), 16, P(1, b), 16, P(2, o2), o2))},
        {3, KVT_CALL(kvtiSumsDiff8x8Blocks4x4_8u16s_C1(P(0, b), 8, P(1, b), 8, P(2, o2), o2))},
        {4, KVT_CALL(kvtiComputeTextureErrorBlock_SAD_8u16s(P(0, b), 8, P(1, b), P(2, o2), P(3, o4))),
         kvtStsBadArgument},
        {3, KVT_CALL(kvtiComputeTextureErrorBlock_8u16s(P(0, b), 8, P(1, b), P(2, o2))), kvtStsBadArgument},
    };
    for (size_t i = 0; i < std::size(cases); ++i)
        for (const Size& s : kSizes)
            for (int k = 0; k < cases[i].pointers; ++k)
                EXPECT_EQ(cases[i].call(s, k), cases[i].want)
                    << "case " << i << " pointer " << k << " " << s.w << "x" << s.h;
    EXPECT_TRUE(std::all_of(o, o + sizeof o, [](uint8_t v) { return v == 0xA5; }));
    // A null prediction is legal.
    EXPECT_EQ(kvtiGetDiff8x8_8u16s_C1(b, 8, b, 8, o2 + 256, 16, nullptr, 0, 12, 0), kvtStsOk);
}
#undef P
#undef KVT_CALL

// Every kernel in every phase reads its blocks plus exactly the column and row the half steps
// need: each block is placed so that the last byte it may read is the last before an
// inaccessible page. References alternate positive and negative steps; the 16-sample current
// step takes the aligned twins; the edge detector at thresholds 255, 0 visits every row.
TEST(MeBounds, EveryKernelReadsOnlyWhatItsPhaseNeeds) {
    Rng rng(3);
    PageGuarded cb(4096), rb(4096), rb2(4096), wb(4096), pb(4096);
    alignas(16) uint8_t s[64];
    int16_t diff[256], pred[256], tiles[256];
    const auto* w16 = reinterpret_cast<const int16_t*>(guarded_block(wb, 16, 8, 18, rng));
    MeTables oracle_tables{};
    init_oracle(oracle_tables);
    const MeTables& oracle = oracle_tables;
    for_each_tier<MeTables>(init_tables, [&](const MeTables& tier, const Tier&) {
        for (const MeTables* tables : {&oracle, &tier})
            for (int cs : {16, 40}) {
                const int rs = cs == 16 ? 20 : -21;
                const Args a{
                    diff, pred, tiles, 32, 32, cs == 16, s, o4, w16, 18, guarded_block(pb, 64, 1, 64, rng),
                    255,  0};
                auto blk = [&](int cols, int rows, int f, int b) {
                    const uint8_t* c = guarded_block(cb, cols, rows, cs, rng);
                    const uint8_t* r = guarded_block(rb, cols, rows, rs, rng, f);
                    return In{c, r, guarded_block(rb2, cols, rows, -rs, rng, b), cs, rs, -rs};
                };
                every_kernel(*tables, a, blk, [](const char*, int) {});
            }
    });
}

// Every tier against the oracle for every kernel and phase: random and extreme blocks (all 0 against all
// 255, alternating), unaligned rows, negative steps and odd ones for the 16-bit residual outputs;
// the current block is aligned one time in three for the aligned twins.
TEST(MeTiers, EveryKernelMatchesOracle) {
    compare_tiers<MeTables>(
        "me", init_tables, init_oracle, 400, [](Rng& rng, const MeTables& t, Outputs& out) {
            Block<> cur(rng, 16, 16, any_pattern(rng), 0, 255, rng.uniform(0, 2) == 0),
                ref(rng, 17, 17, any_pattern(rng)), ref2(rng, 17, 17, any_pattern(rng));
            Block<int16_t> w(rng, 8, 8, any_pattern(rng), rng.coin() ? -32768 : -200,
                             rng.coin() ? 32767 : 200);
            auto out_plane = [&rng] {  // 16-bit rows addressed by byte: odd steps allowed
                return Plane<uint8_t>(32, 16, Block<>::step_for(rng, 32, false),
                                      size_t(rng.uniform(0, 7)) * 2);
            };
            Plane<uint8_t> diff = out_plane(), pred = out_plane();
            Guarded<int16_t> tiles(256, size_t(rng.uniform(0, 7)) * 2);
            alignas(16) uint8_t s[64], tp[64];
            int32_t sm[4];
            rng.fill(sm, 4, rng.coin() ? 0 : -(1 << 30), rng.coin() ? 16320 : 1 << 30);
            rng.fill(tp, 64, 0, rng.coin() ? 255 : 0);
            std::fill(s, s + 64, 0xA5);
            const uint8_t et = uint8_t(rng.coin() ? rng.uniform(0, 40) : rng.next()),
                          en = uint8_t(rng.next());
            auto p16 = [](Plane<uint8_t>& p) { return reinterpret_cast<int16_t*>(p.data()); };
            const Args a{p16(diff), p16(pred), tiles.data(), diff.step(), pred.step(), rng.uniform(0, 1),
                         s,         sm,        w.data(),     w.step(),    tp,          et,
                         en};
            const In in{cur.data(), ref.data(), ref2.data(), cur.step(), ref.step(), ref2.step()};
            auto blk = [&](int, int, int, int) { return in; };
            every_kernel(t, a, blk, [&](const char* name, int v) {
                const std::string n = std::string(name) + " " + std::to_string(v);
                out.add(n, s), out.add_buffer(n + " diff", diff), out.add_buffer(n + " pred", pred);
                out.add_buffer(n + " tiles", tiles), std::fill(s, s + 64, 0xA5);
            });
        });
}

// Every public function against models written from the formulas, on random blocks. Trials 0..35
// pair every two patterns (all 255 against all 0 gives the largest sums; all 255 makes S^2 exceed
// int32 in Variance16x16). Types beyond the four phases: the 8x8 SAD takes them as both halves, the
// 16x16 SAD, the residuals and the bidirectional forms use bits 8 and 4, the single squared
// difference and VarMeanDiff return 0 without writing. Any non-zero rounding control acts as 1;
// the 16-wide residuals round wide, the others narrow.
TEST(MeModel, PublicFunctionsMatchModel) {
    Rng rng(21);
    for (int trial = 0; trial < 150; ++trial) {
        const Pattern pc = trial < 36 ? Pattern(trial % 6) : any_pattern(rng);
        Block<> cur(rng, 16, 16, pc, 0, 255, rng.uniform(0, 2) == 0),
            ref(rng, 17, 17, trial < 36 ? Pattern(trial / 6) : any_pattern(rng)),
            ref2(rng, 17, 17, any_pattern(rng));
        const int range = trial % 3 == 0 ? 300 : 32768, rc = rng.uniform(-1, 1), rd = rc != 0;
        Block<int16_t> w(rng, 8, 8, pc, -range, trial % 4 ? range - 1 : -1);  // flat negative blocks too
        const uint8_t *c = cur.data(), *r = ref.data(), *r2 = ref2.data();
        const int cs = cur.step(), rs = ref.step(), rs2 = ref2.step();
        for (int type : {0, 4, 8, 12, 1, 6, 13, 20, -1, -4, 0x40000008}) {
            const int t = type & 12;
            const bool code = type == t;
            Kvt32s s16 = -1, s8 = -1, sq = -123;
            ASSERT_EQ(kvtiSAD16x16_8u32s(c, cs, r, rs, &s16, type), kvtStsOk);
            ASSERT_EQ(kvtiSAD8x8_8u32s_C1R(c, cs, r, rs, &s8, type), kvtStsOk);
            ASSERT_EQ(kvtiSqrDiff16x16_8u32s(c, cs, r, rs, type, &sq), kvtStsOk);
            EXPECT_EQ(s16, anchor(c, cs, r, rs, t, 16, false)) << type << " " << trial;
            EXPECT_EQ(s8, anchor(c, cs, r, rs, code && t < 12 ? t : 12, 8, false)) << type << " " << trial;
            EXPECT_EQ(sq, code ? anchor(c, cs, r, rs, t, 16, true) : -123) << type << " " << trial;
            for (int tb : {0, 4, 8, 12, ~type}) {
                ASSERT_EQ(kvtiSqrDiff16x16B_8u32s(c, cs, r, rs, type, r2, rs2, tb, &sq), kvtStsOk);
                EXPECT_EQ(sq, anchor(c, cs, r, rs, t, 16, true, r2, rs2, tb & 12)) << type << "/" << tb;
            }
            // VarMeanDiff per 8x8 quarter on 64-bit sums (C++ division truncates like the mean's);
            // current sums near the prediction's give small negative means too.
            for (int h : {16, 8}) {
                int32_t sums[4], v[4] = {7, 7, 7, 7}, m[4] = {7, 7, 7, 7};
                int64_t p[4] = {}, q[4] = {};  // prediction sums, sums of squared residuals
                for (int i = 0; i < 256; ++i) {
                    const int x = i % 16, y = i / 16, pr = predict(r, rs, x, y, type), d = cur.at(x, y) - pr;
                    p[y / 8 * 2 + x / 8] += pr, q[y / 8 * 2 + x / 8] += d * d;
                }
                for (int k = 0; k < 4; ++k)
                    sums[k] = int32_t(rng.coin() ? rng.uniform(0, 16320) : p[k] - rng.uniform(0, 9));
                auto fn = h == 16 ? kvtiVarMeanDiff16x16_8u32s_C1R : kvtiVarMeanDiff16x8_8u32s_C1R;
                ASSERT_EQ(fn(c, cs, r, rs, sums, v, m, type), kvtStsOk);
                for (int k = 0; k < 4; ++k) {
                    const int64_t mk = (sums[k] - p[k]) / 8, big_m = mk * mk + (h == 16 && mk < 0);
                    const int64_t vk = q[k] > big_m ? (q[k] - big_m) >> 6 : 0, written = code && k < h / 4;
                    EXPECT_TRUE(m[k] == (written ? mk : 7) && v[k] == (written ? vk : 7))
                        << type << " h" << h;
                }
            }
            for (const Size& s : kSizes) {
                Plane<int16_t> diff(s.w, s.h, 2 * s.w + 6), pred(s.w, s.h, -2 * s.w), db(s.w, s.h, 2 * s.w);
                ASSERT_EQ(s.fn(c, cs, r, rs, diff.data(), diff.step(), pred.data(), pred.step(), type, rc),
                          kvtStsOk);
                const int fp = kPhaseTypes[rng.uniform(0, 3)], ft = fp | (type & ~12);
                ASSERT_EQ(s.fn_b(c, cs, r2, rs2, ft, r, rs, type, db.data(), db.step(), rc), kvtStsOk);
                for (int i = 0; i < s.w * s.h; ++i) {
                    const int x = i % s.w, y = i / s.w, p = predict(r, rs, x, y, t, (s.w == 16) - rd);
                    const int b = (predict(r2, rs2, x, y, fp, -rd) + predict(r, rs, x, y, t, -rd)) >> 1;
                    ASSERT_TRUE(pred.row(y)[x] == p && diff.row(y)[x] == cur.at(x, y) - p &&
                                db.row(y)[x] == cur.at(x, y) - b)
                        << s.w << "x" << s.h << " types " << ft << "/" << type << " r " << rc << " " << i;
                }
                EXPECT_TRUE(diff.guards_intact() && pred.guards_intact() && db.guards_intact());
            }
        }

        // At the integer position, from d = current - reference: the 4x4 SAD, the SADs of the 8x8
        // and 4x4 sub-blocks, the 4x4 residual, the 4x4 sub-block sums and their tiles
        // (sub-blocks in raster order, 16 values each), the 8x8 texture error with and without SAD.
        // Then the current block's own statistics.
        Kvt32s s4 = -1, te_sad = -1, var[3], mean;
        Kvt16u sad8[4], sad4[16];
        int16_t sums16[16], sums8[4];
        Guarded<int16_t> tiles16(256), tiles8(64), te(64), te2(64);
        Plane<int16_t> d4(4, 4, rc ? -12 : 10);
        ASSERT_EQ(kvtiSAD4x4_8u32s(c, cs, r, rs, &s4), kvtStsOk);
        ASSERT_EQ(kvtiSAD16x16Blocks8x8_8u16u(c, cs, r, rs, sad8), kvtStsOk);
        ASSERT_EQ(kvtiSAD16x16Blocks4x4_8u16u(c, cs, r, rs, sad4), kvtStsOk);
        ASSERT_EQ(kvtiGetDiff4x4_8u16s_C1(c, cs, r, rs, d4.data(), d4.step()), kvtStsOk);
        ASSERT_EQ(kvtiSumsDiff16x16Blocks4x4_8u16s_C1(c, cs, r, rs, sums16, tiles16.data()), kvtStsOk);
        ASSERT_EQ(kvtiSumsDiff8x8Blocks4x4_8u16s_C1(c, cs, r, rs, sums8, tiles8.data()), kvtStsOk);
        uint8_t tp[64];
        for (int i = 0; i < 64; ++i) tp[i] = ref.at(i % 8, i / 8);
        ASSERT_EQ(kvtiComputeTextureErrorBlock_SAD_8u16s(c, cs, tp, te.data(), &te_sad), kvtStsOk);
        ASSERT_EQ(kvtiComputeTextureErrorBlock_8u16s(c, cs, tp, te2.data()), kvtStsOk);
        ASSERT_EQ(kvtiVariance16x16_8u32s(c, cs, var), kvtStsOk);
        ASSERT_EQ(kvtiVarMean8x8_8u32s_C1R(c, cs, var + 1, &mean), kvtStsOk);
        ASSERT_EQ(kvtiMeanAbsDev16x16_8u32s_C1R(c, cs, var + 2), kvtStsOk);
        int a4[16] = {}, a8[4] = {}, w16[16] = {}, w8[4] = {};
        int64_t s = 0, sq = 0, s8 = 0, q8 = 0, mad = 0;
        for (int i = 0; i < 256; ++i) {
            const int x = i % 16, y = i / 16, d = cur.at(x, y) - ref.at(x, y), k = y / 4 * 4 + x / 4;
            const int u = cur.at(x, y), tile = y % 4 * 4 + x % 4;
            ASSERT_EQ(tiles16[size_t(k * 16 + tile)], d) << "16x16 tile " << k << " value " << tile;
            a4[k] += std::abs(d), a8[y / 8 * 2 + x / 8] += std::abs(d), w16[k] += d, s += u, sq += u * u;
            if (x >= 8 || y >= 8) continue;
            ASSERT_EQ(tiles8[size_t((y / 4 * 2 + x / 4) * 16 + tile)], d) << "8x8 tile value " << i;
            ASSERT_TRUE(te[size_t(y * 8 + x)] == d && te2[size_t(y * 8 + x)] == d) << "texture error " << i;
            ASSERT_TRUE(x >= 4 || y >= 4 || d4.row(y)[x] == d) << "4x4 residual " << i;
            w8[y / 4 * 2 + x / 4] += d, s8 += u, q8 += u * u;
        }
        for (int i = 0; i < 256; ++i) mad += std::abs(cur.at(i % 16, i / 16) - (s + 128) / 256);
        EXPECT_TRUE(s4 == a4[0] && te_sad == a8[0] && std::equal(sad8, sad8 + 4, a8) &&
                    std::equal(sad4, sad4 + 16, a4));
        EXPECT_TRUE(std::equal(w16, w16 + 16, sums16) && std::equal(w8, w8 + 4, sums8));
        EXPECT_TRUE(tiles16.guards_intact() && tiles8.guards_intact() && te.guards_intact() &&
                    te2.guards_intact() && d4.guards_intact());
        EXPECT_TRUE(var[0] == sq - s * s / 256 && var[1] == (q8 - s8 / 8 * (s8 / 8)) / 64 && mean == s8 &&
                    var[2] == mad);

        // 16-bit VarMean: column sums saturate in row order, squares wrap modulo 2^32.
        int64_t ws = 0;
        uint32_t wq = 0;
        for (int x = 0; x < 8; ++x) {
            int col = 0;
            for (int y = 0; y < 8; ++y)
                col = std::clamp(col + w.at(x, y), -32768, 32767), wq += uint32_t(w.at(x, y) * w.at(x, y));
            ws += col;
        }
        const int64_t wm = ws / 8;
        ASSERT_EQ(kvtiVarMean8x8_16s32s_C1R(w.data(), w.step(), var, &mean), kvtStsOk);
        EXPECT_TRUE(mean == ws && var[0] == int32_t(uint32_t(wq - uint32_t(wm * wm + (wm < 0))) >> 6));

        // Edge detector: differences clamp to 127 and compare signed with the threshold (128 and
        // above flag every position); the count test is taken modulo 256. The fixed thresholds
        // catch the clamp, the sign, the 225-position ceiling and the wrap of a zero count.
        for (int et : {rng.uniform(0, 40), rng.uniform(0, 255), 126, 127, 128})
            for (int en : {rng.uniform(0, 255), 0, 1, 224, 225}) {
                const int st = int8_t(et);  // the threshold compares signed
                int k = 0, want = 0;
                for (int i = 0; i < 15 * 15 && !want; ++i) {  // the count test after each row
                    const uint8_t* p = c + intptr_t(i / 15) * cs + i % 15;
                    k += std::min(std::abs(p[0] - p[1]), 127) > st ||
                         std::min(std::abs(p[0] - p[cs]), 127) > st;
                    want = i % 15 == 14 && (256 - k % 256) % 256 < (256 - en) % 256;
                }
                Kvt8u flag = 9;
                ASSERT_EQ(kvtiEdgesDetect16x16_8u_C1R(c, cs, Kvt8u(et), Kvt8u(en), &flag), kvtStsOk);
                EXPECT_EQ(flag, want) << "t " << et << " n " << en << " trial " << trial;
            }
    }
}
