#include "h264/deblock_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_deblock_dsp(DeblockDsp& d, unsigned flags) {
    c::init_deblock(d);
    KVT_IF_TIER(flags, sse2, init_deblock(d));
    KVT_IF_TIER(flags, avx2, init_deblock(d));
    KVT_IF_TIER(flags, avx512, init_deblock(d));
}

}  // namespace kvt
