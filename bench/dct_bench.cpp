// 8x8 DCT family. Inverse transforms run on dense blocks (every coefficient nonzero, magnitudes
// falling with frequency, as FFmpeg's peer rows `idct8` time them), reduced forms on their
// top-left corner; forward transforms on random pixels (in place: on whatever the previous call
// left, the kernels take the same time on any values). Each iteration transforms the next of
// four blocks, so that one call need not wait for the previous one's stores.
#include <cstdint>
#include <string>

#include "bench.h"
#include "transform/dct_dsp.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

struct Blocks {
    alignas(64) int16_t coef[4][64];
    alignas(64) uint8_t pixels[4][8 * 32];  // step 32
};

// Coefficient blocks with only the top-left n x n nonzero (n = 8: dense).
Blocks make_blocks(int n) {
    Blocks b{};
    uint32_t x = 12345;
    const auto next = [&x] { return (x = x * 1103515245u + 12345u) >> 8; };
    for (auto& blk : b.coef)
        for (int i = 0; i < 64; ++i) {
            const int amp = 300 >> ((i / 8 + i % 8) / 2), v = int(next() % uint32_t(2 * amp + 1)) - amp;
            blk[i] = i / 8 < n && i % 8 < n ? int16_t(v ? v : 1) : 0;
        }
    for (auto& p : b.pixels)
        for (uint8_t& s : p) s = uint8_t(next());
    return b;
}

template <class Call>
void dct_row(const std::string& fn, const std::string& args, int n, const void* (*slot)(const DctDsp&),
             Call call) {
    add_kernel<DctDsp>(fn, args, init_dct_dsp, ref::init_dct, slot,
                       [n, call](const DctDsp& d, benchmark::State& st) {
                           Blocks b = make_blocks(n);
                           unsigned i = 0;
                           for (auto _ : st) {
                               call(d, b, i++ & 3);
                               benchmark::ClobberMemory();
                           }
                       });
}

}  // namespace

KVT_BENCH_ROWS {
    const char* const inv_names[3] = {"kvtiDCT8x8Inv_16s_C1I", "kvtiDCT8x8Inv_4x4_16s_C1I",
                                      "kvtiDCT8x8Inv_2x2_16s_C1I"};
    const char* const inv_args[3] = {"dense 8x8", "dense 4x4", "dense 2x2"};
    const void* (*const inv_slot[3])(const DctDsp&) = {[](const DctDsp& d) { return (const void*)d.inv[0]; },
                                                       [](const DctDsp& d) { return (const void*)d.inv[1]; },
                                                       [](const DctDsp& d) { return (const void*)d.inv[2]; }};
    for (int f = 0; f < 3; ++f)
        dct_row(inv_names[f], inv_args[f], 8 >> f, inv_slot[f],
                [f](const DctDsp& d, Blocks& b, unsigned i) { d.inv[f](b.coef[i]); });
    dct_row(
        "kvtiDCT8x8Inv_16s8u_C1R", "dense 8x8", 8,
        [](const DctDsp& d) { return (const void*)d.inv_to_pixels; },
        [](const DctDsp& d, Blocks& b, unsigned i) { d.inv_to_pixels(b.coef[i], b.pixels[i], 32); });
    dct_row(
        "kvtiDCT8x8Fwd_16s_C1I", "block", 8, [](const DctDsp& d) { return (const void*)d.fwd; },
        [](const DctDsp& d, Blocks& b, unsigned i) { d.fwd(b.coef[i]); });
    dct_row(
        "kvtiDCT8x8Fwd_8u16s_C1R", "pixels", 8,
        [](const DctDsp& d) { return (const void*)d.fwd_from_pixels; },
        [](const DctDsp& d, Blocks& b, unsigned i) { d.fwd_from_pixels(b.pixels[i], 32, b.coef[i]); });
    return 0;
}
