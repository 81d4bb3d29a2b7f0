// Fronts of the H.264 forward transform-quantization: argument checks in the documented order,
// then one kernel.
#include "common/kernel.h"
#include "h264/quant_dsp.h"
#include "kvtvc.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(QuantDsp, init_quant_dsp) dsp;
}  // namespace

// Chroma QP (after the standard's luma-to-chroma mapping) is 0..39.
KvtStatus kvtiTransformQuantChromaDC_H264_16s_C1I(Kvt16s* pSrcDst, Kvt16s* pTBlock, int QP, Kvt8s* pNumLevels,
                                                  Kvt8u intra, Kvt8u needTransform) {
    if (!pSrcDst || !pTBlock || !pNumLevels) return kvtStsNullPointer;
    if (unsigned(QP) > 39) return kvtStsOutOfRange;
    return dsp.chroma_dc(pSrcDst, pTBlock, QP, pNumLevels, intra != 0, needTransform != 0);
}

KvtStatus kvtiTransformQuantLumaDC_H264_16s_C1I(Kvt16s* pSrcDst, Kvt16s* pTBlock, int QP, Kvt8s* pNumLevels,
                                                Kvt8u needTransform, const Kvt16s* pScanMatrix,
                                                Kvt8u* pLastPos) {
    if (!pSrcDst || !pTBlock || !pNumLevels || !pScanMatrix || !pLastPos) return kvtStsNullPointer;
    if (unsigned(QP) > 51) return kvtStsOutOfRange;
    return dsp.luma_dc(pSrcDst, pTBlock, QP, pNumLevels, needTransform != 0, pScanMatrix, pLastPos);
}

KvtStatus kvtiTransformQuantResidual_H264_16s_C1I(Kvt16s* pSrcDst, int QP, Kvt8s* pNumLevels, Kvt8u intra,
                                                  const Kvt16s* pScanMatrix, Kvt8u* pLastPos) {
    if (!pSrcDst || !pNumLevels || !pScanMatrix || !pLastPos) return kvtStsNullPointer;
    if (unsigned(QP) > 51) return kvtStsOutOfRange;
    return dsp.residual(pSrcDst, QP, pNumLevels, intra != 0, pScanMatrix, pLastPos);
}
