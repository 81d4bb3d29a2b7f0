// Portable MPEG-1/2 motion-compensation kernels, written plainly from the formulas in mc_dsp.h.
#include "common/arith.h"
#include "common/kernel.h"
#include "mpeg2/mc_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

inline uint8_t clip8(int v) { return uint8_t(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// Prediction of the sample at p; r may be any value (the sums are exact in int).
template <int phase, int nb>
inline int predict(const uint8_t* p, intptr_t step, int r) {
    if constexpr (phase == 0)
        return p[0];
    else if constexpr (phase == 1)
        return asr(p[0] + p[step] + 1 - r, 1);
    else if constexpr (phase == 2)
        return asr(p[0] + p[nb] + 1 - r, 1);
    else
        return asr(p[0] + p[nb] + p[step] + p[step + nb] + 2 - r, 2);
}

inline const int16_t* residual_row(const int16_t* res, int res_step, int y) {
    return reinterpret_cast<const int16_t*>(reinterpret_cast<const uint8_t*>(res) + intptr_t(y) * res_step);
}

template <int shape, int phase>
KvtStatus mc(const uint8_t* ref, int ref_step, const int16_t* res, int res_step, uint8_t* dst, int dst_step,
             int r) {
    constexpr McShape s = kMcShapes[shape];
    for (int y = 0; y < s.h; ++y) {
        const uint8_t* p = ref + intptr_t(y) * ref_step;
        const int16_t* e = residual_row(res, res_step, y);
        uint8_t* o = dst + intptr_t(y) * dst_step;
        for (int x = 0; x < s.w; ++x) o[x] = clip8(e[x] + predict<phase, s.nb>(p + x, ref_step, r));
    }
    return kvtStsOk;
}

template <int shape, int fwd, int bwd>
KvtStatus mc_bi(const uint8_t* f, int f_step, const uint8_t* b, int b_step, const int16_t* res, int res_step,
                uint8_t* dst, int dst_step, int r) {
    constexpr McShape s = kMcShapes[shape];
    for (int y = 0; y < s.h; ++y) {
        const uint8_t *pf = f + intptr_t(y) * f_step, *pb = b + intptr_t(y) * b_step;
        const int16_t* e = residual_row(res, res_step, y);
        uint8_t* o = dst + intptr_t(y) * dst_step;
        for (int x = 0; x < s.w; ++x) {
            const int sum = predict<fwd, s.nb>(pf + x, f_step, r) + predict<bwd, s.nb>(pb + x, b_step, r);
            o[x] = clip8(e[x] + asr(sum + 1, 1));
        }
    }
    return kvtStsOk;
}

template <int w, int h, int phase, int r>
KvtStatus copy(const uint8_t* src, int src_step, uint8_t* dst, int dst_step) {
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            dst[intptr_t(y) * dst_step + x] =
                uint8_t(predict<phase, 1>(src + intptr_t(y) * src_step + x, src_step, r));
    return kvtStsOk;
}

}  // namespace

void init_mc(McDsp& d) {
    fill_slots(d.mc, [](auto i) {
        constexpr McSlot s = mc_slot_of(i);
        return &mc<s.shape, s.phase>;
    });
    fill_slots(d.mc_bi, [](auto i) {
        constexpr McBiSlot s = mc_bi_slot_of(i);
        return &mc_bi<s.shape, s.fwd, s.bwd>;
    });
    fill_slots(d.copy, [](auto i) {
        constexpr CopySlot s = copy_slot_of(i);
        return &copy<s.w, s.h, s.phase, s.rounding>;
    });
}

}  // namespace kvt::KVT_C_NS
