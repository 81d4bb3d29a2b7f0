// The vector transform kernels (transform_simd.h) built for the SSE2 tier.
#include "h264/transform_simd.h"

namespace kvt::sse2 {

void init_transform(TransformDsp& d) { fill_transform(d); }

}  // namespace kvt::sse2
