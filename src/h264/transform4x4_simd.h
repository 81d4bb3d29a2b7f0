// Vector building blocks of the H.264 4x4 transforms, for the tier files only (static inline: each
// tier compiles its own copy with its own flags; with __SSSE3__ the absolute values, signs and the
// final rounding take one instruction each).
//
// A 4x4 block of 16-bit values lives in two registers, rows 0|1 and rows 2|3 (or columns, after a
// transpose). A 1-D pass works across the four halves: each half holds one element index of the
// four lines being transformed, so a pass is a transpose, then butterflies between halves.
#pragma once

#include <emmintrin.h>
#if defined(__AVX2__) || defined(__AVX512BW__)
#include <immintrin.h>
#elif defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstdint>
#include <cstring>

namespace kvt::h264x4 {

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
static inline __m128i widen_rows(const uint8_t* first, const uint8_t* second) {
    return _mm_unpacklo_epi8(_mm_unpacklo_epi32(load4(first), load4(second)), _mm_setzero_si128());
}

// The four 4-byte rows of v to d0..d3 (on x86-64 through two general registers: fewer shuffles).
static inline void store_rows(uint8_t* d0, uint8_t* d1, uint8_t* d2, uint8_t* d3, __m128i v) {
#if defined(__x86_64__)
    const uint64_t lo = uint64_t(_mm_cvtsi128_si64(v)),
                   hi = uint64_t(_mm_cvtsi128_si64(_mm_unpackhi_epi64(v, v)));
    const uint32_t w[4] = {uint32_t(lo), uint32_t(lo >> 32), uint32_t(hi), uint32_t(hi >> 32)};
    std::memcpy(d0, w, 4), std::memcpy(d1, w + 1, 4), std::memcpy(d2, w + 2, 4), std::memcpy(d3, w + 3, 4);
#else
    store4(d0, v), store4(d1, _mm_srli_si128(v, 4)), store4(d2, _mm_srli_si128(v, 8)),
        store4(d3, _mm_srli_si128(v, 12));
#endif
}

// A constant in every 16-bit lane, loaded rather than broadcast (no shuffle).
template <int16_t v>
static inline __m128i splat() {
    alignas(16) static constexpr int16_t lanes[8] = {v, v, v, v, v, v, v, v};
    return _mm_load_si128(reinterpret_cast<const __m128i*>(lanes));
}

static inline __m128i swap_halves(__m128i v) { return _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)); }
// The low half of lo, the high half of hi.
static inline __m128i blend_halves(__m128i lo, __m128i hi) {
    return _mm_castpd_si128(_mm_move_sd(_mm_castsi128_pd(hi), _mm_castsi128_pd(lo)));
}

// Lines 0|1 and 2|3 of a 4x4 block to the halves of a pass (element k of every line in one half).
static inline void transpose(__m128i& a, __m128i& b) {
    const __m128i t0 = _mm_unpacklo_epi16(a, b), t1 = _mm_unpackhi_epi16(a, b);
    a = _mm_unpacklo_epi16(t0, t1), b = _mm_unpackhi_epi16(t0, t1);
}

// Inverse core transform (H.264 8.5.12.2) between the halves of [v0|v1], [v2|v3]: leaves
// [o0|o1] in a and [o3|o2] in b.
static inline void inverse_core(__m128i& a, __m128i& b) {
#if defined(__AVX512BW__) && defined(__AVX512VL__)
    // One per-lane shift (0 in the low half, 1 in the high) instead of a shift and a blend: each
    // pass is one operation shorter, about a seventh of the residual kernels' time.
    alignas(16) static constexpr int16_t high_half[8] = {0, 0, 0, 0, 1, 1, 1, 1};
    const __m128i counts = _mm_load_si128(reinterpret_cast<const __m128i*>(high_half));
    const __m128i eh = _mm_add_epi16(a, _mm_srav_epi16(b, counts));  // [v0 + v2 | v1 + v3/2]
    const __m128i fg = _mm_sub_epi16(_mm_srav_epi16(a, counts), b);  // [v0 - v2 | v1/2 - v3]
#else
    const __m128i eh = _mm_add_epi16(a, blend_halves(b, _mm_srai_epi16(b, 1)));  // [v0 + v2 | v1 + v3/2]
    const __m128i fg = _mm_sub_epi16(blend_halves(a, _mm_srai_epi16(a, 1)), b);  // [v0 - v2 | v1/2 - v3]
#endif
    const __m128i ef = _mm_unpacklo_epi64(eh, fg), hg = _mm_unpackhi_epi64(eh, fg);
    a = _mm_add_epi16(ef, hg), b = _mm_sub_epi16(ef, hg);
}

// Forward core transform between the halves: [p0|p1], [p2|p3] to [o0|o1], [o2|o3].
static inline void forward_core(__m128i& a, __m128i& b) {
    const __m128i sw = swap_halves(b);                                   // [p3|p2]
    const __m128i st = _mm_add_epi16(a, sw), uw = _mm_sub_epi16(a, sw);  // [p0+p3 | p1+p2], [p0-p3 | p1-p2]
    const __m128i su = _mm_unpacklo_epi64(st, uw), tw = _mm_unpackhi_epi64(st, uw);
    a = _mm_add_epi16(blend_halves(su, _mm_add_epi16(su, su)), tw);  // [s + t | 2u + w]
    b = _mm_sub_epi16(su, blend_halves(tw, _mm_add_epi16(tw, tw)));  // [s - t | u - 2w]
}

// 4-point Hadamard (rows (1,1,1,1), (1,1,-1,-1), (1,-1,-1,1), (1,-1,1,-1)) between the halves:
// [o0|o1] in a, [o2|o3] in b.
static inline void hadamard(__m128i& a, __m128i& b) {
    const __m128i s = _mm_add_epi16(a, b), d = _mm_sub_epi16(a, b);
    const __m128i x = _mm_unpacklo_epi64(s, d), y = _mm_unpackhi_epi64(s, d);
    a = _mm_add_epi16(x, y), b = swap_halves(_mm_sub_epi16(x, y));
}

// (x + 32) >> 6 of 16-bit x, exactly (no wrap of x + 32).
static inline __m128i round6(__m128i x) {
#if defined(__SSSE3__)
    return _mm_mulhrs_epi16(x, splat<512>());  // ((x * 512 >> 14) + 1) >> 1
#else
    return _mm_srai_epi16(_mm_add_epi16(_mm_srai_epi16(x, 5), splat<1>()), 1);
#endif
}

static inline __m128i abs16(__m128i x) {
#if defined(__SSSE3__)
    return _mm_abs_epi16(x);
#else
    const __m128i sign = _mm_srai_epi16(x, 15);
    return _mm_sub_epi16(_mm_xor_si128(x, sign), sign);
#endif
}
// m with the sign of c (m is 0 where c is).
static inline __m128i sign16(__m128i m, __m128i c) {
#if defined(__SSSE3__)
    return _mm_sign_epi16(m, c);
#else
    const __m128i sign = _mm_srai_epi16(c, 15);
    return _mm_sub_epi16(_mm_xor_si128(m, sign), sign);
#endif
}

}  // namespace kvt::h264x4
