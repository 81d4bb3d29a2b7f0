// AVX2 helpers of the SSE2 vector kernels (see wide_stores.h). Each function carries its own
// target attribute, so nothing outside them is built for AVX2 and shared inline functions keep
// their SSE2 code.
#include <immintrin.h>

#include "core/wide_stores.h"

namespace kvt {

namespace {

#define KVT_AVX2 __attribute__((target("avx2")))

KVT_AVX2 inline __m256i load32(const uint8_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}
KVT_AVX2 inline void store32(uint8_t* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

// Four stores of the 128 bytes at p.
KVT_AVX2 inline void store128(uint8_t* p, __m256i v) {
    store32(p, v);
    store32(p + 32, v);
    store32(p + 64, v);
    store32(p + 96, v);
}

KVT_AVX2 inline void copy128(const uint8_t* s, uint8_t* d) {
    const __m256i a = load32(s), b = load32(s + 32), c = load32(s + 64), e = load32(s + 96);
    store32(d, a);
    store32(d + 32, b);
    store32(d + 64, c);
    store32(d + 96, e);
}

}  // namespace

// Up to 128 bytes: two stores from each end, overlapping in the middle. Above: 128-byte blocks,
// the last one ending at the end of the buffer.
KVT_AVX2 KvtStatus fill_mid_avx2(uint8_t* dst, size_t n, uint16_t pair) {
    const __m256i v = _mm256_set1_epi16(int16_t(pair));
    uint8_t* const end = dst + n;
    if (n <= 128) {
        store32(dst, v);
        store32(dst + 32, v);
        store32(end - 64, v);
        store32(end - 32, v);
        return kvtStsOk;
    }
    for (uint8_t* p = dst; p < end - 128; p += 128) store128(p, v);
    store128(end - 128, v);
    return kvtStsOk;
}

KVT_AVX2 KvtStatus copy_mid_avx2(const uint8_t* src, uint8_t* dst, size_t n) {
    if (n <= 128) {
        const __m256i a = load32(src), b = load32(src + 32), c = load32(src + n - 64),
                      d = load32(src + n - 32);
        store32(dst, a);
        store32(dst + 32, b);
        store32(dst + n - 64, c);
        store32(dst + n - 32, d);
        return kvtStsOk;
    }
    for (size_t i = 0; i < n - 128; i += 128) copy128(src + i, dst + i);
    copy128(src + n - 128, dst + n - 128);
    return kvtStsOk;
}

#undef KVT_AVX2

}  // namespace kvt
