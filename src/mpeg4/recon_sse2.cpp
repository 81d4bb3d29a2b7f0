// SSE2 tier of H.263 / MPEG-4 prediction and reconstruction (kernels in recon_simd.h).
#include "mpeg4/recon_simd.h"

namespace kvt::sse2 {

void init_recon(ReconDsp& d) {
    fill_slots(d.predict16, [](auto i) { return &copy<16, decltype(i)::value / 2, decltype(i)::value % 2>; });
    fill_slots(d.predict8, [](auto i) { return &copy<8, decltype(i)::value / 2, decltype(i)::value % 2>; });
    fill_slots(d.recon8, [](auto i) { return &recon8<decltype(i)::value / 2, decltype(i)::value % 2>; });
    d.recon16 = recon16;
    d.average16 = average<16>;
    d.average8 = average<8>;
}

}  // namespace kvt::sse2
