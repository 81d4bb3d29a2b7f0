/* kvtvc: video-coding primitives for MPEG-1/2, MPEG-4 visual, H.263, H.264 and DV codecs.
 *
 * Every function returns a KvtStatus (0 success, negative failure) unless noted. Arguments are
 * checked before anything is written: null pointers first, then sizes, then steps, then
 * parameter ranges; a failing call changes no output and no bit cursor.
 *
 * Bit cursors:
 *  - byte cursor (H.263 / MPEG-4): Kvt8u** ppBitStream, int* pBitOffset; offset 0..7 counts the
 *    bits already consumed in the current byte, most significant bit first. Readers may look up
 *    to 4 bytes past the last coded byte; writers store up to 5 bytes from the cursor.
 *  - word cursor (MPEG-1/2, VLC tables): Kvt32u** ppBitStream, int* pOffset; 32-bit words in
 *    native order, offset 31..0 names the next unread bit of the current word.
 */
#ifndef KVTVC_H
#define KVTVC_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32) && defined(KVT_SHARED_BUILD)
#define KVTAPI __declspec(dllexport)
#elif defined(__GNUC__)
#define KVTAPI __attribute__((visibility("default")))
#else
#define KVTAPI
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Scalar types -------------------------------------------------------------------------- */
typedef uint8_t Kvt8u;
typedef int8_t Kvt8s;
typedef uint16_t Kvt16u;
typedef int16_t Kvt16s;
typedef uint32_t Kvt32u;
typedef int32_t Kvt32s;

/* ---- Status codes -------------------------------------------------------------------------- */
typedef Kvt32s KvtStatus;
enum {
    kvtStsOk = 0,
    kvtStsNeighbourSubstituted = 11, /* warning: 128 stood in for a missing H.264 neighbour */
    kvtStsAllTransparent = -2,
    kvtStsBadArgument = -5,
    kvtStsBadSize = -6,
    kvtStsNullPointer = -8,
    kvtStsNoMemory = -9,
    kvtStsZeroQuantScale = -10,
    kvtStsOutOfRange = -11,
    kvtStsLevelOverflow = -13,
    kvtStsBadStep = -14,
    kvtStsBadCoeffCount = -72,
    kvtStsBadIntraDCCode = -73,
    kvtStsBadVlcCode = -74,
    kvtStsBadMvdCode = -75,
    kvtStsBadQuantH263 = -76,
    kvtStsBadFrameStep = -77,
    kvtStsBadExpansion = -78,
    kvtStsBadFrameHeight = -79,
    kvtStsBadFrameWidth = -80,
    kvtStsStepBelowMB = -81,
    kvtStsStepBelowBlock = -82,
    kvtStsBadAdvIntraMode = -83,
    kvtStsBadDCScalerFlag = -90,
    kvtStsBadBlockType = -91,
    kvtStsBadBitsPerPixel = -92,
    kvtStsBadPredDir = -93,
    kvtStsBadBlockSize = -95,
    kvtStsBadTemporalDist = -96,
    kvtStsMisaligned = -97,
    kvtStsBadFcode = -98,
    kvtStsBadDCSizeCode = -99,
    kvtStsBadCoeffCode = -100,
    kvtStsBadMvCode = -101,
    kvtStsBadBlockIndex = -103,
    kvtStsBadQuantMpeg4 = -104,
    kvtStsBadBitOffset = -105,
    kvtStsBadMcbpcIntra = -109,
    kvtStsBadMcbpcInter = -110,
    kvtStsBadCbpy = -111,
    kvtStsNeighbourMissing = -117,
    kvtStsStepBelow16 = -168,
    kvtStsStepBelow8 = -169
};

/* ---- Records ------------------------------------------------------------------------------- */
typedef struct {
    Kvt32s width;
    Kvt32s height;
} KvtRegionSize;

typedef struct {
    Kvt32s x;
    Kvt32s y;
    Kvt32s width;
    Kvt32s height;
} KvtRegionRect;

/* Motion vector; half-sample units in the H.263 / MPEG-4 functions. */
typedef struct {
    Kvt16s dx;
    Kvt16s dy;
} KvtMotionVec;

typedef struct {
    Kvt32s major;
    Kvt32s minor;
    Kvt32s majorBuild;
    Kvt32s build;
    char targetCpu[4];
    const char* name;
    const char* version;
    const char* buildDate;
} KvtLibraryVersion;

/* A built variable-length-code table (see kvtiVCHuffmanInitAlloc_32s). */
typedef Kvt32s KvtVCHuffmanSpec_32s;

/* ---- Named constants ----------------------------------------------------------------------- */
/* Half-sample phase codes (mcType). With a = ref(x, y), b = ref(x + 1, y), c = ref(x, y + 1) and
 * d = ref(x + 1, y + 1), the prediction of sample (x, y) averages the samples named here. */
enum {
    kvtMcFull = 0,     /* integer position: a */
    kvtMcVertHalf = 4, /* vertical half sample: a and c */
    kvtMcHorHalf = 8,  /* horizontal half sample: a and b */
    kvtMcBothHalf = 12 /* half sample in both directions: a, b, c and d */
};
/* Rounding controls (roundControl): kvtRoundLower takes one off the rounding term of every
 * half-sample average (MPEG-4 vop_rounding_type 1, H.263 RTYPE 1). */
enum { kvtRoundNormal = 0, kvtRoundLower = 1 };
/* Threshold relations (relOp of kvtsThreshold_16s_I): the side of the level that is clipped. */
enum {
    kvtCmpLess = 0,   /* values below the level are raised to it */
    kvtCmpGreater = 4 /* values above the level are lowered to it */
};

/* ==== Library frame ========================================================================= */
/* Version, aligned memory and vector helpers. Lengths count elements; a null pointer returns -8
 * (kvtStsNullPointer) and then len < 1 or an empty region -6 (kvtStsBadSize); a region's step is
 * checked last (-14). Nothing is read or written outside [0, len) or the region. */

/* Static, read-only version record of this library. */
KVTAPI const KvtLibraryVersion* kvtvcGetLibVersion(void);
/* 32-byte aligned block of len bytes; NULL when len < 1 or out of memory. */
KVTAPI Kvt8u* kvtsMalloc_8u(int len);
/* Releases a kvtsMalloc_8u block; NULL is ignored. */
KVTAPI void kvtsFree(void* ptr);
/* pDst[0..len) = val. */
KVTAPI KvtStatus kvtsSet_8u(Kvt8u val, Kvt8u* pDst, int len);
/* pDst[0..len) = val. */
KVTAPI KvtStatus kvtsSet_16s(Kvt16s val, Kvt16s* pDst, int len);
/* pDst[0..len) = 0. */
KVTAPI KvtStatus kvtsZero_16s(Kvt16s* pDst, int len);
/* pDst[0..len) = pSrc[0..len); the ranges must not overlap. */
KVTAPI KvtStatus kvtsCopy_8u(const Kvt8u* pSrc, Kvt8u* pDst, int len);
/* pSrcDst[i] = sat16(pSrcDst[i] * val / 2^scaleFactor), rounded half to even. */
KVTAPI KvtStatus kvtsMulC_16s_ISfs(Kvt16s val, Kvt16s* pSrcDst, int len, int scaleFactor);
/* kvtCmpGreater: values above level become level; any other relOp (kvtCmpLess): values below. */
KVTAPI KvtStatus kvtsThreshold_16s_I(Kvt16s* pSrcDst, int len, Kvt16s level, int relOp);
/* Fills a width x height region of step dstStep bytes with val. */
KVTAPI KvtStatus kvtiSet_8u_C1R(Kvt8u val, Kvt8u* pDst, int dstStep, KvtRegionSize roiSize);
/* *pCount = number of zero coefficients among the 64 of pSrc. */
KVTAPI KvtStatus kvtiCountZeros8x8_16s_C1(const Kvt16s* pSrc, Kvt32u* pCount);

/* ==== Word bit cursor and VLC tables ======================================================== */
/* A code description (pInputTable) is an array of Kvt32s:
 *   word 0          unused;
 *   word 1          L, the number of lookup levels (with L < 1 no code is placed, every lookup of
 *                   the root, word 2 bits wide, misses);
 *   words 2..L+1    the width in bits of each level, root first; a code is looked up w0 bits at a
 *                   time, then w1 bits in the sub-table those bits lead to, and so on;
 *   then            for code lengths 1, 2, 3, ... in turn: a count n (0 allowed) and n records,
 *                   (code, value) for kvtiVCHuffmanInitAlloc_32s, (code, run, level) for
 *                   kvtiVCHuffmanInitAllocRL_32s, code being the code's bits right-aligned (first bit
 *                   most significant); a negative word in place of a count ends the description.
 * Codes longer than all levels together are ignored. A code's walk stays in the current table at
 * a shorter code's leaf and, for kvtiVCHuffmanInitAlloc_32s, at a sub-table whose header is a word
 * index that is a multiple of 256; a code whose entries would then lie past that table's end is
 * ignored too. A decoded plain value is the low 24 bits of value, sign-extended; a run/level code
 * decodes to level * 256 + (run & 255), level -32768..32767; a code that decodes to 61681 reads as
 * a miss.
 * Capacity: a built table is one fixed block, 16384 words (64 KiB) for plain descriptions and
 * 262144 words (1 MiB) for run/level ones. It holds word 0, the 2^w0 root entries, and one header
 * word plus 2^w entries for every sub-table the codes open (w the width of its level). A
 * description that needs more words is invalid and is not checked, by design: building it writes
 * past the block. A miss (-74, kvtStsBadVlcCode) stores 61681 and leaves the cursor after the bits
 * the lookups read, the one case where a failing call moves a cursor. Look-ahead: each level reads
 * its full width, so a decode may read up to the sum of the widths from the cursor whatever the
 * code's length; it reads only the words those bits lie in. */

/* Allocates and builds the lookup table of a (code, value) description; free it with
 * kvtiVCHuffmanFree_32s. -8 on a null pointer, -9 when out of memory. */
KVTAPI KvtStatus kvtiVCHuffmanInitAlloc_32s(const Kvt32s* pInputTable, KvtVCHuffmanSpec_32s** ppVLCSpec);
/* As kvtiVCHuffmanInitAlloc_32s for a (code, run, level) description. */
KVTAPI KvtStatus kvtiVCHuffmanInitAllocRL_32s(const Kvt32s* pInputTable, KvtVCHuffmanSpec_32s** ppVLCSpec);
/* Reads one code at the word cursor and stores its value; -74 (and 61681) when it is not in the table. */
KVTAPI KvtStatus kvtiVCHuffmanDecodeOne_1u32s(Kvt32u** ppBitStream, int* pOffset, Kvt32s* pDst,
                                              const KvtVCHuffmanSpec_32s* pVLCSpec);
/* Releases a built table and sets *ppVLCSpec to NULL; a NULL table is ignored. */
KVTAPI KvtStatus kvtiVCHuffmanFree_32s(KvtVCHuffmanSpec_32s** ppVLCSpec);

/* ==== H.263 / MPEG-4 bitstream: byte bit cursor, macroblock headers, motion vectors ========= */
/* The decoders take the byte cursor (ppBitStream, pBitOffset) first and leave it just past what
 * they consumed; on any failure the cursor and the outputs are unchanged. A null ppBitStream,
 * pBitOffset or *ppBitStream returns -8. The H.263 readers do not check the offset (keep it 0..7);
 * the MPEG-4 readers return -105 for an offset outside 0..7. Vectors are in half samples. */

/* Bit masks: entry i = 2^i - 1 (i = 0..32); the two tables are identical. */
KVTAPI extern const Kvt32u _kvtGetBitsMask[33];
KVTAPI extern const Kvt32u ownvBitMask[33];

/* -- H.263 macroblock header codes (1 to 9 bits; stuffing gives 255) -- */
/* MCBPC of an I-picture: *pDst = type (bits 0..2) | CBPC << 4, or 255; -109 on a bad code. */
KVTAPI KvtStatus kvtiDecodeMCBPCIntra_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst);
/* MCBPC of a P-picture (no INTER4V+Q): as above; -110 on a bad code. */
KVTAPI KvtStatus kvtiDecodeMCBPCInter_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst);
/* PB-frame MODB: *pDst = 0, 2 (MVDB follows) or 3 (CBPB and MVDB follow). */
KVTAPI KvtStatus kvtiDecodeMODB_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst);
/* CBPY in its inter reading (bit 3 = first luma block); -111 on a bad code. */
KVTAPI KvtStatus kvtiDecodeCBPY_H263(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst);
/* Annex T DQUANT: 1x changes *pQuant by the table, 0xxxxx sets it; never clamped. */
KVTAPI KvtStatus kvtiUpdateQuant_MQ_H263_1u32s_I(Kvt8u** ppBitStream, int* pBitOffset, Kvt32u* pQuant);

/* -- H.263 motion vectors (baseline: MVD of Table 14, result wrapped into [-16, 15.5]) -- */
/* *pDstMV = median(left, above, above-right) + MVD (H.263 6.1.1). The caller passes the
 * candidate vectors of the macroblocks (or, with four vectors, the blocks) as the standard picks
 * them: a zero vector for a candidate outside the picture on the left or right, or intra or not
 * coded. -75 on an invalid MVD code. pDstMV may be one of the sources. */
KVTAPI KvtStatus kvtiDecodeMV_H263(Kvt8u** ppBitStream, int* pBitOffset, const KvtMotionVec* pSrcMVLeft,
                                   const KvtMotionVec* pSrcMVUpper, const KvtMotionVec* pSrcMVUpperRight,
                                   KvtMotionVec* pDstMV);
/* First row of a picture or of a GOB with a header: the above candidates are taken as the left
 * one, so the predictor is pSrcMVLeft itself (zero vector at the left border). -75 as above. */
KVTAPI KvtStatus kvtiDecodeMV_TopBorder_H263(Kvt8u** ppBitStream, int* pBitOffset,
                                             const KvtMotionVec* pSrcMVLeft, KvtMotionVec* pDstMV);

/* -- MPEG-4 motion vectors (ISO/IEC 14496-2 7.6.3); sets are 4 vectors, blocks 0..3 -- */
/* P-VOP: one (mbType not 2 or 5) or four vectors against the median predictor, then padding of
 * absent blocks. The valid flags (nonzero: neighbour usable) and pBlockPresent (4 bytes, nonzero:
 * block not transparent) must be 4-byte aligned (-97); fcode 1..7 (-98); -101 on a bad code. */
KVTAPI KvtStatus kvtiDecodePadMV_PVOP_MPEG4(Kvt8u** ppBitStream, int* pBitOffset,
                                            const KvtMotionVec* pSrcMVLeftMB,
                                            const KvtMotionVec* pSrcMVUpperMB,
                                            const KvtMotionVec* pSrcMVUpperRightMB, KvtMotionVec* pDstMVCurMB,
                                            const Kvt32u* pValidLeft, const Kvt32u* pValidUpper,
                                            const Kvt32u* pValidUpperRight, const Kvt8u* pBlockPresent,
                                            int fcode, int mbType);
/* B-VOP forward vector: *pSrcDstMV (predictor) += decoded difference, wrapped by fcode. */
KVTAPI KvtStatus kvtiDecodeMV_BVOP_Forward_MPEG4(Kvt8u** ppBitStream, int* pBitOffset,
                                                 KvtMotionVec* pSrcDstMV, int fcode);
/* B-VOP backward vector: as the forward one. */
KVTAPI KvtStatus kvtiDecodeMV_BVOP_Backward_MPEG4(Kvt8u** ppBitStream, int* pBitOffset,
                                                  KvtMotionVec* pSrcDstMV, int fcode);
/* B-VOP interpolated: forward vector, then backward vector, each with its own fcode. */
KVTAPI KvtStatus kvtiDecodeMV_BVOP_Interpolate_MPEG4(Kvt8u** ppBitStream, int* pBitOffset,
                                                     KvtMotionVec* pSrcDstMVF, KvtMotionVec* pSrcDstMVB,
                                                     int fcodeForward, int fcodeBackward);
/* B-VOP direct mode: delta vector, then forward/backward sets from the co-located set scaled by
 * TRB/TRD (*pColocatedFlag nonzero) or equal to the delta (zero); TRB, TRD >= 1 (-96). */
KVTAPI KvtStatus kvtiDecodeMV_BVOP_Direct_MPEG4(Kvt8u** ppBitStream, int* pBitOffset,
                                                const KvtMotionVec* pSrcMVColocated,
                                                KvtMotionVec* pDstMVForward, KvtMotionVec* pDstMVBackward,
                                                const Kvt32u* pColocatedFlag, int TRB, int TRD);
/* B-VOP direct mode with a zero delta; reads no bits. */
KVTAPI KvtStatus kvtiDecodeMV_BVOP_DirectSkip_MPEG4(const KvtMotionVec* pSrcMVColocated,
                                                    KvtMotionVec* pDstMVForward, KvtMotionVec* pDstMVBackward,
                                                    const Kvt32u* pColocatedFlag, int TRB, int TRD);
/* Replaces the vectors of absent blocks (pBlockPresent[b] == 0) from their present neighbours. */
KVTAPI KvtStatus kvtiPadMV_MPEG4(KvtMotionVec* pSrcDstMV, const Kvt8u* pBlockPresent);
/* Chroma vector of a one-vector macroblock. */
KVTAPI KvtStatus kvtiComputeChromaMV_MPEG4(const KvtMotionVec* pSrcMV, KvtMotionVec* pDstMV);
/* Chroma vector of a four-vector macroblock from its present blocks. */
KVTAPI KvtStatus kvtiComputeChroma4MV_MPEG4(const KvtMotionVec* pSrcMV, KvtMotionVec* pDstMV,
                                            const Kvt8u* pBlockPresent);
/* Keeps the size x size block at (xPos, yPos) moved by the vector inside *pRectRef; size 8 or 16
 * (-95), rectangle at least twice the size in both directions (-6). */
KVTAPI KvtStatus kvtiLimitMVToRect_MPEG4(const KvtMotionVec* pSrcMV, KvtMotionVec* pDstMV,
                                         const KvtRegionRect* pRectRef, Kvt32u xPos, Kvt32u yPos, int size);

/* ==== Motion estimation: block metrics ====================================================== */
/* Blocks are a pointer to the top-left sample and a step in bytes, current block first; no
 * alignment is required and steps may be negative. mcType is a half-sample phase code (kvtMc*);
 * a phase reads one column (kvtMcHorHalf, kvtMcBothHalf) and one row (kvtMcVertHalf,
 * kvtMcBothHalf) of the reference beyond the block, nothing else beyond it. A null pointer
 * returns -8 unless noted; steps, phases and rounding controls are not rejected (how each
 * function reads an out-of-range value is said below), so most calls cannot fail otherwise. */

/* -- Residuals, residual sums and texture error -- */
/* Residual = current - prediction. The half-sample averages are (a + c + k1) >> 1, (a + b + k1) >> 1
 * and (a + b + c + d + k2) >> 2 with r = 0 for kvtRoundNormal and 1 for any other roundControl:
 * narrow form k1 = 1 - r, k2 = 2 - r; wide form k1 = 2 - r, k2 = 3 - r. The phase is mcType & 12. */
/* Residual of a 16x16 block against a half-sample prediction (wide rounding form); mcType & 12
 * selects the phase, pDstPredictor may be NULL, otherwise it receives the prediction. */
KVTAPI KvtStatus kvtiGetDiff16x16_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                           int srcRefStep, Kvt16s* pDstDiff, int dstDiffStep,
                                           Kvt16s* pDstPredictor, int dstPredictorStep, int mcType,
                                           int roundControl);
/* As kvtiGetDiff16x16_8u16s_C1 for a 16x8 block (wide rounding form). */
KVTAPI KvtStatus kvtiGetDiff16x8_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                          int srcRefStep, Kvt16s* pDstDiff, int dstDiffStep,
                                          Kvt16s* pDstPredictor, int dstPredictorStep, int mcType,
                                          int roundControl);
/* As kvtiGetDiff16x16_8u16s_C1 for an 8x16 block (narrow rounding form). */
KVTAPI KvtStatus kvtiGetDiff8x16_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                          int srcRefStep, Kvt16s* pDstDiff, int dstDiffStep,
                                          Kvt16s* pDstPredictor, int dstPredictorStep, int mcType,
                                          int roundControl);
/* As kvtiGetDiff16x16_8u16s_C1 for an 8x8 block (narrow rounding form). */
KVTAPI KvtStatus kvtiGetDiff8x8_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                         int srcRefStep, Kvt16s* pDstDiff, int dstDiffStep,
                                         Kvt16s* pDstPredictor, int dstPredictorStep, int mcType,
                                         int roundControl);
/* As kvtiGetDiff16x16_8u16s_C1 for an 8x4 block (narrow rounding form). */
KVTAPI KvtStatus kvtiGetDiff8x4_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                         int srcRefStep, Kvt16s* pDstDiff, int dstDiffStep,
                                         Kvt16s* pDstPredictor, int dstPredictorStep, int mcType,
                                         int roundControl);
/* Residual current - reference of a 4x4 block at the integer position. */
KVTAPI KvtStatus kvtiGetDiff4x4_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                         int srcRefStep, Kvt16s* pDstDiff, int dstDiffStep);
/* Residual of a 16x16 block against (F + B) >> 1 of two narrow-form half-sample predictions F and B. */
KVTAPI KvtStatus kvtiGetDiff16x16B_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRefF,
                                            int srcRefStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                            int srcRefStepB, int mcTypeB, Kvt16s* pDstDiff, int dstDiffStep,
                                            int roundControl);
/* As kvtiGetDiff16x16B_8u16s_C1 for a 16x8 block. */
KVTAPI KvtStatus kvtiGetDiff16x8B_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRefF,
                                           int srcRefStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                           int srcRefStepB, int mcTypeB, Kvt16s* pDstDiff, int dstDiffStep,
                                           int roundControl);
/* As kvtiGetDiff16x16B_8u16s_C1 for an 8x16 block. */
KVTAPI KvtStatus kvtiGetDiff8x16B_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRefF,
                                           int srcRefStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                           int srcRefStepB, int mcTypeB, Kvt16s* pDstDiff, int dstDiffStep,
                                           int roundControl);
/* As kvtiGetDiff16x16B_8u16s_C1 for an 8x8 block. */
KVTAPI KvtStatus kvtiGetDiff8x8B_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRefF,
                                          int srcRefStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                          int srcRefStepB, int mcTypeB, Kvt16s* pDstDiff, int dstDiffStep,
                                          int roundControl);
/* As kvtiGetDiff16x16B_8u16s_C1 for an 8x4 block. */
KVTAPI KvtStatus kvtiGetDiff8x4B_8u16s_C1(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRefF,
                                          int srcRefStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                          int srcRefStepB, int mcTypeB, Kvt16s* pDstDiff, int dstDiffStep,
                                          int roundControl);
/* Sums of current - prediction over the sixteen 4x4 sub-blocks of a 16x16 block (raster order);
 * pDiff may be NULL, otherwise it receives the residual as sixteen 4x4 tiles of 16 values. */
KVTAPI KvtStatus kvtiSumsDiff16x16Blocks4x4_8u16s_C1(const Kvt8u* pSrc, int srcStep, const Kvt8u* pPred,
                                                     int predStep, Kvt16s* pSums, Kvt16s* pDiff);
/* As kvtiSumsDiff16x16Blocks4x4_8u16s_C1 for the four 4x4 sub-blocks of an 8x8 block. */
KVTAPI KvtStatus kvtiSumsDiff8x8Blocks4x4_8u16s_C1(const Kvt8u* pSrc, int srcStep, const Kvt8u* pPred,
                                                   int predStep, Kvt16s* pSums, Kvt16s* pDiff);
/* 8x8 residual source - prediction (64 contiguous samples) and its SAD; -5 on a NULL pointer. */
KVTAPI KvtStatus kvtiComputeTextureErrorBlock_SAD_8u16s(const Kvt8u* pSrc, int srcStep, const Kvt8u* pSrcPred,
                                                        Kvt16s* pDstDiff, Kvt32s* pDstSAD);
/* 8x8 residual source - prediction (64 contiguous samples); -5 on a NULL pointer. */
KVTAPI KvtStatus kvtiComputeTextureErrorBlock_8u16s(const Kvt8u* pSrc, int srcStep, const Kvt8u* pSrcPred,
                                                    Kvt16s* pDstDiff);

/* -- SAD, squared differences, variances, means and edges -- */
/* Block pointers and steps come first (current, then reference); no step is checked. mcType is the
 * half-sample phase 0 (integer), 4 (vertical half), 8 (horizontal half) or 12 (both), fixed
 * rounding: (a + b + 1) >> 1 and (a + b + c + d + 2) >> 2. The block is read plus one column
 * (phases 8, 12) and one row (phases 4, 12) of the reference. */
/* *pDstSAD = 16x16 SAD; only the blocks are checked (pDstSAD is written unchecked); other mcType values use
 * mcType & 12. */
KVTAPI KvtStatus kvtiSAD16x16_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                    int srcRefStep, Kvt32s* pDstSAD, int mcType);
/* *pDstSAD = 8x8 SAD; only the blocks are checked; mcType 0, 4 and 8 as above, any other value means both
 * halves. */
KVTAPI KvtStatus kvtiSAD8x8_8u32s_C1R(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                      int srcRefStep, Kvt32s* pDstSAD, int mcType);
/* *pDstSAD = 4x4 SAD at the integer position. */
KVTAPI KvtStatus kvtiSAD4x4_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef, int srcRefStep,
                                  Kvt32s* pDstSAD);
/* SADs of the four 8x8 quarters (top-left, top-right, bottom-left, bottom-right), integer position. */
KVTAPI KvtStatus kvtiSAD16x16Blocks8x8_8u16u(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                             int srcRefStep, Kvt16u* pDstSAD);
/* SADs of the sixteen 4x4 sub-blocks in raster order, integer position. */
KVTAPI KvtStatus kvtiSAD16x16Blocks4x4_8u16u(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                             int srcRefStep, Kvt16u* pDstSAD);
/* *pSqrDiff = 16x16 sum of squared differences; an mcType other than 0, 4, 8, 12 returns 0 and writes
 * nothing. */
KVTAPI KvtStatus kvtiSqrDiff16x16_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                        int srcRefStep, int mcType, Kvt32s* pSqrDiff);
/* *pSqrDiff = 16x16 sum of (((F + B + 1) >> 1) - current)^2; each type's bits 8 and 4 pick its phase. */
KVTAPI KvtStatus kvtiSqrDiff16x16B_8u32s(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRefF,
                                         int srcRefStepF, int mcTypeF, const Kvt8u* pSrcRefB, int srcRefStepB,
                                         int mcTypeB, Kvt32s* pSqrDiff);
/* *pVar = Q - ((S * S) >> 8) over a 16x16 block (S sum, Q sum of squares). */
KVTAPI KvtStatus kvtiVariance16x16_8u32s(const Kvt8u* pSrc, int srcStep, Kvt32s* pVar);
/* 8x8: *pMean = S (the sum itself), *pVar = (Q - (S >> 3)^2) >> 6. */
KVTAPI KvtStatus kvtiVarMean8x8_8u32s_C1R(const Kvt8u* pSrc, int srcStep, Kvt32s* pVar, Kvt32s* pMean);
/* 8x8 of 16-bit values, step in bytes: column sums saturate at 16 bits; *pMean = S, *pVar = (Q - M) >> 6 with
 * m = S / 8, M = m^2 (+1 if m < 0). */
KVTAPI KvtStatus kvtiVarMean8x8_16s32s_C1R(const Kvt16s* pSrc, int srcStep, Kvt32s* pVar, Kvt32s* pMean);
/* Per 8x8 quarter k of the residual: pMean[k] = (pSrcSum[k] - prediction sum) / 8, pVar[k] = (Q - M) >> 6 or
 * 0, M = mean^2 (+1 if mean < 0); a bad mcType returns 0 and writes nothing. */
KVTAPI KvtStatus kvtiVarMeanDiff16x16_8u32s_C1R(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                                int srcRefStep, const Kvt32s* pSrcSum, Kvt32s* pVar,
                                                Kvt32s* pMean, int mcType);
/* As kvtiVarMeanDiff16x16_8u32s_C1R for the two quarters of a 16x8 block, with M = mean^2 exactly. */
KVTAPI KvtStatus kvtiVarMeanDiff16x8_8u32s_C1R(const Kvt8u* pSrcCur, int srcCurStep, const Kvt8u* pSrcRef,
                                               int srcRefStep, const Kvt32s* pSrcSum, Kvt32s* pVar,
                                               Kvt32s* pMean, int mcType);
/* *pDst = sum of |sample - ((S + 128) >> 8)| over a 16x16 block; only pSrc is checked. */
KVTAPI KvtStatus kvtiMeanAbsDev16x16_8u32s_C1R(const Kvt8u* pSrc, int srcStep, Kvt32s* pDst);
/* *pRes = 1 when the flagged-position count of the 16x16 block passes countThreshold row by row (wrap-around
 * compare), else 0. */
KVTAPI KvtStatus kvtiEdgesDetect16x16_8u_C1R(const Kvt8u* pSrc, int srcStep, Kvt8u diffThreshold,
                                             Kvt8u countThreshold, Kvt8u* pRes);

/* ---- 8x8 DCT family (MPEG-1/2, H.263, MPEG-4). IEEE Std 1180 accuracy. ---- */
/* Blocks are 64 signed 16-bit values in raster order (index 8 x row + column); the scaling is the
 * orthonormal 2-D DCT (forward DC = sum / 8, no level shift). The inverse transforms meet IEEE Std
 * 1180-1990 for coefficients in -2048..2047; the reduced forms give the full form's result bit for
 * bit when only the top-left 4x4 (2x2) coefficients are nonzero and ignore the others. The forward
 * transforms are within 1 of the rounded exact DCT for inputs of magnitude up to 723 (larger ones
 * saturate). Results are the same on every processor. Null pointers: -8; a step below its minimum:
 * -14 (-82 for kvtiDCTInv_8x8_16s8u). Pixel rows are written top to bottom. */
/* Inverse DCT in place, results saturated to -32768..32767. */
KVTAPI KvtStatus kvtiDCT8x8Inv_16s_C1I(Kvt16s* pSrcDst);
/* As kvtiDCT8x8Inv_16s_C1I when only the top-left 4x4 coefficients are nonzero (the others are ignored). */
KVTAPI KvtStatus kvtiDCT8x8Inv_4x4_16s_C1I(Kvt16s* pSrcDst);
/* As kvtiDCT8x8Inv_16s_C1I when only the top-left 2x2 coefficients are nonzero (the others are ignored). */
KVTAPI KvtStatus kvtiDCT8x8Inv_2x2_16s_C1I(Kvt16s* pSrcDst);
/* Inverse DCT of pSrc to 8x8 pixels saturated to 0..255, rows dstStep bytes apart (dstStep >= 1). */
KVTAPI KvtStatus kvtiDCT8x8Inv_16s8u_C1R(const Kvt16s* pSrc, Kvt8u* pDst, int dstStep);
/* Forward DCT in place. */
KVTAPI KvtStatus kvtiDCT8x8Fwd_16s_C1I(Kvt16s* pSrcDst);
/* Forward DCT of 8x8 pixels, rows srcStep bytes apart (srcStep >= 1), into 64 coefficients. */
KVTAPI KvtStatus kvtiDCT8x8Fwd_8u16s_C1R(const Kvt8u* pSrc, int srcStep, Kvt16s* pDst);
/* H.263 form of kvtiDCT8x8Inv_16s8u_C1R: the step must be at least 8 (-82). */
KVTAPI KvtStatus kvtiDCTInv_8x8_16s8u(const Kvt16s* pSrc, Kvt8u* pDst, int dstStep);

/* (end of section) */

/* ---- MPEG-4 and H.263 coefficient decoding, AC/DC prediction and inverse quantization. ---- */
/* Coefficient blocks are 64 Kvt16s in raster order (8 x row + column) unless "scan order" is said.
 * The bitstream decoders take the byte cursor first and leave it just past the block on success;
 * on a data error they return it (-72/-74 H.263 codes, -99/-100 MPEG-4 codes) with the cursor
 * where the call began (after the DC for the separate-DC forms) and no output written, except
 * where a line says otherwise. MPEG-4 readers return -105 for an offset outside 0..7.
 *
 * MPEG-4 intra prediction state (ISO/IEC 14496-2 7.4.3), kept by the caller:
 *  - pCoefBufRow: one group of 8 Kvt16s per block column of the picture, plus one group before
 *    column 0. The current block's group holds the reconstructed DC (entry 0) and the first-row
 *    quantized AC (1..7) of the block above; entry -8 (the left column's group) holds the left
 *    block's reconstructed DC. A negative DC marks a neighbour that is not available (outside the
 *    VOP or the video packet): it predicts as 1024. Reset each group to DC -1, AC 0 at the start of
 *    a video packet, and the group before column 0 likewise.
 *  - pCoefBufCol: 8 Kvt16s per row of blocks (two for luminance: blocks 0-1 and 2-3, one for each
 *    chrominance component); entries 1..7 hold the first-column quantized AC of the block to the
 *    left (zero them at the left edge of the picture and at the start of a video packet).
 *  - predDir: 0 no prediction (DC from 1024), 1 from the left block, 2 from the block above. With
 *    left DC A, above-left B and above C (1024 when not available): 2 when |A - B| < |B - C|,
 *    else 1 (ISO/IEC 14496-2 7.4.3.1). With AC prediction on, direction 1 decodes with the
 *    alternate-vertical scan and 2 with the alternate-horizontal one; otherwise the zigzag scan.
 *  - predQP: the quantizer of the block the prediction comes from (current QP when predDir is 0). */

/* Scan tables (64 raster positions each). The _kvt names follow the AC prediction direction that
 * selects them: _kvtVerticalZigzag is the alternate-horizontal order, _kvtHorizontalZigzag the
 * alternate-vertical one. */
KVTAPI extern const Kvt8u _kvtClassicalZigzag[64];
KVTAPI extern const Kvt8u _kvtHorizontalZigzag[64];
KVTAPI extern const Kvt8u _kvtVerticalZigzag[64];
KVTAPI extern const Kvt8u ZigzagC[64]; /* classical zigzag */
KVTAPI extern const Kvt8u ZigzagH[64]; /* alternate horizontal */
KVTAPI extern const Kvt8u ZigzagV[64]; /* alternate vertical */
/* MPEG-4 escape limits, index last * 64 + run (LMAX) or last * 64 + |level| (RMAX + 1); 0 where
 * the intra (Table B-16) or inter (Table B-17) code table has no such event. */
KVTAPI extern const Kvt8u _kvtLMAXintra[128];
KVTAPI extern const Kvt8u _kvtLevelMAXinter[128];
KVTAPI extern const Kvt8u _kvtRunMAXintra[128];
KVTAPI extern const Kvt8u _kvtRMAXinter[128];

/* -- Inverse scans: pDst[scan[i]] = pSrc[i] -- */
/* All 64 coefficients in the alternate-horizontal order. */
KVTAPI KvtStatus kvtiZigzagInv_Horizontal_16s(const Kvt16s* pSrc, Kvt16s* pDst);
/* All 64 coefficients in the alternate-vertical order. */
KVTAPI KvtStatus kvtiZigzagInv_Vertical_16s(const Kvt16s* pSrc, Kvt16s* pDst);
/* The first len (1..64, else -72) scan positions, zigzag order; other pDst entries are kept. */
KVTAPI KvtStatus kvtiZigzagInvClassical_Compact_16s(const Kvt16s* pSrc, int len, Kvt16s* pDst);
/* As kvtiZigzagInvClassical_Compact_16s in the alternate-horizontal order. */
KVTAPI KvtStatus kvtiZigzagInvHorizontal_Compact_16s(const Kvt16s* pSrc, int len, Kvt16s* pDst);
/* As kvtiZigzagInvClassical_Compact_16s in the alternate-vertical order. */
KVTAPI KvtStatus kvtiZigzagInvVertical_Compact_16s(const Kvt16s* pSrc, int len, Kvt16s* pDst);

/* -- MPEG-4 coefficient codes to quantized coefficients (Tables B-13, B-14, B-16, B-17) -- */
/* One intra DC size code and differential into *pDC; blockType 1 chrominance, else luminance. */
KVTAPI KvtStatus kvtiDecodeVLC_IntraDCVLC_MPEG4_1u16s(Kvt8u** ppBitStream, int* pBitOffset, Kvt16s* pDC,
                                                      int blockType);
/* Zeroes pDst, DC differential by its own code, intra AC codes from scan position 1; predDir picks
 * the scan: 0 zigzag, 1 alternate vertical, 2 alternate horizontal (else -93). On an AC error pDst
 * holds zeros and the cursor stays after the DC. */
KVTAPI KvtStatus kvtiDecodeVLCZigzag_IntraDCVLC_MPEG4_1u16s(Kvt8u** ppBitStream, int* pBitOffset,
                                                            Kvt16s* pDst, int predDir, int blockType);
/* As above with the DC coded in the intra AC table (from scan position 0). */
KVTAPI KvtStatus kvtiDecodeVLCZigzag_IntraACVLC_MPEG4_1u16s(Kvt8u** ppBitStream, int* pBitOffset,
                                                            Kvt16s* pDst, int predDir);
/* Zeroes pDst, inter codes from scan position 0, zigzag scan. */
KVTAPI KvtStatus kvtiDecodeVLCZigzag_Inter_MPEG4_1u16s(Kvt8u** ppBitStream, int* pBitOffset, Kvt16s* pDst);

/* -- Block decoders: codes to residuals or pixels (inverse quantization and inverse DCT inside) -- */
/* H.263 intra block without TCOEF: INTRADC (8 bits) fills the 8x8 pixels, 255 standing for 128;
 * step >= 8 (-82); 0 and 128 give -73 with the cursor 8 bits on. */
KVTAPI KvtStatus kvtiDecodeBlockCoef_IntraDCOnly_H263_1u8u(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst,
                                                           int step);
/* H.263 intra block: INTRADC (0 or 128: -73, cursor 8 bits on), TCOEF from scan position 1,
 * inverse quantization (H.263 6.2.1), zigzag, inverse DCT to pixels; step >= 8 (-82), QP 1..31 (-76). */
KVTAPI KvtStatus kvtiDecodeBlockCoef_Intra_H263_1u8u(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst,
                                                     int step, int QP);
/* H.263 inter block: TCOEF, inverse quantization, zigzag, inverse DCT in place to 64 residuals
 * (raster); QP 1..31 (-76). */
KVTAPI KvtStatus kvtiDecodeBlockCoef_Inter_H263_1u16s(Kvt8u** ppBitStream, int* pBitOffset, Kvt16s* pDst,
                                                      int QP);
/* H.263 Annex I intra block. predMode = INTRA_MODE + 1: 1 DC only (mean of the available left and
 * above DCs, zigzag), 2 vertical DC and AC from above (alternate-horizontal scan), 3 horizontal
 * from the left (alternate-vertical scan); else -83. Prediction state as for MPEG-4 (row groups
 * and column buffer, AC as levels, negative DC: not available). coded 0: no TCOEF in the stream.
 * AC: (level + predicted level) x 2 QP, clamped to -2048..2047; DC: 2 QP level + predicted DC,
 * clamped to 0..2047 and made odd unless 0, stored in pCoefBufRow[0]. step >= 8 (-82), QP 1..31
 * (-76). */
KVTAPI KvtStatus kvtiDecodeBlockCoef_AdvIntra_H263_1u8u(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst,
                                                        int step, Kvt16s* pCoefBufRow, Kvt16s* pCoefBufCol,
                                                        int QP, int predMode, int coded);
/* MPEG-4 inter block: inter codes, inverse quantization (pQMatrix: weighting matrix, raster, with
 * mismatch control; NULL: H.263 method), inverse DCT in place to 64 residuals; QP 1..31 (-104). */
KVTAPI KvtStatus kvtiDecodeBlockCoef_Inter_MPEG4_1u16s(Kvt8u** ppBitStream, int* pBitOffset, Kvt16s* pDst,
                                                       int QP, const Kvt8u* pQMatrix);
/* MPEG-4 intra block: DC (intraDCVLC nonzero: its own code; 0: in the AC table), AC codes, DC and
 * (ACPredFlag nonzero) AC prediction, inverse quantization (pQMatrix: intra weighting matrix, NULL:
 * H.263 method), inverse DCT to pixels. blockIndex 0..3 luminance, 4..5 chrominance, 6..9 alpha
 * (luminance rules). Updates the prediction state and stores the reconstructed DC in
 * pCoefBufRow[0]. Checks: nulls -8, step < 8 -14, QP or predQP outside 1..31 -104, predDir -93,
 * blockIndex outside 0..9 -103, offset -105. */
KVTAPI KvtStatus kvtiDecodeBlockCoef_Intra_MPEG4_1u8u(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst,
                                                      int step, Kvt16s* pCoefBufRow, Kvt16s* pCoefBufCol,
                                                      int QP, int predQP, int predDir, int ACPredFlag,
                                                      int blockIndex, int intraDCVLC, const Kvt8u* pQMatrix);
/* As kvtiDecodeBlockCoef_Intra_MPEG4_1u8u for a block without AC codes (CBP bit 0): reads only the
 * DC when intraDCVLC is nonzero, nothing otherwise; AC prediction still applies. */
KVTAPI KvtStatus kvtiDecodeBlockCoef_IntraDCOnly_MPEG4_1u8u(Kvt8u** ppBitStream, int* pBitOffset, Kvt8u* pDst,
                                                            int step, Kvt16s* pCoefBufRow,
                                                            Kvt16s* pCoefBufCol, int QP, int predQP,
                                                            int predDir, int ACPredFlag, int blockIndex,
                                                            int intraDCVLC, const Kvt8u* pQMatrix);

/* -- MPEG-4 AC/DC prediction and inverse quantization (ISO/IEC 14496-2 7.4.3, 7.4.4) -- */
/* Adds the DC (and with ACPredFlag the first row or column) prediction to quantized coefficients
 * (entry 0: the DC differential) and stores the block's first row and column in the state;
 * blockType 1 chrominance. pCoefBufRow[0] is left for the caller (store the reconstructed DC). */
KVTAPI KvtStatus kvtiPredictReconCoefIntra_MPEG4_16s(Kvt16s* pSrcDst, Kvt16s* pCoefBufRow,
                                                     Kvt16s* pCoefBufCol, int curQP, int predQP, int predDir,
                                                     int ACPredFlag, int blockType);
/* Intra: DC times the DC scaler; AC by pQMatrix (with mismatch control) or, NULL, the H.263 method;
 * results -2048..2047; blockType 1 chrominance. */
KVTAPI KvtStatus kvtiQuantInvIntra_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix, int blockType);
/* Inter: pQMatrix (with mismatch control) or, NULL, the H.263 method; results -2048..2047. */
KVTAPI KvtStatus kvtiQuantInvInter_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix);
/* Intra weighting-matrix method for bitsPerPixel 4..12 (bounds +-2^(bits+3)); dcScalerFlag 1: DC
 * scaler by QP, 0: 8. Checks: nulls, QP (-104), bits (-92), flag (-90). */
KVTAPI KvtStatus kvtiQuantInvIntraFirst_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix,
                                                    int dcScalerFlag, int blockType, int bitsPerPixel);
/* Intra H.263 method for bitsPerPixel 4..12; checks: null, QP (-104), flag (-90), blockType 0/1
 * (-91), bits (-92). */
KVTAPI KvtStatus kvtiQuantInvIntraSecond_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, int dcScalerFlag, int blockType,
                                                     int bitsPerPixel);
/* Inter weighting-matrix method for bitsPerPixel 4..12. */
KVTAPI KvtStatus kvtiQuantInvInterFirst_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix,
                                                    int bitsPerPixel);
/* Inter H.263 method for bitsPerPixel 4..12. */
KVTAPI KvtStatus kvtiQuantInvInterSecond_MPEG4_16s_I(Kvt16s* pSrcDst, int QP, int bitsPerPixel);
/* The first len scan-ordered coefficients (len >= 1, else -6): H.263 method from entry 1, entry 0
 * an INTRADC value (255 -> 1024, else times 8); QP 1..31 (-76). */
KVTAPI KvtStatus kvtiQuantInvIntra_Compact_H263_16s_I(Kvt16s* pSrcDst, int len, int QP);
/* The first len coefficients by the H.263 method, -2048..2047; len >= 1 (-6), QP 1..31 (-76). */
KVTAPI KvtStatus kvtiQuantInvInter_Compact_H263_16s_I(Kvt16s* pSrcDst, int len, int QP);
/* Whole-block forms; QP is not checked (values outside 1..31 are clamped to it), results -2048..2047. */
/* Intra weighting-matrix method on entries 1..63; entry 0 must hold the reconstructed DC: it is kept
 * (clamped to -2048..2047) and counted in the mismatch sum. */
KVTAPI KvtStatus kvtiQuantInvIntra_MPEG4_16s_C1I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix);
/* As kvtiQuantInvInter_MPEG4_16s_I (pQMatrix may be NULL: H.263 method). */
KVTAPI KvtStatus kvtiQuantInv_MPEG4_16s_C1I(Kvt16s* pSrcDst, int QP, const Kvt8u* pQMatrix);
/* H.263 intra: entry 0 an INTRADC value (255 -> 1024, else times 8), entries 1..63 the H.263 method. */
KVTAPI KvtStatus kvtiQuantInvIntra_H263_C1I(Kvt16s* pSrcDst, int QP);
/* H.263 inter: all 64 entries by the H.263 method. */
KVTAPI KvtStatus kvtiQuantInv_H263_C1I(Kvt16s* pSrcDst, int QP);

/* (end of section) */

/* ---- Block motion compensation, prediction and reconstruction (MPEG-1/2, H.263, MPEG-4). ---- */
/* Half-sample prediction of a block: with a the reference sample, b its right neighbour, c the one
 * below and d the one below-right, and rounding control r, the phases are FF a, FH (a + c + 1 - r) >> 1,
 * HF (a + b + 1 - r) >> 1 and HH (a + b + c + d + 2 - r) >> 2. Half-sample phases read one column
 * (HF, HH) and one row (FH, HH) beyond the block; the caller provides them. */

/* -- MPEG-1/2 block motion compensation (ISO/IEC 13818-2 7.6) -- */
/* mcType bits 2 and 3 pick the phase (0 FF, 4 FH, 8 HF, 12 HH); other bits are ignored. r is used as
 * given (0 or 1). The residual step is in bytes. Only the pointers are checked (-8). The UV forms
 * take interleaved chroma (U V U V ...): the horizontal neighbour is two bytes to the right. */
/* pDst = sat8(residual + prediction of the reference at mcType), for a WxH block. */
KVTAPI KvtStatus kvtiMC16x16_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData,
                                   int srcYDataStep, Kvt8u* pDst, int dstStep, int mcType, int roundControl);
/* As kvtiMC16x16_8u_C1 for the block size in the name. */
KVTAPI KvtStatus kvtiMC16x8_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData,
                                  int srcYDataStep, Kvt8u* pDst, int dstStep, int mcType, int roundControl);
KVTAPI KvtStatus kvtiMC16x4_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData,
                                  int srcYDataStep, Kvt8u* pDst, int dstStep, int mcType, int roundControl);
KVTAPI KvtStatus kvtiMC8x16_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData,
                                  int srcYDataStep, Kvt8u* pDst, int dstStep, int mcType, int roundControl);
KVTAPI KvtStatus kvtiMC8x8_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData, int srcYDataStep,
                                 Kvt8u* pDst, int dstStep, int mcType, int roundControl);
KVTAPI KvtStatus kvtiMC8x4_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData, int srcYDataStep,
                                 Kvt8u* pDst, int dstStep, int mcType, int roundControl);
KVTAPI KvtStatus kvtiMC4x8_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData, int srcYDataStep,
                                 Kvt8u* pDst, int dstStep, int mcType, int roundControl);
KVTAPI KvtStatus kvtiMC4x4_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData, int srcYDataStep,
                                 Kvt8u* pDst, int dstStep, int mcType, int roundControl);
KVTAPI KvtStatus kvtiMC4x2_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData, int srcYDataStep,
                                 Kvt8u* pDst, int dstStep, int mcType, int roundControl);
KVTAPI KvtStatus kvtiMC2x4_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData, int srcYDataStep,
                                 Kvt8u* pDst, int dstStep, int mcType, int roundControl);
KVTAPI KvtStatus kvtiMC2x2_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData, int srcYDataStep,
                                 Kvt8u* pDst, int dstStep, int mcType, int roundControl);
KVTAPI KvtStatus kvtiMC16x8UV_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData,
                                    int srcYDataStep, Kvt8u* pDst, int dstStep, int mcType, int roundControl);
/* pDst = sat8(residual + ((pF + pB + 1) >> 1)), pF and pB the predictions of the forward and backward
 * references at their own mcType, both with roundControl. */
KVTAPI KvtStatus kvtiMC16x16B_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                    int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                    Kvt8u* pDst, int dstStep, int roundControl);
/* As kvtiMC16x16B_8u_C1 for the block size in the name. */
KVTAPI KvtStatus kvtiMC16x8B_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                   int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                   Kvt8u* pDst, int dstStep, int roundControl);
KVTAPI KvtStatus kvtiMC16x4B_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                   int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                   Kvt8u* pDst, int dstStep, int roundControl);
KVTAPI KvtStatus kvtiMC8x16B_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                   int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                   Kvt8u* pDst, int dstStep, int roundControl);
KVTAPI KvtStatus kvtiMC8x8B_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                  int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                  Kvt8u* pDst, int dstStep, int roundControl);
KVTAPI KvtStatus kvtiMC8x4B_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                  int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                  Kvt8u* pDst, int dstStep, int roundControl);
KVTAPI KvtStatus kvtiMC4x8B_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                  int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                  Kvt8u* pDst, int dstStep, int roundControl);
KVTAPI KvtStatus kvtiMC4x4B_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                  int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                  Kvt8u* pDst, int dstStep, int roundControl);
KVTAPI KvtStatus kvtiMC4x2B_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                  int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                  Kvt8u* pDst, int dstStep, int roundControl);
KVTAPI KvtStatus kvtiMC2x4B_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                  int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                  Kvt8u* pDst, int dstStep, int roundControl);
KVTAPI KvtStatus kvtiMC2x2B_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                  int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                  Kvt8u* pDst, int dstStep, int roundControl);
KVTAPI KvtStatus kvtiMC16x8BUV_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB,
                                     int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,
                                     Kvt8u* pDst, int dstStep, int roundControl);
/* Copies an 8x8 block; a step below 8 returns -169. */
KVTAPI KvtStatus kvtiCopyBlock_8x8_8u(const Kvt8u* pSrc, int srcStep, Kvt8u* pDst, int dstStep);
/* Copies a 16x16 block; a step below 16 returns -168. */
KVTAPI KvtStatus kvtiCopyBlock_16x16_8u(const Kvt8u* pSrc, int srcStep, Kvt8u* pDst, int dstStep);
/* Half-sample prediction (no residual) of a width x height block, width and height each 4, 8 or 16 (else
 * -6), mcType as in kvtiMC16x16_8u_C1, rounding control 0 (MPEG-4 rounding_type 0). */
KVTAPI KvtStatus kvtiMCBlock_RoundOff_8u(const Kvt8u* pSrc, int srcStep, Kvt8u* pDst, int dstStep, int width,
                                         int height, int mcType);
/* As kvtiMCBlock_RoundOff_8u with rounding control 1. */
KVTAPI KvtStatus kvtiMCBlock_RoundOn_8u(const Kvt8u* pSrc, int srcStep, Kvt8u* pDst, int dstStep, int width,
                                        int height, int mcType);

/* -- H.263 prediction and reconstruction: source and destination share one step -- */
/* Copies a 16x16 macroblock; step below 16: -81. */
KVTAPI KvtStatus kvtiCopyMB_H263_8u(const Kvt8u* pSrc, Kvt8u* pDst, int step);
/* Copies an 8x8 block; step below 8: -82. */
KVTAPI KvtStatus kvtiCopyBlock_H263_8u(const Kvt8u* pSrc, Kvt8u* pDst, int step);
/* 16x16 horizontal half-sample prediction HF, r = 0; step below 16: -82. */
KVTAPI KvtStatus kvtiCopyApproxHMB_H263_8u(const Kvt8u* pSrc, Kvt8u* pDst, int step);
/* 8x8 HF, r = 0; step below 8: -82. */
KVTAPI KvtStatus kvtiCopyApproxHBlock_H263_8u(const Kvt8u* pSrc, Kvt8u* pDst, int step);
/* 16x16 vertical half-sample prediction FH, r = 0; step below 16: -82. */
KVTAPI KvtStatus kvtiCopyApproxVMB_H263_8u(const Kvt8u* pSrc, Kvt8u* pDst, int step);
/* 8x8 FH, r = 0; step below 8: -82. */
KVTAPI KvtStatus kvtiCopyApproxVBlock_H263_8u(const Kvt8u* pSrc, Kvt8u* pDst, int step);
/* 16x16 HH, r = 0; step below 16: -82. */
KVTAPI KvtStatus kvtiCopyApproxHVMB_H263_8u(const Kvt8u* pSrc, Kvt8u* pDst, int step);
/* 8x8 HH, r = 0; step below 8: -82. */
KVTAPI KvtStatus kvtiCopyApproxHVBlock_H263_8u(const Kvt8u* pSrc, Kvt8u* pDst, int step);
/* pDst = sat8(pSrcPred + 64 residuals, row by row) for an 8x8 block; step below 8: -82. */
KVTAPI KvtStatus kvtiReconBlock_H263(const Kvt8u* pSrcPred, const Kvt16s* pSrcResid, Kvt8u* pDst, int step);
/* pSrcDst = sat8(pSrcDst + 64 residuals) for an 8x8 block; step below 8: -82. */
KVTAPI KvtStatus kvtiReconBlock_H263_I(Kvt8u* pSrcDst, const Kvt16s* pSrcResid, int step);
/* pDst = sat8(pSrcPred + residual) for a 16x16 macroblock; pSrcResid holds 256 values, the 8x8 luminance
 * blocks top-left, top-right, bottom-left, bottom-right one after another; step below 16: -81. */
KVTAPI KvtStatus kvtiReconMB_H263(const Kvt8u* pSrcPred, const Kvt16s* pSrcResid, Kvt8u* pDst, int step);
/* As kvtiReconMB_H263 in place. */
KVTAPI KvtStatus kvtiReconMB_H263_I(Kvt8u* pSrcDst, const Kvt16s* pSrcResid, int step);
/* pDst = sat8(pSrcPred + 64 residuals) for an 8x8 block; step below 8: -169. */
KVTAPI KvtStatus kvtiReconBlock_8x8(const Kvt8u* pSrcPred, const Kvt16s* pSrcResid, Kvt8u* pDst, int step);
/* H.263 Annex F overlapped prediction of the 8x8 block at pSrcRef (reference and destination share step):
 * (p0 * H0 + p1 * H1 + p2 * H2 + 4) >> 3 with p0 the prediction at *pMVCur, p1 at *pMVAbove (rows 0..3) or
 * *pMVBelow (rows 4..7), p2 at *pMVLeft (columns 0..3) or *pMVRight (columns 4..7); half-sample vectors,
 * rounding control 0. Each vector's prediction reads the 8x8 block it points to (plus the half-sample
 * column and row). Null: reference, destination, current, left, right, above, below (-8); step < 8: -82. */
KVTAPI KvtStatus kvtiPredictBlock_OBMC_8u(const Kvt8u* pSrcRef, Kvt8u* pDst, int step,
                                          const KvtMotionVec* pMVCur, const KvtMotionVec* pMVLeft,
                                          const KvtMotionVec* pMVRight, const KvtMotionVec* pMVAbove,
                                          const KvtMotionVec* pMVBelow);
/* Replicates the border samples of the width x height picture at pSrcDst outward by expandPels on all
 * four sides, corners included (H.263 Annex D unrestricted vectors); checks: pointer -8, width < 8 -80,
 * height < 1 -79, expandPels < 8 -78, step < 8 -82, step < width + 2 * expandPels -77. */
KVTAPI KvtStatus kvtiExpandFrame_H263_8u(Kvt8u* pSrcDst, int width, int height, int expandPels, int step);

/* -- MPEG-4 half-sample prediction (ISO/IEC 14496-2 7.6.2): the reference pointer is the block's
 * co-located position; the vector (half samples) moves it by (dx >> 1, dy >> 1) and its odd bits pick
 * the phase. roundControl: 0, or nonzero for rounding_type 1. Steps are not checked. -- */
/* 8x8 prediction at *pMV; only pSrcRef and pDst are checked (-8). */
KVTAPI KvtStatus kvtiCopyBlockHalfpel_MPEG4_8u(const Kvt8u* pSrcRef, int srcStep, Kvt8u* pDst, int dstStep,
                                               const KvtMotionVec* pMV, int roundControl);
/* 16x16 prediction at *pMV; only pSrcRef and pDst are checked (-8). */
KVTAPI KvtStatus kvtiCopyMBHalfpel_MPEG4_8u(const Kvt8u* pSrcRef, int srcStep, Kvt8u* pDst, int dstStep,
                                            const KvtMotionVec* pMV, int roundControl);
/* pDst = sat8(8x8 prediction at *pMV + 64 residuals); only pSrcRef and pDst are checked (-8). */
KVTAPI KvtStatus kvtiReconBlockHalfpel_MPEG4_8u(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcResid,
                                                Kvt8u* pDst, int dstStep, const KvtMotionVec* pMV,
                                                int roundControl);
/* pDst = (pSrc1 + pSrc2 + 1) >> 1 over an 8x8 block. */
KVTAPI KvtStatus kvtiAverageBlock_MPEG4_8u(const Kvt8u* pSrc1, int src1Step, const Kvt8u* pSrc2, int src2Step,
                                           Kvt8u* pDst, int dstStep);
/* pDst = (pSrc1 + pSrc2 + 1) >> 1 over a 16x16 block. */
KVTAPI KvtStatus kvtiAverageMB_MPEG4_8u(const Kvt8u* pSrc1, int src1Step, const Kvt8u* pSrc2, int src2Step,
                                        Kvt8u* pDst, int dstStep);
/* pSrcDst = (pSrc + pSrcDst + 1) >> 1 over an 8x8 block. */
KVTAPI KvtStatus kvtiAverageBlock_MPEG4_8u_I(const Kvt8u* pSrc, int srcStep, Kvt8u* pSrcDst, int srcDstStep);
/* pSrcDst = (pSrc + pSrcDst + 1) >> 1 over a 16x16 block. */
KVTAPI KvtStatus kvtiAverageMB_MPEG4_8u_I(const Kvt8u* pSrc, int srcStep, Kvt8u* pSrcDst, int srcDstStep);
/* kvtiPredictBlock_OBMC_8u with separate steps and the rounding control of the half-sample predictions;
 * only the pointers are checked (-8), in the same order. */
KVTAPI KvtStatus kvtiOBMCHalfpel_MPEG4_8u(const Kvt8u* pSrcRef, int srcStep, Kvt8u* pDst, int dstStep,
                                          const KvtMotionVec* pMVCur, const KvtMotionVec* pMVLeft,
                                          const KvtMotionVec* pMVRight, const KvtMotionVec* pMVAbove,
                                          const KvtMotionVec* pMVBelow, int roundControl);

/* (end of section) */

/* ---- H.264 intra prediction, transform and quantization. ---- */
/* Blocks of 8-bit samples are predicted in place from their reconstructed neighbours in the same
 * plane (row above, column to the left, corner, and for 4x4 the four samples above-right). The
 * availability mask tests only bits 1 (upper row), 2 (left column), 32 (corner) and 64 (upper
 * right, 4x4 only). Modes are the standard's numbers; chroma: 0 DC, 1 horizontal, 2 vertical,
 * 3 plane. Coefficient blocks are 16 Kvt16s in raster order; QP is 0..51 unless noted. Values the
 * standard computes wider than 16 bits are stored truncated to 16 bits; the sums of the inverse
 * transforms wrap at 16 bits, and their final (x + 32) >> 6 is exact. The forward quantizers store
 * the levels, then (unless a level exceeds 2063: -13) the count of nonzero levels, negated when
 * the level at raster position 0 is nonzero, and the largest pScanMatrix entry with the entries of
 * zero levels taken as 0, masked to 7 bits (0 when all levels are zero). */

/* 4x4 luma, modes 0..8 (-11); step >= 4 (-14). A missing neighbour is taken as 128 and the call
 * returns 11; a missing upper right repeats U[3] without the warning. */
KVTAPI KvtStatus kvtiPredictIntra_4x4_H264_8u_C1IR(Kvt8u* pSrcDst, int srcDstStep, int predMode,
                                                   Kvt32u availability);
/* 16x16 luma, modes 0..3 (-11); step >= 16 (-81); -117 and nothing written when a needed
 * neighbour is missing. */
KVTAPI KvtStatus kvtiPredictIntra_16x16_H264_8u_C1IR(Kvt8u* pSrcDst, int srcDstStep, int predMode,
                                                     Kvt32u availability);
/* 8x8 chroma, modes 0..3 (-11); step >= 8 (-81); -117 as for 16x16. */
KVTAPI KvtStatus kvtiPredictIntraChroma8x8_H264_8u_C1IR(Kvt8u* pSrcDst, int srcDstStep, int predMode,
                                                        Kvt32u availability);

/* Intra 16x16 luma DC: inverse 4x4 Hadamard of the 16 DC levels, then dequantization. */
KVTAPI KvtStatus kvtiTransformDequantLumaDC_H264_16s_C1I(Kvt16s* pSrcDst, int QP);
/* Chroma DC: inverse 2x2 transform of the 4 DC levels, then (f * v(QP, 0)) >> 1. */
KVTAPI KvtStatus kvtiTransformDequantChromaDC_H264_16s_C1I(Kvt16s* pSrcDst, int QP);
/* Dequantizes and inverse-transforms a 4x4 block in place (step >= 8 bytes, -14, checked after
 * QP); pDC (may be NULL) replaces the DC by an already scaled value; AC == 0: DC-only block. */
KVTAPI KvtStatus kvtiDequantTransformResidual_H264_16s_C1I(Kvt16s* pSrcDst, int srcDstStep, const Kvt16s* pDC,
                                                           int AC, int QP);
/* As kvtiDequantTransformResidual_H264_16s_C1I on 16 contiguous values, then pDst = clamp(pPred +
 * residual); pSrcDst receives the residual. DC-only path (AC == 0 or pSrcDst NULL): pSrcDst is only
 * read, the residual (c0 + 32) >> 6 is limited to -256..256; pSrcDst and pDC not both NULL (-8). */
KVTAPI KvtStatus kvtiDequantTransformResidualAndAdd_H264_16s_C1I(const Kvt8u* pPred, Kvt16s* pSrcDst,
                                                                 const Kvt16s* pDC, Kvt8u* pDst, int predStep,
                                                                 int dstStep, int QP, int AC);
/* Forward 4x4 core transform of a prediction block, unscaled (SP/SI). */
KVTAPI KvtStatus kvtiTransformPrediction_H264_8u16s_C1(const Kvt8u* pSrc, int srcStep, Kvt16s* pDst);
/* SP/SI 4x4: levels dequantized with QP (QS when SI != 0) plus the transformed prediction,
 * requantized with QS, inverse-transformed and clamped to 0..255 into pSrcDst; pDC (may be NULL)
 * is the dequantized DC used as it is. QP and QS are not checked: keep them 0..51. */
KVTAPI KvtStatus kvtiDequantTransformResidual_SISP_H264_16s_C1I(Kvt16s* pSrcDst, const Kvt16s* pTransformPred,
                                                                const Kvt16s* pDC, int AC, int QP, int QS,
                                                                int SI);
/* SP/SI chroma DC: the 2x2 counterpart on 4 DC levels and 4 prediction DC coefficients; QP and QS
 * are not checked: keep them 0..51. */
KVTAPI KvtStatus kvtiTransformDequantChromaDC_SISP_H264_16s_C1I(Kvt16s* pSrcDst, const Kvt16s* pDCPredict,
                                                                int QP, int QS, int SI);
/* Encoder chroma DC: 2x2 transform of pSrcDst into pTBlock (needTransform != 0; otherwise pTBlock
 * holds it), quantized into pSrcDst; chroma QP 0..39 (-11). */
KVTAPI KvtStatus kvtiTransformQuantChromaDC_H264_16s_C1I(Kvt16s* pSrcDst, Kvt16s* pTBlock, int QP,
                                                         Kvt8s* pNumLevels, Kvt8u intra, Kvt8u needTransform);
/* Encoder intra 16x16 luma DC: 4x4 Hadamard halved (>> 1) of pSrcDst into pTBlock (needTransform
 * != 0; otherwise pTBlock holds it), quantized with the intra rounding into pSrcDst. */
KVTAPI KvtStatus kvtiTransformQuantLumaDC_H264_16s_C1I(Kvt16s* pSrcDst, Kvt16s* pTBlock, int QP,
                                                       Kvt8s* pNumLevels, Kvt8u needTransform,
                                                       const Kvt16s* pScanMatrix, Kvt8u* pLastPos);
/* Encoder 4x4 residual: forward core transform and quantization in place (intra != 0: rounding
 * 1/3, else 1/6); pScanMatrix gives the scan index of each raster position. */
KVTAPI KvtStatus kvtiTransformQuantResidual_H264_16s_C1I(Kvt16s* pSrcDst, int QP, Kvt8s* pNumLevels,
                                                         Kvt8u intra, const Kvt16s* pScanMatrix,
                                                         Kvt8u* pLastPos);

/* (end of section) */

/* ---- H.264 interpolation, weighted averaging, CAVLC syntax elements and the deblocking filter. ---- */

/* Inter prediction of 8-bit pictures (H.264 8.4.2.2). The reference is read as it stands (the caller pads
 * it): luma reads 2 samples before and 3 after the block in each direction, chroma 1 after. */
/* Luma quarter-sample position (dx, dy in 0..3) of a 4, 8 or 16 square or 2:1 block (not 4x16, 16x4);
 * -14 when a step is below the width, -5 for dx or dy outside 0..3, -6 for other sizes. */
KVTAPI KvtStatus kvtiInterpolateLuma_H264_8u_C1R(const Kvt8u* pSrc, Kvt32s srcStep, Kvt8u* pDst,
                                                 Kvt32s dstStep, Kvt32s dx, Kvt32s dy, KvtRegionSize roiSize);
/* Chroma eighth-sample position (dx, dy in 0..7), bilinear; width and height 2, 4 or 8 (not 2x8, 8x2);
 * -14 when a step is below 8, -5 for dx or dy outside 0..7, -6 for other sizes. */
KVTAPI KvtStatus kvtiInterpolateChroma_H264_8u_C1R(const Kvt8u* pSrc, Kvt32s srcStep, Kvt8u* pDst,
                                                   Kvt32s dstStep, Kvt32s dx, Kvt32s dy,
                                                   KvtRegionSize roiSize);
/* pSrc2Dst = clamp(((pSrc1 * weight1 + pSrc2Dst * weight2 + 2^(shift-1)) >> shift) + offset), one step for
 * both blocks; width and height 2, 4, 8 or 16 (-6), step below the width: -14. The rounding term is
 * 1 << ((shift - 1) & 31) and the clamp covers -256..511 (keep the sum in that range). */
KVTAPI KvtStatus kvtiWeightedAverage_H264_8u_C1IR(const Kvt8u* pSrc1, Kvt8u* pSrc2Dst, Kvt32s srcDstStep,
                                                  Kvt32s weight1, Kvt32s weight2, Kvt32u shift, Kvt32s offset,
                                                  KvtRegionSize roiSize);

/* CAVLC syntax elements of one 4x4 block (H.264 9.2), walked from scan position lastIdx down to firstIdx
 * (0 for a whole block, 1 when the DC is coded elsewhere); pScan[k] is the raster index at scan position
 * k. Outputs: trailing ones (0..3) and their signs (1 = -1, the highest-frequency one in the top used
 * bit), the count of nonzero coefficients, total zeros (zeros below the highest-frequency nonzero
 * coefficient down to firstIdx; lastIdx - firstIdx + 1 for an empty block), the other levels highest
 * frequency first, and the zero runs between successive nonzero coefficients (the run below the last
 * one is not stored). Only the entries in use are written (pLevels, pRuns: room for 16). -11 when
 * lastIdx is above 15 or below firstIdx. */
KVTAPI KvtStatus kvtiEncodeCoeffsCAVLC_H264_16s(const Kvt16s* pSrc, Kvt8u firstIdx, const Kvt32u* pScan,
                                                Kvt8u lastIdx, Kvt8u* pTrailingOnes, Kvt8u* pTrailingOneSigns,
                                                Kvt8u* pNumCoeffs, Kvt8u* pTotalZeros, Kvt16s* pLevels,
                                                Kvt8u* pRuns);
/* As kvtiEncodeCoeffsCAVLC_H264_16s for the 4 chroma DC values of 4:2:0 (raster order is scan order). */
KVTAPI KvtStatus kvtiEncodeChromaDcCoeffsCAVLC_H264_16s(const Kvt16s* pSrc, Kvt8u* pTrailingOnes,
                                                        Kvt8u* pTrailingOneSigns, Kvt8u* pNumCoeffs,
                                                        Kvt8u* pTotalZeros, Kvt16s* pLevels, Kvt8u* pRuns);

/* Deblocking filter (H.264 8.7, 4:2:0, 8 bits), in place, for the four vertical (VerEdge, left to right) or
 * horizontal (HorEdge, top to bottom) edges of one macroblock; pSrcDst is its top-left sample. Edge 0 is
 * the macroblock's left or top edge (the samples before it belong to the neighbour and are filtered too),
 * edges 1..3 lie 4, 8 and 12 luma samples in.
 *  - pAlpha[2], pBeta[2]: alpha and beta (H.264 Table 8-16 at indexA, indexB) of edge 0, then of the
 *    internal edges.
 *  - pBS[16]: boundary strength of every 4-sample segment, pBS[4 * edge + segment], segments in the order
 *    of the edge (top to bottom, left to right). 0 skips the segment, 1..3 take the normal filter, 4 the
 *    strong one. Chroma uses the strengths of luma edges 0 and 2 (its edges 0 and 4), each 4-sample luma
 *    segment covering 2 chroma samples; pBS[4..7] and pBS[12..15] are not read.
 *  - pThresholds: tc0 (H.264 Table 8-17 for the segment's bS and indexA) of every segment, luma 16
 *    entries pThresholds[4 * edge + segment]; chroma 8 entries, chroma edge 0 then chroma edge 4 (tc is
 *    tc0 + 1 there). Entries of segments with bS 0 or 4 are not read.
 * Luma reads 4 samples before edge 0 and changes 3, chroma reads 2 and changes 1 (the vertical-edge forms
 * store the others back unchanged); the step is not checked.
 * The arrays are read in wide loads: entries stored one by one just before the call make it wait until those
 * stores reach the cache (about 10 TSC ticks a call on the x86 processors we measured); fill them earlier.
 * A null pointer returns -8; nothing else is checked. */
KVTAPI KvtStatus kvtiFilterDeblockingLuma_VerEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcDstStep,
                                                               const Kvt8u* pAlpha, const Kvt8u* pBeta,
                                                               const Kvt8u* pThresholds, const Kvt8u* pBS);
/* As kvtiFilterDeblockingLuma_VerEdge_H264_8u_C1IR for the horizontal edges. */
KVTAPI KvtStatus kvtiFilterDeblockingLuma_HorEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcDstStep,
                                                               const Kvt8u* pAlpha, const Kvt8u* pBeta,
                                                               const Kvt8u* pThresholds, const Kvt8u* pBS);
/* Vertical edges 0 and 4 of one 8x8 chroma block (one plane per call). */
KVTAPI KvtStatus kvtiFilterDeblockingChroma_VerEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcDstStep,
                                                                 const Kvt8u* pAlpha, const Kvt8u* pBeta,
                                                                 const Kvt8u* pThresholds, const Kvt8u* pBS);
/* Horizontal edges 0 and 4 of one 8x8 chroma block. */
KVTAPI KvtStatus kvtiFilterDeblockingChroma_HorEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcDstStep,
                                                                 const Kvt8u* pAlpha, const Kvt8u* pBeta,
                                                                 const Kvt8u* pThresholds, const Kvt8u* pBS);

/* (end of section) */

#ifdef __cplusplus
}
#endif

#endif /* KVTVC_H */
