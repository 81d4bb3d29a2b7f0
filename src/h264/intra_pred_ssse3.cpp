// SSSE3 H.264 intra prediction: the six directional 4x4 modes by one byte shuffle each, and the
// horizontal modes with a shuffle as the byte broadcast.
//
// A 4x4 block's neighbours, substituted as the rules say, form one edge vector
//   e = L3 L3 L2 L1 L0 M U0 U1 U2 U3 U4 U5 U6 U7 U7 U7,
// from which A2[k] = Avg2(e[k], e[k+1]) and A3[k] = Avg3(e[k], e[k+1], e[k+2]). Every sample of a
// directional mode is one of these (the doubled L3 and U7 give the standard's (L2 + 3 L3 + 2) >> 2
// and (U6 + 3 U7 + 2) >> 2), so a mode is an 8-wide window of A2, one of A3 and a shuffle.
#include <tmmintrin.h>

#include <cstring>

#include "h264/intra_pred_dsp.h"

namespace kvt::ssse3 {

namespace {

uint8_t* row(uint8_t* p, int step, int y) { return p + intptr_t(y) * step; }
int load32(const uint8_t* p) {
    int v;
    std::memcpy(&v, p, 4);
    return v;
}
void store32(uint8_t* p, __m128i v) {
    const int w = _mm_cvtsi128_si32(v);
    std::memcpy(p, &w, 4);
}

// The raw neighbours as U0..U7 L0 L1 L2 L3 M (bytes 0..12), only those the mode reads.
template <unsigned uses>
__m128i raw_edge(const uint8_t* p, int step, unsigned avail) {
    const uint8_t* above = p - step;
    int u = 0, ur = 0, left = 0, m = 0;
    if (uses & kNbUpper) u = avail & kNbUpper ? load32(above) : int(0x80808080u);
    if (uses & kNbUpperRight)
        ur = avail & kNbUpperRight ? load32(above + 4) : int(0x01010101u * (uint32_t(u) >> 24));
    if (uses & kNbLeft) {
        left = int(0x80808080u);
        if (avail & kNbLeft)
            left = p[-1] | p[intptr_t(step) - 1] << 8 | p[2 * intptr_t(step) - 1] << 16 |
                   p[3 * intptr_t(step) - 1] << 24;
    }
    if (uses & kNbCorner) m = avail & kNbCorner ? above[-1] : 128;
    const __m128i upper = _mm_unpacklo_epi32(_mm_cvtsi32_si128(u), _mm_cvtsi32_si128(ur));
    return _mm_unpacklo_epi64(upper, _mm_unpacklo_epi32(_mm_cvtsi32_si128(left), _mm_cvtsi32_si128(m)));
}

// Mode 3..8: the neighbours it reads, the A2 and A3 windows, and for each sample (raster order)
// its index in [A2 window | A3 window].
struct Directional {
    unsigned uses;
    int a2, a3;
    int8_t pick[16];
};
// clang-format off
constexpr Directional kModes[6] = {
    // 3 diagonal down-left: A3[6 + x + y]
    {kNbUpper | kNbUpperRight, 0, 6, {8, 9, 10, 11, 9, 10, 11, 12, 10, 11, 12, 13, 11, 12, 13, 14}},
    // 4 diagonal down-right: A3[4 + x - y]
    {kNbUpper | kNbLeft | kNbCorner, 0, 1, {11, 12, 13, 14, 10, 11, 12, 13, 9, 10, 11, 12, 8, 9, 10, 11}},
    // 5 vertical-right: rows A2[5..8], A3[4..7], A3[3] A2[5..7], A3[2] A3[4..6]
    {kNbUpper | kNbLeft | kNbCorner, 5, 2, {0, 1, 2, 3, 10, 11, 12, 13, 9, 0, 1, 2, 8, 10, 11, 12}},
    // 6 horizontal-down
    {kNbUpper | kNbLeft | kNbCorner, 1, 1, {3, 11, 12, 13, 2, 10, 3, 11, 1, 9, 2, 10, 0, 8, 1, 9}},
    // 7 vertical-left: even rows A2[6 + x + y / 2], odd rows A3[6 + x + y / 2]
    {kNbUpper | kNbUpperRight, 6, 6, {0, 1, 2, 3, 8, 9, 10, 11, 1, 2, 3, 4, 9, 10, 11, 12}},
    // 8 horizontal-up: A2[3] A3[2] A2[2] A3[1] A2[1] A3[0], then L3 = A2[0]
    {kNbLeft, 0, 0, {3, 10, 2, 9, 2, 9, 1, 8, 1, 8, 0, 0, 0, 0, 0, 0}},
};
// clang-format on

template <int mode>
KvtStatus directional(uint8_t* p, int step, unsigned avail) {
    constexpr Directional m = kModes[mode - 3];
    // U0..U7 L0 L1 L2 L3 M -> L3 L3 L2 L1 L0 M U0 .. U7 U7 U7
    const __m128i e = _mm_shuffle_epi8(raw_edge<m.uses>(p, step, avail),
                                       _mm_setr_epi8(11, 11, 10, 9, 8, 12, 0, 1, 2, 3, 4, 5, 6, 7, 7, 7));
    const __m128i e1 = _mm_srli_si128(e, 1), e2 = _mm_srli_si128(e, 2);
    const __m128i a2 = _mm_avg_epu8(e, e1);
    const __m128i floor_ac =
        _mm_sub_epi8(_mm_avg_epu8(e, e2), _mm_and_si128(_mm_xor_si128(e, e2), _mm_set1_epi8(1)));
    const __m128i a3 = _mm_avg_epu8(floor_ac, e1);
    const __m128i window = _mm_unpacklo_epi64(_mm_srli_si128(a2, m.a2), _mm_srli_si128(a3, m.a3));
    const __m128i pick = _mm_setr_epi8(m.pick[0], m.pick[1], m.pick[2], m.pick[3], m.pick[4], m.pick[5],
                                       m.pick[6], m.pick[7], m.pick[8], m.pick[9], m.pick[10], m.pick[11],
                                       m.pick[12], m.pick[13], m.pick[14], m.pick[15]);
    const __m128i out = _mm_shuffle_epi8(window, pick);
    store32(p, out);
    store32(row(p, step, 1), _mm_srli_si128(out, 4));
    store32(row(p, step, 2), _mm_srli_si128(out, 8));
    store32(row(p, step, 3), _mm_srli_si128(out, 12));
    constexpr unsigned warn = m.uses & (kNbUpper | kNbLeft | kNbCorner);
    return warn & ~avail ? kvtStsNeighbourSubstituted : kvtStsOk;
}

template <int N>
KvtStatus horizontal(uint8_t* p, int step, unsigned) {
    const __m128i zero = _mm_setzero_si128();
    for (int y = 0; y < N; ++y) {
        const __m128i v = _mm_shuffle_epi8(_mm_cvtsi32_si128(row(p, step, y)[-1]), zero);
        if constexpr (N == 16)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(row(p, step, y)), v);
        else
            _mm_storel_epi64(reinterpret_cast<__m128i*>(row(p, step, y)), v);
    }
    return kvtStsOk;
}

}  // namespace

void init_intra_pred(IntraPredDsp& d) {
    d.pred4x4[3] = directional<3>;
    d.pred4x4[4] = directional<4>;
    d.pred4x4[5] = directional<5>;
    d.pred4x4[6] = directional<6>;
    d.pred4x4[7] = directional<7>;
    d.pred4x4[8] = directional<8>;
    d.pred16x16[1] = horizontal<16>;
    d.chroma8x8[1] = horizontal<8>;
}

}  // namespace kvt::ssse3
