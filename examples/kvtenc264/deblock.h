// The in-loop deblocking filter of a whole picture (H.264 8.7): boundary strengths and thresholds
// per macroblock edge derived here, the filtering done by the library, macroblock by macroblock
// in raster order, vertical edges before horizontal ones.
#pragma once
#include "frame_state.h"

namespace enc264 {

void deblock_picture(FrameState& fs);

}  // namespace enc264
