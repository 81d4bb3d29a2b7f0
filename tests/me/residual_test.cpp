// Residual family: statuses, the documented rounding cases, an independent prediction model
// through the public functions, reference against SIMD, and reads confined to what a phase needs.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "checkasm.h"
#include "kvtvc.h"
#include "me/residual_kernels.h"
#include "page_guard.h"

using namespace kvt;
using namespace kvt::test;

namespace {

using GetDiffFn = decltype(&kvtiGetDiff16x16_8u16s_C1);
using GetDiffBFn = decltype(&kvtiGetDiff16x16B_8u16s_C1);

struct Size {
    int w, h;
    GetDiffFn fn;
    GetDiffBFn fn_b;
    const GetDiffTable* ref;
    const GetDiffTable* simd;
    const GetDiffBTable* ref_b;
    const GetDiffBTable* simd_b;
};

#define KVT_SIZE(w, h)                                                                                      \
    Size {                                                                                                  \
        w, h, kvtiGetDiff##w##x##h##_8u16s_C1, kvtiGetDiff##w##x##h##B_8u16s_C1, &get_diff_##w##x##h##_ref, \
            &KVT_KERNEL(get_diff_##w##x##h), &get_diff_b_##w##x##h##_ref, &KVT_KERNEL(get_diff_b_##w##x##h) \
    }
const Size kSizes[] = {KVT_SIZE(16, 16), KVT_SIZE(16, 8), KVT_SIZE(8, 16), KVT_SIZE(8, 8), KVT_SIZE(8, 4)};
#undef KVT_SIZE

// Independent model of one prediction: bit 8 of the type is a horizontal half step, bit 4 a
// vertical one; the 16-wide single-direction residuals add one more unit of rounding.
int model_pred(const uint8_t* ref, int step, int x, int y, int type, int r, bool wide) {
    const uint8_t* p = ref + y * step + x;
    const int h = (type & 8) ? 1 : 0, v = (type & 4) ? step : 0, extra = wide ? 1 : 0;
    if (!h && !v) return p[0];
    if (h && v) return (p[0] + p[1] + p[v] + p[v + 1] + 2 - r + extra) >> 2;
    return (p[0] + p[h + v] + 1 - r + extra) >> 1;
}

// Fills the w x h region of a plane: 0 random, 1 all 0, 2 all 255, 3 alternating 0 / 255.
void fill_region(Plane<uint8_t>& p, int w, int h, int mode, Rng& rng) {
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            p.row(y)[x] = uint8_t(mode == 0   ? rng.uniform(0, 255)
                                  : mode == 1 ? 0
                                  : mode == 2 ? 255
                                              : ((x + y) & 1) * 255);
}

// A byte step for a block of w samples: at least w, sometimes negative.
int random_step(Rng& rng, int w, int unit = 1) {
    const int s = (w + rng.uniform(0, 24)) * unit;
    return rng.uniform(0, 3) == 0 ? -s : s;
}

const int kTypes[] = {0, 4, 8, 12};

}  // namespace

TEST(ResidualStatus, NullPointersAndNothingWritten) {
    uint8_t blk[17 * 17] = {};
    std::vector<int16_t> out(256, 77);
    for (const Size& s : kSizes) {
        EXPECT_EQ(s.fn(nullptr, 16, blk, 17, out.data(), 32, out.data(), 32, 0, 0), kvtStsNullPointer);
        EXPECT_EQ(s.fn(blk, 16, nullptr, 17, out.data(), 32, out.data(), 32, 0, 0), kvtStsNullPointer);
        EXPECT_EQ(s.fn(blk, 16, blk, 17, nullptr, 32, out.data(), 32, 12, 1), kvtStsNullPointer);
        EXPECT_EQ(s.fn_b(nullptr, 16, blk, 17, 0, blk, 17, 0, out.data(), 32, 0), kvtStsNullPointer);
        EXPECT_EQ(s.fn_b(blk, 16, nullptr, 17, 0, blk, 17, 0, out.data(), 32, 0), kvtStsNullPointer);
        EXPECT_EQ(s.fn_b(blk, 16, blk, 17, 0, nullptr, 17, 0, out.data(), 32, 0), kvtStsNullPointer);
        EXPECT_EQ(s.fn_b(blk, 16, blk, 17, 0, blk, 17, 0, nullptr, 32, 0), kvtStsNullPointer);
    }
    EXPECT_EQ(kvtiGetDiff4x4_8u16s_C1(blk, 4, nullptr, 4, out.data(), 8), kvtStsNullPointer);
    EXPECT_EQ(kvtiSumsDiff16x16Blocks4x4_8u16s_C1(blk, 16, blk, 16, nullptr, out.data()), kvtStsNullPointer);
    EXPECT_EQ(kvtiSumsDiff8x8Blocks4x4_8u16s_C1(nullptr, 8, blk, 8, out.data(), out.data()),
              kvtStsNullPointer);
    for (int16_t v : out) ASSERT_EQ(v, 77);
    // A null prediction array (and a null residual tile array) is legal.
    EXPECT_EQ(kvtiGetDiff8x8_8u16s_C1(blk, 8, blk, 8, out.data(), 16, nullptr, 0, 12, 0), kvtStsOk);
    EXPECT_EQ(kvtiSumsDiff8x8Blocks4x4_8u16s_C1(blk, 8, blk, 8, out.data(), nullptr), kvtStsOk);
}

TEST(TextureErrorStatus, NullPointersReportBadArgument) {
    uint8_t src[64] = {}, pred[64] = {};
    int16_t diff[64];
    Kvt32s sad = 5;
    std::fill(diff, diff + 64, int16_t(9));
    EXPECT_EQ(kvtiComputeTextureErrorBlock_SAD_8u16s(nullptr, 8, pred, diff, &sad), kvtStsBadArgument);
    EXPECT_EQ(kvtiComputeTextureErrorBlock_SAD_8u16s(src, 8, nullptr, diff, &sad), kvtStsBadArgument);
    EXPECT_EQ(kvtiComputeTextureErrorBlock_SAD_8u16s(src, 8, pred, nullptr, &sad), kvtStsBadArgument);
    EXPECT_EQ(kvtiComputeTextureErrorBlock_SAD_8u16s(src, 8, pred, diff, nullptr), kvtStsBadArgument);
    EXPECT_EQ(kvtiComputeTextureErrorBlock_8u16s(src, 8, pred, nullptr), kvtStsBadArgument);
    EXPECT_EQ(kvtiComputeTextureErrorBlock_8u16s(src, 8, nullptr, diff), kvtStsBadArgument);
    EXPECT_EQ(sad, 5);
    for (int16_t v : diff) ASSERT_EQ(v, 9);
}

// The document's cases: 2x2 references, current block of zeros, so residual = -prediction.
struct RoundCase {
    uint8_t a, b, c, d;
    int type, r;
    int want8, want16;
};

TEST(ResidualRounding, NarrowAndWideForms) {
    const RoundCase cases[] = {
        {0, 0, 0, 1, 12, 1, 0, 0},
        {0, 0, 0, 1, 12, 0, 0, 1},
        {1, 1, 1, 1, 12, 1, 1, 1},
        {10, 10, 10, 10, 4, 0, 10, 11},
        {10, 10, 10, 10, 4, 1, 10, 10},
        {10, 10, 10, 10, 8, 0, 10, 11},
        {1, 1, 1, 2, 12, 0, 1, 2},
        {255, 255, 255, 255, 4, 0, 255, 256},
        {255, 255, 255, 255, 12, 0, 255, 255},
        {3, 4, 5, 6, 0, 0, 3, 3},
        {3, 4, 5, 6, 8, 1, 3, 4},
        {3, 4, 5, 6, 4, 1, 4, 4},
    };
    for (const RoundCase& k : cases) {
        uint8_t ref[17 * 17], cur[16 * 16] = {};
        for (int y = 0; y < 17; ++y)
            for (int x = 0; x < 17; ++x)
                ref[y * 17 + x] = (y & 1) ? ((x & 1) ? k.d : k.c) : ((x & 1) ? k.b : k.a);
        for (const Size& s : kSizes) {
            int16_t diff[256], pred[256];
            ASSERT_EQ(s.fn(cur, 16, ref, 17, diff, 32, pred, 32, k.type, k.r), kvtStsOk);
            const int want = s.w == 16 ? k.want16 : k.want8;
            EXPECT_EQ(pred[0], want) << s.w << "x" << s.h << " type " << k.type << " r " << k.r;
            EXPECT_EQ(diff[0], -want) << s.w << "x" << s.h;
            // Any non-zero rounding control acts as 1.
            ASSERT_EQ(s.fn(cur, 16, ref, 17, diff, 32, pred, 32, k.type, k.r ? -7 : 0), kvtStsOk);
            EXPECT_EQ(pred[0], want) << s.w << "x" << s.h << " type " << k.type << " control -7";
        }
    }
}

TEST(ResidualRounding, BidirectionalAverageTruncates) {
    uint8_t cur[256], fwd[17 * 17], bwd[17 * 17];
    std::fill(cur, cur + 256, uint8_t(20));
    std::fill(fwd, fwd + 289, uint8_t(10));
    std::fill(bwd, bwd + 289, uint8_t(11));
    for (const Size& s : kSizes) {
        int16_t diff[256];
        ASSERT_EQ(s.fn_b(cur, 16, fwd, 17, 0, bwd, 17, 0, diff, 32, 0), kvtStsOk);
        EXPECT_EQ(diff[0], 10) << s.w << "x" << s.h;  // prediction (10 + 11) >> 1 = 10
        // The narrow form holds for the 16-wide blocks too: flat 10 at fh, r = 0 stays 10.
        ASSERT_EQ(s.fn_b(cur, 16, fwd, 17, 4, fwd, 17, 8, diff, 32, 0), kvtStsOk);
        EXPECT_EQ(diff[0], 10) << s.w << "x" << s.h;
    }
}

// Every size, every type (extra bits ignored), both rounding controls, through the public
// functions, against the model above; checks the residual, the prediction and the guard bytes.
TEST(ResidualModel, PublicFunctionsMatchModel) {
    Rng rng(41);
    const int types[] = {0, 4, 8, 12, 1, 2, 3, 7, 13, -1, 0x7FFFFFF0, -4};
    for (const Size& s : kSizes) {
        for (int type : types) {
            for (int r : {0, 1}) {
                Plane<uint8_t> cur(s.w, s.h, s.w + 3), ref(s.w + 1, s.h + 1, s.w + 5),
                    fwd(s.w + 1, s.h + 1, -40);
                cur.randomize(rng, 0, 255);
                ref.randomize(rng, 0, 255);
                fwd.randomize(rng, 0, 255);
                Plane<int16_t> diff(s.w, s.h, 2 * s.w + 6), pred(s.w, s.h, -2 * s.w),
                    diff_b(s.w, s.h, 2 * s.w);
                ASSERT_EQ(s.fn(cur.data(), cur.step(), ref.data(), ref.step(), diff.data(), diff.step(),
                               pred.data(), pred.step(), type, r),
                          kvtStsOk);
                for (int y = 0; y < s.h; ++y) {
                    for (int x = 0; x < s.w; ++x) {
                        const int p = model_pred(ref.data(), ref.step(), x, y, type, r, s.w == 16);
                        ASSERT_EQ(pred.row(y)[x], p) << s.w << "x" << s.h << " type " << type << " r " << r;
                        ASSERT_EQ(diff.row(y)[x], cur.row(y)[x] - p)
                            << s.w << "x" << s.h << " at " << x << "," << y;
                    }
                }
                // All sixteen forward / backward phase pairs, the stray bits of `type` on both.
                for (int fwd_phase : kTypes) {
                    const int fwd_type = fwd_phase | (type & ~12);
                    ASSERT_EQ(s.fn_b(cur.data(), cur.step(), fwd.data(), fwd.step(), fwd_type, ref.data(),
                                     ref.step(), type, diff_b.data(), diff_b.step(), r),
                              kvtStsOk);
                    for (int y = 0; y < s.h; ++y) {
                        for (int x = 0; x < s.w; ++x) {
                            const int f = model_pred(fwd.data(), fwd.step(), x, y, fwd_type, r, false);
                            const int b = model_pred(ref.data(), ref.step(), x, y, type, r, false);
                            ASSERT_EQ(diff_b.row(y)[x], cur.row(y)[x] - ((f + b) >> 1))
                                << s.w << "x" << s.h << " types " << fwd_type << "/" << type;
                        }
                    }
                }
                EXPECT_TRUE(diff.guards_intact() && pred.guards_intact() && diff_b.guards_intact());
            }
        }
    }
}

TEST(ResidualModel, FourByFourAndTextureError) {
    Rng rng(7);
    for (int step : {4, 9, -6}) {
        Plane<uint8_t> cur(8, 8, step * 2), ref(8, 8, step * 3);
        cur.randomize(rng, 0, 255);
        ref.randomize(rng, 0, 255);
        Plane<int16_t> diff(4, 4, step * 4);
        ASSERT_EQ(
            kvtiGetDiff4x4_8u16s_C1(cur.data(), cur.step(), ref.data(), ref.step(), diff.data(), diff.step()),
            kvtStsOk);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 4; ++x) ASSERT_EQ(diff.row(y)[x], cur.row(y)[x] - ref.row(y)[x]);
        EXPECT_TRUE(diff.guards_intact());

        uint8_t pred[64];
        rng.fill(pred, 64, 0, 255);
        Guarded<int16_t> te(64), te2(64);
        Kvt32s sad = -1;
        ASSERT_EQ(kvtiComputeTextureErrorBlock_SAD_8u16s(cur.data(), cur.step(), pred, te.data(), &sad),
                  kvtStsOk);
        ASSERT_EQ(kvtiComputeTextureErrorBlock_8u16s(cur.data(), cur.step(), pred, te2.data()), kvtStsOk);
        int want_sad = 0;
        for (int i = 0; i < 64; ++i) {
            const int d = cur.row(i / 8)[i % 8] - pred[i];
            ASSERT_EQ(te[i], d);
            ASSERT_EQ(te2[i], d);
            want_sad += d < 0 ? -d : d;
        }
        EXPECT_EQ(sad, want_sad);
        EXPECT_TRUE(te.guards_intact() && te2.guards_intact());
    }
}

// Sums of 4x4 sub-blocks and their tiles, for both block sizes, with and without tiles.
TEST(ResidualModel, SumsAndTiles) {
    Rng rng(3);
    for (int n : {16, 8}) {
        for (int mode = 0; mode < 4; ++mode) {
            Plane<uint8_t> cur(n, n, n + 1), pred(n, n, -n - 7);
            fill_region(cur, n, n, mode, rng);
            fill_region(pred, n, n, 3 - mode, rng);
            const int tiles = n * n / 16;
            Guarded<int16_t> sums{size_t(tiles)}, sums2{size_t(tiles)}, diff{size_t(n * n)};
            const auto fn = n == 16 ? kvtiSumsDiff16x16Blocks4x4_8u16s_C1 : kvtiSumsDiff8x8Blocks4x4_8u16s_C1;
            ASSERT_EQ(fn(cur.data(), cur.step(), pred.data(), pred.step(), sums.data(), diff.data()),
                      kvtStsOk);
            ASSERT_EQ(fn(cur.data(), cur.step(), pred.data(), pred.step(), sums2.data(), nullptr), kvtStsOk);
            for (int k = 0; k < tiles; ++k) {
                int want = 0;
                for (int i = 0; i < 16; ++i) {
                    const int y = k / (n / 4) * 4 + i / 4, x = k % (n / 4) * 4 + i % 4;
                    const int d = cur.row(y)[x] - pred.row(y)[x];
                    ASSERT_EQ(diff[size_t(k * 16 + i)], d) << n << " tile " << k << " value " << i;
                    want += d;
                }
                ASSERT_EQ(sums[size_t(k)], want) << n << " sub-block " << k;
                ASSERT_EQ(sums2[size_t(k)], want);
            }
            EXPECT_TRUE(sums.guards_intact() && sums2.guards_intact() && diff.guards_intact());
        }
    }
}

// Reference against SIMD on every kernel of every table: random and extreme blocks, unaligned
// pointers, random and negative steps (odd ones too for the 16-bit outputs, whose steps are
// in bytes).
TEST(ResidualSimd, GetDiffTablesMatchReference) {
    for (const Size& s : kSizes) {
        compare_kernels("get_diff", 160, [&s](Rng& rng, Impl impl, Outputs& out) {
            const int mode = rng.uniform(0, 3), r = rng.uniform(0, 1);
            Plane<uint8_t> cur(s.w, s.h, random_step(rng, s.w), size_t(rng.uniform(0, 15)));
            Plane<uint8_t> ref(s.w + 1, s.h + 1, random_step(rng, s.w + 1), size_t(rng.uniform(0, 15)));
            Plane<uint8_t> bwd(s.w + 1, s.h + 1, random_step(rng, s.w + 1), size_t(rng.uniform(0, 15)));
            fill_region(cur, s.w, s.h, mode, rng);
            fill_region(ref, s.w + 1, s.h + 1, mode == 3 ? 3 : rng.uniform(0, 2), rng);
            fill_region(bwd, s.w + 1, s.h + 1, rng.uniform(0, 3), rng);
            Plane<uint8_t> diff(2 * s.w, s.h, random_step(rng, 2 * s.w), size_t(rng.uniform(0, 7)) * 2);
            Plane<uint8_t> pred(2 * s.w, s.h, random_step(rng, 2 * s.w), size_t(rng.uniform(0, 7)) * 2);
            const auto as16 = [](Plane<uint8_t>& p) { return reinterpret_cast<int16_t*>(p.data()); };
            const GetDiffTable& t = impl == Impl::Ref ? *s.ref : *s.simd;
            const GetDiffBTable& tb = impl == Impl::Ref ? *s.ref_b : *s.simd_b;
            for (int i = 0; i < 8; ++i) {
                t[size_t(i)](cur.data(), cur.step(), ref.data(), ref.step(), as16(diff), diff.step(),
                             as16(pred), pred.step(), r);
                out.add_buffer("diff " + std::to_string(i), diff);
                out.add_buffer("pred " + std::to_string(i), pred);
            }
            for (int i = 0; i < 16; ++i) {
                tb[size_t(i)](cur.data(), cur.step(), ref.data(), ref.step(), bwd.data(), bwd.step(),
                              as16(diff), diff.step(), r);
                out.add_buffer("diff_b " + std::to_string(i), diff);
            }
        });
    }
}

TEST(ResidualSimd, SumsAndTextureErrorMatchReference) {
    compare_kernels("sums/texture", 300, [](Rng& rng, Impl impl, Outputs& out) {
        const int mode = rng.uniform(0, 3);
        Plane<uint8_t> cur(16, 16, random_step(rng, 16), size_t(rng.uniform(0, 15)));
        Plane<uint8_t> pred(16, 16, random_step(rng, 16), size_t(rng.uniform(0, 15)));
        fill_region(cur, 16, 16, mode, rng);
        fill_region(pred, 16, 16, rng.uniform(0, 3), rng);
        Guarded<int16_t> sums(16), diff(256, size_t(rng.uniform(0, 7)) * 2);
        Kvt32s sad = 0;
        const bool tiles = rng.coin();
        KVT_PICK(impl, sums_diff_16x16)
        (cur.data(), cur.step(), pred.data(), pred.step(), sums.data(), tiles ? diff.data() : nullptr);
        out.add_buffer("sums16", sums);
        out.add_buffer("tiles16", diff);
        KVT_PICK(impl, sums_diff_8x8)
        (cur.data(), cur.step(), pred.data(), pred.step(), sums.data(), tiles ? diff.data() : nullptr);
        out.add_buffer("sums8", sums);
        out.add_buffer("tiles8", diff);
        KVT_PICK(impl, texture_error)
        (cur.data(), cur.step(), pred.row(0), diff.data(), tiles ? &sad : nullptr);
        out.add_buffer("texture", diff);
        out.add("sad", sad);
    });
}

// Each phase reads the block plus only the column and row its half steps need: the last sample
// it may read is placed on the last byte before an inaccessible page (top row last in memory
// for a negative step), so one byte more faults. Covers every table entry of the dispatched and
// reference kernels, and the current block at the page end too.
TEST(ResidualBounds, ReadsStayInsideThePhase) {
    for (const Size& s : kSizes) {
        for (int type : kTypes) {
            const int rw = s.w + ((type & 8) ? 1 : 0), rh = s.h + ((type & 4) ? 1 : 0);
            for (int sign : {1, -1}) {
                const int step = sign * (s.w + 3);
                PageGuarded buf(size_t(rh - 1) * size_t(s.w + 3) + size_t(rw));
                for (size_t i = 0; i < buf.size(); ++i) buf.data()[i] = uint8_t(i * 7);
                const uint8_t* blk = buf.data() + (sign < 0 ? size_t(rh - 1) * size_t(s.w + 3) : 0);
                PageGuarded cur_buf(size_t(s.h - 1) * 32 + size_t(s.w));
                const uint8_t* cur = cur_buf.data();
                int16_t diff[256], pred[256];
                for (const GetDiffTable* t : {s.ref, s.simd}) {
                    (*t)[size_t(get_diff_index(type, false))](cur, 32, blk, step, diff, 32, nullptr, 0, 0);
                    (*t)[size_t(get_diff_index(type, true))](cur, 32, blk, step, diff, 32, pred, 32, 1);
                }
                for (const GetDiffBTable* t : {s.ref_b, s.simd_b}) {
                    for (int other : kTypes) {
                        (*t)[size_t(get_diff_b_index(type, other))](cur, 32, blk, step, buf.data(), 1, diff,
                                                                    32, 0);
                        (*t)[size_t(get_diff_b_index(other, type))](cur, 32, buf.data(), 1, blk, step, diff,
                                                                    32, 1);
                    }
                }
            }
        }
    }
    PageGuarded cur(15 * 24 + 16), pred(7 * 8 + 8);
    int16_t sums[16], diff[256];
    Kvt32s sad;
    EXPECT_EQ(kvtiSumsDiff16x16Blocks4x4_8u16s_C1(cur.data(), 24, cur.data(), 24, sums, diff), kvtStsOk);
    EXPECT_EQ(kvtiSumsDiff8x8Blocks4x4_8u16s_C1(cur.data() + 8 * 24 + 8, 24, pred.data(), 8, sums, diff),
              kvtStsOk);
    EXPECT_EQ(kvtiComputeTextureErrorBlock_SAD_8u16s(pred.data(), 8, pred.data(), diff, &sad), kvtStsOk);
    EXPECT_EQ(sad, 0);
}
