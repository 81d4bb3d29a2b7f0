// Fronts of the MPEG-4 coefficient decoders and of the H.263 / MPEG-4 block decoders: each checks
// in the order its declaration documents, then makes one jump through the kernel table.
#include "bitstream/byte_cursor.h"
#include "common/kernel.h"
#include "kvtvc.h"
#include "mpeg4/coef_decode_dsp.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(CoefDecodeDsp, init_coef_decode_dsp) dsp;

bool bad_offset(const int* pBitOffset) { return *pBitOffset < 0 || *pBitOffset > 7; }
bool bad_qp(int qp) { return qp < 1 || qp > 31; }

// The zigzag decoders check the cursor addresses and the destination, then the offset, and only
// then the byte pointer itself.
KvtStatus zigzag_checks(Kvt8u** ppBitStream, int* pBitOffset, const Kvt16s* pDst) {
    if (!ppBitStream || !pBitOffset || !pDst) return kvtStsNullPointer;
    if (bad_offset(pBitOffset)) return kvtStsBadBitOffset;
    if (!*ppBitStream) return kvtStsNullPointer;
    return kvtStsOk;
}

// The MPEG-4 intra block decoders: pointers, step, quantizers, direction, block index, offset.
KvtStatus intra_mpeg4_checks(Kvt8u** pp, int* off, const Kvt8u* dst, int step, const Mpeg4IntraArgs& a) {
    if (null_cursor(pp, off) || !dst || !a.row || !a.col) return kvtStsNullPointer;
    if (step < 8) return kvtStsBadStep;
    if (bad_qp(a.qp) || bad_qp(a.pred_qp)) return kvtStsBadQuantMpeg4;
    if (a.pred_dir < 0 || a.pred_dir > 2) return kvtStsBadPredDir;
    if (a.block_index < 0 || a.block_index > 9) return kvtStsBadBlockIndex;
    if (bad_offset(off)) return kvtStsBadBitOffset;
    return kvtStsOk;
}
}  // namespace

KvtStatus kvtiDecodeVLC_IntraDCVLC_MPEG4_1u16s(Kvt8u** ppBitStream, int* pBitOffset, Kvt16s* pDC,
                                               int blockType) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDC) return kvtStsNullPointer;
    if (bad_offset(pBitOffset)) return kvtStsBadBitOffset;
    return dsp.intra_dc(ppBitStream, pBitOffset, pDC, blockType == 1);
}

KvtStatus kvtiDecodeVLCZigzag_IntraDCVLC_MPEG4_1u16s(Kvt8u** ppBitStream, int* pBitOffset, Kvt16s* pDst,
                                                     int predDir, int blockType) {
    const KvtStatus st = zigzag_checks(ppBitStream, pBitOffset, pDst);
    if (st != kvtStsOk) return st;
    if (predDir < 0 || predDir > 2) return kvtStsBadPredDir;
    return dsp.zigzag_intra_dc(ppBitStream, pBitOffset, pDst, predDir, blockType == 1);
}

KvtStatus kvtiDecodeVLCZigzag_IntraACVLC_MPEG4_1u16s(Kvt8u** ppBitStream, int* pBitOffset, Kvt16s* pDst,
                                                     int predDir) {
    const KvtStatus st = zigzag_checks(ppBitStream, pBitOffset, pDst);
    if (st != kvtStsOk) return st;
    if (predDir < 0 || predDir > 2) return kvtStsBadPredDir;
    return dsp.zigzag_intra_ac(ppBitStream, pBitOffset, pDst, predDir);
}

KvtStatus kvtiDecodeVLCZigzag_Inter_MPEG4_1u16s(Kvt8u** ppBitStream, int* pBitOffset, Kvt16s* pDst) {
    const KvtStatus st = zigzag_checks(ppBitStream, pBitOffset, pDst);
    if (st != kvtStsOk) return st;
    return dsp.zigzag_inter(ppBitStream, pBitOffset, pDst);
}

KvtStatus kvtiDecodeBlockCoef_IntraDCOnly_H263_1u8u(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst,
                                                    int step) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    if (step < 8) return kvtStsStepBelowBlock;
    return dsp.intra_dc_only_h263(ppBitStream, pBitOffset, pDst, step);
}

KvtStatus kvtiDecodeBlockCoef_Intra_H263_1u8u(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst, int step,
                                              int QP) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    if (step < 8) return kvtStsStepBelowBlock;
    if (bad_qp(QP)) return kvtStsBadQuantH263;
    return dsp.intra_h263(ppBitStream, pBitOffset, pDst, step, QP);
}

KvtStatus kvtiDecodeBlockCoef_Inter_H263_1u16s(Kvt8u** ppBitStream, int* pBitOffset, Kvt16s* pDst, int QP) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsBadQuantH263;
    return dsp.inter_h263(ppBitStream, pBitOffset, pDst, QP);
}

KvtStatus kvtiDecodeBlockCoef_AdvIntra_H263_1u8u(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst, int step,
                                                 Kvt16s* pCoefBufRow, Kvt16s* pCoefBufCol, int QP,
                                                 int predMode, int coded) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst || !pCoefBufRow || !pCoefBufCol)
        return kvtStsNullPointer;
    if (step < 8) return kvtStsStepBelowBlock;
    if (bad_qp(QP)) return kvtStsBadQuantH263;
    if (predMode < 1 || predMode > 3) return kvtStsBadAdvIntraMode;
    return dsp.adv_intra_h263(ppBitStream, pBitOffset, pDst, step, pCoefBufRow, pCoefBufCol, QP, predMode,
                              coded);
}

KvtStatus kvtiDecodeBlockCoef_Inter_MPEG4_1u16s(Kvt8u** ppBitStream, int* pBitOffset, Kvt16s* pDst, int QP,
                                                const Kvt8u* pQMatrix) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsBadQuantMpeg4;
    if (bad_offset(pBitOffset)) return kvtStsBadBitOffset;
    return dsp.inter_mpeg4(ppBitStream, pBitOffset, pDst, QP, pQMatrix);
}

KvtStatus kvtiDecodeBlockCoef_Intra_MPEG4_1u8u(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst, int step,
                                               Kvt16s* pCoefBufRow, Kvt16s* pCoefBufCol, int QP, int predQP,
                                               int predDir, int ACPredFlag, int blockIndex, int intraDCVLC,
                                               const Kvt8u* pQMatrix) {
    const Mpeg4IntraArgs a{pCoefBufRow, pCoefBufCol, QP,         predQP,  predDir,
                           ACPredFlag,  blockIndex,  intraDCVLC, pQMatrix};
    const KvtStatus st = intra_mpeg4_checks(ppBitStream, pBitOffset, pDst, step, a);
    if (st != kvtStsOk) return st;
    return dsp.intra_mpeg4[1](ppBitStream, pBitOffset, pDst, step, a);
}

KvtStatus kvtiDecodeBlockCoef_IntraDCOnly_MPEG4_1u8u(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst,
                                                     int step, Kvt16s* pCoefBufRow, Kvt16s* pCoefBufCol,
                                                     int QP, int predQP, int predDir, int ACPredFlag,
                                                     int blockIndex, int intraDCVLC, const Kvt8u* pQMatrix) {
    const Mpeg4IntraArgs a{pCoefBufRow, pCoefBufCol, QP,         predQP,  predDir,
                           ACPredFlag,  blockIndex,  intraDCVLC, pQMatrix};
    const KvtStatus st = intra_mpeg4_checks(ppBitStream, pBitOffset, pDst, step, a);
    if (st != kvtStsOk) return st;
    return dsp.intra_mpeg4[0](ppBitStream, pBitOffset, pDst, step, a);
}
