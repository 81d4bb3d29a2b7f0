// SSSE3 weighted average of the small class: byte multiply-add and the rounding multiply
// (weight_x86.h).
#include "h264/weight_x86.h"

namespace kvt::ssse3 {

void init_weight(WeightDsp& d) { fill_weighted<Small>(d.average_small); }

}  // namespace kvt::ssse3
