// Kernel table of overlapped block motion compensation (H.263 Annex F, also ISO/IEC 14496-2
// 7.6.6): an 8x8 luminance prediction blended from the predictions at the block's own vector and
// at its neighbours' vectors,
//   p(x, y) = (q(x, y) * H0(x, y) + t(x, y) * H1(x, y) + s(x, y) * H2(x, y) + 4) >> 3
// where q is the prediction at the current vector, t at the vector of the block above for rows
// 0..3 and of the block below for rows 4..7, and s at the vector of the block on the left for
// columns 0..3 and on the right for columns 4..7. Every prediction is the half-sample prediction
// of recon_dsp.h with the same rounding control.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

// The weighting matrices H0 (current), H1 (above and below), H2 (left and right) of H.263 Annex F,
// row by row; the three sum to 8 at every position.
alignas(16) inline constexpr int16_t kObmcWeights[3][64] = {
    {4, 5, 5, 5, 5, 5, 5, 4, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 6, 6, 6, 6, 5, 5, 5, 5, 6, 6, 6, 6, 5, 5,
     5, 5, 6, 6, 6, 6, 5, 5, 5, 5, 6, 6, 6, 6, 5, 5, 5, 5, 5, 5, 5, 5, 5, 5, 4, 5, 5, 5, 5, 5, 5, 4},
    {2, 2, 2, 2, 2, 2, 2, 2, 1, 1, 2, 2, 2, 2, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
     1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2},
    {2, 1, 1, 1, 1, 1, 1, 2, 2, 2, 1, 1, 1, 1, 2, 2, 2, 2, 1, 1, 1, 1, 2, 2, 2, 2, 1, 1, 1, 1, 2, 2,
     2, 2, 1, 1, 1, 1, 2, 2, 2, 2, 1, 1, 1, 1, 2, 2, 2, 2, 1, 1, 1, 1, 2, 2, 2, 1, 1, 1, 1, 1, 1, 2}};

// The vectors of one block, in half samples.
enum ObmcVector { kObmcCurrent, kObmcLeft, kObmcRight, kObmcAbove, kObmcBelow, kObmcVectors };

// ref is the block's own position in the reference picture.
using ObmcFn = KvtStatus (*)(const uint8_t* ref, int ref_step, uint8_t* dst, int dst_step,
                             const KvtMotionVec* const mv[kObmcVectors]);

struct ObmcDsp {
    ObmcFn obmc[2];  // [rounding control]
};

namespace c {
void init_obmc(ObmcDsp& d);
}
namespace ref {
void init_obmc(ObmcDsp& d);
}
namespace sse2 {
void init_obmc(ObmcDsp& d);
}
void init_obmc_dsp(ObmcDsp& d, unsigned cpu_flags);

}  // namespace kvt
