// Kernel table of the one-dimensional vector helpers and the region fill.
// Arguments are valid when a kernel is called: lengths >= 1, non-null pointers.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

// Above these sizes (bytes written) the stores bypass the cache.
constexpr int64_t kStreamSetBytes = 262144;
constexpr int64_t kStreamCopyBytes = 262144;
constexpr int64_t kStreamZeroBytes = 524288;

struct VectorDsp {
    KvtStatus (*set_8u)(uint8_t val, uint8_t* dst, int len);
    KvtStatus (*set_16s)(int16_t val, int16_t* dst, int len);
    KvtStatus (*zero_16s)(int16_t* dst, int len);
    KvtStatus (*copy_8u)(const uint8_t* src, uint8_t* dst, int len);
    KvtStatus (*mulc_16s_sfs)(int16_t val, int16_t* srcdst, int len, int scale);
    KvtStatus (*threshold_lt_16s)(int16_t* srcdst, int len, int16_t level);
    KvtStatus (*threshold_gt_16s)(int16_t* srcdst, int len, int16_t level);
    KvtStatus (*set_8u_c1r)(uint8_t val, uint8_t* dst, int step, int width, int height);
    KvtStatus (*count_zeros_8x8)(const int16_t* src, uint32_t* count);
};

namespace c {
void init_vector(VectorDsp& d);
}
namespace ref {
void init_vector(VectorDsp& d);
}
namespace sse2 {
void init_vector(VectorDsp& d);
// The AVX2 tier hands the streaming sizes (and rows wider than 512 bytes) to these.
KvtStatus set_8u(uint8_t val, uint8_t* dst, int len);
KvtStatus set_16s(int16_t val, int16_t* dst, int len);
KvtStatus zero_16s(int16_t* dst, int len);
KvtStatus copy_8u(const uint8_t* src, uint8_t* dst, int len);
KvtStatus set_8u_c1r(uint8_t val, uint8_t* dst, int step, int width, int height);
}  // namespace sse2
namespace avx2 {
void init_vector(VectorDsp& d);
}

void init_vector_dsp(VectorDsp& d, unsigned cpu_flags);

}  // namespace kvt
