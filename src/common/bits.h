// Bit helpers shared by the bit readers and the motion-vector predictors.
#pragma once

#include <cstdint>

namespace kvt {

// The low n bits set, for n = 0..32.
constexpr uint32_t low_mask(int n) { return uint32_t((uint64_t(1) << n) - 1); }

// The middle one of three values.
constexpr int median3(int a, int b, int c) {
    const int lo = a < b ? a : b, hi = a < b ? b : a;
    return c < lo ? lo : (c > hi ? hi : c);
}

}  // namespace kvt
