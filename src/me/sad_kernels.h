// Kernels of the SAD family. Blocks are current then reference, each a pointer and a byte step;
// `type` is the half-sample phase code (0, 4, 8, 12) with the fixed rounding of halfpel.h.
#pragma once

#include <cstdint>

#include "common/dispatch.h"
#include "kvtvc.h"

namespace kvt {

#define KVT_DECLARE_SAD_KERNELS(isa)                                                                        \
    template <int type>                                                                                     \
    KvtStatus sad_16x16_##isa(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,           \
                              int32_t* sad);                                                                \
    template <int type>                                                                                     \
    KvtStatus sad_8x8_##isa(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,             \
                            int32_t* sad);                                                                  \
    KvtStatus sad_4x4_##isa(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,             \
                            int32_t* sad);                                                                  \
    /* sads: top-left, top-right, bottom-left, bottom-right */                                              \
    KvtStatus sad_16x16_blocks8x8_##isa(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, \
                                        uint16_t* sads);                                                    \
    /* sads: the sixteen 4x4 sub-blocks in raster order */                                                  \
    KvtStatus sad_16x16_blocks4x4_##isa(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, \
                                        uint16_t* sads);

KVT_DECLARE_SAD_KERNELS(ref)
#if KVT_HAVE_SSE2
KVT_DECLARE_SAD_KERNELS(sse2)
// The current block's pointer and step are multiples of 16.
template <int type>
KvtStatus sad_16x16_a16_sse2(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,
                             int32_t* sad);
#endif
#undef KVT_DECLARE_SAD_KERNELS

}  // namespace kvt
