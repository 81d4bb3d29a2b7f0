// The exported mask tables, the byte-cursor writer and the VLC tables: the built block word by word on small
// hand-made descriptions and the cursor moves of misses; tables built from tables/ (MPEG-2
// B.14/B.15, MPEG-4 TCOEF) at several level splits with every code at every bit offset, which also
// drives the word cursor (its only user) across word ends both ways; argument checks; the word
// fill against its SIMD twin.
#include <gtest/gtest.h>

#include <map>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "bitstream/byte_cursor.h"
#include "bitstream/vlc_dsp.h"
#include "bitstream/word_cursor.h"
#include "checkasm.h"
#include "kvtvc.h"
#include "tsv.h"

using namespace kvt;
using namespace kvt::test;

namespace {

struct Table {
    KvtVCHuffmanSpec_32s* t = nullptr;
    Table(const std::vector<int32_t>& d, bool rl) {
        EXPECT_EQ((rl ? kvtiVCHuffmanInitAllocRL_32s : kvtiVCHuffmanInitAlloc_32s)(d.data(), &t), kvtStsOk);
    }
    ~Table() { kvtiVCHuffmanFree_32s(&t); }
};

// field = level * 256 + run; MPEG-4 "last" is folded into the run as + 64.
struct Symbol {
    std::string bits;
    int32_t field;
};

// The rows as symbols, with a sign bit appended when `sign` ("1" negates the level). ESC and EOB
// carry no sign and get runs no event uses.
std::vector<Symbol> load_symbols(const std::string& file, bool sign) {
    std::vector<Symbol> out;
    for (const TsvRow& r : read_table(file)) {
        const bool event = r["run"] != "ESC" && r["run"] != "EOB";
        const int32_t level = event ? r.num("level") : 0,
                      field = !event ? (r["run"] == "ESC" ? 200 : 201)
                                     : level * 256 + r.num("run") +
                                           (r.cells.count("last") ? 64 * r.num("last") : 0);
        if (!sign || !event)
            out.push_back({r["code"], field});
        else
            out.insert(out.end(), {{r["code"] + "0", field}, {r["code"] + "1", field - 512 * level}});
    }
    return out;
}

// Plain description: word 0 unused, the levels, then one group of (code, field) per code length.
std::vector<int32_t> describe(const std::vector<int>& widths, const std::vector<Symbol>& symbols) {
    std::vector<int32_t> d{0, int32_t(widths.size())};
    d.insert(d.end(), widths.begin(), widths.end());
    for (size_t len = 1, left = symbols.size(); left; ++len) {
        std::vector<int32_t> group;
        for (const Symbol& s : symbols)
            if (s.bits.size() == len) group.insert(group.end(), {int32_t(bits_value(s.bits)), s.field});
        d.push_back(int32_t(group.size() / 2));
        d.insert(d.end(), group.begin(), group.end());
        left -= group.size() / 2;
    }
    d.push_back(-1);
    return d;
}

// The run/level form of a (code, value) description: run = the value's low byte, level = the
// rest, which packs bit for bit into the plain leaf.
std::vector<int32_t> as_run_level(const std::vector<int32_t>& d) {
    std::vector<int32_t> out(d.begin(), d.begin() + 2 + d[1]);
    size_t p = out.size();
    for (; d[p] >= 0; ++p) {
        out.push_back(d[p]);
        for (int32_t i = 0, n = d[p]; i < n; ++i, p += 2)
            out.insert(out.end(), {d[p + 1], d[p + 2] & 0xFF, d[p + 2] >> 8});
    }
    out.push_back(d[p]);
    return out;
}

// Random words with `bits` written from bit `start` on (bit 0 is bit 31 of word 0), plus a word.
std::vector<Kvt32u> pack(const std::string& bits, size_t start, Rng& rng) {
    std::vector<Kvt32u> w((start + bits.size()) / 32 + 2);
    for (Kvt32u& x : w) x = rng.next();
    for (size_t i = start; i < start + bits.size(); ++i) {
        const Kvt32u m = 0x80000000u >> (i % 32);
        w[i / 32] = bits[i - start] == '1' ? w[i / 32] | m : w[i / 32] & ~m;
    }
    return w;
}

// Decodes one code from bit `pos` of `w`; `pos` moves to where the cursor ends.
using Hit = std::pair<KvtStatus, Kvt32s>;
Hit decode(const Table& t, std::vector<Kvt32u>& w, long& pos) {
    Kvt32u* p = w.data() + pos / 32;
    int offset = 31 - int(pos % 32);
    Hit h{kvtStsOk, 12345};
    h.first = kvtiVCHuffmanDecodeOne_1u32s(&p, &offset, &h.second, t.t);
    EXPECT_TRUE(offset >= 0 && offset <= 31) << offset;
    pos = (p - w.data()) * 32 + 31 - offset;
    return h;
}

using Layout = std::map<int, int32_t>;  // word 0 and the non-empty words; all others 0x00F0F101
int32_t leaf(int32_t value, int surplus) { return int32_t(uint32_t(value) << 8) | surplus; }
int32_t pointer(int32_t header) { return (header << 8) | 0x80; }

// The table built from `desc` against `want`, where `over` overrides it.
void expect_layout(const std::vector<int32_t>& desc, bool rl, const Layout& want, const Layout& over = {}) {
    const Table t(desc, rl);
    for (int i = 0; i < (rl ? 262144 : 16384); ++i)
        ASSERT_EQ(t.t[i], over.count(i)   ? over.at(i)
                          : want.count(i) ? want.at(i)
                                          : 0x00F0F101)
            << rl << " word " << i;
}

}  // namespace

TEST(BitMasks, HoldTheLowBitMasks) {
    for (int i = 0; i <= 32; ++i)
        EXPECT_TRUE(_kvtGetBitsMask[i] == uint32_t((uint64_t(1) << i) - 1) &&
                    ownvBitMask[i] == _kvtGetBitsMask[i])
            << i;
}

// The writer every encoder stores through: eight random writes of 1..32 bits from a random offset
// against a bit model. Bits before the cursor keep their values, the byte holding the end is
// cleared after it, later bytes are untouched, and the cursor moves by n.
TEST(ByteCursor, PutBitsMatchesTheBitModel) {
    const auto bit_at = [](const std::vector<uint8_t>& s, size_t i) { return s[i / 8] >> (7 - i % 8) & 1; };
    Rng rng(1);
    for (int trial = 0; trial < 200; ++trial) {
        std::vector<uint8_t> s(48);
        rng.fill(s.data(), s.size(), 0, 255);
        uint8_t* p = s.data();
        int o = rng.uniform(0, 7);
        for (size_t w = 0, pos = size_t(o); w < 8; ++w) {
            const std::vector<uint8_t> before = s;
            const uint32_t value = rng.next(), n = uint32_t(rng.uniform(1, 32));
            const size_t end = pos + n;
            PutBits(&p, &o, int(value), int(n));
            for (size_t i = 0; i < s.size() * 8; ++i) {
                const int want = i < pos || i >= (end + 7) / 8 * 8 ? bit_at(before, i)
                                 : i < end                         ? int(value >> (end - 1 - i)) & 1
                                                                   : 0;
                ASSERT_EQ(bit_at(s, i), want) << "trial " << trial << " write " << w << " bit " << i;
            }
            ASSERT_EQ(size_t(p - s.data()) * 8 + size_t(o), pos = end);
        }
    }
}

// A miss (field 61681) moves the cursor past the bits read: the root's, also across a word end,
// or the root's and the sub-table's where the walk stops.
TEST(VlcDecode, MissesMoveTheCursorPastTheBitsRead) {
    const struct {
        std::vector<int32_t> desc;
        Kvt32u w0;
        long start, end;
    } cases[] = {
        {{0, 1, 4, -1}, ~0u, 0, 4},
        {{0, 1, 4, -1}, ~0u, 31, 35},
        {{0, 2, 2, 3, 0, 0, 0, 0, 1, 7, 9, -1}, 0x07FFFFFFu, 0, 5},
    };
    for (const auto& c : cases) {
        std::vector<Kvt32u> w{c.w0, ~0u};
        long pos = c.start;
        EXPECT_EQ(decode(Table(c.desc, false), w, pos), Hit(kvtStsBadVlcCode, 61681)) << "from " << c.start;
        EXPECT_EQ(pos, c.end) << "from " << c.start;
    }
}

// Codes within the levels decode to their field and consume exactly their bits wherever they
// start in a word (so also across word ends); longer codes report -74 with 61681.
TEST(VlcDecode, RealTablesEveryCodeAtEveryOffset) {
    Rng rng(17);
    int skipped = 0;
    const std::vector<std::vector<int>> splits{{12}, {8, 4}, {5, 4, 4}, {9, 8}, {4, 4, 4, 4, 1}, {0, 9, 8}};
    for (const char* file : {"mpeg2_dct_coeff_b14.tsv", "mpeg2_dct_coeff_b15.tsv", "mpeg4_tcoef_intra.tsv",
                             "mpeg4_tcoef_inter.tsv"})
        for (int mode = 0; mode < 4 * int(splits.size()); ++mode) {
            const bool rl = mode & 2;
            const std::vector<int>& widths = splits[size_t(mode / 4)];
            const long total = std::accumulate(widths.begin(), widths.end(), 0);
            SCOPED_TRACE(std::string(file) + " mode " + std::to_string(mode));
            const std::vector<Symbol> symbols = load_symbols(file, mode & 1);
            ASSERT_GT(symbols.size(), 100u);
            const Table t(rl ? as_run_level(describe(widths, symbols)) : describe(widths, symbols), rl);
            // A sub-table header (only headers hold 0..31 here) at a multiple of 256 is not
            // followed by the plain builder; those tables are left to the layout tests.
            int headers = 0;
            for (int i = 256; !rl && i < 16384; i += 256) headers += t.t[i] >= 0 && t.t[i] < 32;
            skipped += headers > 0;
            if (headers) continue;
            for (const Symbol& s : symbols)
                for (long start = 0, len = long(s.bits.size()); start < 32; ++start) {
                    std::vector<Kvt32u> w = pack(s.bits, size_t(start), rng);
                    long pos = start;
                    ASSERT_EQ(decode(t, w, pos),
                              (len <= total ? Hit(kvtStsOk, s.field) : Hit(kvtStsBadVlcCode, 61681)))
                        << s.bits << " from bit " << start;
                    ASSERT_TRUE(len > total || pos == start + len)
                        << s.bits << " from bit " << start << " to " << pos;
                }
        }
    // B.15 signed and both TCOEF tables (signed or not) at 8+4 need 16 or more sub-tables.
    EXPECT_EQ(skipped, 5);
}

// Descriptions that both constructors must lay out identically, but where `run_level` says.
TEST(VlcLayout, HandMadeDescriptions) {
    // Root width 8, sub-tables of 4 bits (17 words) from word 257: prefix 15's header is at word
    // 512. A second code under that prefix meets the pointer 0x20080; the plain builder does not
    // follow it and writes at root index 1 (the code's last 4 bits), the run/level builder does.
    std::vector<int32_t> at512{0, 2, 8, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 17};
    Layout plain512{{0, 8}};
    for (int k = 0; k < 16; ++k) {
        at512.insert(at512.end(), {k << 4, 100 + k});
        plain512.insert(
            {{1 + k, pointer(257 + 17 * k)}, {257 + 17 * k, 4}, {258 + 17 * k, leaf(100 + k, 0)}});
    }
    at512.insert(at512.end(), {(15 << 4) | 1, 99, -1});
    plain512[2] = leaf(99, 0);
    const struct {
        const char* what;
        std::vector<int32_t> desc;
        Layout want, run_level;
    } cases[] = {
        {"empty groups, any negative end", {0, 2, 3, 5, 0, 0, -7}, {{0, 3}}, {}},
        // Widths 1+2: the code under prefix 1 comes first, so its sub-table is placed first.
        {"sub-tables in order of first need",
         {0, 2, 1, 2, 0, 0, 2, 7, 70, 0, 90, -1},
         {{0, 1}, {1, pointer(8)}, {2, pointer(3)}, {3, 2}, {7, leaf(70, 0)}, {8, 2}, {9, leaf(90, 0)}},
         {}},
        // 1011 meets the leaf of code 1 at the root and is written at root index 3 (its
        // second-level bits), over code 1's copy there.
        {"leaf keeps the walk in its table",
         {0, 2, 2, 2, 2, 1, 1, 1, 3, 0, 0, 1, 11, 2, -1},
         {{0, 2}, {3, leaf(3, 1)}, {4, leaf(2, 0)}},
         {}},
        // The 5-bit code creates nothing, not even its first-level sub-table.
        {"too long ignored",
         {0, 2, 2, 2, 1, 1, 6, 0, 0, 0, 1, 0, 9, -1},
         {{0, 2}, {3, leaf(6, 1)}, {4, leaf(6, 1)}},
         {}},
        {"no levels: word 0 still set, records ignored", {0, 0, 1, 1, 5, -1}, {{0, 1}}, {}},
        {"header at 512", at512, plain512, {{2, pointer(274)}, {514, leaf(99, 0)}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        expect_layout(c.desc, false, c.want);
        expect_layout(as_run_level(c.desc), true, c.want, c.run_level);
    }
    // Run/level leaf: only the run's low byte is kept and the level fills the upper 16 bits.
    expect_layout({0, 1, 1, 1, 1, 0x1A3, -2, -1}, true, {{0, 1}, {2, int32_t(0xFFFEA300u)}});
}

// Widths 4, 2, 3 and 9-bit codes: ten second-level tables (5 words) and 21 third-level ones (9
// words) from word 17 put the next third-level header at word 256. The plain builder does not
// follow the pointer to it and stays in the second-level table of 4 entries, where index 4 of
// the code 0 11 100 lies past the end, on the header of the table after it (word 22): that code
// is ignored (a miss), every other code decodes, and the run/level builder places it.
TEST(VlcLayout, CodesStayInsideTheTableTheWalkKeeps) {
    std::vector<Symbol> symbols;
    const auto add = [&](int root, int second, int third) {
        const int code = root << 5 | second << 3 | third;
        std::string bits;
        for (int b = 8; b >= 0; --b) bits += char('0' + (code >> b & 1));
        symbols.push_back({bits, 1000 + int32_t(symbols.size())});
    };
    for (int second = 0; second < 2; ++second)
        for (int root = 0; root < 10; ++root) add(root, second, 0);
    add(0, 2, 0);
    add(0, 3, 0);  // opens the table at word 256
    add(0, 3, 4);
    const std::vector<int32_t> desc = describe({4, 2, 3}, symbols);
    for (const bool rl : {false, true}) {
        SCOPED_TRACE(rl ? "run/level" : "plain");
        const Table t(rl ? as_run_level(desc) : desc, rl);
        EXPECT_EQ(t.t[22], 3);
        EXPECT_EQ(t.t[256], 3);
        Rng rng(3);
        for (const Symbol& s : symbols) {
            std::vector<Kvt32u> w = pack(s.bits, 0, rng);
            long pos = 0;
            const bool ignored = !rl && &s == &symbols.back();
            EXPECT_EQ(decode(t, w, pos), ignored ? Hit(kvtStsBadVlcCode, 61681) : Hit(kvtStsOk, s.field))
                << s.bits;
            EXPECT_EQ(pos, 9) << s.bits;
        }
    }
}

// Null checks of both constructors, of the decoder (stream address and table only; nothing is
// written on failure) and of the release, which clears the pointer and accepts a null table.
TEST(VlcStatus, ArgumentChecks) {
    const std::vector<int32_t> desc{0, 1, 4, -1};
    KvtVCHuffmanSpec_32s* sentinel = reinterpret_cast<KvtVCHuffmanSpec_32s*>(&sentinel);
    KvtVCHuffmanSpec_32s* t = sentinel;
    Kvt32u stream[2] = {~0u, 0}, *p = stream;
    int offset = 7, call = 0;
    Kvt32s out = 123;
    const Table table(desc, true);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(table.t) % 32, 0u);
    for (KvtStatus st :
         {kvtiVCHuffmanInitAlloc_32s(nullptr, &t), kvtiVCHuffmanInitAllocRL_32s(nullptr, &t),
          kvtiVCHuffmanInitAlloc_32s(desc.data(), nullptr),
          kvtiVCHuffmanInitAllocRL_32s(desc.data(), nullptr),
          kvtiVCHuffmanDecodeOne_1u32s(nullptr, &offset, &out, table.t),
          kvtiVCHuffmanDecodeOne_1u32s(&p, &offset, &out, nullptr),
          kvtiVCHuffmanDecodeOne_1u32s(nullptr, nullptr, nullptr, nullptr), kvtiVCHuffmanFree_32s(nullptr)})
        EXPECT_EQ(st, kvtStsNullPointer) << "call " << call++;
    EXPECT_TRUE(t == sentinel && p == stream && offset == 7 && out == 123);
    ASSERT_EQ(kvtiVCHuffmanInitAlloc_32s(desc.data(), &t), kvtStsOk);
    EXPECT_TRUE(kvtiVCHuffmanFree_32s(&t) == kvtStsOk && t == nullptr &&
                kvtiVCHuffmanFree_32s(&t) == kvtStsOk);
}

TEST(VlcKernels, WordFillMatchesOracle) {
    compare_tiers<VlcDsp>("fill_32s", init_vlc_dsp, ref::init_vlc, 400,
                          [](Rng& rng, const VlcDsp& d, Outputs& out) {
                              const int n = rng.uniform(0, 300);
                              Guarded<int32_t> buf(size_t(n) + 1, size_t(rng.uniform(0, 3)) * 4);
                              for (size_t i = 0; i < buf.size(); ++i) buf[i] = int32_t(rng.next());
                              d.fill_32s(rng.next(), buf.data(), n);
                              out.add_buffer("words", buf);
                          });
}
