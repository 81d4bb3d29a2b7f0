// The vector residual kernels (transform_simd.h) built for the AVX-512 tier: each 1-D pass of the
// inverse transform halves its odd inputs with one per-lane shift (VPSRAVW, AVX-512BW+VL) where
// the lower tiers shift and blend. The other kernels keep their lower-tier forms.
#include "h264/transform_simd.h"

namespace kvt::avx512 {

void init_transform(TransformDsp& d) { fill_residual(d); }

}  // namespace kvt::avx512
