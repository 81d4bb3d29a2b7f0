#include "h264/quant_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_quant_dsp(QuantDsp& d, unsigned flags) {
    c::init_quant(d);
    KVT_IF_TIER(flags, sse2, init_quant(d));
}

}  // namespace kvt
