// Kernel table of H.264 inter prediction (H.264 8.4.2.2): luma quarter-sample and chroma
// eighth-sample interpolation of 8-bit pictures. Blocks are a pointer to the integer sample at the
// block's top-left corner and a byte step; the destination is written row by row.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

// One luma position of a block of the slot's width and `height` rows.
using LumaInterpFn = KvtStatus (*)(const uint8_t* src, int32_t src_step, uint8_t* dst, int32_t dst_step,
                                   int height);
// Bilinear chroma prediction at (dx, dy) eighths, a block of the slot's width and `height` rows.
using ChromaInterpFn = KvtStatus (*)(const uint8_t* src, int32_t src_step, uint8_t* dst, int32_t dst_step,
                                     int dx, int dy, int height);

// Block widths 4, 8, 16 (luma) and 2, 4, 8 (chroma) index the tables through width_class().
constexpr int width_class(int width) { return width >> 3; }

// Position 0 (a copy) has a slot per height, so that its rows unroll completely: copy[][] (the
// height argument repeats the slot's height); luma[][0] is not used.
struct InterpDsp {
    LumaInterpFn luma[3][16];  // [width_class][dx * 4 + dy]
    LumaInterpFn copy[3][3];   // [width_class][width_class(height)]
    ChromaInterpFn chroma[3];  // [width_class(2 * width)]
};

// The kernel of a luma position for a block size (position 0: the copy of that height).
inline LumaInterpFn luma_kernel(const InterpDsp& d, int width, int height, int pos) {
    return pos ? d.luma[width_class(width)][pos] : d.copy[width_class(width)][width_class(height)];
}

namespace c {
void init_interp(InterpDsp& d);
}
namespace ref {
void init_interp(InterpDsp& d);
}
namespace sse2 {
void init_interp(InterpDsp& d);
}
namespace ssse3 {
void init_interp(InterpDsp& d);
}
namespace avx2 {
void init_interp(InterpDsp& d);
}

void init_interp_dsp(InterpDsp& d, unsigned cpu_flags);

}  // namespace kvt
