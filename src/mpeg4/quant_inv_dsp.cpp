#include "mpeg4/quant_inv_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_quant_inv_dsp(QuantInvDsp& d, unsigned flags) {
    c::init_quant_inv(d);
    KVT_IF_TIER(flags, sse2, init_quant_inv(d));
    KVT_IF_TIER(flags, ssse3, init_quant_inv(d));
}

}  // namespace kvt
