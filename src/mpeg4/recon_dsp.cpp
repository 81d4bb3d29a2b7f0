// The H.263 / MPEG-4 prediction table for a processor: C kernels, then each SIMD tier it runs.
#include "mpeg4/recon_dsp.h"
#include "common/kernel.h"

namespace kvt {

void init_recon_dsp(ReconDsp& d, unsigned f) {
    c::init_recon(d);
    KVT_IF_TIER(f, sse2, init_recon(d));
    KVT_IF_TIER(f, avx2, init_recon(d));
}

}  // namespace kvt
