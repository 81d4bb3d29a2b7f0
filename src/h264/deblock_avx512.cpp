// AVX-512 deblocking of luma: the AVX2 kernels built with AVX-512VL, whose 32 vector registers
// hold the state of four consecutive edges without spilling (about a quarter faster). Chroma
// gains nothing and keeps the AVX2 kernels (deblock_x86.h).
#include "h264/deblock_x86.h"

namespace kvt::avx512 {

void init_deblock(DeblockDsp& d) {
    d.luma_ver = luma_ver;
    d.luma_hor = luma_hor;
}

}  // namespace kvt::avx512
