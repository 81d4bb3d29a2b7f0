// Kernels of the one-dimensional vector helpers and the region fill.
// Arguments are valid when a kernel is called: lengths >= 1, non-null pointers.
#pragma once

#include <cstdint>

#include "common/dispatch.h"
#include "kvtvc.h"

namespace kvt {

// Above these sizes (bytes written) the stores bypass the cache.
constexpr int64_t kStreamSetBytes = 262144;
constexpr int64_t kStreamCopyBytes = 262144;
constexpr int64_t kStreamZeroBytes = 524288;

#define KVT_DECLARE_VECTOR_KERNELS(isa)                                                     \
    KvtStatus set_8u_##isa(uint8_t val, uint8_t* dst, int len);                             \
    KvtStatus set_16s_##isa(int16_t val, int16_t* dst, int len);                            \
    KvtStatus zero_16s_##isa(int16_t* dst, int len);                                        \
    KvtStatus copy_8u_##isa(const uint8_t* src, uint8_t* dst, int len);                     \
    KvtStatus mulc_16s_sfs_##isa(int16_t val, int16_t* srcdst, int len, int scale);         \
    KvtStatus threshold_lt_16s_##isa(int16_t* srcdst, int len, int16_t level);              \
    KvtStatus threshold_gt_16s_##isa(int16_t* srcdst, int len, int16_t level);              \
    KvtStatus set_8u_c1r_##isa(uint8_t val, uint8_t* dst, int step, int width, int height); \
    uint32_t count_zeros_8x8_16s_##isa(const int16_t* src);

KVT_DECLARE_VECTOR_KERNELS(ref)
#if KVT_HAVE_SSE2
KVT_DECLARE_VECTOR_KERNELS(sse2)
#endif
#undef KVT_DECLARE_VECTOR_KERNELS

}  // namespace kvt
