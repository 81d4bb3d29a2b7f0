// H.264 inter prediction: luma interpolation at every position (16x16, 8x8, 4x4), chroma at a
// two-dimensional eighth position, the weighted average. The peer rows are FFmpeg's
// put_h264_qpel_{16,8}_mcXY (X = dx, Y = dy), put_h264_chroma_mc8/4 at (3, 5) and
// h264_biweight_16x16.
#include <cstdint>
#include <string>
#include <vector>

#include "bench.h"
#include "h264/interp_dsp.h"
#include "h264/weight_dsp.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

constexpr int kStep = 64;

// A 64x64 plane of pseudo-random samples, 64-byte aligned, and a destination block.
struct Frame {
    std::vector<uint8_t> storage = std::vector<uint8_t>(2 * kStep * 64 + 64);
    uint8_t* base;
    Frame() {
        base = storage.data() + (64 - reinterpret_cast<uintptr_t>(storage.data()) % 64) % 64;
        uint32_t x = 12345;
        for (int i = 0; i < 2 * kStep * 64; ++i) base[i] = uint8_t((x = x * 1103515245u + 12345u) >> 24);
    }
    const uint8_t* src() const { return base + 16 * kStep + 16; }
    uint8_t* dst() const { return base + 64 * kStep; }
};

const Frame& frame() {
    static const Frame f;
    return f;
}

void luma_rows(int w, int h) {
    for (int pos = 0; pos < 16; ++pos) {
        const std::string args = std::to_string(w) + "x" + std::to_string(h) + " mc" +
                                 std::to_string(pos / 4) + std::to_string(pos % 4);
        add_kernel<InterpDsp>(
            "kvtiInterpolateLuma_H264", args, init_interp_dsp, ref::init_interp,
            [w, h, pos](const InterpDsp& d) { return (const void*)luma_kernel(d, w, h, pos); },
            [w, h, pos](const InterpDsp& d, benchmark::State& st) {
                const Frame& f = frame();
                const auto k = luma_kernel(d, w, h, pos);
                for (auto _ : st) {
                    k(f.src(), kStep, f.dst(), kStep, h);
                    benchmark::ClobberMemory();
                }
            });
    }
}

void chroma_row(int w, int h, int dx, int dy) {
    const int wc = width_class(2 * w);
    add_kernel<InterpDsp>(
        "kvtiInterpolateChroma_H264",
        std::to_string(w) + "x" + std::to_string(h) + " (" + std::to_string(dx) + "," + std::to_string(dy) +
            ")",
        init_interp_dsp, ref::init_interp, [wc](const InterpDsp& d) { return (const void*)d.chroma[wc]; },
        [wc, h, dx, dy](const InterpDsp& d, benchmark::State& st) {
            const Frame& f = frame();
            const auto k = d.chroma[wc];
            for (auto _ : st) {
                k(f.src(), kStep, f.dst(), kStep, dx, dy, h);
                benchmark::ClobberMemory();
            }
        });
}

// Explicit bi-prediction weights as an encoder sets them: log2 denominator 5, offset -3.
void weight_row(int w, int h) {
    const int slot = weight_width_slot(w);
    add_kernel<WeightDsp>(
        "kvtiWeightedAverage_H264", std::to_string(w) + "x" + std::to_string(h) + " w 40,-12 shift 6",
        init_weight_dsp, ref::init_weight,
        [slot](const WeightDsp& d) { return (const void*)d.average_small[slot]; },
        [slot, h](const WeightDsp& d, benchmark::State& st) {
            const Frame& f = frame();
            const auto k = d.average_small[slot];
            for (auto _ : st) {
                k(f.src(), f.dst(), kStep, 40, -12, 6, -3, h);
                benchmark::ClobberMemory();
            }
        });
}

}  // namespace

KVT_BENCH_ROWS {
    luma_rows(16, 16);
    luma_rows(8, 8);
    luma_rows(4, 4);
    chroma_row(8, 8, 3, 5);
    chroma_row(4, 4, 3, 5);
    chroma_row(2, 2, 3, 5);
    weight_row(16, 16);
    weight_row(8, 8);
    return 0;
}
