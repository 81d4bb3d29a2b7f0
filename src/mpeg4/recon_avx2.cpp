// AVX2 tier of H.263 / MPEG-4 prediction and reconstruction: the kernels of recon_simd.h built
// with VEX encoding, installed only where that gains 10% or more (loads fold into the averages
// and the widening): the copies at both halves, the 16x16 copies at one half with rounding 1,
// the 16x16 reconstruction and the 8x8 reconstructions except at both halves and the vertical
// half with rounding 0.
#include "mpeg4/recon_simd.h"

namespace kvt::avx2 {

namespace {

template <int n>
constexpr bool vex_pays(int slot) {
    return slot / 2 == 3 || (n == 16 && (slot == recon_index(1, 1) || slot == recon_index(2, 1)));
}
constexpr bool vex_pays_recon(int slot) { return slot / 2 != 3 && slot != recon_index(2, 0); }

template <int n>
void fill_copies(PredictFn (&slots)[8]) {
    fill_slots(slots, [&slots](auto i) {
        constexpr ReconSlot s = recon_slot_of(i);
        if constexpr (vex_pays<n>(i))
            return PredictFn(&copy<n, s.phase, s.rounding>);
        else
            return slots[i];
    });
}

}  // namespace

void init_recon(ReconDsp& d) {
    fill_copies<16>(d.predict16);
    fill_copies<8>(d.predict8);
    fill_slots(d.recon8, [&d](auto i) {
        constexpr ReconSlot s = recon_slot_of(i);
        if constexpr (vex_pays_recon(i))
            return ReconFn(&recon8<s.phase, s.rounding>);
        else
            return d.recon8[i];
    });
    d.recon16 = recon16;
}

}  // namespace kvt::avx2
