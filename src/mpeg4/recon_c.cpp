// Portable H.263 / MPEG-4 prediction and reconstruction kernels, written plainly from the
// formulas in recon_dsp.h.
#include "common/kernel.h"
#include "mpeg4/recon_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

inline uint8_t clip8(int v) { return uint8_t(v < 0 ? 0 : (v > 255 ? 255 : v)); }

template <int phase, int r>
inline int predict(const uint8_t* p, intptr_t step) {
    if constexpr (phase == 0)
        return p[0];
    else if constexpr (phase == 1)
        return (p[0] + p[1] + 1 - r) >> 1;
    else if constexpr (phase == 2)
        return (p[0] + p[step] + 1 - r) >> 1;
    else
        return (p[0] + p[1] + p[step] + p[step + 1] + 2 - r) >> 2;
}

template <int n, int phase, int r>
KvtStatus copy(const uint8_t* src, int src_step, uint8_t* dst, int dst_step) {
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
            dst[intptr_t(y) * dst_step + x] =
                uint8_t(predict<phase, r>(src + intptr_t(y) * src_step + x, src_step));
    return kvtStsOk;
}

template <int phase, int r>
KvtStatus recon8(const uint8_t* src, int src_step, const int16_t* res, uint8_t* dst, int dst_step) {
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            dst[intptr_t(y) * dst_step + x] =
                clip8(predict<phase, r>(src + intptr_t(y) * src_step + x, src_step) + res[y * 8 + x]);
    return kvtStsOk;
}

KvtStatus recon16(const uint8_t* src, int src_step, const int16_t* res, uint8_t* dst, int dst_step) {
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const int block = (y / 8) * 2 + x / 8, e = res[block * 64 + (y % 8) * 8 + x % 8];
            dst[intptr_t(y) * dst_step + x] = clip8(src[intptr_t(y) * src_step + x] + e);
        }
    return kvtStsOk;
}

template <int n>
KvtStatus average(const uint8_t* a, int a_step, const uint8_t* b, int b_step, uint8_t* dst, int dst_step) {
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
            dst[intptr_t(y) * dst_step + x] =
                uint8_t((a[intptr_t(y) * a_step + x] + b[intptr_t(y) * b_step + x] + 1) >> 1);
    return kvtStsOk;
}

}  // namespace

void init_recon(ReconDsp& d) {
    fill_slots(d.predict16,
               [](auto i) { return &copy<16, recon_slot_of(i).phase, recon_slot_of(i).rounding>; });
    fill_slots(d.predict8,
               [](auto i) { return &copy<8, recon_slot_of(i).phase, recon_slot_of(i).rounding>; });
    fill_slots(d.recon8, [](auto i) { return &recon8<recon_slot_of(i).phase, recon_slot_of(i).rounding>; });
    d.recon16 = recon16;
    d.average16 = average<16>;
    d.average8 = average<8>;
}

}  // namespace kvt::KVT_C_NS
