// 8x8 DCT family: every tier against the oracle, the reduced forms against the full one, the
// forward transforms against the exact DCT, and the fronts' argument checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "checkasm.h"
#include "dct_anchor.h"
#include "kvtvc.h"
#include "transform/dct_dsp.h"

namespace kvt::test {
namespace {

// Coefficient blocks of several kinds: any 16-bit values, the 12-bit range, decoder-like blocks
// (few nonzero values, low frequencies first) and the extremes.
void random_block(Rng& rng, int16_t* b) {
    switch (rng.uniform(0, 3)) {
        case 0:
            rng.fill(b, 64, -32768, 32767);
            break;
        case 1:
            rng.fill(b, 64, -2048, 2047);
            break;
        case 2: {
            std::fill(b, b + 64, int16_t(0));
            const int count = rng.uniform(1, 12);
            for (int i = 0; i < count; ++i)
                b[rng.uniform(0, rng.coin() ? 9 : 63)] = int16_t(rng.uniform(-600, 600));
            break;
        }
        default:
            for (int i = 0; i < 64; ++i)
                b[i] = int16_t(rng.coin() ? (rng.coin() ? 32767 : -32768) : rng.uniform(-1, 1));
    }
}

TEST(DctTiers, EveryKernelMatchesOracle) {
    compare_tiers<DctDsp>("dct", init_dct_dsp, ref::init_dct, 3000,
                          [](Rng& rng, const DctDsp& d, Outputs& out) {
                              int16_t coef[64];
                              random_block(rng, coef);
                              for (int form = 0; form < 3; ++form) {
                                  Guarded<int16_t> b(64, size_t(2 * rng.uniform(0, 7)));
                                  std::copy(coef, coef + 64, b.data());
                                  d.inv[form](b.data());
                                  out.add_buffer("inv" + std::to_string(form), b);
                              }
                              // Steps below 8 overlap rows: the later row wins on every tier.
                              const int step = rng.coin() ? rng.uniform(1, 8) : rng.uniform(8, 40);
                              Plane<uint8_t> pixels(8, 8, step, size_t(rng.uniform(0, 15)));
                              d.inv_to_pixels(coef, pixels.data(), step);
                              out.add_buffer("inv_to_pixels", pixels);

                              Guarded<int16_t> f(64, size_t(2 * rng.uniform(0, 7)));
                              const int range = rng.coin() ? 32768 : rng.uniform(1, 724);
                              rng.fill(f.data(), 64, -range, range - 1);
                              d.fwd(f.data());
                              out.add_buffer("fwd", f);
                              for (int y = 0; y < 8; ++y) rng.fill(pixels.row(y), 8, 0, 255);
                              Guarded<int16_t> g(64, size_t(2 * rng.uniform(0, 7)));
                              d.fwd_from_pixels(pixels.data(), step, g.data());
                              out.add_buffer("fwd_from_pixels", g);
                          });
}

// Random coefficients in the 12-bit range with everything outside the top-left n x n zero.
void sparse_block(Rng& rng, int n, int16_t* b) {
    std::fill(b, b + 64, int16_t(0));
    const int lim = rng.coin() ? 2047 : 60;
    for (int r = 0; r < n; ++r)
        for (int c = 0; c < n; ++c) b[8 * r + c] = int16_t(rng.uniform(-lim - 1, lim));
}

TEST(DctInverse, ReducedFormsGiveTheFullFormsResult) {
    using Fn = KvtStatus (*)(Kvt16s*);
    const struct {
        int n;
        Fn fn;
    } forms[] = {{4, kvtiDCT8x8Inv_4x4_16s_C1I}, {2, kvtiDCT8x8Inv_2x2_16s_C1I}};
    for (const auto& form : forms)
        for (int t = 0; t < 2000; ++t) {
            Rng rng(test_seed() + uint64_t(t));
            int16_t full[64], reduced[64];
            sparse_block(rng, form.n, full);
            std::copy(full, full + 64, reduced);
            // Coefficients outside the reduced block are not read.
            for (int i = 0; i < 64; ++i)
                if (i / 8 >= form.n || i % 8 >= form.n) reduced[i] = int16_t(rng.next());
            ASSERT_EQ(kvtiDCT8x8Inv_16s_C1I(full), kvtStsOk);
            ASSERT_EQ(form.fn(reduced), kvtStsOk);
            ASSERT_TRUE(std::equal(full, full + 64, reduced)) << form.n << "x" << form.n << ", trial " << t;
        }
}

// |forward - round(exact)| <= 1 for pixels, residuals up to the documented 723 and sharp patterns;
// DC is sum / 8 with no level shift.
TEST(DctForward, WithinOneOfTheExactDct) {
    int worst = 0, exact = 0, total = 0;
    for (int t = 0; t < 4000; ++t) {
        Rng rng(test_seed() + uint64_t(t));
        int16_t x[64];
        const int kind = t % 4;
        for (int i = 0; i < 64; ++i) {
            if (kind == 0) x[i] = int16_t(rng.uniform(0, 255));
            if (kind == 1) x[i] = int16_t(rng.uniform(-723, 723));
            if (kind == 2) x[i] = int16_t(((i / 8 + i % 8) & 1 ? 723 : -723) * (t & 4 ? 1 : -1));
            if (kind == 3) x[i] = int16_t(i % 8 < (t / 4) % 9 ? 255 : 0);
        }
        double in[64], want[64];
        std::copy(x, x + 64, in);
        exact_dct(in, want, false);
        int16_t got[64];
        std::copy(x, x + 64, got);
        ASSERT_EQ(kvtiDCT8x8Fwd_16s_C1I(got), kvtStsOk);
        if (kind != 1 && kind != 2) {
            uint8_t pixels[64];
            std::copy(x, x + 64, pixels);
            int16_t from_pixels[64];
            ASSERT_EQ(kvtiDCT8x8Fwd_8u16s_C1R(pixels, 8, from_pixels), kvtStsOk);
            ASSERT_TRUE(std::equal(got, got + 64, from_pixels)) << "trial " << t;
        }
        for (int i = 0; i < 64; ++i) {
            const int err = std::abs(got[i] - int(std::floor(want[i] + 0.5)));
            ASSERT_LE(err, 1) << "trial " << t << ", coefficient " << i;
            worst = std::max(worst, err);
            exact += err == 0;
            ++total;
        }
    }
    std::printf("[ forward  ] %.2f%% of coefficients equal the rounded exact DCT\n", 100.0 * exact / total);
    Kvt8u white[64];
    std::fill(white, white + 64, Kvt8u(255));
    Kvt16s dc[64];
    ASSERT_EQ(kvtiDCT8x8Fwd_8u16s_C1R(white, 8, dc), kvtStsOk);
    EXPECT_EQ(dc[0], 2040);
    EXPECT_EQ(std::count(dc + 1, dc + 64, 0), 63);
}

// The basis constants are round(2^13 cos(j pi / 16)).
TEST(DctBasis, ConstantsFollowTheirFormula) {
    for (int j = 0; j < 8; ++j)
        EXPECT_EQ(dct::kCos[j], std::lround(8192 * std::cos(j * 3.14159265358979323846 / 16)));
}

TEST(DctFronts, ChecksInOrderAndWritesNothingOnFailure) {
    Kvt16s coef[64];
    Kvt8u pixels[8 * 8];
    std::fill(coef, coef + 64, Kvt16s(5));
    std::fill(pixels, pixels + 64, Kvt8u(9));
    const auto untouched = [&] {
        return std::count(coef, coef + 64, 5) == 64 && std::count(pixels, pixels + 64, 9) == 64;
    };
    EXPECT_EQ(kvtiDCT8x8Inv_16s_C1I(nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiDCT8x8Inv_4x4_16s_C1I(nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiDCT8x8Inv_2x2_16s_C1I(nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiDCT8x8Fwd_16s_C1I(nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiDCT8x8Inv_16s8u_C1R(nullptr, pixels, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtiDCT8x8Inv_16s8u_C1R(coef, nullptr, 8), kvtStsNullPointer);
    EXPECT_EQ(kvtiDCT8x8Inv_16s8u_C1R(coef, pixels, 0), kvtStsBadStep);
    EXPECT_EQ(kvtiDCT8x8Inv_16s8u_C1R(coef, pixels, -8), kvtStsBadStep);
    EXPECT_EQ(kvtiDCTInv_8x8_16s8u(nullptr, pixels, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtiDCTInv_8x8_16s8u(coef, nullptr, 8), kvtStsNullPointer);
    EXPECT_EQ(kvtiDCTInv_8x8_16s8u(coef, pixels, 7), kvtStsStepBelowBlock);
    EXPECT_EQ(kvtiDCT8x8Fwd_8u16s_C1R(nullptr, 8, coef), kvtStsNullPointer);
    EXPECT_EQ(kvtiDCT8x8Fwd_8u16s_C1R(pixels, 0, nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiDCT8x8Fwd_8u16s_C1R(pixels, 0, coef), kvtStsBadStep);
    EXPECT_TRUE(untouched());
    // The smallest accepted steps.
    EXPECT_EQ(kvtiDCT8x8Inv_16s8u_C1R(coef, pixels, 1), kvtStsOk);
    EXPECT_EQ(kvtiDCTInv_8x8_16s8u(coef, pixels, 8), kvtStsOk);
    EXPECT_EQ(kvtiDCT8x8Fwd_8u16s_C1R(pixels, 1, coef), kvtStsOk);
}

// Both pixel forms of the inverse are the 16-bit inverse saturated to 0..255.
TEST(DctInverse, PixelFormsSaturateTheInPlaceResult) {
    for (int t = 0; t < 500; ++t) {
        Rng rng(test_seed() + uint64_t(t));
        int16_t coef[64], full[64];
        random_block(rng, coef);
        std::copy(coef, coef + 64, full);
        ASSERT_EQ(kvtiDCT8x8Inv_16s_C1I(full), kvtStsOk);
        Plane<uint8_t> a(8, 8, 13, 3), b(8, 8, 8);
        ASSERT_EQ(kvtiDCT8x8Inv_16s8u_C1R(coef, a.data(), a.step()), kvtStsOk);
        ASSERT_EQ(kvtiDCTInv_8x8_16s8u(coef, b.data(), b.step()), kvtStsOk);
        for (int i = 0; i < 64; ++i) {
            const int want = std::clamp(int(full[i]), 0, 255);
            ASSERT_TRUE(a.row(i / 8)[i % 8] == want && b.row(i / 8)[i % 8] == want)
                << "trial " << t << " at " << i;
        }
        EXPECT_TRUE(a.guards_intact() && b.guards_intact());
    }
}

}  // namespace
}  // namespace kvt::test
