// Fronts of the H.263 macroblock header decoders: cursor and output pointers (-8), then one
// kernel. The offset is not checked by these readers.
#include "bitstream/byte_cursor.h"
#include "common/kernel.h"
#include "kvtvc.h"
#include "mpeg4/mb_header_dsp.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(MbHeaderDsp, init_mb_header_dsp) dsp;
}  // namespace

KvtStatus kvtiDecodeMCBPCIntra_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    return dsp.mcbpc_intra(ppBitStream, pBitOffset, pDst);
}

KvtStatus kvtiDecodeMCBPCInter_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    return dsp.mcbpc_inter(ppBitStream, pBitOffset, pDst);
}

KvtStatus kvtiDecodeMODB_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    return dsp.modb(ppBitStream, pBitOffset, pDst);
}

KvtStatus kvtiDecodeCBPY_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    return dsp.cbpy(ppBitStream, pBitOffset, pDst);
}

KvtStatus kvtiUpdateQuant_MQ_H263_1u32s_I(Kvt8u** ppBitStream, int* pBitOffset, Kvt32u* pQuant) {
    if (null_cursor(ppBitStream, pBitOffset) || !pQuant) return kvtStsNullPointer;
    return dsp.update_quant_mq(ppBitStream, pBitOffset, pQuant);
}
