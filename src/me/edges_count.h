// The count test of the 16x16 edge detector, shared by its kernels of every tier.
#pragma once

#include <cstdint>

// Internal linkage: each tier file gets its own copy, built with its own target flags.
namespace kvt {
namespace {

// The decision after each row: the running count k against the count threshold n, both
// negated modulo 256 and compared unsigned. For 1 <= k, n <= 255 this is k > n; k = 0 passes
// whenever n is not 0, so a block whose first rows are flat is an edge block.
inline bool edge_count_passes(uint8_t k, uint8_t n) { return uint8_t(0u - k) < uint8_t(0u - n); }

}  // namespace
}  // namespace kvt
