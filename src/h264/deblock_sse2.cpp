// SSE2 deblocking: sixteen lines in two registers of 16-bit lanes (deblock_x86.h).
#include "h264/deblock_x86.h"

namespace kvt::sse2 {

void init_deblock(DeblockDsp& d) {
    d.luma_ver = luma_ver;
    d.luma_hor = luma_hor;
    d.chroma_ver = chroma_ver;
    d.chroma_hor = chroma_hor;
}

}  // namespace kvt::sse2
