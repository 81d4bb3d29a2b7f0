// SSE2 kernels of the residual family. Predictions are formed in 16-bit lanes (the wide rounding
// form reaches 256, and the bidirectional average needs the unrounded sum), a row of 8 samples
// per vector. Vertical half steps keep the previous row's sums, so each reference row is loaded
// and widened once. Only the samples the phase needs are read: the block, plus one column for a
// horizontal half step and one row for a vertical one.
#include "common/kernel.h"
#include "common/simd.h"
#include "me/halfpel.h"
#include "me/me_dsp.h"

namespace kvt::sse2 {

using namespace simd;

namespace {

// One block row of N * 8 samples as N vectors of 16-bit lanes.
template <int N>
struct Row {
    __m128i v[N];
};

template <int N>
inline Row<N> load_row(const uint8_t* p) {
    Row<N> r;
    if constexpr (N == 2) {
        const __m128i a = load(p);
        r.v[0] = _mm_unpacklo_epi8(a, _mm_setzero_si128());
        r.v[1] = _mm_unpackhi_epi8(a, _mm_setzero_si128());
    } else {
        r.v[0] = _mm_unpacklo_epi8(load8(p), _mm_setzero_si128());
    }
    return r;
}

template <int N>
inline Row<N> add(const Row<N>& a, const Row<N>& b) {
    Row<N> r;
    for (int i = 0; i < N; ++i) r.v[i] = _mm_add_epi16(a.v[i], b.v[i]);
    return r;
}

template <int N>
inline Row<N> add(const Row<N>& a, __m128i k) {
    Row<N> r;
    for (int i = 0; i < N; ++i) r.v[i] = _mm_add_epi16(a.v[i], k);
    return r;
}

template <int S, int N>
inline Row<N> shift(const Row<N>& a) {
    Row<N> r;
    for (int i = 0; i < N; ++i) r.v[i] = _mm_srli_epi16(a.v[i], S);
    return r;
}

// Produces the prediction rows of one reference block in order, for one phase and rounding form.
// The half-step rounding term is folded into the carried sum of the previous row.
template <int N, int Type>
class Predictor {
public:
    Predictor(const uint8_t* ref, int step, HalfRound k)
        : p_(ref), step_(step), k_(_mm_set1_epi16(int16_t(Type == kMcBothHalf ? k.k2 : k.k1))) {
        if constexpr (Type == kMcVertHalf) carry_ = add(load_row<N>(p_), k_);
        if constexpr (Type == kMcBothHalf) carry_ = add(pair(p_), k_);
    }

    Row<N> next() {
        Row<N> out;
        if constexpr (Type == kMcFull) {
            out = load_row<N>(p_);
        } else if constexpr (Type == kMcHorHalf) {
            out = shift<1>(add(add(load_row<N>(p_), load_row<N>(p_ + 1)), k_));
        } else if constexpr (Type == kMcVertHalf) {
            const Row<N> below = load_row<N>(p_ + step_);
            out = shift<1>(add(carry_, below));
            carry_ = add(below, k_);
        } else {
            const Row<N> below = pair(p_ + step_);
            out = shift<2>(add(carry_, below));
            carry_ = add(below, k_);
        }
        p_ += step_;
        return out;
    }

private:
    static Row<N> pair(const uint8_t* p) { return add(load_row<N>(p), load_row<N>(p + 1)); }

    const uint8_t* p_;
    intptr_t step_;
    __m128i k_;
    Row<N> carry_{};
};

// 16-bit output rows are addressed as bytes: their steps may be odd.
template <int N>
inline void store_row(uint8_t* dst, const Row<N>& r) {
    for (int i = 0; i < N; ++i) store(dst + 16 * i, r.v[i]);
}

template <int N>
inline void store_diff(uint8_t* dst, const uint8_t* cur, const Row<N>& pred) {
    const Row<N> c = load_row<N>(cur);
    for (int i = 0; i < N; ++i) store(dst + 16 * i, _mm_sub_epi16(c.v[i], pred.v[i]));
}

inline uint8_t* bytes(int16_t* p) { return reinterpret_cast<uint8_t*>(p); }

template <int W, int H, int Type, bool WithPred>
KvtStatus get_diff(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int16_t* diff16,
                   int diff_step, int16_t* pred16, int pred_step, int rounding) {
    uint8_t *d = bytes(diff16), *pred = bytes(pred16);
    Predictor<W / 8, Type> predictor(ref, ref_step, W == 16 ? round_wide(rounding) : round_narrow(rounding));
    // Unrolled: the carried sums then rotate through registers without copies.
#pragma GCC unroll 16
    for (int y = 0; y < H; ++y) {
        const Row<W / 8> p = predictor.next();
        store_diff(d, cur, p);
        if constexpr (WithPred) {
            store_row(pred, p);
            pred += pred_step;
        }
        cur += cur_step;
        d += diff_step;
    }
    return kvtStsOk;
}

template <int W, int H, int FwdType, int BwdType>
KvtStatus get_diff_b(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step, const uint8_t* bwd,
                     int bwd_step, int16_t* diff16, int diff_step, int rounding) {
    uint8_t* d = bytes(diff16);
    Predictor<W / 8, FwdType> f(fwd, fwd_step, round_narrow(rounding));
    Predictor<W / 8, BwdType> b(bwd, bwd_step, round_narrow(rounding));
    for (int y = 0; y < H; ++y) {
        store_diff(d, cur, shift<1>(add(f.next(), b.next())));
        cur += cur_step;
        d += diff_step;
    }
    return kvtStsOk;
}

// Residual sums of 4x4 sub-blocks. Each band of four rows accumulates its column sums in 16-bit
// lanes; two multiply-adds by one then fold four columns into one sub-block sum.
template <int N, bool WithDiff>
KvtStatus sums_diff(const uint8_t* cur, int cur_step, const uint8_t* pred, int pred_step, int16_t* sums,
                    int16_t* diff) {
    constexpr int V = N / 8;  // vectors per row
    const __m128i ones = _mm_set1_epi16(1);
    __m128i band_sums[N / 4];
    for (int band = 0; band < N / 4; ++band) {
        __m128i acc[V], prev[V];
        for (int i = 0; i < V; ++i) acc[i] = _mm_setzero_si128();
        for (int j = 0; j < 4; ++j) {
            const Row<V> c = load_row<V>(cur), p = load_row<V>(pred);
            for (int i = 0; i < V; ++i) {
                const __m128i d = _mm_sub_epi16(c.v[i], p.v[i]);
                acc[i] = _mm_add_epi16(acc[i], d);
                // Vector i holds rows j of tiles 2i and 2i+1; rows j-1 and j of a tile are
                // 16 contiguous bytes.
                if (WithDiff && (j & 1)) {
                    int16_t* tile = diff + (band * (N / 4) + 2 * i) * 16 + (j - 1) * 4;
                    store(tile, _mm_unpacklo_epi64(prev[i], d));
                    store(tile + 16, _mm_unpackhi_epi64(prev[i], d));
                }
                prev[i] = d;
            }
            cur += cur_step;
            pred += pred_step;
        }
        const __m128i pairs = _mm_madd_epi16(acc[0], ones);
        const __m128i quads = _mm_packs_epi32(pairs, V == 2 ? _mm_madd_epi16(acc[V - 1], ones) : pairs);
        band_sums[band] = _mm_madd_epi16(quads, ones);
    }
    if constexpr (N == 16) {
        store(sums, _mm_packs_epi32(band_sums[0], band_sums[1]));
        store(sums + 8, _mm_packs_epi32(band_sums[2], band_sums[3]));
    } else {
        // Each band's vector is (left, right, left, right).
        const __m128i both = _mm_unpacklo_epi64(band_sums[0], band_sums[1]);
        store8(sums, _mm_packs_epi32(both, both));
    }
    return kvtStsOk;
}

template <int N>
KvtStatus sums_diff_n(const uint8_t* cur, int cur_step, const uint8_t* pred, int pred_step, int16_t* sums,
                      int16_t* diff) {
    return diff ? sums_diff<N, true>(cur, cur_step, pred, pred_step, sums, diff)
                : sums_diff<N, false>(cur, cur_step, pred, pred_step, sums, nullptr);
}

template <int W, int H>
void fill_size(GetDiffFn (&row)[8], GetDiffBFn (&row_b)[16]) {
    fill_slots(row, [](auto i) {
        constexpr DiffSlot s = diff_slot_of(i);
        return get_diff<W, H, s.type, s.pred>;
    });
    fill_slots(row_b, [](auto i) {
        constexpr PhasePair s = pair_of(i);
        return get_diff_b<W, H, s.fwd, s.bwd>;
    });
}

}  // namespace

void init_residual(MeDsp& d) {
    fill_size<16, 16>(d.get_diff[k16x16], d.get_diff_b[k16x16]);
    fill_size<16, 8>(d.get_diff[k16x8], d.get_diff_b[k16x8]);
    fill_size<8, 16>(d.get_diff[k8x16], d.get_diff_b[k8x16]);
    fill_size<8, 8>(d.get_diff[k8x8], d.get_diff_b[k8x8]);
    fill_size<8, 4>(d.get_diff[k8x4], d.get_diff_b[k8x4]);
    d.sums_diff16x16 = sums_diff_n<16>;
    d.sums_diff8x8 = sums_diff_n<8>;
}

}  // namespace kvt::sse2
