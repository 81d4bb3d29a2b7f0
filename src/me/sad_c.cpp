// Portable SAD kernels, written plainly from the definitions.
#include <cstdlib>

#include "common/kernel.h"
#include "me/halfpel.h"
#include "me/sad_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

// Sum over a W x H block of |current - prediction| at phase `type`, fixed rounding.
template <int W, int H, int type>
KvtStatus sad(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* out) {
    int32_t sum = 0;
    for (int y = 0; y < H; ++y) {
        const uint8_t* c = cur + intptr_t(y) * cur_step;
        for (int x = 0; x < W; ++x)
            sum += std::abs(c[x] - halfpel_at(ref, ref_step, x, y, type, kRoundFixed));
    }
    *out = sum;
    return kvtStsOk;
}

// SADs of the (16 / S)^2 S x S sub-blocks of a 16x16 block, raster order.
template <int S>
KvtStatus sad_blocks(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, uint16_t* sads) {
    for (int by = 0; by < 16 / S; ++by)
        for (int bx = 0; bx < 16 / S; ++bx) {
            const intptr_t c = intptr_t(by) * S * cur_step + bx * S, r = intptr_t(by) * S * ref_step + bx * S;
            int32_t s;
            sad<S, S, kMcFull>(cur + c, cur_step, ref + r, ref_step, &s);
            sads[by * (16 / S) + bx] = uint16_t(s);
        }
    return kvtStsOk;
}

}  // namespace

void init_sad(SadDsp& d) {
    fill_slots(d.sad16, [](auto p) { return sad<16, 16, decltype(p)::value * 4>; });
    fill_slots(d.sad16_a16, [](auto p) { return sad<16, 16, decltype(p)::value * 4>; });
    fill_slots(d.sad8, [](auto p) { return sad<8, 8, decltype(p)::value * 4>; });
    d.sad4 = sad<4, 4, kMcFull>;
    d.blocks8x8 = sad_blocks<8>;
    d.blocks4x4 = sad_blocks<4>;
}

}  // namespace kvt::KVT_C_NS
