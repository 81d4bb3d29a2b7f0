// SSE2 squared-difference kernels: byte predictions, |difference| in bytes, squares by PMADDWD.
#include "me/halfpel_sse2.h"
#include "me/sqrdiff_kernels.h"

namespace kvt {

using namespace simd;

namespace {

template <int type>
int32_t sqrdiff16_sse2(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step) {
    FixedRows<type, 16> pred(ref, ref_step);
    const intptr_t cs = cur_step;
    __m128i even = _mm_setzero_si128(), odd = _mm_setzero_si128();
#pragma GCC unroll 8
    for (int y = 0; y < 16; y += 2, cur += 2 * cs) {
        even = add_squares_u8(even, absdiff_u8(load(cur), pred.next()));
        odd = add_squares_u8(odd, absdiff_u8(load(cur + cs), pred.next()));
    }
    return hsum_epi32(_mm_add_epi32(even, odd));
}

// PAVGB of the two fixed-rounding predictions is exactly (F + B + 1) >> 1.
template <int tf, int tb>
int32_t sqrdiff16b_sse2(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step, const uint8_t* bwd,
                        int bwd_step) {
    FixedRows<tf, 16> pf(fwd, fwd_step);
    FixedRows<tb, 16> pb(bwd, bwd_step);
    __m128i acc = _mm_setzero_si128();
#pragma GCC unroll 4
    for (int y = 0; y < 16; ++y, cur += cur_step)
        acc = add_squares_u8(acc, absdiff_u8(load(cur), _mm_avg_epu8(pf.next(), pb.next())));
    return hsum_epi32(acc);
}

}  // namespace

const SqrDiffFn sqrdiff_16x16_sse2[4] = {sqrdiff16_sse2<kMcFull>, sqrdiff16_sse2<kMcVertHalf>,
                                         sqrdiff16_sse2<kMcHorHalf>, sqrdiff16_sse2<kMcBothHalf>};

#define KVT_SQRDIFF_B_ROW(tb)                                                                   \
    sqrdiff16b_sse2<kMcFull, tb>, sqrdiff16b_sse2<kMcVertHalf, tb>, sqrdiff16b_sse2<kMcHorHalf, tb>, \
        sqrdiff16b_sse2<kMcBothHalf, tb>
const SqrDiffBFn sqrdiff_16x16b_sse2[16] = {KVT_SQRDIFF_B_ROW(kMcFull), KVT_SQRDIFF_B_ROW(kMcVertHalf),
                                            KVT_SQRDIFF_B_ROW(kMcHorHalf), KVT_SQRDIFF_B_ROW(kMcBothHalf)};
#undef KVT_SQRDIFF_B_ROW

}  // namespace kvt
