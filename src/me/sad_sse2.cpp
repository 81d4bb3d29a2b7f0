// SSE2 SAD kernels: PSADBW on byte predictions (halfpel_sse2.h gives the exact fixed rounding).
#include "common/kernel.h"
#include "me/sad_dsp.h"
#include "me/sad_simd.h"

namespace kvt::sse2 {

using namespace simd;

namespace {

// Four rows of a 4-wide block in one register.
inline __m128i load_4rows4(const uint8_t* p, intptr_t step) {
    const __m128i r01 = _mm_unpacklo_epi32(load4(p), load4(p + step));
    const __m128i r23 = _mm_unpacklo_epi32(load4(p + 2 * step), load4(p + 3 * step));
    return _mm_unpacklo_epi64(r01, r23);
}

// Gathers the 4-byte columns of a band of two rows: 64-bit lane k of `lo` holds column k of
// rows 0 and 1 (k = 0, 1), lane k of `hi` column 2 + k.
inline void columns4(const uint8_t* p, intptr_t step, __m128i& lo, __m128i& hi) {
    const __m128i r0 = load(p), r1 = load(p + step);
    lo = _mm_unpacklo_epi32(r0, r1);
    hi = _mm_unpackhi_epi32(r0, r1);
}

// The four 4x4 SADs of one band of four rows as 32-bit lanes 0..3.
inline __m128i band_sads4x4(const uint8_t* cur, intptr_t cs, const uint8_t* ref, intptr_t rs) {
    __m128i c0, c1, c2, c3, r0, r1, r2, r3;
    columns4(cur, cs, c0, c1);
    columns4(cur + 2 * cs, cs, c2, c3);
    columns4(ref, rs, r0, r1);
    columns4(ref + 2 * rs, rs, r2, r3);
    const __m128i left = _mm_add_epi64(_mm_sad_epu8(c0, r0), _mm_sad_epu8(c2, r2));   // blocks 0, 1
    const __m128i right = _mm_add_epi64(_mm_sad_epu8(c1, r1), _mm_sad_epu8(c3, r3));  // blocks 2, 3
    return _mm_unpacklo_epi64(_mm_shuffle_epi32(left, _MM_SHUFFLE(3, 1, 2, 0)),
                              _mm_shuffle_epi32(right, _MM_SHUFFLE(3, 1, 2, 0)));
}

KvtStatus sad_4x4(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* sad) {
    *sad = hsum_sad(_mm_sad_epu8(load_4rows4(cur, cur_step), load_4rows4(ref, ref_step)));
    return kvtStsOk;
}

KvtStatus blocks8x8(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, uint16_t* sads) {
    const intptr_t cs = cur_step, rs = ref_step;
    __m128i half[2];  // 64-bit lanes: left and right quarter of the upper, then the lower half
    for (int h = 0; h < 2; ++h) {
        __m128i acc = _mm_setzero_si128();
#pragma GCC unroll 8
        for (int y = 0; y < 8; ++y, cur += cs, ref += rs)
            acc = _mm_add_epi64(acc, _mm_sad_epu8(load(cur), load(ref)));
        half[h] = _mm_shuffle_epi32(acc, _MM_SHUFFLE(3, 1, 2, 0));
    }
    const __m128i all = _mm_unpacklo_epi64(half[0], half[1]);  // at most 16320: packs is exact
    store8(sads, _mm_packs_epi32(all, all));
    return kvtStsOk;
}

KvtStatus blocks4x4(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, uint16_t* sads) {
    const intptr_t cs = cur_step, rs = ref_step;
    for (int b = 0; b < 4; b += 2, cur += 8 * cs, ref += 8 * rs) {
        const __m128i upper = band_sads4x4(cur, cs, ref, rs);
        const __m128i lower = band_sads4x4(cur + 4 * cs, cs, ref + 4 * rs, rs);
        store(sads + 4 * b, _mm_packs_epi32(upper, lower));  // at most 4080 each
    }
    return kvtStsOk;
}

}  // namespace

// The 4x4 SAD and the 16x16 vertical half with an unaligned current block (whose rows SSE2
// cannot fold into PSADBW) are within 10% of the vectorised C kernels on x86-64: there the C
// kernels keep them.
void init_sad(SadDsp& d) {
    const SadFn keep = d.sad16[1];
    fill_slots(d.sad16, [](auto p) { return sad_16x16<decltype(p)::value * 4, false>; });
    if (!kScalarC) d.sad16[1] = keep;
    fill_slots(d.sad16_a16, [](auto p) { return sad_16x16<decltype(p)::value * 4, true>; });
    fill_slots(d.sad8, [](auto p) { return sad_8x8<decltype(p)::value * 4>; });
    if (kScalarC) d.sad4 = sad_4x4;
    d.blocks8x8 = blocks8x8;
    d.blocks4x4 = blocks4x4;
}

}  // namespace kvt::sse2
