// The word bit cursor against a bit-by-bit model, and how one-code decoding moves it.
#include <gtest/gtest.h>

#include <vector>

#include "bitstream/word_cursor.h"
#include "checkasm.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::test;

namespace {

// Bit i of the stream, counting from the most significant bit of word 0.
uint32_t bit_at(const std::vector<uint32_t>& w, int i) { return (w[size_t(i / 32)] >> (31 - i % 32)) & 1; }

int position(const std::vector<uint32_t>& w, const WordCursor& c) {
    return int(c.word - w.data()) * 32 + 31 - c.offset;
}

struct Decoded {
    KvtStatus status;
    Kvt32s value;
    int word;  // word index after the call
    int offset;
};

Decoded decode(const std::vector<int32_t>& desc, std::vector<Kvt32u> stream, int offset) {
    KvtVCHuffmanSpec_32s* t = nullptr;
    EXPECT_EQ(kvtiVCHuffmanInitAlloc_32s(desc.data(), &t), kvtStsOk);
    Kvt32u* p = stream.data();
    Decoded d{0, 0, 0, offset};
    d.status = kvtiVCHuffmanDecodeOne_1u32s(&p, &d.offset, &d.value, t);
    d.word = int(p - stream.data());
    kvtiVCHuffmanFree_32s(&t);
    return d;
}

}  // namespace

TEST(WordCursor, ShowReadAndGiveBackMatchTheBitModel) {
    Rng rng(5);
    std::vector<uint32_t> w(8);
    for (int trial = 0; trial < 20000; ++trial) {
        for (uint32_t& x : w) x = rng.next();
        WordCursor c{w.data() + rng.uniform(1, 3), rng.uniform(0, 31)};
        const int n = rng.uniform(0, 32);
        const int start = position(w, c);
        uint32_t want = 0;
        for (int i = 0; i < n; ++i) want = (want << 1) | bit_at(w, start + i);
        ASSERT_EQ(wc_show(c, n), want) << "offset " << c.offset << " n " << n;
        ASSERT_EQ(wc_read(c, n), want);
        ASSERT_EQ(position(w, c), start + n);
        ASSERT_TRUE(c.offset >= 0 && c.offset <= 31);
        const int back = rng.uniform(0, 32);
        wc_give_back(c, back);
        ASSERT_EQ(position(w, c), start + n - back);
        ASSERT_TRUE(c.offset >= 0 && c.offset <= 31);
    }
}

TEST(VlcCursor, MissReadsTheRootAndReportsTheMarker) {
    // Empty description: every lookup fails after reading the root's 4 bits.
    for (int offset : {31, 2, 0}) {
        const Decoded d = decode({0, 1, 4, -1}, {0xFFFFFFFFu, 0xFFFFFFFFu}, offset);
        EXPECT_EQ(d.status, kvtStsBadVlcCode);
        EXPECT_EQ(d.value, 61681);
        EXPECT_EQ(d.word * 32 + 31 - d.offset, 31 - offset + 4);
    }
}

TEST(VlcCursor, OneBitCodeConsumesOneBitAcrossTheWordEnd) {
    // Code 1 (value 5) at the last bit of word 0: 4 bits are read, 3 given back.
    const Decoded d = decode({0, 1, 4, 1, 1, 5, -1}, {0x00000001u, 0x00000000u}, 0);
    EXPECT_EQ(d.status, kvtStsOk);
    EXPECT_EQ(d.value, 5);
    EXPECT_EQ(d.word, 1);
    EXPECT_EQ(d.offset, 31);
}

TEST(VlcCursor, CodeAcrossAWordBoundaryEndsOnTheSecondWord) {
    // 5-bit code 10110 (value -3) starting at bit 1 of word 0: 2 bits there, 3 in word 1.
    const Decoded d = decode({0, 1, 5, 0, 0, 0, 0, 1, 0x16, -3, -1}, {0x00000002u, 0xC0000000u}, 1);
    EXPECT_EQ(d.status, kvtStsOk);
    EXPECT_EQ(d.value, -3);
    EXPECT_EQ(d.word, 1);
    EXPECT_EQ(d.offset, 28);
}

TEST(VlcCursor, SurplusGivenBackMovesToThePreviousWord) {
    // 2-bit code 01 in an 8-bit root, starting at bit 3: the lookup reads into word 1 and the
    // 6 surplus bits return the cursor to bit 1 of word 0.
    const Decoded d = decode({0, 1, 8, 0, 1, 1, 77, -1}, {0x00000005u, 0xFFFFFFFFu}, 3);
    EXPECT_EQ(d.status, kvtStsOk);
    EXPECT_EQ(d.value, 77);
    EXPECT_EQ(d.word, 0);
    EXPECT_EQ(d.offset, 1);
}

TEST(VlcCursor, MissInASubTableKeepsTheBitsOfBothLevels) {
    // Widths 2+3, one code 00111: a stream starting 00000 reaches the sub-table and misses there.
    const Decoded d = decode({0, 2, 2, 3, 0, 0, 0, 0, 1, 7, 9, -1}, {0x07FFFFFFu, 0}, 31);
    EXPECT_EQ(d.status, kvtStsBadVlcCode);
    EXPECT_EQ(d.value, 61681);
    EXPECT_EQ(d.word, 0);
    EXPECT_EQ(d.offset, 26);
}
