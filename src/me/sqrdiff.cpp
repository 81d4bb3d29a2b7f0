// Fronts of the squared-difference family.
#include "kvtvc.h"
#include "me/sqrdiff_kernels.h"

using namespace kvt;

// Only the four phase codes select a kernel; any other type succeeds without writing.
KvtStatus kvtiSqrDiff16x16_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep,
                                 int mcType, Kvt32s* pSqrDiff) {
    if (!pSrcCur || !pSrcRef || !pSqrDiff) return kvtStsNullPointer;
    if (mcType != 0 && mcType != 4 && mcType != 8 && mcType != 12) return kvtStsOk;
    *pSqrDiff = KVT_KERNEL(sqrdiff_16x16)[mcType >> 2](pSrcCur, srcCurStep, pSrcRef, srcRefStep);
    return kvtStsOk;
}

// Each type contributes only its bits 8 and 4; with neither set the prediction is the sample
// itself whatever the other bits, so the phase index covers every value exactly.
KvtStatus kvtiSqrDiff16x16B_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRefF, int srcRefStepF,
                                  int mcTypeF, const Kvt8u* pSrcRefB, int srcRefStepB, int mcTypeB,
                                  Kvt32s* pSqrDiff) {
    if (!pSrcCur || !pSrcRefF || !pSrcRefB || !pSqrDiff) return kvtStsNullPointer;
    const int index = ((mcTypeF & 12) >> 2) | (mcTypeB & 12);
    *pSqrDiff = KVT_KERNEL(sqrdiff_16x16b)[index](pSrcCur, srcCurStep, pSrcRefF, srcRefStepF, pSrcRefB, srcRefStepB);
    return kvtStsOk;
}
