// Intra macroblocks: mode decision by SAD plus a rate estimate, prediction through the library
// (H.264 8.3.1 to 8.3.4) and residual coding.
#pragma once
#include "frame_state.h"

namespace enc264 {

// The cheapest Intra16x16 mode and its cost (SAD + lambda * rate); the prediction is left in the
// reconstruction.
int best_intra16x16(FrameState& fs, int mbx, int mby, int lambda, int* cost);
// Codes macroblock (mbx, mby) as Intra4x4 or Intra16x16 at qp; false on a level overflow.
bool code_intra_mb(FrameState& fs, int mbx, int mby, int qp, int lambda, MbCode& code);

}  // namespace enc264
