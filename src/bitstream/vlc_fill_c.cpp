// Portable word fill of the VLC builder.
#include "bitstream/vlc_dsp.h"
#include "common/kernel.h"

namespace kvt::KVT_C_NS {

namespace {

KvtStatus fill_32s(uint32_t v, int32_t* dst, int n) {
    for (int i = 0; i < n; ++i) dst[i] = int32_t(v);
    return kvtStsOk;
}

}  // namespace

void init_vlc(VlcDsp& d) { d.fill_32s = fill_32s; }

}  // namespace kvt::KVT_C_NS
