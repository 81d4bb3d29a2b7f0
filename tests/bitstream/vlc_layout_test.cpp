// VLC tables: the built block word by word on small hand-made descriptions, argument checks,
// and the word fill against its SIMD twin.
#include <gtest/gtest.h>

#include <map>
#include <tuple>
#include <vector>

#include "bitstream/vlc_kernels.h"
#include "checkasm.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::test;

namespace {

constexpr int32_t kEmpty = 0x00F0F101;

int32_t leaf(int32_t value, int surplus) { return int32_t(uint32_t(value) << 8) | surplus; }
int32_t pointer(int32_t header) { return (header << 8) | 0x80; }

// Descriptions below are written with (code, value) records; the run/level form of the same
// description splits each value into run = its low byte and level = the rest, which packs into
// bit for bit the plain leaf.
std::vector<int32_t> as_run_level(const std::vector<int32_t>& d) {
    std::vector<int32_t> out(d.begin(), d.begin() + 2 + d[1]);
    size_t p = out.size();
    while (d[p] >= 0) {
        const int32_t n = d[p++];
        out.push_back(n);
        for (int32_t i = 0; i < n; ++i, p += 2) out.insert(out.end(), {d[p], d[p + 1] & 0xFF, d[p + 1] >> 8});
    }
    out.push_back(d[p]);
    return out;
}

struct Built {
    KvtVCHuffmanSpec_32s* table = nullptr;
    int words = 0;
    Built(const std::vector<int32_t>& desc, bool run_level) {
        const KvtStatus st = run_level ? kvtiVCHuffmanInitAllocRL_32s(desc.data(), &table)
                                       : kvtiVCHuffmanInitAlloc_32s(desc.data(), &table);
        EXPECT_EQ(st, kvtStsOk);
        words = run_level ? 262144 : 16384;
    }
    ~Built() { kvtiVCHuffmanFree_32s(&table); }
};

// Every word of the block: `expected` lists word 0 and the non-empty words; all others empty.
void expect_layout(const Built& b, const std::map<int, int32_t>& expected) {
    ASSERT_NE(b.table, nullptr);
    for (int i = 0; i < b.words; ++i) {
        const auto it = expected.find(i);
        const int32_t want = it == expected.end() ? kEmpty : it->second;
        ASSERT_EQ(b.table[i], want) << "word " << i;
    }
}

// Both constructors must give the same block.
void expect_both(const std::vector<int32_t>& desc, const std::map<int, int32_t>& expected) {
    {
        SCOPED_TRACE("plain");
        expect_layout(Built(desc, false), expected);
    }
    SCOPED_TRACE("run/level");
    expect_layout(Built(as_run_level(desc), true), expected);
}

}  // namespace

TEST(VlcLayout, EmptyDescriptionIsAllMarkers) {
    expect_both({0, 1, 4, -1}, {{0, 4}});
    expect_both({0, 2, 3, 5, 0, 0, -7}, {{0, 3}});  // empty groups, any negative end word
}

TEST(VlcLayout, OneBitCodeFillsEightRootEntries) {
    std::map<int, int32_t> want{{0, 4}};
    for (int i = 9; i <= 16; ++i) want[i] = leaf(5, 3);
    expect_both({0, 1, 4, 1, 1, 5, -1}, want);
}

TEST(VlcLayout, TwoLevelsLeavesPointersAndSurplus) {
    // Widths 2+2; codes 1, 01, 001, 0001, 0000. Root words 1..4, one sub-table at word 5.
    const std::vector<int32_t> desc{0, 2, 2, 2, 1, 1, 11, 1, 1, 12, 1, 1, 13, 2, 1, 14, 0, -15, -1};
    expect_both(desc, {{0, 2},
                       {1, pointer(5)},
                       {2, leaf(12, 0)},
                       {3, leaf(11, 1)},
                       {4, leaf(11, 1)},
                       {5, 2},
                       {6, leaf(-15, 0)},
                       {7, leaf(14, 0)},
                       {8, leaf(13, 1)},
                       {9, leaf(13, 1)}});
}

TEST(VlcLayout, SubTablesInOrderOfFirstNeed) {
    // Widths 1+2; the code under prefix 1 comes first, so its table is placed first.
    const std::vector<int32_t> desc{0, 2, 1, 2, 0, 0, 2, 7, 70, 0, 90, -1};
    expect_both(desc, {{0, 1}, {1, pointer(8)}, {2, pointer(3)}, {3, 2}, {7, leaf(70, 0)}, {8, 2}, {9, leaf(90, 0)}});
}

TEST(VlcLayout, LeafKeepsTheWalkInTheCurrentTable) {
    // 1011 meets the leaf of code 1 at the root and lands at root index 3 (its second-level
    // bits), overwriting the copy of code 1's leaf there. Later records overwrite earlier ones.
    const std::vector<int32_t> desc{0, 2, 2, 2, 2, 1, 1, 1, 3, 0, 0, 1, 11, 2, -1};
    expect_both(desc, {{0, 2}, {3, leaf(3, 1)}, {4, leaf(2, 0)}});
}

TEST(VlcLayout, CodesLongerThanTheLevelsAreIgnored) {
    // Widths 2+2: the 5-bit code creates nothing, not even its first-level sub-table.
    expect_both({0, 2, 2, 2, 1, 1, 6, 0, 0, 0, 1, 0, 9, -1}, {{0, 2}, {3, leaf(6, 1)}, {4, leaf(6, 1)}});
    // No levels: word 0 still takes description word 2, every record is ignored.
    expect_both({0, 0, 1, 1, 5, -1}, {{0, 1}});
}

TEST(VlcLayout, HeaderAtMultipleOf256IsFollowedOnlyByRunLevelBuilder) {
    // Root width 8, sub-tables of width 4 (17 words) from word 257: the table of prefix 15 has
    // its header at word 512. A second code under that prefix finds the pointer 0x20080; the
    // plain builder does not follow it and writes at root index 1 (the code's last 4 bits).
    std::vector<int32_t> desc{0, 2, 8, 4};
    for (int len = 1; len < 12; ++len) desc.push_back(0);
    desc.push_back(17);
    for (int k = 0; k < 16; ++k) desc.insert(desc.end(), {k << 4, 100 + k});
    desc.insert(desc.end(), {(15 << 4) | 1, 99, -1});

    std::map<int, int32_t> common{{0, 8}};
    for (int k = 0; k < 16; ++k) {
        const int header = 257 + 17 * k;
        common[1 + k] = pointer(header);
        common[header] = 4;
        common[header + 1] = leaf(100 + k, 0);
    }
    std::map<int, int32_t> plain = common, run_level = common;
    plain[2] = leaf(99, 0);
    run_level[512 + 1 + 1] = leaf(99, 0);
    expect_layout(Built(desc, false), plain);
    expect_layout(Built(as_run_level(desc), true), run_level);

    // The decoder follows every pointer: 0000 1111 0000 reaches the sub-table at 512, while
    // 0000 0001 now stops at the root leaf after 8 bits.
    Built b(desc, false);
    for (const auto& [bits, value, consumed] :
         {std::tuple{0x0F000000u, 115, 12}, std::tuple{0x01000000u, 99, 8}}) {
        Kvt32u stream[2] = {bits, 0};
        Kvt32u* p = stream;
        int offset = 31;
        Kvt32s out = 0;
        EXPECT_EQ(kvtiVCHuffmanDecodeOne_1u32s(&p, &offset, &out, b.table), kvtStsOk);
        EXPECT_EQ(out, value);
        EXPECT_EQ(offset, 31 - consumed);
    }
}

TEST(VlcLayout, RunLevelLeafPacksLevelAndRun) {
    // (code 1, run 0x1A3, level -2): only the run's low byte is kept; the field sign-extends.
    Built b({0, 1, 1, 1, 1, 0x1A3, -2, -1}, true);
    EXPECT_EQ(b.table[2], int32_t(0xFFFEA300u));
    Kvt32u stream[2] = {0x80000000u, 0};
    Kvt32u* p = stream;
    int offset = 31;
    Kvt32s out = 0;
    EXPECT_EQ(kvtiVCHuffmanDecodeOne_1u32s(&p, &offset, &out, b.table), kvtStsOk);
    EXPECT_EQ(out, -2 * 256 + 0xA3);
}

TEST(VlcStatus, ConstructorsCheckBothPointers) {
    const std::vector<int32_t> desc{0, 1, 4, -1};
    KvtVCHuffmanSpec_32s* sentinel = reinterpret_cast<KvtVCHuffmanSpec_32s*>(&sentinel);
    KvtVCHuffmanSpec_32s* t = sentinel;
    EXPECT_EQ(kvtiVCHuffmanInitAlloc_32s(nullptr, &t), kvtStsNullPointer);
    EXPECT_EQ(kvtiVCHuffmanInitAllocRL_32s(nullptr, &t), kvtStsNullPointer);
    EXPECT_EQ(t, sentinel);
    EXPECT_EQ(kvtiVCHuffmanInitAlloc_32s(desc.data(), nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiVCHuffmanInitAllocRL_32s(desc.data(), nullptr), kvtStsNullPointer);
}

TEST(VlcStatus, DecodeChecksCursorAddressAndTableOnly) {
    Built b({0, 1, 1, 1, 1, 5, -1}, false);
    Kvt32u stream[2] = {0xFFFFFFFFu, 0};
    Kvt32u* p = stream;
    int offset = 7;
    Kvt32s out = 123;
    EXPECT_EQ(kvtiVCHuffmanDecodeOne_1u32s(nullptr, &offset, &out, b.table), kvtStsNullPointer);
    EXPECT_EQ(kvtiVCHuffmanDecodeOne_1u32s(&p, &offset, &out, nullptr), kvtStsNullPointer);
    EXPECT_EQ(kvtiVCHuffmanDecodeOne_1u32s(nullptr, nullptr, nullptr, nullptr), kvtStsNullPointer);
    EXPECT_EQ(p, stream);
    EXPECT_EQ(offset, 7);
    EXPECT_EQ(out, 123);
}

TEST(VlcStatus, FreeClearsThePointerAndToleratesNull) {
    EXPECT_EQ(kvtiVCHuffmanFree_32s(nullptr), kvtStsNullPointer);
    KvtVCHuffmanSpec_32s* t = nullptr;
    EXPECT_EQ(kvtiVCHuffmanFree_32s(&t), kvtStsOk);
    const std::vector<int32_t> desc{0, 1, 4, -1};
    ASSERT_EQ(kvtiVCHuffmanInitAllocRL_32s(desc.data(), &t), kvtStsOk);
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(t) % 32, 0u);
    EXPECT_EQ(kvtiVCHuffmanFree_32s(&t), kvtStsOk);
    EXPECT_EQ(t, nullptr);
    EXPECT_EQ(kvtiVCHuffmanFree_32s(&t), kvtStsOk);  // a second release is harmless
}

TEST(VlcKernels, WordFillMatchesReference) {
    compare_kernels("fill_32s", 400, [](Rng& rng, Impl impl, Outputs& out) {
        const int n = rng.uniform(0, 300);
        Guarded<int32_t> buf(size_t(n) + 1, size_t(rng.uniform(0, 3)) * 4);
        for (size_t i = 0; i < buf.size(); ++i) buf[i] = int32_t(rng.next());
        const uint32_t v = rng.next();
        KVT_PICK(impl, fill_32s)(v, buf.data(), n);
        out.add_buffer("words", buf);
    });
}
