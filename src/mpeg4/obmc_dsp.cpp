// The overlapped motion-compensation table for a processor.
#include "mpeg4/obmc_dsp.h"
#include "common/kernel.h"

namespace kvt {

void init_obmc_dsp(ObmcDsp& d, unsigned f) {
    c::init_obmc(d);
    KVT_IF_TIER(f, sse2, init_obmc(d));
}

}  // namespace kvt
