// 128-bit helpers of the inverse quantizers, shared by the SSE2 and SSSE3 kernels (internal
// linkage: each tier file compiles its own copy with its own flags).
#pragma once

#include <emmintrin.h>

#include <algorithm>

#include "common/simd.h"
#include "mpeg4/quant_inv_dsp.h"

namespace kvt::simd {
namespace {

inline int16_t clamp_dc(int v, int lo, int hi) { return int16_t(std::min(std::max(v, lo), hi)); }

// 32-bit lanes divided by 2^N, truncating toward zero.
template <int N>
inline __m128i div_pow2_epi32(__m128i x) {
    const __m128i bias = _mm_and_si128(_mm_srai_epi32(x, 31), _mm_set1_epi32((1 << N) - 1));
    return _mm_srai_epi32(_mm_add_epi32(x, bias), N);
}

// `parity` is the XOR of the 64 results, so the low bits of its lanes XOR to the parity of their
// sum; an even sum moves coefficient 63 by one toward odd (ISO/IEC 14496-2 7.4.4.3).
inline void mismatch_control(int16_t* c, __m128i parity) {
    const __m128i low_bits = _mm_slli_epi16(parity, 15);
    const int lanes = _mm_movemask_epi8(_mm_packs_epi16(low_bits, low_bits)) & 0xFF;
    if ((__builtin_popcount(unsigned(lanes)) & 1) == 0) c[63] = int16_t(c[63] + ((c[63] & 1) ? -1 : 1));
}

// The smallest level magnitude whose H.263-method result exceeds hi, for QP 1..31 and hi = 2^k - 1
// (k = 7..14): levels clamped to it give the same clamped results and cannot overflow 16 bits
// (hi + 2 QP stays below 32768). A table, so that no kernel call pays for a division.
struct LevelLimits {
    int16_t at[8][32] = {};
    constexpr LevelLimits() {
        for (int k = 7; k <= 14; ++k)
            for (int qp = 1; qp < 32; ++qp)
                at[k - 7][qp] = int16_t(((1 << k) - 1 - h263_offset(qp)) / (2 * qp) + 1);
    }
};
constexpr LevelLimits kLevelLimits;
constexpr int kClampedMaxHi = (1 << 14) - 1;  // above: 12-bit video, the saturating path

inline int level_limit(int qp, int hi) { return kLevelLimits.at[31 - __builtin_clz(unsigned(hi)) - 6][qp]; }

// One coefficient by the H.263 method, for the tails shorter than a vector.
inline int16_t h263_value(int level, int qp, int lo, int hi) {
    if (level == 0) return 0;
    const int q = h263_offset(qp), f = 2 * qp * level + (level > 0 ? q : -q);
    return int16_t(std::min(std::max(f, lo), hi));
}

// step(v) on entries 0 .. len - 1, eight at a time, so that nothing outside them is read or
// written. The last, partial group is the eight entries that end the run, loaded before any store
// reaches them: their results overwrite the overlap with the same values. Runs shorter than a
// vector go one entry at a time (a fixed-length loop the compiler unrolls rather than vectorizes).
template <class Step, class Scalar>
inline void for_each_group(int16_t* c, int len, Step step, Scalar scalar) {
    if (len < 8) {
        for (int i = 0; i < 7; ++i)
            if (i < len) c[i] = scalar(c[i]);
        return;
    }
    const __m128i last = load(c + len - 8);
    for (int i = 0; i + 8 <= len; i += 8) store(c + i, step(load(c + i)));
    if (len & 7) store(c + len - 8, step(last));
}

// The H.263 method on entries 0 .. len - 1. Offset::apply(q', L) gives +-q' by the sign of L and 0
// for L = 0.
template <class Offset>
inline void h263_run(int16_t* c, int len, int qp, int lo, int hi) {
    const __m128i vq = _mm_set1_epi16(int16_t(h263_offset(qp))), vqp2 = _mm_set1_epi16(int16_t(2 * qp));
    const __m128i vlo = _mm_set1_epi16(int16_t(lo)), vhi = _mm_set1_epi16(int16_t(hi));
    const auto scalar = [=](int16_t level) { return h263_value(level, qp, lo, hi); };
    if (hi <= kClampedMaxHi) {
        const int kl = level_limit(qp, hi);
        const __m128i vkl = _mm_set1_epi16(int16_t(kl)), vnkl = _mm_set1_epi16(int16_t(-kl));
        for_each_group(
            c, len,
            [&](__m128i level) {
                const __m128i p = _mm_mullo_epi16(_mm_max_epi16(_mm_min_epi16(level, vkl), vnkl), vqp2);
                return _mm_max_epi16(_mm_min_epi16(_mm_add_epi16(p, Offset::apply(vq, level)), vhi), vlo);
            },
            scalar);
    } else {
        for_each_group(
            c, len,
            [&](__m128i level) {
                const __m128i pl = _mm_mullo_epi16(level, vqp2), ph = _mm_mulhi_epi16(level, vqp2);
                const __m128i p = _mm_packs_epi32(_mm_unpacklo_epi16(pl, ph), _mm_unpackhi_epi16(pl, ph));
                return _mm_max_epi16(_mm_min_epi16(_mm_adds_epi16(p, Offset::apply(vq, level)), vhi), vlo);
            },
            scalar);
    }
}

template <class Offset>
struct Run128 {
    static void run(int16_t* c, int len, int qp, int lo, int hi) { h263_run<Offset>(c, len, qp, lo, hi); }
};

// The three H.263-method kernels of a tier, from its Run::run(c, len, qp, lo, hi).
template <class Run>
KvtStatus h263_kernel(int16_t* c, int len, int qp, int lo, int hi) {
    Run::run(c, len, qp, lo, hi);
    return kvtStsOk;
}

template <class Run>
KvtStatus h263_intra_kernel(int16_t* c, int len, int qp, int dc_scale, int lo, int hi) {
    const int16_t dc = clamp_dc(c[0] * dc_scale, lo, hi);
    Run::run(c, len, qp, lo, hi);
    c[0] = dc;
    return kvtStsOk;
}

// H.263 5.4.1: INTRADC 255 stands for 128; the reconstruction is 8 times the DC level.
template <class Run>
KvtStatus h263_intradc_kernel(int16_t* c, int len, int qp) {
    const int16_t dc = c[0] == 255 ? int16_t(1024) : int16_t(c[0] * 8);
    Run::run(c, len, qp, -2048, 2047);
    c[0] = dc;
    return kvtStsOk;
}

}  // namespace
}  // namespace kvt::simd
