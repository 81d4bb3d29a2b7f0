#include "h264/interp_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_interp_dsp(InterpDsp& d, unsigned) { c::init_interp(d); }

}  // namespace kvt
