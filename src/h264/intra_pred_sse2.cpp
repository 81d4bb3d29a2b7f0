// The vector intra prediction kernels (intra_pred_simd.h) without the directional 4x4 modes,
// built for the SSE2 tier.
#include "h264/intra_pred_simd.h"

namespace kvt::sse2 {

void init_intra_pred(IntraPredDsp& d) { fill_intra_basic(d); }

}  // namespace kvt::sse2
