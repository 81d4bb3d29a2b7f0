// Portable kernel of the shape-coding texture error: an 8x8 residual against 64 contiguous
// prediction samples, with the sum of its magnitudes on request.
#include <cstdlib>

#include "common/kernel.h"
#include "me/me_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

KvtStatus texture_error(const uint8_t* src, int src_step, const uint8_t* pred, int16_t* diff, int32_t* sad) {
    int32_t total = 0;
    for (int y = 0; y < 8; ++y) {
        const uint8_t* s = src + static_cast<intptr_t>(y) * src_step;
        for (int x = 0; x < 8; ++x) {
            const int r = s[x] - pred[y * 8 + x];
            diff[y * 8 + x] = static_cast<int16_t>(r);
            total += std::abs(r);
        }
    }
    if (sad) *sad = total;
    return kvtStsOk;
}

}  // namespace

void init_texture_error(MeDsp& d) { d.texture_error = texture_error; }

}  // namespace kvt::KVT_C_NS
