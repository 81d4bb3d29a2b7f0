// AVX2 8x8 DCT kernels: two rows per register, one in each 128-bit lane. Row passes work within
// a lane (a row's pairs spread across it, times the factors of four outputs); column passes
// interleave pairs of rows and take eight columns of 32-bit sums per register.
#include <immintrin.h>

#include "common/kernel.h"
#include "transform/dct_dsp.h"

namespace kvt::avx2 {

namespace {

using dct::basis;
using V = __m256i;

static_assert(basis(3, 2) == -basis(0, 2) && basis(3, 6) == -basis(0, 6) && basis(3, 4) == basis(0, 4));
static_assert(basis(2, 2) == -basis(1, 2) && basis(2, 6) == -basis(1, 6) && basis(2, 4) == basis(1, 4));

constexpr int packed(int lo, int hi) { return int((uint32_t(hi) << 16) | uint16_t(lo)); }
// PMADDWD factors: the same pair in every lane.
inline V pair(int lo, int hi) { return _mm256_set1_epi32(packed(lo, hi)); }
// Four 32-bit lanes f(0..3), the same in both halves.
template <class F>
inline V lanes4(F f) {
    return _mm256_setr_epi32(f(0), f(1), f(2), f(3), f(0), f(1), f(2), f(3));
}
// Inverse factors of outputs n0..n0+3, one per lane, for the inputs (ka, kb).
inline V pairs4(int n0, int ka, int kb) {
    return lanes4([=](int j) { return packed(basis(n0 + j, ka), basis(n0 + j, kb)); });
}
inline V madd(V x, V c) { return _mm256_madd_epi16(x, c); }
inline V add(V a, V b) { return _mm256_add_epi32(a, b); }
inline V sub(V a, V b) { return _mm256_sub_epi32(a, b); }
template <int Shift>
inline V rounding() {
    return _mm256_set1_epi32(1 << (Shift - 1));
}

inline V load2(const int16_t* a, const int16_t* b) {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(a))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(b)), 1);
}
inline void store(int16_t* p, V v) { _mm256_storeu_si256(reinterpret_cast<V*>(p), v); }
// The low 8 bytes of v at lo, the high 8 at hi.
inline void store_halves(uint8_t* lo, uint8_t* hi, __m128i v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(lo), v);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(hi), _mm_unpackhi_epi64(v, v));
}

// The 16-bit rows [a0|a1] and [b0|b1] as PMADDWD pairs over all eight columns:
// first = (a0, b0) interleaved, second = (a1, b1).
inline void interleave_rows(V a, V b, V& first, V& second) {
    const V lo = _mm256_unpacklo_epi16(a, b), hi = _mm256_unpackhi_epi16(a, b);
    first = _mm256_permute2x128_si256(lo, hi, 0x20);
    second = _mm256_permute2x128_si256(lo, hi, 0x31);
}

// The 32-bit rows y0, y1 (columns 0-3 in the low lane, 4-7 in the high) as 16-bit [y0|y1].
inline V pack_rows(V y0, V y1) { return _mm256_permute4x64_epi64(_mm256_packs_epi32(y0, y1), 0xD8); }

// ---- Inverse ----------------------------------------------------------------------------------

// Row pass of two rows, coefficients k < N: 16-bit [t_a|t_b].
template <int N>
inline V inverse_rows(V x) {
    constexpr int kShift = dct::kInvRowShift;
    const V rnd = rounding<kShift>();
    if constexpr (N == 2) {  // both output halves directly from (x0, x1)
        const V p01 = _mm256_shuffle_epi32(x, 0x00);
        const V lo = add(madd(p01, pairs4(0, 0, 1)), rnd), hi = add(madd(p01, pairs4(4, 0, 1)), rnd);
        return _mm256_packs_epi32(_mm256_srai_epi32(lo, kShift), _mm256_srai_epi32(hi, kShift));
    } else {
        V e, o;
        x = _mm256_shufflelo_epi16(x, 0xD8);  // x0 x2 x1 x3
        const V p02 = _mm256_shuffle_epi32(x, 0x00), p13 = _mm256_shuffle_epi32(x, 0x55);
        e = add(madd(p02, pairs4(0, 0, 2)), rnd);
        o = madd(p13, pairs4(0, 1, 3));
        if constexpr (N == 8) {
            x = _mm256_shufflehi_epi16(x, 0xD8);  // x4 x6 x5 x7
            e = add(e, madd(_mm256_shuffle_epi32(x, 0xAA), pairs4(0, 4, 6)));
            o = add(o, madd(_mm256_shuffle_epi32(x, 0xFF), pairs4(0, 5, 7)));
        }
        const V lo = _mm256_srai_epi32(add(e, o), kShift);
        const V hi = _mm256_srai_epi32(_mm256_shuffle_epi32(sub(e, o), 0x1B), kShift);  // outputs 4..7
        return _mm256_packs_epi32(lo, hi);
    }
}

// Column pass over the intermediate rows t = {[t0|t1], [t2|t3], [t4|t5], [t6|t7]} (rows k < N
// given): y[m] = output row m, 32-bit, columns 0-3 in the low lane and 4-7 in the high.
template <int N>
inline void inverse_columns(const V* t, V y[8]) {
    constexpr int kShift = dct::kInvColShift;
    const V rnd = rounding<kShift>();
    V e[4], o[4];
    if constexpr (N == 8) {
        V x04, x15, x26, x37;
        interleave_rows(t[0], t[2], x04, x15);
        interleave_rows(t[1], t[3], x26, x37);
        const V a = add(madd(x04, pair(basis(0, 0), basis(0, 4))), rnd);
        const V b = add(madd(x04, pair(basis(1, 0), basis(1, 4))), rnd);
        const V c = madd(x26, pair(basis(0, 2), basis(0, 6)));
        const V d = madd(x26, pair(basis(1, 2), basis(1, 6)));
        e[0] = add(a, c), e[3] = sub(a, c), e[1] = add(b, d), e[2] = sub(b, d);
        for (int n = 0; n < 4; ++n)
            o[n] = add(madd(x15, pair(basis(n, 1), basis(n, 5))), madd(x37, pair(basis(n, 3), basis(n, 7))));
    } else if constexpr (N == 4) {
        V x02, x13;
        interleave_rows(t[0], t[1], x02, x13);
        for (int n = 0; n < 4; ++n) {
            e[n] = add(madd(x02, pair(basis(n, 0), basis(n, 2))), rnd);
            o[n] = madd(x13, pair(basis(n, 1), basis(n, 3)));
        }
    } else {
        // [t0|t1] -> (t0, t1) pairs: quarters t0 c0-3, t1 c0-3 | t0 c4-7, t1 c4-7, then words.
        const V order = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15, 0, 1, 8, 9, 2,
                                         3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
        const V x01 = _mm256_shuffle_epi8(_mm256_permute4x64_epi64(t[0], 0xD8), order);
        e[0] = e[1] = e[2] = e[3] = add(madd(x01, pair(basis(0, 0), 0)), rnd);
        for (int n = 0; n < 4; ++n) o[n] = madd(x01, pair(0, basis(n, 1)));
    }
    for (int n = 0; n < 4; ++n) {
        y[n] = _mm256_srai_epi32(add(e[n], o[n]), kShift);
        y[7 - n] = _mm256_srai_epi32(sub(e[n], o[n]), kShift);
    }
}

template <int N>
inline void inverse(const int16_t* coef, V y[8]) {
    V t[4];
    for (int i = 0; i < N / 2; ++i) t[i] = inverse_rows<N>(load2(coef + 16 * i, coef + 16 * i + 8));
    inverse_columns<N>(t, y);
}

template <int N>
KvtStatus inverse_in_place(int16_t* block) {
    V y[8];
    inverse<N>(block, y);
    for (int i = 0; i < 4; ++i) store(block + 16 * i, pack_rows(y[2 * i], y[2 * i + 1]));
    return kvtStsOk;
}

KvtStatus inverse_to_pixels(const int16_t* coef, uint8_t* dst, int dst_step) {
    V y[8];
    inverse<8>(coef, y);
    const V rows = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    const intptr_t step = dst_step;
    for (int m = 0; m < 8; m += 4, dst += 4 * step) {
        // Bytes of rows m..m+3: quarters of columns 0-3 in the low lane, 4-7 in the high.
        const V b =
            _mm256_packus_epi16(_mm256_packs_epi32(y[m], y[m + 1]), _mm256_packs_epi32(y[m + 2], y[m + 3]));
        const V r = _mm256_permutevar8x32_epi32(b, rows);
        const __m128i r01 = _mm256_castsi256_si128(r), r23 = _mm256_extracti128_si256(r, 1);
        store_halves(dst, dst + step, r01);
        store_halves(dst + 2 * step, dst + 3 * step, r23);
    }
    return kvtStsOk;
}

// ---- Forward ----------------------------------------------------------------------------------

// Column pass over the rows a = [r0|r1], b = [r2|r3], c = [r5|r4], d = [r7|r6]: 16-bit
// intermediate rows t = {[t0|t1], [t2|t3], [t4|t5], [t6|t7]}.
inline void forward_columns(V a, V b, V c, V d, V t[4]) {
    constexpr int kShift = dct::kFwdColShift;
    V s02, s13, d02, d13;  // pairs of the folds [s0|s1] + [s2|s3], [d0|d1] + [d2|d3]
    interleave_rows(_mm256_adds_epi16(a, d), _mm256_adds_epi16(b, c), s02, s13);
    interleave_rows(_mm256_subs_epi16(a, d), _mm256_subs_epi16(b, c), d02, d13);
    const V rnd = rounding<kShift>();
    V x[8];
    for (int k = 0; k < 8; ++k) {
        const V p02 = k % 2 ? d02 : s02, p13 = k % 2 ? d13 : s13;
        const V sum =
            add(madd(p02, pair(basis(0, k), basis(2, k))), madd(p13, pair(basis(1, k), basis(3, k))));
        x[k] = _mm256_srai_epi32(add(sum, rnd), kShift);
    }
    for (int i = 0; i < 4; ++i) t[i] = pack_rows(x[2 * i], x[2 * i + 1]);
}

// Row pass of two intermediate rows [t_a|t_b]: the folds from the row and its mirror, the even
// outputs from s, the odd ones from d, then back into coefficient order.
inline V forward_rows(V t) {
    constexpr int kShift = dct::kFwdRowShift;
    const V mirror = _mm256_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1, 14, 15, 12, 13,
                                      10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1);
    const V order = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15, 0, 1, 8, 9, 2, 3,
                                     10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
    const V r = _mm256_shuffle_epi8(t, mirror), s = _mm256_adds_epi16(t, r), d = _mm256_subs_epi16(t, r);
    const V rnd = rounding<kShift>();
    // Lane j: output k = 2j + odd from the pairs (n, n + 1) of the folds.
    const auto part = [&](V folds, int odd) {
        const auto f = [odd](int n) {
            return lanes4([=](int j) { return packed(basis(n, 2 * j + odd), basis(n + 1, 2 * j + odd)); });
        };
        const V sum =
            add(madd(_mm256_shuffle_epi32(folds, 0x00), f(0)), madd(_mm256_shuffle_epi32(folds, 0x55), f(2)));
        return _mm256_srai_epi32(add(sum, rnd), kShift);
    };
    return _mm256_shuffle_epi8(_mm256_packs_epi32(part(s, 0), part(d, 1)), order);
}

inline void forward(V a, V b, V c, V d, int16_t* coef) {
    V t[4];
    forward_columns(a, b, c, d, t);
    for (int i = 0; i < 4; ++i) store(coef + 16 * i, forward_rows(t[i]));
}

KvtStatus forward_in_place(int16_t* block) {
    forward(load2(block, block + 8), load2(block + 16, block + 24), load2(block + 40, block + 32),
            load2(block + 56, block + 48), block);
    return kvtStsOk;
}

// Pixel rows i and j as 16-bit [ri|rj].
inline V load_pixels2(const uint8_t* src, intptr_t step, int i, int j) {
    const __m128i a = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + i * step));
    const __m128i b = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + j * step));
    return _mm256_cvtepu8_epi16(_mm_unpacklo_epi64(a, b));
}

KvtStatus forward_from_pixels(const uint8_t* src, int src_step, int16_t* coef) {
    const intptr_t step = src_step;
    forward(load_pixels2(src, step, 0, 1), load_pixels2(src, step, 2, 3), load_pixels2(src, step, 5, 4),
            load_pixels2(src, step, 7, 6), coef);
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

}  // namespace kvt::avx2
