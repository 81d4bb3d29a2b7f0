// VLC tables: decode rate (codes per second) of the MPEG-2 B.14 coefficient table at one and
// two levels, table construction, and the word fill against its SIMD twin.
#include <string>
#include <vector>

#include "bench.h"
#include "bitstream/vlc_kernels.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

struct Entry {
    const char* code;  // without the sign bit
    int run, level;    // ESC and EOB: runs 200 and 201, level 0
};

// ISO/IEC 13818-2 Table B.14 (DCT coefficients table zero).
const Entry kB14[] = {
    {"11", 0, 1}, {"0100", 0, 2}, {"00101", 0, 3}, {"0000110", 0, 4}, {"00100110", 0, 5},
    {"00100001", 0, 6}, {"0000001010", 0, 7}, {"000000011101", 0, 8}, {"000000011000", 0, 9},
    {"000000010011", 0, 10}, {"000000010000", 0, 11}, {"0000000011010", 0, 12}, {"0000000011001", 0, 13},
    {"0000000011000", 0, 14}, {"0000000010111", 0, 15}, {"00000000011111", 0, 16},
    {"00000000011110", 0, 17}, {"00000000011101", 0, 18}, {"00000000011100", 0, 19},
    {"00000000011011", 0, 20}, {"00000000011010", 0, 21}, {"00000000011001", 0, 22},
    {"00000000011000", 0, 23}, {"00000000010111", 0, 24}, {"00000000010110", 0, 25},
    {"00000000010101", 0, 26}, {"00000000010100", 0, 27}, {"00000000010011", 0, 28},
    {"00000000010010", 0, 29}, {"00000000010001", 0, 30}, {"00000000010000", 0, 31},
    {"000000000011000", 0, 32}, {"000000000010111", 0, 33}, {"000000000010110", 0, 34},
    {"000000000010101", 0, 35}, {"000000000010100", 0, 36}, {"000000000010011", 0, 37},
    {"000000000010010", 0, 38}, {"000000000010001", 0, 39}, {"000000000010000", 0, 40}, {"011", 1, 1},
    {"000110", 1, 2}, {"00100101", 1, 3}, {"0000001100", 1, 4}, {"000000011011", 1, 5},
    {"0000000010110", 1, 6}, {"0000000010101", 1, 7}, {"000000000011111", 1, 8}, {"000000000011110", 1, 9},
    {"000000000011101", 1, 10}, {"000000000011100", 1, 11}, {"000000000011011", 1, 12},
    {"000000000011010", 1, 13}, {"000000000011001", 1, 14}, {"0000000000010011", 1, 15},
    {"0000000000010010", 1, 16}, {"0000000000010001", 1, 17}, {"0000000000010000", 1, 18}, {"0101", 2, 1},
    {"0000100", 2, 2}, {"0000001011", 2, 3}, {"000000010100", 2, 4}, {"0000000010100", 2, 5},
    {"00111", 3, 1}, {"00100100", 3, 2}, {"000000011100", 3, 3}, {"0000000010011", 3, 4}, {"00110", 4, 1},
    {"0000001111", 4, 2}, {"000000010010", 4, 3}, {"000111", 5, 1}, {"0000001001", 5, 2},
    {"0000000010010", 5, 3}, {"000101", 6, 1}, {"000000011110", 6, 2}, {"0000000000010100", 6, 3},
    {"000100", 7, 1}, {"000000010101", 7, 2}, {"0000111", 8, 1}, {"000000010001", 8, 2}, {"0000101", 9, 1},
    {"0000000010001", 9, 2}, {"00100111", 10, 1}, {"0000000010000", 10, 2}, {"00100011", 11, 1},
    {"0000000000011010", 11, 2}, {"00100010", 12, 1}, {"0000000000011001", 12, 2}, {"00100000", 13, 1},
    {"0000000000011000", 13, 2}, {"0000001110", 14, 1}, {"0000000000010111", 14, 2}, {"0000001101", 15, 1},
    {"0000000000010110", 15, 2}, {"0000001000", 16, 1}, {"0000000000010101", 16, 2},
    {"000000011111", 17, 1}, {"000000011010", 18, 1}, {"000000011001", 19, 1}, {"000000010111", 20, 1},
    {"000000010110", 21, 1}, {"0000000011111", 22, 1}, {"0000000011110", 23, 1}, {"0000000011101", 24, 1},
    {"0000000011100", 25, 1}, {"0000000011011", 26, 1}, {"0000000000011111", 27, 1},
    {"0000000000011110", 28, 1}, {"0000000000011101", 29, 1}, {"0000000000011100", 30, 1},
    {"0000000000011011", 31, 1}, {"10", 201, 0}, {"000001", 200, 0},
};

struct Symbol {
    std::string bits;
    int run, level;
};

// Every code with its sign bit appended (none for ESC and EOB), up to max_len bits.
std::vector<Symbol> b14_symbols(size_t max_len) {
    std::vector<Symbol> out;
    for (const Entry& e : kB14) {
        const std::string c = e.code;
        if (e.level == 0) out.push_back({c, e.run, 0});
        else out.insert(out.end(), {{c + "0", e.run, e.level}, {c + "1", e.run, -e.level}});
    }
    std::vector<Symbol> kept;
    for (const Symbol& s : out)
        if (s.bits.size() <= max_len) kept.push_back(s);
    return kept;
}

std::vector<int32_t> describe(const std::vector<int32_t>& widths, const std::vector<Symbol>& symbols, bool run_level) {
    std::vector<int32_t> d{0, int32_t(widths.size())};
    d.insert(d.end(), widths.begin(), widths.end());
    for (size_t len = 1; len <= 17; ++len) {
        const size_t at = d.size();
        d.push_back(0);
        for (const Symbol& s : symbols) {
            if (s.bits.size() != len) continue;
            ++d[at];
            d.push_back(int32_t(std::stoul(s.bits, nullptr, 2)));
            if (run_level) d.insert(d.end(), {s.run, s.level});
            else d.push_back(s.level * 256 + s.run);
        }
    }
    d.push_back(-1);
    return d;
}

// A stream of n codes drawn with probability 2^-length, as a well-matched code sees them
// (short codes dominate), from a fixed linear congruential sequence.
std::vector<Kvt32u> make_stream(const std::vector<Symbol>& symbols, int n) {
    std::vector<uint32_t> cumulative;
    uint32_t sum = 0;
    for (const Symbol& s : symbols) cumulative.push_back(sum += 1u << (17 - s.bits.size()));
    std::vector<Kvt32u> words(1, 0);
    int used = 0;
    uint32_t state = 12345;
    for (int i = 0; i < n; ++i) {
        state = state * 1664525u + 1013904223u;
        const uint32_t pick = uint32_t((uint64_t(state) * sum) >> 32);
        size_t k = 0;
        while (cumulative[k] <= pick) ++k;
        for (char c : symbols[k].bits) {
            if (used == 32) words.push_back(0), used = 0;
            if (c == '1') words.back() |= 0x80000000u >> used;
            ++used;
        }
    }
    words.push_back(0);  // look-ahead
    return words;
}

constexpr int kCodes = 4096;

// One code per iteration; the cursor rewinds at the end of the stream.
Body decode_rate(std::vector<int32_t> widths, bool run_level) {
    return [widths, run_level](benchmark::State& state) {
        int total = 0;
        for (int w : widths) total += w;
        const std::vector<Symbol> symbols = b14_symbols(size_t(total));
        const std::vector<int32_t> desc = describe(widths, symbols, run_level);
        KvtVCHuffmanSpec_32s* table = nullptr;
        if (run_level) kvtiVCHuffmanInitAllocRL_32s(desc.data(), &table);
        else kvtiVCHuffmanInitAlloc_32s(desc.data(), &table);
        std::vector<Kvt32u> stream = make_stream(symbols, kCodes);
        Kvt32u* p = stream.data();
        int offset = 31, left = kCodes;
        for (auto _ : state) {
            Kvt32s value;
            kvtiVCHuffmanDecodeOne_1u32s(&p, &offset, &value, table);
            benchmark::DoNotOptimize(value);
            if (--left == 0) p = stream.data(), offset = 31, left = kCodes;
        }
        state.SetItemsProcessed(state.iterations());
        kvtiVCHuffmanFree_32s(&table);
    };
}

Body build(std::vector<int32_t> widths, bool run_level) {
    return [widths, run_level](benchmark::State& state) {
        const std::vector<int32_t> desc = describe(widths, b14_symbols(17), run_level);
        for (auto _ : state) {
            KvtVCHuffmanSpec_32s* table = nullptr;
            if (run_level) kvtiVCHuffmanInitAllocRL_32s(desc.data(), &table);
            else kvtiVCHuffmanInitAlloc_32s(desc.data(), &table);
            benchmark::DoNotOptimize(table);
            kvtiVCHuffmanFree_32s(&table);
        }
    };
}

template <class Fill>
Body fill_words(int n, Fill fill) {
    return [n, fill](benchmark::State& state) {
        std::vector<int32_t> words(size_t(n) + 8);
        for (auto _ : state) {
            fill(0x00F0F101u, words.data() + 1, n);
            benchmark::ClobberMemory();
        }
    };
}

}  // namespace

KVT_BENCH_ROWS {
    add_row("kvtiVCHuffmanDecodeOne_1u32s/B14/plain/12", decode_rate({12}, false), {});
    add_row("kvtiVCHuffmanDecodeOne_1u32s/B14/plain/9+8", decode_rate({9, 8}, false), {});
    add_row("kvtiVCHuffmanDecodeOne_1u32s/B14/RL/17", decode_rate({17}, true), {});
    add_row("kvtiVCHuffmanDecodeOne_1u32s/B14/RL/9+8", decode_rate({9, 8}, true), {});
    add_row("kvtiVCHuffmanInitAlloc_32s/B14/9+8", build({9, 8}, false), {});
    add_row("kvtiVCHuffmanInitAllocRL_32s/B14/9+8", build({9, 8}, true), {});
#if KVT_HAVE_SSE2
    for (int n : {64, 16384, 262144})
        add_row("vlc fill_32s/" + std::to_string(n), fill_words(n, fill_32s_ref), fill_words(n, fill_32s_sse2));
#endif
    return 0;
}
