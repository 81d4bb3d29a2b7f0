// Kernel table of H.263 and MPEG-4 prediction and reconstruction (H.263 6.1.2, ISO/IEC 14496-2
// 7.6.2): 8x8 and 16x16 half-sample predictions with rounding control, prediction plus residual
// with saturation, and the rounded-up average of two predictions (B-pictures).
//
// Phase index = (vertical half) * 2 + (horizontal half), as a half-sample vector's odd bits give
// it: 0 FF, 1 HF, 2 FH, 3 HH. With a the sample, b its right neighbour, c the one below, d the one
// below-right and rounding control r (0 or 1):
//   FF a,  HF (a + b + 1 - r) >> 1,  FH (a + c + 1 - r) >> 1,  HH (a + b + c + d + 2 - r) >> 2.
#pragma once

#include <cstdint>

#include "common/kernel.h"
#include "kvtvc.h"

namespace kvt {

constexpr bool recon_half_h(int phase) { return phase & 1; }
constexpr bool recon_half_v(int phase) { return phase & 2; }
constexpr int recon_index(int phase, int r) { return phase * 2 + r; }
// What a slot stands for (the inverse of recon_index), for tables filled from templates.
struct ReconSlot {
    int phase, rounding;
};
constexpr ReconSlot recon_slot_of(int i) { return {i / 2, i % 2}; }
static_assert(round_trips(8, [](int i) {
    return recon_index(recon_slot_of(i).phase, recon_slot_of(i).rounding);
}));

// Prediction only.
using PredictFn = KvtStatus (*)(const uint8_t* src, int src_step, uint8_t* dst, int dst_step);
// Prediction plus residual, saturated: 64 contiguous residuals for 8x8, and for 16x16 four such
// blocks (top-left, top-right, bottom-left, bottom-right).
using ReconFn = KvtStatus (*)(const uint8_t* src, int src_step, const int16_t* res, uint8_t* dst,
                              int dst_step);
// dst = (a + b + 1) >> 1.
using AverageFn = KvtStatus (*)(const uint8_t* a, int a_step, const uint8_t* b, int b_step, uint8_t* dst,
                                int dst_step);

struct ReconDsp {
    PredictFn predict16[8];  // recon_index(phase, rounding)
    PredictFn predict8[8];
    ReconFn recon8[8];
    ReconFn recon16;  // whole-sample prediction
    AverageFn average16, average8;
};

namespace c {
void init_recon(ReconDsp& d);
}
namespace ref {
void init_recon(ReconDsp& d);
}
namespace sse2 {
void init_recon(ReconDsp& d);
}
namespace avx2 {
void init_recon(ReconDsp& d);
}
void init_recon_dsp(ReconDsp& d, unsigned cpu_flags);

}  // namespace kvt
