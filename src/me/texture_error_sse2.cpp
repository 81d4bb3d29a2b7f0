// SSE2 kernel of the shape-coding texture error. Two source rows meet 16 contiguous prediction
// samples per step; PSADBW gives the magnitude sum exactly, since |s - p| is the residual's.
#include "common/kernel.h"
#include "common/simd.h"
#include "me/me_dsp.h"

namespace kvt::sse2 {

using namespace simd;

namespace {

KvtStatus texture_error(const uint8_t* src, int src_step, const uint8_t* pred, int16_t* diff, int32_t* sad) {
    const __m128i zero = _mm_setzero_si128();
    __m128i acc = zero;
    for (int y = 0; y < 8; y += 2) {
        const __m128i s = _mm_unpacklo_epi64(load8(src), load8(src + src_step));
        const __m128i p = load(pred + y * 8);
        store(diff + y * 8, _mm_sub_epi16(_mm_unpacklo_epi8(s, zero), _mm_unpacklo_epi8(p, zero)));
        store(diff + y * 8 + 8, _mm_sub_epi16(_mm_unpackhi_epi8(s, zero), _mm_unpackhi_epi8(p, zero)));
        acc = _mm_add_epi64(acc, _mm_sad_epu8(s, p));
        src += 2 * static_cast<intptr_t>(src_step);
    }
    if (sad) *sad = hsum_sad(acc);
    return kvtStsOk;
}

}  // namespace

void init_texture_error(MeDsp& d) { d.texture_error = texture_error; }

}  // namespace kvt::sse2
