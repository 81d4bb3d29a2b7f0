// Kernel table of the SAD family. Blocks are current then reference, each a pointer and a byte
// step; phase-indexed slots take the phase code / 4 (0 integer, 1 vertical half, 2 horizontal
// half, 3 both) with the fixed rounding of halfpel.h.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

using SadFn = KvtStatus (*)(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* sad);
// sads: the sub-block SADs of a 16x16 block in raster order.
using SadBlocksFn = KvtStatus (*)(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,
                                  uint16_t* sads);

struct SadDsp {
    SadFn sad16[4];
    SadFn sad16_a16[4];  // the current block's pointer and step are multiples of 16
    SadFn sad8[4];
    SadFn sad4;
    SadBlocksFn blocks8x8;
    SadBlocksFn blocks4x4;
};

namespace c {
void init_sad(SadDsp& d);
}
namespace ref {
void init_sad(SadDsp& d);
}
namespace sse2 {
void init_sad(SadDsp& d);
}
namespace avx2 {
void init_sad(SadDsp& d);
}

void init_sad_dsp(SadDsp& d, unsigned cpu_flags);

}  // namespace kvt
