// SSE2 interpolation: the six-tap filters and the chroma blend in 16-bit lanes (interp_x86.h).
#include "h264/interp_x86.h"

namespace kvt::sse2 {

void init_interp(InterpDsp& d) {
    fill_luma<4>(d.luma[0], d.copy[0], kAllFamilies);
    fill_luma<8>(d.luma[1], d.copy[1], kAllFamilies);
    fill_luma<16>(d.luma[2], d.copy[2], kAllFamilies);
    d.chroma[1] = chroma<4>;
    d.chroma[2] = chroma<8>;
}

}  // namespace kvt::sse2
