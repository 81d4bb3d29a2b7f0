// SSE2 inverse quantizers: eight 16-bit coefficients per step.
//
// H.263 method: the level is first clamped to +-kl, the smallest magnitude whose result passes
// hi, so that 2 QP L + q' fits 16 bits whenever hi + 62 does; the final clamp then gives the
// exact result. For hi above that (12-bit video) the product is saturated instead.
// Matrix method: PMADDWD forms (2L + sign) x QP W exactly in 32 bits; the mismatch sum is only
// needed for its parity, which is the XOR of the results.
#include "mpeg4/quant_inv_simd.h"

namespace kvt::sse2 {

namespace {

using namespace kvt::simd;

// +-q' with the sign of L, 0 where L is 0.
struct OffsetSse2 {
    static __m128i apply(__m128i q, __m128i level) {
        const __m128i s = _mm_srai_epi16(level, 15);
        const __m128i off = _mm_sub_epi16(_mm_xor_si128(q, s), s);
        return _mm_andnot_si128(_mm_cmpeq_epi16(level, _mm_setzero_si128()), off);
    }
};

// Eight results of the inter matrix method, truncated toward zero and clamped.
__m128i matrix_inter8(__m128i level, __m128i qw, __m128i lo, __m128i hi) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i sign = _mm_sub_epi16(_mm_cmpgt_epi16(zero, level), _mm_cmpgt_epi16(level, zero));
    const __m128i qw2 = _mm_add_epi16(qw, qw);
    const __m128i a = _mm_madd_epi16(_mm_unpacklo_epi16(level, sign), _mm_unpacklo_epi16(qw2, qw));
    const __m128i b = _mm_madd_epi16(_mm_unpackhi_epi16(level, sign), _mm_unpackhi_epi16(qw2, qw));
    const __m128i f = _mm_packs_epi32(div_pow2_epi32<4>(a), div_pow2_epi32<4>(b));
    return _mm_max_epi16(_mm_min_epi16(f, hi), lo);
}

// Eight results of the intra matrix method: L x QP W / 8, truncated toward zero, clamped.
__m128i matrix_intra8(__m128i level, __m128i qw, __m128i lo, __m128i hi) {
    const __m128i pl = _mm_mullo_epi16(level, qw), ph = _mm_mulhi_epi16(level, qw);
    const __m128i a = _mm_unpacklo_epi16(pl, ph), b = _mm_unpackhi_epi16(pl, ph);
    const __m128i f = _mm_packs_epi32(div_pow2_epi32<3>(a), div_pow2_epi32<3>(b));
    return _mm_max_epi16(_mm_min_epi16(f, hi), lo);
}

// QP x W for eight weights.
__m128i weights(const uint8_t* w, __m128i qp) {
    return _mm_mullo_epi16(_mm_unpacklo_epi8(load8(w), _mm_setzero_si128()), qp);
}

KvtStatus matrix_inter(int16_t* c, int qp, const uint8_t* w, int lo, int hi) {
    const __m128i vqp = _mm_set1_epi16(int16_t(qp)), vlo = _mm_set1_epi16(int16_t(lo)),
                  vhi = _mm_set1_epi16(int16_t(hi));
    __m128i parity = _mm_setzero_si128();
    for (int i = 0; i < 64; i += 8) {
        const __m128i f = matrix_inter8(load(c + i), weights(w + i, vqp), vlo, vhi);
        parity = _mm_xor_si128(parity, f);
        store(c + i, f);
    }
    mismatch_control(c, parity);
    return kvtStsOk;
}

KvtStatus matrix_intra(int16_t* c, int qp, const uint8_t* w, int dc_scale, int lo, int hi) {
    const __m128i vqp = _mm_set1_epi16(int16_t(qp)), vlo = _mm_set1_epi16(int16_t(lo)),
                  vhi = _mm_set1_epi16(int16_t(hi));
    const int16_t dc = clamp_dc(c[0] * dc_scale, lo, hi);
    __m128i parity = _mm_setzero_si128();
    for (int i = 0; i < 64; i += 8) {
        __m128i f = matrix_intra8(load(c + i), weights(w + i, vqp), vlo, vhi);
        if (i == 0) f = _mm_insert_epi16(f, dc, 0);
        parity = _mm_xor_si128(parity, f);
        store(c + i, f);
    }
    mismatch_control(c, parity);
    return kvtStsOk;
}

}  // namespace

void init_quant_inv(QuantInvDsp& d) {
    d.h263 = h263_kernel<Run128<OffsetSse2>>;
    d.h263_intra = h263_intra_kernel<Run128<OffsetSse2>>;
    d.h263_intradc = h263_intradc_kernel<Run128<OffsetSse2>>;
    d.matrix_inter = matrix_inter;
    d.matrix_intra = matrix_intra;
}

}  // namespace kvt::sse2
