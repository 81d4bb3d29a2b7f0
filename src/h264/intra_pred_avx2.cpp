// The horizontal intra prediction kernels (intra_pred_simd.h) built for the AVX2 tier, where each
// row is a byte broadcast straight from memory (the other modes gain less than 10% here).
#include "h264/intra_pred_simd.h"

namespace kvt::avx2 {

void init_intra_pred(IntraPredDsp& d) {
    d.pred16x16[1] = horizontal<16>;
    d.chroma8x8[1] = horizontal<8>;
}

}  // namespace kvt::avx2
