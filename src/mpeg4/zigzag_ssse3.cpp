// SSSE3 inverse scans of all 64 coefficients: each raster row of eight is gathered with PSHUFB from
// the groups of eight scan positions it takes coefficients from (three to six of the eight). The
// shuffles are built from the scan tables at compile time, and so is the choice of groups.
#include <tmmintrin.h>

#include <array>
#include <utility>

#include "common/kernel.h"
#include "common/simd.h"
#include "mpeg4/coef_tables.h"
#include "mpeg4/zigzag_dsp.h"

namespace kvt::ssse3 {

namespace {

using namespace kvt::simd;

// The bytes raster row r takes from scan group g (0x80: none of them).
constexpr std::array<uint8_t, 16> shuffle(int s, int r, int g) {
    std::array<uint8_t, 16> m{};
    for (int lane = 0; lane < 8; ++lane) {
        const int q = kScanInverse[s][8 * r + lane];
        m[size_t(2 * lane)] = uint8_t(q / 8 == g ? 2 * (q % 8) : 0x80);
        m[size_t(2 * lane + 1)] = uint8_t(q / 8 == g ? 2 * (q % 8) + 1 : 0x80);
    }
    return m;
}

constexpr bool takes(int s, int r, int g) {
    for (int lane = 0; lane < 8; ++lane)
        if (kScanInverse[s][8 * r + lane] / 8 == g) return true;
    return false;
}

template <int S, int R, int G>
struct Shuffle {
    alignas(16) static constexpr std::array<uint8_t, 16> bytes = shuffle(S, R, G);
};

template <int S, int R, size_t... G>
__m128i gather_row(const __m128i* group, std::index_sequence<G...>) {
    __m128i row = _mm_setzero_si128();
    ((row = takes(S, R, int(G))
                ? _mm_or_si128(row,
                               _mm_shuffle_epi8(group[G], load_aligned(Shuffle<S, R, int(G)>::bytes.data())))
                : row),
     ...);
    return row;
}

template <int S, size_t... R>
void gather_rows(const __m128i* group, int16_t* dst, std::index_sequence<R...>) {
    (store(dst + 8 * R, gather_row<S, int(R)>(group, std::make_index_sequence<8>())), ...);
}

template <int S>
KvtStatus full(const int16_t* src, int16_t* dst) {
    __m128i group[8];
    for (int g = 0; g < 8; ++g) group[g] = load(src + 8 * g);
    gather_rows<S>(group, dst, std::make_index_sequence<8>());
    return kvtStsOk;
}

}  // namespace

void init_zigzag(ZigzagDsp& d) {
    fill_slots(d.full, [](auto s) { return full<decltype(s)::value>; });
}

}  // namespace kvt::ssse3
