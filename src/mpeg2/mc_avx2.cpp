// AVX2 MPEG-1/2 motion compensation for blocks 16 and 8 samples wide: sixteen 16-bit words per
// register, one row of 16 or two rows of 8, so every sum, the rounding, the residual and the
// saturation take one instruction per 16 samples. The rounding control enters unmasked.
#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "common/hpel_sse2.h"
#include "common/kernel.h"
#include "mpeg2/mc_dsp.h"

namespace kvt::avx2 {

namespace {

inline __m128i load16(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

// Rows of a W-wide block (W = 16: one row; W = 8: two rows) as 16 words.
template <int W>
inline __m256i load_words(const uint8_t* p, intptr_t step) {
    if constexpr (W == 16)
        return _mm256_cvtepu8_epi16(load16(p));
    else
        return _mm256_cvtepu8_epi16(
            _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                               _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + step))));
}

template <int W>
inline __m256i load_residual(const int16_t* e, intptr_t step) {
    if constexpr (W == 16) {
        return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(e));
    } else {
        const __m128i lo = _mm_loadu_si128(reinterpret_cast<const __m128i*>(e));
        const __m128i hi =
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(reinterpret_cast<const uint8_t*>(e) + step));
        return _mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1);
    }
}

// Residual plus prediction, saturated to 16 bits, then to 8, stored as the unit's rows.
template <int W>
inline void store_sum(uint8_t* p, intptr_t step, __m256i pred, __m256i res) {
    const __m256i s = _mm256_adds_epi16(pred, res);
    const __m128i b = _mm_packus_epi16(_mm256_castsi256_si128(s), _mm256_extracti128_si256(s, 1));
    if constexpr (W == 16) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), b);
    } else {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p), b);
        _mm_storeh_pd(reinterpret_cast<double*>(p + step), _mm_castsi128_pd(b));
    }
}

// Word predictions, one unit per next() call; one-row units carry the lower row's sum.
template <int W, int phase, int nb>
class WordPredictor {
public:
    static constexpr int kRows = 16 / W;

    WordPredictor(const uint8_t* p, intptr_t step, int r)
        : p_(p),
          step_(step),
          k_(_mm256_set1_epi16(int16_t((mc_half_h(phase) && mc_half_v(phase) ? 2 : 1) - r))) {
        if constexpr (kRows == 1 && mc_half_v(phase)) prev_ = row_sum(p);
    }

    __m256i next() {
        const uint8_t* p = p_;
        p_ += kRows * step_;
        constexpr int shift = int(mc_half_h(phase)) + int(mc_half_v(phase));
        if constexpr (!mc_half_v(phase)) {
            if constexpr (shift == 0)
                return row_sum(p);
            else
                return _mm256_srai_epi16(_mm256_add_epi16(row_sum(p), k_), shift);
        } else {
            const __m256i low = row_sum(p + step_), top = kRows == 1 ? prev_ : row_sum(p);
            prev_ = low;
            return _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(top, low), k_), shift);
        }
    }

private:
    __m256i row_sum(const uint8_t* p) const {
        if constexpr (mc_half_h(phase))
            return _mm256_add_epi16(load_words<W>(p, step_), load_words<W>(p + nb, step_));
        else
            return load_words<W>(p, step_);
    }

    const uint8_t* p_;
    intptr_t step_;
    __m256i k_;
    __m256i prev_{};
};

template <class T>
inline const T* advance(const T* p, intptr_t bytes) {
    return reinterpret_cast<const T*>(reinterpret_cast<const uint8_t*>(p) + bytes);
}

template <int shape, int phase>
[[gnu::flatten]] KvtStatus mc(const uint8_t* ref, int ref_step, const int16_t* res, int res_step,
                              uint8_t* dst, int dst_step, int r) {
    constexpr McShape s = kMcShapes[shape];
    constexpr int R = 16 / s.w;
    WordPredictor<s.w, phase, s.nb> pred(ref, ref_step, r);
#pragma GCC unroll 16
    for (int y = 0; y < s.h;
         y += R, res = advance(res, R * intptr_t(res_step)), dst += R * intptr_t(dst_step))
        store_sum<s.w>(dst, dst_step, pred.next(), load_residual<s.w>(res, res_step));
    return kvtStsOk;
}

template <int shape, int fwd, int bwd>
[[gnu::flatten]] KvtStatus mc_bi(const uint8_t* f, int f_step, const uint8_t* b, int b_step,
                                 const int16_t* res, int res_step, uint8_t* dst, int dst_step, int r) {
    constexpr McShape s = kMcShapes[shape];
    constexpr int R = 16 / s.w;
    WordPredictor<s.w, fwd, s.nb> pf(f, f_step, r);
    WordPredictor<s.w, bwd, s.nb> pb(b, b_step, r);
    const __m256i one = _mm256_set1_epi16(1);
#pragma GCC unroll 16
    for (int y = 0; y < s.h;
         y += R, res = advance(res, R * intptr_t(res_step)), dst += R * intptr_t(dst_step)) {
        const __m256i avg =
            _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(pf.next(), pb.next()), one), 1);
        store_sum<s.w>(dst, dst_step, avg, load_residual<s.w>(res, res_step));
    }
    return kvtStsOk;
}

// The SSE2 byte copy, VEX-encoded here: where loads fold into the arithmetic (both halves, and the
// vertical half at rounding 1) it gains 10 to 20%.
template <int w, int h, int phase, int r>
[[gnu::flatten]] KvtStatus copy(const uint8_t* src, int src_step, uint8_t* dst, int dst_step) {
    hpel::predict_block<w, h, mc_half_h(phase), mc_half_v(phase), r>(src, src_step, dst, dst_step);
    return kvtStsOk;
}

}  // namespace

// Only the 16-wide shapes (two 8-wide rows per register lose to SSE2 on the loads), and the copies
// named above.
void init_mc(McDsp& d) {
    fill_slots(d.mc, [&d](auto i) {
        constexpr McSlot s = mc_slot_of(i);
        if constexpr (kMcShapes[s.shape].w == 16)
            return McFn(&mc<s.shape, s.phase>);
        else
            return d.mc[i];
    });
    fill_slots(d.mc_bi, [&d](auto i) {
        constexpr McBiSlot s = mc_bi_slot_of(i);
        if constexpr (kMcShapes[s.shape].w == 16)
            return McBiFn(&mc_bi<s.shape, s.fwd, s.bwd>);
        else
            return d.mc_bi[i];
    });
    fill_slots(d.copy, [&d](auto i) {
        constexpr CopySlot s = copy_slot_of(i);
        if constexpr (s.phase == 3 || (s.phase == 1 && s.rounding == 1))
            return McCopyFn(&copy<s.w, s.h, s.phase, s.rounding>);
        else
            return d.copy[i];
    });
}

}  // namespace kvt::avx2
