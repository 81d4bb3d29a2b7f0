// Portable 8x8 DCT kernels: the fixed-point transform of dct_dsp.h, written plainly. The SIMD
// tiers reproduce these results bit for bit.
#include <cstddef>

#include "common/arith.h"
#include "common/kernel.h"
#include "transform/dct_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

// basis(n, k) as a table, so that the loops below multiply by constants.
struct BasisTable {
    int v[8][8];
};
constexpr BasisTable kBasis = [] {
    BasisTable b{};
    for (int n = 0; n < 8; ++n)
        for (int k = 0; k < 8; ++k) b.v[n][k] = dct::basis(n, k);
    return b;
}();

// Sums of products cannot leave 32 bits (dct_dsp.h), so the order of the terms does not matter.
inline int32_t round_shift(int32_t sum, int shift) { return asr(sum + (1 << (shift - 1)), shift); }

// One inverse 1-D pass over x[k * step], k < N (the other inputs are zero):
// out[n] = round_shift(sum_k basis(n, k) x[k]). basis(7 - n, k) = (-1)^k basis(n, k), so the
// even and odd halves of each sum give two outputs.
template <int N>
void inverse_1d(const int16_t* x, ptrdiff_t step, int shift, int32_t out[8]) {
    for (int n = 0; n < 4; ++n) {
        int32_t even = 0, odd = 0;
        for (int k = 0; k < N; k += 2) even += kBasis.v[n][k] * x[k * step];
        for (int k = 1; k < N; k += 2) odd += kBasis.v[n][k] * x[k * step];
        out[n] = round_shift(even + odd, shift);
        out[7 - n] = round_shift(even - odd, shift);
    }
}

// Rows of the top-left N x N coefficients, then all eight columns; `put(m, c, value)` stores the
// 32-bit result of row m, column c.
template <int N, class Put>
void inverse(const int16_t* coef, Put put) {
    int16_t t[64] = {};  // rows N..7 of the intermediate are zero
    int32_t out[8];
    for (int r = 0; r < N; ++r) {
        inverse_1d<N>(coef + 8 * r, 1, dct::kInvRowShift, out);
        for (int n = 0; n < 8; ++n) t[8 * r + n] = sat16(out[n]);
    }
    for (int c = 0; c < 8; ++c) {
        inverse_1d<N>(t + c, 8, dct::kInvColShift, out);
        for (int m = 0; m < 8; ++m) put(m, c, out[m]);
    }
}

template <int N>
KvtStatus inverse_in_place(int16_t* block) {
    int16_t out[64];
    inverse<N>(block, [&](int m, int c, int32_t v) { out[8 * m + c] = sat16(v); });
    for (int i = 0; i < 64; ++i) block[i] = out[i];
    return kvtStsOk;
}

// Rows are stored top to bottom, so that with a step below 8 the later rows win, as in the
// SIMD tiers.
KvtStatus inverse_to_pixels(const int16_t* coef, uint8_t* dst, int dst_step) {
    uint8_t out[64];
    inverse<8>(coef, [&](int m, int c, int32_t v) {
        out[8 * m + c] = uint8_t(v < 0 ? 0 : v > 255 ? 255 : v);
    });
    for (int m = 0; m < 8; ++m)
        for (int c = 0; c < 8; ++c) dst[ptrdiff_t(m) * dst_step + c] = out[8 * m + c];
    return kvtStsOk;
}

// One forward 1-D pass over x[n * step]: the saturated 16-bit folds s, d, then
// out[k] = round_shift(sum_{n<4} basis(n, k) (k even ? s[n] : d[n])).
void forward_1d(const int16_t* x, ptrdiff_t step, int shift, int32_t out[8]) {
    int16_t s[4], d[4];
    for (int n = 0; n < 4; ++n) {
        s[n] = sat16(x[n * step] + x[(7 - n) * step]);
        d[n] = sat16(x[n * step] - x[(7 - n) * step]);
    }
    for (int k = 0; k < 8; ++k) {
        int32_t sum = 0;
        for (int n = 0; n < 4; ++n) sum += kBasis.v[n][k] * (k % 2 ? d[n] : s[n]);
        out[k] = round_shift(sum, shift);
    }
}

// Columns of x (8 rows, `step` elements apart), then rows, into 64 coefficients.
template <class T>
void forward(const T* x, ptrdiff_t step, int16_t* coef) {
    int16_t col[8], t[64];
    int32_t out[8];
    for (int c = 0; c < 8; ++c) {
        for (int n = 0; n < 8; ++n) col[n] = x[n * step + c];
        forward_1d(col, 1, dct::kFwdColShift, out);
        for (int k = 0; k < 8; ++k) t[8 * k + c] = sat16(out[k]);
    }
    for (int r = 0; r < 8; ++r) {
        forward_1d(t + 8 * r, 1, dct::kFwdRowShift, out);
        for (int k = 0; k < 8; ++k) coef[8 * r + k] = sat16(out[k]);
    }
}

KvtStatus forward_in_place(int16_t* block) {
    forward(block, 8, block);
    return kvtStsOk;
}

KvtStatus forward_from_pixels(const uint8_t* src, int src_step, int16_t* coef) {
    forward(src, src_step, coef);
    return kvtStsOk;
}

}  // namespace

void init_dct(DctDsp& d) {
    d.inv[0] = inverse_in_place<8>;
    d.inv[1] = inverse_in_place<4>;
    d.inv[2] = inverse_in_place<2>;
    d.inv_to_pixels = inverse_to_pixels;
    d.fwd = forward_in_place;
    d.fwd_from_pixels = forward_from_pixels;
}

}  // namespace kvt::KVT_C_NS
