// Portable squared-difference kernels, written plainly from the definitions.
#include "common/kernel.h"
#include "me/halfpel.h"
#include "me/me_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

// The bidirectional form's own statement of the fixed rounding: h and v are the type's bits 8
// and 4, and the +2 applies to any non-zero type, so the integer position gives (4a) >> 2 = a.
int fixed_pred_general(const uint8_t* ref, int step, int x, int y, int type) {
    const int h = (type & 8) ? 1 : 0, v = (type & 4) ? 1 : 0;
    const uint8_t* p = ref + intptr_t(y) * step + x;
    const intptr_t down = intptr_t(v) * step;
    return (p[0] + p[h] + p[down] + p[down + h] + (type != 0 ? 2 : 0)) >> 2;
}

template <int type>
KvtStatus sqrdiff16(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* sum) {
    int32_t s = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const int d =
                cur[intptr_t(y) * cur_step + x] - halfpel_at(ref, ref_step, x, y, type, kRoundFixed);
            s += d * d;
        }
    *sum = s;
    return kvtStsOk;
}

template <int tf, int tb>
KvtStatus sqrdiff16b(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step, const uint8_t* bwd,
                     int bwd_step, int32_t* sum) {
    int32_t s = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x) {
            const int f = fixed_pred_general(fwd, fwd_step, x, y, tf);
            const int b = fixed_pred_general(bwd, bwd_step, x, y, tb);
            const int d = ((f + b + 1) >> 1) - cur[intptr_t(y) * cur_step + x];
            s += d * d;
        }
    *sum = s;
    return kvtStsOk;
}

}  // namespace

void init_sqrdiff(MeDsp& d) {
    fill_slots(d.sqrdiff16, [](auto p) { return sqrdiff16<decltype(p)::value * 4>; });
    fill_slots(d.sqrdiff16b, [](auto i) {
        constexpr PhasePair s = pair_of(i);
        return sqrdiff16b<s.fwd, s.bwd>;
    });
}

}  // namespace kvt::KVT_C_NS
