// SSE2 half-sample prediction with the fixed rounding of halfpel.h, and the byte-domain helpers
// the block metrics share.
// Include only from tier files (*_sse2.cpp, *_avx2.cpp): built with -mavx2, the same code is
// VEX-encoded and folds unaligned loads into the instructions that use them.
#pragma once

#include "common/simd.h"
#include "me/halfpel.h"

// Internal linkage: every tier file gets its own copy, built with its own target flags.
namespace kvt::simd {
namespace {

inline __m128i widen_lo(__m128i v) { return _mm_unpacklo_epi8(v, _mm_setzero_si128()); }
inline __m128i widen_hi(__m128i v) { return _mm_unpackhi_epi8(v, _mm_setzero_si128()); }

// PAVGB is exactly (a + b + 1) >> 1, the fixed fh and hf forms. Averaging two such averages
// rounds up twice: avg(avg(a, b), avg(c, d)) exceeds (a + b + c + d + 2) >> 2 by one exactly when
// a + b or c + d is odd and avg(a, b) + avg(c, d) is odd, so that bit is subtracted (verified
// against the formula for all 2^32 inputs).

// avg(a, b) and a ^ b of one row: the half of an hh prediction that the next row reuses.
struct PairAvg {
    __m128i avg, odd;
};

inline PairAvg pair_avg(__m128i a, __m128i b) { return {_mm_avg_epu8(a, b), _mm_xor_si128(a, b)}; }

// (a + b + c + d + 2) >> 2 per byte from the pair of the upper row and the pair of the lower row.
inline __m128i avg4_fixed(const PairAvg& top, const PairAvg& bot) {
    const __m128i carry = _mm_and_si128(_mm_or_si128(top.odd, bot.odd), _mm_xor_si128(top.avg, bot.avg));
    return _mm_sub_epi8(_mm_avg_epu8(top.avg, bot.avg), _mm_and_si128(carry, _mm_set1_epi8(1)));
}

// A row of the current block: aligned loads fold into the instruction that uses them.
template <bool aligned>
inline __m128i load_cur(const uint8_t* p) {
    if constexpr (aligned)
        return load_aligned(p);
    else
        return load(p);
}

// Loads one row of W (8 or 16) bytes; 8-byte rows fill the low half.
template <int W>
inline __m128i load_row(const uint8_t* p) {
    static_assert(W == 8 || W == 16, "rows are 8 or 16 samples");
    if constexpr (W == 16)
        return load(p);
    else
        return load8(p);
}

// Rows y and y + 1 of an 8-wide block in one register (row y in the low half).
inline __m128i load_2rows8(const uint8_t* p, intptr_t step) {
    return _mm_castpd_si128(
        _mm_loadh_pd(_mm_castsi128_pd(load8(p)), reinterpret_cast<const double*>(p + step)));
}

// Fixed-rounding predictions of a block W samples wide, one row per next() call, top to bottom.
// Reads exactly the samples the phase needs: the block, plus one column for hf and hh and one row
// for fh and hh. Vertical phases carry the previous row's loads (or pair averages) forward.
template <int type, int W>
class FixedRows {
public:
    FixedRows(const uint8_t* ref, intptr_t step) : p_(ref), step_(step) {
        if constexpr (type == kMcVertHalf) prev_ = load_row<W>(p_);
        if constexpr (type == kMcBothHalf) top_ = pair_avg(load_row<W>(p_), load_row<W>(p_ + 1));
    }

    __m128i next() {
        const uint8_t* p = p_;
        p_ += step_;
        if constexpr (type == kMcFull) {
            return load_row<W>(p);
        } else if constexpr (type == kMcHorHalf) {
            return _mm_avg_epu8(load_row<W>(p), load_row<W>(p + 1));
        } else if constexpr (type == kMcVertHalf) {
            const __m128i below = load_row<W>(p_), r = _mm_avg_epu8(prev_, below);
            prev_ = below;
            return r;
        } else {
            const PairAvg bot = pair_avg(load_row<W>(p_), load_row<W>(p_ + 1));
            const __m128i r = avg4_fixed(top_, bot);
            top_ = bot;
            return r;
        }
    }

private:
    const uint8_t* p_;
    intptr_t step_;
    __m128i prev_{};
    PairAvg top_{};
};

// The rows of a block four at a time from one base: p, p + s, p + 2s, p + 3s, and p + 4s, the
// first row of the next group. Left to itself the compiler turns p + 2s into (p + s) + s, a
// chain of one addition per row, and sixteen dependent additions sit on the critical path of a
// 16x16 metric. Only 3s is hidden from it (by an empty asm): s, 2s and 4s are scales of an
// addressing mode, so every row is one addressing mode from its group's base and a block's rows
// take three registers (holding 2s, 4s and every group's base as well pushed the metrics into
// saved registers).
class Rows4 {
public:
    Rows4(const uint8_t* p, intptr_t step) : p_(p), s_(step), s3_(3 * step) { asm("" : "+r"(s3_)); }
    // Row k (0..4) of the current group.
    const uint8_t* operator[](int k) const { return k == 3 ? p_ + s3_ : p_ + k * s_; }
    void next() {  // the base moves (hidden too, or every group's base would be a register)
        p_ += 4 * s_;
        asm("" : "+r"(p_));
    }

private:
    const uint8_t* p_;
    intptr_t s_, s3_;
};

// Fixed-rounding predictions of a block W samples wide, four rows per next4() call, top to
// bottom, reading what FixedRows reads. Vertical phases carry the first row of the next group.
template <int type, int W>
class FixedRows4 {
public:
    FixedRows4(const uint8_t* ref, intptr_t step) : r_(ref, step) {
        if constexpr (type == kMcVertHalf) top_.avg = load_row<W>(r_[0]);
        if constexpr (type == kMcBothHalf) top_ = pair_avg(load_row<W>(r_[0]), load_row<W>(r_[0] + 1));
    }

    void next4(__m128i out[4]) {
        for (int k = 0; k < 4; ++k) {
            const uint8_t* p = r_[k];
            if constexpr (type == kMcFull) {
                out[k] = load_row<W>(p);
            } else if constexpr (type == kMcHorHalf) {
                out[k] = _mm_avg_epu8(load_row<W>(p), load_row<W>(p + 1));
            } else if constexpr (type == kMcVertHalf) {
                __m128i below = load_row<W>(r_[k + 1]);
                asm("" : "+x"(below));  // one load per row: not folded into both averages
                out[k] = _mm_avg_epu8(top_.avg, below);
                top_.avg = below;
            } else {
                const PairAvg bot = pair_avg(load_row<W>(r_[k + 1]), load_row<W>(r_[k + 1] + 1));
                out[k] = avg4_fixed(top_, bot);
                top_ = bot;
            }
        }
        r_.next();
    }

private:
    Rows4 r_;
    PairAvg top_{};  // vertical phases: the row (or pair average) below the last one given
};

// |a - b| per byte.
inline __m128i absdiff_u8(__m128i a, __m128i b) {
    return _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a));
}

// Sum of squares of the 16 byte-sized magnitudes in d, added into four 32-bit lanes.
inline __m128i add_squares_u8(__m128i acc, __m128i d) {
    const __m128i lo = widen_lo(d), hi = widen_hi(d);
    return _mm_add_epi32(acc, _mm_add_epi32(_mm_madd_epi16(lo, lo), _mm_madd_epi16(hi, hi)));
}

}  // namespace
}  // namespace kvt::simd
