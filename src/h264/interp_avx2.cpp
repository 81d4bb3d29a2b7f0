// AVX2 luma interpolation of 16-wide blocks: a row in one register (interp_x86.h). The copy gains
// nothing and stays SSE2.
#include "h264/interp_x86.h"

namespace kvt::avx2 {

void init_interp(InterpDsp& d) { fill_luma<16>(d.luma[2], d.copy[2], kAllFamilies & ~kCopy); }

}  // namespace kvt::avx2
