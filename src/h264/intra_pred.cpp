// Fronts of H.264 intra prediction: argument checks in the documented order, then one kernel.
#include "common/kernel.h"
#include "h264/intra_pred_dsp.h"
#include "kvtvc.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(IntraPredDsp, init_intra_pred_dsp) dsp;
}  // namespace

// Each front ends in the kernel for its mode and availability (which also reports a missing
// neighbour of the larger blocks).

KvtStatus kvtiPredictIntra_4x4_H264_8u_C1IR(Kvt8u* pSrcDst, int srcDstStep, int predMode,
                                            Kvt32u availability) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (srcDstStep < 4) return kvtStsBadStep;
    if (unsigned(predMode) > 8) return kvtStsOutOfRange;
    return dsp.pred4x4[predMode][availability & kNb4x4](pSrcDst, srcDstStep);
}

KvtStatus kvtiPredictIntra_16x16_H264_8u_C1IR(Kvt8u* pSrcDst, int srcDstStep, int predMode,
                                              Kvt32u availability) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (srcDstStep < 16) return kvtStsStepBelowMB;
    if (unsigned(predMode) > 3) return kvtStsOutOfRange;
    return dsp.pred16x16[predMode][availability & kNbBlock](pSrcDst, srcDstStep);
}

KvtStatus kvtiPredictIntraChroma8x8_H264_8u_C1IR(Kvt8u* pSrcDst, int srcDstStep, int predMode,
                                                 Kvt32u availability) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (srcDstStep < 8) return kvtStsStepBelowMB;
    if (unsigned(predMode) > 3) return kvtStsOutOfRange;
    return dsp.chroma8x8[predMode][availability & kNbBlock](pSrcDst, srcDstStep);
}
