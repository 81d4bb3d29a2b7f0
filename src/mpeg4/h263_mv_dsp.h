// Kernel table of the H.263 motion-vector decoders (baseline, H.263 6.1.1 and Table 14); C only.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

struct H263MvDsp {
    // *dst = median(left, upper, upper_right) + decoded MVD, wrapped into [-32, 31] half samples;
    // -75 (nothing changed) on an invalid code. The top-border form passes the left vector thrice.
    KvtStatus (*decode_mv)(uint8_t** pp, int* pOffset, KvtMotionVec left, KvtMotionVec upper,
                           KvtMotionVec upper_right, KvtMotionVec* dst);
};

namespace c {
void init_h263_mv(H263MvDsp& d);
}
namespace ref {
void init_h263_mv(H263MvDsp& d);
}

void init_h263_mv_dsp(H263MvDsp& d, unsigned cpu_flags);

}  // namespace kvt
