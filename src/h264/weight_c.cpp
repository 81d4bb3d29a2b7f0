// Portable H.264 weighted average, in the 32-bit arithmetic the definition uses.
#include <algorithm>

#include "common/arith.h"
#include "common/kernel.h"
#include "h264/tables.h"
#include "h264/weight_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

// The rounding term is 1 << (shift - 1) with the count taken to five bits (shift 0 gives 2^31),
// and the shift count as well; sums wrap at 32 bits. The clamp table covers -256..511, beyond
// which the value saturates the same way.
template <int W>
KvtStatus average(const uint8_t* src1, uint8_t* dst, int32_t step, int32_t w1, int32_t w2, uint32_t shift,
                  int32_t offset, int height) {
    const uint32_t round = 1u << ((shift - 1) & 31);
    const int count = int(shift & 31);
    for (int y = 0; y < height; ++y, src1 += step, dst += step)
        for (int x = 0; x < W; ++x) {
            const uint32_t sum = uint32_t(src1[x]) * uint32_t(w1) + uint32_t(dst[x]) * uint32_t(w2) + round;
            const int32_t v = int32_t(uint32_t(asr(int32_t(sum), count)) + uint32_t(offset));
            dst[x] = h264::ClampTbl[256 + std::clamp(v, -256, 511)];
        }
    return kvtStsOk;
}

}  // namespace

void init_weight(WeightDsp& d) {
    for (WeightFn* slots : {d.average_small, d.average, d.average_wide}) {
        slots[0] = average<2>;
        slots[1] = average<4>;
        slots[2] = average<8>;
        slots[3] = average<16>;
    }
}

}  // namespace kvt::KVT_C_NS
