// Fronts of the SAD family: check the pointers the family checks, then run one kernel.
#include "kvtvc.h"
#include "me/phase.h"
#include "me/sad_kernels.h"

using namespace kvt;

// The result pointer is deliberately unchecked here and in kvtiSAD8x8_8u32s_C1R. Types other
// than 0, 4, 8 and 12 keep only their phase bits, so no type reads beyond the 17x17 samples
// of a half step.
KvtStatus kvtiSAD16x16_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep,
                             Kvt32s* pDstSAD, int mcType) {
    if (!pSrcCur || !pSrcRef) return kvtStsNullPointer;
    const bool aligned = aligned16(pSrcCur, srcCurStep);
    return with_phase(mcType & kMcPhaseBits, [&](auto phase) {
        constexpr int t = decltype(phase)::value;
        if (aligned) return KVT_KERNEL_A16(sad_16x16)<t>(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
        return KVT_KERNEL(sad_16x16)<t>(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
    });
}

// 0 integer, 4 vertical half, 8 horizontal half; every other value is taken as both halves.
KvtStatus kvtiSAD8x8_8u32s_C1R(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep,
                               Kvt32s* pDstSAD, int mcType) {
    if (!pSrcCur || !pSrcRef) return kvtStsNullPointer;
    return with_phase(mcType, [&](auto phase) {
        return KVT_KERNEL(sad_8x8)<decltype(phase)::value>(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
    });
}

KvtStatus kvtiSAD4x4_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep,
                           Kvt32s* pDstSAD) {
    if (!pSrcCur || !pSrcRef || !pDstSAD) return kvtStsNullPointer;
    return KVT_KERNEL(sad_4x4)(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
}

KvtStatus kvtiSAD16x16Blocks8x8_8u16u(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                      int srcRefStep, Kvt16u* pDstSAD) {
    if (!pSrcCur || !pSrcRef || !pDstSAD) return kvtStsNullPointer;
    return KVT_KERNEL(sad_16x16_blocks8x8)(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
}

KvtStatus kvtiSAD16x16Blocks4x4_8u16u(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                      int srcRefStep, Kvt16u* pDstSAD) {
    if (!pSrcCur || !pSrcRef || !pDstSAD) return kvtStsNullPointer;
    return KVT_KERNEL(sad_16x16_blocks4x4)(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstSAD);
}
