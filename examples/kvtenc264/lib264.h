// The library's H.264 block functions as the encoder calls them. Until the H.264 families land in
// kvtvc.h, standin.cpp provides temporary versions under the same names (see CMakeLists.txt).
#pragma once
#include <kvtvc.h>

#if defined(KVTENC264_STANDIN_A) || defined(KVTENC264_STANDIN_B)
extern "C" {
#endif
#ifdef KVTENC264_STANDIN_A
KvtStatus kvtiPredictIntra_4x4_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcDstStep, Kvt32s mode, Kvt32u avail);
KvtStatus kvtiPredictIntra_16x16_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcDstStep, Kvt32s mode, Kvt32u avail);
KvtStatus kvtiPredictIntraChroma8x8_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcDstStep, Kvt32s mode,
                                                 Kvt32u avail);
KvtStatus kvtiTransformDequantLumaDC_H264_16s_C1I(Kvt16s* pSrcDst, Kvt32s QP);
KvtStatus kvtiTransformDequantChromaDC_H264_16s_C1I(Kvt16s* pSrcDst, Kvt32s QP);
KvtStatus kvtiDequantTransformResidualAndAdd_H264_16s_C1I(const Kvt8u* pPred, Kvt16s* pSrcDst, const Kvt16s* pDC,
                                                          Kvt8u* pDst, Kvt32s PredStep, Kvt32s DstStep, Kvt32s QP,
                                                          Kvt32s AC);
KvtStatus kvtiTransformQuantChromaDC_H264_16s_C1I(Kvt16s* pSrcDst, Kvt16s* pTBlock, Kvt32s QPChroma,
                                                  Kvt8s* pNumLevels, Kvt8u intra, Kvt8u needTransform);
KvtStatus kvtiTransformQuantLumaDC_H264_16s_C1I(Kvt16s* pSrcDst, Kvt16s* pTBlock, Kvt32s QP, Kvt8s* pNumLevels,
                                                Kvt8u needTransform, const Kvt16s* pScanMatrix,
                                                Kvt8u* pLastCoeff);
KvtStatus kvtiTransformQuantResidual_H264_16s_C1I(Kvt16s* pSrcDst, Kvt32s QP, Kvt8s* pNumLevels, Kvt8u intra,
                                                  const Kvt16s* pScanMatrix, Kvt8u* pLastCoeff);
#endif
#ifdef KVTENC264_STANDIN_B
KvtStatus kvtiInterpolateLuma_H264_8u_C1R(const Kvt8u* pSrc, Kvt32s srcStep, Kvt8u* pDst, Kvt32s dstStep,
                                          Kvt32s dx, Kvt32s dy, KvtRegionSize roiSize);
KvtStatus kvtiInterpolateChroma_H264_8u_C1R(const Kvt8u* pSrc, Kvt32s srcStep, Kvt8u* pDst, Kvt32s dstStep,
                                            Kvt32s dx, Kvt32s dy, KvtRegionSize roiSize);
KvtStatus kvtiEncodeCoeffsCAVLC_H264_16s(const Kvt16s* pSrc, Kvt8u AC, const Kvt32s* pScanMatrix, Kvt8u Count,
                                         Kvt8u* Trailing_Ones, Kvt8u* Trailing_One_Signs, Kvt8u* NumOutCoeffs,
                                         Kvt8u* TotalZeros, Kvt16s* Levels, Kvt8u* Runs);
KvtStatus kvtiEncodeChromaDcCoeffsCAVLC_H264_16s(const Kvt16s* pSrc, Kvt8u* Trailing_Ones,
                                                 Kvt8u* Trailing_One_Signs, Kvt8u* NumOutCoeffs,
                                                 Kvt8u* TotalZeros, Kvt16s* Levels, Kvt8u* Runs);
KvtStatus kvtiFilterDeblockingLuma_VerEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcdstStep, const Kvt8u* pAlpha,
                                                        const Kvt8u* pBeta, const Kvt8u* pThresholds,
                                                        const Kvt8u* pBS);
KvtStatus kvtiFilterDeblockingLuma_HorEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcdstStep, const Kvt8u* pAlpha,
                                                        const Kvt8u* pBeta, const Kvt8u* pThresholds,
                                                        const Kvt8u* pBS);
KvtStatus kvtiFilterDeblockingChroma_VerEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcdstStep, const Kvt8u* pAlpha,
                                                          const Kvt8u* pBeta, const Kvt8u* pThresholds,
                                                          const Kvt8u* pBS);
KvtStatus kvtiFilterDeblockingChroma_HorEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcdstStep, const Kvt8u* pAlpha,
                                                          const Kvt8u* pBeta, const Kvt8u* pThresholds,
                                                          const Kvt8u* pBS);
#endif
#if defined(KVTENC264_STANDIN_A) || defined(KVTENC264_STANDIN_B)
}
#endif
