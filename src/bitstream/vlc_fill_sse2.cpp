// SSE2 word fill of the VLC builder: the empty-marker fill of a whole table (up to 1 MiB) and
// the replication of short codes' leaves.
#include "bitstream/vlc_dsp.h"
#include "common/kernel.h"
#include "common/simd.h"

namespace kvt::sse2 {

using namespace simd;

namespace {

KvtStatus fill_32s(uint32_t v, int32_t* dst, int n) {
    int32_t* const end = dst + n;
    // Words up to the first 16-byte boundary (dst is 4-byte aligned), then aligned stores.
    while (dst < end && !is_aligned16(dst)) *dst++ = int32_t(v);
    const __m128i pattern = _mm_set1_epi32(int32_t(v));
    for (; end - dst >= 16; dst += 16) {
        store_aligned(dst, pattern);
        store_aligned(dst + 4, pattern);
        store_aligned(dst + 8, pattern);
        store_aligned(dst + 12, pattern);
    }
    for (; end - dst >= 4; dst += 4) store_aligned(dst, pattern);
    while (dst < end) *dst++ = int32_t(v);
    return kvtStsOk;
}

}  // namespace

void init_vlc(VlcDsp& d) { d.fill_32s = fill_32s; }

}  // namespace kvt::sse2
