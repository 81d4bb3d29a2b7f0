// SSE2 squared-difference kernels: byte predictions, |difference| in bytes, squares by PMADDWD.
#include "common/kernel.h"
#include "me/halfpel_sse2.h"
#include "me/me_dsp.h"

namespace kvt::sse2 {

using namespace simd;

namespace {

// Rows of predictions from `next()` against the current block; an unroll of four keeps GCC
// from hoisting every load and spilling on eight-register targets and on x86-64 alike.
template <class Pred>
int32_t sqrdiff_rows(const uint8_t* cur, int cur_step, Pred&& next) {
    __m128i acc = _mm_setzero_si128();
#pragma GCC unroll 4
    for (int y = 0; y < 16; ++y, cur += cur_step) acc = add_squares_u8(acc, absdiff_u8(load(cur), next()));
    return hsum_epi32(acc);
}

template <int type>
KvtStatus sqrdiff16(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* sum) {
    FixedRows<type, 16> pred(ref, ref_step);
    *sum = sqrdiff_rows(cur, cur_step, [&] { return pred.next(); });
    return kvtStsOk;
}

// PAVGB of the two fixed-rounding predictions is exactly (F + B + 1) >> 1.
template <int tf, int tb>
KvtStatus sqrdiff16b(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step, const uint8_t* bwd,
                     int bwd_step, int32_t* sum) {
    FixedRows<tf, 16> pf(fwd, fwd_step);
    FixedRows<tb, 16> pb(bwd, bwd_step);
    *sum = sqrdiff_rows(cur, cur_step, [&] { return _mm_avg_epu8(pf.next(), pb.next()); });
    return kvtStsOk;
}

}  // namespace

// The integer and vertical-half forms are within 10% of the vectorised C kernels on x86-64.
void init_sqrdiff(MeDsp& d) {
    const SqrDiffFn all[4] = {sqrdiff16<kMcFull>, sqrdiff16<kMcVertHalf>, sqrdiff16<kMcHorHalf>,
                              sqrdiff16<kMcBothHalf>};
    for (int p = kScalarC ? 0 : 2; p < 4; ++p) d.sqrdiff16[p] = all[p];
    fill_slots(d.sqrdiff16b, [](auto i) {
        constexpr PhasePair s = pair_of(i);
        return sqrdiff16b<s.fwd, s.bwd>;
    });
}

}  // namespace kvt::sse2
