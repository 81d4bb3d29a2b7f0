// Fronts of the SAD family: check the pointers the family checks, then run one kernel.
#include "common/kernel.h"
#include "kvtvc.h"
#include "me/halfpel.h"
#include "me/sad_dsp.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(SadDsp, init_sad_dsp) dsp;
}  // namespace

// The result pointer is deliberately unchecked here and in kvtiSAD8x8_8u32s_C1R. Types other
// than 0, 4, 8 and 12 keep only their phase bits, so no type reads beyond the 17x17 samples
// of a half step.
KvtStatus kvtiSAD16x16_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep,
                             Kvt32s* pDstSAD, int mcType) {
    if (!pSrcCur || !pSrcRef) return kvtStsNullPointer;
    const int phase = (mcType & kMcPhaseBits) >> 2;
    if (aligned16(pSrcCur, srcCurStep))
        return dsp.sad16_a16[phase](pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
    return dsp.sad16[phase](pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
}

// 0 integer, 4 vertical half, 8 horizontal half; every other value is taken as both halves.
KvtStatus kvtiSAD8x8_8u32s_C1R(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep,
                               Kvt32s* pDstSAD, int mcType) {
    if (!pSrcCur || !pSrcRef) return kvtStsNullPointer;
    const int phase = (mcType & ~kMcPhaseBits) ? 3 : mcType >> 2;  // 0, 4, 8, 12 or both halves
    return dsp.sad8[phase](pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
}

KvtStatus kvtiSAD4x4_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep,
                           Kvt32s* pDstSAD) {
    if (!pSrcCur || !pSrcRef || !pDstSAD) return kvtStsNullPointer;
    return dsp.sad4(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
}

KvtStatus kvtiSAD16x16Blocks8x8_8u16u(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                      int srcRefStep, Kvt16u* pDstSAD) {
    if (!pSrcCur || !pSrcRef || !pDstSAD) return kvtStsNullPointer;
    return dsp.blocks8x8(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
}

KvtStatus kvtiSAD16x16Blocks4x4_8u16u(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                      int srcRefStep, Kvt16u* pDstSAD) {
    if (!pSrcCur || !pSrcRef || !pDstSAD) return kvtStsNullPointer;
    return dsp.blocks4x4(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
}
