// Fronts of the 8x8 DCT family: check the pointers, then the step, then run one kernel.
#include "common/kernel.h"
#include "kvtvc.h"
#include "transform/dct_dsp.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(DctDsp, init_dct_dsp) dsp;
}  // namespace

KvtStatus kvtiDCT8x8Inv_16s_C1I(Kvt16s* pSrcDst) {
    if (!pSrcDst) return kvtStsNullPointer;
    return dsp.inv[0](pSrcDst);
}

KvtStatus kvtiDCT8x8Inv_4x4_16s_C1I(Kvt16s* pSrcDst) {
    if (!pSrcDst) return kvtStsNullPointer;
    return dsp.inv[1](pSrcDst);
}

KvtStatus kvtiDCT8x8Inv_2x2_16s_C1I(Kvt16s* pSrcDst) {
    if (!pSrcDst) return kvtStsNullPointer;
    return dsp.inv[2](pSrcDst);
}

KvtStatus kvtiDCT8x8Inv_16s8u_C1R(const Kvt16s* pSrc, Kvt8u* pDst, int dstStep) {
    if (!pSrc || !pDst) return kvtStsNullPointer;
    if (dstStep < 1) return kvtStsBadStep;
    return dsp.inv_to_pixels(pSrc, pDst, dstStep);
}

KvtStatus kvtiDCTInv_8x8_16s8u(const Kvt16s* pSrc, Kvt8u* pDst, int dstStep) {
    if (!pSrc || !pDst) return kvtStsNullPointer;
    if (dstStep < 8) return kvtStsStepBelowBlock;
    return dsp.inv_to_pixels(pSrc, pDst, dstStep);
}

KvtStatus kvtiDCT8x8Fwd_16s_C1I(Kvt16s* pSrcDst) {
    if (!pSrcDst) return kvtStsNullPointer;
    return dsp.fwd(pSrcDst);
}

KvtStatus kvtiDCT8x8Fwd_8u16s_C1R(const Kvt8u* pSrc, int srcStep, Kvt16s* pDst) {
    if (!pSrc || !pDst) return kvtStsNullPointer;
    if (srcStep < 1) return kvtStsBadStep;
    return dsp.fwd_from_pixels(pSrc, srcStep, pDst);
}
