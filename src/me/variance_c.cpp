// Portable kernels of the variance and mean family, written plainly from the definitions.
#include <cstdlib>
#include <cstring>

#include "common/arith.h"
#include "common/kernel.h"
#include "me/halfpel.h"
#include "me/me_dsp.h"
#include "me/variance_finish.h"

namespace kvt::KVT_C_NS {

namespace {

// Sum and sum of squares of a W x H block of samples.
template <int W, int H>
void block_sums(const uint8_t* src, int step, uint32_t& s, uint32_t& q) {
    s = q = 0;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            const uint32_t v = src[intptr_t(y) * step + x];
            s += v;
            q += v * v;
        }
}

// Per 8x8 quarter of a 16 x H block: prediction sum and sum of squared residuals.
template <int H, int type>
KvtStatus varmeandiff(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, const int32_t* sums,
                      int32_t* var, int32_t* mean) {
    for (int k = 0; k < H / 4; ++k) {
        const int x0 = (k & 1) * 8, y0 = (k >> 1) * 8;
        uint32_t p = 0, q = 0;
        for (int y = y0; y < y0 + 8; ++y)
            for (int x = x0; x < x0 + 8; ++x) {
                const int pred = halfpel_at(ref, ref_step, x, y, type, kRoundFixed);
                const int d = cur[intptr_t(y) * cur_step + x] - pred;
                p += uint32_t(pred);
                q += uint32_t(d * d);
            }
        varmeandiff_finish<H == 16>(sums[k], p, q, var + k, mean + k);
    }
    return kvtStsOk;
}

KvtStatus variance16(const uint8_t* src, int step, int32_t* var) {
    uint32_t s, q;
    block_sums<16, 16>(src, step, s, q);
    *var = int32_t(q - ((s * s) >> 8));  // s * s < 2^32: 65280^2 fits unsigned
    return kvtStsOk;
}

KvtStatus varmean8x8(const uint8_t* src, int step, int32_t* var, int32_t* mean) {
    uint32_t s, q;
    block_sums<8, 8>(src, step, s, q);
    *mean = int32_t(s);
    *var = int32_t((q - (s >> 3) * (s >> 3)) >> 6);
    return kvtStsOk;
}

KvtStatus varmean8x8_16s(const int16_t* src, int step, int32_t* var, int32_t* mean) {
    int32_t s = 0;
    uint32_t q = 0;
    for (int x = 0; x < 8; ++x) {
        int16_t column = 0;
        for (int y = 0; y < 8; ++y) {
            int16_t v;  // the step is in bytes and need not be even
            std::memcpy(&v, reinterpret_cast<const uint8_t*>(src) + intptr_t(y) * step + 2 * x, sizeof v);
            column = sat16(column + v);
            q += uint32_t(v * v);
        }
        s += column;
    }
    varmean16s_finish(s, q, var, mean);
    return kvtStsOk;
}

KvtStatus mean_abs_dev16(const uint8_t* src, int step, int32_t* dev) {
    uint32_t s, q;
    block_sums<16, 16>(src, step, s, q);
    const int mean = int((s + 128) >> 8);
    int32_t sum = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) sum += std::abs(src[intptr_t(y) * step + x] - mean);
    *dev = sum;
    return kvtStsOk;
}

}  // namespace

void init_variance(MeDsp& d) {
    d.variance16 = variance16;
    d.varmean8x8 = varmean8x8;
    d.varmean8x8_16s = varmean8x8_16s;
    fill_slots(d.varmeandiff16x16, [](auto p) { return varmeandiff<16, decltype(p)::value * 4>; });
    fill_slots(d.varmeandiff16x8, [](auto p) { return varmeandiff<8, decltype(p)::value * 4>; });
    d.mean_abs_dev16 = mean_abs_dev16;
}

}  // namespace kvt::KVT_C_NS
