// H.264 transforms and quantizers at QP 28 on dense blocks (compare FFmpeg's h264_idct4_add,
// h264_idct4_dc_add and the luma DC dequant-transform of checkasm's h264dsp and h264dsp_own).
#include <algorithm>
#include <cstdint>
#include <string>

#include "bench.h"
#include "common/cpu.h"
#include "h264/quant_dsp.h"
#include "h264/tables.h"
#include "h264/transform_dsp.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

constexpr int kQP = 28;
const int16_t* const kFactors = h264::InvQuantCoef[kQP].data();

// Eight sets of blocks, filled with small levels (or residual samples); successive calls take
// successive sets, so that no call waits for the previous one's results (the kernels work in
// place).
struct Data {
    alignas(16) int16_t c[16], t[16], scan[16];
    alignas(16) uint8_t pred[64], dst[64];
};
struct Sets {
    Data set[8];
    Sets() {
        uint32_t x = 99;
        const auto next = [&x] { return int((x = x * 1103515245u + 12345u) >> 24); };
        for (Data& d : set) {
            for (int i = 0; i < 16; ++i)
                d.c[i] = int16_t(next() % 61 - 30), d.t[i] = int16_t(next() - 128), d.scan[i] = int16_t(i);
            for (uint8_t& v : d.pred) v = uint8_t(next());
        }
    }
};

template <class Dsp, class Slot, class Call>
void row(const std::string& fn, const std::string& args, void (*init)(Dsp&, unsigned), void (*init_ref)(Dsp&),
         Slot slot, Call call) {
    add_kernel<Dsp>(
        fn, args, init, init_ref, [slot](const Dsp& d) { return (const void*)slot(d); },
        [slot, call](const Dsp& d, benchmark::State& st) {
            Sets sets;
            const auto k = slot(d);
            unsigned i = 0;
            for (auto _ : st) {
                benchmark::DoNotOptimize(call(k, sets.set[i++ & 7]));
                benchmark::ClobberMemory();
            }
        });
}

template <class Slot, class Call>
void inverse(const std::string& fn, const std::string& args, Slot slot, Call call) {
    row<TransformDsp>(fn, args, init_transform_dsp, ref::init_transform, slot, call);
}
template <class Slot, class Call>
void forward(const std::string& fn, const std::string& args, Slot slot, Call call) {
    row<QuantDsp>(fn, args, init_quant_dsp, ref::init_quant, slot, call);
}

// The residual with add, kernel in use and exported function, timed the checkasm way
// (bench.h): the prediction in place in the destination, as FFmpeg's h264_idct4_add
// works; four calls a sample on four of the eight sets (each call writes its block).
void ticks_rows(const std::string& args, bool ac) {
    const std::string name = "kvtiDequantTransformResidualAndAdd_H264_16s_C1I/" + args;
    add_ticks_row(name + "/kernel", [ac] {
        Sets s;
        const TransformDsp d = table_in_use(init_transform_dsp);
        ResidualAddFn k = ac ? d.residual_add : d.residual_dc_add;
        benchmark::DoNotOptimize(k);
        return checkasm_sample_ticks([&](unsigned i) {
            Data* b = s.set + (i & 1) * 4;
            for (int j = 0; j < 4; ++j) k(b[j].dst, b[j].c, kFactors, b[j].dst, 16, 16);
        });
    });
    add_ticks_row(name + "/front", [ac] {
        Sets s;
        const int has_ac = ac;  // a local: kept in a register across the calls
        return checkasm_sample_ticks([&](unsigned i) {
            Data* b = s.set + (i & 1) * 4;
            for (int j = 0; j < 4; ++j)
                kvtiDequantTransformResidualAndAdd_H264_16s_C1I(b[j].dst, b[j].c, nullptr, b[j].dst, 16, 16,
                                                                kQP, has_ac);
        });
    });
}

// The luma DC transform in use, four calls a sample on four blocks restored before each sample
// (it works in place; the peer's h264_luma_dc_dequant_idct writes a separate output).
void luma_dc_ticks_row() {
    add_ticks_row("kvtiTransformDequantLumaDC_H264_16s_C1I/QP 28/kernel", [] {
        Sets s;
        const auto k = table_in_use(init_transform_dsp).luma_dc;
        alignas(16) int16_t blocks[4][16];
        return checkasm_sample_ticks(
            [&](unsigned) {
                for (auto& b : blocks) k(b, kQP);
            },
            [&] {
                for (int j = 0; j < 4; ++j) std::copy(s.set[j].c, s.set[j].c + 16, blocks[j]);
            });
    });
}

KVT_BENCH_ROWS {
    ticks_rows("AC", true);
    ticks_rows("DC-only", false);
    luma_dc_ticks_row();
    inverse(
        "kvtiDequantTransformResidualAndAdd_H264_16s_C1I", "AC",
        [](const TransformDsp& d) { return d.residual_add; },
        [](auto k, Data& b) { return k(b.pred, b.c, kFactors, b.dst, 16, 16); });
    inverse(
        "kvtiDequantTransformResidualAndAdd_H264_16s_C1I", "DC only",
        [](const TransformDsp& d) { return d.residual_dc_add; },
        [](auto k, Data& b) { return k(b.pred, b.c, kFactors, b.dst, 16, 16); });
    inverse(
        "kvtiDequantTransformResidual_H264_16s_C1I", "AC", [](const TransformDsp& d) { return d.residual; },
        [](auto k, Data& b) { return k(b.c, 8, nullptr, kFactors); });
    inverse(
        "kvtiDequantTransformResidual_H264_16s_C1I", "DC only",
        [](const TransformDsp& d) { return d.residual_dc; },
        [](auto k, Data& b) { return k(b.c, 8, nullptr, kFactors); });
    inverse(
        "kvtiTransformDequantLumaDC_H264_16s_C1I", "", [](const TransformDsp& d) { return d.luma_dc; },
        [](auto k, Data& b) { return k(b.c, kQP); });
    inverse(
        "kvtiTransformDequantChromaDC_H264_16s_C1I", "", [](const TransformDsp& d) { return d.chroma_dc; },
        [](auto k, Data& b) { return k(b.c, kQP); });
    inverse(
        "kvtiTransformPrediction_H264_8u16s_C1", "",
        [](const TransformDsp& d) { return d.transform_prediction; },
        [](auto k, Data& b) { return k(b.pred, 16, b.t); });
    inverse(
        "kvtiDequantTransformResidual_SISP_H264_16s_C1I", "SP",
        [](const TransformDsp& d) { return d.sisp_residual; },
        [](auto k, Data& b) { return k(b.c, b.t, nullptr, 1, kQP, kQP, 0); });
    inverse(
        "kvtiTransformDequantChromaDC_SISP_H264_16s_C1I", "SP",
        [](const TransformDsp& d) { return d.sisp_chroma_dc; },
        [](auto k, Data& b) { return k(b.c, b.t, kQP, kQP, 0); });
    forward(
        "kvtiTransformQuantResidual_H264_16s_C1I", "intra", [](const QuantDsp& d) { return d.residual; },
        [](auto k, Data& b) {
            int8_t n;
            uint8_t last;
            return k(b.c, kQP, &n, true, b.scan, &last);
        });
    forward(
        "kvtiTransformQuantLumaDC_H264_16s_C1I", "transform", [](const QuantDsp& d) { return d.luma_dc; },
        [](auto k, Data& b) {
            int8_t n;
            uint8_t last;
            return k(b.c, b.t, kQP, &n, true, b.scan, &last);
        });
    forward(
        "kvtiTransformQuantChromaDC_H264_16s_C1I", "transform", [](const QuantDsp& d) { return d.chroma_dc; },
        [](auto k, Data& b) {
            int8_t n;
            return k(b.c, b.t, kQP, &n, true, true);
        });
    return 0;
}

}  // namespace
