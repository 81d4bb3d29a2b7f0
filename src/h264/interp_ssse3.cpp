// SSSE3 interpolation: byte multiply-add for the horizontal six-tap filter (the families built on
// b: horizontal, diagonal and centre column; 15-30% faster) and for the chroma blend
// (interp_x86.h). The vertical filter, the centre row and the copy gain nothing and stay SSE2.
#include "h264/interp_x86.h"

namespace kvt::ssse3 {

void init_interp(InterpDsp& d) {
    constexpr unsigned kFamilies = kHorizontal | kDiagonal | kCentreColumn;
    fill_luma<4>(d.luma[0], d.copy[0], kFamilies);
    fill_luma<8>(d.luma[1], d.copy[1], kFamilies);
    fill_luma<16>(d.luma[2], d.copy[2], kFamilies);
    d.chroma[1] = chroma<4>;
    d.chroma[2] = chroma<8>;
}

}  // namespace kvt::ssse3
