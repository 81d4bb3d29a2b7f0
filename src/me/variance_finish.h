// The scalar finishing formulas the variance and mean kernels of every tier share.
#pragma once

#include <cstdint>

// Internal linkage: each tier file gets its own copy, built with its own target flags.
namespace kvt {
namespace {

// m * m formed as the squares of m's signed 16-bit halves added on 32 bits: m^2 for
// 0 <= m < 32768, m^2 + 1 for -32768 <= m < 0 (the high half is -1).
inline uint32_t square_by_halves(int32_t m) {
    const int32_t lo = int16_t(uint16_t(uint32_t(m))), hi = int16_t(uint16_t(uint32_t(m) >> 16));
    return uint32_t(lo * lo) + uint32_t(hi * hi);
}

// m cut to its low 16 bits, then squared: exactly m^2 for -32768 <= m < 32768.
inline uint32_t square_low_half(int32_t m) {
    const int32_t lo = int16_t(uint16_t(uint32_t(m)));
    return uint32_t(lo * lo);
}

// One quarter of VarMeanDiff from the caller's current sum, the prediction sum p and the sum q
// of squared residuals. The 16x16 form squares by halves, the 16x8 form the low half only.
// Sums and differences wrap on 32 bits; (q - M) is taken unsigned, so it is exact when M wraps.
template <bool by_halves>
inline void varmeandiff_finish(int32_t cur_sum, uint32_t p, uint32_t q, int32_t* var, int32_t* mean) {
    const int32_t m = int32_t(uint32_t(cur_sum) - p) / 8;
    const uint32_t mm = by_halves ? square_by_halves(m) : square_low_half(m);
    *mean = m;
    *var = int32_t(q) > int32_t(mm) ? int32_t((q - mm) >> 6) : 0;
}

// VarMean8x8 of 16-bit samples from the saturated column-sum total s and the wrapped sum of
// squares q: m = s / 8 toward zero, variance = (q - M) >> 6 logical, M by halves, no clamp.
inline void varmean16s_finish(int32_t s, uint32_t q, int32_t* var, int32_t* mean) {
    *mean = s;
    *var = int32_t((q - square_by_halves(s / 8)) >> 6);
}

}  // namespace
}  // namespace kvt
