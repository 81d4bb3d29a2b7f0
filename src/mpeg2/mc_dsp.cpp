// The MPEG-1/2 motion-compensation table for a processor: C kernels, then each SIMD tier it runs.
#include "mpeg2/mc_dsp.h"
#include "common/kernel.h"

namespace kvt {

void init_mc_dsp(McDsp& d, unsigned f) {
    c::init_mc(d);
    KVT_IF_TIER(f, sse2, init_mc(d));
    KVT_IF_TIER(f, avx2, init_mc(d));
}

}  // namespace kvt
