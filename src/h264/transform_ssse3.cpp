// The vector residual kernels (transform_simd.h) built for the SSSE3 tier: the final rounding
// (x + 32) >> 6 becomes one PMULHRSW. The other kernels gain nothing from SSSE3.
#include "h264/transform_simd.h"

namespace kvt::ssse3 {

void init_transform(TransformDsp& d) { fill_residual(d); }

}  // namespace kvt::ssse3
