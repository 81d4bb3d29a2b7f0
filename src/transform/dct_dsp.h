// Kernel table of the 8x8 DCT family, and the fixed-point transform every tier computes.
//
// The transforms are the orthonormal 2-D DCT of IEEE Std 1180 (forward DC = sum / 8, no level
// shift), separated into two 1-D passes of 16-bit x 16-bit products summed in 32 bits, the shape
// of PMADDWD. One basis serves every pass:
//
//     basis(n, k) = round(2^16 * c(k) / 2 * cos((2n + 1) k pi / 16)),  c(0) = 1/sqrt(2), else 1.
//
// Inverse: rows first, out = (sum_k basis(n, k) x[k] + 2^11) >> 12, saturated to 16 bits (the
// intermediate keeps 4 fractional bits: 16 x the 1-D result, exact range +-2048); then columns,
// (sum + 2^19) >> 20, saturated to 16 bits (or to 0..255 for pixels).
// Forward: columns first, out = (sum_n basis(n, k) x[n] + 2^12) >> 13, saturated (3 fractional
// bits), then rows with (sum + 2^18) >> 19. The forward passes first fold their input in 16 bits,
// s = x[n] + x[7 - n] and d = x[n] - x[7 - n] (wrapping), as the SIMD tiers do; sums wrap modulo
// 2^32 like PADDD. With those rules fixed, any grouping of the terms gives the same result, so
// every tier matches the C kernels bit for bit on every input.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

namespace dct {

// round(2^15 * cos(j pi / 16)), j = 0..7: the magnitudes basis() takes its values from.
constexpr int kCos[8] = {32768, 32138, 30274, 27246, 23170, 18205, 12540, 6393};

constexpr int basis(int n, int k) {
    if (k == 0) return kCos[4];              // c(0) / 2 = cos(4 pi / 16) / 2
    int j = (2 * n + 1) * k % 32;            // the angle in sixteenths of pi, within one turn
    if (j > 16) j = 32 - j;                  // cos(2 pi - a) = cos(a)
    return j > 8 ? -kCos[16 - j] : kCos[j];  // cos(pi - a) = -cos(a)
}

constexpr int kInvRowShift = 12, kInvColShift = 20;
constexpr int kFwdColShift = 13, kFwdRowShift = 19;

}  // namespace dct

using DctInPlaceFn = KvtStatus (*)(int16_t* block);
using DctInvToPixelsFn = KvtStatus (*)(const int16_t* src, uint8_t* dst, int dst_step);
using DctFwdFromPixelsFn = KvtStatus (*)(const uint8_t* src, int src_step, int16_t* dst);

struct DctDsp {
    // Inverse in place; [0] the full transform, [1] only the top-left 4x4 coefficients may be
    // nonzero, [2] only the top-left 2x2. Each gives the full transform's result on its blocks.
    DctInPlaceFn inv[3];
    DctInvToPixelsFn inv_to_pixels;  // the full inverse saturated to 0..255
    DctInPlaceFn fwd;
    DctFwdFromPixelsFn fwd_from_pixels;
};

namespace c {
void init_dct(DctDsp& d);
}
namespace ref {
void init_dct(DctDsp& d);
}
namespace sse2 {
void init_dct(DctDsp& d);
}
namespace avx2 {
void init_dct(DctDsp& d);
}

void init_dct_dsp(DctDsp& d, unsigned cpu_flags);

}  // namespace kvt
