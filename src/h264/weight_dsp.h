// Kernel table of the H.264 explicit weighted average of two predictions (H.264 8.4.2.3), written
// over the second one: dst = clamp(((src1 * w1 + dst * w2 + round) >> shift) + offset).
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

// A block of the slot's width and `height` rows; both blocks share one step.
using WeightFn = KvtStatus (*)(const uint8_t* src1, uint8_t* src2_dst, int32_t step, int32_t w1, int32_t w2,
                               uint32_t shift, int32_t offset, int height);

// Width 2, 4, 8, 16 -> slot 0..3.
constexpr int weight_width_slot(int width) { return width == 16 ? 3 : width >> 2; }

struct WeightDsp {
    WeightFn average[4];       // weights in -32768..32767 (the vector kernels' 16-bit lanes)
    WeightFn average_wide[4];  // any 32-bit weights
};

namespace c {
void init_weight(WeightDsp& d);
}
namespace ref {
void init_weight(WeightDsp& d);
}
namespace sse2 {
void init_weight(WeightDsp& d);
}
namespace avx2 {
void init_weight(WeightDsp& d);
}

void init_weight_dsp(WeightDsp& d, unsigned cpu_flags);

}  // namespace kvt
