// Kernel table of the H.264 deblocking filter (H.264 8.7) for one macroblock of 4:2:0 8-bit video:
// all vertical or all horizontal edges of its luma or of one chroma plane, in place. The
// arguments are those of the exported functions (kvtvc.h documents the layout of alpha, beta,
// tc0 and bS).
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

using DeblockFn = KvtStatus (*)(uint8_t* src_dst, int32_t step, const uint8_t* alpha, const uint8_t* beta,
                                const uint8_t* tc0, const uint8_t* bs);

struct DeblockDsp {
    DeblockFn luma_ver;
    DeblockFn luma_hor;
    DeblockFn chroma_ver;
    DeblockFn chroma_hor;
};

namespace c {
void init_deblock(DeblockDsp& d);
}
namespace ref {
void init_deblock(DeblockDsp& d);
}
namespace sse2 {
void init_deblock(DeblockDsp& d);
}
namespace avx2 {
void init_deblock(DeblockDsp& d);
}
namespace avx512 {
void init_deblock(DeblockDsp& d);
}

void init_deblock_dsp(DeblockDsp& d, unsigned cpu_flags);

}  // namespace kvt
