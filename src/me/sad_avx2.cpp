// AVX2 SAD kernels: the 128-bit kernels of sad_simd.h, VEX-encoded, so that unaligned rows of the
// current block fold into VPSADBW and no register copies are needed.
//
// Two rows per 256-bit register (VINSERTI128) measured slower than these on Zen 4: a 16x16 block
// needs one load per row either way, and the inserts come on top. This tier keeps only the slots
// where it beats SSE2 by 10% or more in kvtvc-bench, and the aligned vertical half (5%), which
// that takes below FFmpeg's time; the others stay with SSE2.
#include "common/kernel.h"
#include "me/sad_dsp.h"
#include "me/sad_simd.h"

namespace kvt::avx2 {

using namespace simd;

void init_sad(SadDsp& d) {
    d.sad16[1] = sad_16x16<kMcVertHalf, false>;
    d.sad16_a16[1] = sad_16x16<kMcVertHalf, true>;
    d.sad16[2] = sad_16x16<kMcHorHalf, false>;
    d.sad16_a16[2] = sad_16x16<kMcHorHalf, true>;
    d.sad8[0] = sad_8x8<kMcFull>;
    d.sad8[1] = sad_8x8<kMcVertHalf>;
}

}  // namespace kvt::avx2
