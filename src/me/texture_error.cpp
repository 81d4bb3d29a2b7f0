// Fronts of the shape-coding texture error. Like the other MPEG-4 encoder families, these report
// a null pointer as a bad argument (-5), not -8.
#include "kvtvc.h"
#include "me/me_dsp.h"

using namespace kvt;

KvtStatus kvtiComputeTextureErrorBlock_SAD_8u16s(const Kvt8u* pSrc, int srcStep, const Kvt8u* pSrcPred,
                                                 Kvt16s* pDstDiff, Kvt32s* pDstSAD) {
    if (KVT_UNLIKELY(!pSrc || !pSrcPred || !pDstDiff || !pDstSAD)) return kvtStsBadArgument;
    return me_dsp.texture_error(pSrc, srcStep, pSrcPred, pDstDiff, pDstSAD);
}

KvtStatus kvtiComputeTextureErrorBlock_8u16s(const Kvt8u* pSrc, int srcStep, const Kvt8u* pSrcPred,
                                             Kvt16s* pDstDiff) {
    if (KVT_UNLIKELY(!pSrc || !pSrcPred || !pDstDiff)) return kvtStsBadArgument;
    return me_dsp.texture_error(pSrc, srcStep, pSrcPred, pDstDiff, nullptr);
}
