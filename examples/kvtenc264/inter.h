// P macroblocks: P_Skip, and 16x16, 16x8, 8x16 or 8x8 partitions with one quarter-sample vector
// each; the prediction is formed by the library's interpolation (H.264 8.4.2.2) and the residual
// coded as for every macroblock.
#pragma once
#include "frame_state.h"
#include "motion.h"

namespace enc264 {

struct InterChoice {
    MbType type = MbType::P16x16;
    Mv mv[4];   // per partition
    Mv mvp[4];  // their predictors
    int cost = 0;
};

// The cheapest partitioning of macroblock (mbx, mby); its vectors are stored in the macroblock's
// record (a P type) for the prediction of later partitions.
InterChoice search_inter(FrameState& fs, int mbx, int mby, int lambda, const MvRange& range);
// Predicts the macroblock with the chosen vectors and codes its residual at qp; false on overflow.
bool code_inter_mb(FrameState& fs, int mbx, int mby, int qp, const InterChoice& choice, MbCode& code);
// Codes the macroblock as P_Skip when its skip prediction leaves no coefficient at qp; the
// reconstruction then holds that prediction.
bool try_skip(FrameState& fs, int mbx, int mby, int qp, Mv skip_mv);

}  // namespace enc264
