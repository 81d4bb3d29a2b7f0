// Fronts of H.264 intra prediction: argument checks in the documented order, then one kernel.
#include "common/kernel.h"
#include "h264/intra_pred_dsp.h"
#include "kvtvc.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(IntraPredDsp, init_intra_pred_dsp) dsp;

// Neighbours the 16x16 modes (vertical, horizontal, DC, plane) and the chroma modes (DC,
// horizontal, vertical, plane) cannot do without.
constexpr unsigned kNeeds16x16[4] = {kNbUpper, kNbLeft, 0, kNbUpper | kNbLeft | kNbCorner};
constexpr unsigned kNeedsChroma[4] = {0, kNbLeft, kNbUpper, kNbUpper | kNbLeft | kNbCorner};
}  // namespace

KvtStatus kvtiPredictIntra_4x4_H264_8u_C1IR(Kvt8u* pSrcDst, int srcDstStep, int predMode,
                                            Kvt32u availability) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (srcDstStep < 4) return kvtStsBadStep;
    if (unsigned(predMode) > 8) return kvtStsOutOfRange;
    return dsp.pred4x4[predMode](pSrcDst, srcDstStep, availability);
}

KvtStatus kvtiPredictIntra_16x16_H264_8u_C1IR(Kvt8u* pSrcDst, int srcDstStep, int predMode,
                                              Kvt32u availability) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (srcDstStep < 16) return kvtStsStepBelowMB;
    if (unsigned(predMode) > 3) return kvtStsOutOfRange;
    if (kNeeds16x16[predMode] & ~availability) return kvtStsNeighbourMissing;
    return dsp.pred16x16[predMode](pSrcDst, srcDstStep, availability);
}

KvtStatus kvtiPredictIntraChroma8x8_H264_8u_C1IR(Kvt8u* pSrcDst, int srcDstStep, int predMode,
                                                 Kvt32u availability) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (srcDstStep < 8) return kvtStsStepBelowMB;
    if (unsigned(predMode) > 3) return kvtStsOutOfRange;
    if (kNeedsChroma[predMode] & ~availability) return kvtStsNeighbourMissing;
    return dsp.chroma8x8[predMode](pSrcDst, srcDstStep, availability);
}
