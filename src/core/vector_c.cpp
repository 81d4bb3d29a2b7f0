// Portable kernels of the vector helpers, written plainly from their definitions.
#include "common/arith.h"
#include "common/kernel.h"
#include "core/vector_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

KvtStatus set_8u(uint8_t val, uint8_t* dst, int len) {
    for (int i = 0; i < len; ++i) dst[i] = val;
    return kvtStsOk;
}

KvtStatus set_16s(int16_t val, int16_t* dst, int len) {
    for (int i = 0; i < len; ++i) dst[i] = val;
    return kvtStsOk;
}

KvtStatus zero_16s(int16_t* dst, int len) {
    for (int i = 0; i < len; ++i) dst[i] = 0;
    return kvtStsOk;
}

KvtStatus copy_8u(const uint8_t* src, uint8_t* dst, int len) {
    for (int i = 0; i < len; ++i) dst[i] = src[i];
    return kvtStsOk;
}

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

KvtStatus mulc_16s_sfs(int16_t val, int16_t* srcdst, int len, int scale) {
    if (val == 0 || scale > 30) return zero_16s(srcdst, len);
    if (scale == 0 && val == 1) return kvtStsOk;
    for (int i = 0; i < len; ++i) srcdst[i] = mulc_one(srcdst[i], val, scale);
    return kvtStsOk;
}

KvtStatus threshold_lt_16s(int16_t* srcdst, int len, int16_t level) {
    for (int i = 0; i < len; ++i)
        if (srcdst[i] < level) srcdst[i] = level;
    return kvtStsOk;
}

KvtStatus threshold_gt_16s(int16_t* srcdst, int len, int16_t level) {
    for (int i = 0; i < len; ++i)
        if (srcdst[i] > level) srcdst[i] = level;
    return kvtStsOk;
}

KvtStatus set_8u_c1r(uint8_t val, uint8_t* dst, int step, int width, int height) {
    for (int y = 0; y < height; ++y, dst += step) set_8u(val, dst, width);
    return kvtStsOk;
}

KvtStatus count_zeros_8x8(const int16_t* src, uint32_t* count) {
    uint32_t n = 0;
    for (int i = 0; i < 64; ++i) n += src[i] == 0;
    *count = n;
    return kvtStsOk;
}

}  // namespace

void init_vector(VectorDsp& d) {
    d.set_8u = set_8u;
    d.set_16s = set_16s;
    d.zero_16s = zero_16s;
    d.copy_8u = copy_8u;
    d.mulc_16s_sfs = mulc_16s_sfs;
    d.threshold_lt_16s = threshold_lt_16s;
    d.threshold_gt_16s = threshold_gt_16s;
    d.set_8u_c1r = set_8u_c1r;
    d.count_zeros_8x8 = count_zeros_8x8;
}

}  // namespace kvt::KVT_C_NS
