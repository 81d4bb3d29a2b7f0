// H.264 deblocking of one macroblock's edges on a smooth picture where every line is filtered
// (alpha 40, beta 10, tc0 2, as the peer's h264_deblock_smooth rows). Peer figures are per edge:
// compare a row with the sum over its edges (luma: 4 edges of 16 lines, chroma: 2 of 8), e.g.
// "bS 4 + 2": h264_{h,v}_loop_filter_luma_intra_smooth + 3 x h264_{h,v}_loop_filter_luma_smooth.
#include <cstdint>
#include <string>
#include <vector>

#include "bench.h"
#include "h264/deblock_dsp.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

constexpr int kStep = 64;

// A ramp of one per sample with a step of two more across every fourth column and row, in four
// copies: consecutive calls work on different copies (as the peer's bench does), so that one
// call's stores do not hold up the next call's loads.
struct Picture {
    static constexpr int kCopies = 4, kRows = 40;
    std::vector<uint8_t> storage = std::vector<uint8_t>(kCopies * kStep * kRows + 64);
    uint8_t* mb[kCopies];
    Picture() {
        uint8_t* base = storage.data() + (64 - reinterpret_cast<uintptr_t>(storage.data()) % 64) % 64;
        for (int k = 0; k < kCopies; ++k) {
            uint8_t* b = base + k * kStep * kRows;
            for (int y = 0; y < kRows; ++y)
                for (int x = 0; x < kStep; ++x)
                    b[y * kStep + x] = uint8_t(40 + x + y + 2 * (x / 4) + 2 * (y / 4));
            mb[k] = b + 16 * kStep + 16;
        }
        original = storage;
    }
    void restore() { storage = original; }  // same size: no allocation
    std::vector<uint8_t> original;
};

struct Config {
    const char* name;
    uint8_t bs[16];
};
const Config kConfigs[] = {{"bS 4 + 2", {4, 4, 4, 4, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2}},
                           {"bS 2", {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2}}};

void row(const char* function, DeblockFn DeblockDsp::*slot, const Config& c) {
    add_kernel<DeblockDsp>(
        function, c.name, init_deblock_dsp, ref::init_deblock,
        [slot](const DeblockDsp& d) { return (const void*)(d.*slot); },
        [slot, &c](const DeblockDsp& d, benchmark::State& st) {
            static Picture pic;
            static const uint8_t alpha[2] = {40, 40}, beta[2] = {10, 10},
                                 tc0[16] = {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2};
            const DeblockFn k = d.*slot;
            int i = 0;
            for (auto _ : st) {
                k(pic.mb[i++ & 3], kStep, alpha, beta, tc0, c.bs);
                benchmark::ClobberMemory();
            }
        });
    // As the peer's smooth-edge rows: four calls a sample, each on its own copy of the picture,
    // the copies restored before every sample.
    add_checkasm_column(function, c.name, [slot, &c] {
        const DeblockFn k = table_in_use(init_deblock_dsp).*slot;
        Picture pic;
        static const uint8_t alpha[2] = {40, 40}, beta[2] = {10, 10},
                             tc0[16] = {2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2};
        const uint8_t* const bs = c.bs;  // a local: kept in a register across the calls
        return checkasm_sample_ticks(
            [&](unsigned) {
                for (uint8_t* mb : pic.mb) k(mb, kStep, alpha, beta, tc0, bs);
            },
            [&] { pic.restore(); });
    });
}

}  // namespace

KVT_BENCH_ROWS {
    for (const Config& c : kConfigs) {
        row("kvtiFilterDeblockingLuma_VerEdge_H264", &DeblockDsp::luma_ver, c);
        row("kvtiFilterDeblockingLuma_HorEdge_H264", &DeblockDsp::luma_hor, c);
        row("kvtiFilterDeblockingChroma_VerEdge_H264", &DeblockDsp::chroma_ver, c);
        row("kvtiFilterDeblockingChroma_HorEdge_H264", &DeblockDsp::chroma_hor, c);
    }
    return 0;
}
