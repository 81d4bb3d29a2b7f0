#include "h264/weight_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_weight_dsp(WeightDsp& d, unsigned flags) {
    c::init_weight(d);
    KVT_IF_TIER(flags, sse2, init_weight(d));
    KVT_IF_TIER(flags, ssse3, init_weight(d));
    KVT_IF_TIER(flags, avx2, init_weight(d));
}

}  // namespace kvt
