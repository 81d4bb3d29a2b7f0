// Kernel table of the 8x8 DCT family, and the fixed-point transform every tier computes.
//
// The transforms are the orthonormal 2-D DCT of IEEE Std 1180 (forward DC = sum / 8, no level
// shift), separated into two 1-D passes of 16-bit x 16-bit products summed in 32 bits, the shape
// of PMADDWD. One basis serves every pass:
//
//     basis(n, k) = round(2^14 * c(k) / 2 * cos((2n + 1) k pi / 16)),  c(0) = 1/sqrt(2), else 1.
//
// Inverse: rows first, t = (sum_k basis(n, k) x[k] + 2^9) >> 10 saturated to 16 bits (16 x the
// 1-D result: 4 fractional bits, range +-2048); then columns, (sum + 2^17) >> 18, saturated to
// 16 bits (or to 0..255 for pixels).
// Forward: columns first, from the 16-bit saturating folds s = x[n] + x[7 - n] and
// d = x[n] - x[7 - n]: t = (sum_{n<4} basis(n, k) (k even ? s : d)[n] + 2^10) >> 11, saturated
// (8 x the 1-D result); then rows the same way with (sum + 2^16) >> 17.
// The basis is small enough that no sum can leave 32 bits whatever the 16-bit input, so every
// value is defined by rounding and saturation alone and every tier matches the C kernels bit for
// bit.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

namespace dct {

// round(2^13 * cos(j pi / 16)), j = 0..7: the magnitudes basis() takes its values from.
constexpr int kCos[8] = {8192, 8035, 7568, 6811, 5793, 4551, 3135, 1598};

constexpr int basis(int n, int k) {
    if (k == 0) return kCos[4];              // c(0) / 2 = cos(4 pi / 16) / 2
    int j = (2 * n + 1) * k % 32;            // the angle in sixteenths of pi, within one turn
    if (j > 16) j = 32 - j;                  // cos(2 pi - a) = cos(a)
    return j > 8 ? -kCos[16 - j] : kCos[j];  // cos(pi - a) = -cos(a)
}

constexpr int kInvRowShift = 10, kInvColShift = 18;
constexpr int kFwdColShift = 11, kFwdRowShift = 17;

// The largest sum of one pass: eight 16-bit inputs times their factors, plus the rounding.
constexpr long long largest_sum() {
    long long worst = 0;
    for (int n = 0; n < 8; ++n) {
        long long s = 0;
        for (int k = 0; k < 8; ++k) s += 32768LL * (basis(n, k) < 0 ? -basis(n, k) : basis(n, k));
        worst = s > worst ? s : worst;
    }
    return worst + (1 << (kInvColShift - 1));
}
static_assert(largest_sum() < (1LL << 31), "a pass could overflow 32 bits");

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
