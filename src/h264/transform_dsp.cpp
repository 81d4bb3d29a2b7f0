#include "h264/transform_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_transform_dsp(TransformDsp& d, unsigned flags) {
    c::init_transform(d);
    KVT_IF_TIER(flags, sse2, init_transform(d));
    KVT_IF_TIER(flags, ssse3, init_transform(d));
    KVT_IF_TIER(flags, avx512, init_transform(d));
}

}  // namespace kvt
