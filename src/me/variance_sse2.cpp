// SSE2 kernels of the variance and mean family: sums by PSADBW against zero, squares by PMADDWD.
#include "common/kernel.h"
#include "me/halfpel_sse2.h"
#include "me/me_dsp.h"
#include "me/variance_finish.h"

namespace kvt::sse2 {

using namespace simd;

namespace {

// Sum (two 64-bit partials) and sum of squares (four 32-bit partials) of 16-wide rows.
struct RowSums {
    __m128i s = _mm_setzero_si128(), q = _mm_setzero_si128();
    void add(__m128i row) {
        s = _mm_add_epi64(s, _mm_sad_epu8(row, _mm_setzero_si128()));
        q = add_squares_u8(q, row);
    }
};

// Quarter sums of a 16 x H residual: per band of 8 rows, the prediction sums of the left and
// right quarters (64-bit lanes of p) and their squared residuals (ql, qr).
template <int H, int type>
KvtStatus varmeandiff(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, const int32_t* sums,
                      int32_t* var, int32_t* mean) {
    FixedRows<type, 16> pred(ref, ref_step);
    for (int band = 0; band < H / 8; ++band) {
        __m128i p = _mm_setzero_si128(), ql = _mm_setzero_si128(), qr = _mm_setzero_si128();
#pragma GCC unroll 2  // wider unrolls spill at hh, worst with eight registers
        for (int y = 0; y < 8; ++y, cur += cur_step) {
            const __m128i pr = pred.next(), d = absdiff_u8(load(cur), pr);
            p = _mm_add_epi64(p, _mm_sad_epu8(pr, _mm_setzero_si128()));
            const __m128i dl = widen_lo(d), dh = widen_hi(d);
            ql = _mm_add_epi32(ql, _mm_madd_epi16(dl, dl));
            qr = _mm_add_epi32(qr, _mm_madd_epi16(dh, dh));
        }
        const int k = 2 * band;
        const uint32_t p_left = uint32_t(_mm_cvtsi128_si32(p)),
                       p_right = uint32_t(_mm_cvtsi128_si32(_mm_unpackhi_epi64(p, p)));
        varmeandiff_finish<H == 16>(sums[k], p_left, uint32_t(hsum_epi32(ql)), var + k, mean + k);
        varmeandiff_finish<H == 16>(sums[k + 1], p_right, uint32_t(hsum_epi32(qr)), var + k + 1,
                                    mean + k + 1);
    }
    return kvtStsOk;
}

KvtStatus variance16(const uint8_t* src, int step, int32_t* var) {
    RowSums even, odd;
#pragma GCC unroll 4
    for (int y = 0; y < 16; y += 2, src += 2 * intptr_t(step)) {
        even.add(load(src));
        odd.add(load(src + step));
    }
    const uint32_t s = uint32_t(hsum_sad(_mm_add_epi64(even.s, odd.s)));
    const uint32_t q = uint32_t(hsum_epi32(_mm_add_epi32(even.q, odd.q)));
    *var = int32_t(q - ((s * s) >> 8));
    return kvtStsOk;
}

KvtStatus varmean8x8(const uint8_t* src, int step, int32_t* var, int32_t* mean) {
    RowSums acc;
#pragma GCC unroll 4
    for (int y = 0; y < 8; y += 2, src += 2 * intptr_t(step)) acc.add(load_2rows8(src, step));
    const uint32_t s = uint32_t(hsum_sad(acc.s)), q = uint32_t(hsum_epi32(acc.q));
    *mean = int32_t(s);
    *var = int32_t((q - (s >> 3) * (s >> 3)) >> 6);
    return kvtStsOk;
}

// PADDSW adds the rows in order, exactly the saturating column sums. PMADDWD of a row with
// itself wraps only for four -32768 lanes (2^31), which is the 32-bit wrap the sum keeps anyway.
KvtStatus varmean8x8_16s(const int16_t* src, int step, int32_t* var, int32_t* mean) {
    const uint8_t* p = reinterpret_cast<const uint8_t*>(src);
    __m128i columns = _mm_setzero_si128(), q = _mm_setzero_si128();
#pragma GCC unroll 8
    for (int y = 0; y < 8; ++y, p += step) {
        const __m128i row = load(p);
        columns = _mm_adds_epi16(columns, row);
        q = _mm_add_epi32(q, _mm_madd_epi16(row, row));
    }
    const int32_t s = hsum_epi32(_mm_madd_epi16(columns, _mm_set1_epi16(1)));
    varmean16s_finish(s, uint32_t(hsum_epi32(q)), var, mean);
    return kvtStsOk;
}

// Two passes over the block: the rounded mean first, then PSADBW against the broadcast mean.
KvtStatus mean_abs_dev16(const uint8_t* src, int step, int32_t* dev) {
    const intptr_t st = step;
    __m128i s = _mm_setzero_si128();
#pragma GCC unroll 16
    for (int y = 0; y < 16; ++y) s = _mm_add_epi64(s, _mm_sad_epu8(load(src + y * st), _mm_setzero_si128()));
    const __m128i mean = _mm_set1_epi8(char((hsum_sad(s) + 128) >> 8));
    __m128i acc = _mm_setzero_si128();
#pragma GCC unroll 16
    for (int y = 0; y < 16; ++y) acc = _mm_add_epi64(acc, _mm_sad_epu8(load(src + y * st), mean));
    *dev = hsum_sad(acc);
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

}  // namespace kvt::sse2
