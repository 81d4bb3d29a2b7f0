// SSE2 MPEG-1/2 motion-compensation kernels. The residual kernels work on 16-bit words, where the
// caller's rounding control enters unmasked as in the formulas; the copies use the exact byte
// averages of common/hpel_sse2.h.
#include "common/hpel_sse2.h"
#include "common/kernel.h"
#include "mpeg2/mc_dsp.h"

namespace kvt::sse2 {

namespace {

using namespace hpel;

// N registers of eight 16-bit values.
template <int N>
struct Words {
    __m128i v[N];
};

template <int N, class Op>
inline Words<N> map(const Words<N>& a, const Words<N>& b, Op op) {
    Words<N> out;
    for (int i = 0; i < N; ++i) out.v[i] = op(a.v[i], b.v[i]);
    return out;
}
template <int N>
inline Words<N> operator+(const Words<N>& a, const Words<N>& b) {
    return map(a, b, [](__m128i x, __m128i y) { return _mm_add_epi16(x, y); });
}
template <int shift, int N>
inline Words<N> add_shift(const Words<N>& a, __m128i k) {
    Words<N> out;
    for (int i = 0; i < N; ++i) out.v[i] = _mm_srai_epi16(_mm_add_epi16(a.v[i], k), shift);
    return out;
}

inline __m128i widen(__m128i v) { return _mm_unpacklo_epi8(v, _mm_setzero_si128()); }
inline __m128i load2(const void* p) {
    uint16_t v;
    std::memcpy(&v, p, 2);
    return _mm_cvtsi32_si128(v);
}
template <class T>
inline const T* advance(const T* p, intptr_t bytes) {
    return reinterpret_cast<const T*>(reinterpret_cast<const uint8_t*>(p) + bytes);
}

// R rows of a W-wide block as words: one row of 16 or 8, two rows of 4, up to four rows of 2.
template <int W, int R>
struct Unit {
    static constexpr int N = W == 16 ? 2 : 1;
    using V = Words<N>;

    static V load(const uint8_t* p, intptr_t step) {
        if constexpr (W == 16) {
            const __m128i b = load16(p);
            return {{widen(b), _mm_unpackhi_epi8(b, _mm_setzero_si128())}};
        } else if constexpr (W == 8) {
            return {{widen(load8(p))}};
        } else if constexpr (W == 4) {
            return {{widen(_mm_unpacklo_epi32(load4(p), load4(p + step)))}};
        } else {
            __m128i v = _mm_unpacklo_epi16(load2(p), load2(p + step));
            if constexpr (R == 4)
                v = _mm_unpacklo_epi32(v, _mm_unpacklo_epi16(load2(p + 2 * step), load2(p + 3 * step)));
            return {{widen(v)}};
        }
    }

    static V load_residual(const int16_t* e, intptr_t step) {
        const uint8_t* b = reinterpret_cast<const uint8_t*>(e);
        if constexpr (W == 16) {
            return {{load16(b), load16(b + 16)}};
        } else if constexpr (W == 8) {
            return {{load16(b)}};
        } else if constexpr (W == 4) {
            return {{_mm_unpacklo_epi64(load8(b), load8(b + step))}};
        } else {
            __m128i v = _mm_unpacklo_epi32(load4(b), load4(b + step));
            if constexpr (R == 4)
                v = _mm_unpacklo_epi64(v, _mm_unpacklo_epi32(load4(b + 2 * step), load4(b + 3 * step)));
            return {{v}};
        }
    }

    // Residual plus prediction, saturated to 16 bits and then to 8.
    static void store_sum(uint8_t* p, intptr_t step, const V& pred, const V& res) {
        const V s = map(pred, res, [](__m128i x, __m128i y) { return _mm_adds_epi16(x, y); });
        const __m128i b = _mm_packus_epi16(s.v[0], s.v[N - 1]);
        if constexpr (W == 16) {
            store16(p, b);
        } else if constexpr (W == 8) {
            store8(p, b);
        } else if constexpr (W == 4) {
            store4(p, b);
            store4(p + step, _mm_srli_si128(b, 4));
        } else {
            uint32_t rows[2] = {uint32_t(_mm_cvtsi128_si32(b)),
                                uint32_t(_mm_cvtsi128_si32(_mm_srli_si128(b, 4)))};
            for (int i = 0; i < R; ++i) {
                const uint16_t x = uint16_t(rows[i / 2] >> (16 * (i % 2)));
                std::memcpy(p + i * step, &x, 2);
            }
        }
    }
};

constexpr int unit_rows(McShape s) { return s.w >= 8 ? 1 : (s.w == 4 ? 2 : (s.h < 4 ? s.h : 4)); }

// Word predictions of a block, one unit per next() call; the vertical half carries the lower
// row's (horizontal) sum into the next call when a unit is one row.
template <int W, int R, int phase, int nb>
class WordPredictor {
public:
    using U = Unit<W, R>;

    WordPredictor(const uint8_t* p, intptr_t step, int r)
        : p_(p),
          step_(step),
          k_(_mm_set1_epi16(int16_t((mc_half_h(phase) && mc_half_v(phase) ? 2 : 1) - r))) {
        if constexpr (R == 1 && mc_half_v(phase)) prev_ = row_sum(p);
    }

    typename U::V next() {
        const uint8_t* p = p_;
        p_ += R * step_;
        constexpr int shift = int(mc_half_h(phase)) + int(mc_half_v(phase));
        if constexpr (!mc_half_v(phase)) {
            if constexpr (shift == 0)
                return row_sum(p);
            else
                return add_shift<shift>(row_sum(p), k_);
        } else {
            const typename U::V low = row_sum(p + step_);
            const typename U::V top = R == 1 ? prev_ : row_sum(p);
            prev_ = low;
            return add_shift<shift>(top + low, k_);
        }
    }

private:
    typename U::V row_sum(const uint8_t* p) const {
        if constexpr (mc_half_h(phase))
            return U::load(p, step_) + U::load(p + nb, step_);
        else
            return U::load(p, step_);
    }

    const uint8_t* p_;
    intptr_t step_;
    __m128i k_;
    typename U::V prev_{};
};

template <int shape, int phase>
[[gnu::flatten]] KvtStatus mc(const uint8_t* ref, int ref_step, const int16_t* res, int res_step,
                              uint8_t* dst, int dst_step, int r) {
    constexpr McShape s = kMcShapes[shape];
    constexpr int R = unit_rows(s);
    using U = Unit<s.w, R>;
    WordPredictor<s.w, R, phase, s.nb> pred(ref, ref_step, r);
#pragma GCC unroll 16
    for (int y = 0; y < s.h;
         y += R, res = advance(res, R * intptr_t(res_step)), dst += R * intptr_t(dst_step))
        U::store_sum(dst, dst_step, pred.next(), U::load_residual(res, res_step));
    return kvtStsOk;
}

template <int shape, int fwd, int bwd>
[[gnu::flatten]] KvtStatus mc_bi(const uint8_t* f, int f_step, const uint8_t* b, int b_step,
                                 const int16_t* res, int res_step, uint8_t* dst, int dst_step, int r) {
    constexpr McShape s = kMcShapes[shape];
    constexpr int R = unit_rows(s);
    using U = Unit<s.w, R>;
    WordPredictor<s.w, R, fwd, s.nb> pf(f, f_step, r);
    WordPredictor<s.w, R, bwd, s.nb> pb(b, b_step, r);
    const __m128i one = _mm_set1_epi16(1);
#pragma GCC unroll 16
    for (int y = 0; y < s.h;
         y += R, res = advance(res, R * intptr_t(res_step)), dst += R * intptr_t(dst_step))
        U::store_sum(dst, dst_step, add_shift<1>(pf.next() + pb.next(), one),
                     U::load_residual(res, res_step));
    return kvtStsOk;
}

template <int w, int h, int phase, int r>
[[gnu::flatten]] KvtStatus copy(const uint8_t* src, int src_step, uint8_t* dst, int dst_step) {
    predict_block<w, h, mc_half_h(phase), mc_half_v(phase), r>(src, src_step, dst, dst_step);
    return kvtStsOk;
}

}  // namespace

void init_mc(McDsp& d) {
    fill_slots(d.mc, [](auto i) {
        constexpr McSlot s = mc_slot_of(i);
        return &mc<s.shape, s.phase>;
    });
    fill_slots(d.mc_bi, [](auto i) {
        constexpr McBiSlot s = mc_bi_slot_of(i);
        return &mc_bi<s.shape, s.fwd, s.bwd>;
    });
    fill_slots(d.copy, [](auto i) {
        constexpr CopySlot s = copy_slot_of(i);
        return &copy<s.w, s.h, s.phase, s.rounding>;
    });
}

}  // namespace kvt::sse2
