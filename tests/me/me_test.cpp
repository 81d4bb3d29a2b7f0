// Motion-estimation block metrics and residuals: hand-picked rounding and edge cases,
// independent models through the public functions, null-pointer statuses, and one list of every
// kernel that is run both against page guards and as reference against SIMD.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

#include "checkasm.h"
#include "kvtvc.h"
#include "me/edges_kernels.h"
#include "me/phase.h"
#include "me/residual_kernels.h"
#include "me/sad_kernels.h"
#include "me/sqrdiff_kernels.h"
#include "me/variance_kernels.h"
#include "page_guard.h"

using namespace kvt;
using namespace kvt::test;

// KVT_PICK for kernels templated over phases, and for the twins with aligned current blocks.
// clang-format off
#define KVT_PICK_T(impl, name, ...) \
    ((impl) == Impl::Ref ? name##_ref<__VA_ARGS__> : KVT_KERNEL(name)<__VA_ARGS__>)
#define KVT_PICK_A16_T(impl, name, ...) \
    ((impl) == Impl::Ref ? name##_ref<__VA_ARGS__> : KVT_KERNEL_A16(name)<__VA_ARGS__>)
#define KVT_PICK_A16(impl, name) ((impl) == Impl::Ref ? name##_ref : KVT_KERNEL_A16(name))
// clang-format on

namespace {

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

// The residual fronts and kernel tables of one block size.
struct Size {
    int w, h;
    decltype(&kvtiGetDiff16x16_8u16s_C1) fn;
    decltype(&kvtiGetDiff16x16B_8u16s_C1) fn_b;
    const GetDiffTable *ref, *simd;
    const GetDiffBTable *ref_b, *simd_b;
};
#define KVT_SIZE(w, h)                                                                                      \
    Size {                                                                                                  \
        w, h, kvtiGetDiff##w##x##h##_8u16s_C1, kvtiGetDiff##w##x##h##B_8u16s_C1, &get_diff_##w##x##h##_ref, \
            &KVT_KERNEL(get_diff_##w##x##h), &get_diff_b_##w##x##h##_ref, &KVT_KERNEL(get_diff_b_##w##x##h) \
    }
const Size kSizes[] = {KVT_SIZE(16, 16), KVT_SIZE(16, 8), KVT_SIZE(8, 16), KVT_SIZE(8, 8), KVT_SIZE(8, 4)};
#undef KVT_SIZE

// Prediction at (x, y) written from the H.263 / MPEG-4 half-sample formulas, independently of
// the library: bit 8 of `type` is a half step right, bit 4 one down. `extra` shifts the rounding
// terms (1, 2) of the fixed form: -r for the narrow residual form, 1 - r for the wide one.
int anchor_pred(const uint8_t* ref, int step, int x, int y, int type, int extra = 0) {
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
        const int x = i % w, y = i / w, p = anchor_pred(f, fs, x, y, tf);
        const int64_t d = c[intptr_t(y) * cs + x] - (b ? (p + anchor_pred(b, bs, x, y, tb) + 1) / 2 : p);
        s += sq ? d * d : std::abs(d);
    }
    return s;
}

// VarMeanDiff per 8x8 quarter from 64-bit sums; C++ division truncates toward zero like the mean's.
void anchor_varmeandiff(const uint8_t* c, int cs, const uint8_t* r, int rs, int h, int type,
                        const int32_t* sums, int32_t* var, int32_t* mean) {
    for (int k = 0; k < h / 4; ++k) {
        int64_t p = 0, q = 0;  // prediction sum, sum of squared residuals
        for (int i = 0; i < 64; ++i) {
            const int x = (k & 1) * 8 + i % 8, y = (k >> 1) * 8 + i / 8;
            const int pr = anchor_pred(r, rs, x, y, type), d = c[intptr_t(y) * cs + x] - pr;
            p += pr, q += d * d;
        }
        const int64_t m = (sums[k] - p) / 8, big_m = m * m + (h == 16 && m < 0 ? 1 : 0);
        mean[k] = int32_t(m);
        var[k] = q > big_m ? int32_t((q - big_m) >> 6) : 0;
    }
}

// 16-bit VarMean (variance, mean): column sums saturate in row order, squares wrap modulo 2^32.
std::pair<int32_t, int32_t> anchor_varmean16(Block<int16_t>& w) {
    int64_t s = 0;
    uint32_t q = 0;
    for (int x = 0; x < 8; ++x) {
        int col = 0;
        for (int y = 0; y < 8; ++y)
            col = std::clamp(col + w.at(x, y), -32768, 32767), q += uint32_t(w.at(x, y) * w.at(x, y));
        s += col;
    }
    const int64_t m = s / 8;
    return {int32_t(uint32_t(q - uint32_t(m * m + (m < 0))) >> 6), int32_t(s)};
}

// Edge detector with the count test spelled out modulo 256.
uint8_t anchor_edges(const uint8_t* src, int step, int t, int n) {
    const int st = t >= 128 ? t - 256 : t;  // the threshold compares signed
    for (int r = 0, k = 0; r < 15; ++r) {
        for (int i = 0; i < 15; ++i) {
            const uint8_t* p = src + intptr_t(r) * step + i;
            k += std::min(std::abs(p[0] - p[1]), 127) > st || std::min(std::abs(p[0] - p[step]), 127) > st;
        }
        if ((256 - k % 256) % 256 < (256 - n) % 256) return 1;
    }
    return 0;
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

// Calls every kernel of the family (reference or dispatched, the aligned twins when the current
// block allows) in every phase, phase pair and table entry, taking blocks from blk(w, h, f, b)
// for a w x h current block whose references take half steps f and b; sink(name, variant) after
// each call.
template <class Blocks, class Sink>
void every_kernel(Impl impl, const Args& a, Blocks&& blk, Sink&& sink) {
    int32_t* const s = reinterpret_cast<int32_t*>(a.s);
    for (int f : kPhaseTypes)
        with_phase(f, [&](auto fp) {
            constexpr int t = decltype(fp)::value;
            const In x = blk(16, 16, t, 0), y = blk(8, 8, t, 0), h = blk(16, 8, t, 0);
            const bool al = aligned16(x.c, x.cs);
            KVT_PICK_T(impl, sad_16x16, t)(x.c, x.cs, x.r, x.rs, s), sink("sad16x16", t);
            KVT_PICK_T(impl, sad_8x8, t)(y.c, y.cs, y.r, y.rs, s), sink("sad8x8", t);
            KVT_PICK_T(impl, sqrdiff_16x16, t)(x.c, x.cs, x.r, x.rs, s), sink("sqrdiff", t);
            if (al) KVT_PICK_A16_T(impl, sad_16x16, t)(x.c, x.cs, x.r, x.rs, s), sink("sad16x16 a16", t);
            if (al) KVT_PICK_A16_T(impl, sqrdiff_16x16, t)(x.c, x.cs, x.r, x.rs, s), sink("sqrdiff a16", t);
            KVT_PICK_T(impl, varmeandiff_16x16, t)(x.c, x.cs, x.r, x.rs, a.sums, s, s + 4), sink("vmd16", t);
            KVT_PICK_T(impl, varmeandiff_16x8, t)(h.c, h.cs, h.r, h.rs, a.sums, s, s + 4), sink("vmd8", t);
            for (int g : kPhaseTypes)
                with_phase(g, [&](auto gp) {
                    constexpr int u = decltype(gp)::value;
                    const In z = blk(16, 16, t, u);
                    KVT_PICK_T(impl, sqrdiff_16x16b, t, u)(z.c, z.cs, z.r, z.rs, z.r2, z.rs2, s);
                    sink("sqrdiff_b", u);
                    if (!aligned16(z.c, z.cs)) return;
                    KVT_PICK_A16_T(impl, sqrdiff_16x16b, t, u)(z.c, z.cs, z.r, z.rs, z.r2, z.rs2, s);
                    sink("sqrdiff_b a16", u);
                });
        });
    const In x = blk(16, 16, 0, 0), y = blk(8, 8, 0, 0), q = blk(4, 4, 0, 0);
    int16_t* const s16 = reinterpret_cast<int16_t*>(a.s);
    uint16_t* const u16 = reinterpret_cast<uint16_t*>(a.s);
    int16_t* const tiles = a.rc ? a.tiles : nullptr;
    KVT_PICK(impl, variance_16x16)(x.c, x.cs, s), sink("variance", 0);
    if (aligned16(x.c, x.cs)) KVT_PICK_A16(impl, variance_16x16)(x.c, x.cs, s), sink("variance a16", 0);
    KVT_PICK(impl, mean_abs_dev_16x16)(x.c, x.cs, s), sink("mad", 0);
    KVT_PICK(impl, edges_16x16)(x.c, x.cs, a.et, a.en, a.s), sink("edges", 0);
    KVT_PICK(impl, sad_16x16_blocks8x8)(x.c, x.cs, x.r, x.rs, u16), sink("blocks8x8", 0);
    KVT_PICK(impl, sad_16x16_blocks4x4)(x.c, x.cs, x.r, x.rs, u16), sink("blocks4x4", 0);
    KVT_PICK(impl, sums_diff_16x16)(x.c, x.cs, x.r, x.rs, s16, tiles), sink("sums16", 0);
    KVT_PICK(impl, varmean_8x8_8u)(y.c, y.cs, s, s + 1), sink("varmean", 0);
    KVT_PICK(impl, varmean_8x8_16s)(a.w, a.ws, s, s + 1), sink("varmean 16s", 0);
    KVT_PICK(impl, sums_diff_8x8)(y.c, y.cs, y.r, y.rs, s16, tiles), sink("sums8", 0);
    KVT_PICK(impl, texture_error)(y.c, y.cs, a.tp, a.tiles, a.rc ? s : nullptr), sink("texture error", 0);
    KVT_PICK(impl, sad_4x4)(q.c, q.cs, q.r, q.rs, s), sink("sad4x4", 0);
    get_diff_4x4_ref(q.c, q.cs, q.r, q.rs, a.diff, a.ds), sink("get_diff 4x4", 0);
    for (const Size& z : kSizes)
        for (int i = 0; i < 16; ++i) {  // variant: size and table entry
            const GetDiffTable& t = impl == Impl::Ref ? *z.ref : *z.simd;
            const GetDiffBTable& tb = impl == Impl::Ref ? *z.ref_b : *z.simd_b;
            const In g = blk(z.w, z.h, (i & 6) << 1, 0), gb = blk(z.w, z.h, (i & 3) << 2, i & 12);
            const int v = z.w * 10000 + z.h * 100 + i;
            if (i < 8)
                t[size_t(i)](g.c, g.cs, g.r, g.rs, a.diff, a.ds, a.pred, a.ps, a.rc), sink("get_diff", v);
            tb[size_t(i)](gb.c, gb.cs, gb.r, gb.rs, gb.r2, gb.rs2, a.diff, a.ds, a.rc), sink("get_diff_b", v);
        }
}

uint8_t b[17 * 17], o[1024];  // input block; outputs, which must stay untouched, and views of them
Kvt32s* const o4 = reinterpret_cast<Kvt32s*>(o);
Kvt16s* const o2 = reinterpret_cast<Kvt16s*>(o);
Kvt16u* const o2u = reinterpret_cast<Kvt16u*>(o);
const Kvt32s sums[4] = {};

}  // namespace

// One status case: a call with `n` checked pointers written as P(i, p), so that the k-th is null.
// clang-format off
#define KVT_CASE(n, call, ...) {[](const Size& s, int k) { return (void)s, call; }, n, __VA_ARGS__}
// clang-format on
#define P(i, p) (k == (i) ? nullptr : (p))

// Each pointer a function checks, null in turn, gives its status and writes nothing (unchecked
// outputs still point at the untouched buffer); VarMeanDiff checks its pointers before the type.
TEST(MeStatus, NullPointersWriteNothing) {
    std::fill(o, o + sizeof o, 0xA5);
    const struct {
        KvtStatus (*call)(const Size& s, int k);
        int pointers;
        KvtStatus want = kvtStsNullPointer;
    } cases[] = {
        KVT_CASE(2, kvtiSAD16x16_8u32s(P(0, b), 16, P(1, b), 17, o4, 0)),
        KVT_CASE(2, kvtiSAD8x8_8u32s_C1R(P(0, b), 16, P(1, b), 17, o4, 12)),
        KVT_CASE(3, kvtiSAD4x4_8u32s(P(0, b), 16, P(1, b), 17, P(2, o4))),
        KVT_CASE(3, kvtiSAD16x16Blocks8x8_8u16u(P(0, b), 16, P(1, b), 17, P(2, o2u))),
        KVT_CASE(3, kvtiSAD16x16Blocks4x4_8u16u(P(0, b), 16, P(1, b), 17, P(2, o2u))),
        KVT_CASE(3, kvtiSqrDiff16x16_8u32s(P(0, b), 16, P(1, b), 17, 0, P(2, o4))),
        KVT_CASE(4, kvtiSqrDiff16x16B_8u32s(P(0, b), 16, P(1, b), 17, 0, P(2, b), 17, 0, P(3, o4))),
        KVT_CASE(2, kvtiVariance16x16_8u32s(P(0, b), 16, P(1, o4))),
        KVT_CASE(3, kvtiVarMean8x8_8u32s_C1R(P(0, b), 16, P(1, o4), P(2, o4))),
        KVT_CASE(3, kvtiVarMean8x8_16s32s_C1R(P(0, o2), 16, P(1, o4), P(2, o4))),
        KVT_CASE(1, kvtiMeanAbsDev16x16_8u32s_C1R(P(0, b), 16, o4)),
        KVT_CASE(2, kvtiEdgesDetect16x16_8u_C1R(P(0, b), 16, 1, 1, P(1, o))),
        KVT_CASE(5,
                 kvtiVarMeanDiff16x16_8u32s_C1R(P(0, b), 16, P(1, b), 17, P(2, sums), P(3, o4), P(4, o4), 3)),
        KVT_CASE(5,
                 kvtiVarMeanDiff16x8_8u32s_C1R(P(0, b), 16, P(1, b), 17, P(2, sums), P(3, o4), P(4, o4), 3)),
        KVT_CASE(3, s.fn(P(0, b), 16, P(1, b), 17, P(2, o2), 32, o2, 32, 12, 1)),
        KVT_CASE(4, s.fn_b(P(0, b), 16, P(1, b), 17, 0, P(2, b), 17, 0, P(3, o2), 32, 0)),
        KVT_CASE(3, kvtiGetDiff4x4_8u16s_C1(P(0, b), 4, P(1, b), 4, P(2, o2), 8)),
        KVT_CASE(3, kvtiSumsDiff16x16Blocks4x4_8u16s_C1(P(0, b), 16, P(1, b), 16, P(2, o2), o2)),
        KVT_CASE(3, kvtiSumsDiff8x8Blocks4x4_8u16s_C1(P(0, b), 8, P(1, b), 8, P(2, o2), o2)),
        KVT_CASE(4, kvtiComputeTextureErrorBlock_SAD_8u16s(P(0, b), 8, P(1, b), P(2, o2), P(3, o4)),
                 kvtStsBadArgument),
        KVT_CASE(3, kvtiComputeTextureErrorBlock_8u16s(P(0, b), 8, P(1, b), P(2, o2)), kvtStsBadArgument),
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
#undef KVT_CASE

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
    for (int cs : {16, 40})
        for (Impl impl : {Impl::Ref, Impl::Simd}) {
            const int rs = cs == 16 ? 20 : -21;
            const Args a{
                diff, pred, tiles, 32, 32, cs == 16, s, sums, w16, 18, guarded_block(pb, 64, 1, 64, rng),
                255,  0};
            auto blk = [&](int cols, int rows, int f, int b) {
                return In{guarded_block(cb, cols, rows, cs, rng),
                          guarded_block(rb, cols, rows, rs, rng, f),
                          guarded_block(rb2, cols, rows, -rs, rng, b),
                          cs,
                          rs,
                          -rs};
            };
            every_kernel(impl, a, blk, [](const char*, int) {});
        }
}

// Reference against SIMD for every kernel and phase: random and extreme blocks (all 0 against all
// 255, alternating), unaligned rows, negative steps and odd ones for the 16-bit residual outputs;
// the current block is aligned one time in three for the aligned twins.
TEST(MeSimd, EveryKernelMatchesReference) {
    compare_kernels("me", 400, [](Rng& rng, Impl impl, Outputs& out) {
        Block<> cur(rng, 16, 16, any_pattern(rng), 0, 255, rng.uniform(0, 2) == 0),
            ref(rng, 17, 17, any_pattern(rng)), ref2(rng, 17, 17, any_pattern(rng));
        Block<int16_t> w(rng, 8, 8, any_pattern(rng), rng.coin() ? -32768 : -200, rng.coin() ? 32767 : 200);
        auto out_plane = [&rng] {  // 16-bit rows addressed by byte: odd steps allowed
            return Plane<uint8_t>(32, 16, Block<>::step_for(rng, 32, false), size_t(rng.uniform(0, 7)) * 2);
        };
        Plane<uint8_t> diff = out_plane(), pred = out_plane();
        Guarded<int16_t> tiles(256, size_t(rng.uniform(0, 7)) * 2);
        alignas(16) uint8_t s[64], tp[64];
        int32_t sm[4];
        for (int32_t& x : sm) x = rng.coin() ? rng.uniform(0, 16320) : int32_t(rng.next());
        rng.fill(tp, 64, 0, rng.coin() ? 255 : 0);
        std::fill(s, s + 64, 0xA5);
        const uint8_t et = uint8_t(rng.coin() ? rng.uniform(0, 40) : rng.next()), en = uint8_t(rng.next());
        auto p16 = [](Plane<uint8_t>& p) { return reinterpret_cast<int16_t*>(p.data()); };
        const Args a{p16(diff), p16(pred), tiles.data(), diff.step(), pred.step(), rng.uniform(0, 1), s, sm,
                     w.data(),  w.step(),  tp,           et,          en};
        auto blk = [&](int, int, int, int) {
            return In{cur.data(), ref.data(), ref2.data(), cur.step(), ref.step(), ref2.step()};
        };
        every_kernel(impl, a, blk, [&](const char* name, int v) {
            const std::string n = std::string(name) + " " + std::to_string(v);
            out.add(n, s), out.add_buffer(n + " diff", diff), out.add_buffer(n + " pred", pred);
            out.add_buffer(n + " tiles", tiles), std::fill(s, s + 64, 0xA5);
        });
    });
}

// 2x2-periodic references a b / c d, a current block of zeros: residual = -prediction. The
// 16-wide forms round wide, the 8-wide ones narrow. Then forward 10, backward 11 at the integer
// position: the bidirectional residuals truncate the average to 10, the bidirectional squared
// difference rounds it up to 11.
TEST(ResidualRounding, NarrowWideAndBidirectional) {
    // clang-format off
    const struct {
        uint8_t a, b, c, d;
        int type, r, want8, want16;
    } cases[] = {
        {0, 0, 0, 1, 12, 1, 0, 0}, {0, 0, 0, 1, 12, 0, 0, 1}, {1, 1, 1, 1, 12, 1, 1, 1},
        {1, 1, 1, 2, 12, 0, 1, 2}, {3, 4, 5, 6, 0, 0, 3, 3}, {3, 4, 5, 6, 8, 1, 3, 4},
        {3, 4, 5, 6, 4, 1, 4, 4},
        {10, 10, 10, 10, 4, 0, 10, 11}, {10, 10, 10, 10, 4, 1, 10, 10}, {10, 10, 10, 10, 8, 0, 10, 11},
        {255, 255, 255, 255, 4, 0, 255, 256}, {255, 255, 255, 255, 12, 0, 255, 255}};
    // clang-format on
    uint8_t ref[17 * 17], cur[17 * 17] = {}, fwd[17 * 17];
    int16_t diff[256], pred[256];
    for (const auto& k : cases) {
        for (int i = 0; i < 17 * 17; ++i)
            ref[i] = i / 17 & 1 ? (i % 17 & 1 ? k.d : k.c) : (i % 17 & 1 ? k.b : k.a);
        for (const Size& s : kSizes)
            for (int r : {k.r, k.r ? -7 : 0}) {  // any non-zero rounding control acts as 1
                ASSERT_EQ(s.fn(cur, 16, ref, 17, diff, 32, pred, 32, k.type, r), kvtStsOk);
                const int want = s.w == 16 ? k.want16 : k.want8;
                EXPECT_TRUE(pred[0] == want && diff[0] == -want)
                    << s.w << "x" << s.h << " type " << k.type << " r " << r;
            }
    }
    std::fill(cur, cur + 289, 20), std::fill(fwd, fwd + 289, 10), std::fill(ref, ref + 289, 11);
    for (const Size& s : kSizes) {
        ASSERT_EQ(s.fn_b(cur, 16, fwd, 17, 0, ref, 17, 0, diff, 32, 0), kvtStsOk);
        EXPECT_EQ(diff[0], 10) << s.w << "x" << s.h;
    }
    Kvt32s sq = -1;
    ASSERT_EQ(kvtiSqrDiff16x16B_8u32s(cur, 16, fwd, 17, 0, ref, 17, 0, &sq), kvtStsOk);
    EXPECT_EQ(sq, 81 * 256);
}

// Every size, type (stray bits ignored) and rounding control against the model, the bidirectional
// form over all sixteen phase pairs; checks residual, prediction and guard bytes. At the integer
// position the 4x4 residual too.
TEST(ResidualModel, PublicFunctionsMatchModel) {
    Rng rng(41);
    for (const Size& s : kSizes)
        for (int type : {0, 4, 8, 12, 1, 2, 3, 7, 13, -1, 0x7FFFFFF0, -4})
            for (int r : {0, 1}) {
                Block<> cur(rng, s.w, s.h, any_pattern(rng)), ref(rng, s.w + 1, s.h + 1, any_pattern(rng)),
                    fwd(rng, s.w + 1, s.h + 1, any_pattern(rng));
                const uint8_t *c = cur.data(), *rf = ref.data(), *fw = fwd.data();
                const int cs = cur.step(), rs = ref.step(), fs = fwd.step();
                Plane<int16_t> diff(s.w, s.h, 2 * s.w + 6), pred(s.w, s.h, -2 * s.w), db(s.w, s.h, 2 * s.w);
                ASSERT_EQ(s.fn(c, cs, rf, rs, diff.data(), diff.step(), pred.data(), pred.step(), type, r),
                          kvtStsOk);
                for (int fp : kPhaseTypes) {
                    const int ft = fp | (type & ~12);
                    ASSERT_EQ(s.fn_b(c, cs, fw, fs, ft, rf, rs, type, db.data(), db.step(), r), kvtStsOk);
                    for (int i = 0; i < s.w * s.h; ++i) {
                        const int x = i % s.w, y = i / s.w,
                                  p = anchor_pred(rf, rs, x, y, type, (s.w == 16) - r);
                        const int b =
                            (anchor_pred(fw, fs, x, y, ft, -r) + anchor_pred(rf, rs, x, y, type, -r)) >> 1;
                        ASSERT_TRUE(pred.row(y)[x] == p && diff.row(y)[x] == cur.at(x, y) - p &&
                                    db.row(y)[x] == cur.at(x, y) - b)
                            << s.w << "x" << s.h << " types " << ft << "/" << type << " r " << r << " at "
                            << i;
                    }
                }
                EXPECT_TRUE(diff.guards_intact() && pred.guards_intact() && db.guards_intact());
                if (type != 0) continue;
                Plane<int16_t> d4(4, 4, r ? -12 : 10);
                ASSERT_EQ(kvtiGetDiff4x4_8u16s_C1(c, cs, rf, rs, d4.data(), d4.step()), kvtStsOk);
                for (int i = 0; i < 16; ++i)
                    ASSERT_EQ(d4.row(i / 4)[i % 4], diff.row(i / 4)[i % 4]) << "4x4 " << i;
                EXPECT_TRUE(d4.guards_intact());
            }
}

// current - prediction at the integer position: the 4x4 sub-block sums of 16x16 and 8x8 blocks
// with and without their tiles, and the 8x8 texture error with and without SAD.
TEST(ResidualModel, SumsTilesAndTextureError) {
    Rng rng(7);
    for (int trial = 0; trial < 36; ++trial) {
        Block<> cur(rng, 16, 16, Pattern(trial % 6)), pred(rng, 16, 16, Pattern(trial / 6));
        auto d = [&](int x, int y) { return cur.at(x, y) - pred.at(x, y); };
        const uint8_t *c = cur.data(), *p = pred.data();
        const int cs = cur.step(), ps = pred.step();
        for (int n : {16, 8}) {
            const auto fn = n == 16 ? kvtiSumsDiff16x16Blocks4x4_8u16s_C1 : kvtiSumsDiff8x8Blocks4x4_8u16s_C1;
            Guarded<int16_t> sums(size_t(n * n / 16)), sums2(sums.size()), tiles(size_t(n * n));
            ASSERT_EQ(fn(c, cs, p, ps, sums.data(), tiles.data()), kvtStsOk);
            ASSERT_EQ(fn(c, cs, p, ps, sums2.data(), nullptr), kvtStsOk);
            int want[16] = {};
            for (int i = 0; i < n * n; ++i) {  // value i % 16 of sub-block k in raster order
                const int k = i / 16, v = d(k % (n / 4) * 4 + i % 4, k / (n / 4) * 4 + i % 16 / 4);
                ASSERT_EQ(tiles[size_t(i)], v) << n << " tile value " << i;
                want[k] += v;
            }
            for (size_t k = 0; k < sums.size(); ++k)
                ASSERT_TRUE(sums[k] == want[k] && sums2[k] == want[k]) << n << " " << k;
            EXPECT_TRUE(sums.guards_intact() && sums2.guards_intact() && tiles.guards_intact());
        }
        uint8_t tp[64];
        for (int i = 0; i < 64; ++i) tp[i] = pred.at(i % 8, i / 8);
        Guarded<int16_t> te(64), te2(64);
        Kvt32s sad = -1, want_sad = 0;
        ASSERT_EQ(kvtiComputeTextureErrorBlock_SAD_8u16s(c, cs, tp, te.data(), &sad), kvtStsOk);
        ASSERT_EQ(kvtiComputeTextureErrorBlock_8u16s(c, cs, tp, te2.data()), kvtStsOk);
        for (size_t i = 0; i < 64; ++i) {
            ASSERT_TRUE(te[i] == d(int(i % 8), int(i / 8)) && te2[i] == te[i]) << i;
            want_sad += std::abs(te[i]);
        }
        EXPECT_TRUE(sad == want_sad && te.guards_intact() && te2.guards_intact());
    }
}

// Every metric against its anchor. Types beyond the four phases: the 8x8 SAD takes them as both
// halves, the 16x16 SAD and the bidirectional form use bits 8 and 4, the single squared difference
// and VarMeanDiff return 0 without writing. Trials 0..35 pair every two patterns (all 255 against
// all 0 gives the largest sums; all 255 makes S^2 exceed int32 in Variance16x16).
TEST(MetricModel, EveryMetricMatchesAnchor) {
    Rng rng(21);
    for (int trial = 0; trial < 150; ++trial) {
        const Pattern pc = trial < 36 ? Pattern(trial % 6) : any_pattern(rng);
        Block<> cur(rng, 16, 16, pc, 0, 255, rng.uniform(0, 2) == 0),
            ref(rng, 17, 17, trial < 36 ? Pattern(trial / 6) : any_pattern(rng)),
            ref2(rng, 17, 17, any_pattern(rng));
        const int range = trial % 3 == 0 ? 300 : 32768;
        Block<int16_t> w(rng, 8, 8, pc, -range, range - 1);
        const uint8_t *c = cur.data(), *r = ref.data(), *r2 = ref2.data();
        const int cs = cur.step(), rs = ref.step(), rs2 = ref2.step();
        for (int type : {0, 4, 8, 12, 1, 6, 13, 20, -4, 0x40000008}) {
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
            for (int h : {16, 8}) {
                int32_t sums[4], v[4], m[4], av[4], am[4];
                for (int i = 0; i < 4; ++i) sums[i] = rng.uniform(0, 16320), v[i] = m[i] = av[i] = am[i] = 7;
                auto fn = h == 16 ? kvtiVarMeanDiff16x16_8u32s_C1R : kvtiVarMeanDiff16x8_8u32s_C1R;
                ASSERT_EQ(fn(c, cs, r, rs, sums, v, m, type), kvtStsOk);
                if (code) anchor_varmeandiff(c, cs, r, rs, h, type, sums, av, am);
                EXPECT_TRUE(std::equal(v, v + 4, av) && std::equal(m, m + 4, am)) << type << " h " << h;
            }
        }
        Kvt32s s4 = -1;
        Kvt16u q[4], s16[16];
        ASSERT_EQ(kvtiSAD4x4_8u32s(c, cs, r, rs, &s4), kvtStsOk);
        ASSERT_EQ(kvtiSAD16x16Blocks8x8_8u16u(c, cs, r, rs, q), kvtStsOk);
        ASSERT_EQ(kvtiSAD16x16Blocks4x4_8u16u(c, cs, r, rs, s16), kvtStsOk);
        EXPECT_EQ(s4, anchor(c, cs, r, rs, 0, 4, false));
        auto sub = [&](int size, int i) {  // sub-blocks in raster order
            const int y = i / (16 / size) * size, x = i % (16 / size) * size;
            return anchor(c + y * cs + x, cs, r + y * rs + x, rs, 0, size, false);
        };
        for (int k = 0; k < 16; ++k) EXPECT_TRUE(s16[k] == sub(4, k) && (k > 3 || q[k] == sub(8, k))) << k;

        int64_t s = 0, sq = 0, s8 = 0, q8 = 0, mad = 0;
        for (int i = 0; i < 256; ++i) {
            const int v = cur.at(i % 16, i / 16), in8 = i % 16 < 8 && i < 128;
            s += v, sq += v * v, s8 += in8 * v, q8 += in8 * v * v;
        }
        for (int i = 0; i < 256; ++i) mad += std::abs(cur.at(i % 16, i / 16) - (s + 128) / 256);
        Kvt32s v[3], m;
        ASSERT_EQ(kvtiVariance16x16_8u32s(c, cs, v), kvtStsOk);
        ASSERT_EQ(kvtiVarMean8x8_8u32s_C1R(c, cs, v + 1, &m), kvtStsOk);
        ASSERT_EQ(kvtiMeanAbsDev16x16_8u32s_C1R(c, cs, v + 2), kvtStsOk);
        EXPECT_TRUE(v[0] == sq - s * s / 256 && v[1] == (q8 - s8 / 8 * (s8 / 8)) / 64 && m == s8 &&
                    v[2] == mad)
            << trial;
        ASSERT_EQ(kvtiVarMean8x8_16s32s_C1R(w.data(), w.step(), v, &m), kvtStsOk);
        EXPECT_EQ(std::make_pair(v[0], m), anchor_varmean16(w)) << trial;
        const int t = rng.coin() ? rng.uniform(0, 40) : rng.uniform(0, 255), n = rng.uniform(0, 255);
        Kvt8u flag = 9;
        ASSERT_EQ(kvtiEdgesDetect16x16_8u_C1R(c, cs, Kvt8u(t), Kvt8u(n), &flag), kvtStsOk);
        EXPECT_EQ(flag, anchor_edges(c, cs, t, n)) << "t " << t << " n " << n;
    }
}

// Flat 200: VarMean gives the sum itself as mean. A flat -1 16-bit block has m = -8, M = 65 above
// Q = 64, and the unclamped difference wraps. In VarMeanDiff d = -8 gives mean -1: the 16x16 form
// subtracts 2, the 16x8 form 1, which with Q = 65 is the difference between variance 0 and 1.
// Edge detector: a flat block has no flagged position, and with K = 0 the wrap-around test passes
// for every count threshold but 0. In 0/255 columns every difference clamps to 127 before the
// signed compare.
TEST(MetricEdgeCases, NegativeMeansAndEdgeWrapAround) {
    uint8_t cur[16 * 16], ref[17 * 17];
    int16_t w[64];
    std::fill(cur, cur + 64, 200), std::fill(w, w + 64, int16_t(-1));
    Kvt32s v[4] = {-1}, m[4] = {-1};
    ASSERT_EQ(kvtiVarMean8x8_8u32s_C1R(cur, 8, v, m), kvtStsOk);
    EXPECT_TRUE(m[0] == 12800 && v[0] == 0) << m[0] << " " << v[0];
    ASSERT_EQ(kvtiVarMean8x8_16s32s_C1R(w, 16, v, m), kvtStsOk);
    EXPECT_TRUE(m[0] == -64 && uint32_t(v[0]) == 0xFFFFFFFFu >> 6) << m[0] << " " << v[0];
    std::fill(ref, ref + 289, 100), std::fill(cur, cur + 256, 100);
    cur[0] = 108, cur[1] = 101;  // squares 64 + 1 in the top-left quarter
    const Kvt32s s[4] = {6400 - 8, 6400 - 8, 6400 - 8, 6400 - 8};
    ASSERT_EQ(kvtiVarMeanDiff16x16_8u32s_C1R(cur, 16, ref, 17, s, v, m, 0), kvtStsOk);
    EXPECT_TRUE(m[0] == -1 && v[0] == 0 && v[1] == 0) << v[0];  // (65 - 2) >> 6; Q = 0 is not above M
    ASSERT_EQ(kvtiVarMeanDiff16x8_8u32s_C1R(cur, 16, ref, 17, s, v, m, 0), kvtStsOk);
    EXPECT_TRUE(m[0] == -1 && v[0] == 1) << v[0];  // (65 - 1) >> 6
    const uint8_t* flat = ref;                     // flat 100
    uint8_t alt[16 * 16];
    for (int i = 0; i < 256; ++i) alt[i] = (i & 1) ? 255 : 0;
    const struct {
        const uint8_t* b;
        int t, n, flag;
    } cases[] = {
        // clang-format off
        {flat, 0, 1, 1}, {flat, 0, 255, 1}, {flat, 0, 0, 0}, {flat, 255, 0, 0},
        {flat, 200, 20, 1},                        // T >= 128 flags all: K = 30 > 20 after row 1
        {flat, 128, 225, 0}, {flat, 128, 224, 1},  // K stops at 15 * 15 = 225
        {alt, 126, 224, 1}, {alt, 127, 1, 1}, {alt, 127, 0, 0},  // 225 flagged above 126, none above 127
        // clang-format on
    };
    for (const auto& c : cases) {
        Kvt8u flag = 9;
        ASSERT_EQ(kvtiEdgesDetect16x16_8u_C1R(c.b, 16, Kvt8u(c.t), Kvt8u(c.n), &flag), kvtStsOk);
        EXPECT_EQ(flag, c.flag) << (c.b == flat ? "flat" : "alternating") << " t " << c.t << " n " << c.n;
    }
}
