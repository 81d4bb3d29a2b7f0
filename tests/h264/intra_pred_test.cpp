// H.264 intra prediction: anchors written from the standard's figures for every mode, the 4x4
// substitution rules and the strict availability of the larger blocks through the public
// functions, argument checks, and every tier against the oracle.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>

#include "checkasm.h"
#include "h264/intra_pred_dsp.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::test;

namespace {

using Fn = decltype(&kvtiPredictIntra_4x4_H264_8u_C1IR);

int A2(int a, int b) { return (a + b + 1) >> 1; }
int A3(int a, int b, int c) { return (a + 2 * b + c + 2) >> 2; }

// The neighbours a block sees, U[0..2N-1] (only 4x4 uses the second half), L[0..N-1], M.
struct Nb {
    int U[32], L[16], M;
};

// An N x N block at (1, 1) of a random plane, N + 4 columns wide so that the 4x4 upper-right
// samples exist; the kernels also get negative steps (the fronts reject them). Patterns: random, 0/255 at
// random, steep ramps (the plane modes saturate), flat.
struct Frame {
    int n;
    Plane<uint8_t> plane;
    Frame(Rng& rng, int size, bool negative_step = false)
        : n(size),
          plane(size + 5, size + 1, (negative_step && rng.coin() ? -1 : 1) * (size + 5 + rng.uniform(0, 20)),
                size_t(rng.uniform(0, 15))) {
        const int pattern = rng.uniform(0, 3), slope = rng.uniform(-40, 40), base = rng.uniform(0, 255);
        for (int y = 0; y <= n; ++y)
            for (int x = 0; x < n + 5; ++x) {
                const int ramp = base + slope * (x - y), v[4] = {rng.uniform(0, 255), rng.coin() * 255,
                                                                 ramp < 0     ? 0
                                                                 : ramp > 255 ? 255
                                                                              : ramp,
                                                                 base};
                plane.row(y)[x] = uint8_t(v[pattern]);
            }
    }
    uint8_t* blk() { return plane.row(1) + 1; }
    int step() const { return plane.step(); }
    Nb neighbours() {
        Nb e{};
        for (int i = 0; i < n + 4 && i < 32; ++i) e.U[i] = plane.row(0)[1 + i];
        for (int i = 0; i < n; ++i) e.L[i] = plane.row(1 + i)[0];
        e.M = plane.row(0)[0];
        return e;
    }
    std::vector<uint8_t> block() {
        std::vector<uint8_t> b;
        for (int y = 0; y < n; ++y)
            b.insert(b.end(), blk() + intptr_t(y) * step(), blk() + intptr_t(y) * step() + n);
        return b;
    }
};

using Block4 = std::array<int, 16>;

// Vertical-right, row by row as the standard's figure reads (H.264 8.3.1.2.6).
Block4 vertical_right(const int* U, const int* L, int M) {
    const int r0[4] = {A2(M, U[0]), A2(U[0], U[1]), A2(U[1], U[2]), A2(U[2], U[3])};
    const int r1[4] = {A3(L[0], M, U[0]), A3(M, U[0], U[1]), A3(U[0], U[1], U[2]), A3(U[1], U[2], U[3])};
    return {r0[0],
            r0[1],
            r0[2],
            r0[3],
            r1[0],
            r1[1],
            r1[2],
            r1[3],
            A3(M, L[0], L[1]),
            r0[0],
            r0[1],
            r0[2],
            A3(L[0], L[1], L[2]),
            r1[0],
            r1[1],
            r1[2]};
}

// 4x4 luma from neighbours already substituted: each directional mode as the values along its
// direction; horizontal-down as the transpose of vertical-right with the edges swapped.
Block4 anchor4x4(int mode, const Nb& e, unsigned avail) {
    const int *U = e.U, *L = e.L, M = e.M;
    const int edge[9] = {L[3], L[2], L[1], L[0], M, U[0], U[1], U[2], U[3]};
    Block4 p{};
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) {
            int& v = p[4 * y + x];
            const int vl = x + (y >> 1), hu = x + 2 * y;
            const int hu_val[10] = {A2(L[0], L[1]), A3(L[0], L[1], L[2]),
                                    A2(L[1], L[2]), A3(L[1], L[2], L[3]),
                                    A2(L[2], L[3]), A3(L[2], L[3], L[3]),
                                    L[3],           L[3],
                                    L[3],           L[3]};
            switch (mode) {
                case 0:
                    v = U[x];
                    break;
                case 1:
                    v = L[y];
                    break;
                case 3:
                    v = x + y == 6 ? A3(U[6], U[7], U[7]) : A3(U[x + y], U[x + y + 1], U[x + y + 2]);
                    break;
                case 4:
                    v = A3(edge[3 + x - y], edge[4 + x - y], edge[5 + x - y]);
                    break;
                case 5:
                    v = vertical_right(U, L, M)[4 * y + x];
                    break;
                case 6:
                    v = vertical_right(L, U, M)[4 * x + y];
                    break;
                case 7:
                    v = y & 1 ? A3(U[vl], U[vl + 1], U[vl + 2]) : A2(U[vl], U[vl + 1]);
                    break;
                case 8:
                    v = hu_val[hu];
                    break;
            }
        }
    if (mode == 2) {
        int su = 0, sl = 0;
        for (int i = 0; i < 4; ++i) su += U[i], sl += L[i];
        const bool up = avail & 1, left = avail & 2;
        p.fill(up && left ? (su + sl + 4) >> 3 : up ? (su + 2) >> 2 : left ? (sl + 2) >> 2 : 128);
    }
    return p;
}

// Floor division, so that the anchors do not lean on >> of negative values.
int floor_div(int a, int b) { return int(std::floor(double(a) / b)); }

// 16x16 modes (vertical, horizontal, DC, plane) and chroma modes (DC, horizontal, vertical, plane).
std::vector<uint8_t> anchor_block(int n, int mode, const Nb& e, unsigned avail) {
    const bool chroma = n == 8;
    const int kind = chroma ? (mode == 0 ? 2 : mode == 2 ? 0 : mode) : mode;  // in 16x16 numbering
    const bool up = avail & 1, left = avail & 2;
    std::vector<uint8_t> b(size_t(n * n));
    int H = 0, V = 0;
    const auto U = [&](int i) { return i < 0 ? e.M : e.U[i]; };
    const auto L = [&](int i) { return i < 0 ? e.M : e.L[i]; };
    for (int i = 1; i <= n / 2; ++i)
        H += i * (U(n / 2 - 1 + i) - U(n / 2 - 1 - i)), V += i * (L(n / 2 - 1 + i) - L(n / 2 - 1 - i));
    // The chroma plane as the standard writes it for 4:2:0: (34 * H + 32) >> 6.
    const int b_ = chroma ? floor_div(34 * H + 32, 64) : floor_div(5 * H + 32, 64),
              c_ = chroma ? floor_div(34 * V + 32, 64) : floor_div(5 * V + 32, 64);
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            int v = 0;
            if (kind == 0) v = U(x);
            if (kind == 1) v = L(y);
            if (kind == 3)
                v = std::clamp(
                    floor_div(16 * (U(n - 1) + L(n - 1)) + b_ * (x - n / 2 + 1) + c_ * (y - n / 2 + 1) + 16,
                              32),
                    0, 255);
            if (kind == 2) {
                // Chroma: per 4x4 block at (xO, yO) as H.264 8.3.4.1-3 orders the sources;
                // 16x16: the whole block at (0, 0).
                const int xo = chroma ? x & 4 : 0, yo = chroma ? y & 4 : 0, m = chroma ? 4 : 16,
                          sh = chroma ? 2 : 4;
                int su = 0, sl = 0;
                for (int i = 0; i < m; ++i) su += U(xo + i), sl += L(yo + i);
                const int both = (su + sl + m) >> (sh + 1), bu = (su + m / 2) >> sh, bl = (sl + m / 2) >> sh;
                if (xo == yo)
                    v = up && left ? both : up ? bu : left ? bl : 128;
                else if (yo == 0)
                    v = up ? bu : left ? bl : 128;
                else
                    v = left ? bl : up ? bu : 128;
            }
            b[size_t(y * n + x)] = uint8_t(v);
        }
    return b;
}

// The four tested bits as a 4-bit index, with random untested bits around them.
unsigned avail_of(int combo, Rng& rng) {
    const unsigned bits =
        (combo & 1 ? 1u : 0u) | (combo & 2 ? 2u : 0u) | (combo & 4 ? 32u : 0u) | (combo & 8 ? 64u : 0u);
    return bits | (rng.next() & ~0x63u);
}

}  // namespace

// Every 4x4 mode with every combination of the four bits: the substituted neighbours of the
// rules (128 for a missing upper row, left column or corner; U[3] repeated for a missing upper
// right, U[4..7] still read when only the upper row is missing), warning 11 whenever a mode that
// uses a missing upper row, left column or corner ran, never for DC.
TEST(H264IntraPred, FourByFourFollowsSubstitutionRules) {
    constexpr unsigned kUses[9] = {1, 2, 0, 1, 35, 35, 35, 1, 2};
    Rng rng(test_seed());
    for (int trial = 0; trial < 40; ++trial)
        for (int mode = 0; mode < 9; ++mode)
            for (int combo = 0; combo < 16; ++combo) {
                Frame f(rng, 4);
                const unsigned avail = avail_of(combo, rng);
                Nb e = f.neighbours();
                for (int i = 0; i < 4; ++i) {
                    if (!(avail & 1)) e.U[i] = 128;
                    if (!(avail & 2)) e.L[i] = 128;
                }
                if (!(avail & 32)) e.M = 128;
                if (!(avail & 64))
                    for (int i = 4; i < 8; ++i) e.U[i] = e.U[3];
                const Block4 want = anchor4x4(mode, e, avail);
                const KvtStatus st = kvtiPredictIntra_4x4_H264_8u_C1IR(f.blk(), f.step(), mode, avail);
                EXPECT_EQ(st, kUses[mode] & ~avail ? 11 : 0) << "mode " << mode << " avail " << avail;
                const std::vector<uint8_t> got = f.block();
                for (int i = 0; i < 16; ++i)
                    ASSERT_EQ(got[size_t(i)], want[size_t(i)])
                        << "mode " << mode << " avail " << avail << " at " << i;
            }
}

// The larger blocks, every mode and every availability: the anchor where the mode's neighbours
// are there, -117 and an untouched block where they are not.
TEST(H264IntraPred, LargeBlocksAreStrict) {
    struct Case {
        int n;
        Fn fn;
        unsigned needs[4];
    };
    const Case cases[] = {{16, kvtiPredictIntra_16x16_H264_8u_C1IR, {1, 2, 0, 35}},
                          {8, kvtiPredictIntraChroma8x8_H264_8u_C1IR, {0, 2, 1, 35}}};
    Rng rng(test_seed() + 1);
    for (const Case& c : cases)
        for (int trial = 0; trial < 30; ++trial)
            for (int mode = 0; mode < 4; ++mode)
                for (int combo = 0; combo < 16; ++combo) {
                    Frame f(rng, c.n);
                    const unsigned avail = avail_of(combo, rng);
                    const std::vector<uint8_t> before = f.block();
                    const bool ok = (c.needs[mode] & ~avail) == 0;
                    ASSERT_EQ(c.fn(f.blk(), f.step(), mode, avail), ok ? kvtStsOk : kvtStsNeighbourMissing)
                        << c.n << " mode " << mode << " avail " << avail;
                    EXPECT_EQ(f.block(), ok ? anchor_block(c.n, mode, f.neighbours(), avail) : before)
                        << c.n << " mode " << mode << " avail " << avail;
                }
}

TEST(H264IntraPred, EdgeCases) {
    alignas(16) uint8_t buf[17 * 24];
    uint8_t* blk = buf + 24 + 1;
    // Chroma DC with the left column only: right quarters from the left sums of their rows.
    std::fill(buf, buf + sizeof buf, 0);
    for (int y = 0; y < 8; ++y) blk[y * 24 - 1] = uint8_t(y < 4 ? 40 : 200);
    ASSERT_EQ(kvtiPredictIntraChroma8x8_H264_8u_C1IR(blk, 24, 0, 2), kvtStsOk);
    EXPECT_EQ(blk[7], 40);
    EXPECT_EQ(blk[7 * 24 + 7], 200);
    // Plane saturation: edges falling from 255 to 0 give b = c = -717, so the predicted values run
    // from 314 down to below 0 and are clamped, not wrapped.
    for (int i = -1; i < 16; ++i) blk[i - 24] = blk[i * 24 - 1] = uint8_t(i < 8 ? 255 : 0);
    ASSERT_EQ(kvtiPredictIntra_16x16_H264_8u_C1IR(blk, 24, 3, 35), kvtStsOk);
    EXPECT_EQ(blk[0], 255);
    EXPECT_EQ(blk[15 * 24 + 15], 0);
    // 4x4 with nothing available: horizontal gives 128 and the warning, DC 128 and no warning.
    EXPECT_EQ(kvtiPredictIntra_4x4_H264_8u_C1IR(blk, 24, 1, 0), 11);
    EXPECT_EQ(blk[3 * 24 + 3], 128);
    blk[0] = 0;
    EXPECT_EQ(kvtiPredictIntra_4x4_H264_8u_C1IR(blk, 24, 2, 0), kvtStsOk);
    EXPECT_EQ(blk[0], 128);
}

// Checks in order (pointer, step, mode, availability); nothing written on failure.
TEST(H264IntraPred, ArgumentChecks) {
    alignas(16) uint8_t buf[17 * 32] = {};
    uint8_t* blk = buf + 32 + 1;
    struct Case {
        Fn fn;
        uint8_t* p;
        int step, mode;
        unsigned avail;
        KvtStatus want;
    };
    const Case cases[] = {
        {kvtiPredictIntra_4x4_H264_8u_C1IR, nullptr, 2, 9, 0, kvtStsNullPointer},
        {kvtiPredictIntra_4x4_H264_8u_C1IR, blk, 3, 9, 0, kvtStsBadStep},
        {kvtiPredictIntra_4x4_H264_8u_C1IR, blk, 4, -1, 0, kvtStsOutOfRange},
        {kvtiPredictIntra_4x4_H264_8u_C1IR, blk, 4, 9, 0, kvtStsOutOfRange},
        {kvtiPredictIntra_16x16_H264_8u_C1IR, nullptr, 15, 4, 0, kvtStsNullPointer},
        {kvtiPredictIntra_16x16_H264_8u_C1IR, blk, 15, 4, 0, kvtStsStepBelowMB},
        {kvtiPredictIntra_16x16_H264_8u_C1IR, blk, 16, 4, 0, kvtStsOutOfRange},
        {kvtiPredictIntra_16x16_H264_8u_C1IR, blk, 16, -1, 0, kvtStsOutOfRange},
        {kvtiPredictIntra_16x16_H264_8u_C1IR, blk, 32, 3, 1 | 2, kvtStsNeighbourMissing},
        {kvtiPredictIntraChroma8x8_H264_8u_C1IR, blk, 7, 4, 0, kvtStsStepBelowMB},
        {kvtiPredictIntraChroma8x8_H264_8u_C1IR, blk, 8, 4, 0, kvtStsOutOfRange},
        {kvtiPredictIntraChroma8x8_H264_8u_C1IR, blk, 8, 2, 2 | 32 | 64, kvtStsNeighbourMissing},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.fn(c.p, c.step, c.mode, c.avail), c.want) << "step " << c.step << " mode " << c.mode;
        EXPECT_TRUE(std::all_of(buf, buf + sizeof buf, [](uint8_t v) { return v == 0; }));
    }
}

// Every tier against the oracle: every slot, every availability (the larger blocks' slots of
// masks without a needed neighbour report -117 and write nothing), every reachable slot filled.
TEST(H264IntraPred, EveryTierMatchesOracle) {
    compare_tiers<IntraPredDsp>(
        "intra prediction", init_intra_pred_dsp, ref::init_intra_pred, 60,
        [&](Rng& rng, const IntraPredDsp& d, Outputs& out) {
            const auto run = [&](const char* what, int n, int mode, const IntraPredFn* slots, unsigned bits) {
                for (int combo = 0; combo < 16; ++combo) {
                    const unsigned avail = avail_of(combo, rng) & bits;
                    ASSERT_NE(slots[avail], nullptr) << what << " mode " << mode << " avail " << avail;
                    Frame f(rng, n, true);
                    const std::string name = std::string(what) + " mode " + std::to_string(mode) + " avail " +
                                             std::to_string(avail);
                    out.add(name, slots[avail](f.blk(), f.step()));
                    out.add_buffer(name, f.plane);
                }
            };
            for (int m = 0; m < 9; ++m) run("4x4", 4, m, d.pred4x4[m], kNb4x4);
            for (int m = 0; m < 4; ++m) run("16x16", 16, m, d.pred16x16[m], kNbBlock);
            for (int m = 0; m < 4; ++m) run("chroma", 8, m, d.chroma8x8[m], kNbBlock);
        });
}
