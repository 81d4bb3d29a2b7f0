// SSE2 edge detector: one row of 15 positions per step, counted with PSADBW.
#include "common/kernel.h"
#include "me/edges_count.h"
#include "me/halfpel_sse2.h"
#include "me/me_dsp.h"

namespace kvt::sse2 {

using namespace simd;

namespace {

// The right neighbour comes from a byte shift of the row itself, so nothing past column 15 is
// read; the shifted-in zero lands on column 15, which the mask drops.
KvtStatus edges16(const uint8_t* src, int step, uint8_t diff_threshold, uint8_t count_threshold,
                  uint8_t* flag) {
    const __m128i t = _mm_set1_epi8(char(diff_threshold)), clamp = _mm_set1_epi8(127);
    const __m128i one_in_columns_0_14 = _mm_srli_si128(_mm_set1_epi8(1), 1);
    __m128i row = load(src);
    uint8_t k = 0;
    for (int r = 0; r < 15; ++r) {
        src += step;
        const __m128i below = load(src);
        const __m128i h = _mm_min_epu8(absdiff_u8(row, _mm_srli_si128(row, 1)), clamp);
        const __m128i v = _mm_min_epu8(absdiff_u8(row, below), clamp);
        const __m128i flagged = _mm_or_si128(_mm_cmpgt_epi8(h, t), _mm_cmpgt_epi8(v, t));
        k = uint8_t(k +
                    hsum_sad(_mm_sad_epu8(_mm_and_si128(flagged, one_in_columns_0_14), _mm_setzero_si128())));
        if (edge_count_passes(k, count_threshold)) {
            *flag = 1;
            return kvtStsOk;
        }
        row = below;
    }
    *flag = 0;
    return kvtStsOk;
}

}  // namespace

void init_edges(MeDsp& d) { d.edges16 = edges16; }

}  // namespace kvt::sse2
