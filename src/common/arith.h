// Scalar arithmetic helpers shared by the reference kernels.
#pragma once

#include <cstdint>

namespace kvt {

constexpr int16_t sat16(int32_t v) {
    return static_cast<int16_t>(v < -32768 ? -32768 : (v > 32767 ? 32767 : v));
}

// Arithmetic right shift of a signed value (well defined in C++20, explicit here for C++17).
constexpr int32_t asr(int32_t v, int s) { return v >= 0 ? v >> s : ~(~v >> s); }

}  // namespace kvt
