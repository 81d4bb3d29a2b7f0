// SSE2 8x8 DCT kernels: the 1-D passes of dct_dsp.h as PMADDWD sums over pairs of inputs, eight
// lanes at a time, with transposes between them.
#include <emmintrin.h>

#include "common/kernel.h"
#include "transform/dct_dsp.h"

namespace kvt::sse2 {

namespace {

using dct::basis;

// The pairings below rely on these symmetries of the basis.
static_assert(basis(3, 2) == -basis(0, 2) && basis(3, 6) == -basis(0, 6) && basis(3, 4) == basis(0, 4));
static_assert(basis(2, 2) == -basis(1, 2) && basis(2, 6) == -basis(1, 6) && basis(2, 4) == basis(1, 4));

// Two 16-bit factors in every 32-bit lane: PMADDWD with it gives lo * x[2i] + hi * x[2i + 1].
inline __m128i pair(int lo, int hi) { return _mm_set1_epi32(int((uint32_t(hi) << 16) | uint16_t(lo))); }
// The factors of outputs n0..n0+3 for the input pair (k, k + 1), one output per lane.
inline __m128i pairs4(int n0, int k) {
    return _mm_setr_epi32(int((uint32_t(basis(n0, k + 1)) << 16) | uint16_t(basis(n0, k))),
                          int((uint32_t(basis(n0 + 1, k + 1)) << 16) | uint16_t(basis(n0 + 1, k))),
                          int((uint32_t(basis(n0 + 2, k + 1)) << 16) | uint16_t(basis(n0 + 2, k))),
                          int((uint32_t(basis(n0 + 3, k + 1)) << 16) | uint16_t(basis(n0 + 3, k))));
}
inline __m128i madd(__m128i x, __m128i c) { return _mm_madd_epi16(x, c); }
inline __m128i add(__m128i a, __m128i b) { return _mm_add_epi32(a, b); }
inline __m128i sub(__m128i a, __m128i b) { return _mm_sub_epi32(a, b); }
inline __m128i load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void store(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }

template <int Shift>
inline __m128i rounding() {
    return _mm_set1_epi32(1 << (Shift - 1));
}

// 8x8 transpose of 16-bit values.
inline void transpose(__m128i v[8]) {
    __m128i a[8], b[8];
    for (int i = 0; i < 4; ++i) {
        a[i] = _mm_unpacklo_epi16(v[2 * i], v[2 * i + 1]);
        a[i + 4] = _mm_unpackhi_epi16(v[2 * i], v[2 * i + 1]);
    }
    for (int i = 0; i < 2; ++i) {
        b[i] = _mm_unpacklo_epi32(a[2 * i], a[2 * i + 1]);
        b[i + 2] = _mm_unpackhi_epi32(a[2 * i], a[2 * i + 1]);
        b[i + 4] = _mm_unpacklo_epi32(a[2 * i + 4], a[2 * i + 5]);
        b[i + 6] = _mm_unpackhi_epi32(a[2 * i + 4], a[2 * i + 5]);
    }
    for (int i = 0; i < 4; ++i) {
        v[2 * i] = _mm_unpacklo_epi64(b[2 * i], b[2 * i + 1]);
        v[2 * i + 1] = _mm_unpackhi_epi64(b[2 * i], b[2 * i + 1]);
    }
}

// ---- Inverse ----------------------------------------------------------------------------------

// Inverse 1-D sums of four lanes (the low or high half of v[k], k < N; the others are zero),
// 32-bit and shifted: y[n] for n = 0..7.
template <int N, int Shift, bool High>
inline void inverse_lanes(const __m128i* v, __m128i y[8]) {
    const auto il = [&](int a, int b) {
        return High ? _mm_unpackhi_epi16(v[a], v[b]) : _mm_unpacklo_epi16(v[a], v[b]);
    };
    const __m128i rnd = rounding<Shift>();
    __m128i e[4], o[4];
    if constexpr (N == 8) {
        const __m128i x04 = il(0, 4), x26 = il(2, 6), x13 = il(1, 3), x57 = il(5, 7);
        const __m128i a = add(madd(x04, pair(basis(0, 0), basis(0, 4))), rnd);
        const __m128i b = add(madd(x04, pair(basis(1, 0), basis(1, 4))), rnd);
        const __m128i c = madd(x26, pair(basis(0, 2), basis(0, 6)));
        const __m128i d = madd(x26, pair(basis(1, 2), basis(1, 6)));
        e[0] = add(a, c), e[3] = sub(a, c), e[1] = add(b, d), e[2] = sub(b, d);
        for (int n = 0; n < 4; ++n)
            o[n] = add(madd(x13, pair(basis(n, 1), basis(n, 3))), madd(x57, pair(basis(n, 5), basis(n, 7))));
    } else if constexpr (N == 4) {
        const __m128i x02 = il(0, 2), x13 = il(1, 3);
        for (int n = 0; n < 4; ++n) {
            e[n] = add(madd(x02, pair(basis(n, 0), basis(n, 2))), rnd);
            o[n] = madd(x13, pair(basis(n, 1), basis(n, 3)));
        }
    } else {
        const __m128i x01 = il(0, 1);
        e[0] = e[1] = e[2] = e[3] = add(madd(x01, pair(basis(0, 0), 0)), rnd);
        for (int n = 0; n < 4; ++n) o[n] = madd(x01, pair(0, basis(n, 1)));
    }
    for (int n = 0; n < 4; ++n) {
        y[n] = _mm_srai_epi32(add(e[n], o[n]), Shift);
        y[7 - n] = _mm_srai_epi32(sub(e[n], o[n]), Shift);
    }
}

// One inverse pass down the eight vectors: v[n] = the 1-D inverse of v[k], k < N, lane by lane.
template <int N, int Shift>
inline void inverse_pass(__m128i v[8]) {
    __m128i lo[8], hi[8];
    inverse_lanes<N, Shift, false>(v, lo);
    inverse_lanes<N, Shift, true>(v, hi);
    for (int n = 0; n < 8; ++n) v[n] = _mm_packs_epi32(lo[n], hi[n]);
}

// The row pass of one row whose coefficients k < N may be nonzero (N = 2 or 4): every pair
// (x[k], x[k + 1]) spread to all lanes, times the factors of four outputs.
template <int N>
inline __m128i inverse_row(const int16_t* row) {
    const __m128i x = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(row)),
                  rnd = rounding<dct::kInvRowShift>();
    const __m128i p01 = _mm_shuffle_epi32(x, 0x00);
    __m128i lo = add(madd(p01, pairs4(0, 0)), rnd), hi = add(madd(p01, pairs4(4, 0)), rnd);
    if constexpr (N == 4) {
        const __m128i p23 = _mm_shuffle_epi32(x, 0x55);
        lo = add(lo, madd(p23, pairs4(0, 2)));
        hi = add(hi, madd(p23, pairs4(4, 2)));
    }
    return _mm_packs_epi32(_mm_srai_epi32(lo, dct::kInvRowShift), _mm_srai_epi32(hi, dct::kInvRowShift));
}

// Rows then columns of the top-left N x N coefficients: v[m] = output row m (16-bit, saturated).
template <int N>
inline void inverse(const int16_t* coef, __m128i v[8]) {
    if constexpr (N == 8) {
        for (int i = 0; i < 8; ++i) v[i] = load(coef + 8 * i);
        transpose(v);
        inverse_pass<8, dct::kInvRowShift>(v);
        transpose(v);
    } else {
        for (int r = 0; r < N; ++r) v[r] = inverse_row<N>(coef + 8 * r);
    }
    inverse_pass<N, dct::kInvColShift>(v);
}

template <int N>
KvtStatus inverse_in_place(int16_t* block) {
    __m128i v[8];
    inverse<N>(block, v);
    for (int i = 0; i < 8; ++i) store(block + 8 * i, v[i]);
    return kvtStsOk;
}

KvtStatus inverse_to_pixels(const int16_t* coef, uint8_t* dst, int dst_step) {
    __m128i v[8];
    inverse<8>(coef, v);
    for (int m = 0; m < 8; m += 2, dst += 2 * intptr_t(dst_step)) {
        const __m128i p = _mm_packus_epi16(v[m], v[m + 1]);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(dst), p);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + dst_step), _mm_unpackhi_epi64(p, p));
    }
    return kvtStsOk;
}

// ---- Forward ----------------------------------------------------------------------------------

// Forward 1-D sums of four lanes from the folds s = v[n] + v[7 - n], d = v[n] - v[7 - n]
// (16-bit, saturating), shifted and packed: X[k] for k = 0..7.
template <int Shift>
inline void forward_pass(__m128i v[8]) {
    __m128i s[4], d[4];
    for (int n = 0; n < 4; ++n) {
        s[n] = _mm_adds_epi16(v[n], v[7 - n]);
        d[n] = _mm_subs_epi16(v[n], v[7 - n]);
    }
    const __m128i rnd = rounding<Shift>();
    __m128i x[2][8];
    for (int h = 0; h < 2; ++h) {
        const auto il = [&](__m128i a, __m128i b) {
            return h ? _mm_unpackhi_epi16(a, b) : _mm_unpacklo_epi16(a, b);
        };
        const __m128i s01 = il(s[0], s[1]), s23 = il(s[2], s[3]), d01 = il(d[0], d[1]), d23 = il(d[2], d[3]);
        for (int k = 0; k < 8; ++k) {
            const __m128i lo = k % 2 ? d01 : s01, hi = k % 2 ? d23 : s23;
            const __m128i sum =
                add(madd(lo, pair(basis(0, k), basis(1, k))), madd(hi, pair(basis(2, k), basis(3, k))));
            x[h][k] = _mm_srai_epi32(add(sum, rnd), Shift);
        }
    }
    for (int k = 0; k < 8; ++k) v[k] = _mm_packs_epi32(x[0][k], x[1][k]);
}

// Columns then rows of the 16-bit rows v; coefficients stored in raster order.
inline void forward(__m128i v[8], int16_t* coef) {
    forward_pass<dct::kFwdColShift>(v);
    transpose(v);
    forward_pass<dct::kFwdRowShift>(v);
    transpose(v);
    for (int i = 0; i < 8; ++i) store(coef + 8 * i, v[i]);
}

KvtStatus forward_in_place(int16_t* block) {
    __m128i v[8];
    for (int i = 0; i < 8; ++i) v[i] = load(block + 8 * i);
    forward(v, block);
    return kvtStsOk;
}

KvtStatus forward_from_pixels(const uint8_t* src, int src_step, int16_t* coef) {
    __m128i v[8];
    for (int i = 0; i < 8; ++i, src += src_step)
        v[i] = _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(src)), _mm_setzero_si128());
    forward(v, coef);
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

}  // namespace kvt::sse2
