// All vector intra prediction kernels (intra_pred_simd.h) built for the AVX2 tier: byte
// broadcasts straight from memory for the horizontal modes, three-operand forms elsewhere.
#include "h264/intra_pred_simd.h"

namespace kvt::avx2 {

void init_intra_pred(IntraPredDsp& d) {
    fill_intra_basic(d);
    fill_intra_directional(d);
}

}  // namespace kvt::avx2
