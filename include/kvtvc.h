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

/* ==== Library frame ========================================================================= */

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
/* relOp 4: clip values above level down to level; any other relOp: clip values below up. */
KVTAPI KvtStatus kvtsThreshold_16s_I(Kvt16s* pSrcDst, int len, Kvt16s level, int relOp);
/* Fills a width x height region of step dstStep bytes with val. */
KVTAPI KvtStatus kvtiSet_8u_C1R(Kvt8u val, Kvt8u* pDst, int dstStep, KvtRegionSize roiSize);
/* *pCount = number of zero coefficients among the 64 of pSrc. */
KVTAPI KvtStatus kvtiCountZeros8x8_16s_C1(const Kvt16s* pSrc, Kvt32u* pCount);

/* ==== Word bit cursor and VLC tables ======================================================== */

/* Builds a lookup table from (code, value) records grouped by code length; free it with
 * kvtiVCHuffmanFree_32s. */
KVTAPI KvtStatus kvtiVCHuffmanInitAlloc_32s(const Kvt32s* pInputTable, KvtVCHuffmanSpec_32s** ppVLCSpec);
/* As kvtiVCHuffmanInitAlloc_32s with (code, run, level) records. */
KVTAPI KvtStatus kvtiVCHuffmanInitAllocRL_32s(const Kvt32s* pInputTable, KvtVCHuffmanSpec_32s** ppVLCSpec);
/* Reads one code at the word cursor and stores its value; -74 when the code is not in the table. */
KVTAPI KvtStatus kvtiVCHuffmanDecodeOne_1u32s(Kvt32u** ppBitStream, int* pOffset, Kvt32s* pDst,
                                              const KvtVCHuffmanSpec_32s* pVLCSpec);
/* Releases a built table and sets *ppVLCSpec to NULL; a NULL table is ignored. */
KVTAPI KvtStatus kvtiVCHuffmanFree_32s(KvtVCHuffmanSpec_32s** ppVLCSpec);

/* ==== H.263 / MPEG-4 bitstream: byte bit cursor, macroblock headers, motion vectors ========= */

/* ==== Motion estimation: block metrics ====================================================== */

/* -- Residuals, residual sums and texture error -- */

/* -- SAD, squared differences, variances, means and edges -- */

#ifdef __cplusplus
}
#endif

#endif /* KVTVC_H */
