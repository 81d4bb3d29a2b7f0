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
    Predictor<8, recon_half_h(phase), recon_half_v(phase), r> pred(src, src_step);
    const Rows<uint8_t> out(dst, dst_step);
    const __m128i z = _mm_setzero_si128();
#pragma GCC unroll 8
    for (int y = 0; y < 8; ++y) {
        const __m128i sum = _mm_adds_epi16(_mm_unpacklo_epi8(pred.row(y), z), simd::load(res + 8 * y));
        store8(out[y], _mm_packus_epi16(sum, sum));
    }
    return kvtStsOk;
}

[[gnu::flatten]] KvtStatus recon16(const uint8_t* src, int src_step, const int16_t* res, uint8_t* dst,
                                   int dst_step) {
    const Rows<const uint8_t> in(src, src_step);
    const Rows<uint8_t> out(dst, dst_step);
#pragma GCC unroll 16
    for (int y = 0; y < 16; ++y) {
        const int16_t* left = res + (y / 8) * 128 + (y % 8) * 8;
        store16(out[y], add_residual(load16(in[y]), left, left + 64));
    }
    return kvtStsOk;
}

}  // namespace
}  // namespace kvt
