// Vector helpers and the region fill: argument checks, MulC against an independent model,
// threshold and zero count against plain models, long and strided fills, reference against SIMD.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <vector>

#include "checkasm.h"
#include "core/vector_dsp.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::test;

namespace {

// Independent model of x * v / 2^s: exact double division, then rint (ties to even).
int16_t mulc_anchor(int16_t x, int16_t v, int s) {
    const double p = double(x) * double(v);
    const auto sat = [](double d) { return int16_t(std::min(32767.0, std::max(-32768.0, d))); };
    if (v == 0 || s > 30) return 0;
    if (s >= 0) return sat(std::nearbyint(std::ldexp(p, -s)));
    return s >= -15 ? sat(sat(p) * std::ldexp(1.0, -s)) : x == 0 ? 0 : sat(p * 1e10);
}

alignas(16) uint8_t mem[136];  // the buffers of the argument checks
uint8_t* const b8 = mem;
int16_t* const b16 = reinterpret_cast<int16_t*>(mem + 64);
Kvt32u* const zeros = reinterpret_cast<Kvt32u*>(mem + 128);
template <class T>
T* maybe(bool null, T* p) {
    return null ? nullptr : p;
}

}  // namespace

// Every frame function checks its pointers, then the size, then the step; a failing call writes nothing.
TEST(VectorStatus, NullThenSizeThenStepAndNothingWritten) {
    using Call = KvtStatus (*)(bool null, int len, int step);
    const std::pair<int, Call> fns[] = {
        // the checks after the pointers': 0 none, 1 size, 2 size and step
        {1, [](bool z, int n, int) { return kvtsSet_8u(1, maybe(z, b8), n); }},
        {1, [](bool z, int n, int) { return kvtsSet_16s(1, maybe(z, b16), n); }},
        {1, [](bool z, int n, int) { return kvtsZero_16s(maybe(z, b16), n); }},
        {1, [](bool z, int n, int) { return kvtsCopy_8u(maybe(z, b8 + 32), b8, n); }},
        {1, [](bool z, int n, int) { return kvtsCopy_8u(b8 + 32, maybe(z, b8), n); }},
        {1, [](bool z, int n, int) { return kvtsMulC_16s_ISfs(2, maybe(z, b16), n, 0); }},
        {1, [](bool z, int n, int) { return kvtsThreshold_16s_I(maybe(z, b16), n, 0, 4); }},
        {2,
         [](bool z, int n, int s) {
             return kvtiSet_8u_C1R(1, maybe(z, b8), s, {n, 4});
         }},
        {2,
         [](bool z, int n, int s) {
             return kvtiSet_8u_C1R(1, maybe(z, b8), s, {4, n});
         }},
        {0, [](bool z, int, int) { return kvtiCountZeros8x8_16s_C1(maybe(z, b16), zeros); }},
        {0, [](bool z, int, int) { return kvtiCountZeros8x8_16s_C1(b16, maybe(z, zeros)); }},
    };
    std::memset(mem, 0x5A, sizeof mem);
    for (size_t i = 0; i < std::size(fns); ++i)
        for (int z = 0; z < 2; ++z)
            for (int n : {4, 0, -1, INT_MIN})
                for (int step : {8, 0, -8}) {
                    const int checks = fns[i].first;
                    const KvtStatus want = z                         ? kvtStsNullPointer
                                           : checks && n < 1         ? kvtStsBadSize
                                           : checks == 2 && step < 1 ? kvtStsBadStep
                                                                     : kvtStsOk;
                    if (want) {
                        EXPECT_EQ(fns[i].second(z, n, step), want) << i << ": " << n << ", " << step;
                    }
                }
    EXPECT_EQ(std::count(mem, mem + sizeof mem, 0x5A), std::ptrdiff_t(sizeof mem));
}

// The fronts against models, for every scale factor from -20 to 33 on vectors mixing edge values
// (ties, saturations) and random ones: MulC, the zero count of its result, and the threshold at
// the constant (relation 4 clips values above the level down to it, any other relation clips
// values below up).
TEST(VectorModels, MulCThresholdAndCountZeros) {
    Rng rng(7);
    const int16_t edges[] = {-32768, -32767, -3, -1, 0, 1, 2, 3, 5, 32767};
    const int relations[] = {4, 1, 0, -7, 5, 1000};
    std::vector<int16_t> data(64), got;
    for (int s = -20; s <= 33; ++s)
        for (int round = 0; round < 40; ++round) {
            const int16_t v = round < 10 ? edges[round] : int16_t(rng.uniform(-32768, 32767));
            const int len = 33 + round % 32, rel = relations[round % 6];
            for (int16_t& d : data)
                d = rng.coin() ? edges[rng.uniform(0, 9)] : int16_t(rng.uniform(-32768, 32767));
            ASSERT_EQ(kvtsMulC_16s_ISfs(v, (got = data).data(), len, s), kvtStsOk);
            for (int i = 0; i < 64; ++i)
                ASSERT_EQ(got[i], i < len ? mulc_anchor(data[i], v, s) : data[i])
                    << data[i] << "*" << v << ">>" << s;
            Kvt32u n = 99;
            ASSERT_EQ(kvtiCountZeros8x8_16s_C1(got.data(), &n), kvtStsOk);
            EXPECT_EQ(n, Kvt32u(std::count(got.begin(), got.end(), 0)));
            ASSERT_EQ(kvtsThreshold_16s_I((got = data).data(), len, v, rel), kvtStsOk);
            for (int i = 0; i < 64; ++i)
                ASSERT_EQ(got[i], i >= len   ? data[i]
                                  : rel == 4 ? std::min(data[i], v)
                                             : std::max(data[i], v))
                    << rel;
        }
}

// Lengths around the vector widths and past the cache-bypass sizes, at several misalignments; regions
// of several widths and gaps, up to 640x420, which bypasses the cache.
TEST(Fill, WritesExactlyTheLengthOrTheRegion) {
    Rng rng(11);
    for (int len : {1, 7, 15, 16, 17, 31, 64, 100, 4096, 262145, 300000})
        for (size_t mis : {0, 1, 2, 5, 14}) {
            Guarded<uint8_t> b(size_t(len), mis), src(size_t(len), (mis * 3) % 16);
            Guarded<int16_t> w(size_t(len), mis & ~size_t(1));
            rng.fill(src.data(), src.size(), 0, 255);
            ASSERT_TRUE(!kvtsSet_8u(0x5C, b.data(), len) && std::count(b.data(), b.data() + len, 0x5C) == len)
                << len;
            ASSERT_TRUE(!kvtsCopy_8u(src.data(), b.data(), len) && src.bytes() == b.bytes()) << len;
            ASSERT_TRUE(!kvtsSet_16s(-2, w.data(), len) && std::count(w.data(), w.data() + len, -2) == len)
                << len;
            ASSERT_TRUE(!kvtsZero_16s(w.data(), len) && std::count(w.data(), w.data() + len, 0) == len)
                << len;
            EXPECT_TRUE(b.guards_intact() && w.guards_intact()) << len;
        }
    for (int width : {1, 5, 16, 33, 640})
        for (int gap : {0, 3, 32}) {
            const int height = width == 640 ? 420 : 9, step = width + gap;
            Guarded<uint8_t> b(size_t(step) * height, 3);
            std::memset(b.data(), 0xEE, b.size());
            ASSERT_EQ(kvtiSet_8u_C1R(0x11, b.data(), step, {width, height}), kvtStsOk);
            for (size_t i = 0; i < b.size(); ++i)
                ASSERT_EQ(b[i], int(i) % step < width ? 0x11 : 0xEE) << width << "+" << gap << " at " << i;
            EXPECT_TRUE(b.guards_intact());
        }
}

TEST(VectorSimd, EveryKernelMatchesReference) {
    compare_tiers<VectorDsp>(
        "vector", init_vector_dsp, ref::init_vector, 400, [](Rng& rng, const VectorDsp& d, Outputs& out) {
            const int len = rng.uniform(1, rng.coin() ? 80 : 1000);  // the short paths often
            const size_t mis = size_t(rng.uniform(0, 15));
            Guarded<uint8_t> b(size_t(len), mis), src(size_t(len), size_t(rng.uniform(0, 15)));
            Guarded<int16_t> w(size_t(len), mis & ~size_t(1));
            rng.fill(src.data(), src.size(), 0, 255);
            d.set_8u(uint8_t(rng.next()), b.data(), len);
            out.add_buffer("set_8u", b);
            d.copy_8u(src.data(), b.data(), len);
            out.add_buffer("copy_8u", b);
            d.set_16s(int16_t(rng.next()), w.data(), len);
            out.add_buffer("set_16s", w);
            d.zero_16s(w.data(), rng.uniform(1, len));
            out.add_buffer("zero_16s", w);
            rng.fill(w.data(), w.size(), -32768, 32767);
            const int16_t v = int16_t(rng.coin() ? rng.uniform(-3, 3) : rng.uniform(-32768, 32767));
            d.mulc_16s_sfs(v, w.data(), len, rng.uniform(-18, 32));
            out.add_buffer("mulc", w);
            rng.fill(w.data(), w.size(), -32768, 32767);
            const int16_t level = int16_t(rng.uniform(-32768, 32767));
            (rng.coin() ? d.threshold_gt_16s : d.threshold_lt_16s)(w.data(), len, level);
            out.add_buffer("threshold", w);
            const int width = rng.uniform(1, 90), height = rng.uniform(1, 12),
                      step = width + rng.uniform(0, 1) * rng.uniform(0, 20);
            Guarded<uint8_t> r(size_t(step) * height, mis);
            d.set_8u_c1r(uint8_t(rng.next()), r.data(), step, width, height);
            out.add_buffer("set_8u_c1r", r);
            int16_t blk[64];
            rng.fill(blk, 64, -2, 2);
            uint32_t zeros = 0;
            d.count_zeros_8x8(blk, &zeros);
            out.add("count_zeros", zeros);
        });
}
