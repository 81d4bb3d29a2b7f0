// Kernel table of the inverse scans: dst[scan[i]] = src[i] (source and destination distinct), by
// scan number 0 zigzag, 1 alternate vertical, 2 alternate horizontal.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

using ZigzagFullFn = KvtStatus (*)(const int16_t* src, int16_t* dst);
// Only scan positions 0 .. len - 1 (1..64) are read and scattered; other entries of dst stay.
using ZigzagCompactFn = KvtStatus (*)(const int16_t* src, int len, int16_t* dst);

struct ZigzagDsp {
    ZigzagFullFn full[3];
    ZigzagCompactFn compact[3];
};

namespace c {
void init_zigzag(ZigzagDsp& d);
}
namespace ref {
void init_zigzag(ZigzagDsp& d);
}
namespace ssse3 {
void init_zigzag(ZigzagDsp& d);
}
namespace avx512 {
void init_zigzag(ZigzagDsp& d);
}

void init_zigzag_dsp(ZigzagDsp& d, unsigned cpu_flags);

}  // namespace kvt
