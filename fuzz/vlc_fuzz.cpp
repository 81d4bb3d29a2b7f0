// Fuzz target for the VLC tables: the input chooses the levels and a prefix code (canonical
// codes from Kraft-valid lengths), the table is built, and the rest of the input is decoded
// until the cursor leaves the stream. The stream sits in a heap buffer with exactly one extra
// word of look-ahead, so the sanitizer reports any read past that word.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "bitstream/word_cursor.h"
#include "kvtvc.h"

namespace {

struct Input {
    const uint8_t* p;
    size_t n;
    uint8_t byte() {
        if (!n) return 0;
        --n;
        return *p++;
    }
};

struct Code {
    uint32_t bits;
    int len;
    int32_t run, level, value;  // value: the field a decode must report
};

constexpr int kMaxLen = 24;

// Up to 48 codes with lengths accepted only while the Kraft sum stays at most 1, then
// canonical code words in order of length: a prefix code.
std::vector<Code> make_codes(Input& in, int max_len) {
    std::vector<Code> codes;
    uint64_t kraft = 0;  // in units of 2^-kMaxLen
    const int count = 1 + in.byte() % 48;
    for (int i = 0; i < count; ++i) {
        const int len = 1 + in.byte() % max_len;
        const uint64_t share = uint64_t(1) << (kMaxLen - len);
        if (kraft + share > (uint64_t(1) << kMaxLen)) continue;
        kraft += share;
        // Distinct runs make every field distinct; the field 61681 (run 241) cannot occur.
        const int32_t run = int32_t(codes.size()), level = int8_t(in.byte()) * 3 + 1;
        codes.push_back({0, len, run, level, level * 256 + run});
    }
    std::stable_sort(codes.begin(), codes.end(), [](const Code& a, const Code& b) { return a.len < b.len; });
    uint32_t next = 0;
    for (size_t i = 0; i < codes.size(); ++i) {
        if (i) next = (next + 1) << (codes[i].len - codes[i - 1].len);
        codes[i].bits = next;
    }
    return codes;
}

std::vector<int32_t> describe(const std::vector<int32_t>& widths, const std::vector<Code>& codes, bool run_level) {
    std::vector<int32_t> d{0, int32_t(widths.size())};
    d.insert(d.end(), widths.begin(), widths.end());
    const int longest = codes.empty() ? 0 : codes.back().len;
    for (int len = 1; len <= longest; ++len) {
        const size_t at = d.size();
        d.push_back(0);
        for (const Code& c : codes) {
            if (c.len != len) continue;
            ++d[at];
            d.push_back(int32_t(c.bits));
            if (run_level) d.insert(d.end(), {c.run, c.level});
            else d.push_back(c.value);
        }
    }
    d.push_back(-1);
    return d;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input in{data, size};
    const uint8_t mode = in.byte();
    std::vector<int32_t> widths;
    int total = 0, widest = 0;
    for (int i = 0, levels = 1 + mode % 4; i < levels; ++i) {
        const int w = 1 + in.byte() % 8;
        widths.push_back(w);
        total += w;
        widest = std::max(widest, w);
    }
    // Reads stay within two words when the levels add up to 32 bits or fewer.
    if (total > 32) return 0;
    const std::vector<Code> codes = make_codes(in, std::min(kMaxLen, total + 2));
    // Every sub-table must fit; the plain block is the small one.
    const size_t worst = 1 + (size_t(1) << widths[0]) +
                         codes.size() * (widths.size() - 1) * ((size_t(1) << widest) + 1) + (size_t(1) << widest);
    const bool run_level = (mode & 0x10) || worst > 16384;
    const std::vector<int32_t> desc = describe(widths, codes, run_level);
    KvtVCHuffmanSpec_32s* table = nullptr;
    const KvtStatus built = run_level ? kvtiVCHuffmanInitAllocRL_32s(desc.data(), &table)
                                      : kvtiVCHuffmanInitAlloc_32s(desc.data(), &table);
    if (built != kvtStsOk) abort();

    const size_t words = std::max<size_t>(1, in.n / 4);
    Kvt32u* stream = static_cast<Kvt32u*>(std::malloc((words + 1) * 4));  // + one look-ahead word
    std::memset(stream, 0, (words + 1) * 4);
    std::memcpy(stream, in.p, std::min(in.n, words * 4));
    Kvt32u* p = stream;
    int offset = 31 - mode % 32;
    while (p < stream + words) {
        const kvt::WordCursor before{p, offset};
        Kvt32s out = 0;
        const KvtStatus st = kvtiVCHuffmanDecodeOne_1u32s(&p, &offset, &out, table);
        if (offset < 0 || offset > 31) abort();
        const long moved = long(p - before.word) * 32 + before.offset - offset;
        if (st == kvtStsBadVlcCode) {
            if (out != 61681 || moved < widths[0] || moved > total) abort();
            continue;
        }
        if (st != kvtStsOk) abort();
        // Run/level tables hold every code as written; the decoded code must be the one read.
        if (!run_level) continue;
        const auto it = std::find_if(codes.begin(), codes.end(), [&](const Code& c) { return c.value == out; });
        if (it == codes.end() || it->len > total || moved != it->len) abort();
        if (kvt::wc_show(before, it->len) != it->bits) abort();
    }
    std::free(stream);
    kvtiVCHuffmanFree_32s(&table);
    return 0;
}
