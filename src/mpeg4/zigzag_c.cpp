// Portable inverse scans.
#include "common/kernel.h"
#include "mpeg4/coef_tables.h"
#include "mpeg4/zigzag_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

template <int S>
KvtStatus compact(const int16_t* src, int len, int16_t* dst) {
    for (int i = 0; i < len; ++i) dst[kScan[S][i]] = src[i];
    return kvtStsOk;
}

template <int S>
KvtStatus full(const int16_t* src, int16_t* dst) {
    return compact<S>(src, 64, dst);
}

}  // namespace

void init_zigzag(ZigzagDsp& d) {
    fill_slots(d.full, [](auto s) { return full<decltype(s)::value>; });
    fill_slots(d.compact, [](auto s) { return compact<decltype(s)::value>; });
}

}  // namespace kvt::KVT_C_NS
