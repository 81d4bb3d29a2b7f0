#include "me/me_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_me_dsp(MeDsp& d, unsigned flags) {
    c::init_sqrdiff(d);
    c::init_variance(d);
    c::init_residual(d);
    c::init_texture_error(d);
    c::init_edges(d);
    KVT_IF_TIER(flags, sse2, init_sqrdiff(d));
    KVT_IF_TIER(flags, sse2, init_variance(d));
    KVT_IF_TIER(flags, sse2, init_residual(d));
    KVT_IF_TIER(flags, sse2, init_texture_error(d));
    KVT_IF_TIER(flags, sse2, init_edges(d));
    KVT_IF_TIER(flags, avx2, init_sqrdiff(d));
}

KVT_DSP_TABLE(MeDsp, init_me_dsp) me_dsp;

}  // namespace kvt
