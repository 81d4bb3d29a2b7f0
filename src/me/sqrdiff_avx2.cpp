// AVX2 squared differences: |difference| of 16 bytes widened to one 256-bit register, squared
// and summed by one VPMADDWD.
#include <immintrin.h>

#include "common/kernel.h"
#include "me/halfpel_sse2.h"
#include "me/me_dsp.h"

namespace kvt::avx2 {

using namespace simd;

namespace {

inline __m256i add_squares16(__m256i acc, __m128i d) {
    const __m256i w = _mm256_cvtepu8_epi16(d);
    return _mm256_add_epi32(acc, _mm256_madd_epi16(w, w));
}

template <int type>
KvtStatus sqrdiff16(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* sum) {
    FixedRows4<type, 16> pred(ref, ref_step);
    Rows4 c(cur, cur_step);
    __m256i even = _mm256_setzero_si256(), odd = _mm256_setzero_si256();
#pragma GCC unroll 4
    for (int g = 0; g < 4; ++g, c.next()) {
        __m128i p[4];
        pred.next4(p);
        even = add_squares16(even, absdiff_u8(load(c[0]), p[0]));
        odd = add_squares16(odd, absdiff_u8(load(c[1]), p[1]));
        even = add_squares16(even, absdiff_u8(load(c[2]), p[2]));
        odd = add_squares16(odd, absdiff_u8(load(c[3]), p[3]));
    }
    const __m256i t = _mm256_add_epi32(even, odd);
    *sum = hsum_epi32(_mm_add_epi32(_mm256_castsi256_si128(t), _mm256_extracti128_si256(t, 1)));
    return kvtStsOk;
}

}  // namespace

void init_sqrdiff(MeDsp& d) {
    fill_slots(d.sqrdiff16, [](auto p) { return sqrdiff16<decltype(p)::value * 4>; });
}

}  // namespace kvt::avx2
