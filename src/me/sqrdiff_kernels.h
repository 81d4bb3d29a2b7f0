// Kernels of the squared-difference family: sums over a 16x16 block of (current - prediction)^2,
// predictions at phase code `type` with the fixed rounding of halfpel.h.
#pragma once

#include <cstdint>

#include "common/dispatch.h"
#include "kvtvc.h"

namespace kvt {

// sqrdiff_16x16b: the prediction is (F + B + 1) >> 1 of a forward prediction at phase tf and a
// backward prediction at phase tb.
#define KVT_DECLARE_SQRDIFF_KERNELS(isa)                                                               \
    template <int type>                                                                                \
    KvtStatus sqrdiff_16x16_##isa(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,  \
                                  int32_t* sum);                                                       \
    template <int tf, int tb>                                                                          \
    KvtStatus sqrdiff_16x16b_##isa(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step, \
                                   const uint8_t* bwd, int bwd_step, int32_t* sum);

KVT_DECLARE_SQRDIFF_KERNELS(ref)
#if KVT_HAVE_SSE2
KVT_DECLARE_SQRDIFF_KERNELS(sse2)
KVT_DECLARE_SQRDIFF_KERNELS(a16_sse2)  // current block pointer and step multiples of 16
#endif
#undef KVT_DECLARE_SQRDIFF_KERNELS

}  // namespace kvt
