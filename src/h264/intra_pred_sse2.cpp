// SSE2 H.264 intra prediction: whole-row stores for the 16x16 and chroma modes, the plane modes in
// 16-bit lanes, and the 4x4 vertical, horizontal and DC modes as 32-bit rows.
#include <emmintrin.h>

#include <cstring>

#include "h264/intra_pred_dsp.h"

namespace kvt::sse2 {

namespace {

uint8_t* row(uint8_t* p, int step, int y) { return p + intptr_t(y) * step; }
uint32_t load32(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}
void store32(uint8_t* p, uint32_t v) { std::memcpy(p, &v, 4); }
void fill4(uint8_t* p, int step, uint32_t v) {
    for (int y = 0; y < 4; ++y) store32(row(p, step, y), v);
}
int sum_left(const uint8_t* p, int step, int y0, int n) {
    int s = 0;
    for (int y = y0; y < y0 + n; ++y) s += p[intptr_t(y) * step - 1];
    return s;
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
template <int N>
void fill(uint8_t* p, int step, __m128i v, int rows = N) {
    for (int y = 0; y < rows; ++y) store_row<N>(row(p, step, y), v);
}

// ---- 4x4 luma: vertical, horizontal, DC ---------------------------------------------------

KvtStatus vertical4(uint8_t* p, int step, unsigned avail) {
    const bool up = avail & kNbUpper;
    fill4(p, step, up ? load32(p - step) : 0x80808080u);
    return up ? kvtStsOk : kvtStsNeighbourSubstituted;
}

KvtStatus horizontal4(uint8_t* p, int step, unsigned avail) {
    if (!(avail & kNbLeft)) {
        fill4(p, step, 0x80808080u);
        return kvtStsNeighbourSubstituted;
    }
    for (int y = 0; y < 4; ++y) store32(row(p, step, y), 0x01010101u * row(p, step, y)[-1]);
    return kvtStsOk;
}

KvtStatus dc4(uint8_t* p, int step, unsigned avail) {
    const bool up = avail & kNbUpper, left = avail & kNbLeft;
    const uint8_t* a = p - step;
    const int s = (up ? a[0] + a[1] + a[2] + a[3] : 0) + (left ? sum_left(p, step, 0, 4) : 0);
    const int dc = up && left ? (s + 4) >> 3 : up || left ? (s + 2) >> 2 : 128;
    fill4(p, step, 0x01010101u * uint32_t(dc));
    return kvtStsOk;
}

// ---- 16x16 luma and 8x8 chroma -----------------------------------------------------------

template <int N>
KvtStatus vertical(uint8_t* p, int step, unsigned) {
    fill<N>(p, step, load_row<N>(p - step));
    return kvtStsOk;
}

template <int N>
KvtStatus horizontal(uint8_t* p, int step, unsigned) {
    for (int y = 0; y < N; ++y) store_row<N>(row(p, step, y), _mm_set1_epi8(char(row(p, step, y)[-1])));
    return kvtStsOk;
}

int sum_upper16(const uint8_t* p, int step) {
    const __m128i s = _mm_sad_epu8(load_row<16>(p - step), _mm_setzero_si128());
    return _mm_cvtsi128_si32(_mm_add_epi32(s, _mm_unpackhi_epi64(s, s)));
}

KvtStatus dc16x16(uint8_t* p, int step, unsigned avail) {
    const bool up = avail & kNbUpper, left = avail & kNbLeft;
    const int s = (up ? sum_upper16(p, step) : 0) + (left ? sum_left(p, step, 0, 16) : 0);
    const int dc = up && left ? (s + 16) >> 5 : up || left ? (s + 8) >> 4 : 128;
    fill<16>(p, step, _mm_set1_epi8(char(dc)));
    return kvtStsOk;
}

// Chroma DC: the four quarter values, rows 0..3 from the top pair, rows 4..7 from the bottom pair.
KvtStatus dc_chroma(uint8_t* p, int step, unsigned avail) {
    const bool up = avail & kNbUpper, left = avail & kNbLeft;
    int su0 = 0, su1 = 0;
    if (up) {  // the two 4-sample sums of the upper row in the two halves of one PSADBW
        const __m128i u = _mm_unpacklo_epi32(load_row<8>(p - step), _mm_setzero_si128());
        const __m128i s = _mm_sad_epu8(u, _mm_setzero_si128());
        su0 = _mm_cvtsi128_si32(s), su1 = _mm_cvtsi128_si32(_mm_unpackhi_epi64(s, s));
    }
    const int sl0 = left ? sum_left(p, step, 0, 4) : 0, sl1 = left ? sum_left(p, step, 4, 4) : 0;
    const auto mean4 = [](int s) { return (s + 2) >> 2; };
    int q[4] = {128, 128, 128, 128};
    if (up && left)
        q[0] = (su0 + sl0 + 4) >> 3, q[1] = mean4(su1), q[2] = mean4(sl1), q[3] = (su1 + sl1 + 4) >> 3;
    else if (up)
        q[0] = q[2] = mean4(su0), q[1] = q[3] = mean4(su1);
    else if (left)
        q[0] = q[1] = mean4(sl0), q[2] = q[3] = mean4(sl1);
    const __m128i top = _mm_unpacklo_epi32(_mm_set1_epi8(char(q[0])), _mm_set1_epi8(char(q[1])));
    const __m128i bottom = _mm_unpacklo_epi32(_mm_set1_epi8(char(q[2])), _mm_set1_epi8(char(q[3])));
    fill<8>(p, step, top, 4);
    fill<8>(row(p, step, 4), step, bottom, 4);
    return kvtStsOk;
}

// sum over i = 1..h of i * (hi[i - 1] - lo[h - i]) for h = 8 or 4 bytes of lo and hi (low lanes).
template <int h>
int gradient(__m128i lo, __m128i hi) {
    const __m128i z = _mm_setzero_si128();
    const __m128i up =
        h == 8 ? _mm_setr_epi16(1, 2, 3, 4, 5, 6, 7, 8) : _mm_setr_epi16(1, 2, 3, 4, 0, 0, 0, 0);
    const __m128i down =
        h == 8 ? _mm_setr_epi16(8, 7, 6, 5, 4, 3, 2, 1) : _mm_setr_epi16(4, 3, 2, 1, 0, 0, 0, 0);
    __m128i d = _mm_sub_epi16(_mm_mullo_epi16(_mm_unpacklo_epi8(hi, z), up),
                              _mm_mullo_epi16(_mm_unpacklo_epi8(lo, z), down));
    d = _mm_madd_epi16(d, _mm_set1_epi16(1));
    d = _mm_add_epi32(d, _mm_shuffle_epi32(d, _MM_SHUFFLE(1, 0, 3, 2)));
    d = _mm_add_epi32(d, _mm_shuffle_epi32(d, _MM_SHUFFLE(2, 3, 0, 1)));
    return _mm_cvtsi128_si32(d);
}

// The left column L[y0 .. y0 + n - 1] (L[-1] = M) as bytes in the low lanes.
__m128i left_bytes(const uint8_t* p, int step, int y0, int n) {
    uint64_t v = 0;
    for (int i = n - 1; i >= 0; --i) v = v << 8 | p[intptr_t(y0 + i) * step - 1];
    return _mm_unpacklo_epi32(_mm_cvtsi32_si128(int(uint32_t(v))), _mm_cvtsi32_si128(int(uint32_t(v >> 32))));
}

// Plane prediction (H.264 8.3.3.4, 8.3.4.4): the row a + b * (x - h + 1) + c * (1 - h) + 16 in
// 16-bit lanes (its values stay within +-20000), c added per row, >> 5 and packed with
// saturation.
template <int N>
KvtStatus plane(uint8_t* p, int step, unsigned) {
    constexpr int h = N / 2;
    const uint8_t* above = p - step;
    const auto load_h = [](const uint8_t* q) {
        return h == 8 ? load_row<8>(q) : _mm_cvtsi32_si128(int(load32(q)));
    };
    const int H = gradient<h>(load_h(above - 1), load_h(above + h));
    const int V = gradient<h>(left_bytes(p, step, -1, h), left_bytes(p, step, h, h));
    const int b = N == 16 ? (5 * H + 32) >> 6 : (17 * H + 16) >> 5;
    const int c = N == 16 ? (5 * V + 32) >> 6 : (17 * V + 16) >> 5;
    const int a = 16 * (row(p, step, N - 1)[-1] + above[N - 1]);
    const __m128i vc = _mm_set1_epi16(int16_t(c));
    __m128i lo =
        _mm_add_epi16(_mm_set1_epi16(int16_t(a + 16 - (h - 1) * (b + c))),
                      _mm_mullo_epi16(_mm_set1_epi16(int16_t(b)), _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7)));
    __m128i hi = _mm_add_epi16(lo, _mm_set1_epi16(int16_t(8 * b)));
    for (int y = 0; y < N; ++y) {
        store_row<N>(row(p, step, y), _mm_packus_epi16(_mm_srai_epi16(lo, 5), _mm_srai_epi16(hi, 5)));
        lo = _mm_add_epi16(lo, vc), hi = _mm_add_epi16(hi, vc);
    }
    return kvtStsOk;
}

}  // namespace

void init_intra_pred(IntraPredDsp& d) {
    d.pred4x4[0] = vertical4;
    d.pred4x4[1] = horizontal4;
    d.pred4x4[2] = dc4;
    d.pred16x16[0] = vertical<16>;
    d.pred16x16[1] = horizontal<16>;
    d.pred16x16[2] = dc16x16;
    d.pred16x16[3] = plane<16>;
    d.chroma8x8[0] = dc_chroma;
    d.chroma8x8[1] = horizontal<8>;
    d.chroma8x8[2] = vertical<8>;
    d.chroma8x8[3] = plane<8>;
}

}  // namespace kvt::sse2
