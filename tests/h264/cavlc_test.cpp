// CAVLC syntax elements: the fronts against a direct count written from the meaning of each
// element (not as a walk), on random blocks at every first and last scan index, and the cases the
// standard's description singles out.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <vector>

#include "checkasm.h"
#include "kvtvc.h"

using namespace kvt::test;

namespace {

constexpr uint32_t kZigzag[16] = {0, 1, 4, 8, 5, 2, 3, 6, 9, 12, 13, 10, 7, 11, 14, 15};
constexpr int16_t kUnwritten = 0x5A5A;

struct Elements {
    int ones = 0, signs = 0, coeffs = 0, zeros = 0;
    std::vector<int> levels, runs;
    bool operator==(const Elements& o) const {
        return ones == o.ones && signs == o.signs && coeffs == o.coeffs && zeros == o.zeros &&
               levels == o.levels && runs == o.runs;
    }
};

std::ostream& operator<<(std::ostream& os, const Elements& e) {
    os << "ones " << e.ones << " signs " << e.signs << " coeffs " << e.coeffs << " zeros " << e.zeros
       << " levels";
    for (int v : e.levels) os << " " << v;
    os << " runs";
    for (int v : e.runs) os << " " << v;
    return os;
}

// The nonzero coefficients of the scanned range, highest scan position first: trailing ones are
// the leading +-1 among the first three of them, total zeros the zeros from the first scan index
// up to the highest nonzero one, a run the gap between two neighbours in this list.
Elements direct_count(const int16_t* c, const uint32_t* scan, int first, int last) {
    std::vector<int> pos, val;
    for (int k = last; k >= first; --k)
        if (c[scan[k]] != 0) pos.push_back(k), val.push_back(c[scan[k]]);
    Elements e;
    e.coeffs = int(pos.size());
    while (e.ones < 3 && e.ones < e.coeffs && std::abs(val[size_t(e.ones)]) == 1)
        e.signs = e.signs * 2 + (val[size_t(e.ones)] < 0), ++e.ones;
    e.levels.assign(val.begin() + e.ones, val.end());
    e.zeros = e.coeffs ? pos[0] - first + 1 - e.coeffs : last - first + 1;
    for (size_t i = 0; i + 1 < pos.size(); ++i) e.runs.push_back(pos[i] - pos[i + 1] - 1);
    return e;
}

// The front's outputs; levels and runs are read up to their used length, and must hold the
// sentinel beyond it.
Elements collect(const int16_t* c, int first, const uint32_t* scan, int last, bool chroma_dc = false) {
    uint8_t ones = 99, signs = 99, coeffs = 99, zeros = 99;
    std::vector<int16_t> levels(16, kUnwritten);
    std::vector<uint8_t> runs(16, 0xA5);
    const KvtStatus st =
        chroma_dc ? kvtiEncodeChromaDcCoeffsCAVLC_H264_16s(c, &ones, &signs, &coeffs, &zeros, levels.data(),
                                                           runs.data())
                  : kvtiEncodeCoeffsCAVLC_H264_16s(c, uint8_t(first), scan, uint8_t(last), &ones, &signs,
                                                   &coeffs, &zeros, levels.data(), runs.data());
    EXPECT_EQ(kvtStsOk, st);
    Elements e{ones, signs, coeffs, zeros, {}, {}};
    const size_t nl = size_t(std::max(0, coeffs - ones)), nr = size_t(std::max(0, coeffs - 1));
    e.levels.assign(levels.begin(), levels.begin() + std::min<size_t>(nl, 16));
    e.runs.assign(runs.begin(), runs.begin() + std::min<size_t>(nr, 16));
    EXPECT_TRUE(std::all_of(levels.begin() + std::min<size_t>(nl, 16), levels.end(), [](int16_t v) {
        return v == kUnwritten;
    })) << "levels written beyond the used entries";
    EXPECT_TRUE(std::all_of(runs.begin() + std::min<size_t>(nr, 16), runs.end(), [](uint8_t v) {
        return v == 0xA5;
    })) << "runs written beyond the used entries";
    return e;
}

// Blocks of several kinds: sparse, dense, mostly +-1, extreme 16-bit values.
void random_block(Rng& rng, int16_t* c) {
    const int kind = rng.uniform(0, 3), density = rng.uniform(0, 16);
    for (int i = 0; i < 16; ++i) {
        const int big[] = {32767, -32768, rng.uniform(-40, 40)};
        const int v = kind == 0   ? rng.uniform(-3, 3)
                      : kind == 1 ? (rng.coin() ? 1 : -1)
                      : kind == 2 ? big[rng.uniform(0, 2)]
                                  : rng.uniform(-2, 2);
        c[i] = int16_t(rng.uniform(0, 15) < density ? v : 0);
    }
}

TEST(H264Cavlc, RandomBlocksAtEveryScanRange) {
    for (int trial = 0; trial < 300; ++trial) {
        Rng rng(test_seed() + trial);
        uint32_t scan[16];
        std::copy(kZigzag, kZigzag + 16, scan);
        if (trial % 2)
            for (int i = 15; i > 0; --i) std::swap(scan[i], scan[rng.uniform(0, i)]);
        int16_t c[16];
        random_block(rng, c);
        for (int first = 0; first <= 1; ++first)
            for (int last = first; last <= 15; ++last)
                ASSERT_EQ(direct_count(c, scan, first, last), collect(c, first, scan, last))
                    << "first " << first << " last " << last << " seed " << test_seed() + trial;
    }
}

TEST(H264Cavlc, ChromaDcIsTheFourPositionWalk) {
    constexpr uint32_t identity[4] = {0, 1, 2, 3};
    for (int trial = 0; trial < 400; ++trial) {
        Rng rng(test_seed() + trial);
        int16_t c[16];
        random_block(rng, c);
        ASSERT_EQ(direct_count(c, identity, 0, 3), collect(c, 0, nullptr, 0, true))
            << "seed " << test_seed() + trial;
    }
}

TEST(H264Cavlc, CasesOfTheDescription) {
    const auto in_scan = [](std::vector<int> values) {  // values in scan order, zigzag placed
        std::vector<int16_t> c(16, 0);
        for (size_t k = 0; k < values.size(); ++k) c[kZigzag[k]] = int16_t(values[k]);
        return c;
    };
    const auto walk = [&](std::vector<int> values, int first = 0, int last = 15) {
        return collect(in_scan(values).data(), first, kZigzag, last);
    };
    EXPECT_EQ(Elements({0, 0, 0, 16, {}, {}}), walk({}));
    EXPECT_EQ(Elements({0, 0, 0, 10, {}, {}}), walk({}, 1, 10));
    EXPECT_EQ(Elements({3, 0, 4, 0, {1}, {0, 0, 0}}), walk({1, 1, 1, 1}));    // a fourth +1 is a level
    EXPECT_EQ(Elements({0, 0, 3, 0, {2, 1, -1}, {0, 0}}), walk({-1, 1, 2}));  // 2 on top ends the ones
    EXPECT_EQ(Elements({1, 0, 3, 1, {3, -1}, {0, 1}}), walk({-1, 0, 3, 1}));  // broken by a larger level
    EXPECT_EQ(Elements({2, 2, 2, 2, {}, {1}}), walk({0, 1, 0, -1}));  // zeros between ones; -1 met first
    EXPECT_EQ(Elements({1, 0, 2, 5, {-7}, {4}}), walk({0, -7, 0, 0, 0, 0, 1}));
    EXPECT_EQ(Elements({1, 0, 1, 0, {}, {}}), walk({0, 1}, 1, 15));  // DC coded elsewhere
    const int16_t dc[4] = {0, 0, 0, -1};
    EXPECT_EQ(Elements({1, 1, 1, 3, {}, {}}), collect(dc, 0, nullptr, 0, true));
}

TEST(H264Cavlc, ArgumentChecksInOrder) {
    int16_t c[16] = {1};
    uint8_t o[4], runs[16] = {};
    int16_t levels[16] = {};
    const auto call = [&](const int16_t* src, const uint32_t* scan, int first, int last, uint8_t* out,
                          int16_t* lv) {
        return kvtiEncodeCoeffsCAVLC_H264_16s(src, uint8_t(first), scan, uint8_t(last), out, o + 1, o + 2,
                                              o + 3, lv, runs);
    };
    EXPECT_EQ(kvtStsNullPointer, call(nullptr, kZigzag, 0, 16, o, levels));
    EXPECT_EQ(kvtStsNullPointer, call(c, nullptr, 0, 15, o, levels));
    EXPECT_EQ(kvtStsNullPointer, call(c, kZigzag, 0, 15, nullptr, levels));
    EXPECT_EQ(kvtStsNullPointer, call(c, kZigzag, 0, 15, o, nullptr));
    EXPECT_EQ(kvtStsNullPointer,
              kvtiEncodeCoeffsCAVLC_H264_16s(c, 0, kZigzag, 15, o, o + 1, o + 2, o + 3, levels, nullptr));
    std::fill(o, o + 4, 77);
    EXPECT_EQ(kvtStsOutOfRange, call(c, kZigzag, 0, 16, o, levels));
    EXPECT_EQ(kvtStsOutOfRange, call(c, kZigzag, 1, 0, o, levels));
    EXPECT_EQ(kvtStsOutOfRange, call(c, kZigzag, 20, 15, o, levels));
    EXPECT_TRUE(std::all_of(o, o + 4, [](uint8_t v) { return v == 77; })) << "a failed call wrote";
    EXPECT_EQ(kvtStsOk, call(c, kZigzag, 15, 15, o, levels));
    EXPECT_EQ(kvtStsNullPointer, kvtiEncodeChromaDcCoeffsCAVLC_H264_16s(c, o, o, o, nullptr, levels, runs));
    EXPECT_EQ(kvtStsNullPointer, kvtiEncodeChromaDcCoeffsCAVLC_H264_16s(nullptr, o, o, o, o, levels, runs));
}

}  // namespace
