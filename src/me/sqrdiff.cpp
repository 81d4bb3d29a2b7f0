// Fronts of the squared-difference family.
#include "kvtvc.h"
#include "me/halfpel.h"
#include "me/me_dsp.h"

using namespace kvt;

// Only the four phase codes select a kernel; any other type succeeds without writing.
KvtStatus kvtiSqrDiff16x16_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep,
                                 int mcType, Kvt32s* pSqrDiff) {
    if (!pSrcCur || !pSrcRef || !pSqrDiff) return kvtStsNullPointer;
    if (!is_phase_code(mcType)) return kvtStsOk;
    return me_dsp.sqrdiff16[mcType >> 2](pSrcCur, srcCurStep, pSrcRef, srcRefStep, pSqrDiff);
}

// Each type contributes only its bits 8 and 4; with neither set the prediction is the sample
// itself whatever the other bits, so the phase bits cover every value exactly.
KvtStatus kvtiSqrDiff16x16B_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRefF,
                                  int srcRefStepF, int mcTypeF, const Kvt8u* pSrcRefB, int srcRefStepB,
                                  int mcTypeB, Kvt32s* pSqrDiff) {
    if (!pSrcCur || !pSrcRefF || !pSrcRefB || !pSqrDiff) return kvtStsNullPointer;
    return me_dsp.sqrdiff16b[pair_index(mcTypeF, mcTypeB)](pSrcCur, srcCurStep, pSrcRefF, srcRefStepF,
                                                           pSrcRefB, srcRefStepB, pSqrDiff);
}
