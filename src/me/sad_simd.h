// The 128-bit SAD kernels of the SSE2 and AVX2 tiers: one source, built by each tier file with
// its own flags (the AVX2 build folds the unaligned loads into VPSADBW).
// Include only from sad_sse2.cpp and sad_avx2.cpp.
#pragma once

#include "me/halfpel_sse2.h"

namespace kvt::simd {
namespace {

// Fixed-rounding predictions of rows y and y + 1 of an 8-wide block at p (row y), one row in
// each half.
template <int type>
inline __m128i pred_2rows8(const uint8_t* p, intptr_t step) {
    const __m128i a = load_2rows8(p, step);
    if constexpr (type == kMcFull)
        return a;
    else if constexpr (type == kMcHorHalf)
        return _mm_avg_epu8(a, load_2rows8(p + 1, step));
    else if constexpr (type == kMcVertHalf)
        return _mm_avg_epu8(a, load_2rows8(p + step, step));
    else
        return avg4_fixed(pair_avg(a, load_2rows8(p + 1, step)),
                          pair_avg(load_2rows8(p + step, step), load_2rows8(p + step + 1, step)));
}

// Two accumulators keep the row additions off one dependency chain. The integer and both-halves
// phases address their rows four from one base (Rows4); the one-direction half phases measured
// faster with the compiler's own row-by-row addressing.
template <int type, bool aligned>
KvtStatus sad_16x16(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* sad) {
    __m128i even = _mm_setzero_si128(), odd = _mm_setzero_si128();
    if constexpr (type == kMcVertHalf || type == kMcHorHalf) {
        FixedRows<type, 16> pred(ref, ref_step);
        const intptr_t cs = cur_step;
#pragma GCC unroll 8
        for (int y = 0; y < 16; y += 2, cur += 2 * cs) {
            even = _mm_add_epi32(even, _mm_sad_epu8(pred.next(), load_cur<aligned>(cur)));
            odd = _mm_add_epi32(odd, _mm_sad_epu8(pred.next(), load_cur<aligned>(cur + cs)));
        }
    } else {
        FixedRows4<type, 16> pred(ref, ref_step);
        Rows4 c(cur, cur_step);
#pragma GCC unroll 4
        for (int g = 0; g < 4; ++g, c.next()) {
            __m128i p[4];
            pred.next4(p);
            even = _mm_add_epi32(even, _mm_sad_epu8(p[0], load_cur<aligned>(c[0])));
            odd = _mm_add_epi32(odd, _mm_sad_epu8(p[1], load_cur<aligned>(c[1])));
            even = _mm_add_epi32(even, _mm_sad_epu8(p[2], load_cur<aligned>(c[2])));
            odd = _mm_add_epi32(odd, _mm_sad_epu8(p[3], load_cur<aligned>(c[3])));
        }
    }
    *sad = hsum_sad(_mm_add_epi32(even, odd));
    return kvtStsOk;
}

template <int type>
KvtStatus sad_8x8(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* sad) {
    const intptr_t cs = cur_step, rs = ref_step;
    __m128i even = _mm_setzero_si128(), odd = _mm_setzero_si128();
    if constexpr (type == kMcVertHalf) {
        FixedRows<type, 8> pred(ref, rs);
#pragma GCC unroll 4
        for (int y = 0; y < 8; y += 2, cur += 2 * cs) {
            even = _mm_add_epi32(even, _mm_sad_epu8(pred.next(), load8(cur)));
            odd = _mm_add_epi32(odd, _mm_sad_epu8(pred.next(), load8(cur + cs)));
        }
        *sad = _mm_cvtsi128_si32(_mm_add_epi32(even, odd));
    } else {
#pragma GCC unroll 2
        for (int y = 0; y < 8; y += 4, cur += 4 * cs, ref += 4 * rs) {
            even = _mm_add_epi32(even, _mm_sad_epu8(load_2rows8(cur, cs), pred_2rows8<type>(ref, rs)));
            odd = _mm_add_epi32(
                odd, _mm_sad_epu8(load_2rows8(cur + 2 * cs, cs), pred_2rows8<type>(ref + 2 * rs, rs)));
        }
        *sad = hsum_sad(_mm_add_epi32(even, odd));
    }
    return kvtStsOk;
}

}  // namespace
}  // namespace kvt::simd
