// The vector transform kernels (transform_simd.h) built for the SSSE3 tier.
#include "h264/transform_simd.h"

namespace kvt::ssse3 {

void init_transform(TransformDsp& d) { fill_transform(d); }

}  // namespace kvt::ssse3
