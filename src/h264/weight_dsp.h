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

// Slots by the size of the parameters, which bounds the intermediate sums the vector kernels
// carry: `small` holds explicit H.264 weighting (small_weights()), `average` any 16-bit weights,
// `average_wide` anything.
struct WeightDsp {
    WeightFn average_small[4];
    WeightFn average[4];
    WeightFn average_wide[4];
};

// Byte weights with |w1| + |w2| <= 128, shift 1..15 and an offset in -16384..16383: the sums stay
// in 16 bits.
constexpr bool small_weights(int32_t w1, int32_t w2, uint32_t shift, int32_t offset) {
    const auto byte = [](int32_t w) { return w >= -128 && w <= 127; };
    const auto mag = [](int32_t w) { return w < 0 ? -w : w; };
    return byte(w1) && byte(w2) && mag(w1) + mag(w2) <= 128 && shift >= 1 && shift <= 15 &&
           offset >= -16384 && offset <= 16383;
}
constexpr bool halfword_weights(int32_t w1, int32_t w2) {
    return w1 >= -32768 && w1 <= 32767 && w2 >= -32768 && w2 <= 32767;
}

namespace c {
void init_weight(WeightDsp& d);
}
namespace ref {
void init_weight(WeightDsp& d);
}
namespace sse2 {
void init_weight(WeightDsp& d);
}
namespace ssse3 {
void init_weight(WeightDsp& d);
}
namespace avx2 {
void init_weight(WeightDsp& d);
}

void init_weight_dsp(WeightDsp& d, unsigned cpu_flags);

}  // namespace kvt
