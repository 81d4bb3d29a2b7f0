#include "me/sad_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_sad_dsp(SadDsp& d, unsigned flags) {
    c::init_sad(d);
    KVT_IF_TIER(flags, sse2, init_sad(d));
    KVT_IF_TIER(flags, avx2, init_sad(d));
}

}  // namespace kvt
