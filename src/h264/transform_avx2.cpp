// The vector residual-with-add kernels (transform_simd.h) built for the AVX2 tier: the same
// operations in three-operand encodings, without the register copies that the two-operand ones
// need (the kernel is bound by the number of instructions it issues).
#include "h264/transform_simd.h"

namespace kvt::avx2 {

void init_transform(TransformDsp& d) {
    d.residual_add = residual_add;
    d.residual_add_dc = residual_add_dc;
}

}  // namespace kvt::avx2
