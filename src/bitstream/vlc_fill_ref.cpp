// Reference word fill of the VLC builder.
#include "bitstream/vlc_kernels.h"

namespace kvt {

void fill_32s_ref(uint32_t v, int32_t* dst, int n) {
    for (int i = 0; i < n; ++i) dst[i] = int32_t(v);
}

}  // namespace kvt
