// Fronts of the H.263 macroblock header decoders: cursor and output pointers (-8), then one
// kernel. The offset is not checked by these readers.
#include "bitstream/byte_cursor.h"
#include "kvtvc.h"
#include "mpeg4/mb_header_kernels.h"

using namespace kvt;

KvtStatus kvtiDecodeMCBPCIntra_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    return decode_mcbpc_intra_h263_ref(ppBitStream, pBitOffset, pDst);
}

KvtStatus kvtiDecodeMCBPCInter_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    return decode_mcbpc_inter_h263_ref(ppBitStream, pBitOffset, pDst);
}

KvtStatus kvtiDecodeMODB_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    return decode_modb_h263_ref(ppBitStream, pBitOffset, pDst);
}

KvtStatus kvtiDecodeCBPY_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst) {
    if (null_cursor(ppBitStream, pBitOffset) || !pDst) return kvtStsNullPointer;
    return decode_cbpy_h263_ref(ppBitStream, pBitOffset, pDst);
}

KvtStatus kvtiUpdateQuant_MQ_H263_1u32s_I(Kvt8u** ppBitStream, int* pBitOffset, Kvt32u* pQuant) {
    if (null_cursor(ppBitStream, pBitOffset) || !pQuant) return kvtStsNullPointer;
    return update_quant_mq_h263_ref(ppBitStream, pBitOffset, pQuant);
}
