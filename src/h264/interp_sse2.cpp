// SSE2 interpolation: the six-tap filters and the chroma blend in 16-bit lanes (interp_x86.h);
// the 16-wide copies run as the assembly of common/blocks_asm_x86.h.
#include "common/blocks_asm_x86.h"
#include "h264/interp_x86.h"

namespace kvt::sse2 {

namespace {
template <int rows>
KvtStatus copy16(const uint8_t* src, int32_t src_step, uint8_t* dst, int32_t dst_step, int) {
    asm_x86::copy16_rows(src, src_step, dst, dst_step, rows);
    return kvtStsOk;
}
}  // namespace

void init_interp(InterpDsp& d) {
    fill_luma<4>(d.luma[0], d.copy[0], kAllFamilies);
    fill_luma<8>(d.luma[1], d.copy[1], kAllFamilies);
    fill_luma<16>(d.luma[2], d.copy[2], kAllFamilies);
    d.copy[2][1] = copy16<8>, d.copy[2][2] = copy16<16>;
    d.chroma[1] = chroma<4>;
    d.chroma[2] = chroma<8>;
}

}  // namespace kvt::sse2
