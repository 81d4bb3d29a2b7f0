// Kernels of the squared-difference family: sums over a 16x16 block of (current - prediction)^2,
// predictions with the fixed rounding of halfpel.h. Tables are indexed by phase (type >> 2).
#pragma once

#include <cstdint>

#include "common/dispatch.h"

namespace kvt {

using SqrDiffFn = int32_t (*)(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step);
// Bidirectional: prediction (F + B + 1) >> 1 of a forward and a backward half-sample prediction.
using SqrDiffBFn = int32_t (*)(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step,
                               const uint8_t* bwd, int bwd_step);

// sqrdiff_16x16b tables: index = forward phase + 4 * backward phase.
#define KVT_DECLARE_SQRDIFF_KERNELS(isa)              \
    extern const SqrDiffFn sqrdiff_16x16_##isa[4];    \
    extern const SqrDiffBFn sqrdiff_16x16b_##isa[16];

KVT_DECLARE_SQRDIFF_KERNELS(ref)
#if KVT_HAVE_SSE2
KVT_DECLARE_SQRDIFF_KERNELS(sse2)
#endif
#undef KVT_DECLARE_SQRDIFF_KERNELS

}  // namespace kvt
