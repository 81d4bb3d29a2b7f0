// Reference kernels of the vector helpers, written plainly from their definitions.
#include "core/vector_kernels.h"

#include "common/arith.h"

namespace kvt {

KvtStatus set_8u_ref(uint8_t val, uint8_t* dst, int len) {
    for (int i = 0; i < len; ++i) dst[i] = val;
    return kvtStsOk;
}

KvtStatus set_16s_ref(int16_t val, int16_t* dst, int len) {
    for (int i = 0; i < len; ++i) dst[i] = val;
    return kvtStsOk;
}

KvtStatus zero_16s_ref(int16_t* dst, int len) {
    for (int i = 0; i < len; ++i) dst[i] = 0;
    return kvtStsOk;
}

KvtStatus copy_8u_ref(const uint8_t* src, uint8_t* dst, int len) {
    for (int i = 0; i < len; ++i) dst[i] = src[i];
    return kvtStsOk;
}

namespace {

// One element of x * v / 2^s; the product of two 16-bit values is exact in 32 bits.
int16_t mulc_one(int16_t x, int16_t v, int s) {
    const int32_t p = int32_t(x) * v;
    if (s == 0) return sat16(p);
    if (s > 0) {
        // Round to nearest, ties to even: add half minus one, plus one when the kept part is odd.
        const int32_t odd = asr(p, s) & 1;
        return sat16(asr(p + (int32_t(1) << (s - 1)) - 1 + odd, s));
    }
    if (s >= -15) return sat16(int32_t(sat16(p)) * (int32_t(1) << -s));
    if (x == 0) return 0;
    return (x < 0) == (v < 0) ? 32767 : -32768;
}

}  // namespace

KvtStatus mulc_16s_sfs_ref(int16_t val, int16_t* srcdst, int len, int scale) {
    if (val == 0 || scale > 30) return zero_16s_ref(srcdst, len);
    if (scale == 0 && val == 1) return kvtStsOk;
    for (int i = 0; i < len; ++i) srcdst[i] = mulc_one(srcdst[i], val, scale);
    return kvtStsOk;
}

KvtStatus threshold_lt_16s_ref(int16_t* srcdst, int len, int16_t level) {
    for (int i = 0; i < len; ++i)
        if (srcdst[i] < level) srcdst[i] = level;
    return kvtStsOk;
}

KvtStatus threshold_gt_16s_ref(int16_t* srcdst, int len, int16_t level) {
    for (int i = 0; i < len; ++i)
        if (srcdst[i] > level) srcdst[i] = level;
    return kvtStsOk;
}

KvtStatus set_8u_c1r_ref(uint8_t val, uint8_t* dst, int step, int width, int height) {
    for (int y = 0; y < height; ++y, dst += step) set_8u_ref(val, dst, width);
    return kvtStsOk;
}

uint32_t count_zeros_8x8_16s_ref(const int16_t* src) {
    uint32_t n = 0;
    for (int i = 0; i < 64; ++i) n += src[i] == 0;
    return n;
}

}  // namespace kvt
