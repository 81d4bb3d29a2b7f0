// Kernels of the H.263 motion-vector decoders (baseline, H.263 6.1.1 and Table 14).
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

// *dst = median(left, upper, upper_right) + decoded MVD, wrapped into [-32, 31] half samples;
// -75 (nothing changed) on an invalid code. The top-border form passes the left vector thrice.
int decode_mv_h263_ref(uint8_t** pp, int* pOffset, KvtMotionVec left, KvtMotionVec upper,
                       KvtMotionVec upper_right, KvtMotionVec* dst);

}  // namespace kvt
