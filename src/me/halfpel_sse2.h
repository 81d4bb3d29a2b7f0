// SSE2 half-sample prediction in 16-bit lanes, exact for every rounding form of halfpel.h.
// Include only from *_sse2.cpp files.
#pragma once

#include "common/simd.h"
#include "me/halfpel.h"

namespace kvt::simd {

inline __m128i widen_lo(__m128i v) { return _mm_unpacklo_epi8(v, _mm_setzero_si128()); }
inline __m128i widen_hi(__m128i v) { return _mm_unpackhi_epi8(v, _mm_setzero_si128()); }

// Rounding terms broadcast once per call.
struct HalfRoundVec {
    __m128i k1, k2;
    explicit HalfRoundVec(HalfRound k) : k1(_mm_set1_epi16(int16_t(k.k1))), k2(_mm_set1_epi16(int16_t(k.k2))) {}
};

// Predictions of 8 samples starting at p (8 bytes, plus the right / lower neighbours the phase
// needs), as eight 16-bit lanes.
template <int type>
inline __m128i halfpel8(const uint8_t* p, intptr_t step, const HalfRoundVec& k) {
    const __m128i a = widen_lo(load8(p));
    if constexpr (type == kMcFull) {
        return a;
    } else if constexpr (type == kMcVertHalf) {
        return _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(a, widen_lo(load8(p + step))), k.k1), 1);
    } else if constexpr (type == kMcHorHalf) {
        return _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(a, widen_lo(load8(p + 1))), k.k1), 1);
    } else {
        const __m128i b = widen_lo(load8(p + 1)), c = widen_lo(load8(p + step)), d = widen_lo(load8(p + step + 1));
        const __m128i s = _mm_add_epi16(_mm_add_epi16(a, b), _mm_add_epi16(c, d));
        return _mm_srli_epi16(_mm_add_epi16(s, k.k2), 2);
    }
}

// Predictions of 16 samples as two vectors of eight 16-bit lanes (lo = samples 0..7).
template <int type>
inline void halfpel16(const uint8_t* p, intptr_t step, const HalfRoundVec& k, __m128i& lo, __m128i& hi) {
    const __m128i a = load(p);
    if constexpr (type == kMcFull) {
        lo = widen_lo(a);
        hi = widen_hi(a);
    } else if constexpr (type == kMcVertHalf || type == kMcHorHalf) {
        const __m128i b = load(type == kMcVertHalf ? p + step : p + 1);
        lo = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(widen_lo(a), widen_lo(b)), k.k1), 1);
        hi = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(widen_hi(a), widen_hi(b)), k.k1), 1);
    } else {
        const __m128i b = load(p + 1), c = load(p + step), d = load(p + step + 1);
        const __m128i slo = _mm_add_epi16(_mm_add_epi16(widen_lo(a), widen_lo(b)), _mm_add_epi16(widen_lo(c), widen_lo(d)));
        const __m128i shi = _mm_add_epi16(_mm_add_epi16(widen_hi(a), widen_hi(b)), _mm_add_epi16(widen_hi(c), widen_hi(d)));
        lo = _mm_srli_epi16(_mm_add_epi16(slo, k.k2), 2);
        hi = _mm_srli_epi16(_mm_add_epi16(shi, k.k2), 2);
    }
}

}  // namespace kvt::simd
