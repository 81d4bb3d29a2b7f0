// The in-loop deblocking filter of a whole picture (H.264 8.7): boundary strengths and thresholds
// per macroblock edge derived here, the filtering done by the library, macroblock by macroblock
// in raster order, vertical edges before horizontal ones.
#pragma once
#include "frame_state.h"

namespace enc264 {

void deblock_picture(FrameState& fs);

// bS of the edge between raster 4x4 blocks p of macroblock mp and q of mq (H.264 8.7.2.1, frame
// macroblocks, one reference picture, so no mixed-mode edges): 4 or 3 next to an intra
// macroblock (on a macroblock edge or not), 2 next to coefficients, 1 for vectors a whole sample
// or more apart, else 0.
int boundary_strength(const MbInfo& mp, int p, const MbInfo& mq, int q, bool mb_edge);

}  // namespace enc264
