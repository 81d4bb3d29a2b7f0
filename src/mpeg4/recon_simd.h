// The SSE2-intrinsic kernels of H.263 / MPEG-4 prediction and reconstruction: exact byte
// predictions from common/hpel_sse2.h, widened to 16 bits only where a residual is added.
// recon_sse2.cpp instantiates them for the SSE2 tier; recon_avx2.cpp builds the same code with
// VEX encoding, where unaligned memory operands fold into the arithmetic. Internal linkage: each
// tier file gets its own copy.
#pragma once

#include "common/hpel_sse2.h"
#include "common/kernel.h"
#include "mpeg4/recon_dsp.h"

namespace kvt {
namespace {

using namespace hpel;

inline __m128i widen_lo(__m128i v) { return _mm_unpacklo_epi8(v, _mm_setzero_si128()); }
inline __m128i widen_hi(__m128i v) { return _mm_unpackhi_epi8(v, _mm_setzero_si128()); }

// 16 predicted samples plus 16 residuals (two registers), saturated to 8 bits.
inline __m128i add_residual(__m128i pred, const int16_t* lo, const int16_t* hi) {
    return _mm_packus_epi16(_mm_adds_epi16(widen_lo(pred), simd::load(lo)),
                            _mm_adds_epi16(widen_hi(pred), simd::load(hi)));
}

template <int n, int phase, int r>
[[gnu::flatten]] KvtStatus copy(const uint8_t* src, int src_step, uint8_t* dst, int dst_step) {
    predict_block<n, n, recon_half_h(phase), recon_half_v(phase), r>(src, src_step, dst, dst_step);
    return kvtStsOk;
}

template <int phase, int r>
[[gnu::flatten]] KvtStatus recon8(const uint8_t* src, int src_step, const int16_t* res, uint8_t* dst,
                                  int dst_step) {
    Predictor<8, recon_half_h(phase), recon_half_v(phase), r> pred(src);
    const __m128i z = _mm_setzero_si128();
    for_rows<8>(src, src_step, dst, dst_step, [&](const uint8_t* p, const uint8_t* below, uint8_t* d, int y) {
        const __m128i sum = _mm_adds_epi16(_mm_unpacklo_epi8(pred.row(p, below), z), simd::load(res + 8 * y));
        store8(d, _mm_packus_epi16(sum, sum));
    });
    return kvtStsOk;
}

[[gnu::flatten]] KvtStatus recon16(const uint8_t* src, int src_step, const int16_t* res, uint8_t* dst,
                                   int dst_step) {
    for_rows<16>(src, src_step, dst, dst_step, [res](const uint8_t* p, const uint8_t*, uint8_t* d, int y) {
        const int16_t* left = res + (y / 8) * 128 + (y % 8) * 8;
        store16(d, add_residual(load16(p), left, left + 64));
    });
    return kvtStsOk;
}

template <int n>
[[gnu::flatten]] KvtStatus average(const uint8_t* a, int a_step, const uint8_t* b, int b_step, uint8_t* dst,
                                   int dst_step) {
#pragma GCC unroll 16
    for (int y = 0; y < n; ++y, a += a_step, b += b_step, dst += dst_step)
        store_row<n>(dst, _mm_avg_epu8(load_row<n>(a), load_row<n>(b)));
    return kvtStsOk;
}

}  // namespace
}  // namespace kvt
