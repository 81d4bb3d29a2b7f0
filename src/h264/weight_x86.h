// The H.264 weighted average for x86, written once and compiled by each tier file with its own
// target flags (weight_sse2.cpp, weight_ssse3.cpp, weight_avx2.cpp). Two rows at a time; the
// samples of both blocks are interleaved so that one multiply-add forms src1 * w1 + dst * w2.
// Internal linkage throughout.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "h264/rows_x86.h"
#include "h264/weight_dsp.h"

namespace kvt {
namespace {

// 32-bit sums, any 16-bit weights: (sum + round) >> (shift & 31) + offset, wrapping as the
// definition does, then saturated to 16 and to 8 bits (the clamp).
struct Wide {
    __m128i weights, round, count, offset;
    Wide(int32_t w1, int32_t w2, uint32_t shift, int32_t off)
        : weights(_mm_set1_epi32(int32_t(uint32_t(w2) << 16 | (uint32_t(w1) & 0xFFFF)))),
          round(_mm_set1_epi32(int32_t(1u << ((shift - 1) & 31)))),
          count(_mm_cvtsi32_si128(int(shift & 31))),
          offset(_mm_set1_epi32(off)) {}
    __m128i sum(__m128i pairs16) const {
        const __m128i s = _mm_add_epi32(_mm_madd_epi16(pairs16, weights), round);
        return _mm_add_epi32(_mm_sra_epi32(s, count), offset);
    }
    // a, b: bytes of the two blocks.
    __m128i operator()(__m128i a, __m128i b) const {
        const __m128i z = _mm_setzero_si128(), lo = _mm_unpacklo_epi8(a, b), hi = _mm_unpackhi_epi8(a, b);
        const __m128i s0 = _mm_packs_epi32(sum(_mm_unpacklo_epi8(lo, z)), sum(_mm_unpackhi_epi8(lo, z)));
        const __m128i s1 = _mm_packs_epi32(sum(_mm_unpacklo_epi8(hi, z)), sum(_mm_unpackhi_epi8(hi, z)));
        return _mm_packus_epi16(s0, s1);
    }
#if defined(__AVX2__)
    __m256i sum(__m256i pairs16) const {
        const __m256i s = _mm256_add_epi32(_mm256_madd_epi16(pairs16, _mm256_broadcastsi128_si256(weights)),
                                           _mm256_broadcastsi128_si256(round));
        return _mm256_add_epi32(_mm256_sra_epi32(s, count), _mm256_broadcastsi128_si256(offset));
    }
    __m256i operator()(__m256i a, __m256i b) const {
        const __m256i z = _mm256_setzero_si256(), lo = _mm256_unpacklo_epi8(a, b),
                      hi = _mm256_unpackhi_epi8(a, b);
        const __m256i s0 =
            _mm256_packs_epi32(sum(_mm256_unpacklo_epi8(lo, z)), sum(_mm256_unpackhi_epi8(lo, z)));
        const __m256i s1 =
            _mm256_packs_epi32(sum(_mm256_unpacklo_epi8(hi, z)), sum(_mm256_unpackhi_epi8(hi, z)));
        return _mm256_packus_epi16(s0, s1);
    }
#endif
};

#if defined(__SSSE3__)
// 16-bit sums for the small class of weight_dsp.h: byte weights with |w1| + |w2| <= 128 keep
// src1 * w1 + dst * w2 within 16 bits, the rounding multiply by 2^(15 - shift) is
// (sum + 2^(shift-1)) >> shift exactly, and the offset stays in 16 bits.
struct Small {
    __m128i weights, scale, offset;
    Small(int32_t w1, int32_t w2, uint32_t shift, int32_t off)
        : weights(_mm_set1_epi16(int16_t(uint16_t(uint8_t(w2)) << 8 | uint8_t(w1)))),
          scale(_mm_set1_epi16(int16_t(1 << (15 - shift)))),
          offset(_mm_set1_epi16(int16_t(off))) {}
    __m128i half(__m128i pairs) const {
        return _mm_add_epi16(_mm_mulhrs_epi16(_mm_maddubs_epi16(pairs, weights), scale), offset);
    }
    __m128i operator()(__m128i a, __m128i b) const {
        return _mm_packus_epi16(half(_mm_unpacklo_epi8(a, b)), half(_mm_unpackhi_epi8(a, b)));
    }
#if defined(__AVX2__)
    __m256i half(__m256i pairs) const {
        const __m256i s = _mm256_maddubs_epi16(pairs, _mm256_broadcastsi128_si256(weights));
        return _mm256_add_epi16(_mm256_mulhrs_epi16(s, _mm256_broadcastsi128_si256(scale)),
                                _mm256_broadcastsi128_si256(offset));
    }
    __m256i operator()(__m256i a, __m256i b) const {
        return _mm256_packus_epi16(half(_mm256_unpacklo_epi8(a, b)), half(_mm256_unpackhi_epi8(a, b)));
    }
#endif
};
#endif

// dst = f(src1, dst) over a W x height block, two rows at a time.
template <int W, class F>
KvtStatus weighted(const uint8_t* src1, uint8_t* dst, int32_t step, int32_t w1, int32_t w2, uint32_t shift,
                   int32_t offset, int height) {
    const F f(w1, w2, shift, offset);
    for (int y = 0; y < height; y += 2, src1 += 2 * intptr_t(step), dst += 2 * intptr_t(step)) {
        const Pair<W> a = load_pair<W>(src1, step), b = load_pair<W>(dst, step);
        Pair<W> r;
        for (int i = 0; i < Pair<W>::n; ++i) r.v[i] = f(a.v[i], b.v[i]);
        store_pair<W>(dst, step, r);
    }
    return kvtStsOk;
}

// Widths 4, 8 and 16 (slots 1..3); width 2 stays with the portable kernel.
template <class F>
void fill_weighted(WeightFn (&slots)[4]) {
    slots[1] = weighted<4, F>;
    slots[2] = weighted<8, F>;
    slots[3] = weighted<16, F>;
}

}  // namespace
}  // namespace kvt
