// Kernel of the 16x16 edge detector: *flag = 1 for an edge block, else 0.
#pragma once

#include <cstdint>

#include "common/dispatch.h"
#include "kvtvc.h"

namespace kvt {

KvtStatus edges_16x16_ref(const uint8_t* src, int step, uint8_t diff_threshold, uint8_t count_threshold,
                          uint8_t* flag);
#if KVT_HAVE_SSE2
KvtStatus edges_16x16_sse2(const uint8_t* src, int step, uint8_t diff_threshold, uint8_t count_threshold,
                           uint8_t* flag);
#endif

// The decision after each row: the running count k against the count threshold n, both
// negated modulo 256 and compared unsigned. For 1 <= k, n <= 255 this is k > n; k = 0 passes
// whenever n is not 0, so a block whose first rows are flat is an edge block.
inline bool edge_count_passes(uint8_t k, uint8_t n) { return uint8_t(0u - k) < uint8_t(0u - n); }

}  // namespace kvt
