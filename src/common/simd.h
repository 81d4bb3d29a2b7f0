// Small SSE2 helpers shared by the *_sse2.cpp kernels. Include only from those files.
#pragma once

#include <emmintrin.h>

#include <cstdint>
#include <cstring>

// Internal linkage: every tier file gets its own copy, built with its own target flags.
namespace kvt::simd {
namespace {

// On x86-64 the C kernels are built for SSE2 too, and the compiler vectorises the simplest of them
// as well as hand-written SSE2 does; an SSE2 kernel that is not 10% faster there fills its slot
// only on 32-bit x86, where the C kernels stay scalar.
#if defined(__x86_64__)
constexpr bool kScalarC = false;
#else
constexpr bool kScalarC = true;
#endif

inline __m128i load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline __m128i load_aligned(const void* p) { return _mm_load_si128(static_cast<const __m128i*>(p)); }
inline void store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
inline void store_aligned(void* p, __m128i v) { _mm_store_si128(static_cast<__m128i*>(p), v); }

// 8 bytes into the low half, upper half zero.
inline __m128i load8(const void* p) { return _mm_loadl_epi64(static_cast<const __m128i*>(p)); }
inline void store8(void* p, __m128i v) { _mm_storel_epi64(static_cast<__m128i*>(p), v); }

// 4 bytes into lane 0; memcpy keeps unaligned access defined.
inline __m128i load4(const void* p) {
    int32_t v;
    std::memcpy(&v, p, 4);
    return _mm_cvtsi32_si128(v);
}

// Sum of the four 32-bit lanes.
inline int32_t hsum_epi32(__m128i v) {
    v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(1, 0, 3, 2)));
    v = _mm_add_epi32(v, _mm_shuffle_epi32(v, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtsi128_si32(v);
}

// Sum of the two 64-bit halves of a PSADBW result.
inline int32_t hsum_sad(__m128i v) { return _mm_cvtsi128_si32(_mm_add_epi32(v, _mm_unpackhi_epi64(v, v))); }

inline bool is_aligned16(const void* p) { return (reinterpret_cast<uintptr_t>(p) & 15) == 0; }

// v, as a value the optimiser knows nothing about (in a general or a vector register): where it
// would rebuild a value from others it knows, e.g. row addresses as a chain of additions, or byte
// shifts of a vector whose upper half it knows as shuffles through memory.
template <class T>
inline T opaque(T v) {
#if defined(__GNUC__)
    __asm__("" : "+r"(v));
#endif
    return v;
}
inline __m128i opaque(__m128i v) {
#if defined(__GNUC__)
    __asm__("" : "+x"(v));
#endif
    return v;
}

}  // namespace
}  // namespace kvt::simd
