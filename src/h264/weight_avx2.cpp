// AVX2 weighted average of 16-wide blocks, two rows per register (weight_x86.h).
#include "h264/weight_x86.h"

namespace kvt::avx2 {

void init_weight(WeightDsp& d) {
    d.average[3] = weighted<16, Wide>;
    d.average_small[3] = weighted<16, Small>;
}

}  // namespace kvt::avx2
