// H.263 motion vectors: every code of Table 14 at every offset, random vectors written with the
// table against the median predictor (wrapping at both ends), rejected codes and the checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

#include "bit_string.h"
#include "checkasm.h"
#include "kvtvc.h"
#include "mv_print.h"
#include "tsv.h"

using namespace kvt::test;

namespace {

// Table 14 by difference in half samples (-32 .. 31).
const std::map<int, std::string>& mvd_table() {
    static const std::map<int, std::string> t = [] {
        std::map<int, std::string> m;
        for (const TsvRow& r : read_table("h263_mvd.tsv")) m[r.num("index") - 32] = r["code"];
        return m;
    }();
    return t;
}

int median(int a, int b, int c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }

// The Table 14 entry that takes the predictor to the target inside [-32, 31].
int table_diff(int target, int pred) {
    const int d = target - pred;
    return d < -32 ? d + 64 : d > 31 ? d - 64 : d;
}

}  // namespace

TEST(H263Mv, EveryCodeAtEveryOffset) {
    ASSERT_EQ(mvd_table().size(), 64u);
    Rng rng(31);
    const KvtMotionVec zero{0, 0};
    for (const auto& [d, code] : mvd_table()) {
        for (int off = 0; off < 8; ++off) {
            const std::string bits = code + mvd_table().at(-d / 2);
            Stream s(random_bits(rng, off) + bits + random_bits(rng, 16), off, uint8_t(rng.next()));
            KvtMotionVec mv{};
            ASSERT_EQ(kvtiDecodeMV_TopBorder_H263(&s.p, &s.offset, &zero, &mv), kvtStsOk) << code;
            EXPECT_EQ(mv, (KvtMotionVec{int16_t(d), int16_t(-d / 2)})) << code;
            EXPECT_EQ(s.pos(), off + long(bits.size()));
        }
    }
}

// Random neighbours and targets: the median predictor plus the written difference, wrapped into
// [-16, 15.5], gives the target back; the top-border form predicts from the left vector alone.
TEST(H263Mv, RandomVectorsRoundTrip) {
    Rng rng(32);
    int wraps = 0;
    for (int trial = 0; trial < 2000; ++trial) {
        KvtMotionVec nb[3], want;
        for (auto& v : nb) v = {int16_t(rng.uniform(-32, 31)), int16_t(rng.uniform(-32, 31))};
        want = {int16_t(rng.uniform(-32, 31)), int16_t(rng.uniform(-32, 31))};
        const bool top = trial % 4 == 0;
        const int px = top ? nb[0].dx : median(nb[0].dx, nb[1].dx, nb[2].dx);
        const int py = top ? nb[0].dy : median(nb[0].dy, nb[1].dy, nb[2].dy);
        const int dx = table_diff(want.dx, px), dy = table_diff(want.dy, py);
        wraps += (dx != want.dx - px) + (dy != want.dy - py);
        const int off = rng.uniform(0, 7);
        const std::string bits = mvd_table().at(dx) + mvd_table().at(dy);
        Stream s(random_bits(rng, off) + bits, off, uint8_t(rng.next()));
        KvtMotionVec mv{};
        const KvtStatus st = top ? kvtiDecodeMV_TopBorder_H263(&s.p, &s.offset, &nb[0], &mv)
                                 : kvtiDecodeMV_H263(&s.p, &s.offset, &nb[0], &nb[1], &nb[2], &mv);
        ASSERT_EQ(st, kvtStsOk);
        ASSERT_EQ(mv, want) << "neighbours " << nb[0] << nb[1] << nb[2] << (top ? " top" : "");
        ASSERT_EQ(s.pos(), off + long(bits.size()));
    }
    EXPECT_GT(wraps, 100);
}

// The MPEG-4 code word for +32 is not in Table 14, and eleven zeros start no code; a valid
// horizontal code before a bad vertical one is not consumed.
TEST(H263Mv, InvalidCodesLeaveCursorAndVector) {
    Rng rng(33);
    const KvtMotionVec z{0, 0};
    for (const std::string& bad : {std::string("0000000000100"), std::string("00000000000"),
                                   mvd_table().at(-7) + "0000000000100", mvd_table().at(0) + "000000000001"}) {
        for (int off = 0; off < 8; ++off) {
            Stream s(random_bits(rng, off) + bad + "1" + random_bits(rng, 8), off, 0);
            KvtMotionVec mv{9, 9};
            EXPECT_EQ(kvtiDecodeMV_H263(&s.p, &s.offset, &z, &z, &z, &mv), kvtStsBadMvdCode) << bad;
            EXPECT_EQ(kvtiDecodeMV_TopBorder_H263(&s.p, &s.offset, &z, &mv), kvtStsBadMvdCode) << bad;
            EXPECT_EQ(mv, (KvtMotionVec{9, 9}));
            EXPECT_EQ(s.pos(), off);
        }
    }
}

TEST(H263Mv, NullPointersChangeNothing) {
    Stream s("11", 5, 0);
    Kvt8u* const p0 = s.p;
    Kvt8u* null_stream = nullptr;
    const KvtMotionVec z{0, 0};
    KvtMotionVec mv{9, 9};
    EXPECT_EQ(kvtiDecodeMV_H263(nullptr, &s.offset, &z, &z, &z, &mv), kvtStsNullPointer);
    EXPECT_EQ(kvtiDecodeMV_H263(&null_stream, &s.offset, &z, &z, &z, &mv), kvtStsNullPointer);
    EXPECT_EQ(kvtiDecodeMV_H263(&s.p, &s.offset, &z, &z, nullptr, &mv), kvtStsNullPointer);
    EXPECT_EQ(kvtiDecodeMV_H263(&s.p, &s.offset, &z, &z, &z, nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiDecodeMV_TopBorder_H263(&s.p, nullptr, &z, &mv), kvtStsNullPointer);
    EXPECT_EQ(kvtiDecodeMV_TopBorder_H263(&s.p, &s.offset, nullptr, &mv), kvtStsNullPointer);
    EXPECT_EQ(s.p, p0);
    EXPECT_EQ(s.offset, 5);
    EXPECT_EQ(mv, (KvtMotionVec{9, 9}));
}
