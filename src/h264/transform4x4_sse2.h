// SSE2 building blocks of the H.264 4x4 transforms, for the tier files only (static inline: each
// tier compiles its own copy with its own flags).
//
// A 4x4 block of 16-bit values lives in two registers, rows 0|1 and rows 2|3. A 1-D pass works
// across four vectors of four lanes (a Quad, one vector per element index), so every pass is a
// transpose followed by the butterflies; two passes leave the block in raster order again.
#pragma once

#include <emmintrin.h>

#include <cstdint>
#include <cstring>

namespace kvt::h264x4 {

struct Quad {
    __m128i v0, v1, v2, v3;  // four lanes in the low halves
};

// Rows 0|1 and 2|3 to columns 0|1 and 2|3 (or back).
static inline void transpose(__m128i& a, __m128i& b) {
    const __m128i t0 = _mm_unpacklo_epi16(a, b), t1 = _mm_unpackhi_epi16(a, b);
    a = _mm_unpacklo_epi16(t0, t1), b = _mm_unpackhi_epi16(t0, t1);
}

// Transposes, then applies the 1-D transform f across the four vectors: rows on the first call,
// columns on the second (H.264 8.5.12.2 does rows first).
template <class F>
static inline void pass(__m128i& a, __m128i& b, F f) {
    transpose(a, b);
    const Quad q = f(Quad{a, _mm_unpackhi_epi64(a, a), b, _mm_unpackhi_epi64(b, b)});
    a = _mm_unpacklo_epi64(q.v0, q.v1), b = _mm_unpacklo_epi64(q.v2, q.v3);
}
template <class F>
static inline void rows_then_columns(__m128i& a, __m128i& b, F f) {
    pass(a, b, f);
    pass(a, b, f);
}

static inline Quad inverse_core(Quad v) {
    const __m128i e = _mm_add_epi16(v.v0, v.v2), f = _mm_sub_epi16(v.v0, v.v2);
    const __m128i g = _mm_sub_epi16(_mm_srai_epi16(v.v1, 1), v.v3),
                  h = _mm_add_epi16(v.v1, _mm_srai_epi16(v.v3, 1));
    return {_mm_add_epi16(e, h), _mm_add_epi16(f, g), _mm_sub_epi16(f, g), _mm_sub_epi16(e, h)};
}

static inline Quad forward_core(Quad v) {
    const __m128i a = _mm_add_epi16(v.v0, v.v3), b = _mm_add_epi16(v.v1, v.v2);
    const __m128i c = _mm_sub_epi16(v.v0, v.v3), d = _mm_sub_epi16(v.v1, v.v2);
    return {_mm_add_epi16(a, b), _mm_add_epi16(_mm_add_epi16(c, c), d), _mm_sub_epi16(a, b),
            _mm_sub_epi16(_mm_sub_epi16(c, d), d)};
}

static inline Quad hadamard(Quad v) {
    const __m128i s01 = _mm_add_epi16(v.v0, v.v1), d01 = _mm_sub_epi16(v.v0, v.v1);
    const __m128i s23 = _mm_add_epi16(v.v2, v.v3), d23 = _mm_sub_epi16(v.v2, v.v3);
    return {_mm_add_epi16(s01, s23), _mm_sub_epi16(s01, s23), _mm_sub_epi16(d01, d23),
            _mm_add_epi16(d01, d23)};
}

// (x + 32) >> 6 without the 16-bit overflow of x + 32: ((x >> 5) + 1) >> 1.
static inline __m128i round6(__m128i x) {
    return _mm_srai_epi16(_mm_add_epi16(_mm_srai_epi16(x, 5), _mm_set1_epi16(1)), 1);
}

static inline __m128i load16(const int16_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
static inline void store16(int16_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
static inline __m128i load4(const uint8_t* p) {
    int v;
    std::memcpy(&v, p, 4);
    return _mm_cvtsi32_si128(v);
}
static inline void store4(uint8_t* p, __m128i v) {
    const int w = _mm_cvtsi128_si32(v);
    std::memcpy(p, &w, 4);
}

// Two rows of 4 samples as 8 x 16 bits.
static inline __m128i widen_rows(const uint8_t* p, int step) {
    return _mm_unpacklo_epi8(_mm_unpacklo_epi32(load4(p), load4(p + step)), _mm_setzero_si128());
}

}  // namespace kvt::h264x4
