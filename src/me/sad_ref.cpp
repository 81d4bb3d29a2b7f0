// Reference SAD kernels, written plainly from the definitions.
#include <cstdlib>

#include "me/halfpel.h"
#include "me/sad_kernels.h"

namespace kvt {

namespace {

// Sum over a W x H block of |current - prediction| at phase `type`, fixed rounding.
template <int W, int H, int type>
int32_t sad_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step) {
    int32_t sum = 0;
    for (int y = 0; y < H; ++y) {
        const uint8_t* c = cur + intptr_t(y) * cur_step;
        for (int x = 0; x < W; ++x) sum += std::abs(c[x] - halfpel_at(ref, ref_step, x, y, type, kRoundFixed));
    }
    return sum;
}

// SADs of the (16 / S)^2 S x S sub-blocks of a 16x16 block, raster order.
template <int S>
void sad_blocks_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, uint16_t* out) {
    for (int by = 0; by < 16 / S; ++by)
        for (int bx = 0; bx < 16 / S; ++bx) {
            const intptr_t c = intptr_t(by) * S * cur_step + bx * S, r = intptr_t(by) * S * ref_step + bx * S;
            out[by * (16 / S) + bx] = uint16_t(sad_ref<S, S, kMcFull>(cur + c, cur_step, ref + r, ref_step));
        }
}

}  // namespace

const SadFn sad_16x16_ref[4] = {sad_ref<16, 16, kMcFull>, sad_ref<16, 16, kMcVertHalf>,
                                sad_ref<16, 16, kMcHorHalf>, sad_ref<16, 16, kMcBothHalf>};
const SadFn sad_8x8_ref[4] = {sad_ref<8, 8, kMcFull>, sad_ref<8, 8, kMcVertHalf>, sad_ref<8, 8, kMcHorHalf>,
                              sad_ref<8, 8, kMcBothHalf>};

int32_t sad_4x4_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step) {
    return sad_ref<4, 4, kMcFull>(cur, cur_step, ref, ref_step);
}

void sad_16x16_blocks8x8_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, uint16_t* out) {
    sad_blocks_ref<8>(cur, cur_step, ref, ref_step, out);
}

void sad_16x16_blocks4x4_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, uint16_t* out) {
    sad_blocks_ref<4>(cur, cur_step, ref, ref_step, out);
}

}  // namespace kvt
