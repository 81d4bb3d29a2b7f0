// SSE2 overlapped block motion compensation: the five predictions as exact byte predictions
// (common/hpel_sse2.h), then the weighted sum two rows at a time in 16-bit lanes.
#include "common/arith.h"
#include "common/hpel_sse2.h"
#include "common/kernel.h"
#include "mpeg4/obmc_dsp.h"

namespace kvt::sse2 {

namespace {

using namespace hpel;

// Rows row0 .. row0 + h - 1 of the 8-wide prediction at mv, 8 bytes a row into out.
template <int h, int r>
void predict_rows(const uint8_t* ref, intptr_t step, const KvtMotionVec& mv, int row0, uint8_t* out) {
    const uint8_t* p = ref + (row0 + asr(mv.dy, 1)) * step + asr(mv.dx, 1);
    switch ((mv.dy & 1) * 2 + (mv.dx & 1)) {
        case 0:
            return predict_block<8, h, false, false, r>(p, step, out, 8);
        case 1:
            return predict_block<8, h, true, false, r>(p, step, out, 8);
        case 2:
            return predict_block<8, h, false, true, r>(p, step, out, 8);
        default:
            return predict_block<8, h, true, true, r>(p, step, out, 8);
    }
}

// (q * H0 + t * H1 + s * H2 + 4) >> 3 for the eight samples at weight offset i.
inline __m128i blend8(__m128i q, __m128i t, __m128i s, int i) {
    const __m128i sum = _mm_add_epi16(_mm_mullo_epi16(q, simd::load(&kObmcWeights[0][i])),
                                      _mm_add_epi16(_mm_mullo_epi16(t, simd::load(&kObmcWeights[1][i])),
                                                    _mm_mullo_epi16(s, simd::load(&kObmcWeights[2][i]))));
    return _mm_srli_epi16(_mm_add_epi16(sum, _mm_set1_epi16(4)), 3);
}

template <int r>
[[gnu::flatten]] KvtStatus obmc(const uint8_t* ref, int ref_step, uint8_t* dst, int dst_step,
                                const KvtMotionVec* const mv[kObmcVectors]) {
    alignas(16) uint8_t q[64], t[64], left[64], right[64];
    predict_rows<8, r>(ref, ref_step, *mv[kObmcCurrent], 0, q);
    predict_rows<4, r>(ref, ref_step, *mv[kObmcAbove], 0, t);
    predict_rows<4, r>(ref, ref_step, *mv[kObmcBelow], 4, t + 32);
    predict_rows<8, r>(ref, ref_step, *mv[kObmcLeft], 0, left);
    predict_rows<8, r>(ref, ref_step, *mv[kObmcRight], 0, right);
    const __m128i left_half = _mm_set_epi32(0, -1, 0, -1), z = _mm_setzero_si128();
#pragma GCC unroll 4
    for (int y = 0; y < 8; y += 2, dst += 2 * intptr_t(dst_step)) {
        const __m128i qv = load16(q + 8 * y), tv = load16(t + 8 * y);
        const __m128i sv = _mm_or_si128(_mm_and_si128(left_half, load16(left + 8 * y)),
                                        _mm_andnot_si128(left_half, load16(right + 8 * y)));
        const __m128i top =
            blend8(_mm_unpacklo_epi8(qv, z), _mm_unpacklo_epi8(tv, z), _mm_unpacklo_epi8(sv, z), 8 * y);
        const __m128i bot =
            blend8(_mm_unpackhi_epi8(qv, z), _mm_unpackhi_epi8(tv, z), _mm_unpackhi_epi8(sv, z), 8 * y + 8);
        const __m128i rows = _mm_packus_epi16(top, bot);
        store8(dst, rows);
        store8(dst + dst_step, _mm_unpackhi_epi64(rows, rows));
    }
    return kvtStsOk;
}

}  // namespace

void init_obmc(ObmcDsp& d) {
    fill_slots(d.obmc, [](auto r) { return &obmc<decltype(r)::value>; });
}

}  // namespace kvt::sse2
