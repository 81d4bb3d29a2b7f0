// Fronts of the H.263 motion-vector decoders: cursor and vector pointers (-8), then one kernel.
// Like the other H.263 readers they do not check the bit offset.
#include "bitstream/byte_cursor.h"
#include "common/kernel.h"
#include "kvtvc.h"
#include "mpeg4/h263_mv_dsp.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(H263MvDsp, init_h263_mv_dsp) dsp;
}  // namespace

KvtStatus kvtiDecodeMV_H263(Kvt8u** ppBitStream, int* pBitOffset, const KvtMotionVec* pSrcMVLeft,
                            const KvtMotionVec* pSrcMVUpper, const KvtMotionVec* pSrcMVUpperRight,
                            KvtMotionVec* pDstMV) {
    if (null_cursor(ppBitStream, pBitOffset) || !pSrcMVLeft || !pSrcMVUpper || !pSrcMVUpperRight || !pDstMV)
        return kvtStsNullPointer;
    return dsp.decode_mv(ppBitStream, pBitOffset, *pSrcMVLeft, *pSrcMVUpper, *pSrcMVUpperRight, pDstMV);
}

KvtStatus kvtiDecodeMV_TopBorder_H263(Kvt8u** ppBitStream, int* pBitOffset, const KvtMotionVec* pSrcMVLeft,
                                      KvtMotionVec* pDstMV) {
    if (null_cursor(ppBitStream, pBitOffset) || !pSrcMVLeft || !pDstMV) return kvtStsNullPointer;
    return dsp.decode_mv(ppBitStream, pBitOffset, *pSrcMVLeft, *pSrcMVLeft, *pSrcMVLeft, pDstMV);
}
