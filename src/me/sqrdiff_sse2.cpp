// SSE2 squared-difference kernels: byte predictions, |difference| in bytes, squares by PMADDWD.
#include "me/halfpel_sse2.h"
#include "me/phase.h"
#include "me/sqrdiff_kernels.h"

namespace kvt {

using namespace simd;

namespace {

// Rows of predictions from `next()` against the current block; an unroll of four keeps GCC
// from hoisting every load and spilling on eight-register targets and on x86-64 alike.
template <bool aligned, class Pred>
int32_t sqrdiff_rows(const uint8_t* cur, int cur_step, Pred&& next) {
    __m128i acc = _mm_setzero_si128();
#pragma GCC unroll 4
    for (int y = 0; y < 16; ++y, cur += cur_step)
        acc = add_squares_u8(acc, absdiff_u8(load_cur<aligned>(cur), next()));
    return hsum_epi32(acc);
}

template <int type, bool aligned>
void sqrdiff16(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* sum) {
    FixedRows<type, 16> pred(ref, ref_step);
    *sum = sqrdiff_rows<aligned>(cur, cur_step, [&] { return pred.next(); });
}

// PAVGB of the two fixed-rounding predictions is exactly (F + B + 1) >> 1.
template <int tf, int tb, bool aligned>
void sqrdiff16b(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step, const uint8_t* bwd,
                int bwd_step, int32_t* sum) {
    FixedRows<tf, 16> pf(fwd, fwd_step);
    FixedRows<tb, 16> pb(bwd, bwd_step);
    *sum = sqrdiff_rows<aligned>(cur, cur_step, [&] { return _mm_avg_epu8(pf.next(), pb.next()); });
}

}  // namespace

template <int type>
KvtStatus sqrdiff_16x16_sse2(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,
                             int32_t* sum) {
    sqrdiff16<type, false>(cur, cur_step, ref, ref_step, sum);
    return kvtStsOk;
}

template <int type>
KvtStatus sqrdiff_16x16_a16_sse2(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,
                                 int32_t* sum) {
    sqrdiff16<type, true>(cur, cur_step, ref, ref_step, sum);
    return kvtStsOk;
}

template <int tf, int tb>
KvtStatus sqrdiff_16x16b_sse2(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step,
                              const uint8_t* bwd, int bwd_step, int32_t* sum) {
    sqrdiff16b<tf, tb, false>(cur, cur_step, fwd, fwd_step, bwd, bwd_step, sum);
    return kvtStsOk;
}

template <int tf, int tb>
KvtStatus sqrdiff_16x16b_a16_sse2(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step,
                                  const uint8_t* bwd, int bwd_step, int32_t* sum) {
    sqrdiff16b<tf, tb, true>(cur, cur_step, fwd, fwd_step, bwd, bwd_step, sum);
    return kvtStsOk;
}

#define KVT_INSTANTIATE(t)                                                                        \
    template KvtStatus sqrdiff_16x16_sse2<t>(const uint8_t*, int, const uint8_t*, int, int32_t*); \
    template KvtStatus sqrdiff_16x16_a16_sse2<t>(const uint8_t*, int, const uint8_t*, int, int32_t*);
#define KVT_INSTANTIATE_B(f, b)                                                                            \
    template KvtStatus sqrdiff_16x16b_sse2<f, b>(const uint8_t*, int, const uint8_t*, int, const uint8_t*, \
                                                 int, int32_t*);                                           \
    template KvtStatus sqrdiff_16x16b_a16_sse2<f, b>(const uint8_t*, int, const uint8_t*, int,             \
                                                     const uint8_t*, int, int32_t*);
KVT_FOR_EACH_PHASE(KVT_INSTANTIATE)
KVT_FOR_EACH_PHASE_PAIR(KVT_INSTANTIATE_B)
#undef KVT_INSTANTIATE
#undef KVT_INSTANTIATE_B

}  // namespace kvt
