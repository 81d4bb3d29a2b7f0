#include "transform/dct_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_dct_dsp(DctDsp& d, unsigned flags) {
    c::init_dct(d);
    KVT_IF_TIER(flags, sse2, init_dct(d));
    KVT_IF_TIER(flags, avx2, init_dct(d));
}

}  // namespace kvt
