// VLC tables: decode rate (codes per second) of the MPEG-2 B.14 coefficient table at one and
// two levels, table construction, and the word fill against its SIMD twin.
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench.h"
#include "bitstream/vlc_dsp.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

struct Entry {
    std::string code;  // without the sign bit
    int run, level;    // ESC and EOB: runs 200 and 201, level 0
};

// ISO/IEC 13818-2 Table B.14 (DCT coefficients table zero), from tables/.
const std::vector<Entry>& b14() {
    static const std::vector<Entry> table = [] {
        const std::string path = std::string(KVT_TABLES_DIR) + "/mpeg2_dct_coeff_b14.tsv";
        std::ifstream in(path);
        std::string header, code, run, level;
        while (std::getline(in, header) && header.rfind('#', 0) == 0) continue;  // provenance line(s)
        std::vector<Entry> out;
        while (in >> code >> run >> level) {
            if (run == "EOB" || run == "ESC")
                out.push_back({code, run == "EOB" ? 201 : 200, 0});
            else
                out.push_back({code, std::stoi(run), std::stoi(level)});
        }
        if (out.size() != 113) throw std::runtime_error("cannot read " + path);
        return out;
    }();
    return table;
}

struct Symbol {
    std::string bits;
    int run, level;
};

// Every code with its sign bit appended (none for ESC and EOB), up to max_len bits.
std::vector<Symbol> b14_symbols(size_t max_len) {
    std::vector<Symbol> out;
    for (const Entry& e : b14()) {
        const std::string& c = e.code;
        if (e.level == 0)
            out.push_back({c, e.run, 0});
        else
            out.insert(out.end(), {{c + "0", e.run, e.level}, {c + "1", e.run, -e.level}});
    }
    std::vector<Symbol> kept;
    for (const Symbol& s : out)
        if (s.bits.size() <= max_len) kept.push_back(s);
    return kept;
}

std::vector<int32_t> describe(const std::vector<int32_t>& widths, const std::vector<Symbol>& symbols,
                              bool run_level) {
    std::vector<int32_t> d{0, int32_t(widths.size())};
    d.insert(d.end(), widths.begin(), widths.end());
    for (size_t len = 1; len <= 17; ++len) {
        const size_t at = d.size();
        d.push_back(0);
        for (const Symbol& s : symbols) {
            if (s.bits.size() != len) continue;
            ++d[at];
            d.push_back(int32_t(std::stoul(s.bits, nullptr, 2)));
            if (run_level)
                d.insert(d.end(), {s.run, s.level});
            else
                d.push_back(s.level * 256 + s.run);
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
        if (run_level)
            kvtiVCHuffmanInitAllocRL_32s(desc.data(), &table);
        else
            kvtiVCHuffmanInitAlloc_32s(desc.data(), &table);
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
            if (run_level)
                kvtiVCHuffmanInitAllocRL_32s(desc.data(), &table);
            else
                kvtiVCHuffmanInitAlloc_32s(desc.data(), &table);
            benchmark::DoNotOptimize(table);
            kvtiVCHuffmanFree_32s(&table);
        }
    };
}

}  // namespace

KVT_BENCH_ROWS {
    // Whole-call figures of the exported functions (the decoder has no kernel table).
    add_column("kvtiVCHuffmanDecodeOne_1u32s", "MPEG-2 B.14, plain, one 12-bit level", "front",
               decode_rate({12}, false));
    add_column("kvtiVCHuffmanDecodeOne_1u32s", "MPEG-2 B.14, plain, levels 9+8", "front",
               decode_rate({9, 8}, false));
    add_column("kvtiVCHuffmanDecodeOne_1u32s", "MPEG-2 B.14, run/level, one 17-bit level", "front",
               decode_rate({17}, true));
    add_column("kvtiVCHuffmanDecodeOne_1u32s", "MPEG-2 B.14, run/level, levels 9+8", "front",
               decode_rate({9, 8}, true));
    add_column("kvtiVCHuffmanInitAlloc_32s", "MPEG-2 B.14, levels 9+8", "front", build({9, 8}, false));
    add_column("kvtiVCHuffmanInitAllocRL_32s", "MPEG-2 B.14, levels 9+8", "front", build({9, 8}, true));
    // The builder's word fill: a replicated leaf, a plain table, a run/level table.
    for (int n : {64, 16384, 262144})
        add_kernel<VlcDsp>(
            "VCHuffman table fill (internal)", std::to_string(n) + " words", init_vlc_dsp, ref::init_vlc,
            [](const VlcDsp& d) { return (const void*)d.fill_32s; },
            [n](const VlcDsp& d, benchmark::State& st) {
                std::vector<int32_t> words(size_t(n) + 8);
                for (auto _ : st) {
                    d.fill_32s(0x00F0F101u, words.data() + 1, n);
                    benchmark::ClobberMemory();
                }
            });
    return 0;
}
