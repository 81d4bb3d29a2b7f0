// The H.264 interpolation kernels for x86 (the six luma position families and the chroma blend),
// written once over a row type and compiled by each tier file with its own target flags
// (interp_sse2.cpp, interp_ssse3.cpp, interp_avx2.cpp): the instruction set of the file picks the
// primitives (SSSE3: byte multiply-add for the six-tap filter and the rounding multiply; AVX2: a
// 16-sample row in one register). Everything here has internal linkage, so no tier's code can
// stand in for another's at link time.
//
// A row of W samples is held as 16-bit lanes (Row<W>); blocks are produced two rows at a time
// (Pair<W>, the packed bytes of both rows). Reads stay inside the area the interface allows: two
// samples before the block and three after it, in each direction.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "common/blocks_asm_x86.h"
#include "h264/interp_dsp.h"
#include "h264/rows_x86.h"

namespace kvt {
namespace {

// ---- 16-bit lanes --------------------------------------------------------------------------------

inline __m128i add(__m128i a, __m128i b) { return _mm_add_epi16(a, b); }
inline __m128i sub(__m128i a, __m128i b) { return _mm_sub_epi16(a, b); }
inline __m128i adds(__m128i a, __m128i b) { return _mm_adds_epi16(a, b); }
inline __m128i mul5(__m128i a) { return _mm_mullo_epi16(a, _mm_set1_epi16(5)); }
template <int n>
inline __m128i sra(__m128i a) {
    return _mm_srai_epi16(a, n);
}
template <int n>
inline __m128i sll(__m128i a) {
    return _mm_slli_epi16(a, n);
}
// (a + 2^(n-1)) >> n for n = 5 or 6, the rounding of the six-tap results.
template <int n>
inline __m128i round_shift(__m128i a) {
#if defined(__SSSE3__)
    return _mm_mulhrs_epi16(a, _mm_set1_epi16(1 << (15 - n)));
#else
    return _mm_srai_epi16(_mm_add_epi16(a, _mm_set1_epi16(1 << (n - 1))), n);
#endif
}

#if defined(__AVX2__)
inline __m256i add(__m256i a, __m256i b) { return _mm256_add_epi16(a, b); }
inline __m256i sub(__m256i a, __m256i b) { return _mm256_sub_epi16(a, b); }
inline __m256i adds(__m256i a, __m256i b) { return _mm256_adds_epi16(a, b); }
inline __m256i mul5(__m256i a) { return _mm256_mullo_epi16(a, _mm256_set1_epi16(5)); }
template <int n>
inline __m256i sra(__m256i a) {
    return _mm256_srai_epi16(a, n);
}
template <int n>
inline __m256i sll(__m256i a) {
    return _mm256_slli_epi16(a, n);
}
template <int n>
inline __m256i round_shift(__m256i a) {
    return _mm256_mulhrs_epi16(a, _mm256_set1_epi16(1 << (15 - n)));
}
#endif

// ---- Rows ---------------------------------------------------------------------------------------

// The registers of one row: 4 or 8 samples in one 128-bit register, 16 in two, or in one 256-bit
// register where the file has AVX2.
template <int W>
struct RowRegs {
    using T = __m128i;
    static constexpr int n = W == 16 ? 2 : 1;
};
#if defined(__AVX2__)
template <>
struct RowRegs<16> {
    using T = __m256i;
    static constexpr int n = 1;
};
#endif

template <int W>
struct Row {
    typename RowRegs<W>::T v[RowRegs<W>::n];
};

template <int W, class F>
inline Row<W> each(const Row<W>& a, const Row<W>& b, F f) {
    Row<W> r;
    for (int i = 0; i < RowRegs<W>::n; ++i) r.v[i] = f(a.v[i], b.v[i]);
    return r;
}
template <int W, class F>
inline Row<W> each(const Row<W>& a, F f) {
    Row<W> r;
    for (int i = 0; i < RowRegs<W>::n; ++i) r.v[i] = f(a.v[i]);
    return r;
}
template <int W>
inline Row<W> operator+(const Row<W>& a, const Row<W>& b) {
    return each(a, b, [](auto x, auto y) { return add(x, y); });
}
template <int W>
inline Row<W> operator-(const Row<W>& a, const Row<W>& b) {
    return each(a, b, [](auto x, auto y) { return sub(x, y); });
}
template <int n, int W>
inline Row<W> rounded(const Row<W>& a) {
    return each(a, [](auto x) { return round_shift<n>(x); });
}

// The six-tap sum a - 5b + 20c + 20d - 5e + f of six rows of samples (-2550..10710).
template <int W>
inline Row<W> six_tap(const Row<W>& a, const Row<W>& b, const Row<W>& c, const Row<W>& d, const Row<W>& e,
                      const Row<W>& f) {
    const Row<W> cd = c + d, be = b + e;
    return (a + f) + each(cd, be, [](auto x, auto y) { return mul5(sub(sll<2>(x), y)); });
}

// j from six rows of unrounded six-tap sums (each -2550..10710): (sum + 512) >> 10 in 16 bits.
// The three quarterings are exact as nested floor divisions; the one sum that can leave 16 bits
// saturates, and then the true result is below 0 or above 255 as well, so the clamp hides it.
template <int W>
inline Row<W> centre(const Row<W>& a, const Row<W>& b, const Row<W>& c, const Row<W>& d, const Row<W>& e,
                     const Row<W>& f) {
    const Row<W> A = a + f, B = b + e, C = c + d;
    Row<W> t = each(A, B, [](auto x, auto y) { return sub(sra<2>(sub(x, y)), y); });
    t = each(t, C, [](auto x, auto y) { return add(sra<2>(adds(x, y)), y); });
    return rounded<6>(t);
}

// ---- Memory -------------------------------------------------------------------------------------

// W samples widened to 16 bits.
template <int W>
inline Row<W> load_row(const uint8_t* p) {
    const __m128i z = _mm_setzero_si128();
    if constexpr (W == 4) return {{_mm_unpacklo_epi8(load4(p), z)}};
    if constexpr (W == 8) return {{_mm_unpacklo_epi8(load8(p), z)}};
#if defined(__AVX2__)
    if constexpr (W == 16) return {{_mm256_cvtepu8_epi16(load16(p))}};
#else
    if constexpr (W == 16) {
        const __m128i v = load16(p);
        return {{_mm_unpacklo_epi8(v, z), _mm_unpackhi_epi8(v, z)}};
    }
#endif
}

// 16-bit rows in memory (the centre-row family's intermediate sums).
template <int W>
inline Row<W> load_row16(const int16_t* p) {
    if constexpr (W == 4) return {{load8(p)}};
    if constexpr (W == 8) return {{load16(p)}};
#if defined(__AVX2__)
    if constexpr (W == 16) return {{_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))}};
#else
    if constexpr (W == 16) return {{load16(p), load16(p + 8)}};
#endif
}
template <int W>
inline void store_row16(int16_t* p, const Row<W>& r) {
    if constexpr (W == 4) store8(p, r.v[0]);
    if constexpr (W == 8) store16(p, r.v[0]);
#if defined(__AVX2__)
    if constexpr (W == 16) _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), r.v[0]);
#else
    if constexpr (W == 16) store16(p, r.v[0]), store16(p + 8, r.v[1]);
#endif
}

// Two rows of 16-bit values in 0..255 packed (with saturation, the final clamp) to bytes.
template <int W>
inline Pair<W> pack(const Row<W>& a, const Row<W>& b) {
#if defined(__AVX2__)
    if constexpr (W == 16) return {{_mm256_permute4x64_epi64(_mm256_packus_epi16(a.v[0], b.v[0]), 0xD8)}};
#else
    if constexpr (W == 16) return {{_mm_packus_epi16(a.v[0], a.v[1]), _mm_packus_epi16(b.v[0], b.v[1])}};
#endif
    if constexpr (W < 16) return {{_mm_packus_epi16(a.v[0], b.v[0])}};
}

// ---- The horizontal six-tap sums of one row -------------------------------------------------------

#if defined(__SSSE3__)
struct alignas(32) ByteTable {
    int8_t b[32];
};

// Shuffles gathering the byte pairs (p[x-2], p[x-1]) (set 0), (p[x], p[x+1]) (set 1) or
// (p[x+2], p[x+3]) (set 2) of outputs x = 0..7 (low 16 bytes) and 8..15 (high 16 bytes) from
// registers whose byte k + base holds p[k]; with `split`, p[k] for k > 5 sits at byte k + split
// instead (8 bytes loaded at p - 2, 8 more at p + 3).
constexpr ByteTable pair_table(int set, int base_lo, int base_hi, int split) {
    ByteTable t{};
    for (int i = 0; i < 32; ++i) {
        const int lane = i / 16, x = i % 16 / 2 + 8 * lane, k = x - 2 + 2 * set + i % 2;
        t.b[i] = int8_t(split && k > 5 ? k + split : k + (lane ? base_hi : base_lo));
    }
    return t;
}
template <int set>
constexpr ByteTable kPairs16 = pair_table(set, 2, -3, 0);  // loads at p - 2 and p + 3
template <int set>
constexpr ByteTable kPairsSplit = pair_table(set, 2, 2, 5);

inline __m128i table(const ByteTable& t, int lane) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(t.b + 16 * lane));
}

// The taps (1, -5), (20, 20), (-5, 1) of the three pair sets, as signed byte pairs.
inline __m128i taps(int set) {
    return _mm_set1_epi16(int16_t(set == 0 ? 0xFB01 : set == 1 ? 0x1414 : 0x01FB));
}

// The six-tap sums of outputs 0..7 (lane 0) or 8..15 (lane 1) from s, through `tables`.
template <const ByteTable&... tables>
inline __m128i madd_taps(__m128i s, int lane) {
    int set = 0;
    __m128i sum = _mm_setzero_si128();
    ((sum = _mm_add_epi16(sum, _mm_maddubs_epi16(_mm_shuffle_epi8(s, table(tables, lane)), taps(set++)))),
     ...);
    return sum;
}
#endif

template <int W>
inline Row<W> hsum(const uint8_t* p) {
#if defined(__SSSE3__)
    if constexpr (W < 16) {
        // p[-2..W+2] without reading further: p[-2..5] and p[3..W+2].
        const __m128i s = _mm_unpacklo_epi64(load8(p - 2), W == 8 ? load8(p + 3) : load4(p + 3));
        return {{madd_taps<kPairsSplit<0>, kPairsSplit<1>, kPairsSplit<2>>(s, 0)}};
    } else {
#if defined(__AVX2__)
        // Outputs 0..7 from p[-2..13] in the low half, 8..15 from p[3..18] in the high half.
        const __m256i s = _mm256_inserti128_si256(_mm256_castsi128_si256(load16(p - 2)), load16(p + 3), 1);
        __m256i sum = _mm256_setzero_si256();
        const ByteTable* tables[3] = {&kPairs16<0>, &kPairs16<1>, &kPairs16<2>};
        for (int set = 0; set < 3; ++set) {
            const __m256i k = _mm256_load_si256(reinterpret_cast<const __m256i*>(tables[set]->b));
            sum = _mm256_add_epi16(
                sum, _mm256_maddubs_epi16(_mm256_shuffle_epi8(s, k), _mm256_broadcastsi128_si256(taps(set))));
        }
        return {{sum}};
#else
        return {{madd_taps<kPairs16<0>, kPairs16<1>, kPairs16<2>>(load16(p - 2), 0),
                 madd_taps<kPairs16<0>, kPairs16<1>, kPairs16<2>>(load16(p + 3), 1)}};
#endif
    }
#else
    return six_tap(load_row<W>(p - 2), load_row<W>(p - 1), load_row<W>(p), load_row<W>(p + 1),
                   load_row<W>(p + 2), load_row<W>(p + 3));
#endif
}

// ---- The six kernel families ------------------------------------------------------------------------

// Runs make(y) -> Pair<W> for rows y = 0, 2, ... and stores each pair.
template <int W, class Make>
inline KvtStatus by_pairs(uint8_t* dst, intptr_t ds, int height, Make make) {
    for (int y = 0; y < height; y += 2, dst += 2 * ds) store_pair<W>(dst, ds, make(y));
    return kvtStsOk;
}

// Six-row windows of a column of rows, moved two rows at a time: r0..r6 are rows y - 2 .. y + 4
// (named members, not an array, so that the compiler keeps them in registers).
template <int W, class Load>
struct Window {
    Load load;  // load(row) -> Row<W>
    Row<W> r0, r1, r2, r3, r4, r5, r6;
    explicit Window(Load l) : load(l), r0(l(-2)), r1(l(-1)), r2(l(0)), r3(l(1)), r4(l(2)) {}
    // Rows y + 3 and y + 4 come in; then r0..r5 serve row y, r1..r6 row y + 1.
    void fill(int y) { r5 = load(y + 3), r6 = load(y + 4); }
    void advance() { r0 = r2, r1 = r3, r2 = r4, r3 = r5, r4 = r6; }
    template <class F>
    Row<W> upper(F f) const {
        return f(r0, r1, r2, r3, r4, r5);
    }
    template <class F>
    Row<W> lower(F f) const {
        return f(r1, r2, r3, r4, r5, r6);
    }
    // Row y (k = 0) or y + 1 (k = 1), and the one after it.
    const Row<W>& row(int k) const { return k ? r3 : r2; }
    const Row<W>& next(int k) const { return k ? r4 : r3; }
};
template <int W, class Load>
Window<W, Load> window(Load l) {
    return Window<W, Load>(l);
}

// Whole rows, a kernel per height: 16-byte rows by the assembly loop of blocks_asm_x86.h
// (measured faster than the compiler's loads-first copy), narrower rows unrolled through general
// registers.
template <int W, int H>
KvtStatus copy(const uint8_t* src, int32_t ss, uint8_t* dst, int32_t ds, int) {
    if constexpr (W == 16)
        asm_x86::copy16_rows(src, ss, dst, ds, H);
    else
        for (int y = 0; y < H; ++y) std::memcpy(dst + intptr_t(y) * ds, src + intptr_t(y) * ss, W);
    return kvtStsOk;
}

// b, and b averaged with the integer sample on its left (dx 1) or right (dx 3).
template <int W, int dx>
KvtStatus horizontal(const uint8_t* src, int32_t ss, uint8_t* dst, int32_t ds, int height) {
    return by_pairs<W>(dst, ds, height, [&](int y) {
        const uint8_t* p = src + intptr_t(y) * ss;
        const Pair<W> b = pack(rounded<5>(hsum<W>(p)), rounded<5>(hsum<W>(p + ss)));
        return dx == 2 ? b : avg(b, load_pair<W>(p + dx / 2, ss));
    });
}

// h, and h averaged with the integer sample above (dy 1) or below (dy 3) it.
template <int W, int dy>
KvtStatus vertical(const uint8_t* src, int32_t ss, uint8_t* dst, int32_t ds, int height) {
    auto rows = window<W>([=](int y) { return load_row<W>(src + intptr_t(y) * ss); });
    return by_pairs<W>(dst, ds, height, [&](int y) {
        rows.fill(y);
        const Pair<W> h = pack(rounded<5>(rows.upper(six_tap<W>)), rounded<5>(rows.lower(six_tap<W>)));
        const Pair<W> g = pack(rows.row(dy / 2), rows.next(dy / 2));
        rows.advance();
        return dy == 2 ? h : avg(h, g);
    });
}

// The odd-odd positions: b of this row or the next averaged with h of this column or the next.
template <int W, int dx, int dy>
KvtStatus diagonal(const uint8_t* src, int32_t ss, uint8_t* dst, int32_t ds, int height) {
    auto rows = window<W>([=](int y) { return load_row<W>(src + dx / 2 + intptr_t(y) * ss); });
    return by_pairs<W>(dst, ds, height, [&](int y) {
        const uint8_t* p = src + intptr_t(y + dy / 2) * ss;
        rows.fill(y);
        const Pair<W> h = pack(rounded<5>(rows.upper(six_tap<W>)), rounded<5>(rows.lower(six_tap<W>)));
        rows.advance();
        return avg(pack(rounded<5>(hsum<W>(p)), rounded<5>(hsum<W>(p + ss))), h);
    });
}

// The centre column: j from the horizontal sums of six rows, and j averaged with b of this row
// (dy 1) or the next (dy 3).
template <int W, int dy>
KvtStatus centre_column(const uint8_t* src, int32_t ss, uint8_t* dst, int32_t ds, int height) {
    auto sums = window<W>([=](int y) { return hsum<W>(src + intptr_t(y) * ss); });
    return by_pairs<W>(dst, ds, height, [&](int y) {
        sums.fill(y);
        const Pair<W> j = pack(sums.upper(centre<W>), sums.lower(centre<W>));
        const Pair<W> b = pack(rounded<5>(sums.row(dy / 2)), rounded<5>(sums.next(dy / 2)));
        sums.advance();
        return dy == 2 ? j : avg(j, b);
    });
}

// The centre row beside j: j averaged with h of this column (dx 1) or the next (dx 3). The vertical
// sums of columns -2 .. W + 2 go to a buffer first, then j is filtered across it.
template <int W, int dx>
KvtStatus centre_row(const uint8_t* src, int32_t ss, uint8_t* dst, int32_t ds, int height) {
    constexpr int kLeft = W == 4 ? 8 : W;  // columns -2 .. kLeft - 3, then 3 .. W + 2
    alignas(32) int16_t sums[16][24];
    for (int y = 0; y < height; ++y) {
        const uint8_t* p = src + intptr_t(y) * ss;
        const auto column_sums = [&](auto width, const uint8_t* q) {
            constexpr int n = decltype(width)::value;
            return six_tap(load_row<n>(q - 2 * ss), load_row<n>(q - ss), load_row<n>(q), load_row<n>(q + ss),
                           load_row<n>(q + 2 * ss), load_row<n>(q + 3 * ss));
        };
        store_row16<kLeft>(sums[y], column_sums(std::integral_constant<int, kLeft>(), p - 2));
        store_row16<W>(sums[y] + 5, column_sums(std::integral_constant<int, W>(), p + 3));
    }
    const auto j_at = [&](int y) {
        const int16_t* s = sums[y];
        return centre(load_row16<W>(s), load_row16<W>(s + 1), load_row16<W>(s + 2), load_row16<W>(s + 3),
                      load_row16<W>(s + 4), load_row16<W>(s + 5));
    };
    const auto h_at = [&](int y) { return rounded<5>(load_row16<W>(sums[y] + 2 + dx / 2)); };
    return by_pairs<W>(dst, ds, height,
                       [&](int y) { return avg(pack(j_at(y), j_at(y + 1)), pack(h_at(y), h_at(y + 1))); });
}

// ---- Chroma ---------------------------------------------------------------------------------------

#if defined(__SSSE3__)
// Byte pairs of chroma weights for the sample pairs (p[x], p[x+1]) of the row above (ab) and the
// row below (cd), for the 64 positions dy * 8 + dx: loaded, not computed, per call.
struct alignas(16) ChromaWeights {
    int8_t ab[16], cd[16];
};
struct ChromaWeightTable {
    ChromaWeights w[64];
    constexpr ChromaWeightTable() : w() {
        for (int pos = 0; pos < 64; ++pos)
            for (int i = 0; i < 16; i += 2) {
                const int dx = pos % 8, dy = pos / 8;
                w[pos].ab[i] = int8_t((8 - dx) * (8 - dy)), w[pos].ab[i + 1] = int8_t(dx * (8 - dy));
                w[pos].cd[i] = int8_t((8 - dx) * dy), w[pos].cd[i + 1] = int8_t(dx * dy);
            }
    }
};
constexpr ChromaWeightTable kChromaWeights{};
#endif

// One source row's part in the bilinear blend, for W = 4 or 8 outputs (16-bit lanes): with the
// row below it (weights a, b) and with the row above it (c, d).
struct Bilinear {
    struct Terms {
        __m128i upper, lower;
    };
#if defined(__SSSE3__)
    __m128i ab, cd;
    Bilinear(int dx, int dy)
        : ab(_mm_load_si128(reinterpret_cast<const __m128i*>(kChromaWeights.w[dy * 8 + dx].ab))),
          cd(_mm_load_si128(reinterpret_cast<const __m128i*>(kChromaWeights.w[dy * 8 + dx].cd))) {}
    template <int W>
    Terms terms(const uint8_t* p) const {
        const __m128i pairs =
            W == 8 ? _mm_unpacklo_epi8(load8(p), load8(p + 1)) : _mm_unpacklo_epi8(load4(p), load4(p + 1));
        return {_mm_maddubs_epi16(pairs, ab), _mm_maddubs_epi16(pairs, cd)};
    }
#else
    __m128i a, b, c, d;
    Bilinear(int dx, int dy)
        : a(_mm_set1_epi16(int16_t((8 - dx) * (8 - dy)))),
          b(_mm_set1_epi16(int16_t(dx * (8 - dy)))),
          c(_mm_set1_epi16(int16_t((8 - dx) * dy))),
          d(_mm_set1_epi16(int16_t(dx * dy))) {}
    template <int W>
    Terms terms(const uint8_t* p) const {
        const __m128i s0 = load_row<W>(p).v[0], s1 = load_row<W>(p + 1).v[0];
        return {_mm_add_epi16(_mm_mullo_epi16(s0, a), _mm_mullo_epi16(s1, b)),
                _mm_add_epi16(_mm_mullo_epi16(s0, c), _mm_mullo_epi16(s1, d))};
    }
#endif
};

// Eighth-sample chroma of a 4- or 8-wide block: (upper + lower + 32) >> 6, each source row's
// terms computed once.
template <int W>
KvtStatus chroma(const uint8_t* src, int32_t ss, uint8_t* dst, int32_t ds, int dx, int dy, int height) {
    const Bilinear k(dx, dy);
    Bilinear::Terms above = k.terms<W>(src);
    return by_pairs<W>(dst, ds, height, [&](int y) {
        const uint8_t* p = src + intptr_t(y + 1) * ss;
        const Bilinear::Terms r1 = k.terms<W>(p), r2 = k.terms<W>(p + ss);
        const __m128i o0 = round_shift<6>(_mm_add_epi16(above.upper, r1.lower));
        const __m128i o1 = round_shift<6>(_mm_add_epi16(r1.upper, r2.lower));
        above = r2;
        return Pair<W>{{_mm_packus_epi16(o0, o1)}};
    });
}

// The six families, as a set: a tier fills those it speeds up by 10% or more.
enum LumaFamilies : unsigned {
    kCopy = 1,
    kVertical = 2,
    kHorizontal = 4,
    kDiagonal = 8,
    kCentreColumn = 16,
    kCentreRow = 32,
    kAllFamilies = 63
};

// The positions (dx * 4 + dy) of the chosen families for one width.
template <int W>
void fill_luma(LumaInterpFn (&slots)[16], LumaInterpFn (&copies)[3], unsigned families) {
    if (families & kCopy) copies[0] = copy<W, 4>, copies[1] = copy<W, 8>, copies[2] = copy<W, 16>;
    if (families & kVertical) slots[1] = vertical<W, 1>, slots[2] = vertical<W, 2>, slots[3] = vertical<W, 3>;
    if (families & kHorizontal)
        slots[4] = horizontal<W, 1>, slots[8] = horizontal<W, 2>, slots[12] = horizontal<W, 3>;
    if (families & kDiagonal) {
        slots[5] = diagonal<W, 1, 1>, slots[7] = diagonal<W, 1, 3>;
        slots[13] = diagonal<W, 3, 1>, slots[15] = diagonal<W, 3, 3>;
    }
    if (families & kCentreColumn)
        slots[9] = centre_column<W, 1>, slots[10] = centre_column<W, 2>, slots[11] = centre_column<W, 3>;
    if (families & kCentreRow) slots[6] = centre_row<W, 1>, slots[14] = centre_row<W, 3>;
}

}  // namespace
}  // namespace kvt
