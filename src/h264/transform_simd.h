// The vector H.264 decoder-side transform kernels, compiled once per tier file (transform_sse2.cpp;
// transform_ssse3.cpp, where the rounding takes one multiply): the residual kernels (dequantization
// by one 16-bit multiply per 8 coefficients, both 1-D passes in 16-bit lanes), the DC-only
// additions, the Intra16x16 DC Hadamard and the forward transform of a prediction. The SP/SI and
// chroma DC paths stay portable. Include only from a tier file (the kernels have internal linkage).
#pragma once

#include "h264/tables.h"
#include "h264/transform4x4_simd.h"
#include "h264/transform_dsp.h"

namespace {

using namespace kvt::h264x4;

inline const uint8_t* at(const void* p, int step, int y) {
    return static_cast<const uint8_t*>(p) + intptr_t(y) * step;
}
inline uint8_t* at(void* p, int step, int y) { return static_cast<uint8_t*>(p) + intptr_t(y) * step; }

// Levels rows 0|1 in a and 2|3 in b scaled by the factor rows f01 and f23 (the DC replaced by the
// caller's value when dc is given), inverse-transformed, rows then columns, and rounded: rows 0|1
// of the residual in a, rows 3|2 in b. The factor matrix is symmetric (an entry depends only on
// the parities of its row and column), so the levels are transposed before they are scaled: the
// transpose does not wait for the factors, whose address the caller derives from QP.
inline void dequant_transform(__m128i& a, __m128i& b, const int16_t* dc, __m128i f01, __m128i f23) {
    transpose(a, b);
    a = _mm_mullo_epi16(a, f01), b = _mm_mullo_epi16(b, f23);
    if (dc) a = _mm_insert_epi16(a, *dc, 0);
    inverse_core(a, b);
    b = swap_halves(b);
    transpose(a, b);
    inverse_core(a, b);
    a = round6(a), b = round6(b);
}

inline KvtStatus residual(int16_t* c, int step, const int16_t* dc, const int16_t* factors) {
    const auto row = [&](int y) { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(at(c, step, y))); };
    const auto put = [&](int y, __m128i v) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(at(c, step, y)), v);
    };
    __m128i a = _mm_unpacklo_epi64(row(0), row(1)), b = _mm_unpacklo_epi64(row(2), row(3));
    dequant_transform(a, b, dc, load16(factors), load16(factors + 8));
    put(0, a), put(1, _mm_unpackhi_epi64(a, a)), put(3, b), put(2, _mm_unpackhi_epi64(b, b));
    return kvtStsOk;
}

// The residual of the DC coefficient (the caller's, or the level times its factor).
inline int dc_residual(const int16_t* c, const int16_t* dc, const int16_t* factors) {
    const int16_t d = dc ? *dc : int16_t(c[0] * factors[0]);
    return (d + 32) >> 6;
}

inline KvtStatus residual_dc(int16_t* c, int step, const int16_t* dc, const int16_t* factors) {
    const __m128i r = _mm_set1_epi16(int16_t(dc_residual(c, dc, factors)));
    for (int y = 0; y < 4; ++y) _mm_storel_epi64(reinterpret_cast<__m128i*>(at(c, step, y)), r);
    return kvtStsOk;
}

// The residual of the levels at c (factors 16-byte aligned, as InvQuantCoef's rows are; the DC
// the caller's when dc is given) added to pred into dst; c receives the residual.
inline void add_residual(const uint8_t* pred, int16_t* c, const int16_t* dc, const int16_t* factors,
                         uint8_t* dst, int pred_step, int dst_step) {
    const auto* f = reinterpret_cast<const __m128i*>(factors);
    __m128i a = load16(c), b = load16(c + 8);
    dequant_transform(a, b, dc, _mm_load_si128(f), _mm_load_si128(f + 1));
    store16(c, a), store16(c + 8, swap_halves(b));
    a = _mm_add_epi16(a, widen_rows(pred, at(pred, pred_step, 1)));
    b = _mm_add_epi16(b, widen_rows(at(pred, pred_step, 3), at(pred, pred_step, 2)));
    store_rows(dst, at(dst, dst_step, 1), at(dst, dst_step, 3), at(dst, dst_step, 2), _mm_packus_epi16(a, b));
}

// Saturating byte adds of the residual's positive and negative parts (each packed with unsigned
// saturation): the clamp of prediction + residual, the residual limited as ClampTbl needs. r holds
// the residual in its low four 16-bit lanes. The block is not written.
inline void add_dc_residual(const uint8_t* pred, __m128i r, uint8_t* dst, int pred_step, int dst_step) {
    const __m128i up = _mm_packus_epi16(r, r),
                  down = _mm_packus_epi16(_mm_sub_epi16(_mm_setzero_si128(), r), r);
    for (int y = 0; y < 4; ++y)
        store4(at(dst, dst_step, y), _mm_subs_epu8(_mm_adds_epu8(load4(at(pred, pred_step, y)), up), down));
}
inline void add_dc_residual(const uint8_t* pred, int residual, uint8_t* dst, int pred_step, int dst_step) {
    add_dc_residual(pred, _mm_shufflelo_epi16(_mm_cvtsi32_si128(residual), 0), dst, pred_step, dst_step);
}

inline KvtStatus residual_add(const uint8_t* pred, int16_t* c, const int16_t* factors, uint8_t* dst,
                              int pred_step, int dst_step) {
    add_residual(pred, c, nullptr, factors, dst, pred_step, dst_step);
    return kvtStsOk;
}
inline KvtStatus residual_add_dc(const uint8_t* pred, int16_t* c, const int16_t* dc, uint8_t* dst,
                                 int pred_step, int dst_step, int qp) {
    add_residual(pred, c, dc, kvt::h264::InvQuantCoef[size_t(qp)].data(), dst, pred_step, dst_step);
    return kvtStsOk;
}
inline KvtStatus residual_dc_add(const uint8_t* pred, int16_t* c, const int16_t* factors, uint8_t* dst,
                                 int pred_step, int dst_step) {
    // The level times its factor (a 16-bit product, as in dc_residual) and its rounding stay in a
    // vector register: the factor's address depends on QP, and this chain is the kernel's latency.
    const __m128i level = load4(reinterpret_cast<const uint8_t*>(c)),
                  factor = load4(reinterpret_cast<const uint8_t*>(factors));
    add_dc_residual(pred, _mm_shufflelo_epi16(round6(_mm_mullo_epi16(level, factor)), 0), dst, pred_step,
                    dst_step);
    return kvtStsOk;
}
inline KvtStatus residual_dc_add_dc(const uint8_t* pred, int16_t*, const int16_t* dc, uint8_t* dst,
                                    int pred_step, int dst_step, int) {
    add_dc_residual(pred, (*dc + 32) >> 6, dst, pred_step, dst_step);
    return kvtStsOk;
}

// Intra16x16 luma DC: Hadamard in 16-bit lanes, then v * 2^(QP/6 - 2) as a 16-bit product for QP
// >= 12, or (f * v + 2^(s-1)) >> s (s = 2 below QP 6, 1 below QP 12) in 32-bit lanes, truncated.
inline KvtStatus luma_dc(int16_t* c, int qp) {
    __m128i a = load16(c), b = load16(c + 8);
    transpose(a, b);
    hadamard(a, b);
    transpose(a, b);
    hadamard(a, b);
    const int t = kvt::h264::InvQuantLuma16x16DCTable[qp];
    if (qp >= 12) {
        const __m128i vt = _mm_set1_epi16(int16_t(t));
        store16(c, _mm_mullo_epi16(a, vt)), store16(c + 8, _mm_mullo_epi16(b, vt));
        return kvtStsOk;
    }
    const int s = qp < 6 ? 2 : 1;
    const __m128i factor = _mm_set1_epi32(t | (1 << (s - 1)) << 16), one = _mm_set1_epi16(1);
    const auto half = [&](__m128i pairs) {  // (f, 1) pairs -> f * t + 2^(s-1), shifted, low 16 bits
        const __m128i v = _mm_sra_epi32(_mm_madd_epi16(pairs, factor), _mm_cvtsi32_si128(s));
        return _mm_srai_epi32(_mm_slli_epi32(v, 16), 16);
    };
    const auto scale = [&](__m128i x) {
        return _mm_packs_epi32(half(_mm_unpacklo_epi16(x, one)), half(_mm_unpackhi_epi16(x, one)));
    };
    store16(c, scale(a)), store16(c + 8, scale(b));
    return kvtStsOk;
}

inline KvtStatus transform_prediction(const uint8_t* src, int step, int16_t* dst) {
    __m128i a = widen_rows(src, at(src, step, 1)), b = widen_rows(at(src, step, 2), at(src, step, 3));
    transpose(a, b);
    forward_core(a, b);
    transpose(a, b);
    forward_core(a, b);
    store16(dst, a), store16(dst + 8, b);
    return kvtStsOk;
}

// The kernels with AC levels: the ones the SSSE3 and AVX-512 builds improve on.
inline void fill_residual(kvt::TransformDsp& d) {
    d.residual = residual;
    d.residual_add = residual_add;
    d.residual_add_dc = residual_add_dc;
}
inline void fill_transform(kvt::TransformDsp& d) {
    fill_residual(d);
    d.luma_dc = luma_dc;
    d.residual_dc = residual_dc;
    d.residual_dc_add = residual_dc_add;
    d.residual_dc_add_dc = residual_dc_add_dc;
    d.transform_prediction = transform_prediction;
}

}  // namespace
