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

struct Code {
    uint32_t bits;
    int len;
    int32_t run, level;  // distinct runs make every field level * 256 + run distinct, never 61681
};

constexpr int kMaxLen = 24;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto byte = [&]() -> uint8_t { return size ? (--size, *data++) : 0; };
    const uint8_t mode = byte();
    std::vector<int32_t> widths;
    int total = 0, widest = 0;
    for (int i = 0, levels = 1 + mode % 4; i < levels; ++i) {
        widths.push_back(1 + byte() % 8);
        total += widths.back();
        widest = std::max(widest, widths.back());
    }
    // Reads stay within two words when the levels add up to 32 bits or fewer.
    if (total > 32) return 0;
    // Up to 48 codes, each length kept only while the Kraft sum stays at most 1, then canonical
    // code words in order of length: a prefix code.
    std::vector<Code> codes;
    uint64_t kraft = 0;  // in units of 2^-kMaxLen
    for (int i = 0, count = 1 + byte() % 48; i < count; ++i) {
        const int len = 1 + byte() % std::min(kMaxLen, total + 2);
        const uint64_t share = uint64_t(1) << (kMaxLen - len);
        if (kraft + share > (uint64_t(1) << kMaxLen)) continue;
        kraft += share;
        codes.push_back({0, len, int32_t(codes.size()), int8_t(byte()) * 3 + 1});
    }
    std::stable_sort(codes.begin(), codes.end(), [](const Code& a, const Code& b) { return a.len < b.len; });
    for (size_t i = 1; i < codes.size(); ++i)
        codes[i].bits = (codes[i - 1].bits + 1) << (codes[i].len - codes[i - 1].len);
    // Every sub-table must fit; the plain block is the small one.
    const size_t worst = 1 + (size_t(1) << widths[0]) +
                         codes.size() * (widths.size() - 1) * ((size_t(1) << widest) + 1) +
                         (size_t(1) << widest);
    const bool run_level = (mode & 0x10) || worst > 16384;
    std::vector<int32_t> desc{0, int32_t(widths.size())};
    desc.insert(desc.end(), widths.begin(), widths.end());
    for (int len = 1; len <= (codes.empty() ? 0 : codes.back().len); ++len) {
        const size_t at = desc.size();
        desc.push_back(0);
        for (const Code& c : codes)
            if (c.len == len) {
                ++desc[at];
                if (run_level)
                    desc.insert(desc.end(), {int32_t(c.bits), c.run, c.level});
                else
                    desc.insert(desc.end(), {int32_t(c.bits), c.level * 256 + c.run});
            }
    }
    desc.push_back(-1);
    KvtVCHuffmanSpec_32s* table = nullptr;
    if ((run_level ? kvtiVCHuffmanInitAllocRL_32s(desc.data(), &table)
                   : kvtiVCHuffmanInitAlloc_32s(desc.data(), &table)) != kvtStsOk)
        abort();

    const size_t words = std::max<size_t>(1, size / 4);
    Kvt32u* stream = static_cast<Kvt32u*>(std::calloc(words + 1, 4));  // + one look-ahead word
    std::memcpy(stream, data, std::min(size, words * 4));
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
        const auto it = std::find_if(codes.begin(), codes.end(),
                                     [&](const Code& c) { return c.level * 256 + c.run == out; });
        if (it == codes.end() || it->len > total || moved != it->len ||
            kvt::wc_show(before, it->len) != it->bits)
            abort();
    }
    std::free(stream);
    kvtiVCHuffmanFree_32s(&table);
    return 0;
}
