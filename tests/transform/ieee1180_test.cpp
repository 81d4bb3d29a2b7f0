// The IEEE Std 1180-1990 accuracy procedure for the inverse DCTs, run through the public functions
// (so on the tier this processor uses; the tier tests show the others give the same results).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "dct_anchor.h"
#include "kvtvc.h"

namespace {

using kvt::test::exact_dct;

// The procedure's generator: a 32-bit linear congruence, restarted for every test run.
class Ieee1180Random {
public:
    int next(int lo, int hi) {  // uniform in [-lo, hi]
        state_ = state_ * 1103515245u + 12345u;
        const double x = double(state_ & 0x7ffffffe) / double(0x7fffffff) * double(lo + hi + 1);
        return int(x) - lo;
    }

private:
    uint32_t state_ = 1;
};

struct Range {
    int lo, hi, sign;
};

struct Errors {
    int peak = 0;
    double sum[64] = {}, sum_sq[64] = {};
};

// 10,000 blocks of random pixels in [-lo, hi] (times sign): exact forward DCT, rounded and clipped
// to -2048..2047; the exact inverse rounded and clipped to -256..255 is the reference the tested
// inverse, clipped the same way, is measured against.
Errors measure(const Range& r) {
    Ieee1180Random rnd;
    Errors e;
    for (int b = 0; b < 10000; ++b) {
        double pixels[64], coef[64], exact[64];
        Kvt16s block[64];
        Kvt8u pixels_u8[64];
        for (double& p : pixels) p = r.sign * rnd.next(r.lo, r.hi);
        exact_dct(pixels, coef, false);
        for (int i = 0; i < 64; ++i) {
            coef[i] = std::clamp(std::floor(coef[i] + 0.5), -2048.0, 2047.0);
            block[i] = Kvt16s(coef[i]);
        }
        exact_dct(coef, exact, true);
        Kvt16s copy[64];
        std::copy(block, block + 64, copy);
        EXPECT_EQ(kvtiDCT8x8Inv_16s8u_C1R(copy, pixels_u8, 8), kvtStsOk);
        EXPECT_EQ(kvtiDCT8x8Inv_16s_C1I(block), kvtStsOk);
        for (int i = 0; i < 64; ++i) {
            const int want = int(std::clamp(std::floor(exact[i] + 0.5), -256.0, 255.0));
            const int got = std::clamp(int(block[i]), -256, 255), err = got - want;
            if (pixels_u8[i] != std::clamp(int(block[i]), 0, 255))
                ADD_FAILURE() << "16s8u differs, block " << b;
            e.peak = std::max(e.peak, std::abs(err));
            e.sum[i] += err;
            e.sum_sq[i] += err * err;
        }
    }
    return e;
}

TEST(Ieee1180, InverseDctMeetsEveryBound) {
    for (const Range& r : {Range{256, 255, 1}, Range{256, 255, -1}, Range{5, 5, 1}, Range{5, 5, -1},
                           Range{300, 300, 1}, Range{300, 300, -1}}) {
        SCOPED_TRACE("L=" + std::to_string(r.lo) + " H=" + std::to_string(r.hi) + " sign " +
                     std::to_string(r.sign));
        const Errors e = measure(r);
        double all = 0, all_sq = 0, worst_mean = 0, worst_mse = 0;
        for (int i = 0; i < 64; ++i) {
            worst_mean = std::max(worst_mean, std::fabs(e.sum[i]) / 10000);
            worst_mse = std::max(worst_mse, e.sum_sq[i] / 10000);
            all += e.sum[i];
            all_sq += e.sum_sq[i];
        }
        std::printf(
            "[ ieee1180 ] L=%d H=%d sign %+d: peak %d, mse %.4f (worst position %.4f), mean %.5f (worst "
            "%.4f)\n",
            r.lo, r.hi, r.sign, e.peak, all_sq / 640000, worst_mse, std::fabs(all) / 640000, worst_mean);
        EXPECT_LE(e.peak, 1);
        EXPECT_LE(worst_mse, 0.06);
        EXPECT_LE(all_sq / 640000, 0.02);
        EXPECT_LE(worst_mean, 0.015);
        EXPECT_LE(std::fabs(all) / 640000, 0.0015);
    }
}

TEST(Ieee1180, ZeroInGivesZeroOut) {
    Kvt16s block[64] = {}, reduced4[64] = {}, reduced2[64] = {};
    Kvt8u pixels[64];
    std::fill(pixels, pixels + 64, Kvt8u(7));
    ASSERT_EQ(kvtiDCT8x8Inv_16s_C1I(block), kvtStsOk);
    ASSERT_EQ(kvtiDCT8x8Inv_4x4_16s_C1I(reduced4), kvtStsOk);
    ASSERT_EQ(kvtiDCT8x8Inv_2x2_16s_C1I(reduced2), kvtStsOk);
    ASSERT_EQ(kvtiDCT8x8Inv_16s8u_C1R(block, pixels, 8), kvtStsOk);
    for (int i = 0; i < 64; ++i)
        ASSERT_TRUE(block[i] == 0 && reduced4[i] == 0 && reduced2[i] == 0 && pixels[i] == 0) << i;
}

}  // namespace
