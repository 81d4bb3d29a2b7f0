// Fronts of the H.263 / MPEG-4 inverse quantizers and of the MPEG-4 intra AC/DC prediction:
// pointers (-8), counts (-6), then the parameters in the order each function documents.
#include <algorithm>

#include "common/kernel.h"
#include "kvtvc.h"
#include "mpeg4/quant_inv_dsp.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(QuantInvDsp, init_quant_inv_dsp) dsp;

constexpr int kLo = -2048, kHi = 2047;  // 8-bit video

bool bad_qp(int qp) { return qp < 1 || qp > 31; }
bool bad_bits(int bits) { return bits < 4 || bits > 12; }
bool bad_flag(int flag) { return flag != 0 && flag != 1; }
int hi_for_bits(int bits) { return (1 << (bits + 3)) - 1; }
int lo_for_bits(int bits) { return -(1 << (bits + 3)); }
// The First / Second intra forms: the DC scaler by QP with the flag set, else 8.
int dc_scale_for(int flag, int qp, int block_type) { return flag ? dc_scaler(qp, block_type == 1) : 8; }
// The whole-block forms do not check QP; it is kept inside 1..31.
int qp_in_range(int qp) { return std::min(std::max(qp, 1), 31); }
}  // namespace

KvtStatus kvtiPredictReconCoefIntra_MPEG4_16s(Kvt16s* pSrcDst, Kvt16s* pCoefBufRow, Kvt16s* pCoefBufCol,
                                              int curQP, int predQP, int predDir, int ACPredFlag,
                                              int blockType) {
    if (!pSrcDst || !pCoefBufRow || !pCoefBufCol) return kvtStsNullPointer;
    if (bad_qp(curQP) || bad_qp(predQP)) return kvtStsBadQuantMpeg4;
    if (predDir < 0 || predDir > 2) return kvtStsBadPredDir;
    return dsp.predict_intra(pSrcDst, pCoefBufRow, pCoefBufCol, curQP, predQP, predDir, ACPredFlag,
                             blockType == 1);
}

KvtStatus kvtiQuantInvIntra_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix, int blockType) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsBadQuantMpeg4;
    const int dc_scale = dc_scaler(QP, blockType == 1);
    if (pQMatrix) return dsp.matrix_intra(pSrcDst, QP, pQMatrix, dc_scale, kLo, kHi);
    return dsp.h263_intra(pSrcDst, 64, QP, dc_scale, kLo, kHi);
}

KvtStatus kvtiQuantInvInter_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsBadQuantMpeg4;
    if (pQMatrix) return dsp.matrix_inter(pSrcDst, QP, pQMatrix, kLo, kHi);
    return dsp.h263(pSrcDst, 64, QP, kLo, kHi);
}

KvtStatus kvtiQuantInvIntraFirst_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix, int dcScalerFlag,
                                             int blockType, int bitsPerPixel) {
    if (!pSrcDst || !pQMatrix) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsBadQuantMpeg4;
    if (bad_bits(bitsPerPixel)) return kvtStsBadBitsPerPixel;
    if (bad_flag(dcScalerFlag)) return kvtStsBadDCScalerFlag;
    return dsp.matrix_intra(pSrcDst, QP, pQMatrix, dc_scale_for(dcScalerFlag, QP, blockType),
                            lo_for_bits(bitsPerPixel), hi_for_bits(bitsPerPixel));
}

KvtStatus kvtiQuantInvIntraSecond_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, int dcScalerFlag, int blockType,
                                              int bitsPerPixel) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsBadQuantMpeg4;
    if (bad_flag(dcScalerFlag)) return kvtStsBadDCScalerFlag;
    if (bad_flag(blockType)) return kvtStsBadBlockType;
    if (bad_bits(bitsPerPixel)) return kvtStsBadBitsPerPixel;
    return dsp.h263_intra(pSrcDst, 64, QP, dc_scale_for(dcScalerFlag, QP, blockType),
                          lo_for_bits(bitsPerPixel), hi_for_bits(bitsPerPixel));
}

KvtStatus kvtiQuantInvInterFirst_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix,
                                             int bitsPerPixel) {
    if (!pSrcDst || !pQMatrix) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsBadQuantMpeg4;
    if (bad_bits(bitsPerPixel)) return kvtStsBadBitsPerPixel;
    return dsp.matrix_inter(pSrcDst, QP, pQMatrix, lo_for_bits(bitsPerPixel), hi_for_bits(bitsPerPixel));
}

KvtStatus kvtiQuantInvInterSecond_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, int bitsPerPixel) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (bad_qp(QP)) return kvtStsBadQuantMpeg4;
    if (bad_bits(bitsPerPixel)) return kvtStsBadBitsPerPixel;
    return dsp.h263(pSrcDst, 64, QP, lo_for_bits(bitsPerPixel), hi_for_bits(bitsPerPixel));
}

KvtStatus kvtiQuantInvIntra_Compact_H263_16s_I(Kvt16s* pSrcDst, int len, int QP) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (len < 1) return kvtStsBadSize;
    if (bad_qp(QP)) return kvtStsBadQuantH263;
    return dsp.h263_intradc(pSrcDst, len, QP);
}

KvtStatus kvtiQuantInvInter_Compact_H263_16s_I(Kvt16s* pSrcDst, int len, int QP) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (len < 1) return kvtStsBadSize;
    if (bad_qp(QP)) return kvtStsBadQuantH263;
    return dsp.h263(pSrcDst, len, QP, kLo, kHi);
}

KvtStatus kvtiQuantInvIntra_MPEG4_16s_C1I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix) {
    if (!pSrcDst || !pQMatrix) return kvtStsNullPointer;
    return dsp.matrix_intra(pSrcDst, qp_in_range(QP), pQMatrix, 1, kLo, kHi);
}

KvtStatus kvtiQuantInv_MPEG4_16s_C1I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (pQMatrix) return dsp.matrix_inter(pSrcDst, qp_in_range(QP), pQMatrix, kLo, kHi);
    return dsp.h263(pSrcDst, 64, qp_in_range(QP), kLo, kHi);
}

KvtStatus kvtiQuantInvIntra_H263_C1I(Kvt16s* pSrcDst, int QP) {
    if (!pSrcDst) return kvtStsNullPointer;
    return dsp.h263_intradc(pSrcDst, 64, qp_in_range(QP));
}

KvtStatus kvtiQuantInv_H263_C1I(Kvt16s* pSrcDst, int QP) {
    if (!pSrcDst) return kvtStsNullPointer;
    return dsp.h263(pSrcDst, 64, qp_in_range(QP), kLo, kHi);
}
