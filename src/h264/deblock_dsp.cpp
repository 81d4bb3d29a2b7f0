#include "h264/deblock_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_deblock_dsp(DeblockDsp& d, unsigned) { c::init_deblock(d); }

}  // namespace kvt
