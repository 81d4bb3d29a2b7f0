// Fronts of the variance and mean family.
#include "kvtvc.h"
#include "me/phase.h"
#include "me/variance_kernels.h"

using namespace kvt;

KvtStatus kvtiVariance16x16_8u32s(const Kvt8u* pSrc, int srcStep, Kvt32s* pVar) {
    if (!pSrc || !pVar) return kvtStsNullPointer;
    if (aligned16(pSrc, srcStep)) return KVT_KERNEL_A16(variance_16x16)(pSrc, srcStep, pVar);
    return KVT_KERNEL(variance_16x16)(pSrc, srcStep, pVar);
}

KvtStatus kvtiVarMean8x8_8u32s_C1R(const Kvt8u* pSrc, int srcStep, Kvt32s* pVar, Kvt32s* pMean) {
    if (!pSrc || !pVar || !pMean) return kvtStsNullPointer;
    return KVT_KERNEL(varmean_8x8_8u)(pSrc, srcStep, pVar, pMean);
}

KvtStatus kvtiVarMean8x8_16s32s_C1R(const Kvt16s* pSrc, int srcStep, Kvt32s* pVar, Kvt32s* pMean) {
    if (!pSrc || !pVar || !pMean) return kvtStsNullPointer;
    return KVT_KERNEL(varmean_8x8_16s)(pSrc, srcStep, pVar, pMean);
}

// Only the four phase codes select a kernel; any other type succeeds without writing.
KvtStatus kvtiVarMeanDiff16x16_8u32s_C1R(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                         int srcRefStep, const Kvt32s* pSrcSum, Kvt32s* pVar, Kvt32s* pMean,
                                         int mcType) {
    if (!pSrcCur || !pSrcRef || !pSrcSum || !pVar || !pMean) return kvtStsNullPointer;
    if (!is_phase_code(mcType)) return kvtStsOk;
    return with_phase(mcType, [&](auto phase) {
        return KVT_KERNEL(varmeandiff_16x16)<decltype(phase)::value>(pSrcCur, srcCurStep, pSrcRef, srcRefStep,
                                                                     pSrcSum, pVar, pMean);
    });
}

KvtStatus kvtiVarMeanDiff16x8_8u32s_C1R(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                        int srcRefStep, const Kvt32s* pSrcSum, Kvt32s* pVar, Kvt32s* pMean,
                                        int mcType) {
    if (!pSrcCur || !pSrcRef || !pSrcSum || !pVar || !pMean) return kvtStsNullPointer;
    if (!is_phase_code(mcType)) return kvtStsOk;
    return with_phase(mcType, [&](auto phase) {
        return KVT_KERNEL(varmeandiff_16x8)<decltype(phase)::value>(pSrcCur, srcCurStep, pSrcRef, srcRefStep,
                                                                    pSrcSum, pVar, pMean);
    });
}

// The result pointer is deliberately unchecked.
KvtStatus kvtiMeanAbsDev16x16_8u32s_C1R(const Kvt8u* pSrc, int srcStep, Kvt32s* pDst) {
    if (!pSrc) return kvtStsNullPointer;
    return KVT_KERNEL(mean_abs_dev_16x16)(pSrc, srcStep, pDst);
}
