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

// The first and the last sizeof(T) of n bytes (sizeof(T) <= n <= 2 sizeof(T)), both loaded first.
template <class T>
inline void copy_ends(const uint8_t* src, uint8_t* dst, size_t n) {
    T a, b;
    std::memcpy(&a, src, sizeof a);
    std::memcpy(&b, src + n - sizeof b, sizeof b);
    std::memcpy(dst, &a, sizeof a);
    std::memcpy(dst + n - sizeof b, &b, sizeof b);
}

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
        copy_ends<uint64_t>(src, dst, n);
    } else if (n >= 4) {
        copy_ends<uint32_t>(src, dst, n);
    } else {  // 1 to 3 bytes
        const uint8_t a = src[0], b = src[n / 2], c = src[n - 1];
        dst[0] = a;
        dst[n / 2] = b;
        dst[n - 1] = c;
    }
}

}  // namespace
}  // namespace kvt::simd
