#include "bitstream/vlc_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_vlc_dsp(VlcDsp& d, unsigned flags) {
    c::init_vlc(d);
    KVT_IF_TIER(flags, sse2, init_vlc(d));
}

}  // namespace kvt
