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

// A unit is one register of a W-wide block: 16 / W rows (W = 4, 8 or 16), top row first.
template <int W>
inline __m128i load_unit(const uint8_t* p, intptr_t step) {
    if constexpr (W == 16) {
        return load16(p);
    } else if constexpr (W == 8) {
        return _mm_unpacklo_epi64(load8(p), load8(p + step));
    } else {
        const __m128i r01 = _mm_unpacklo_epi32(load4(p), load4(p + step));
        const __m128i r23 = _mm_unpacklo_epi32(load4(p + 2 * step), load4(p + 3 * step));
        return _mm_unpacklo_epi64(r01, r23);
    }
}

template <int W>
inline void store_unit(uint8_t* p, intptr_t step, __m128i v) {
    if constexpr (W == 16) {
        store16(p, v);
    } else if constexpr (W == 8) {
        store8(p, v);
        store8(p + step, _mm_unpackhi_epi64(v, v));
    } else {
        for (int i = 0; i < 4; ++i, p += step, v = _mm_srli_si128(v, 4)) store4(p, v);
    }
}

// Predictions of a W-wide block at p, one unit per next() call, top to bottom; half_h and half_v
// pick the phase, nb is the distance of the horizontal neighbour. Reads only the samples the phase
// needs. One-row units carry the lower row (or its pair) into the next call.
template <int W, bool half_h, bool half_v, int r, int nb = 1>
class Predictor {
public:
    static constexpr int kRows = 16 / W;

    Predictor(const uint8_t* p, intptr_t step) : p_(p), step_(step) {
        if constexpr (kRows == 1 && half_v && half_h)
            prev_ = pair(load_unit<W>(p, step), load_unit<W>(p + nb, step));
        else if constexpr (kRows == 1 && half_v)
            prev_.avg = load_unit<W>(p, step);
    }

    __m128i next() {
        const uint8_t* p = p_;
        p_ += kRows * step_;
        const uint8_t* below = p + step_;
        if constexpr (!half_v && !half_h) {
            return load_unit<W>(p, step_);
        } else if constexpr (!half_v) {
            return avg2<r>(load_unit<W>(p, step_), load_unit<W>(p + nb, step_));
        } else if constexpr (!half_h) {
            const __m128i low = load_unit<W>(below, step_);
            const __m128i top = kRows == 1 ? prev_.avg : load_unit<W>(p, step_);
            prev_.avg = low;
            return avg2<r>(top, low);
        } else {
            const Pair low = pair(load_unit<W>(below, step_), load_unit<W>(below + nb, step_));
            const Pair top = kRows == 1 ? prev_ : pair(load_unit<W>(p, step_), load_unit<W>(p + nb, step_));
            prev_ = low;
            return avg4<r>(top, low);
        }
    }

private:
    const uint8_t* p_;
    intptr_t step_;
    Pair prev_{};
};

// The W x H prediction at src written to dst.
template <int W, int H, bool half_h, bool half_v, int r>
inline void predict_block(const uint8_t* src, intptr_t src_step, uint8_t* dst, intptr_t dst_step) {
    Predictor<W, half_h, half_v, r> pred(src, src_step);
    constexpr int rows = Predictor<W, half_h, half_v, r>::kRows;
#pragma GCC unroll 16
    for (int y = 0; y < H; y += rows, dst += rows * dst_step) store_unit<W>(dst, dst_step, pred.next());
}

}  // namespace
}  // namespace kvt::hpel
