// The vector quantization kernels (quant_simd.h) built for the SSE2 tier.
#include "h264/quant_simd.h"

namespace kvt::sse2 {

void init_quant(QuantDsp& d) { fill_quant(d); }

}  // namespace kvt::sse2
