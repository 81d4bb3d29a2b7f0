#include "mpeg4/zigzag_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_zigzag_dsp(ZigzagDsp& d, unsigned flags) {
    c::init_zigzag(d);
    KVT_IF_TIER(flags, ssse3, init_zigzag(d));
    KVT_IF_TIER(flags, avx512, init_zigzag(d));
}

}  // namespace kvt
