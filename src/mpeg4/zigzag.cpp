// Fronts of the inverse scans: pointers (-8), then the count (-72), then one kernel.
#include "common/kernel.h"
#include "kvtvc.h"
#include "mpeg4/coef_tables.h"
#include "mpeg4/zigzag_dsp.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(ZigzagDsp, init_zigzag_dsp) dsp;

KvtStatus compact(Scan scan, const Kvt16s* pSrc, int len, Kvt16s* pDst) {
    if (!pSrc || !pDst) return kvtStsNullPointer;
    if (len < 1 || len > 64) return kvtStsBadCoeffCount;
    return dsp.compact[scan](pSrc, len, pDst);
}
}  // namespace

KvtStatus kvtiZigzagInv_Horizontal_16s(const Kvt16s* pSrc, Kvt16s* pDst) {
    if (!pSrc || !pDst) return kvtStsNullPointer;
    return dsp.full[kAltHorizontal](pSrc, pDst);
}

KvtStatus kvtiZigzagInv_Vertical_16s(const Kvt16s* pSrc, Kvt16s* pDst) {
    if (!pSrc || !pDst) return kvtStsNullPointer;
    return dsp.full[kAltVertical](pSrc, pDst);
}

KvtStatus kvtiZigzagInvClassical_Compact_16s(const Kvt16s* pSrc, int len, Kvt16s* pDst) {
    return compact(kZigzag, pSrc, len, pDst);
}

KvtStatus kvtiZigzagInvHorizontal_Compact_16s(const Kvt16s* pSrc, int len, Kvt16s* pDst) {
    return compact(kAltHorizontal, pSrc, len, pDst);
}

KvtStatus kvtiZigzagInvVertical_Compact_16s(const Kvt16s* pSrc, int len, Kvt16s* pDst) {
    return compact(kAltVertical, pSrc, len, pDst);
}
