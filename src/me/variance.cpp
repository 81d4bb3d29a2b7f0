// Fronts of the variance and mean family.
#include "kvtvc.h"
#include "me/halfpel.h"
#include "me/me_dsp.h"

using namespace kvt;

KvtStatus kvtiVariance16x16_8u32s(const Kvt8u* pSrc, int srcStep, Kvt32s* pVar) {
    if (!pSrc || !pVar) return kvtStsNullPointer;
    return me_dsp.variance16(pSrc, srcStep, pVar);
}

KvtStatus kvtiVarMean8x8_8u32s_C1R(const Kvt8u* pSrc, int srcStep, Kvt32s* pVar, Kvt32s* pMean) {
    if (!pSrc || !pVar || !pMean) return kvtStsNullPointer;
    return me_dsp.varmean8x8(pSrc, srcStep, pVar, pMean);
}

KvtStatus kvtiVarMean8x8_16s32s_C1R(const Kvt16s* pSrc, int srcStep, Kvt32s* pVar, Kvt32s* pMean) {
    if (!pSrc || !pVar || !pMean) return kvtStsNullPointer;
    return me_dsp.varmean8x8_16s(pSrc, srcStep, pVar, pMean);
}

// Only the four phase codes select a kernel; any other type succeeds without writing.
KvtStatus kvtiVarMeanDiff16x16_8u32s_C1R(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                         int srcRefStep, const Kvt32s* pSrcSum, Kvt32s* pVar, Kvt32s* pMean,
                                         int mcType) {
    if (!pSrcCur || !pSrcRef || !pSrcSum || !pVar || !pMean) return kvtStsNullPointer;
    if (!is_phase_code(mcType)) return kvtStsOk;
    return me_dsp.varmeandiff16x16[mcType >> 2](pSrcCur, srcCurStep, pSrcRef, srcRefStep, pSrcSum, pVar,
                                                pMean);
}

KvtStatus kvtiVarMeanDiff16x8_8u32s_C1R(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                        int srcRefStep, const Kvt32s* pSrcSum, Kvt32s* pVar, Kvt32s* pMean,
                                        int mcType) {
    if (!pSrcCur || !pSrcRef || !pSrcSum || !pVar || !pMean) return kvtStsNullPointer;
    if (!is_phase_code(mcType)) return kvtStsOk;
    return me_dsp.varmeandiff16x8[mcType >> 2](pSrcCur, srcCurStep, pSrcRef, srcRefStep, pSrcSum, pVar,
                                               pMean);
}

// The result pointer is deliberately unchecked.
KvtStatus kvtiMeanAbsDev16x16_8u32s_C1R(const Kvt8u* pSrc, int srcStep, Kvt32s* pDst) {
    if (!pSrc) return kvtStsNullPointer;
    return me_dsp.mean_abs_dev16(pSrc, srcStep, pDst);
}
