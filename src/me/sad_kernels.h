// Kernels of the SAD family. Blocks are current then reference, each a pointer and a byte step;
// phase tables are indexed by the half-sample phase (0 ff, 1 fh, 2 hf, 3 hh), predictions use
// the fixed rounding of halfpel.h.
#pragma once

#include <cstdint>

#include "common/dispatch.h"

namespace kvt {

using SadFn = int32_t (*)(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step);

#define KVT_DECLARE_SAD_KERNELS(isa)                                                             \
    extern const SadFn sad_16x16_##isa[4];                                                       \
    extern const SadFn sad_8x8_##isa[4];                                                         \
    int32_t sad_4x4_##isa(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step);   \
    /* out: top-left, top-right, bottom-left, bottom-right */                                    \
    void sad_16x16_blocks8x8_##isa(const uint8_t* cur, int cur_step, const uint8_t* ref,         \
                                   int ref_step, uint16_t* out);                                 \
    /* out: the sixteen 4x4 sub-blocks in raster order */                                        \
    void sad_16x16_blocks4x4_##isa(const uint8_t* cur, int cur_step, const uint8_t* ref,         \
                                   int ref_step, uint16_t* out);

KVT_DECLARE_SAD_KERNELS(ref)
#if KVT_HAVE_SSE2
KVT_DECLARE_SAD_KERNELS(sse2)
#endif
#undef KVT_DECLARE_SAD_KERNELS

}  // namespace kvt
