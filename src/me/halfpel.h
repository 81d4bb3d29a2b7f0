// Half-sample prediction shared by the motion-estimation metrics (H.263 / MPEG-4 style).
//
// The motion-compensation type names the phase: 0 integer, 4 vertical half (fh), 8 horizontal
// half (hf), 12 both (hh). With a = ref(x, y), b = ref(x+1, y), c = ref(x, y+1), d = ref(x+1, y+1):
//   fh = (a + c + k1) >> 1,  hf = (a + b + k1) >> 1,  hh = (a + b + c + d + k2) >> 2
// where the rounding terms (k1, k2) depend on the family:
//   fixed  (SAD, squared differences, variances):      (1, 2)
//   narrow (8-wide and bidirectional residuals):        (1 - r, 2 - r)
//   wide   (16-wide single-direction residuals):        (2 - r, 3 - r)
// with r = 0 for kvtRoundNormal and 1 for kvtRoundLower.
// The wide form can predict 256 (r = 0, a = c = 255), so predictions are ints, not samples.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

enum McType : int {
    kMcFull = kvtMcFull,
    kMcVertHalf = kvtMcVertHalf,
    kMcHorHalf = kvtMcHorHalf,
    kMcBothHalf = kvtMcBothHalf
};
// The bits of a motion-compensation type that name its phase (the fronts ignore the others).
constexpr int kMcPhaseBits = kvtMcVertHalf | kvtMcHorHalf;

// The four codes; the squared-difference and VarMeanDiff fronts accept only these.
constexpr bool is_phase_code(int type) {
    return type == kMcFull || type == kMcVertHalf || type == kMcHorHalf || type == kMcBothHalf;
}

// A current block whose pointer and step are multiples of 16 takes the aligned kernels.
inline bool aligned16(const void* p, int step) {
    return ((reinterpret_cast<uintptr_t>(p) | uintptr_t(step)) & 15) == 0;
}

struct HalfRound {
    int k1, k2;
};

constexpr HalfRound kRoundFixed{1, 2};
constexpr HalfRound round_narrow(int r) { return {1 - r, 2 - r}; }
constexpr HalfRound round_wide(int r) { return {2 - r, 3 - r}; }

// Prediction of sample (x, y) of a block at `ref` for phase `type` (one of the four legal values).
inline int halfpel_at(const uint8_t* ref, int step, int x, int y, int type, HalfRound k) {
    const uint8_t* p = ref + static_cast<intptr_t>(y) * step + x;
    switch (type) {
        case kMcVertHalf:
            return (p[0] + p[step] + k.k1) >> 1;
        case kMcHorHalf:
            return (p[0] + p[1] + k.k1) >> 1;
        case kMcBothHalf:
            return (p[0] + p[1] + p[step] + p[step + 1] + k.k2) >> 2;
        default:
            return p[0];
    }
}

}  // namespace kvt
