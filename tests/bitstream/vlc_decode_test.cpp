// VLC tables built from real code tables (MPEG-2 B.14/B.15, MPEG-4 TCOEF) at several level
// splits: every code at every bit offset, and random streams of codes decoded back.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "checkasm.h"
#include "kvtvc.h"
#include "tsv.h"

using namespace kvt::test;

namespace {

constexpr Kvt32s kMissing = 61681;

struct Symbol {
    std::string bits;
    int32_t value;  // plain records
    int32_t run;    // run/level records; MPEG-4 "last" is folded in as run + 64
    int32_t level;
};

// The file's rows as symbols, with the sign bit appended ("0" positive, "1" negative) when
// `signed_codes`. ESC and EOB rows carry no sign; they get runs that no event uses.
std::vector<Symbol> load_symbols(const std::string& file, bool signed_codes) {
    std::vector<Symbol> out;
    const std::vector<TsvRow> rows = read_table(file);
    for (size_t i = 0; i < rows.size(); ++i) {
        const TsvRow& r = rows[i];
        const int32_t id = int32_t(i) + 1;
        if (r["run"] == "ESC" || r["run"] == "EOB") {
            out.push_back({r["code"], id, r["run"] == "ESC" ? 200 : 201, 0});
            continue;
        }
        const int32_t run = r.num("run") + (r.cells.count("last") ? 64 * r.num("last") : 0);
        const int32_t level = r.num("level");
        if (!signed_codes) {
            out.push_back({r["code"], id, run, level});
            continue;
        }
        out.push_back({r["code"] + "0", id, run, level});
        out.push_back({r["code"] + "1", -id, run, -level});
    }
    return out;
}

int32_t expected_field(const Symbol& s, bool run_level) { return run_level ? s.level * 256 + s.run : s.value; }

// Code description: word 0 unused, the levels, then one group per length up to the longest.
std::vector<int32_t> describe(const std::vector<int>& widths, const std::vector<Symbol>& symbols, bool run_level) {
    std::vector<int32_t> d{0, int32_t(widths.size())};
    d.insert(d.end(), widths.begin(), widths.end());
    size_t longest = 0;
    for (const Symbol& s : symbols) longest = std::max(longest, s.bits.size());
    for (size_t len = 1; len <= longest; ++len) {
        const size_t count_at = d.size();
        d.push_back(0);
        for (const Symbol& s : symbols) {
            if (s.bits.size() != len) continue;
            ++d[count_at];
            d.push_back(int32_t(bits_value(s.bits)));
            if (run_level) d.insert(d.end(), {s.run, s.level});
            else d.push_back(s.value);
        }
    }
    d.push_back(-1);
    return d;
}

class Table {
public:
    Table(const std::vector<int32_t>& desc, bool run_level) {
        const KvtStatus st = run_level ? kvtiVCHuffmanInitAllocRL_32s(desc.data(), &t_)
                                       : kvtiVCHuffmanInitAlloc_32s(desc.data(), &t_);
        EXPECT_EQ(st, kvtStsOk);
    }
    ~Table() { kvtiVCHuffmanFree_32s(&t_); }
    const KvtVCHuffmanSpec_32s* get() const { return t_; }

private:
    KvtVCHuffmanSpec_32s* t_ = nullptr;
};

// Bit strings packed into 32-bit words, first bit into bit 31 of word 0; unused bits random.
class WordWriter {
public:
    explicit WordWriter(Rng& rng) : rng_(rng) {}
    void put(const std::string& bits) {
        for (char c : bits) put_bit(c == '1');
    }
    void put_random(int n) {
        for (int i = 0; i < n; ++i) put_bit(rng_.coin());
    }
    uint64_t size() const { return bits_; }
    // The stream plus `pad` random words after the last one touched.
    std::vector<Kvt32u> words(int pad) {
        std::vector<Kvt32u> w = words_;
        for (int i = 0; i < pad; ++i) w.push_back(rng_.next());
        const int tail = int(bits_ % 32);
        if (tail) w[bits_ / 32] |= rng_.next() >> tail;  // the bits after the stream's end
        return w;
    }

private:
    void put_bit(bool b) {
        if (bits_ % 32 == 0) words_.push_back(0);
        if (b) words_.back() |= 0x80000000u >> (bits_ % 32);
        ++bits_;
    }
    Rng& rng_;
    std::vector<Kvt32u> words_;
    uint64_t bits_ = 0;
};

// Position of a cursor as a bit count from the start of `base`.
uint64_t bit_position(const Kvt32u* base, const Kvt32u* word, int offset) {
    return uint64_t(word - base) * 32 + uint64_t(31 - offset);
}

struct Case {
    const char* file;
    bool run_level;
    bool signed_codes;
    std::vector<int> widths;
};

std::vector<Case> all_cases() {
    const char* files[] = {"mpeg2_dct_coeff_b14.tsv", "mpeg2_dct_coeff_b15.tsv", "mpeg4_tcoef_intra.tsv",
                           "mpeg4_tcoef_inter.tsv"};
    const std::vector<std::vector<int>> splits{{12}, {8, 4}, {5, 4, 4}, {9, 8}, {4, 4, 4, 4, 1}, {0, 9, 8}};
    std::vector<Case> out;
    for (const char* f : files)
        for (bool rl : {false, true})
            for (bool sign : {false, true})
                for (const auto& w : splits) out.push_back({f, rl, sign, w});
    return out;
}

// Whether a sub-table header sits at a multiple of 256 words (the plain builder does not follow
// pointers to it). Only headers hold values 0..31 here: leaves of the test symbols are never
// 0..31 (no symbol has the value 0) and pointers end in 0x80.
bool header_at_multiple_of_256(const KvtVCHuffmanSpec_32s* t) {
    for (int i = 256; i < 16384; i += 256)
        if (t[i] >= 0 && t[i] < 32) return true;
    return false;
}

// Decodes one code placed at bit offset 31 of a zeroed stream.
KvtStatus decode_alone(const std::string& bits, const KvtVCHuffmanSpec_32s* t, Kvt32s* out) {
    Rng rng(1);
    WordWriter wr(rng);
    wr.put(bits);
    std::vector<Kvt32u> stream = wr.words(1);
    Kvt32u* p = stream.data();
    int off = 31;
    return kvtiVCHuffmanDecodeOne_1u32s(&p, &off, out, t);
}

std::string describe_case(const Case& c) {
    std::string s = std::string(c.file) + (c.run_level ? " run/level" : " plain") + (c.signed_codes ? " signed" : "");
    for (int w : c.widths) s += " " + std::to_string(w);
    return s;
}

}  // namespace

// Codes within the levels decode to their value and consume exactly their bits, wherever they
// start in a word; longer codes are missing from the table and report -74 with 61681.
TEST(VlcDecode, EveryCodeAtEveryBitOffset) {
    Rng rng(17);
    int skipped = 0;  // plain tables that meet the header-index rule (next test)
    for (const Case& c : all_cases()) {
        SCOPED_TRACE(describe_case(c));
        const std::vector<Symbol> symbols = load_symbols(c.file, c.signed_codes);
        ASSERT_GT(symbols.size(), 100u);
        const Table table(describe(c.widths, symbols, c.run_level), c.run_level);
        if (!c.run_level && header_at_multiple_of_256(table.get())) {
            ++skipped;
            continue;
        }
        int total = 0;
        for (int w : c.widths) total += w;
        for (const Symbol& s : symbols) {
            for (int offset = 0; offset < 32; ++offset) {
                WordWriter wr(rng);
                wr.put_random(31 - offset);
                wr.put(s.bits);
                std::vector<Kvt32u> stream = wr.words(2);
                Kvt32u* p = stream.data();
                int off = offset;
                Kvt32s out = 0;
                const KvtStatus st = kvtiVCHuffmanDecodeOne_1u32s(&p, &off, &out, table.get());
                if (int(s.bits.size()) > total) {
                    ASSERT_EQ(st, kvtStsBadVlcCode) << s.bits;
                    ASSERT_EQ(out, kMissing);
                    continue;
                }
                ASSERT_EQ(st, kvtStsOk) << s.bits << " at offset " << offset;
                ASSERT_EQ(out, expected_field(s, c.run_level)) << s.bits;
                ASSERT_EQ(bit_position(stream.data(), p, off), uint64_t(31 - offset + s.bits.size())) << s.bits;
                ASSERT_TRUE(off >= 0 && off <= 31);
            }
        }
    }
    // B.15 signed and both TCOEF tables (signed or not) at 8+4 need 16 or more sub-tables.
    EXPECT_EQ(skipped, 5);
}

// B.15 with sign bits at 8+4 needs more than 15 sub-tables, and the 16th has its header at
// word 512. The plain builder does not follow the pointer to it, so the later codes of that
// prefix land in the root at their second-level index and overwrite what was there; the
// run/level builder keeps every code.
TEST(VlcDecode, PlainBuilderSkipsHeaderAt512OnB15) {
    const std::vector<Symbol> symbols = load_symbols("mpeg2_dct_coeff_b15.tsv", true);
    const Table plain(describe({8, 4}, symbols, false), false);
    const Table run_level(describe({8, 4}, symbols, true), true);
    EXPECT_EQ(plain.get()[512], 4);
    EXPECT_EQ(run_level.get()[512], 4);
    std::vector<std::string> wrong;
    for (const Symbol& s : symbols) {
        if (s.bits.size() > 12) continue;
        Kvt32s out = 0;
        EXPECT_EQ(decode_alone(s.bits, run_level.get(), &out), kvtStsOk);
        EXPECT_EQ(out, expected_field(s, true));
        if (decode_alone(s.bits, plain.get(), &out) != kvtStsOk || out != s.value) wrong.push_back(s.bits);
    }
    // The sub-tables placed last serve the long codes under 0000; ESC is among the victims.
    EXPECT_FALSE(wrong.empty());
    EXPECT_NE(std::find(wrong.begin(), wrong.end(), "000001"), wrong.end());
    for (const std::string& w : wrong) EXPECT_EQ(w.compare(0, 4, "0000"), 0) << w;
}

// Streams of random codes decode back to the symbols that made them, ending exactly at the end.
TEST(VlcDecode, RandomStreamsRoundTrip) {
    Rng rng(99);
    for (const Case& c : all_cases()) {
        int total = 0;
        for (int w : c.widths) total += w;
        if (total < 17) continue;  // only splits that hold every code
        SCOPED_TRACE(describe_case(c));
        const std::vector<Symbol> symbols = load_symbols(c.file, c.signed_codes);
        const Table table(describe(c.widths, symbols, c.run_level), c.run_level);
        if (!c.run_level && header_at_multiple_of_256(table.get())) continue;
        WordWriter wr(rng);
        const int start = rng.uniform(0, 31);
        wr.put_random(31 - start);
        std::vector<size_t> sent;
        for (int i = 0; i < 3000; ++i) {
            sent.push_back(size_t(rng.uniform(0, int(symbols.size()) - 1)));
            wr.put(symbols[sent.back()].bits);
        }
        std::vector<Kvt32u> stream = wr.words(1);
        Kvt32u* p = stream.data();
        int off = start;
        for (size_t i : sent) {
            Kvt32s out = 0;
            ASSERT_EQ(kvtiVCHuffmanDecodeOne_1u32s(&p, &off, &out, table.get()), kvtStsOk);
            ASSERT_EQ(out, expected_field(symbols[i], c.run_level)) << symbols[i].bits;
        }
        EXPECT_EQ(bit_position(stream.data(), p, off), wr.size());
    }
}
