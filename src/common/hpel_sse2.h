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
using simd::opaque;
using simd::store8;
inline __m128i load16(const uint8_t* p) { return simd::load(p); }
inline void store16(uint8_t* p, __m128i v) { simd::store(p, v); }
inline void store4(uint8_t* p, __m128i v) {
    const int32_t x = _mm_cvtsi128_si32(v);
    std::memcpy(p, &x, 4);
}

inline __m128i complement(__m128i v) { return _mm_xor_si128(v, _mm_set1_epi8(-1)); }

// PAVGB is (a + b + 1) >> 1; with r = 1, (a + b) >> 1 = ~PAVGB(~a, ~b), since
// 255 - ((510 - a - b + 1) >> 1) rounds the same sum down.
template <int r>
inline __m128i avg2(__m128i a, __m128i b) {
    if constexpr (r == 0)
        return _mm_avg_epu8(a, b);
    else
        return complement(_mm_avg_epu8(complement(a), complement(b)));
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

// The rows of a block at p with step s: row y (a constant once the loops are unrolled) is a group
// base, p plus 0, 4, 8 or 12 steps, plus 0 to 4 steps, which the load or store addresses itself. Each group
// base is one instruction from the arguments.
template <class T>
class Rows {
public:
    // The step times 3 hidden from the optimiser, which would otherwise rebuild each row address
    // from the one before it: a chain of additions that the last rows wait on.
    Rows(T* p, intptr_t s) : p_(p), s_(s), s3_(opaque(3 * s)) {}

    // y from 0 to 16 (the row below a 16-row block is group 12 plus 4 steps).
    T* operator[](int y) const {
        const int group = y < 12 ? y & ~3 : 12, k = y - group;
        T* base = group == 12 ? p_ + 4 * s3_ : p_ + group * s_;
        return k == 3 ? base + s3_ : base + k * s_;
    }

private:
    T* p_;
    intptr_t s_, s3_;
};

// Predictions of a W-wide block, row by row from the top; half_h and half_v pick the phase, nb is
// the distance of the horizontal neighbour. Reads only the samples the phase needs; the vertical
// half carries the lower row (or its pair) into the next row. The neighbours are read through
// their own row addresses (base + nb), so every load is one instruction.
template <int W, bool half_h, bool half_v, int r, int nb = 1>
class Predictor {
public:
    Predictor(const uint8_t* src, intptr_t step) : a_(src, step), b_(half_h ? src + nb : src, step) {
        if constexpr (half_v && half_h)
            prev_ = pair(load_row<W>(a_[0]), load_row<W>(b_[0]));
        else if constexpr (half_v)
            prev_.avg = vertical_row(0);
    }

    // The prediction of row y.
    __m128i row(int y) {
        if constexpr (!half_v && !half_h) {
            return load_row<W>(a_[y]);
        } else if constexpr (!half_v) {
            return avg2<r>(load_row<W>(a_[y]), load_row<W>(b_[y]));
        } else if constexpr (!half_h) {
            const __m128i top = prev_.avg;
            prev_.avg = vertical_row(y + 1);
            if constexpr (r == 0)
                return avg2<0>(top, prev_.avg);
            else
                return complement(_mm_avg_epu8(top, prev_.avg));
        } else {
            const Pair top = prev_;
            prev_ = pair(load_row<W>(a_[y + 1]), load_row<W>(b_[y + 1]));
            return avg4<r>(top, prev_);
        }
    }

private:
    // Row y of a vertical half; with r = 1 kept complemented (see avg2), so that each row is
    // complemented once for the two outputs it takes part in.
    __m128i vertical_row(int y) const {
        const __m128i v = load_row<W>(a_[y]);
        if constexpr (r == 0)
            return v;
        else
            return complement(v);
    }

    Rows<const uint8_t> a_, b_;
    Pair prev_{};
};

// The W x H prediction at src written to dst.
template <int W, int H, bool half_h, bool half_v, int r>
inline void predict_block(const uint8_t* src, intptr_t src_step, uint8_t* dst, intptr_t dst_step) {
    Predictor<W, half_h, half_v, r> pred(src, src_step);
    const Rows<uint8_t> out(dst, dst_step);
#pragma GCC unroll 16
    for (int y = 0; y < H; ++y) store_row<W>(out[y], pred.row(y));
}

}  // namespace
}  // namespace kvt::hpel
