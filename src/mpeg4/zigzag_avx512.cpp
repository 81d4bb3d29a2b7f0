// AVX-512 inverse scans: the 64 coefficients are two registers, and VPERMT2W gathers each half of
// the raster block from both (dst[j] = src[inverse[j]]). The compact form loads only the len
// coefficients present and stores only the raster entries they land on.
#include <immintrin.h>

#include "common/kernel.h"
#include "mpeg4/coef_tables.h"
#include "mpeg4/zigzag_dsp.h"

namespace kvt::avx512 {

namespace {

constexpr int kShortRun = 12;

// Short runs (the usual case in a decoder) are cheaper one by one than through the permutes.
template <int S>
KvtStatus compact(const int16_t* src, int len, int16_t* dst) {
    if (len <= kShortRun) {
        for (int i = 0; i < len; ++i) dst[kScan[S][i]] = src[i];
        return kvtStsOk;
    }
    const __mmask64 present = len >= 64 ? ~__mmask64(0) : (__mmask64(1) << len) - 1;
    const __m512i lo = _mm512_maskz_loadu_epi16(__mmask32(present), src);
    const __m512i hi = _mm512_maskz_loadu_epi16(__mmask32(present >> 32), src + 32);
    const __m512i n = _mm512_set1_epi16(int16_t(len));
    for (int half = 0; half < 2; ++half) {
        const __m512i idx = _mm512_loadu_si512(kScanInverse[S] + 32 * half);
        const __mmask32 lands = _mm512_cmplt_epi16_mask(idx, n);
        _mm512_mask_storeu_epi16(dst + 32 * half, lands, _mm512_permutex2var_epi16(lo, idx, hi));
    }
    return kvtStsOk;
}

template <int S>
KvtStatus full(const int16_t* src, int16_t* dst) {
    const __m512i lo = _mm512_loadu_si512(src), hi = _mm512_loadu_si512(src + 32);
    const __m512i idx0 = _mm512_loadu_si512(kScanInverse[S]), idx1 = _mm512_loadu_si512(kScanInverse[S] + 32);
    _mm512_storeu_si512(dst, _mm512_permutex2var_epi16(lo, idx0, hi));
    _mm512_storeu_si512(dst + 32, _mm512_permutex2var_epi16(lo, idx1, hi));
    return kvtStsOk;
}

}  // namespace

void init_zigzag(ZigzagDsp& d) {
    fill_slots(d.full, [](auto s) { return full<decltype(s)::value>; });
    fill_slots(d.compact, [](auto s) { return compact<decltype(s)::value>; });
}

}  // namespace kvt::avx512
