// Fronts of the H.264 deblocking filter: the pointers are the only checks, then the kernel.
#include "common/kernel.h"
#include "h264/deblock_dsp.h"
#include "kvtvc.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(DeblockDsp, init_deblock_dsp) dsp;

bool any_null(const void* a, const void* b, const void* c, const void* d, const void* e) {
    return !a || !b || !c || !d || !e;
}
}  // namespace

KvtStatus kvtiFilterDeblockingLuma_VerEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcDstStep,
                                                        const Kvt8u* pAlpha, const Kvt8u* pBeta,
                                                        const Kvt8u* pThresholds, const Kvt8u* pBS) {
    if (any_null(pSrcDst, pAlpha, pBeta, pThresholds, pBS)) return kvtStsNullPointer;
    return dsp.luma_ver(pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBS);
}

KvtStatus kvtiFilterDeblockingLuma_HorEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcDstStep,
                                                        const Kvt8u* pAlpha, const Kvt8u* pBeta,
                                                        const Kvt8u* pThresholds, const Kvt8u* pBS) {
    if (any_null(pSrcDst, pAlpha, pBeta, pThresholds, pBS)) return kvtStsNullPointer;
    return dsp.luma_hor(pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBS);
}

KvtStatus kvtiFilterDeblockingChroma_VerEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcDstStep,
                                                          const Kvt8u* pAlpha, const Kvt8u* pBeta,
                                                          const Kvt8u* pThresholds, const Kvt8u* pBS) {
    if (any_null(pSrcDst, pAlpha, pBeta, pThresholds, pBS)) return kvtStsNullPointer;
    return dsp.chroma_ver(pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBS);
}

KvtStatus kvtiFilterDeblockingChroma_HorEdge_H264_8u_C1IR(Kvt8u* pSrcDst, Kvt32s srcDstStep,
                                                          const Kvt8u* pAlpha, const Kvt8u* pBeta,
                                                          const Kvt8u* pThresholds, const Kvt8u* pBS) {
    if (any_null(pSrcDst, pAlpha, pBeta, pThresholds, pBS)) return kvtStsNullPointer;
    return dsp.chroma_hor(pSrcDst, srcDstStep, pAlpha, pBeta, pThresholds, pBS);
}
