// Fronts of the MPEG-4 motion-vector functions. The readers check the cursor (-8), its offset
// (-105), their other pointers (-8), the alignment of the flag arrays (-97), then fcode (-98) or
// the temporal distances (-96); then one kernel runs.
#include <cstdint>

#include "bitstream/byte_cursor.h"
#include "common/kernel.h"
#include "kvtvc.h"
#include "mpeg4/motion_vector_dsp.h"

using namespace kvt;

namespace {

KVT_DSP_TABLE(MotionVectorDsp, init_motion_vector_dsp) dsp;

// -8 or -105 for a cursor the MPEG-4 readers reject, else 0.
KvtStatus check_cursor(Kvt8u* const* pp, const int* pOffset) {
    if (null_cursor(pp, pOffset)) return kvtStsNullPointer;
    if (*pOffset < 0 || *pOffset > 7) return kvtStsBadBitOffset;
    return kvtStsOk;
}

bool misaligned(const void* p) { return (reinterpret_cast<uintptr_t>(p) & 3) != 0; }
bool bad_fcode(int fcode) { return fcode < 1 || fcode > 7; }

// Checks shared by the two direct-mode functions after the cursor.
KvtStatus check_direct(const KvtMotionVec* col, const KvtMotionVec* fwd, const KvtMotionVec* bwd,
                       const Kvt32u* flag, int trb, int trd) {
    if (!col || !fwd || !bwd || !flag) return kvtStsNullPointer;
    if (misaligned(flag)) return kvtStsMisaligned;
    if (trb < 1 || trd < 1) return kvtStsBadTemporalDist;
    return kvtStsOk;
}

}  // namespace

KvtStatus kvtiDecodePadMV_PVOP_MPEG4(Kvt8u** ppBitStream, int* pBitOffset, const KvtMotionVec* pSrcMVLeftMB,
                                     const KvtMotionVec* pSrcMVUpperMB,
                                     const KvtMotionVec* pSrcMVUpperRightMB, KvtMotionVec* pDstMVCurMB,
                                     const Kvt32u* pValidLeft, const Kvt32u* pValidUpper,
                                     const Kvt32u* pValidUpperRight, const Kvt8u* pBlockPresent, int fcode,
                                     int mbType) {
    if (const KvtStatus st = check_cursor(ppBitStream, pBitOffset)) return st;
    if (!pSrcMVLeftMB || !pSrcMVUpperMB || !pSrcMVUpperRightMB || !pDstMVCurMB || !pValidLeft ||
        !pValidUpper || !pValidUpperRight || !pBlockPresent)
        return kvtStsNullPointer;
    if (misaligned(pValidLeft) || misaligned(pValidUpper) || misaligned(pValidUpperRight) ||
        misaligned(pBlockPresent))
        return kvtStsMisaligned;
    if (bad_fcode(fcode)) return kvtStsBadFcode;
    const MvNeighbours nb{pSrcMVLeftMB,     pSrcMVUpperMB,     pSrcMVUpperRightMB,
                          *pValidLeft != 0, *pValidUpper != 0, *pValidUpperRight != 0};
    return dsp.decode_pad_mv_pvop(ppBitStream, pBitOffset, nb, pDstMVCurMB, pBlockPresent, fcode, mbType);
}

KvtStatus kvtiDecodeMV_BVOP_Forward_MPEG4(Kvt8u** ppBitStream, int* pBitOffset, KvtMotionVec* pSrcDstMV,
                                          int fcode) {
    if (const KvtStatus st = check_cursor(ppBitStream, pBitOffset)) return st;
    if (!pSrcDstMV) return kvtStsNullPointer;
    if (bad_fcode(fcode)) return kvtStsBadFcode;
    return dsp.decode_mv(ppBitStream, pBitOffset, pSrcDstMV, fcode);
}

KvtStatus kvtiDecodeMV_BVOP_Backward_MPEG4(Kvt8u** ppBitStream, int* pBitOffset, KvtMotionVec* pSrcDstMV,
                                           int fcode) {
    return kvtiDecodeMV_BVOP_Forward_MPEG4(ppBitStream, pBitOffset, pSrcDstMV, fcode);
}

// The forward vector stays decoded when the backward one then fails.
KvtStatus kvtiDecodeMV_BVOP_Interpolate_MPEG4(Kvt8u** ppBitStream, int* pBitOffset, KvtMotionVec* pSrcDstMVF,
                                              KvtMotionVec* pSrcDstMVB, int fcodeForward, int fcodeBackward) {
    if (const KvtStatus st = check_cursor(ppBitStream, pBitOffset)) return st;
    if (!pSrcDstMVF || !pSrcDstMVB) return kvtStsNullPointer;
    if (bad_fcode(fcodeForward) || bad_fcode(fcodeBackward)) return kvtStsBadFcode;
    if (const KvtStatus st = dsp.decode_mv(ppBitStream, pBitOffset, pSrcDstMVF, fcodeForward)) return st;
    return dsp.decode_mv(ppBitStream, pBitOffset, pSrcDstMVB, fcodeBackward);
}

KvtStatus kvtiDecodeMV_BVOP_Direct_MPEG4(Kvt8u** ppBitStream, int* pBitOffset,
                                         const KvtMotionVec* pSrcMVColocated, KvtMotionVec* pDstMVForward,
                                         KvtMotionVec* pDstMVBackward, const Kvt32u* pColocatedFlag, int TRB,
                                         int TRD) {
    if (const KvtStatus st = check_cursor(ppBitStream, pBitOffset)) return st;
    if (const KvtStatus st =
            check_direct(pSrcMVColocated, pDstMVForward, pDstMVBackward, pColocatedFlag, TRB, TRD))
        return st;
    return dsp.decode_direct_mv(ppBitStream, pBitOffset, pSrcMVColocated, pDstMVForward, pDstMVBackward,
                                *pColocatedFlag != 0, TRB, TRD);
}

KvtStatus kvtiDecodeMV_BVOP_DirectSkip_MPEG4(const KvtMotionVec* pSrcMVColocated, KvtMotionVec* pDstMVForward,
                                             KvtMotionVec* pDstMVBackward, const Kvt32u* pColocatedFlag,
                                             int TRB, int TRD) {
    if (const KvtStatus st =
            check_direct(pSrcMVColocated, pDstMVForward, pDstMVBackward, pColocatedFlag, TRB, TRD))
        return st;
    return dsp.direct_mv(pSrcMVColocated, pDstMVForward, pDstMVBackward, *pColocatedFlag != 0, TRB, TRD, 0,
                         0);
}

KvtStatus kvtiPadMV_MPEG4(KvtMotionVec* pSrcDstMV, const Kvt8u* pBlockPresent) {
    if (!pSrcDstMV || !pBlockPresent) return kvtStsNullPointer;
    return dsp.pad_mv(pSrcDstMV, pBlockPresent);
}

KvtStatus kvtiComputeChromaMV_MPEG4(const KvtMotionVec* pSrcMV, KvtMotionVec* pDstMV) {
    if (!pSrcMV || !pDstMV) return kvtStsNullPointer;
    return dsp.chroma_mv(pSrcMV, pDstMV);
}

KvtStatus kvtiComputeChroma4MV_MPEG4(const KvtMotionVec* pSrcMV, KvtMotionVec* pDstMV,
                                     const Kvt8u* pBlockPresent) {
    if (!pSrcMV || !pDstMV || !pBlockPresent) return kvtStsNullPointer;
    return dsp.chroma4_mv(pSrcMV, pBlockPresent, pDstMV);
}

KvtStatus kvtiLimitMVToRect_MPEG4(const KvtMotionVec* pSrcMV, KvtMotionVec* pDstMV,
                                  const KvtRegionRect* pRectRef, Kvt32u xPos, Kvt32u yPos, int size) {
    if (!pSrcMV || !pDstMV || !pRectRef) return kvtStsNullPointer;
    if (size != 8 && size != 16) return kvtStsBadBlockSize;
    if (pRectRef->width < 2 * size || pRectRef->height < 2 * size) return kvtStsBadSize;
    return dsp.limit_mv_to_rect(pSrcMV, *pRectRef, xPos, yPos, size, pDstMV);
}
