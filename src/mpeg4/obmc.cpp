// Fronts of overlapped block motion compensation (H.263 Annex F and its MPEG-4 twin).
#include "common/kernel.h"
#include "kvtvc.h"
#include "mpeg4/obmc_dsp.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(ObmcDsp, init_obmc_dsp) dsp;

bool any_null(const KvtMotionVec* const mv[kObmcVectors]) {
    for (int i = 0; i < kObmcVectors; ++i)
        if (!mv[i]) return true;
    return false;
}
}  // namespace

KvtStatus kvtiPredictBlock_OBMC_8u(const Kvt8u* pSrcRef, Kvt8u* pDst, int step, const KvtMotionVec* pMVCur,
                                   const KvtMotionVec* pMVLeft, const KvtMotionVec* pMVRight,
                                   const KvtMotionVec* pMVAbove, const KvtMotionVec* pMVBelow) {
    const KvtMotionVec* const mv[kObmcVectors] = {pMVCur, pMVLeft, pMVRight, pMVAbove, pMVBelow};
    if (!pSrcRef || !pDst || any_null(mv)) return kvtStsNullPointer;
    if (step < 8) return kvtStsStepBelowBlock;
    return dsp.obmc[0](pSrcRef, step, pDst, step, mv);
}

KvtStatus kvtiOBMCHalfpel_MPEG4_8u(const Kvt8u* pSrcRef, int srcStep, Kvt8u* pDst, int dstStep,
                                   const KvtMotionVec* pMVCur, const KvtMotionVec* pMVLeft,
                                   const KvtMotionVec* pMVRight, const KvtMotionVec* pMVAbove,
                                   const KvtMotionVec* pMVBelow, int roundControl) {
    const KvtMotionVec* const mv[kObmcVectors] = {pMVCur, pMVLeft, pMVRight, pMVAbove, pMVBelow};
    if (!pSrcRef || !pDst || any_null(mv)) return kvtStsNullPointer;
    return dsp.obmc[roundControl != 0](pSrcRef, srcStep, pDst, dstStep, mv);
}
