// Copies of 1 to 64 bytes for the SSE2 and AVX2 vector kernels: all loads first, then stores that
// may overlap (two of the widest size that fits, or four 16-byte ones from 32 bytes on; two
// 32-byte moves measured slower on Zen 4). Include only from those tier files; internal linkage.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/simd.h"

namespace kvt::simd {
namespace {

inline void copy_short(const uint8_t* src, uint8_t* dst, size_t n) {
    if (n >= 32) {
        const __m128i a = load(src), b = load(src + 16), c = load(src + n - 32), d = load(src + n - 16);
        store(dst, a);
        store(dst + 16, b);
        store(dst + n - 32, c);
        store(dst + n - 16, d);
    } else if (n >= 16) {
        const __m128i a = load(src), b = load(src + n - 16);
        store(dst, a);
        store(dst + n - 16, b);
    } else if (n >= 8) {
        uint64_t a, b;
        std::memcpy(&a, src, 8);
        std::memcpy(&b, src + n - 8, 8);
        std::memcpy(dst, &a, 8);
        std::memcpy(dst + n - 8, &b, 8);
    } else if (n >= 4) {
        uint32_t a, b;
        std::memcpy(&a, src, 4);
        std::memcpy(&b, src + n - 4, 4);
        std::memcpy(dst, &a, 4);
        std::memcpy(dst + n - 4, &b, 4);
    } else {  // 1 to 3 bytes
        const uint8_t a = src[0], b = src[n / 2], c = src[n - 1];
        dst[0] = a;
        dst[n / 2] = b;
        dst[n - 1] = c;
    }
}

}  // namespace
}  // namespace kvt::simd
