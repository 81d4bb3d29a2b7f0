// Memory helpers of the H.264 x86 kernels: plain loads and stores, and blocks handled two rows at
// a time (Pair<W>). Compiled by each tier file with its own target flags; internal linkage.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

namespace kvt {
namespace {

inline __m128i load4(const uint8_t* p) {
    int32_t v;
    std::memcpy(&v, p, 4);
    return _mm_cvtsi32_si128(v);
}
inline __m128i load8(const void* p) { return _mm_loadl_epi64(static_cast<const __m128i*>(p)); }
inline __m128i load16(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void store4(uint8_t* p, __m128i v) {
    const int32_t x = _mm_cvtsi128_si32(v);
    std::memcpy(p, &x, 4);
}
inline void store8(void* p, __m128i v) { _mm_storel_epi64(static_cast<__m128i*>(p), v); }
inline void store16(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
// The high 8 bytes (MOVHPS: an 8-byte store with no alignment needed; the double-typed form would
// claim 8-byte alignment).
inline void store8_high(void* p, __m128i v) { _mm_storeh_pi(static_cast<__m64*>(p), _mm_castsi128_ps(v)); }
// Two 8-byte rows, the first in the low half (MOVQ, MOVHPS).
inline __m128i load8x2(const void* lo, const void* hi) {
    return _mm_castps_si128(_mm_loadh_pi(_mm_castsi128_ps(load8(lo)), static_cast<const __m64*>(hi)));
}

// Two rows of W bytes: one register (W = 4: bytes 0..3 and 8..11; W = 8: 0..7 and 8..15; AVX2
// W = 16: one row per half), or two (W = 16 without AVX2: a row each).
template <int W>
struct PairRegs {
    using T = __m128i;
    static constexpr int n = W == 16 ? 2 : 1;
};
#if defined(__AVX2__)
template <>
struct PairRegs<16> {
    using T = __m256i;
    static constexpr int n = 1;
};
#endif
template <int W>
struct Pair {
    static constexpr int n = PairRegs<W>::n;
    typename PairRegs<W>::T v[n];
};

template <int W>
inline Pair<W> load_pair(const uint8_t* p, intptr_t s) {
    if constexpr (W == 4) return {{_mm_unpacklo_epi64(load4(p), load4(p + s))}};
    if constexpr (W == 8) return {{_mm_unpacklo_epi64(load8(p), load8(p + s))}};
#if defined(__AVX2__)
    if constexpr (W == 16)
        return {{_mm256_inserti128_si256(_mm256_castsi128_si256(load16(p)), load16(p + s), 1)}};
#else
    if constexpr (W == 16) return {{load16(p), load16(p + s)}};
#endif
}

template <int W>
inline void store_pair(uint8_t* p, intptr_t s, const Pair<W>& v) {
    if constexpr (W == 4) store4(p, v.v[0]), store4(p + s, _mm_srli_si128(v.v[0], 8));
    if constexpr (W == 8) store8(p, v.v[0]), store8_high(p + s, v.v[0]);
#if defined(__AVX2__)
    if constexpr (W == 16)
        store16(p, _mm256_castsi256_si128(v.v[0])), store16(p + s, _mm256_extracti128_si256(v.v[0], 1));
#else
    if constexpr (W == 16) store16(p, v.v[0]), store16(p + s, v.v[1]);
#endif
}

inline __m128i avg_bytes(__m128i a, __m128i b) { return _mm_avg_epu8(a, b); }
#if defined(__AVX2__)
inline __m256i avg_bytes(__m256i a, __m256i b) { return _mm256_avg_epu8(a, b); }
#endif
template <int W>
inline Pair<W> avg(const Pair<W>& a, const Pair<W>& b) {
    Pair<W> r;
    for (int i = 0; i < Pair<W>::n; ++i) r.v[i] = avg_bytes(a.v[i], b.v[i]);
    return r;
}

}  // namespace
}  // namespace kvt
