// SSSE3 luma interpolation: byte multiply-add for the horizontal six-tap filter and the rounding
// multiply (interp_x86.h).
#include "h264/interp_x86.h"

namespace kvt::ssse3 {

void init_interp(InterpDsp& d) {
    fill_luma<4>(d.luma[0], d.copy[0]);
    fill_luma<8>(d.luma[1], d.copy[1]);
    fill_luma<16>(d.luma[2], d.copy[2]);
    d.chroma[1] = chroma<4>;
    d.chroma[2] = chroma<8>;
}

}  // namespace kvt::ssse3
