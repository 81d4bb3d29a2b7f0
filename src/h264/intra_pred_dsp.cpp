#include "h264/intra_pred_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_intra_pred_dsp(IntraPredDsp& d, unsigned flags) {
    c::init_intra_pred(d);
    KVT_IF_TIER(flags, sse2, init_intra_pred(d));
    KVT_IF_TIER(flags, ssse3, init_intra_pred(d));
    KVT_IF_TIER(flags, avx2, init_intra_pred(d));
}

}  // namespace kvt
