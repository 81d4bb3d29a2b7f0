// H.264 luma and chroma interpolation and the weighted average: the fronts against small anchors
// written from the standard's equations, every tier against the oracle on random pictures, areas
// fenced by inaccessible pages, and the argument checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "checkasm.h"
#include "h264/interp_dsp.h"
#include "h264/weight_dsp.h"
#include "h264_test_util.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::test;

namespace {

struct Size2 {
    int w, h;
};
constexpr Size2 kLumaSizes[] = {{4, 4}, {4, 8}, {8, 4}, {8, 8}, {8, 16}, {16, 8}, {16, 16}};
constexpr Size2 kChromaSizes[] = {{2, 2}, {2, 4}, {4, 2}, {4, 4}, {4, 8}, {8, 4}, {8, 8}};

int clip255(int v) { return std::min(255, std::max(0, v)); }
int avg(int a, int b) { return (a + b + 1) >> 1; }

// The luma sample at fraction (xf, yf) of integer sample G, with the letters of H.264 8.4.2.2.1:
// H right of G, M below, b / s the horizontal half samples in G's row and the next, h / m the
// vertical ones in G's column and the next, j the centre. j is formed here from the horizontal
// intermediates filtered vertically (the kernels go the other way; the sums are equal).
int anchor_luma(const uint8_t* g, ptrdiff_t step, int xf, int yf) {
    const auto px = [&](int x, int y) { return int(g[y * step + x]); };
    const auto f6 = [](int e, int f, int g6, int h, int i, int j) {
        return e - 5 * f + 20 * (g6 + h) - 5 * i + j;
    };
    const auto b1 = [&](int y) { return f6(px(-2, y), px(-1, y), px(0, y), px(1, y), px(2, y), px(3, y)); };
    const auto h1 = [&](int x) { return f6(px(x, -2), px(x, -1), px(x, 0), px(x, 1), px(x, 2), px(x, 3)); };
    const int G = px(0, 0), H = px(1, 0), M = px(0, 1);
    const int b = clip255((b1(0) + 16) >> 5), s = clip255((b1(1) + 16) >> 5);
    const int h = clip255((h1(0) + 16) >> 5), m = clip255((h1(1) + 16) >> 5);
    const int j = clip255((f6(b1(-2), b1(-1), b1(0), b1(1), b1(2), b1(3)) + 512) >> 10);
    const int at[4][4] = {{G, avg(G, h), h, avg(M, h)},
                          {avg(G, b), avg(b, h), avg(h, j), avg(h, s)},
                          {b, avg(b, j), j, avg(j, s)},
                          {avg(H, b), avg(b, m), avg(j, m), avg(m, s)}};
    return at[xf][yf];
}

int anchor_chroma(const uint8_t* p, ptrdiff_t step, int xf, int yf) {
    return ((8 - xf) * (8 - yf) * p[0] + xf * (8 - yf) * p[1] + (8 - xf) * yf * p[step] +
            xf * yf * p[step + 1] + 32) >>
           6;
}

// Picture content. kStripes sets columns to one of two types by bit (x mod 6) of a pattern, rows
// repeating every three: the six-tap sums of a column reach -2550 or 10710, so the centre
// positions meet their extreme intermediate values (patterns 0b010010 and its complement put the
// worst combination under every sixth column).
enum Fill { kRandom, kExtremes, kFlatNoise, kStripes, kFillCount };

struct Picture {
    Fill fill;
    int pattern, flat;
    uint8_t value(Rng& rng, int x, int y) const {
        switch (fill) {
            case kRandom:
                return uint8_t(rng.next());
            case kExtremes:
                return rng.coin() ? 255 : 0;
            case kFlatNoise:
                return uint8_t(clip255(flat + rng.uniform(-2, 2)));
            default: {
                const bool hi = pattern >> ((x % 6 + 6) % 6) & 1, row = (y % 3 + 3) % 3 == 0;
                return row != hi ? 255 : 0;
            }
        }
    }
    static Picture any(Rng& rng) {
        const int patterns[] = {0b010010, 0b101101, rng.uniform(0, 63)};
        return {Fill(rng.uniform(0, kFillCount - 1)), patterns[rng.uniform(0, 2)], rng.uniform(0, 255)};
    }
};

// The reference area of a w x h block: `before` samples before it and `after` after it in both
// directions, random step and fenced side.
struct RefArea : FencedArea {
    RefArea(Rng& rng, int w, int h, int before, int after, const Picture& pic, Steps steps = Steps::kAnySign,
            int min_step = 0)
        : FencedArea(w + before + after, h + before + after,
                     random_step(rng, std::max(w + before + after, min_step), steps), rng.coin(), before,
                     before) {
        for (int y = -before; y < h + after; ++y)
            for (int x = -before; x < w + after; ++x) at(x, y) = pic.value(rng, x, y);
    }
};

// A destination of w x h with random step; after a call, out() holds the block and
// `untouched()` says nothing around it was written.
struct Dest {
    Plane<uint8_t> plane;
    int w, h;
    Dest(Rng& rng, int w_, int h_, Steps steps = Steps::kAnySign, int min_step = 0)
        : plane(w_, h_, random_step(rng, std::max(w_, min_step), steps), size_t(rng.uniform(0, 15))),
          w(w_),
          h(h_) {}
    uint8_t* data() { return plane.data(); }
    int step() const { return plane.step(); }
    uint8_t at(int x, int y) { return plane.row(y)[x]; }
    bool untouched() {
        std::vector<uint8_t> saved;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) saved.push_back(std::exchange(plane.row(y)[x], uint8_t(0xA5)));
        const std::vector<uint8_t> b = plane.bytes();
        const bool clean =
            plane.guards_intact() && std::count(b.begin(), b.end(), 0xA5) == ptrdiff_t(b.size());
        for (int i = 0; i < w * h; ++i) plane.row(i / w)[i % w] = saved[size_t(i)];
        return clean;
    }
};

// ---- Luma ---------------------------------------------------------------------------------------

TEST(H264Interpolation, LumaMatchesTheStandardsEquations) {
    for (int trial = 0; trial < 6; ++trial) {
        Rng rng(test_seed() + trial);
        for (const Size2 z : kLumaSizes)
            for (int pos = 0; pos < 16; ++pos) {
                const Picture pic = Picture::any(rng);
                RefArea src(rng, z.w, z.h, 2, 3, pic, Steps::kPositive);
                Dest dst(rng, z.w, z.h, Steps::kPositive);
                ASSERT_EQ(kvtStsOk,
                          kvtiInterpolateLuma_H264_8u_C1R(src.origin(), src.step(), dst.data(), dst.step(),
                                                          pos / 4, pos % 4, {z.w, z.h}));
                for (int y = 0; y < z.h; ++y)
                    for (int x = 0; x < z.w; ++x)
                        ASSERT_EQ(anchor_luma(&src.at(x, y), src.step(), pos / 4, pos % 4), dst.at(x, y))
                            << z.w << "x" << z.h << " dx " << pos / 4 << " dy " << pos % 4 << " at " << x
                            << "," << y << " fill " << pic.fill << " seed " << test_seed() + trial;
                ASSERT_TRUE(dst.untouched());
            }
    }
}

// Every tier against the anchor on the stripe pictures, where the centre sums are extreme.
TEST(H264Interpolation, LumaTiersAtExtremeCentreSums) {
    for_each_tier<InterpDsp>(init_interp_dsp, [](const InterpDsp& d, const Tier&) {
        Rng rng(test_seed());
        for (const int pattern : {0b010010, 0b101101})
            for (int phase = 0; phase < 6; ++phase)
                for (const Size2 z : kLumaSizes)
                    for (int pos = 0; pos < 16; ++pos) {
                        RefArea src(rng, z.w, z.h, 2 + phase, 3, {kStripes, pattern, 0});
                        uint8_t* g = &src.at(-phase, -phase);  // shift the pattern under the block
                        std::vector<uint8_t> out(size_t(z.w * z.h));
                        luma_kernel(d, z.w, z.h, pos)(g, src.step(), out.data(), z.w, z.h);
                        for (int i = 0; i < z.w * z.h; ++i)
                            ASSERT_EQ(anchor_luma(g + ptrdiff_t(i / z.w) * src.step() + i % z.w, src.step(),
                                                  pos / 4, pos % 4),
                                      out[size_t(i)])
                                << z.w << "x" << z.h << " pos " << pos << " sample " << i;
                    }
    });
}

TEST(H264Interpolation, LumaTiersMatchTheOracle) {
    compare_tiers<InterpDsp>(
        "luma", init_interp_dsp, ref::init_interp, 8, [](Rng& rng, const InterpDsp& d, Outputs& out) {
            for (const Size2 z : kLumaSizes)
                for (int pos = 0; pos < 16; ++pos) {
                    RefArea src(rng, z.w, z.h, 2, 3, Picture::any(rng));
                    Dest dst(rng, z.w, z.h);
                    luma_kernel(d, z.w, z.h, pos)(src.origin(), src.step(), dst.data(), dst.step(), z.h);
                    out.add_buffer("luma " + std::to_string(z.w) + "x" + std::to_string(z.h) + " pos " +
                                       std::to_string(pos),
                                   dst.plane);
                }
        });
}

TEST(H264Interpolation, FlatAreaStaysFlatAtEveryPosition) {
    for (const int v : {0, 1, 127, 254, 255})
        for (int pos = 0; pos < 16; ++pos) {
            std::vector<uint8_t> src(24 * 24, uint8_t(v)), dst(16 * 16, 7);
            ASSERT_EQ(kvtStsOk, kvtiInterpolateLuma_H264_8u_C1R(&src[2 * 24 + 2], 24, dst.data(), 16, pos / 4,
                                                                pos % 4, {16, 16}));
            ASSERT_EQ(std::count(dst.begin(), dst.end(), v), 256) << "value " << v << " pos " << pos;
        }
}

TEST(H264Interpolation, LumaArgumentChecksInOrder) {
    std::vector<uint8_t> src(32 * 32, 9), dst(32 * 32, 7);
    const uint8_t* s = &src[2 * 32 + 2];
    uint8_t* o = dst.data();
    const auto call = [&](const uint8_t* a, int as, uint8_t* b, int bs, int dx, int dy, int w, int h) {
        return kvtiInterpolateLuma_H264_8u_C1R(a, as, b, bs, dx, dy, {w, h});
    };
    EXPECT_EQ(kvtStsNullPointer, call(nullptr, 32, o, 32, 9, 0, 3, 3));
    EXPECT_EQ(kvtStsNullPointer, call(s, 32, nullptr, 32, 0, 0, 8, 8));
    EXPECT_EQ(kvtStsBadStep, call(s, 15, o, 32, 9, 0, 16, 16));  // before the position and size
    EXPECT_EQ(kvtStsBadStep, call(s, 32, o, 7, 0, 0, 8, 8));
    EXPECT_EQ(kvtStsBadArgument, call(s, 32, o, 32, 4, 0, 3, 3));  // before the size
    EXPECT_EQ(kvtStsBadArgument, call(s, 32, o, 32, 0, -1, 8, 8));
    for (const Size2 z : {Size2{16, 4}, Size2{4, 16}, Size2{2, 2}, Size2{12, 8}, Size2{32, 32}, Size2{8, 0}})
        EXPECT_EQ(kvtStsBadSize, call(s, 32, o, 32, 1, 1, z.w, z.h)) << z.w << "x" << z.h;
    EXPECT_EQ(std::count(dst.begin(), dst.end(), 7), ptrdiff_t(dst.size())) << "a failed call wrote";
    for (const Size2 z : kLumaSizes) EXPECT_EQ(kvtStsOk, call(s, 32, o, 32, 3, 3, z.w, z.h));
}

// ---- Chroma -------------------------------------------------------------------------------------

TEST(H264Interpolation, ChromaMatchesTheBilinearFormula) {
    Rng rng(test_seed());
    for (const Size2 z : kChromaSizes)
        for (int pos = 0; pos < 64; ++pos) {
            const int dx = pos % 8, dy = pos / 8;
            RefArea src(rng, z.w, z.h, 0, 1, Picture::any(rng), Steps::kPositive, 8);
            Dest dst(rng, z.w, z.h, Steps::kPositive, 8);
            ASSERT_EQ(kvtStsOk, kvtiInterpolateChroma_H264_8u_C1R(src.origin(), src.step(), dst.data(),
                                                                  dst.step(), dx, dy, {z.w, z.h}));
            for (int y = 0; y < z.h; ++y)
                for (int x = 0; x < z.w; ++x)
                    ASSERT_EQ(anchor_chroma(&src.at(x, y), src.step(), dx, dy), dst.at(x, y))
                        << z.w << "x" << z.h << " (" << dx << "," << dy << ") at " << x << "," << y;
            ASSERT_TRUE(dst.untouched());
        }
}

TEST(H264Interpolation, ChromaTiersMatchTheOracle) {
    compare_tiers<InterpDsp>(
        "chroma", init_interp_dsp, ref::init_interp, 8, [](Rng& rng, const InterpDsp& d, Outputs& out) {
            for (const Size2 z : kChromaSizes)
                for (int pos = 0; pos < 64; pos += rng.uniform(1, 5)) {
                    RefArea src(rng, z.w, z.h, 0, 1, Picture::any(rng));
                    Dest dst(rng, z.w, z.h);
                    d.chroma[width_class(2 * z.w)](src.origin(), src.step(), dst.data(), dst.step(), pos % 8,
                                                   pos / 8, z.h);
                    out.add_buffer("chroma " + std::to_string(z.w) + "x" + std::to_string(z.h) + " pos " +
                                       std::to_string(pos),
                                   dst.plane);
                }
        });
}

TEST(H264Interpolation, ChromaArgumentChecksInOrder) {
    std::vector<uint8_t> src(16 * 16, 9), dst(16 * 16, 7);
    const auto call = [&](const uint8_t* a, int as, uint8_t* b, int bs, int dx, int dy, int w, int h) {
        return kvtiInterpolateChroma_H264_8u_C1R(a, as, b, bs, dx, dy, {w, h});
    };
    const uint8_t* s = src.data();
    uint8_t* o = dst.data();
    EXPECT_EQ(kvtStsNullPointer, call(nullptr, 4, o, 16, 9, 0, 3, 3));
    EXPECT_EQ(kvtStsNullPointer, call(s, 16, nullptr, 16, 0, 0, 2, 2));
    EXPECT_EQ(kvtStsBadStep, call(s, 4, o, 16, 0, 0, 2, 2));  // 8 whatever the width
    EXPECT_EQ(kvtStsBadStep, call(s, 16, o, 7, 9, 0, 3, 3));
    EXPECT_EQ(kvtStsBadArgument, call(s, 16, o, 16, 8, 0, 3, 3));
    EXPECT_EQ(kvtStsBadArgument, call(s, 16, o, 16, 0, -1, 2, 2));
    for (const Size2 z : {Size2{2, 8}, Size2{8, 2}, Size2{1, 1}, Size2{16, 16}, Size2{6, 4}, Size2{4, 0}})
        EXPECT_EQ(kvtStsBadSize, call(s, 16, o, 16, 1, 1, z.w, z.h)) << z.w << "x" << z.h;
    EXPECT_EQ(std::count(dst.begin(), dst.end(), 7), ptrdiff_t(dst.size())) << "a failed call wrote";
    for (const Size2 z : kChromaSizes) EXPECT_EQ(kvtStsOk, call(s, 16, o, 16, 7, 7, z.w, z.h));
}

// ---- Weighted average ---------------------------------------------------------------------------

constexpr int kWeightSizes[] = {2, 4, 8, 16};

// The definition in 64-bit arithmetic for parameters that keep the sum in 32 bits.
int anchor_weighted(int a, int b, int w1, int w2, int shift, int offset) {
    const int64_t sum = int64_t(a) * w1 + int64_t(b) * w2 + (int64_t(1) << (shift - 1));
    return clip255(int((sum >> shift) + offset));
}

struct WeightCase {
    int w1, w2, shift, offset;
};

// Runs the front on a random w x h pair of blocks; returns the result and the two inputs.
struct WeightRun {
    std::vector<uint8_t> a, b, out;
    KvtStatus status;
    WeightRun(Rng& rng, int w, int h, int step, const WeightCase& c, bool extremes = false) {
        a.resize(size_t(step * h));
        b.resize(a.size());
        for (size_t i = 0; i < a.size(); ++i) {
            a[i] = extremes ? (rng.coin() ? 255 : 0) : uint8_t(rng.next());
            b[i] = extremes ? (rng.coin() ? 255 : 0) : uint8_t(rng.next());
        }
        out = b;
        status = kvtiWeightedAverage_H264_8u_C1IR(a.data(), out.data(), step, c.w1, c.w2, uint32_t(c.shift),
                                                  c.offset, {w, h});
    }
};

// Explicit weights of H.264 (-128..127, log2 denominator 0..7, offsets -128..127), the extremes
// included, on random and on 0/255 blocks.
TEST(H264WeightedAverage, MatchesTheDefinition) {
    Rng rng(test_seed());
    for (int trial = 0; trial < 600; ++trial) {
        const int pick[] = {-128, 127, rng.uniform(-128, 127)};
        const WeightCase c{pick[rng.uniform(0, 2)], pick[rng.uniform(0, 2)], rng.uniform(1, 8),
                           trial % 5 ? rng.uniform(-128, 127) : pick[rng.uniform(0, 1)] * 2};
        const int w = kWeightSizes[trial % 4], h = kWeightSizes[trial / 4 % 4], step = w + rng.uniform(0, 9);
        const WeightRun r(rng, w, h, step, c, trial % 3 == 0);
        ASSERT_EQ(kvtStsOk, r.status);
        for (int i = 0; i < step * h; ++i) {
            const bool inside = i % step < w;
            const int want = inside ? anchor_weighted(r.a[i], r.b[i], c.w1, c.w2, c.shift, c.offset) : r.b[i];
            ASSERT_EQ(want, r.out[size_t(i)]) << "w1 " << c.w1 << " w2 " << c.w2 << " shift " << c.shift
                                              << " offset " << c.offset << " at " << i;
        }
    }
}

TEST(H264WeightedAverage, EdgeCases) {
    Rng rng(test_seed());
    const WeightRun mean(rng, 16, 16, 16, {1, 1, 1, 0});
    const WeightRun low(rng, 8, 8, 8, {1, 1, 1, -300});
    const WeightRun shift0(rng, 4, 4, 4, {1, 1, 0, 0});  // rounding term 2^31: the sum wraps negative
    for (size_t i = 0; i < 256; ++i) ASSERT_EQ((mean.a[i] + mean.b[i] + 1) >> 1, mean.out[i]);
    EXPECT_EQ(std::count(low.out.begin(), low.out.end(), 0), 64);
    EXPECT_EQ(std::count(shift0.out.begin(), shift0.out.end(), 0), 16);
}

// Parameters of each class of slots (weight_dsp.h), extremes of the class included.
struct WeightParams {
    int32_t w1, w2;
    uint32_t shift;
    int32_t offset;
    static WeightParams draw(Rng& rng, int cls) {
        const auto pick = [&](int lo, int hi) {
            return rng.uniform(0, 3) == 0 ? (rng.coin() ? lo : hi) : rng.uniform(lo, hi);
        };
        if (cls == 0) {
            const int w1 = pick(-128, 127), room = 128 - std::abs(w1);
            return {w1, std::clamp(pick(-room, room), -128, 127), uint32_t(pick(1, 15)), pick(-16384, 16383)};
        }
        const auto weight = [&] {
            return cls == 1 ? pick(-32768, 32767) : rng.coin() ? int32_t(rng.next()) : pick(-300, 300);
        };
        const uint32_t shift = rng.coin() ? rng.next() : uint32_t(rng.uniform(0, 12));
        return {weight(), weight(), shift, rng.coin() ? int32_t(rng.next()) : pick(-600, 600)};
    }
};

TEST(H264WeightedAverage, TiersMatchTheOracle) {
    for (int cls = 0; cls < 3; ++cls)
        compare_tiers<WeightDsp>(
            "weighted", init_weight_dsp, ref::init_weight, 100,
            [cls](Rng& rng, const WeightDsp& d, Outputs& out) {
                const WeightFn* slots[3] = {d.average_small, d.average, d.average_wide};
                for (int slot = 0; slot < 4; ++slot) {
                    const int w = kWeightSizes[slot], h = kWeightSizes[rng.uniform(0, 3)];
                    const WeightParams p = WeightParams::draw(rng, cls);
                    Plane<uint8_t> a(w, h, random_step(rng, w), size_t(rng.uniform(0, 15)));
                    Plane<uint8_t> b(w, h, a.step(), size_t(rng.uniform(0, 15)));
                    for (int y = 0; y < h; ++y)
                        rng.fill(a.row(y), size_t(w), 0, 255), rng.fill(b.row(y), size_t(w), 0, 255);
                    slots[cls][slot](a.data(), b.data(), a.step(), p.w1, p.w2, p.shift, p.offset, h);
                    out.add_buffer(
                        "class " + std::to_string(cls) + " " + std::to_string(w) + "x" + std::to_string(h),
                        b);
                }
            });
}

TEST(H264WeightedAverage, ArgumentChecksInOrder) {
    std::vector<uint8_t> a(16 * 16, 9), b(16 * 16, 7);
    const auto call = [&](const uint8_t* s1, uint8_t* s2, int step, int w, int h) {
        return kvtiWeightedAverage_H264_8u_C1IR(s1, s2, step, 1, 1, 1, 0, {w, h});
    };
    EXPECT_EQ(kvtStsNullPointer, call(nullptr, b.data(), 0, 3, 3));
    EXPECT_EQ(kvtStsNullPointer, call(a.data(), nullptr, 16, 16, 16));
    EXPECT_EQ(kvtStsBadStep, call(a.data(), b.data(), 8, 32, 3));  // before the size
    EXPECT_EQ(kvtStsBadStep, call(a.data(), b.data(), 7, 8, 8));
    for (const Size2 z : {Size2{3, 2}, Size2{2, 32}, Size2{0, 4}, Size2{16, 1}})
        EXPECT_EQ(kvtStsBadSize, call(a.data(), b.data(), 16, z.w, z.h)) << z.w << "x" << z.h;
    EXPECT_EQ(std::count(b.begin(), b.end(), 7), 256) << "a failed call wrote";
    for (const int w : kWeightSizes)
        for (const int h : kWeightSizes) EXPECT_EQ(kvtStsOk, call(a.data(), b.data(), 16, w, h));
}

}  // namespace
