// Fronts of the H.264 decoder-side transforms: argument checks in the documented order, then one
// kernel (the residual functions pick the DC-only kernel when there are no AC levels).
#include "common/kernel.h"
#include "h264/tables.h"
#include "h264/transform_dsp.h"
#include "kvtvc.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(TransformDsp, init_transform_dsp) dsp;

bool bad_qp(int qp) { return unsigned(qp) > 51; }
const int16_t* factors(int qp) { return h264::InvQuantCoef[size_t(qp)].data(); }
}  // namespace

KvtStatus kvtiTransformDequantLumaDC_H264_16s_C1I(Kvt16s* pSrcDst, int QP) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsOutOfRange;
    return dsp.luma_dc(pSrcDst, QP);
}

KvtStatus kvtiTransformDequantChromaDC_H264_16s_C1I(Kvt16s* pSrcDst, int QP) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsOutOfRange;
    return dsp.chroma_dc(pSrcDst, QP);
}

// The step is checked after QP, as documented.
KvtStatus kvtiDequantTransformResidual_H264_16s_C1I(Kvt16s* pSrcDst, int srcDstStep, const Kvt16s* pDC,
                                                    int AC, int QP) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsOutOfRange;
    if (srcDstStep < 8) return kvtStsBadStep;
    if (!AC) return dsp.residual_dc(pSrcDst, srcDstStep, pDC, factors(QP));
    return dsp.residual(pSrcDst, srcDstStep, pDC, factors(QP));
}

KvtStatus kvtiDequantTransformResidualAndAdd_H264_16s_C1I(const Kvt8u* pPred, Kvt16s* pSrcDst,
                                                          const Kvt16s* pDC, Kvt8u* pDst, int predStep,
                                                          int dstStep, int QP, int AC) {
    if (!pPred || !pDst) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsOutOfRange;
    if (AC && pSrcDst) {
        if (pDC) return dsp.residual_add_dc(pPred, pSrcDst, pDC, pDst, predStep, dstStep, QP);
        return dsp.residual_add(pPred, pSrcDst, factors(QP), pDst, predStep, dstStep);
    }
    if (pDC) return dsp.residual_dc_add_dc(pPred, pSrcDst, pDC, pDst, predStep, dstStep, QP);
    if (!pSrcDst) return kvtStsNullPointer;
    return dsp.residual_dc_add(pPred, pSrcDst, factors(QP), pDst, predStep, dstStep);
}

KvtStatus kvtiTransformPrediction_H264_8u16s_C1(const Kvt8u* pSrc, int srcStep, Kvt16s* pDst) {
    if (!pSrc || !pDst) return kvtStsNullPointer;
    return dsp.transform_prediction(pSrc, srcStep, pDst);
}

KvtStatus kvtiDequantTransformResidual_SISP_H264_16s_C1I(Kvt16s* pSrcDst, const Kvt16s* pTransformPred,
                                                         const Kvt16s* pDC, int AC, int QP, int QS, int SI) {
    if (!pSrcDst || !pTransformPred) return kvtStsNullPointer;
    return dsp.sisp_residual(pSrcDst, pTransformPred, pDC, AC, QP, QS, SI);
}

KvtStatus kvtiTransformDequantChromaDC_SISP_H264_16s_C1I(Kvt16s* pSrcDst, const Kvt16s* pDCPredict, int QP,
                                                         int QS, int SI) {
    if (!pSrcDst || !pDCPredict) return kvtStsNullPointer;
    return dsp.sisp_chroma_dc(pSrcDst, pDCPredict, QP, QS, SI);
}
