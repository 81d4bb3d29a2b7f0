// Reference SAD kernels, written plainly from the definitions.
#include <cstdlib>

#include "me/phase.h"
#include "me/sad_kernels.h"

namespace kvt {

namespace {

// Sum over a W x H block of |current - prediction| at phase `type`, fixed rounding.
template <int W, int H, int type>
int32_t sad_wxh(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step) {
    int32_t sum = 0;
    for (int y = 0; y < H; ++y) {
        const uint8_t* c = cur + intptr_t(y) * cur_step;
        for (int x = 0; x < W; ++x)
            sum += std::abs(c[x] - halfpel_at(ref, ref_step, x, y, type, kRoundFixed));
    }
    return sum;
}

// SADs of the (16 / S)^2 S x S sub-blocks of a 16x16 block, raster order.
template <int S>
void sad_blocks(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, uint16_t* sads) {
    for (int by = 0; by < 16 / S; ++by)
        for (int bx = 0; bx < 16 / S; ++bx) {
            const intptr_t c = intptr_t(by) * S * cur_step + bx * S, r = intptr_t(by) * S * ref_step + bx * S;
            sads[by * (16 / S) + bx] = uint16_t(sad_wxh<S, S, kMcFull>(cur + c, cur_step, ref + r, ref_step));
        }
}

}  // namespace

template <int type>
KvtStatus sad_16x16_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* sad) {
    *sad = sad_wxh<16, 16, type>(cur, cur_step, ref, ref_step);
    return kvtStsOk;
}

template <int type>
KvtStatus sad_8x8_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* sad) {
    *sad = sad_wxh<8, 8, type>(cur, cur_step, ref, ref_step);
    return kvtStsOk;
}

#define KVT_INSTANTIATE(t)                                                                   \
    template KvtStatus sad_16x16_ref<t>(const uint8_t*, int, const uint8_t*, int, int32_t*); \
    template KvtStatus sad_8x8_ref<t>(const uint8_t*, int, const uint8_t*, int, int32_t*);
KVT_FOR_EACH_PHASE(KVT_INSTANTIATE)
#undef KVT_INSTANTIATE

KvtStatus sad_4x4_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int32_t* sad) {
    *sad = sad_wxh<4, 4, kMcFull>(cur, cur_step, ref, ref_step);
    return kvtStsOk;
}

KvtStatus sad_16x16_blocks8x8_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,
                                  uint16_t* sads) {
    sad_blocks<8>(cur, cur_step, ref, ref_step, sads);
    return kvtStsOk;
}

KvtStatus sad_16x16_blocks4x4_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,
                                  uint16_t* sads) {
    sad_blocks<4>(cur, cur_step, ref, ref_step, sads);
    return kvtStsOk;
}

}  // namespace kvt
