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
        fill_random(base, 2 * kStep * 64, 12345);
    }
    const uint8_t* src() const { return base + 16 * kStep + 16; }
    uint8_t* dst() const { return base + 64 * kStep; }
};

const Frame& frame() {
    static const Frame f;
    return f;
}

// The checkasm columns time the kernel in use in the peer's layouts: its h264qpel test keeps
// source and destination at a step of the block width, the source 96 bytes into a 16-byte
// aligned buffer; its own chroma and weighting tests use a step of 64.
struct PeerBuffers {
    alignas(16) uint8_t src[2 * 16 * 23];
    alignas(16) uint8_t dst[2 * 16 * 23];
    alignas(16) uint8_t plane[64 * 24];
    alignas(16) uint8_t blocks[4][64 * 16];  // one per call of a sample: in-place kernels
    PeerBuffers() {
        fill_random(src, sizeof src, 777), fill_random(dst, sizeof dst, 778);
        fill_random(plane, sizeof plane, 779), fill_random(blocks[0], sizeof blocks, 780);
    }
};

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
        add_checkasm_column("kvtiInterpolateLuma_H264", args, [w, h, pos] {
            const auto k = luma_kernel(table_in_use(init_interp_dsp), w, h, pos);
            PeerBuffers b;
            const uint8_t* const src = b.src + 96;
            const int width = w, height = h;  // locals: kept in registers across the calls
            return checkasm_ticks([&] { k(src, width, b.dst, width, height); });
        });
    }
}

void chroma_row(int w, int h, int dx, int dy) {
    const int wc = width_class(2 * w);
    const std::string args = std::to_string(w) + "x" + std::to_string(h) + " (" + std::to_string(dx) + "," +
                             std::to_string(dy) + ")";
    add_kernel<InterpDsp>(
        "kvtiInterpolateChroma_H264", args, init_interp_dsp, ref::init_interp,
        [wc](const InterpDsp& d) { return (const void*)d.chroma[wc]; },
        [wc, h, dx, dy](const InterpDsp& d, benchmark::State& st) {
            const Frame& f = frame();
            const auto k = d.chroma[wc];
            for (auto _ : st) {
                k(f.src(), kStep, f.dst(), kStep, dx, dy, h);
                benchmark::ClobberMemory();
            }
        });
    add_checkasm_column("kvtiInterpolateChroma_H264", args, [wc, h, dx, dy] {
        const auto k = table_in_use(init_interp_dsp).chroma[wc];
        PeerBuffers b;
        const uint8_t* const src = b.plane + 8 * 64 + 16;
        const int mx = dx, my = dy, height = h;  // locals: kept in registers across the calls
        return checkasm_ticks([&] { k(src, 64, b.dst, 64, mx, my, height); });
    });
}

// Explicit bi-prediction weights as an encoder sets them: log2 denominator 5, offset -3.
void weight_row(int w, int h) {
    const int slot = weight_width_slot(w);
    const std::string args = std::to_string(w) + "x" + std::to_string(h) + " w 40,-12 shift 6";
    add_kernel<WeightDsp>(
        "kvtiWeightedAverage_H264", args, init_weight_dsp, ref::init_weight,
        [slot](const WeightDsp& d) { return (const void*)d.average_small[slot]; },
        [slot, h](const WeightDsp& d, benchmark::State& st) {
            const Frame& f = frame();
            const auto k = d.average_small[slot];
            for (auto _ : st) {
                k(f.src(), f.dst(), kStep, 40, -12, 6, -3, h);
                benchmark::ClobberMemory();
            }
        });
    // In place: each of a sample's four calls on its own block, as the peer's biweight rows.
    add_checkasm_column("kvtiWeightedAverage_H264", args, [slot, h] {
        const auto k = table_in_use(init_weight_dsp).average_small[slot];
        PeerBuffers b;
        const int height = h;  // a local: kept in a register across the calls
        return checkasm_sample_ticks([&](unsigned) {
            for (int j = 0; j < 4; ++j) k(b.plane, b.blocks[j], 64, 40, -12, 6, -3, height);
        });
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
