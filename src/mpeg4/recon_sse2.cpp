// SSE2 tier of H.263 / MPEG-4 prediction and reconstruction (kernels in recon_simd.h). The 16x16
// copy, the 8x8 horizontal half with rounding control 0, the 16x16 vertical half with rounding
// control 0 and the averages run as the assembly of common/blocks_asm_x86.h.
#include "common/blocks_asm_x86.h"
#include "mpeg4/recon_simd.h"

namespace kvt::sse2 {

namespace {

KvtStatus copy8_half_h(const uint8_t* src, int src_step, uint8_t* dst, int dst_step) {
    asm_x86::copy8x8_half_h(src, src_step, dst, dst_step);
    return kvtStsOk;
}
KvtStatus copy16(const uint8_t* src, int src_step, uint8_t* dst, int dst_step) {
    asm_x86::copy16_rows(src, src_step, dst, dst_step, 16);
    return kvtStsOk;
}
KvtStatus copy16_half_v(const uint8_t* src, int src_step, uint8_t* dst, int dst_step) {
    asm_x86::copy16x16_half_v(src, src_step, dst, dst_step);
    return kvtStsOk;
}
KvtStatus average8(const uint8_t* a, int a_step, const uint8_t* b, int b_step, uint8_t* dst, int dst_step) {
    asm_x86::average8x8(a, a_step, b, b_step, dst, dst_step);
    return kvtStsOk;
}
KvtStatus average16(const uint8_t* a, int a_step, const uint8_t* b, int b_step, uint8_t* dst, int dst_step) {
    asm_x86::average16x16(a, a_step, b, b_step, dst, dst_step);
    return kvtStsOk;
}

}  // namespace

void init_recon(ReconDsp& d) {
    fill_slots(d.predict16,
               [](auto i) { return &copy<16, recon_slot_of(i).phase, recon_slot_of(i).rounding>; });
    d.predict16[recon_index(0, 0)] = d.predict16[recon_index(0, 1)] = copy16;
    d.predict16[recon_index(2, 0)] = copy16_half_v;
    fill_slots(d.predict8,
               [](auto i) { return &copy<8, recon_slot_of(i).phase, recon_slot_of(i).rounding>; });
    d.predict8[recon_index(1, 0)] = copy8_half_h;
    fill_slots(d.recon8, [](auto i) { return &recon8<recon_slot_of(i).phase, recon_slot_of(i).rounding>; });
    d.recon16 = recon16;
    d.average16 = average16;
    d.average8 = average8;
}

}  // namespace kvt::sse2
