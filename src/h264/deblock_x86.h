// The H.264 deblocking filter for x86, written once and compiled by each tier file with its own
// target flags (deblock_sse2.cpp, deblock_avx2.cpp); internal linkage throughout.
//
// Sixteen lines across an edge are filtered at once, in 16-bit lanes (V16: two 128-bit registers,
// or one 256-bit register with AVX2), which keeps every formula of H.264 8.7.2 exact as written.
// Horizontal edges read their rows directly; vertical edges are transposed into a buffer of
// columns first and back afterwards. The two chroma edges of a macroblock share no sample, so
// both go through one set of lanes (edge 0 in lanes 0..7, edge 4 in lanes 8..15).
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#include "common/simd.h"
#include "h264/deblock_dsp.h"
#include "h264/rows_x86.h"

// The filters are large; without the hint the compiler passes their sixteen-line state through
// memory.
#define KVT_INLINE [[gnu::always_inline]] inline

namespace kvt {
namespace {

// ---- Sixteen 16-bit lanes ---------------------------------------------------------------------------

// Small constants in memory: loads cost no vector operation, where a broadcast from a general
// register costs two or three. The compiler sees through a plain load of a constant array and
// builds the broadcast anyway; splat_lanes() hides the array's address from it. All constants sit
// in one table so that its hidden address takes one general register whatever a filter uses (one
// register each pushed the chroma filters into a saved register and a frame).
constexpr int16_t kSplatValues[] = {1, 2, 3, 4, 0x0303};
constexpr size_t kSplatCount = sizeof kSplatValues / sizeof kSplatValues[0];
struct alignas(32) SplatTable {
    int16_t v[kSplatCount][16];
};
constexpr SplatTable make_splats() {
    SplatTable t{};
    for (size_t i = 0; i < kSplatCount; ++i)
        for (int16_t& lane : t.v[i]) lane = kSplatValues[i];
    return t;
}
constexpr SplatTable kSplats = make_splats();
template <int x>
constexpr size_t splat_row() {
    size_t i = 0;
    while (i < kSplatCount && kSplatValues[i] != x) ++i;
    return i;
}
template <int x>
inline const void* splat_lanes() {
    static_assert(splat_row<x>() < kSplatCount, "add the constant to kSplatValues");
    return static_cast<const char*>(simd::opaque(static_cast<const void*>(&kSplats))) + 32 * splat_row<x>();
}

#if defined(__AVX2__)
struct V16 {
    __m256i v;
    static V16 splat(int x) { return {_mm256_set1_epi16(int16_t(x))}; }
    template <int x>
    static V16 constant() {
        return {_mm256_load_si256(static_cast<const __m256i*>(splat_lanes<x>()))};
    }
    // 16 bytes widened.
    static V16 widen(__m128i b) { return {_mm256_cvtepu8_epi16(b)}; }
    // Saturated to bytes, lane order kept.
    __m128i bytes() const {
        return _mm256_castsi256_si128(_mm256_permute4x64_epi64(_mm256_packus_epi16(v, v), 0x08));
    }
    // Lanes 0..7 of a then b, and lanes 8..15 of a then b, saturated to bytes.
    static void pack_halves(V16 a, V16 b, __m128i& lo, __m128i& hi) {
        const __m256i p = _mm256_packus_epi16(a.v, b.v);
        lo = _mm256_castsi256_si128(p), hi = _mm256_extracti128_si256(p, 1);
    }
    template <class F>
    V16 map(V16 b, F f) const {
        return {f(v, b.v)};
    }
};
inline __m256i op_add(__m256i a, __m256i b) { return _mm256_add_epi16(a, b); }
inline __m256i op_sub(__m256i a, __m256i b) { return _mm256_sub_epi16(a, b); }
inline __m256i op_min(__m256i a, __m256i b) { return _mm256_min_epi16(a, b); }
inline __m256i op_max(__m256i a, __m256i b) { return _mm256_max_epi16(a, b); }
inline __m256i op_gt(__m256i a, __m256i b) { return _mm256_cmpgt_epi16(a, b); }
inline __m256i op_and(__m256i a, __m256i b) { return _mm256_and_si256(a, b); }
inline __m256i op_not(__m256i a) { return _mm256_xor_si256(a, _mm256_cmpeq_epi16(a, a)); }
inline __m256i op_avg(__m256i a, __m256i b) { return _mm256_avg_epu16(a, b); }
inline __m256i op_absdiff(__m256i a, __m256i b) { return _mm256_abs_epi16(_mm256_sub_epi16(a, b)); }
// m ? b : a (m all ones or all zeros per lane). One VPBLENDVB with the mask as it stands: GCC
// turns the intrinsic into a compare of the mask's bytes with zero plus the blend wherever one
// mask serves two blends.
inline V16 select(V16 m, V16 b, V16 a) {
    __m256i r;
    __asm__("vpblendvb %[m], %[b], %[a], %[r]" : [r] "=x"(r) : [a] "x"(a.v), [b] "x"(b.v), [m] "x"(m.v));
    return {r};
}
template <int n>
inline V16 sra(V16 a) {
    return {_mm256_srai_epi16(a.v, n)};
}
template <int n>
inline V16 sll(V16 a) {
    return {_mm256_slli_epi16(a.v, n)};
}
#else
struct V16 {
    __m128i lo, hi;
    static V16 splat(int x) { return {_mm_set1_epi16(int16_t(x)), _mm_set1_epi16(int16_t(x))}; }
    template <int x>
    static V16 constant() {
        const __m128i c = _mm_load_si128(static_cast<const __m128i*>(splat_lanes<x>()));
        return {c, c};
    }
    static V16 widen(__m128i b) {
        const __m128i z = _mm_setzero_si128();
        return {_mm_unpacklo_epi8(b, z), _mm_unpackhi_epi8(b, z)};
    }
    __m128i bytes() const { return _mm_packus_epi16(lo, hi); }
    static void pack_halves(V16 a, V16 b, __m128i& l, __m128i& h) {
        l = _mm_packus_epi16(a.lo, b.lo), h = _mm_packus_epi16(a.hi, b.hi);
    }
    template <class F>
    V16 map(V16 b, F f) const {
        return {f(lo, b.lo), f(hi, b.hi)};
    }
};
inline __m128i op_add(__m128i a, __m128i b) { return _mm_add_epi16(a, b); }
inline __m128i op_sub(__m128i a, __m128i b) { return _mm_sub_epi16(a, b); }
inline __m128i op_min(__m128i a, __m128i b) { return _mm_min_epi16(a, b); }
inline __m128i op_max(__m128i a, __m128i b) { return _mm_max_epi16(a, b); }
inline __m128i op_gt(__m128i a, __m128i b) { return _mm_cmpgt_epi16(a, b); }
inline __m128i op_and(__m128i a, __m128i b) { return _mm_and_si128(a, b); }
inline __m128i op_not(__m128i a) { return _mm_xor_si128(a, _mm_cmpeq_epi16(a, a)); }
inline __m128i op_avg(__m128i a, __m128i b) { return _mm_avg_epu16(a, b); }
inline __m128i op_absdiff(__m128i a, __m128i b) {
    return _mm_or_si128(_mm_subs_epu16(a, b), _mm_subs_epu16(b, a));  // lanes hold 0..255
}
inline V16 select(V16 m, V16 b, V16 a) {
    const auto pick = [](__m128i mm, __m128i x, __m128i y) {
        return _mm_or_si128(_mm_and_si128(mm, x), _mm_andnot_si128(mm, y));
    };
    return {pick(m.lo, b.lo, a.lo), pick(m.hi, b.hi, a.hi)};
}
template <int n>
inline V16 sra(V16 a) {
    return {_mm_srai_epi16(a.lo, n), _mm_srai_epi16(a.hi, n)};
}
template <int n>
inline V16 sll(V16 a) {
    return {_mm_slli_epi16(a.lo, n), _mm_slli_epi16(a.hi, n)};
}
#endif

inline V16 operator+(V16 a, V16 b) {
    return a.map(b, [](auto x, auto y) { return op_add(x, y); });
}
inline V16 operator-(V16 a, V16 b) {
    return a.map(b, [](auto x, auto y) { return op_sub(x, y); });
}
inline V16 operator&(V16 a, V16 b) {
    return a.map(b, [](auto x, auto y) { return op_and(x, y); });
}
inline V16 operator~(V16 a) {
    return a.map(a, [](auto x, auto) { return op_not(x); });
}
inline V16 min(V16 a, V16 b) {
    return a.map(b, [](auto x, auto y) { return op_min(x, y); });
}
inline V16 max(V16 a, V16 b) {
    return a.map(b, [](auto x, auto y) { return op_max(x, y); });
}
// a < b as a lane mask.
inline V16 less(V16 a, V16 b) {
    return b.map(a, [](auto x, auto y) { return op_gt(x, y); });
}
inline V16 avg(V16 a, V16 b) {
    return a.map(b, [](auto x, auto y) { return op_avg(x, y); });
}
inline V16 absdiff(V16 a, V16 b) {
    return a.map(b, [](auto x, auto y) { return op_absdiff(x, y); });
}
inline V16 clip3(V16 lo, V16 hi, V16 v) { return min(max(v, lo), hi); }

// ---- Filters ------------------------------------------------------------------------------------------

// Per-lane parameters of the lines being filtered; `normal` and `strong` are lane masks of the
// segments with bS 1..3 and bS 4 (or more).
struct EdgeLanes {
    V16 alpha, beta, normal, strong, tc0;
};

// The eight samples p3..p0, q0..q3 of sixteen lines across a luma edge (named, not an array,
// so that they stay in registers).
struct LumaLines {
    V16 p3, p2, p1, p0, q0, q1, q2, q3;
};

// One side of the strong filter: a0..a3 that side's samples (a0 next to the edge), b0, b1 the
// other side's; `full` lanes take the three-sample averages, the other strong lanes only a0'.
KVT_INLINE void strong_side(V16 m, V16 full, V16 a0, V16 a1, V16 a2, V16 a3, V16 b0, V16 b1, V16& o0, V16& o1,
                            V16& o2) {
    const V16 s3 = a1 + a0 + b0, two = V16::constant<2>(), four = V16::constant<4>();
    o0 = select(m, select(full, sra<3>(a2 + sll<1>(s3) + b1 + four), sra<2>(sll<1>(a1) + a0 + b1 + two)), o0);
    o1 = select(full, sra<2>(a2 + s3 + two), o1);
    o2 = select(full, sra<3>(sll<1>(a3 + a2) + a2 + s3 + four), o2);
}

// Filters the lines in place; the filters no lane needs are skipped.
KVT_INLINE void filter_luma(LumaLines& l, const EdgeLanes& e, bool any_normal, bool any_strong) {
    const LumaLines in = l;
    const V16 zero = V16::splat(0), ad = absdiff(in.p0, in.q0);
    const V16 on =
        less(ad, e.alpha) & less(absdiff(in.p1, in.p0), e.beta) & less(absdiff(in.q1, in.q0), e.beta);
    const V16 ap = less(absdiff(in.p2, in.p0), e.beta), aq = less(absdiff(in.q2, in.q0), e.beta);
    if (any_normal) {
        const V16 m = on & e.normal, tc = e.tc0 - ap - aq, tc0n = zero - e.tc0;
        const V16 d = sra<3>(sll<2>(in.q0 - in.p0) + (in.p1 - in.q1) + V16::constant<4>());
        const V16 delta = clip3(zero - tc, tc, d) & m, pq = avg(in.p0, in.q0);
        l.p0 = in.p0 + delta;
        l.q0 = in.q0 - delta;
        l.p1 = in.p1 + (clip3(tc0n, e.tc0, sra<1>(in.p2 + pq - sll<1>(in.p1))) & m & ap);
        l.q1 = in.q1 + (clip3(tc0n, e.tc0, sra<1>(in.q2 + pq - sll<1>(in.q1))) & m & aq);
    }
    if (any_strong) {
        const V16 m = on & e.strong, small = m & less(ad, sra<2>(e.alpha) + V16::constant<2>());
        strong_side(m, small & ap, in.p0, in.p1, in.p2, in.p3, in.q0, in.q1, l.p0, l.p1, l.p2);
        strong_side(m, small & aq, in.q0, in.q1, in.q2, in.q3, in.p0, in.p1, l.q0, l.q1, l.q2);
    }
}

// Filters p0 and q0 in place. Both filters run unconditionally and the strong lanes take theirs
// by a select, so e.normal may include them (bS > 0 is enough). With tc = tc0 + 1, -tc is ~tc0;
// the strong filter's 2 p1 + p0 + q1 + 2 is p1 + p0 + (p1 + q1 + 2), whose last term q0' shares.
// (Samples as separate values, not an array: an array of 256-bit lanes makes the compiler align
// the stack, though it keeps them in registers.)
KVT_INLINE void filter_chroma(V16 p1, V16& p0_io, V16& q0_io, V16 q1, EdgeLanes e) {
    const V16 p0 = p0_io, q0 = q0_io;
    const V16 on = less(absdiff(p0, q0), e.alpha) & less(max(absdiff(p1, p0), absdiff(q1, q0)), e.beta);
    const V16 d = sra<3>(sll<2>(q0 - p0) + (p1 - q1) + V16::constant<4>());
    const V16 delta = clip3(~e.tc0, e.tc0 + V16::constant<1>(), d) & (on & e.normal);
    const V16 t = p1 + q1 + V16::constant<2>(), m = on & e.strong;
    p0_io = select(m, sra<2>(p1 + p0 + t), p0 + delta);
    q0_io = select(m, sra<2>(q1 + q0 + t), q0 - delta);
}

// ---- Lanes from the argument bytes ------------------------------------------------------------------

// 16 bytes: each of the 4 bytes at p repeated 4 times (a luma edge's segments).
inline __m128i spread4(const uint8_t* p) {
    const __m128i b = load4(p);
    const __m128i x = _mm_unpacklo_epi8(b, b);
    return _mm_unpacklo_epi16(x, x);
}
// 16 bytes: each of the 8 bytes (4 at a, 4 at b) repeated twice (the two chroma edges' segments).
inline __m128i spread2(const uint8_t* a, const uint8_t* b) {
    const __m128i x = _mm_unpacklo_epi32(load4(a), load4(b));
    return _mm_unpacklo_epi8(x, x);
}

// Byte masks of strengths 1..3 and 4..255.
struct StrengthBytes {
    __m128i normal, strong;
    explicit StrengthBytes(__m128i bs) {
        const __m128i up_to_3 = _mm_cmpeq_epi8(
            _mm_min_epu8(bs, _mm_load_si128(static_cast<const __m128i*>(splat_lanes<0x0303>()))), bs);
        normal = _mm_andnot_si128(_mm_cmpeq_epi8(bs, _mm_setzero_si128()), up_to_3);
        strong = _mm_xor_si128(up_to_3, _mm_cmpeq_epi8(bs, bs));
    }
};

// Lanes from 16 bytes of masks (0 or 0xFF) and of thresholds.
inline V16 mask_lanes(__m128i m) {
#if defined(__AVX2__)
    return {_mm256_cvtepi8_epi16(m)};
#else
    return {_mm_unpacklo_epi8(m, m), _mm_unpackhi_epi8(m, m)};
#endif
}

inline EdgeLanes edge_lanes(V16 alpha, V16 beta, const StrengthBytes& k, __m128i tc0) {
    return {alpha, beta, mask_lanes(k.normal), mask_lanes(k.strong), V16::widen(tc0)};
}

// The parameters of a macroblock's four luma edges; edge(e) spreads segment bytes 4e..4e+3 over
// the sixteen lines (a byte shuffle where there is one, else a fresh look at the argument bytes).
// With AVX-512's 32 vector registers the thresholds are spread once, up front, so that no argument
// pointer stays live across the edges: the row addresses then need no saved register.
struct LumaParams {
    StrengthBytes all;
#if defined(__AVX512VL__)
    __m128i tc0;
    V16 alpha_outer, alpha_inner, beta_outer, beta_inner;
    LumaParams(const uint8_t* a, const uint8_t* b, const uint8_t* t, const uint8_t* s)
        : all(load16(s)),
          tc0(load16(t)),
          alpha_outer(V16::splat(a[0])),
          alpha_inner(V16::splat(a[1])),
          beta_outer(V16::splat(b[0])),
          beta_inner(V16::splat(b[1])) {}
#else
    const uint8_t *alpha, *beta, *tc0, *bs;
    LumaParams(const uint8_t* a, const uint8_t* b, const uint8_t* t, const uint8_t* s)
        : all(load16(s)), alpha(a), beta(b), tc0(t), bs(s) {}
#endif
    unsigned normal_bits() const { return unsigned(_mm_movemask_epi8(all.normal)); }
    unsigned strong_bits() const { return unsigned(_mm_movemask_epi8(all.strong)); }
    EdgeLanes edge(int e) const {
#if defined(__SSSE3__)
        const __m128i idx = _mm_add_epi8(_mm_set1_epi8(char(4 * e)),
                                         _mm_setr_epi8(0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3));
        StrengthBytes k = all;
        k.normal = _mm_shuffle_epi8(all.normal, idx);
        k.strong = _mm_shuffle_epi8(all.strong, idx);
#if defined(__AVX512VL__)
        return edge_lanes(e ? alpha_inner : alpha_outer, e ? beta_inner : beta_outer, k,
                          _mm_shuffle_epi8(tc0, idx));
#else
        return edge_lanes(V16::splat(alpha[e > 0]), V16::splat(beta[e > 0]), k,
                          _mm_shuffle_epi8(load16(tc0), idx));
#endif
#else
        return edge_lanes(V16::splat(alpha[e > 0]), V16::splat(beta[e > 0]),
                          StrengthBytes(spread4(bs + 4 * e)), spread4(tc0 + 4 * e));
#endif
    }
};

// ---- Edges of a macroblock -------------------------------------------------------------------------

// Luma edges over rows of 16 bytes, row r at p + r * step (r = -4..15). The q side of one edge is
// the p side of the next, so those four lines stay in registers; a row is stored once no later
// edge changes it. Edge 0 without a filtered segment leaves the rows before the macroblock alone.
// In the picture (picture_rows) rows go in groups of four, each addressed from the group's first
// row, one pointer moved by four steps per edge: the compiler's own addressing keeps a register
// per row and spills. In the transposition buffer the rows are fixed offsets (the buffer must not
// escape, or it could no longer stay in registers).
template <bool picture_rows>
KVT_INLINE void luma_edges(uint8_t* p, intptr_t step, const uint8_t* alpha, const uint8_t* beta,
                           const uint8_t* tc0, const uint8_t* bs) {
    const LumaParams params(alpha, beta, tc0, bs);
    const unsigned normal = params.normal_bits(), strong = params.strong_bits();
    const intptr_t s = step, s3 = 3 * step;
    const auto at = [&](uint8_t* group, int k) { return k == 3 ? group + s3 : group + k * s; };
    const auto row = [&](uint8_t* group, int k) { return V16::widen(load16(at(group, k))); };
    const auto put = [&](uint8_t* group, int k, V16 v) { store16(at(group, k), v.bytes()); };
    uint8_t* prev = p - 4 * s;  // rows -4..-1
    LumaLines l{row(prev, 0), row(prev, 1), row(prev, 2), row(prev, 3), {}, {}, {}, {}};
#pragma GCC unroll 4
    for (int edge = 0; edge < 4; ++edge) {
        const bool any_normal = (normal >> 4 * edge) & 15, any_strong = (strong >> 4 * edge) & 15;
        uint8_t* const cur = picture_rows ? simd::opaque(prev + 4 * s) : prev + 4 * s;  // rows 4 edge..
        l.q0 = row(cur, 0), l.q1 = row(cur, 1), l.q2 = row(cur, 2), l.q3 = row(cur, 3);
        if (any_normal || any_strong) {
            filter_luma(l, params.edge(edge), any_normal, any_strong);
            if (edge == 0) put(prev, 1, l.p2), put(prev, 2, l.p1), put(prev, 3, l.p0);
        }
        if (edge > 0) put(prev, 1, l.p2), put(prev, 2, l.p1), put(prev, 3, l.p0);
        put(cur, 0, l.q0);
        l.p3 = l.q0, l.p2 = l.q1, l.p1 = l.q2, l.p0 = l.q3;
        prev = cur;
    }
    put(prev, 1, l.p2);  // rows 13 and 14 (row 15 is never changed)
    put(prev, 2, l.p1);
}

[[maybe_unused]] KvtStatus luma_hor(uint8_t* p, int32_t step, const uint8_t* alpha, const uint8_t* beta,
                                    const uint8_t* tc0, const uint8_t* bs) {
    luma_edges<true>(p, step, alpha, beta, tc0, bs);
    return kvtStsOk;
}

// 16x16 byte transpose: out row c = column c of the 16 input rows. Four rounds interleave row i
// with row i + 8; taking the rows in bit-reversed order makes the result come out in order.
KVT_INLINE void transpose16(__m128i (&r)[16]) {
    constexpr int kBitReversed[16] = {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15};
    const __m128i in[16] = {r[0], r[1], r[2],  r[3],  r[4],  r[5],  r[6],  r[7],
                            r[8], r[9], r[10], r[11], r[12], r[13], r[14], r[15]};
    for (int i = 0; i < 16; ++i) r[i] = in[kBitReversed[i]];
    for (int stage = 0; stage < 4; ++stage) {
        __m128i t[16];
        for (int i = 0; i < 8; ++i) {
            const __m128i a = r[i], b = r[i + 8];
            switch (stage) {
                case 0:
                    t[2 * i] = _mm_unpacklo_epi8(a, b), t[2 * i + 1] = _mm_unpackhi_epi8(a, b);
                    break;
                case 1:
                    t[2 * i] = _mm_unpacklo_epi16(a, b), t[2 * i + 1] = _mm_unpackhi_epi16(a, b);
                    break;
                case 2:
                    t[2 * i] = _mm_unpacklo_epi32(a, b), t[2 * i + 1] = _mm_unpackhi_epi32(a, b);
                    break;
                default:
                    t[2 * i] = _mm_unpacklo_epi64(a, b), t[2 * i + 1] = _mm_unpackhi_epi64(a, b);
                    break;
            }
        }
        for (int i = 0; i < 16; ++i) r[i] = t[i];
    }
}

// Vertical edges: columns -4..15 transposed into rows of a buffer, filtered as horizontal edges,
// and columns -4..15 written back (column -4 unchanged).
[[maybe_unused]] KvtStatus luma_ver(uint8_t* p, int32_t step, const uint8_t* alpha, const uint8_t* beta,
                                    const uint8_t* tc0, const uint8_t* bs) {
    alignas(16) uint8_t cols[20][16];
    __m128i r[16];
    for (int y = 0; y < 16; ++y) r[y] = load16(p + y * intptr_t(step));
    transpose16(r);
    for (int c = 0; c < 16; ++c) store16(cols[c + 4], r[c]);
    for (int y = 0; y < 16; ++y) r[y] = load4(p - 4 + y * intptr_t(step));
    transpose16(r);  // columns -4..-1 in r[0..3]
    for (int c = 0; c < 4; ++c) store16(cols[c], r[c]);
    luma_edges<false>(cols[4], 16, alpha, beta, tc0, bs);
    for (int c = 0; c < 16; ++c) r[c] = load16(cols[c + 4]);
    transpose16(r);
    for (int y = 0; y < 16; ++y) store16(p + y * intptr_t(step), r[y]);
    for (int c = 0; c < 4; ++c) r[c] = load16(cols[c]);
    for (int c = 4; c < 16; ++c) r[c] = _mm_setzero_si128();
    transpose16(r);
    for (int y = 0; y < 16; ++y) store4(p - 4 + y * intptr_t(step), r[y]);
    return kvtStsOk;
}

#if defined(__AVX2__)
// The argument byte each of the sixteen chroma lanes takes: alpha and beta by edge (byte 0 for
// edge 0's lanes, byte 1 for edge 4's), tc0 by segment, and bS of luma edges 0 and 2 (bytes 0..3
// and 8..11 of the 16) by segment.
constexpr int8_t kByEdge[16] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1};
constexpr int8_t kTc0BySegment[16] = {0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7};
constexpr int8_t kBsBySegment[16] = {0, 0, 1, 1, 2, 2, 3, 3, 8, 8, 9, 9, 10, 10, 11, 11};
// Those picks as one 256-bit in-half byte shuffle that also zero-extends to 16 bits (0x80 selects
// zero), for an argument whose load broadcast it to both 128-bit halves.
struct alignas(32) WideningMask {
    int8_t b[32];
};
constexpr WideningMask widening(const int8_t (&pick)[16]) {
    WideningMask m{};
    for (int i = 0; i < 16; ++i) m.b[2 * i] = pick[i], m.b[2 * i + 1] = -128;
    return m;
}
inline V16 pick_lanes(__m256i v, const WideningMask& m) {
    return {_mm256_shuffle_epi8(v, _mm256_load_si256(reinterpret_cast<const __m256i*>(m.b)))};
}
#endif

// The lanes of both chroma edges (edge 0 in lanes 0..7, edge 4 in 8..15) from the argument bytes.
// The kernels build them before they load any row: the argument pointers are then dead, and the
// row addresses fit in the call-clobbered registers.
KVT_INLINE EdgeLanes chroma_lanes(const uint8_t* alpha, const uint8_t* beta, const uint8_t* tc0,
                                  const uint8_t* bs) {
#if defined(__AVX2__)
    // Each argument broadcast by its load, then one shuffle.
    static constexpr WideningMask kEdge = widening(kByEdge), kTc0 = widening(kTc0BySegment),
                                  kBs = widening(kBsBySegment);
    const auto pair = [](const uint8_t* p) {
        int16_t v;
        std::memcpy(&v, p, 2);
        return pick_lanes(_mm256_set1_epi16(v), kEdge);
    };
    int64_t t;
    std::memcpy(&t, tc0, 8);
    const V16 b = pick_lanes(_mm256_broadcastsi128_si256(load16(bs)), kBs);
    return {pair(alpha), pair(beta), less(V16::splat(0), b), less(V16::constant<3>(), b),
            pick_lanes(_mm256_set1_epi64x(t), kTc0)};
#else
    const auto halves = [](int a, int b) {
        return V16::widen(_mm_unpacklo_epi64(_mm_set1_epi8(char(a)), _mm_set1_epi8(char(b))));
    };
    return edge_lanes(halves(alpha[0], alpha[1]), halves(beta[0], beta[1]),
                      StrengthBytes(spread2(bs, bs + 8)), spread2(tc0, tc0 + 4));
#endif
}

// Both chroma edges from four rows of 16 bytes (p1, p0, q0, q1; bytes 0..7 of edge 0's lines,
// 8..15 of edge 4's); pq[e] receives p0' then q0' of edge 0 (e = 0) or 4 (e = 1).
KVT_INLINE void chroma_edges(const __m128i (&rows)[4], const EdgeLanes& lanes, __m128i (&pq)[2]) {
    V16 p0 = V16::widen(rows[1]), q0 = V16::widen(rows[2]);
    filter_chroma(V16::widen(rows[0]), p0, q0, V16::widen(rows[3]), lanes);
    V16::pack_halves(p0, q0, pq[0], pq[1]);
}

// Rows -2..1 and 2..5 go to the two halves of four registers; p0 and q0 come back as rows -1, 0
// and 3, 4.
[[maybe_unused]] KvtStatus chroma_hor(uint8_t* p, int32_t step, const uint8_t* alpha, const uint8_t* beta,
                                      const uint8_t* tc0, const uint8_t* bs) {
    const EdgeLanes lanes = chroma_lanes(alpha, beta, tc0, bs);
    // Rows from two bases, rows -2 and 2, plus 0 to 3 steps.
    const intptr_t s = step, s3 = 3 * s;
    const uint8_t *a = p - 2 * s, *b = a + 4 * s;
    __m128i rows[4] = {load8x2(a, b), load8x2(a + s, b + s), load8x2(a + 2 * s, b + 2 * s),
                       load8x2(a + s3, b + s3)};
    __m128i pq[2];
    chroma_edges(rows, lanes, pq);
    store8(p - s, pq[0]), store8_high(p, pq[0]);
    store8(p + s3, pq[1]), store8_high(p + 4 * s, pq[1]);
    return kvtStsOk;
}

// 8x8 byte transpose of the low halves of r[0..7]: out[k] holds columns 2k (low half) and 2k + 1.
inline void transpose8(const __m128i (&r)[8], __m128i (&out)[4]) {
    __m128i a[4], b[4];
    for (int i = 0; i < 4; ++i) a[i] = _mm_unpacklo_epi8(r[2 * i], r[2 * i + 1]);
    b[0] = _mm_unpacklo_epi16(a[0], a[1]), b[1] = _mm_unpackhi_epi16(a[0], a[1]);  // rows 0..3
    b[2] = _mm_unpacklo_epi16(a[2], a[3]), b[3] = _mm_unpackhi_epi16(a[2], a[3]);  // rows 4..7
    out[0] = _mm_unpacklo_epi32(b[0], b[2]), out[1] = _mm_unpackhi_epi32(b[0], b[2]);
    out[2] = _mm_unpacklo_epi32(b[1], b[3]), out[3] = _mm_unpackhi_epi32(b[1], b[3]);
}

// Columns -2..5 of the 8 rows: lines of edge 0 are columns -2..1, of edge 4 columns 2..5; all 8
// columns go back (the unchanged ones with their own values).
[[maybe_unused]] KvtStatus chroma_ver(uint8_t* p, int32_t step, const uint8_t* alpha, const uint8_t* beta,
                                      const uint8_t* tc0, const uint8_t* bs) {
    const EdgeLanes lanes = chroma_lanes(alpha, beta, tc0, bs);
    const intptr_t s = step;
    __m128i r[8], c[4];
    for (int y = 0; y < 8; ++y) r[y] = load8(p - 2 + y * s);
    transpose8(r, c);  // c[k]: columns 2k - 2 and 2k - 1
    __m128i rows[4] = {_mm_unpacklo_epi64(c[0], c[2]), _mm_unpackhi_epi64(c[0], c[2]),
                       _mm_unpacklo_epi64(c[1], c[3]), _mm_unpackhi_epi64(c[1], c[3])};
    __m128i pq[2];
    chroma_edges(rows, lanes, pq);
    rows[1] = _mm_unpacklo_epi64(pq[0], pq[1]), rows[2] = _mm_unpackhi_epi64(pq[0], pq[1]);
    // Columns back to separate registers: -2, -1, 0, 1 from the low halves, 2..5 from the high.
    for (int k = 0; k < 4; ++k) r[k] = rows[k], r[k + 4] = _mm_unpackhi_epi64(rows[k], rows[k]);
    transpose8(r, c);  // c[k]: rows 2k and 2k + 1
    for (int k = 0; k < 4; ++k) {
        store8(p - 2 + 2 * k * s, c[k]);
        store8(p - 2 + (2 * k + 1) * s, _mm_unpackhi_epi64(c[k], c[k]));
    }
    return kvtStsOk;
}

}  // namespace
}  // namespace kvt
