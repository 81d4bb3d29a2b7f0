// Fronts of the squared-difference family.
#include "kvtvc.h"
#include "me/phase.h"
#include "me/sqrdiff_kernels.h"

using namespace kvt;

// Only the four phase codes select a kernel; any other type succeeds without writing.
KvtStatus kvtiSqrDiff16x16_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep,
                                 int mcType, Kvt32s* pSqrDiff) {
    if (!pSrcCur || !pSrcRef || !pSqrDiff) return kvtStsNullPointer;
    if (!is_phase_code(mcType)) return kvtStsOk;
    const bool aligned = aligned16(pSrcCur, srcCurStep);
    return with_phase(mcType, [&](auto phase) {
        constexpr int t = decltype(phase)::value;
        if (aligned)
            return KVT_KERNEL_A16(sqrdiff_16x16)<t>(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pSqrDiff);
        return KVT_KERNEL(sqrdiff_16x16)<t>(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pSqrDiff);
    });
}

// Each type contributes only its bits 8 and 4; with neither set the prediction is the sample
// itself whatever the other bits, so the phase bits cover every value exactly.
KvtStatus kvtiSqrDiff16x16B_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRefF,
                                  int srcRefStepF, int mcTypeF, const Kvt8u* pSrcRefB, int srcRefStepB,
                                  int mcTypeB, Kvt32s* pSqrDiff) {
    if (!pSrcCur || !pSrcRefF || !pSrcRefB || !pSqrDiff) return kvtStsNullPointer;
    const bool aligned = aligned16(pSrcCur, srcCurStep);
    return with_phase(mcTypeF & kMcPhaseBits, [&](auto fwd) {
        return with_phase(mcTypeB & kMcPhaseBits, [&](auto bwd) {
            constexpr int tf = decltype(fwd)::value, tb = decltype(bwd)::value;
            if (aligned)
                return KVT_KERNEL_A16(sqrdiff_16x16b)<tf, tb>(pSrcCur, srcCurStep, pSrcRefF, srcRefStepF,
                                                              pSrcRefB, srcRefStepB, pSqrDiff);
            return KVT_KERNEL(sqrdiff_16x16b)<tf, tb>(pSrcCur, srcCurStep, pSrcRefF, srcRefStepF, pSrcRefB,
                                                      srcRefStepB, pSqrDiff);
        });
    });
}
