// SSE2 kernels of the vector helpers.
#include "common/kernel.h"
#include "common/simd.h"
#include "core/copy_short_x86.h"
#include "core/vector_dsp.h"

namespace kvt::sse2 {

using namespace simd;

namespace {

// Fills n >= 16 bytes with a 16-byte pattern whose byte i belongs at dst + i (mod 16 for even
// shifts, which is all the 8- and 16-bit fills need: 16-bit elements are 2-byte aligned).
// Unaligned head and tail stores overlap the aligned body; rewriting a byte with its own value
// is harmless. `stream` selects cache-bypassing stores for the body.
template <bool stream>
void fill_body(uint8_t* dst, size_t n, __m128i pattern) {
    uint8_t* const end = dst + n;
    store(dst, pattern);
    uint8_t* p = reinterpret_cast<uint8_t*>((reinterpret_cast<uintptr_t>(dst) + 16) & ~uintptr_t(15));
    const auto put = [&](uint8_t* q) {
        if constexpr (stream)
            _mm_stream_si128(reinterpret_cast<__m128i*>(q), pattern);
        else
            store_aligned(q, pattern);
    };
    for (; p + 64 <= end; p += 64) {
        put(p);
        put(p + 16);
        put(p + 32);
        put(p + 48);
    }
    for (; p + 16 <= end; p += 16) put(p);
    if constexpr (stream) _mm_sfence();
    store(end - 16, pattern);
}

// Up to 64 bytes with at most four overlapping stores; no call, no loop.
void fill_short(uint8_t* dst, size_t n, __m128i pattern) {
    if (n >= 16) {
        store(dst, pattern);
        store(dst + n - 16, pattern);
        if (n > 32) {
            store(dst + 16, pattern);
            store(dst + n - 32, pattern);
        }
        return;
    }
    alignas(16) uint8_t bytes[16];
    store_aligned(bytes, pattern);
    for (size_t i = 0; i < n; ++i) dst[i] = bytes[i];
}

// Mid-sized byte fills go to the C library (the AVX2 tier takes them where it runs), whose memset the loader
// resolves to the widest stores this processor has. The byte goes to memset as is: a round trip through a
// vector register would sit on its critical path.
void fill_bytes(uint8_t* dst, size_t n, uint8_t val, bool stream) {
    if (n <= 64)
        fill_short(dst, n, _mm_set1_epi8(char(val)));
    else if (stream)
        fill_body<true>(dst, n, _mm_set1_epi8(char(val)));
    else
        std::memset(dst, val, n);
}

// 16-bit patterns have no C library equivalent.
void fill_words(uint8_t* dst, size_t n, __m128i pattern) {
    if (n <= 64)
        fill_short(dst, n, pattern);
    else
        fill_body<false>(dst, n, pattern);
}

// Large copies: aligned cache-bypassing stores for the body, unaligned head and tail.
void copy_stream(const uint8_t* src, uint8_t* dst, size_t n) {
    uint8_t* const end = dst + n;
    const __m128i head = load(src);
    const __m128i tail = load(src + n - 16);
    const size_t skip = 16 - (reinterpret_cast<uintptr_t>(dst) & 15);
    const uint8_t* s = src + skip;
    uint8_t* p = dst + skip;
    const auto put = [](uint8_t* q, __m128i v) { _mm_stream_si128(reinterpret_cast<__m128i*>(q), v); };
    for (; p + 64 <= end; p += 64, s += 64) {
        const __m128i a = load(s), b = load(s + 16), c = load(s + 32), d = load(s + 48);
        put(p, a);
        put(p + 16, b);
        put(p + 32, c);
        put(p + 48, d);
    }
    for (; p + 16 <= end; p += 16, s += 16) put(p, load(s));
    _mm_sfence();
    store(dst, head);
    store(end - 16, tail);
}

// Every byte fill; `stream` when the whole job is large enough to bypass the cache.
KvtStatus set_bytes(uint8_t* dst, size_t n, uint8_t val, bool stream) {
    fill_bytes(dst, n, val, stream);
    return kvtStsOk;
}

}  // namespace

KvtStatus set_8u(uint8_t val, uint8_t* dst, int len) {
    return set_bytes(dst, size_t(len), val, len > kStreamSetBytes);
}

KvtStatus set_16s(int16_t val, int16_t* dst, int len) {
    const size_t n = size_t(len) * 2;
    fill_words(reinterpret_cast<uint8_t*>(dst), n, _mm_set1_epi16(val));
    return kvtStsOk;
}

KvtStatus zero_16s(int16_t* dst, int len) {
    const size_t n = size_t(len) * 2;
    return set_bytes(reinterpret_cast<uint8_t*>(dst), n, 0, int64_t(n) > kStreamZeroBytes);
}

KvtStatus copy_8u(const uint8_t* src, uint8_t* dst, int len) {
    const size_t n = size_t(len);
    if (n <= 64) {
        copy_short(src, dst, n);
    } else if (len > kStreamCopyBytes) {
        copy_stream(src, dst, n);
    } else {
        std::memcpy(dst, src, n);  // as for fills: the C library's copy uses the widest stores
    }
    return kvtStsOk;
}

// Contiguous rows are one fill; rows of a block (64 bytes or less) share one pattern register.
KvtStatus set_8u_c1r(uint8_t val, uint8_t* dst, int step, int width, int height) {
    const size_t w = size_t(width);
    const bool stream = int64_t(width) * height > kStreamSetBytes;
    if (step == width) return set_bytes(dst, w * size_t(height), val, stream);
    if (w <= 64) {
        const __m128i pattern = _mm_set1_epi8(char(val));
        for (int y = 0; y < height; ++y, dst += step) fill_short(dst, w, pattern);
        return kvtStsOk;
    }
    for (int y = 0; y < height; ++y, dst += step) set_bytes(dst, w, val, stream);
    return kvtStsOk;
}

namespace {

// x * v / 2^s for eight elements; the regime is fixed for a whole call (see the reference).
enum class MulRegime { Saturate, RoundShift, ShiftLeft, SignOnly };

template <MulRegime regime>
__m128i mulc8(__m128i x, __m128i v, int s) {
    if constexpr (regime == MulRegime::SignOnly) {
        const __m128i zero = _mm_cmpeq_epi16(x, _mm_setzero_si128());
        const __m128i differ = _mm_srai_epi16(_mm_xor_si128(x, v), 15);  // -1 where signs differ
        return _mm_andnot_si128(zero, _mm_xor_si128(differ, _mm_set1_epi16(0x7FFF)));
    } else {
        const __m128i lo = _mm_mullo_epi16(x, v), hi = _mm_mulhi_epi16(x, v);
        __m128i p0 = _mm_unpacklo_epi16(lo, hi), p1 = _mm_unpackhi_epi16(lo, hi);
        if constexpr (regime == MulRegime::RoundShift) {
            const __m128i count = _mm_cvtsi32_si128(s);
            const __m128i half = _mm_set1_epi32((1 << (s - 1)) - 1), one = _mm_set1_epi32(1);
            const auto round = [&](__m128i p) {
                const __m128i odd = _mm_and_si128(_mm_sra_epi32(p, count), one);
                return _mm_sra_epi32(_mm_add_epi32(_mm_add_epi32(p, half), odd), count);
            };
            p0 = round(p0);
            p1 = round(p1);
        } else if constexpr (regime == MulRegime::ShiftLeft) {
            const __m128i t = _mm_packs_epi32(p0, p1), count = _mm_cvtsi32_si128(-s);
            p0 = _mm_sll_epi32(_mm_srai_epi32(_mm_unpacklo_epi16(t, t), 16), count);
            p1 = _mm_sll_epi32(_mm_srai_epi32(_mm_unpackhi_epi16(t, t), 16), count);
        }
        return _mm_packs_epi32(p0, p1);
    }
}

template <MulRegime regime>
void mulc_loop(int16_t val, int16_t* srcdst, int len, int s) {
    const __m128i v = _mm_set1_epi16(val);
    int i = 0;
    for (; i + 8 <= len; i += 8) store(srcdst + i, mulc8<regime>(load(srcdst + i), v, s));
    if (i < len) {
        alignas(16) int16_t tail[8] = {};
        for (int k = i; k < len; ++k) tail[k - i] = srcdst[k];
        store_aligned(tail, mulc8<regime>(load_aligned(tail), v, s));
        for (int k = i; k < len; ++k) srcdst[k] = tail[k - i];
    }
}

// Clipping is idempotent, so the last group may overlap the previous one.
template <bool upper>
void threshold(int16_t* srcdst, int len, int16_t level) {
    const __m128i lv = _mm_set1_epi16(level);
    const auto clip = [&](int16_t* p) {
        const __m128i x = load(p);
        store(p, upper ? _mm_min_epi16(x, lv) : _mm_max_epi16(x, lv));
    };
    if (len < 8) {
        for (int i = 0; i < len; ++i)
            if (upper ? srcdst[i] > level : srcdst[i] < level) srcdst[i] = level;
        return;
    }
    for (int i = 0; i + 8 <= len; i += 8) clip(srcdst + i);
    if (len & 7) clip(srcdst + len - 8);
}

KvtStatus mulc_16s_sfs(int16_t val, int16_t* srcdst, int len, int scale) {
    if (val == 0 || scale > 30) {
        zero_16s(srcdst, len);
    } else if (scale == 0) {
        if (val != 1) mulc_loop<MulRegime::Saturate>(val, srcdst, len, scale);
    } else if (scale > 0) {
        mulc_loop<MulRegime::RoundShift>(val, srcdst, len, scale);
    } else if (scale >= -15) {
        mulc_loop<MulRegime::ShiftLeft>(val, srcdst, len, scale);
    } else {
        mulc_loop<MulRegime::SignOnly>(val, srcdst, len, scale);
    }
    return kvtStsOk;
}

KvtStatus threshold_lt_16s(int16_t* srcdst, int len, int16_t level) {
    threshold<false>(srcdst, len, level);
    return kvtStsOk;
}

KvtStatus threshold_gt_16s(int16_t* srcdst, int len, int16_t level) {
    threshold<true>(srcdst, len, level);
    return kvtStsOk;
}

KvtStatus count_zeros_8x8(const int16_t* src, uint32_t* out) {
    const __m128i zero = _mm_setzero_si128();
    __m128i count = zero;  // each 16-bit lane counts down by one per zero
    for (int i = 0; i < 64; i += 8) count = _mm_add_epi16(count, _mm_cmpeq_epi16(load(src + i), zero));
    *out = uint32_t(-hsum_epi32(_mm_madd_epi16(count, _mm_set1_epi16(1))));
    return kvtStsOk;
}

}  // namespace

void init_vector(VectorDsp& d) {
    d.set_8u = set_8u;
    d.set_16s = set_16s;
    d.zero_16s = zero_16s;
    d.copy_8u = copy_8u;
    d.mulc_16s_sfs = mulc_16s_sfs;
    d.threshold_lt_16s = threshold_lt_16s;
    d.threshold_gt_16s = threshold_gt_16s;
    d.set_8u_c1r = set_8u_c1r;
    d.count_zeros_8x8 = count_zeros_8x8;
}

}  // namespace kvt::sse2
