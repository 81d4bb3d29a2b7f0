#include "h264/cavlc_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_cavlc_dsp(CavlcDsp& d, unsigned) { c::init_cavlc(d); }

}  // namespace kvt
