// The vector H.264 intra prediction kernels, compiled once per tier file (intra_pred_sse2.cpp,
// _ssse3, _avx2): whole-row stores for the 16x16 and chroma modes, the plane modes in 16-bit lanes,
// the 4x4 vertical, horizontal and DC modes as 32-bit rows, and with SSSE3 the six directional 4x4
// modes by one byte shuffle each. Include only from a tier file.
//
// The directional modes: a 4x4 block's neighbours, substituted as the rules say, form one edge
// vector
//   e = L3 L3 L2 L1 L0 M U0 U1 U2 U3 U4 U5 U6 U7 U7 U7,
// from which A2[k] = Avg2(e[k], e[k+1]) and A3[k] = Avg3(e[k], e[k+1], e[k+2]). Every sample of a
// directional mode is one of these (the doubled L3 and U7 give the standard's (L2 + 3 L3 + 2) >> 2
// and (U6 + 3 U7 + 2) >> 2), so a mode is an 8-wide window of A2, one of A3 and a shuffle.
#pragma once

#include <emmintrin.h>
#if defined(__AVX2__)
#include <immintrin.h>
#elif defined(__SSSE3__)
#include <tmmintrin.h>
#endif

#include <cstring>

#include "common/simd.h"
#include "h264/intra_pred_dsp.h"

namespace {

using namespace kvt;

inline uint8_t* row(uint8_t* p, int step, int y) { return p + intptr_t(y) * step; }
inline const uint8_t* row(const uint8_t* p, int step, int y) { return p + intptr_t(y) * step; }
inline uint32_t load32(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}
inline void store32(uint8_t* p, uint32_t v) { std::memcpy(p, &v, 4); }
inline void fill4(uint8_t* p, int step, uint32_t v) {
    for (int y = 0; y < 4; ++y) store32(row(p, step, y), v);
}
// L[y0 .. y0 + 3] as one 32-bit value, L[y0] in the low byte.
inline uint32_t left4(const uint8_t* p, int step, int y0) {
    const uint8_t* q = p + intptr_t(y0) * step - 1;
    const intptr_t s = step;
    return q[0] | q[s] << 8 | q[2 * s] << 16 | uint32_t(q[3 * s]) << 24;
}
// Sum of L[y0 .. y0 + n - 1], n a multiple of 4, in two accumulators. Rows are addressed four at
// a time from a base: q, q + s, q + 2s (addressing-mode scales) and q + 3s. Over several groups
// the base moves by four steps, and it and 3s are hidden from the compiler: otherwise it keeps a
// register for 4s, 8s, 12s and every group's base and needs saved registers.
template <int n>
int sum_left(const uint8_t* p, int step, int y0) {
    constexpr bool groups = n > 4;
    const intptr_t s = step, s3 = groups ? simd::opaque(3 * s) : 3 * s;
    const uint8_t* q = p + y0 * s - 1;
    int a = 0, b = 0;
#pragma GCC unroll 4
    for (int y = 0; y < n; y += 4) {
        a += q[0] + q[s], b += q[2 * s] + q[s3];
        if (groups) q = simd::opaque(q + 4 * s);
    }
    return a + b;
}

// N bytes of a row: 16 or the low 8.
template <int N>
void store_row(uint8_t* p, __m128i v) {
    if constexpr (N == 16)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
    else
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
}
template <int N>
__m128i load_row(const uint8_t* p) {
    if constexpr (N == 16)
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    else
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
}
// `rows` (a multiple of 4) rows of v, addressed from a base every four rows.
template <int N>
void fill(uint8_t* p, int step, __m128i v, int rows = N) {
    const intptr_t s = step, s3 = 3 * s;
    for (int y = 0; y < rows; y += 4) {
        uint8_t* q = p + y * s;
        store_row<N>(q, v), store_row<N>(q + s, v), store_row<N>(q + 2 * s, v), store_row<N>(q + s3, v);
    }
}

// ---- 4x4 luma: vertical, horizontal, DC (one kernel per availability) ------------------

template <unsigned avail>
KvtStatus vertical4(uint8_t* p, int step) {
    constexpr bool up = avail & kNbUpper;
    fill4(p, step, up ? load32(p - step) : 0x80808080u);
    return up ? kvtStsOk : kvtStsNeighbourSubstituted;
}

template <unsigned avail>
KvtStatus horizontal4(uint8_t* p, int step) {
    if constexpr (!(avail & kNbLeft)) {
        fill4(p, step, 0x80808080u);
        return kvtStsNeighbourSubstituted;
    } else {
        for (int y = 0; y < 4; ++y) store32(row(p, step, y), 0x01010101u * row(p, step, y)[-1]);
        return kvtStsOk;
    }
}

// The upper four samples' sum by PSADBW.
inline int sum_upper4(const uint8_t* p, int step) {
    return _mm_cvtsi128_si32(_mm_sad_epu8(_mm_cvtsi32_si128(int(load32(p - step))), _mm_setzero_si128()));
}

template <unsigned avail>
KvtStatus dc4(uint8_t* p, int step) {
    constexpr bool up = avail & kNbUpper, left = avail & kNbLeft;
    int dc = 128;
    if constexpr (up && left)
        dc = (sum_upper4(p, step) + sum_left<4>(p, step, 0) + 4) >> 3;
    else if constexpr (up)
        dc = (sum_upper4(p, step) + 2) >> 2;
    else if constexpr (left)
        dc = (sum_left<4>(p, step, 0) + 2) >> 2;
    fill4(p, step, 0x01010101u * uint32_t(dc));
    return kvtStsOk;
}

// ---- 16x16 luma and 8x8 chroma -----------------------------------------------------------

template <int N>
KvtStatus vertical(uint8_t* p, int step) {
    fill<N>(p, step, load_row<N>(p - step));
    return kvtStsOk;
}

// With AVX2 each row is a byte broadcast straight from memory. Otherwise four rows at a time from
// one 32-bit word of left samples, broadcast in vector registers (one transfer from a general
// register per four rows).
template <int N>
KvtStatus horizontal(uint8_t* p, int step) {
#if defined(__AVX2__)
    for (int y = 0; y < N; ++y) store_row<N>(row(p, step, y), _mm_set1_epi8(char(row(p, step, y)[-1])));
#else
    for (int y = 0; y < N; y += 4) {
        __m128i v = _mm_cvtsi32_si128(int(left4(p, step, y)));
        v = _mm_unpacklo_epi8(v, v);
        v = _mm_unpacklo_epi16(v, v);  // L[y + k] four times in lane k
        store_row<N>(row(p, step, y), _mm_shuffle_epi32(v, 0x00));
        store_row<N>(row(p, step, y + 1), _mm_shuffle_epi32(v, 0x55));
        store_row<N>(row(p, step, y + 2), _mm_shuffle_epi32(v, 0xAA));
        store_row<N>(row(p, step, y + 3), _mm_shuffle_epi32(v, 0xFF));
    }
#endif
    return kvtStsOk;
}

inline int sum_upper16(const uint8_t* p, int step) {
    const __m128i s = _mm_sad_epu8(load_row<16>(p - step), _mm_setzero_si128());
    return _mm_cvtsi128_si32(_mm_add_epi32(s, _mm_unpackhi_epi64(s, s)));
}

// The byte in lane 0 in all 16 lanes. (PSHUFB does it in one step but measured no faster here.)
inline __m128i broadcast_byte0(__m128i v) {
    v = _mm_unpacklo_epi8(v, v);
    return _mm_shuffle_epi32(_mm_shufflelo_epi16(v, 0), 0);
}

// The upper row's sum stays in a vector register (PSADBW) and the left column's joins it there:
// a round trip through a general register costs more than the two sums themselves.
template <unsigned avail>
KvtStatus dc16x16(uint8_t* p, int step) {
    constexpr bool up = avail & kNbUpper, left = avail & kNbLeft;
    __m128i dc;
    if constexpr (up) {
        __m128i s = _mm_sad_epu8(load_row<16>(p - step), _mm_setzero_si128());
        s = _mm_add_epi32(s, _mm_unpackhi_epi64(s, s));
        s = _mm_add_epi32(s, _mm_cvtsi32_si128(left ? sum_left<16>(p, step, 0) + 16 : 8));
        dc = _mm_srli_epi32(s, left ? 5 : 4);
    } else {
        dc = _mm_cvtsi32_si128(left ? (sum_left<16>(p, step, 0) + 8) >> 4 : 128);
    }
    fill<16>(p, step, broadcast_byte0(dc));
    return kvtStsOk;
}

// Chroma DC: the four quarter values, rows 0..3 from the top pair, rows 4..7 from the bottom pair.
// The rows are built and stored from general registers: the values come from scalar sums, and a
// trip through a vector register would add its latency and a shuffle per half.
template <unsigned avail>
KvtStatus dc_chroma(uint8_t* p, int step) {
    constexpr bool up = avail & kNbUpper, left = avail & kNbLeft;
    uint32_t su0 = 0, su1 = 0;
    if (up) {  // the two 4-sample sums of the upper row in the two halves of one PSADBW
        const __m128i u = _mm_unpacklo_epi32(load_row<8>(p - step), _mm_setzero_si128());
        const __m128i s = _mm_sad_epu8(u, _mm_setzero_si128());
        su0 = uint32_t(_mm_cvtsi128_si32(s)), su1 = uint32_t(_mm_cvtsi128_si32(_mm_unpackhi_epi64(s, s)));
    }
    const uint32_t sl0 = left ? uint32_t(sum_left<4>(p, step, 0)) : 0;
    const uint32_t sl1 = left ? uint32_t(sum_left<4>(p, step, 4)) : 0;
    const auto mean4 = [](uint32_t s) { return (s + 2) >> 2; };
    uint32_t q[4] = {128, 128, 128, 128};
    if (up && left)
        q[0] = (su0 + sl0 + 4) >> 3, q[1] = mean4(su1), q[2] = mean4(sl1), q[3] = (su1 + sl1 + 4) >> 3;
    else if (up)
        q[0] = q[2] = mean4(su0), q[1] = q[3] = mean4(su1);
    else if (left)
        q[0] = q[1] = mean4(sl0), q[2] = q[3] = mean4(sl1);
    // Row values q0 x4, q1 x4 (top) and q2 x4, q3 x4 (bottom), by one multiply each.
    const uint64_t top = (q[0] | uint64_t(q[1]) << 32) * 0x01010101u;
    const uint64_t bottom = (q[2] | uint64_t(q[3]) << 32) * 0x01010101u;
    const intptr_t s = step, s3 = 3 * s;
    uint8_t* const p4 = p + 4 * s;
    for (uint8_t* r : {p, p + s, p + 2 * s, p + s3}) std::memcpy(r, &top, 8);
    for (uint8_t* r : {p4, p4 + s, p4 + 2 * s, p4 + s3}) std::memcpy(r, &bottom, 8);
    return kvtStsOk;
}

// sum over i = 1..h of i * (E[i] - E[-i]) for the edge samples E[k] at centre + k * stride, in
// general registers (shorter latency than a vector reduction).
template <int h>
inline int gradient(const uint8_t* centre, intptr_t stride) {
    int s0 = 0, s1 = 0;
    for (int i = 1; i <= h; i += 2) {
        s0 += i * (centre[i * stride] - centre[-i * stride]);
        s1 += (i + 1) * (centre[(i + 1) * stride] - centre[-(i + 1) * stride]);
    }
    return s0 + s1;
}

// Plane prediction (H.264 8.3.3.4, 8.3.4.4): the row a + b * (x - h + 1) + c * (1 - h) + 16 in
// 16-bit lanes (its values stay within +-20000), c added per row, >> 5 and packed with
// saturation.
template <int N>
KvtStatus plane(uint8_t* p, int step) {
    constexpr int h = N / 2;
    const uint8_t* above = p - step;
    const int H = gradient<h>(above + h - 1, 1);
    const int V = gradient<h>(row(p, step, h - 1) - 1, step);
    const int b = N == 16 ? (5 * H + 32) >> 6 : (17 * H + 16) >> 5;
    const int c = N == 16 ? (5 * V + 32) >> 6 : (17 * V + 16) >> 5;
    const int a = 16 * (row(p, step, N - 1)[-1] + above[N - 1]);
    const __m128i vc = _mm_set1_epi16(int16_t(c));
    __m128i lo =
        _mm_add_epi16(_mm_set1_epi16(int16_t(a + 16 - (h - 1) * (b + c))),
                      _mm_mullo_epi16(_mm_set1_epi16(int16_t(b)), _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7)));
    if constexpr (N == 8) {
        for (int y = 0; y < N; ++y, lo = _mm_add_epi16(lo, vc)) {
            const __m128i v = _mm_srai_epi16(lo, 5);
            store_row<N>(row(p, step, y), _mm_packus_epi16(v, v));
        }
    } else {
        __m128i hi = _mm_add_epi16(lo, _mm_set1_epi16(int16_t(8 * b)));
#if defined(__AVX2__)
        // Two rows a register (samples 0..7 of row y, then of row y + 1; and 8..15), so that one
        // pack gives rows y and y + 1 in order: 3.5 instructions a row instead of 6.
        const auto two_rows = [vc](__m128i r) {
            return _mm256_inserti128_si256(_mm256_castsi128_si256(r), _mm_add_epi16(r, vc), 1);
        };
        const __m256i step2 = _mm256_set1_epi16(int16_t(2 * c));
        __m256i left = two_rows(lo), right = two_rows(hi);
        for (int y = 0; y < N; y += 2) {
            const __m256i v = _mm256_packus_epi16(_mm256_srai_epi16(left, 5), _mm256_srai_epi16(right, 5));
            store_row<N>(row(p, step, y), _mm256_castsi256_si128(v));
            store_row<N>(row(p, step, y + 1), _mm256_extracti128_si256(v, 1));
            left = _mm256_add_epi16(left, step2), right = _mm256_add_epi16(right, step2);
        }
#else
        for (int y = 0; y < N; ++y, lo = _mm_add_epi16(lo, vc), hi = _mm_add_epi16(hi, vc))
            store_row<N>(row(p, step, y), _mm_packus_epi16(_mm_srai_epi16(lo, 5), _mm_srai_epi16(hi, 5)));
#endif
    }
    return kvtStsOk;
}

// Up and left: the bits the DC kernels depend on.
template <class A>
constexpr unsigned kUpLeft = A::value&(kNbUpper | kNbLeft);

inline auto same(IntraPredFn k) {
    return [k](auto) { return k; };
}

inline void fill_intra_basic(IntraPredDsp& d) {
    fill_avail<0>(d.pred4x4[0], [](auto a) { return vertical4<decltype(a)::value & kNbUpper>; });
    fill_avail<0>(d.pred4x4[1], [](auto a) { return horizontal4<decltype(a)::value & kNbLeft>; });
    fill_avail<0>(d.pred4x4[2], [](auto a) { return dc4<kUpLeft<decltype(a)>>; });
    fill_avail<kNeeds16x16[0]>(d.pred16x16[0], same(vertical<16>));
    fill_avail<kNeeds16x16[1]>(d.pred16x16[1], same(horizontal<16>));
    fill_avail<kNeeds16x16[2]>(d.pred16x16[2], [](auto a) { return dc16x16<kUpLeft<decltype(a)>>; });
    fill_avail<kNeeds16x16[3]>(d.pred16x16[3], same(plane<16>));
    fill_avail<kNeedsChroma[0]>(d.chroma8x8[0], [](auto a) { return dc_chroma<kUpLeft<decltype(a)>>; });
    fill_avail<kNeedsChroma[1]>(d.chroma8x8[1], same(horizontal<8>));
    fill_avail<kNeedsChroma[2]>(d.chroma8x8[2], same(vertical<8>));
    fill_avail<kNeedsChroma[3]>(d.chroma8x8[3], same(plane<8>));
}

#if defined(__SSSE3__)

inline __m128i bytes(const int8_t (&b)[16]) {
    return _mm_setr_epi8(b[0], b[1], b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12],
                         b[13], b[14], b[15]);
}

// Mode 3..8: the neighbours it reads, the order of its edge vector e (indices into the raw
// neighbours U0..U7 L0 L1 L2 L3 M, bytes 0..12), where its A2 and A3 windows start in e, and for
// each sample (raster order) its index in [A2 window | A3 window].
struct Directional {
    unsigned uses;
    int8_t order[16];
    int a2, a3;
    int8_t pick[16];
};
// clang-format off
constexpr int8_t kUpperEdge[16] = {0, 1, 2, 3, 4, 5, 6, 7, 7, 7, 7, 7, 7, 7, 7, 7};   // U0 .. U7 U7 U7
constexpr int8_t kCornerEdge[16] = {11, 10, 9, 8, 12, 0, 1, 2, 3, 3, 3, 3, 3, 3, 3, 3};  // L3 .. L0 M U0 .. U3
constexpr int8_t kLeftEdge[16] = {11, 11, 10, 9, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8};    // L3 L3 L2 L1 L0
constexpr Directional kModes[6] = {
    // 3 diagonal down-left: A3[x + y]
    {kNbUpper | kNbUpperRight, {}, 0, 0, {8, 9, 10, 11, 9, 10, 11, 12, 10, 11, 12, 13, 11, 12, 13, 14}},
    // 4 diagonal down-right: A3[3 + x - y]
    {kNbUpper | kNbLeft | kNbCorner, {}, 0, 0, {11, 12, 13, 14, 10, 11, 12, 13, 9, 10, 11, 12, 8, 9, 10, 11}},
    // 5 vertical-right: rows A2[4..7], A3[3..6], A3[2] A2[4..6], A3[1] A3[3..5]
    {kNbUpper | kNbLeft | kNbCorner, {}, 4, 1, {0, 1, 2, 3, 10, 11, 12, 13, 9, 0, 1, 2, 8, 10, 11, 12}},
    // 6 horizontal-down
    {kNbUpper | kNbLeft | kNbCorner, {}, 0, 0, {3, 11, 12, 13, 2, 10, 3, 11, 1, 9, 2, 10, 0, 8, 1, 9}},
    // 7 vertical-left: even rows A2[x + y / 2], odd rows A3[x + y / 2]
    {kNbUpper | kNbUpperRight, {}, 0, 0, {0, 1, 2, 3, 8, 9, 10, 11, 1, 2, 3, 4, 9, 10, 11, 12}},
    // 8 horizontal-up: A2[3] A3[2] A2[2] A3[1] A2[1] A3[0], then L3 = A2[0]
    {kNbLeft, {}, 0, 0, {3, 10, 2, 9, 2, 9, 1, 8, 1, 8, 0, 0, 0, 0, 0, 0}},
};
// clang-format on
constexpr const int8_t (&edge_order(int mode))[16] {
    return mode == 3 || mode == 7 ? kUpperEdge : mode == 8 ? kLeftEdge : kCornerEdge;
}

// The raw neighbours U0..U7 L0 L1 L2 L3 M (bytes 0..12) the mode reads, substituted as `avail`
// says.
template <unsigned uses, unsigned avail>
__m128i raw_edge(const uint8_t* p, int step) {
    const uint8_t* above = p - step;
    constexpr unsigned whole_row = kNbUpper | kNbUpperRight;
    __m128i upper = _mm_setzero_si128();
    if constexpr ((uses & whole_row) == whole_row && (avail & whole_row) == whole_row) {
        upper = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(above));
    } else if constexpr (uses & kNbUpper) {
        const uint32_t u = avail & kNbUpper ? load32(above) : 0x80808080u;
        uint32_t ur = 0;
        if constexpr ((uses & kNbUpperRight) && (avail & kNbUpperRight))
            ur = load32(above + 4);
        else if constexpr (uses & kNbUpperRight)
            ur = 0x01010101u * (u >> 24);
        upper = _mm_unpacklo_epi32(_mm_cvtsi32_si128(int(u)), _mm_cvtsi32_si128(int(ur)));
    }
    int left = 0, m = 0;
    if constexpr ((uses & kNbLeft) && (avail & kNbLeft))
        left = int(left4(p, step, 0));
    else if constexpr (uses & kNbLeft)
        left = int(0x80808080u);
    if constexpr (uses & kNbCorner) m = avail & kNbCorner ? above[-1] : 128;
    const __m128i lm = _mm_unpacklo_epi32(_mm_cvtsi32_si128(left), _mm_cvtsi32_si128(m));
    return _mm_unpacklo_epi64(upper, lm);
}

// L[0..3] in bytes 15, 14, 13, 12: the four bytes ending at each left sample, interleaved.
inline __m128i left_high(const uint8_t* p, int step) {
    const auto at = [&](int y) { return _mm_cvtsi32_si128(int(load32(row(p, step, y) - 4))); };
    return _mm_unpacklo_epi16(_mm_unpacklo_epi8(at(3), at(2)), _mm_unpacklo_epi8(at(1), at(0)));
}

// The mode's edge vector. With every neighbour it reads available: the upper row in one load,
// the left column from four loads and three interleaves; otherwise the substituted neighbours
// in the raw order, then shuffled.
template <int mode, unsigned avail>
__m128i edge(const uint8_t* p, int step) {
    constexpr unsigned uses = kModes[mode - 3].uses;
    if constexpr ((avail & uses) != uses) {
        return _mm_shuffle_epi8(raw_edge<uses, avail>(p, step), bytes(edge_order(mode)));
    } else if constexpr (mode == 7) {  // no sample needs U7 twice
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p - step));
    } else if constexpr (mode == 3) {
        return _mm_shuffle_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p - step)),
                                bytes(kUpperEdge));
    } else if constexpr (mode == 8) {
        constexpr int8_t order[16] = {12, 12, 13, 14, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15};
        return _mm_shuffle_epi8(left_high(p, step), bytes(order));
    } else {  // M U0 .. U6 after L3 .. L0
        const __m128i upper = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p - step - 1));
        return _mm_alignr_epi8(upper, left_high(p, step), 12);
    }
}

template <int n>
__m128i shift_bytes(__m128i v) {
    if constexpr (n == 0)
        return v;
    else
        return _mm_srli_si128(v, n);
}

template <int mode, unsigned avail>
KvtStatus directional(uint8_t* p, int step) {
    constexpr Directional m = kModes[mode - 3];
    // Opaque: left to itself, the compiler turns the byte shifts of an edge whose upper half it
    // knows into shuffles through memory.
    const __m128i e = simd::opaque(edge<mode, avail>(p, step));
    const __m128i e1 = _mm_srli_si128(e, 1), e2 = _mm_srli_si128(e, 2);
    const __m128i a2 = _mm_avg_epu8(e, e1);
    const __m128i floor_ac =
        _mm_sub_epi8(_mm_avg_epu8(e, e2), _mm_and_si128(_mm_xor_si128(e, e2), _mm_set1_epi8(1)));
    const __m128i a3 = _mm_avg_epu8(floor_ac, e1);
    __m128i out;
    if constexpr (mode == 3 || mode == 4) {  // A3 only
        int8_t pick[16] = {};
        for (int i = 0; i < 16; ++i) pick[i] = int8_t(m.pick[i] - 8);
        out = _mm_shuffle_epi8(a3, bytes(pick));
    } else {
        const __m128i window = _mm_unpacklo_epi64(shift_bytes<m.a2>(a2), shift_bytes<m.a3>(a3));
        out = _mm_shuffle_epi8(window, bytes(m.pick));
    }
    store32(p, uint32_t(_mm_cvtsi128_si32(out)));
    store32(row(p, step, 1), uint32_t(_mm_cvtsi128_si32(_mm_shuffle_epi32(out, 1))));
    store32(row(p, step, 2), uint32_t(_mm_cvtsi128_si32(_mm_shuffle_epi32(out, 2))));
    store32(row(p, step, 3), uint32_t(_mm_cvtsi128_si32(_mm_shuffle_epi32(out, 3))));
    constexpr unsigned warn = m.uses & (kNbUpper | kNbLeft | kNbCorner);
    return warn & ~avail ? kvtStsNeighbourSubstituted : kvtStsOk;
}

template <int... M>
void fill_intra_directional(IntraPredDsp& d, std::integer_sequence<int, M...>) {
    (fill_avail<0>(d.pred4x4[M + 3],
                   [](auto a) { return directional<M + 3, decltype(a)::value & kModes[M].uses>; }),
     ...);
}
inline void fill_intra_directional(IntraPredDsp& d) {
    fill_intra_directional(d, std::make_integer_sequence<int, 6>());
}

#endif

}  // namespace
