// Kernels of the MPEG-4 motion-vector functions (ISO/IEC 14496-2 7.6.3 to 7.6.9). Vectors are
// in half samples; a "set" is the four vectors of a macroblock, blocks 0..3 in raster order.
// Arguments are valid when a kernel runs; a decoding kernel that meets an invalid code returns
// -101 and leaves the cursor and the vector it was decoding unchanged.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

// Neighbour vector sets and what may serve as a predictor, for one P-VOP macroblock.
struct MvNeighbours {
    const KvtMotionVec* left;
    const KvtMotionVec* upper;
    const KvtMotionVec* upper_right;
    bool left_ok, upper_ok, upper_right_ok;
};

// Predictor of block b (0..3) from the neighbours and the blocks of `cur` already decoded.
KvtMotionVec predict_mv_mpeg4_ref(const MvNeighbours& nb, const KvtMotionVec* cur, const uint8_t* present,
                                  int b);
// *mv (predictor on entry) += one decoded difference, wrapped for fcode.
int decode_mv_mpeg4_ref(uint8_t** pp, int* pOffset, KvtMotionVec* mv, int fcode);
int decode_pad_mv_pvop_mpeg4_ref(uint8_t** pp, int* pOffset, const MvNeighbours& nb, KvtMotionVec* cur,
                                 const uint8_t* present, int fcode, int mb_type);
// Direct mode with difference (dx, dy) applied to every block.
int direct_mv_mpeg4_ref(const KvtMotionVec* colocated, KvtMotionVec* fwd, KvtMotionVec* bwd, bool scaled,
                        int trb, int trd, int dx, int dy);
int decode_direct_mv_mpeg4_ref(uint8_t** pp, int* pOffset, const KvtMotionVec* colocated, KvtMotionVec* fwd,
                               KvtMotionVec* bwd, bool scaled, int trb, int trd);
int pad_mv_mpeg4_ref(KvtMotionVec* set, const uint8_t* present);
KvtMotionVec chroma_mv_mpeg4_ref(KvtMotionVec luma);
KvtMotionVec chroma4_mv_mpeg4_ref(const KvtMotionVec* set, const uint8_t* present);
KvtMotionVec limit_mv_to_rect_ref(KvtMotionVec mv, const KvtRegionRect& rect, uint32_t x, uint32_t y,
                                  int size);

}  // namespace kvt
