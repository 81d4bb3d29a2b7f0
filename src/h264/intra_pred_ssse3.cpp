// The directional 4x4 intra prediction kernels (intra_pred_simd.h), built for the SSSE3 tier.
#include "h264/intra_pred_simd.h"

namespace kvt::ssse3 {

void init_intra_pred(IntraPredDsp& d) { fill_intra_directional(d); }

}  // namespace kvt::ssse3
