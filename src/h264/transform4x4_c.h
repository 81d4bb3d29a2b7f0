// Scalar building blocks of the H.264 4x4 transforms, for the portable kernels (*_c.cpp) only:
// every includer gets its own internal copy, so the oracle build stays unvectorised.
//
// 16-bit blocks wrap at 16 bits after each pass, as the stored coefficients do; that is the
// arithmetic every tier reproduces.
#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>

#include "common/arith.h"
#include "common/kernel.h"
#include "kvtvc.h"

namespace kvt::KVT_C_NS {

// Applies the 4-point transform f(v, stride) to the rows, then to the columns of a 4x4 block.
template <class T, class F>
static inline void rows_then_columns(T* b, F f) {
    for (int r = 0; r < 4; ++r) f(b + 4 * r, 1);
    for (int col = 0; col < 4; ++col) f(b + col, 4);
}

// Inverse core transform (H.264 8.5.12.2).
static inline void inverse_core(int16_t* v, int s) {
    const int a0 = v[0], a1 = v[s], a2 = v[2 * s], a3 = v[3 * s];
    const int e = a0 + a2, f = a0 - a2, g = asr(a1, 1) - a3, h = a1 + asr(a3, 1);
    v[0] = int16_t(e + h), v[s] = int16_t(f + g), v[2 * s] = int16_t(f - g), v[3 * s] = int16_t(e - h);
}

// Forward core transform (the inverse's counterpart in the encoder).
static inline void forward_core(int16_t* v, int s) {
    const int p0 = v[0], p1 = v[s], p2 = v[2 * s], p3 = v[3 * s];
    const int a = p0 + p3, b = p1 + p2, c = p0 - p3, d = p1 - p2;
    v[0] = int16_t(a + b), v[s] = int16_t(2 * c + d), v[2 * s] = int16_t(a - b),
    v[3 * s] = int16_t(c - 2 * d);
}

// 4-point Hadamard transform with rows (1,1,1,1), (1,1,-1,-1), (1,-1,-1,1), (1,-1,1,-1); its own
// inverse up to scale, and since it only adds, the order of the passes does not matter.
template <class T>
static inline void hadamard(T* v, int s) {
    const int a = v[0], b = v[s], c = v[2 * s], d = v[3 * s];
    v[0] = T(a + b + c + d), v[s] = T(a + b - c - d), v[2 * s] = T(a - b - c + d),
    v[3 * s] = T(a - b + c - d);
}

// The 2x2 transform of chroma DC values in raster order.
template <class T>
static inline void hadamard2x2(T* v) {
    const T a = v[0], b = v[1], c = v[2], d = v[3];
    v[0] = T(a + b + c + d), v[1] = T(a - b + c - d), v[2] = T(a + b - c - d), v[3] = T(a - b - c + d);
}

// (x + 32) >> 6 of a 16-bit value, exactly.
static inline int16_t round6(int16_t x) { return int16_t(asr(x + 32, 6)); }

constexpr uint8_t clip_u8(int v) { return uint8_t(v < 0 ? 0 : v > 255 ? 255 : v); }

// Level of coefficient c: (|c| * mf + round) >> shift with the sign of c.
static inline int16_t quantize(int16_t c, int mf, int round, int shift) {
    const int m = (std::abs(int(c)) * mf + round) >> shift;
    return int16_t(c < 0 ? -m : m);
}

// Reports n quantized levels: -13 when one exceeds 2063 in magnitude; otherwise the count of the
// nonzero ones (negated when lv[0] is nonzero) and, with a scan table, the largest of its entries
// with zero levels masked to 0, masked to 7 bits.
static inline KvtStatus report_levels(const int16_t* lv, int n, int8_t* count, const int16_t* scan,
                                      uint8_t* last) {
    int nonzero = 0, top = INT_MIN;
    for (int i = 0; i < n; ++i) {
        if (std::abs(int(lv[i])) > 2063) return kvtStsLevelOverflow;
        nonzero += lv[i] != 0;
        if (scan) top = std::max(top, lv[i] ? int(scan[i]) : 0);
    }
    *count = int8_t(lv[0] ? -nonzero : nonzero);
    if (scan) *last = uint8_t(top & 127);
    return kvtStsOk;
}

}  // namespace kvt::KVT_C_NS
