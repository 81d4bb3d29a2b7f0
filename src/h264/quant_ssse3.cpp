// The vector quantization kernels (quant_simd.h) built for the SSSE3 tier.
#include "h264/quant_simd.h"

namespace kvt::ssse3 {

void init_quant(QuantDsp& d) { fill_quant(d); }

}  // namespace kvt::ssse3
