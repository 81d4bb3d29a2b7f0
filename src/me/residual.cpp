// Fronts of the residual family: check the pointers (-8), then run one kernel. Steps, types and
// the rounding control are not validated; the type is masked with 12, so every value is legal,
// and any non-zero rounding control acts as 1.
#include "kvtvc.h"
#include "me/halfpel.h"
#include "me/me_dsp.h"

using namespace kvt;

namespace {

KvtStatus get_diff(ResidualSize size, const Kvt8u* cur, int cur_step, const Kvt8u* ref, int ref_step,
                   Kvt16s* diff, int diff_step, Kvt16s* pred, int pred_step, int type, int rounding) {
    if (KVT_UNLIKELY(!cur || !ref || !diff)) return kvtStsNullPointer;
    return me_dsp.get_diff[size][diff_index(type, pred != nullptr)](
        cur, cur_step, ref, ref_step, diff, diff_step, pred, pred_step, rounding != kvtRoundNormal);
}

KvtStatus get_diff_b(ResidualSize size, const Kvt8u* cur, int cur_step, const Kvt8u* fwd, int fwd_step,
                     int fwd_type, const Kvt8u* bwd, int bwd_step, int bwd_type, Kvt16s* diff, int diff_step,
                     int rounding) {
    if (KVT_UNLIKELY(!cur || !fwd || !bwd || !diff)) return kvtStsNullPointer;
    return me_dsp.get_diff_b[size][pair_index(fwd_type, bwd_type)](
        cur, cur_step, fwd, fwd_step, bwd, bwd_step, diff, diff_step, rounding != kvtRoundNormal);
}

}  // namespace

#define KVT_GET_DIFF_FRONT(size)                                                                      \
    KvtStatus kvtiGetDiff##size##_8u16s_C1(                                                           \
        const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep, Kvt16s* pDstDiff, \
        int dstDiffStep, Kvt16s* pDstPredictor, int dstPredictorStep, int mcType, int roundControl) { \
        return get_diff(k##size, pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstDiff, dstDiffStep,     \
                        pDstPredictor, dstPredictorStep, mcType, roundControl);                       \
    }

#define KVT_GET_DIFF_B_FRONT(size)                                                                           \
    KvtStatus kvtiGetDiff##size##B_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRefF,     \
                                            int srcRefStepF, int mcTypeF, const Kvt8u* pSrcRefB,             \
                                            int srcRefStepB, int mcTypeB, Kvt16s* pDstDiff, int dstDiffStep, \
                                            int roundControl) {                                              \
        return get_diff_b(k##size, pSrcCur, srcCurStep, pSrcRefF, srcRefStepF, mcTypeF, pSrcRefB,            \
                          srcRefStepB, mcTypeB, pDstDiff, dstDiffStep, roundControl);                        \
    }

KVT_GET_DIFF_FRONT(16x16)
KVT_GET_DIFF_FRONT(16x8)
KVT_GET_DIFF_FRONT(8x16)
KVT_GET_DIFF_FRONT(8x8)
KVT_GET_DIFF_FRONT(8x4)

KVT_GET_DIFF_B_FRONT(16x16)
KVT_GET_DIFF_B_FRONT(16x8)
KVT_GET_DIFF_B_FRONT(8x16)
KVT_GET_DIFF_B_FRONT(8x8)
KVT_GET_DIFF_B_FRONT(8x4)

KvtStatus kvtiGetDiff4x4_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep,
                                  Kvt16s* pDstDiff, int dstDiffStep) {
    if (KVT_UNLIKELY(!pSrcCur || !pSrcRef || !pDstDiff)) return kvtStsNullPointer;
    return me_dsp.get_diff4x4(pSrcCur, srcCurStep, pSrcRef, srcRefStep, pDstDiff, dstDiffStep);
}

// A null residual pointer selects the sums-only variant.
KvtStatus kvtiSumsDiff16x16Blocks4x4_8u16s_C1(const Kvt8u* pSrc, int srcStep, const Kvt8u* pPred,
                                              int predStep, Kvt16s* pSums, Kvt16s* pDiff) {
    if (KVT_UNLIKELY(!pSrc || !pPred || !pSums)) return kvtStsNullPointer;
    return me_dsp.sums_diff16x16(pSrc, srcStep, pPred, predStep, pSums, pDiff);
}

KvtStatus kvtiSumsDiff8x8Blocks4x4_8u16s_C1(const Kvt8u* pSrc, int srcStep, const Kvt8u* pPred, int predStep,
                                            Kvt16s* pSums, Kvt16s* pDiff) {
    if (KVT_UNLIKELY(!pSrc || !pPred || !pSums)) return kvtStsNullPointer;
    return me_dsp.sums_diff8x8(pSrc, srcStep, pPred, predStep, pSums, pDiff);
}
