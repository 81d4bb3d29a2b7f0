#include "h264/weight_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_weight_dsp(WeightDsp& d, unsigned) { c::init_weight(d); }

}  // namespace kvt
