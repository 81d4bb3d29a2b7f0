#include "h264/interp_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_interp_dsp(InterpDsp& d, unsigned flags) {
    c::init_interp(d);
    KVT_IF_TIER(flags, sse2, init_interp(d));
    KVT_IF_TIER(flags, ssse3, init_interp(d));
    KVT_IF_TIER(flags, avx2, init_interp(d));
}

}  // namespace kvt
