// Vector helpers and the region fill: results, statuses, and reference against SIMD.
#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <cstring>
#include <vector>

#include "checkasm.h"
#include "core/vector_kernels.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::test;

namespace {

// Independent model of x * v / 2^s: exact double division, then rint (ties to even).
int16_t mulc_anchor(int16_t x, int16_t v, int s) {
    const double p = double(x) * double(v);
    auto sat = [](double d) { return int16_t(d < -32768 ? -32768 : (d > 32767 ? 32767 : d)); };
    if (v == 0 || s > 30) return 0;
    if (s >= 0) return sat(std::nearbyint(std::ldexp(p, -s)));
    if (s >= -15) return sat(double(sat(p)) * std::ldexp(1.0, -s));
    return x == 0 ? 0 : sat(p * 1e10);
}

}  // namespace

TEST(VectorStatus, NullBeforeSizeAndNothingWritten) {
    int16_t w[4] = {1, 2, 3, 4};
    uint8_t b[4] = {1, 2, 3, 4};
    EXPECT_EQ(kvtsSet_8u(0, nullptr, -1), kvtStsNullPointer);
    EXPECT_EQ(kvtsSet_16s(0, nullptr, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtsZero_16s(nullptr, -5), kvtStsNullPointer);
    EXPECT_EQ(kvtsCopy_8u(nullptr, b, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtsCopy_8u(b, nullptr, 4), kvtStsNullPointer);
    EXPECT_EQ(kvtsMulC_16s_ISfs(2, nullptr, 0, 0), kvtStsNullPointer);
    EXPECT_EQ(kvtsThreshold_16s_I(nullptr, 0, 0, 4), kvtStsNullPointer);
    EXPECT_EQ(kvtiCountZeros8x8_16s_C1(w, nullptr), kvtStsNullPointer);
    for (int len : {0, -1, -65536}) {
        EXPECT_EQ(kvtsSet_8u(9, b, len), kvtStsBadSize);
        EXPECT_EQ(kvtsSet_16s(9, w, len), kvtStsBadSize);
        EXPECT_EQ(kvtsZero_16s(w, len), kvtStsBadSize);
        EXPECT_EQ(kvtsCopy_8u(b + 2, b, len), kvtStsBadSize);
        EXPECT_EQ(kvtsMulC_16s_ISfs(0, w, len, 0), kvtStsBadSize);
        EXPECT_EQ(kvtsThreshold_16s_I(w, len, 0, 4), kvtStsBadSize);
    }
    EXPECT_EQ(std::vector<int16_t>(w, w + 4), (std::vector<int16_t>{1, 2, 3, 4}));
    EXPECT_EQ(std::vector<uint8_t>(b, b + 4), (std::vector<uint8_t>{1, 2, 3, 4}));
}

TEST(VectorStatus, RegionChecksPointerThenSizeThenStep) {
    uint8_t b[16] = {};
    EXPECT_EQ(kvtiSet_8u_C1R(1, nullptr, 0, {0, 0}), kvtStsNullPointer);
    EXPECT_EQ(kvtiSet_8u_C1R(1, b, 0, {0, 4}), kvtStsBadSize);
    EXPECT_EQ(kvtiSet_8u_C1R(1, b, 0, {4, 0}), kvtStsBadSize);
    EXPECT_EQ(kvtiSet_8u_C1R(1, b, 0, {4, 4}), kvtStsBadStep);
    EXPECT_EQ(kvtiSet_8u_C1R(1, b, -4, {4, 4}), kvtStsBadStep);
    for (uint8_t v : b) EXPECT_EQ(v, 0);
}

struct MulCase {
    int16_t x, v;
    int s;
    int16_t want;
};

TEST(MulC, DocumentedRoundingAndSaturation) {
    const MulCase cases[] = {
        {3, 1, 1, 2},        {1, 1, 1, 0},         {-3, 1, 1, -2},       {-1, 1, 1, 0},
        {5, 1, 1, 2},        {7, 1, 1, 4},         {-5, 1, 1, -2},       {6, 1, 2, 2},
        {32767, 32767, 0, 32767}, {-32768, 32767, 0, -32768}, {-5, 7, -16, -32768}, {5, 7, -16, 32767},
        {0, 7, -16, 0},      {-5, -7, -20, 32767}, {3, 3, -2, 36},       {20000, 1, -1, 32767},
        {-20000, 2, -1, -32768}, {32767, 32767, 30, 1}, {32767, 32767, 31, 0}, {123, 0, -40, 0},
        {-32768, -32768, 30, 1}, {-32768, -32768, 29, 2}, {-32768, 32767, 16, -16384},
    };
    for (const MulCase& c : cases) {
        int16_t x = c.x;
        ASSERT_EQ(kvtsMulC_16s_ISfs(c.v, &x, 1, c.s), kvtStsOk);
        EXPECT_EQ(x, c.want) << c.x << " * " << c.v << " >> " << c.s;
        EXPECT_EQ(mulc_anchor(c.x, c.v, c.s), c.want) << "anchor " << c.x << " * " << c.v << " >> " << c.s;
    }
}

TEST(MulC, EveryRegimeMatchesAnchorOnRandomVectors) {
    Rng rng(7);
    std::vector<int16_t> data(37);
    for (int s = -20; s <= 33; ++s) {
        for (int round = 0; round < 40; ++round) {
            const int16_t v = int16_t(round < 3 ? round - 1 : rng.uniform(-32768, 32767));
            rng.fill(data.data(), data.size(), -32768, 32767);
            std::vector<int16_t> got = data;
            ASSERT_EQ(kvtsMulC_16s_ISfs(v, got.data(), int(got.size()), s), kvtStsOk);
            for (size_t i = 0; i < data.size(); ++i) {
                const int16_t want = (s == 0 && v == 1) ? data[i] : mulc_anchor(data[i], v, s);
                ASSERT_EQ(got[i], want) << data[i] << " * " << v << " >> " << s;
            }
        }
    }
}

TEST(Threshold, RelationFourClipsAboveOthersClipBelow) {
    for (int rel : {4, 1, 0, -7, 5, 1000}) {
        int16_t d[10] = {200, 50, 100, 99, 101, -32768, 32767, 0, 100, 150};
        ASSERT_EQ(kvtsThreshold_16s_I(d, 10, 100, rel), kvtStsOk);
        for (int16_t x : d) {
            if (rel == 4) EXPECT_LE(x, 100);
            else EXPECT_GE(x, 100);
        }
        EXPECT_EQ(d[rel == 4 ? 1 : 0], rel == 4 ? 50 : 200);  // the other side is untouched
        EXPECT_EQ(d[5], rel == 4 ? -32768 : 100);
    }
}

TEST(Fill, SetCopyZeroWriteExactlyTheirLength) {
    Rng rng(11);
    for (int len : {1, 7, 15, 16, 17, 31, 64, 100, 4096, 262145, 300000}) {
        for (size_t mis : {0, 1, 2, 5, 14}) {
            Guarded<uint8_t> b(size_t(len), mis);
            ASSERT_EQ(kvtsSet_8u(0x5C, b.data(), len), kvtStsOk);
            for (int i = 0; i < len; ++i) ASSERT_EQ(b[i], 0x5C) << len << " " << i;
            Guarded<uint8_t> src(size_t(len), (mis * 3) % 16), dst(size_t(len), mis);
            rng.fill(src.data(), src.size(), 0, 255);
            ASSERT_EQ(kvtsCopy_8u(src.data(), dst.data(), len), kvtStsOk);
            ASSERT_EQ(src.bytes(), dst.bytes());
            Guarded<int16_t> w(size_t(len), mis & ~size_t(1));
            ASSERT_EQ(kvtsSet_16s(-2, w.data(), len), kvtStsOk);
            for (int i = 0; i < len; ++i) ASSERT_EQ(w[i], -2);
            ASSERT_EQ(kvtsZero_16s(w.data(), len), kvtStsOk);
            for (int i = 0; i < len; ++i) ASSERT_EQ(w[i], 0);
            EXPECT_TRUE(b.guards_intact() && dst.guards_intact() && w.guards_intact()) << len;
        }
    }
}

TEST(Fill, RegionLeavesTheGapBetweenRowsAlone) {
    for (int width : {1, 5, 16, 33, 640}) {
        for (int gap : {0, 3, 32}) {
            const int height = width == 640 ? 420 : 9, step = width + gap;  // 640x420 streams
            Guarded<uint8_t> b(size_t(step) * height, 3);
            std::memset(b.data(), 0xEE, b.size());
            ASSERT_EQ(kvtiSet_8u_C1R(0x11, b.data(), step, {width, height}), kvtStsOk);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < step; ++x)
                    ASSERT_EQ(b[size_t(y) * step + x], x < width ? 0x11 : 0xEE) << width << "+" << gap;
            EXPECT_TRUE(b.guards_intact());
        }
    }
}

TEST(CountZeros, CountsEveryPosition) {
    int16_t blk[64] = {};
    Kvt32u n = 99;
    ASSERT_EQ(kvtiCountZeros8x8_16s_C1(blk, &n), kvtStsOk);
    EXPECT_EQ(n, 64u);
    for (int i = 0; i < 64; ++i) blk[i] = int16_t(i % 3 == 0 ? 0 : (i & 1 ? -32768 : 1));
    ASSERT_EQ(kvtiCountZeros8x8_16s_C1(blk, &n), kvtStsOk);
    EXPECT_EQ(n, 22u);
}

// ---- Reference against SIMD ------------------------------------------------------------------

TEST(VectorSimd, MulCAndThresholdMatchReference) {
    compare_kernels("mulc/threshold", 400, [](Rng& rng, Impl impl, Outputs& out) {
        const int len = rng.uniform(1, 1000);
        Guarded<int16_t> a(size_t(len), size_t(rng.uniform(0, 7)) * 2);
        rng.fill(a.data(), a.size(), -32768, 32767);
        const int s = rng.uniform(-18, 32);
        const int16_t v = int16_t(rng.coin() ? rng.uniform(-3, 3) : rng.uniform(-32768, 32767));
        KVT_PICK(impl, mulc_16s_sfs)(v, a.data(), len, s);
        out.add_buffer("mulc", a);
        rng.fill(a.data(), a.size(), -32768, 32767);
        const int16_t level = int16_t(rng.uniform(-32768, 32767));
        if (rng.coin()) KVT_PICK(impl, threshold_gt_16s)(a.data(), len, level);
        else KVT_PICK(impl, threshold_lt_16s)(a.data(), len, level);
        out.add_buffer("threshold", a);
    });
}

TEST(VectorSimd, FillsCopyAndCountMatchReference) {
    compare_kernels("fills", 300, [](Rng& rng, Impl impl, Outputs& out) {
        const int len = rng.uniform(1, 1000);
        const size_t mis = size_t(rng.uniform(0, 15));
        Guarded<uint8_t> b(size_t(len), mis), src(size_t(len), size_t(rng.uniform(0, 15)));
        rng.fill(src.data(), src.size(), 0, 255);
        KVT_PICK(impl, set_8u)(uint8_t(rng.next()), b.data(), len);
        out.add_buffer("set_8u", b);
        KVT_PICK(impl, copy_8u)(src.data(), b.data(), len);
        out.add_buffer("copy_8u", b);
        Guarded<int16_t> w(size_t(len), mis & ~size_t(1));
        KVT_PICK(impl, set_16s)(int16_t(rng.next()), w.data(), len);
        out.add_buffer("set_16s", w);
        KVT_PICK(impl, zero_16s)(w.data(), rng.uniform(1, len));
        out.add_buffer("zero_16s", w);
        const int width = rng.uniform(1, 40), height = rng.uniform(1, 12), step = width + rng.uniform(0, 20);
        Guarded<uint8_t> r(size_t(step) * height, mis);
        KVT_PICK(impl, set_8u_c1r)(uint8_t(rng.next()), r.data(), step, width, height);
        out.add_buffer("set_8u_c1r", r);
        int16_t blk[64];
        rng.fill(blk, 64, -2, 2);
        out.add("count_zeros", KVT_PICK(impl, count_zeros_8x8_16s)(blk));
    });
}
