// Kernel table of the MPEG-4 motion-vector functions (ISO/IEC 14496-2 7.6.3 to 7.6.9); C only.
// Vectors are in half samples; a "set" is the four vectors of a macroblock, blocks 0..3 in raster
// order. Arguments are valid when a kernel runs; a decoding kernel that meets an invalid code
// returns -101 and leaves the cursor and the vector it was decoding unchanged.
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

struct MotionVectorDsp {
    // *mv (predictor on entry) += one decoded difference, wrapped for fcode.
    KvtStatus (*decode_mv)(uint8_t** pp, int* pOffset, KvtMotionVec* mv, int fcode);
    KvtStatus (*decode_pad_mv_pvop)(uint8_t** pp, int* pOffset, const MvNeighbours& nb, KvtMotionVec* cur,
                                    const uint8_t* present, int fcode, int mb_type);
    // Direct mode with difference (dx, dy) applied to every block.
    KvtStatus (*direct_mv)(const KvtMotionVec* colocated, KvtMotionVec* fwd, KvtMotionVec* bwd, bool scaled,
                           int trb, int trd, int dx, int dy);
    KvtStatus (*decode_direct_mv)(uint8_t** pp, int* pOffset, const KvtMotionVec* colocated,
                                  KvtMotionVec* fwd, KvtMotionVec* bwd, bool scaled, int trb, int trd);
    KvtStatus (*pad_mv)(KvtMotionVec* set, const uint8_t* present);
    KvtStatus (*chroma_mv)(const KvtMotionVec* luma, KvtMotionVec* dst);
    KvtStatus (*chroma4_mv)(const KvtMotionVec* set, const uint8_t* present, KvtMotionVec* dst);
    KvtStatus (*limit_mv_to_rect)(const KvtMotionVec* mv, const KvtRegionRect& rect, uint32_t x, uint32_t y,
                                  int size, KvtMotionVec* dst);
};

namespace c {
void init_motion_vector(MotionVectorDsp& d);
}
namespace ref {
void init_motion_vector(MotionVectorDsp& d);
}

void init_motion_vector_dsp(MotionVectorDsp& d, unsigned cpu_flags);

}  // namespace kvt
