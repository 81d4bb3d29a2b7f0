// SSE2 weighted average: 32-bit sums for every class of weights (weight_x86.h).
#include "h264/weight_x86.h"

namespace kvt::sse2 {

void init_weight(WeightDsp& d) {
    fill_weighted<Wide>(d.average);
    fill_weighted<Wide>(d.average_small);
}

}  // namespace kvt::sse2
