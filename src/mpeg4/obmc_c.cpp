// Portable overlapped block motion compensation, sample by sample from the formula in obmc_dsp.h.
#include "common/arith.h"
#include "common/kernel.h"
#include "mpeg4/obmc_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

// Half-sample prediction of sample (x, y) of the block at the vector mv.
template <int r>
int predict(const uint8_t* ref, intptr_t step, const KvtMotionVec& mv, int x, int y) {
    const uint8_t* p = ref + (y + asr(mv.dy, 1)) * step + x + asr(mv.dx, 1);
    const int h = mv.dx & 1, v = mv.dy & 1;
    if (h && v) return (p[0] + p[1] + p[step] + p[step + 1] + 2 - r) >> 2;
    if (h) return (p[0] + p[1] + 1 - r) >> 1;
    if (v) return (p[0] + p[step] + 1 - r) >> 1;
    return p[0];
}

template <int r>
KvtStatus obmc(const uint8_t* ref, int ref_step, uint8_t* dst, int dst_step,
               const KvtMotionVec* const mv[kObmcVectors]) {
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const int i = y * 8 + x;
            const int q = predict<r>(ref, ref_step, *mv[kObmcCurrent], x, y);
            const int t = predict<r>(ref, ref_step, *mv[y < 4 ? kObmcAbove : kObmcBelow], x, y);
            const int s = predict<r>(ref, ref_step, *mv[x < 4 ? kObmcLeft : kObmcRight], x, y);
            dst[intptr_t(y) * dst_step + x] =
                uint8_t((q * kObmcWeights[0][i] + t * kObmcWeights[1][i] + s * kObmcWeights[2][i] + 4) >> 3);
        }
    return kvtStsOk;
}

}  // namespace

void init_obmc(ObmcDsp& d) {
    fill_slots(d.obmc, [](auto r) { return &obmc<decltype(r)::value>; });
}

}  // namespace kvt::KVT_C_NS
