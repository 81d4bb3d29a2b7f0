// SSE2 H.264 forward transform-quantization of 4x4 residual blocks and of the Intra16x16 luma DC
// (an SSSE3 build gains less than 10%). The transforms run in 16-bit (residual) or 32-bit (DC)
// lanes, the levels come from the magnitudes' 32-bit products with the factors, the count and
// last position from the zero masks. The chroma DC path (four values) stays portable.
#include "h264/quant_dsp.h"
#include "h264/tables.h"
#include "h264/transform4x4_simd.h"

namespace kvt::sse2 {

namespace {

using namespace h264x4;
using namespace h264;

// Levels of 8 coefficients: (|c| * mf + round) >> shift with the sign of c; `mag` receives the
// magnitudes (at most 13363, so they pack without saturating). |-32768| reads as 32768 unsigned.
__m128i quantize(__m128i c, __m128i mf, __m128i round, __m128i shift, __m128i& mag) {
    const __m128i abs = abs16(c);
    const __m128i lo = _mm_mullo_epi16(abs, mf), hi = _mm_mulhi_epu16(abs, mf);
    const __m128i p0 = _mm_srl_epi32(_mm_add_epi32(_mm_unpacklo_epi16(lo, hi), round), shift);
    const __m128i p1 = _mm_srl_epi32(_mm_add_epi32(_mm_unpackhi_epi16(lo, hi), round), shift);
    mag = _mm_packs_epi32(p0, p1);
    return sign16(mag, c);
}

// The report of 16 level magnitudes (raster order in ma, mb): -13 beyond 2063, else the signed
// count of nonzero levels and the largest scan entry over them (zero levels count as 0).
KvtStatus report(__m128i ma, __m128i mb, int8_t* count, const int16_t* scan, uint8_t* last) {
    const __m128i limit = _mm_set1_epi16(2063);
    if (_mm_movemask_epi8(_mm_or_si128(_mm_cmpgt_epi16(ma, limit), _mm_cmpgt_epi16(mb, limit))))
        return kvtStsLevelOverflow;
    const __m128i za = _mm_cmpeq_epi16(ma, _mm_setzero_si128()),
                  zb = _mm_cmpeq_epi16(mb, _mm_setzero_si128());
    const __m128i zeros =
        _mm_sad_epu8(_mm_and_si128(_mm_packs_epi16(za, zb), _mm_set1_epi8(1)), _mm_setzero_si128());
    const int nonzero = 16 - _mm_cvtsi128_si32(_mm_add_epi32(zeros, _mm_unpackhi_epi64(zeros, zeros)));
    *count = int8_t(_mm_cvtsi128_si32(za) & 1 ? nonzero : -nonzero);
    __m128i m = _mm_max_epi16(_mm_andnot_si128(za, load16(scan)), _mm_andnot_si128(zb, load16(scan + 8)));
    m = _mm_max_epi16(m, swap_halves(m));
    m = _mm_max_epi16(m, _mm_shuffle_epi32(m, _MM_SHUFFLE(2, 3, 0, 1)));
    m = _mm_max_epi16(m, _mm_shufflelo_epi16(m, _MM_SHUFFLE(2, 3, 0, 1)));
    *last = uint8_t(_mm_cvtsi128_si32(m) & 127);
    return kvtStsOk;
}

KvtStatus residual(int16_t* c, int qp, int8_t* count, bool intra, const int16_t* scan, uint8_t* last) {
    __m128i a = load16(c), b = load16(c + 8), ma, mb;
    transpose(a, b);
    forward_core(a, b);
    transpose(a, b);
    forward_core(a, b);
    const int q = qp / 6;
    const __m128i round = _mm_set1_epi32(dc_rounds[intra][q] >> 1), shift = _mm_cvtsi32_si128(15 + q);
    const int16_t* mf = QuantCoef[size_t(qp % 6)].data();
    store16(c, quantize(a, load16(mf), round, shift, ma));
    store16(c + 8, quantize(b, load16(mf + 8), round, shift, mb));
    return report(ma, mb, count, scan, last);
}

// The 4x4 Hadamard of 16 DC values in 32-bit lanes (its sums need 18 bits), halved and truncated
// to 16 bits. Four vectors hold the rows; the 1-D pass across them, a transpose, the pass again
// and a transpose back (the transform is symmetric, so the order of the passes does not matter).
void hadamard_halved(const int16_t* c, int16_t* t) {
    const __m128i a = load16(c), b = load16(c + 8);
    const auto widen = [](__m128i doubled) { return _mm_srai_epi32(doubled, 16); };
    __m128i r0 = widen(_mm_unpacklo_epi16(a, a)), r1 = widen(_mm_unpackhi_epi16(a, a));
    __m128i r2 = widen(_mm_unpacklo_epi16(b, b)), r3 = widen(_mm_unpackhi_epi16(b, b));
    const auto pass = [&] {
        const __m128i s01 = _mm_add_epi32(r0, r1), d01 = _mm_sub_epi32(r0, r1);
        const __m128i s23 = _mm_add_epi32(r2, r3), d23 = _mm_sub_epi32(r2, r3);
        r0 = _mm_add_epi32(s01, s23), r1 = _mm_sub_epi32(s01, s23);
        r2 = _mm_sub_epi32(d01, d23), r3 = _mm_add_epi32(d01, d23);
    };
    const auto transpose32 = [&] {
        const __m128i t0 = _mm_unpacklo_epi32(r0, r1), t1 = _mm_unpacklo_epi32(r2, r3);
        const __m128i t2 = _mm_unpackhi_epi32(r0, r1), t3 = _mm_unpackhi_epi32(r2, r3);
        r0 = _mm_unpacklo_epi64(t0, t1), r1 = _mm_unpackhi_epi64(t0, t1);
        r2 = _mm_unpacklo_epi64(t2, t3), r3 = _mm_unpackhi_epi64(t2, t3);
    };
    pass(), transpose32(), pass(), transpose32();
    const auto narrow = [](__m128i x) {
        return _mm_srai_epi32(_mm_slli_epi32(_mm_srai_epi32(x, 1), 16), 16);
    };
    store16(t, _mm_packs_epi32(narrow(r0), narrow(r1)));
    store16(t + 8, _mm_packs_epi32(narrow(r2), narrow(r3)));
}

KvtStatus luma_dc(int16_t* c, int16_t* t, int qp, int8_t* count, bool transform, const int16_t* scan,
                  uint8_t* last) {
    if (transform) hadamard_halved(c, t);
    const int q = qp / 6;
    const __m128i round = _mm_set1_epi32(dc_rounds[1][q]), shift = _mm_cvtsi32_si128(16 + q);
    const __m128i mf = _mm_set1_epi16(int16_t(FwdQuantTable[qp % 6][0]));
    __m128i ma, mb;
    store16(c, quantize(load16(t), mf, round, shift, ma));
    store16(c + 8, quantize(load16(t + 8), mf, round, shift, mb));
    return report(ma, mb, count, scan, last);
}

}  // namespace

void init_quant(QuantDsp& d) {
    d.luma_dc = luma_dc;
    d.residual = residual;
}

}  // namespace kvt::sse2
