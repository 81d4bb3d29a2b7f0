// AVX2 luma interpolation of 16-wide blocks: a row in one register (interp_x86.h).
#include "h264/interp_x86.h"

namespace kvt::avx2 {

void init_interp(InterpDsp& d) { fill_luma<16>(d.luma[2], d.copy[2]); }

}  // namespace kvt::avx2
