// Exact half-sample predictions with rounding control r (0 or 1) on bytes, for the MPEG-1/2 and
// H.263/MPEG-4 prediction kernels (both standards use the same formulas):
//   horizontal or vertical half  (a + b + 1 - r) >> 1,   both halves  (a + b + c + d + 2 - r) >> 2.
// Include only from the tier files (*_sse2.cpp, and *_avx2.cpp, where the same intrinsics take the
// VEX encoding). Everything here has internal linkage, so a tier's copy can never stand in for
// another's.
#pragma once

#include <cstdint>
#include <cstring>

#include "common/simd.h"

namespace kvt::hpel {
namespace {

using simd::load4;
using simd::load8;
using simd::store8;
inline __m128i load16(const uint8_t* p) { return simd::load(p); }
inline void store16(uint8_t* p, __m128i v) { simd::store(p, v); }
inline void store4(uint8_t* p, __m128i v) {
    const int32_t x = _mm_cvtsi128_si32(v);
    std::memcpy(p, &x, 4);
}

// PAVGB is (a + b + 1) >> 1; r = 1 takes off the half that an odd a + b rounded up.
template <int r>
inline __m128i avg2(__m128i a, __m128i b) {
    const __m128i up = _mm_avg_epu8(a, b);
    if constexpr (r == 0)
        return up;
    else
        return _mm_sub_epi8(up, _mm_and_si128(_mm_xor_si128(a, b), _mm_set1_epi8(1)));
}

// The average of a horizontal pair and whether its sum was odd: half of a both-halves
// prediction, which the next row reuses.
struct Pair {
    __m128i avg, odd;
};
inline Pair pair(__m128i a, __m128i b) { return {_mm_avg_epu8(a, b), _mm_xor_si128(a, b)}; }

// (a + b + c + d + 2 - r) >> 2 from the pairs (a, b) and (c, d). With h1, h2 the rounded-up pair
// averages, o1, o2 the pairs' odd bits and PAVGB(h1, h2) = u (all bits taken at bit 0):
//   r = 0: u - (o1 | o2) & (h1 ^ h2),   r = 1: u - ((h1 ^ h2) | (o1 & o2));
// both checked against the formula for all 2^32 inputs.
template <int r>
inline __m128i avg4(const Pair& top, const Pair& bot) {
    const __m128i diff = _mm_xor_si128(top.avg, bot.avg);
    __m128i fix;
    if constexpr (r == 0)
        fix = _mm_and_si128(_mm_or_si128(top.odd, bot.odd), diff);
    else
        fix = _mm_or_si128(diff, _mm_and_si128(top.odd, bot.odd));
    return _mm_sub_epi8(_mm_avg_epu8(top.avg, bot.avg), _mm_and_si128(fix, _mm_set1_epi8(1)));
}

// One row of a W-wide block (W = 4, 8 or 16) in the low bytes of a register. Packing two 8-wide
// rows into one register costs more in loads and shuffles than it saves in arithmetic.
template <int W>
inline __m128i load_row(const uint8_t* p) {
    static_assert(W == 4 || W == 8 || W == 16, "rows are 4, 8 or 16 samples");
    if constexpr (W == 16)
        return load16(p);
    else if constexpr (W == 8)
        return load8(p);
    else
        return load4(p);
}

template <int W>
inline void store_row(uint8_t* p, __m128i v) {
    if constexpr (W == 16)
        store16(p, v);
    else if constexpr (W == 8)
        store8(p, v);
    else
        store4(p, v);
}

// Calls row(src_y, src_y+1, dst_y, y) for the rows y of an H-row block, four at a time, each
// address a base plus a scaled step.
template <int H, class Row>
inline void for_rows(const uint8_t* src, intptr_t ss, uint8_t* dst, intptr_t ds, Row row) {
    static_assert(H % 4 == 0, "blocks of 4, 8 or 16 rows");
    const intptr_t ss3 = 3 * ss, ds3 = 3 * ds;
#pragma GCC unroll 4
    for (int y = 0; y < H; y += 4, src += 4 * ss, dst += 4 * ds) {
        row(src, src + ss, dst, y);
        row(src + ss, src + 2 * ss, dst + ds, y + 1);
        row(src + 2 * ss, src + ss3, dst + 2 * ds, y + 2);
        row(src + ss3, src + 4 * ss, dst + ds3, y + 3);
    }
}

// Predictions of a W-wide block, row by row from the top; half_h and half_v pick the phase, nb is
// the distance of the horizontal neighbour. Reads only the samples the phase needs; the vertical
// half carries the lower row (or its pair) into the next row.
template <int W, bool half_h, bool half_v, int r, int nb = 1>
class Predictor {
public:
    explicit Predictor(const uint8_t* top) {
        if constexpr (half_v && half_h)
            prev_ = pair(load_row<W>(top), load_row<W>(top + nb));
        else if constexpr (half_v)
            prev_.avg = load_row<W>(top);
    }

    // The prediction of the row at p, whose lower neighbour row is at below.
    __m128i row(const uint8_t* p, const uint8_t* below) {
        if constexpr (!half_v && !half_h) {
            return load_row<W>(p);
        } else if constexpr (!half_v) {
            return avg2<r>(load_row<W>(p), load_row<W>(p + nb));
        } else if constexpr (!half_h) {
            const __m128i top = prev_.avg;
            prev_.avg = load_row<W>(below);
            return avg2<r>(top, prev_.avg);
        } else {
            const Pair top = prev_;
            prev_ = pair(load_row<W>(below), load_row<W>(below + nb));
            return avg4<r>(top, prev_);
        }
    }

private:
    Pair prev_{};
};

// The W x H prediction at src written to dst.
template <int W, int H, bool half_h, bool half_v, int r>
inline void predict_block(const uint8_t* src, intptr_t src_step, uint8_t* dst, intptr_t dst_step) {
    Predictor<W, half_h, half_v, r> pred(src);
    for_rows<H>(src, src_step, dst, dst_step, [&](const uint8_t* p, const uint8_t* below, uint8_t* d, int) {
        store_row<W>(d, pred.row(p, below));
    });
}

}  // namespace
}  // namespace kvt::hpel
