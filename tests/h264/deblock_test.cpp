// H.264 deblocking of one macroblock's edges: the fronts against a per-sample transcription of
// H.264 8.7.2 that derives alpha, beta and tc0 from indexA / indexB itself, for every index and
// every bS, and every tier against the oracle on random edges in areas fenced by inaccessible pages.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "checkasm.h"
#include "h264/deblock_dsp.h"
#include "h264_test_util.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::test;

namespace {

// H.264 Tables 8-16 (alpha', beta' by index) and 8-17 (tc0' by indexA and bS 1..3), from
// tables/h264_deblock_alpha_beta.tsv and h264_deblock_tc0.tsv.
constexpr uint8_t kAlpha[52] = {0,  0,  0,  0,   0,   0,   0,   0,   0,   0,   0,   0,   0,
                                0,  0,  0,  4,   4,   5,   6,   7,   8,   9,   10,  12,  13,
                                15, 17, 20, 22,  25,  28,  32,  36,  40,  45,  50,  56,  63,
                                71, 80, 90, 101, 113, 127, 144, 162, 182, 203, 226, 255, 255};
constexpr uint8_t kBeta[52] = {0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0, 2,  2,
                               2,  3,  3,  3,  3,  4,  4,  4,  6,  6,  7,  7,  8,  8,  9,  9, 10, 10,
                               11, 11, 12, 12, 13, 13, 14, 14, 15, 15, 16, 16, 17, 17, 18, 18};
constexpr uint8_t kTc0[52][3] = {
    {0, 0, 0},   {0, 0, 0},    {0, 0, 0},    {0, 0, 0},   {0, 0, 0},  {0, 0, 0},  {0, 0, 0},   {0, 0, 0},
    {0, 0, 0},   {0, 0, 0},    {0, 0, 0},    {0, 0, 0},   {0, 0, 0},  {0, 0, 0},  {0, 0, 0},   {0, 0, 0},
    {0, 0, 0},   {0, 0, 1},    {0, 0, 1},    {0, 0, 1},   {0, 0, 1},  {0, 1, 1},  {0, 1, 1},   {1, 1, 1},
    {1, 1, 1},   {1, 1, 1},    {1, 1, 1},    {1, 1, 2},   {1, 1, 2},  {1, 1, 2},  {1, 1, 2},   {1, 2, 3},
    {1, 2, 3},   {2, 2, 3},    {2, 2, 4},    {2, 3, 4},   {2, 3, 4},  {3, 3, 5},  {3, 4, 6},   {3, 4, 6},
    {4, 5, 7},   {4, 5, 8},    {4, 6, 9},    {5, 7, 10},  {6, 8, 11}, {6, 8, 13}, {7, 10, 14}, {8, 11, 16},
    {9, 12, 18}, {10, 13, 20}, {11, 15, 23}, {13, 17, 25}};

int clip3(int x, int y, int z) { return z < x ? x : z > y ? y : z; }

// H.264 8.7.2.3 and 8.7.2.4 for one set of samples p[0..3], q[0..3] across an edge (p[0] next to it).
void filter_samples(int* p, int* q, bool chroma_edge, int bs, int index_a, int index_b) {
    const int alpha = kAlpha[index_a], beta = kBeta[index_b];
    const bool filter = bs != 0 && std::abs(p[0] - q[0]) < alpha && std::abs(p[1] - p[0]) < beta &&
                        std::abs(q[1] - q[0]) < beta;
    if (!filter) return;
    const int ap = std::abs(p[2] - p[0]), aq = std::abs(q[2] - q[0]);
    int pf[3] = {p[0], p[1], p[2]}, qf[3] = {q[0], q[1], q[2]};
    if (bs < 4) {
        const int tc0 = kTc0[index_a][bs - 1];
        const int tc = chroma_edge ? tc0 + 1 : tc0 + (ap < beta) + (aq < beta);
        const int delta = clip3(-tc, tc, ((q[0] - p[0]) * 4 + (p[1] - q[1]) + 4) >> 3);
        pf[0] = clip3(0, 255, p[0] + delta);
        qf[0] = clip3(0, 255, q[0] - delta);
        if (!chroma_edge && ap < beta)
            pf[1] = p[1] + clip3(-tc0, tc0, (p[2] + ((p[0] + q[0] + 1) >> 1) - (p[1] << 1)) >> 1);
        if (!chroma_edge && aq < beta)
            qf[1] = q[1] + clip3(-tc0, tc0, (q[2] + ((p[0] + q[0] + 1) >> 1) - (q[1] << 1)) >> 1);
    } else {
        const bool small_gap = std::abs(p[0] - q[0]) < ((alpha >> 2) + 2);
        const auto strong = [&](const int* a, const int* b, int* out, int a_act) {
            if (!chroma_edge && a_act < beta && small_gap) {
                out[0] = (a[2] + 2 * a[1] + 2 * a[0] + 2 * b[0] + b[1] + 4) >> 3;
                out[1] = (a[2] + a[1] + a[0] + b[0] + 2) >> 2;
                out[2] = (2 * a[3] + 3 * a[2] + a[1] + a[0] + b[0] + 4) >> 3;
            } else {
                out[0] = (2 * a[1] + a[0] + b[1] + 2) >> 2;
            }
        };
        strong(p, q, pf, ap);
        strong(q, p, qf, aq);
    }
    std::copy(pf, pf + 3, p);
    std::copy(qf, qf + 3, q);
}

// Indices of a macroblock's edges: [0] its external edge, [1] its internal ones.
struct Indices {
    int a[2], b[2];
};

// The edges of one macroblock (luma: 16x16, chroma: 8x8 of one plane) at m, in the order of
// 8.7: edges left to right (or top to bottom), each line in turn. Chroma edges 0 and 4 take the
// bS of luma edges 0 and 2, one luma segment covering two chroma lines.
void anchor_mb(FencedArea& m, bool vertical, bool chroma, const Indices& ix, const uint8_t* bs) {
    const int size = chroma ? 8 : 16;
    for (int e = 0; e < 4; e += chroma ? 2 : 1) {
        const int pos = chroma ? e * 2 : e * 4, inner = e > 0;
        for (int k = 0; k < size; ++k) {
            const auto sample = [&](int i) -> uint8_t& {
                return vertical ? m.at(pos + i, k) : m.at(k, pos + i);
            };
            int p[4], q[4];
            const int n = chroma ? 2 : 4;  // chroma reads no further
            for (int i = 0; i < 4; ++i) p[i] = i < n ? sample(-i - 1) : 0, q[i] = i < n ? sample(i) : 0;
            filter_samples(p, q, chroma, bs[4 * e + k / (size / 4)], ix.a[inner], ix.b[inner]);
            for (int i = 0; i < n; ++i) sample(-i - 1) = uint8_t(p[i]), sample(i) = uint8_t(q[i]);
        }
    }
}

// The arguments of one call, from indices and strengths; entries the call must not read get
// random values.
struct Args {
    uint8_t alpha[2], beta[2], tc0[16], bs[16];
    Args(Rng& rng, const Indices& ix, const uint8_t* strengths, bool chroma) {
        for (int i = 0; i < 2; ++i) alpha[i] = kAlpha[ix.a[i]], beta[i] = kBeta[ix.b[i]];
        rng.fill(tc0, 16, 0, 255);
        for (int i = 0; i < 16; ++i) {
            const int edge = i / 4,
                      s = edge < (chroma ? 2 : 4) ? strengths[4 * (chroma ? 2 * edge : edge) + i % 4] : 0;
            if (s >= 1 && s <= 3) tc0[i] = kTc0[ix.a[edge > 0]][s - 1];
            bs[i] = chroma && edge % 2 ? uint8_t(rng.uniform(0, 255)) : strengths[i];
        }
    }
};

// The area a call reads: the macroblock and 4 (chroma: 2) samples before its edge 0.
struct MbArea : FencedArea {
    MbArea(Rng& rng, bool vertical, bool chroma)
        : FencedArea(cols(vertical, chroma), rows(vertical, chroma), random_step(rng, cols(vertical, chroma)),
                     rng.coin(), vertical ? (chroma ? 2 : 4) : 0, vertical ? 0 : (chroma ? 2 : 4)) {
        const int w = cols(vertical, chroma), h = rows(vertical, chroma),
                  ox = vertical ? w - size(chroma) : 0, oy = vertical ? 0 : h - size(chroma);
        // Lines across the edges as random walks: small steps keep many lines inside alpha and beta.
        for (int line = 0; line < size(chroma); ++line) {
            const int spread = std::vector<int>{1, 2, 3, 6, 12, 255}[size_t(rng.uniform(0, 5))];
            int v = rng.uniform(0, 3) == 0 ? (rng.coin() ? 2 : 253) : rng.uniform(0, 255);
            for (int i = 0; i < (vertical ? w : h); ++i) {
                v = std::clamp(v + rng.uniform(-spread, spread), 0, 255);
                (vertical ? at(i - ox, line) : at(line, i - oy)) = uint8_t(v);
            }
        }
    }
    static int size(bool chroma) { return chroma ? 8 : 16; }
    static int cols(bool vertical, bool chroma) { return size(chroma) + (vertical ? (chroma ? 2 : 4) : 0); }
    static int rows(bool vertical, bool chroma) { return size(chroma) + (vertical ? 0 : (chroma ? 2 : 4)); }
    // The samples a call may touch, row by row; restore() writes such a list back.
    template <class Fn>
    void each(bool vertical, bool chroma, Fn fn) {
        const int before = chroma ? 2 : 4;
        for (int y = vertical ? 0 : -before; y < size(chroma); ++y)
            for (int x = vertical ? -before : 0; x < size(chroma); ++x) fn(at(x, y));
    }
    std::vector<uint8_t> snapshot(bool vertical, bool chroma) {
        std::vector<uint8_t> s;
        each(vertical, chroma, [&](uint8_t& v) { s.push_back(v); });
        return s;
    }
    void restore(bool vertical, bool chroma, const std::vector<uint8_t>& s) {
        size_t i = 0;
        each(vertical, chroma, [&](uint8_t& v) { v = s[i++]; });
    }
};

struct Kind {
    const char* name;
    bool vertical, chroma;
    decltype(&kvtiFilterDeblockingLuma_VerEdge_H264_8u_C1IR) front;
    DeblockFn DeblockDsp::*slot;
};
const Kind kKinds[] = {
    {"luma ver", true, false, kvtiFilterDeblockingLuma_VerEdge_H264_8u_C1IR, &DeblockDsp::luma_ver},
    {"luma hor", false, false, kvtiFilterDeblockingLuma_HorEdge_H264_8u_C1IR, &DeblockDsp::luma_hor},
    {"chroma ver", true, true, kvtiFilterDeblockingChroma_VerEdge_H264_8u_C1IR, &DeblockDsp::chroma_ver},
    {"chroma hor", false, true, kvtiFilterDeblockingChroma_HorEdge_H264_8u_C1IR, &DeblockDsp::chroma_hor}};

// Strengths: bS drawn from 0..4 (4 mostly on the external edge, as an encoder sets it).
void random_strengths(Rng& rng, uint8_t* bs, int forced = -1) {
    for (int i = 0; i < 16; ++i)
        bs[i] = uint8_t(forced >= 0 ? forced : i < 4 && rng.coin() ? 4 : rng.uniform(0, 4));
}

TEST(H264Deblocking, MatchesTheStandardAtEveryIndexAndStrength) {
    for (const Kind& k : kKinds)
        for (int index = 0; index < 52; ++index)
            for (int bs = 0; bs <= 5; ++bs) {  // 5: mixed strengths
                Rng rng(test_seed() + uint64_t(index * 8 + bs));
                const Indices ix{{index, std::clamp(index + rng.uniform(-6, 6), 0, 51)},
                                 {std::clamp(index + rng.uniform(-6, 6), 0, 51), rng.uniform(0, 51)}};
                uint8_t strengths[16];
                random_strengths(rng, strengths, bs < 5 ? bs : -1);
                const Args a(rng, ix, strengths, k.chroma);
                MbArea got(rng, k.vertical, k.chroma);
                MbArea want(rng, k.vertical, k.chroma);  // the same samples at its own step
                want.restore(k.vertical, k.chroma, got.snapshot(k.vertical, k.chroma));
                anchor_mb(want, k.vertical, k.chroma, ix, strengths);
                ASSERT_EQ(kvtStsOk, k.front(got.origin(), got.step(), a.alpha, a.beta, a.tc0, a.bs));
                ASSERT_EQ(want.snapshot(k.vertical, k.chroma), got.snapshot(k.vertical, k.chroma))
                    << k.name << " index " << index << " bS " << bs;
            }
}

TEST(H264Deblocking, TiersMatchTheOracle) {
    compare_tiers<DeblockDsp>(
        "deblocking", init_deblock_dsp, ref::init_deblock, 300,
        [](Rng& rng, const DeblockDsp& d, Outputs& out) {
            for (const Kind& k : kKinds) {
                const Indices ix{{rng.uniform(0, 51), rng.uniform(0, 51)},
                                 {rng.uniform(0, 51), rng.uniform(0, 51)}};
                uint8_t strengths[16];
                random_strengths(rng, strengths, rng.uniform(0, 7) == 0 ? rng.uniform(0, 4) : -1);
                Args a(rng, ix, strengths, k.chroma);
                if (rng.uniform(0, 3) == 0)
                    rng.fill(a.tc0, 16, 0, 255), rng.fill(a.alpha, 2, 0, 255), rng.fill(a.beta, 2, 0, 255);
                MbArea area(rng, k.vertical, k.chroma);
                (d.*k.slot)(area.origin(), area.step(), a.alpha, a.beta, a.tc0, a.bs);
                out.items.emplace_back(k.name, area.snapshot(k.vertical, k.chroma));
            }
        });
}

TEST(H264Deblocking, NullPointers) {
    uint8_t pic[32 * 32], alpha[2] = {255, 255}, beta[2] = {18, 18}, tc0[16] = {}, bs[16];
    std::fill(bs, bs + 16, 4);
    for (int i = 0; i < 32 * 32; ++i) pic[i] = uint8_t(i * 7);
    for (const Kind& k : kKinds) {
        const uint8_t* args[4] = {alpha, beta, tc0, bs};
        for (int missing = 0; missing < 5; ++missing) {  // 0: the picture, 1..4: alpha, beta, tc0, bS
            const uint8_t* a[4];
            for (int i = 0; i < 4; ++i) a[i] = i + 1 == missing ? nullptr : args[i];
            EXPECT_EQ(kvtStsNullPointer,
                      k.front(missing ? pic + 4 * 32 + 4 : nullptr, 32, a[0], a[1], a[2], a[3]))
                << k.name << " pointer " << missing;
        }
        for (int i = 0; i < 32 * 32; ++i) ASSERT_EQ(uint8_t(i * 7), pic[i]) << "a failed call wrote";
    }
}

}  // namespace
