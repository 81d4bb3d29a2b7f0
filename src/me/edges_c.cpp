// Portable edge detector, written plainly from the definition.
#include <algorithm>
#include <cstdlib>

#include "common/kernel.h"
#include "me/edges_count.h"
#include "me/me_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

// Rows 0..14 against their right and lower neighbours, columns 0..14; differences clamped to
// 127 and compared with the threshold as signed 8-bit values (128 and above flag everything).
KvtStatus edges16(const uint8_t* src, int step, uint8_t diff_threshold, uint8_t count_threshold,
                  uint8_t* flag) {
    const int8_t t = int8_t(diff_threshold);
    uint8_t k = 0;
    for (int r = 0; r < 15; ++r) {
        const uint8_t* row = src + intptr_t(r) * step;
        const uint8_t* below = row + step;
        for (int i = 0; i < 15; ++i) {
            const int h = std::min(std::abs(row[i] - row[i + 1]), 127);
            const int v = std::min(std::abs(row[i] - below[i]), 127);
            if (int8_t(h) > t || int8_t(v) > t) ++k;
        }
        if (edge_count_passes(k, count_threshold)) {
            *flag = 1;
            return kvtStsOk;
        }
    }
    *flag = 0;
    return kvtStsOk;
}

}  // namespace

void init_edges(MeDsp& d) { d.edges16 = edges16; }

}  // namespace kvt::KVT_C_NS
