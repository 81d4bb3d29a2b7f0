// Fronts of MPEG-1/2 block motion compensation: check the pointers, pick the kernel by shape,
// phase (bits 2 and 3 of each motion-compensation type) and, for the copies, rounding.
#include "common/kernel.h"
#include "kvtvc.h"
#include "mpeg2/mc_dsp.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(McDsp, init_mc_dsp) dsp;

constexpr int phase_of(int mc_type) { return (mc_type >> 2) & 3; }

template <int shape>
KvtStatus mc(const Kvt8u* ref, int ref_step, const Kvt16s* res, int res_step, Kvt8u* dst, int dst_step,
             int mc_type, int r) {
    if (!ref || !res || !dst) return kvtStsNullPointer;
    return dsp.mc[mc_index(shape, phase_of(mc_type))](ref, ref_step, res, res_step, dst, dst_step, r);
}

template <int shape>
KvtStatus mc_bi(const Kvt8u* f, int f_step, int f_type, const Kvt8u* b, int b_step, int b_type,
                const Kvt16s* res, int res_step, Kvt8u* dst, int dst_step, int r) {
    if (!f || !b || !res || !dst) return kvtStsNullPointer;
    return dsp.mc_bi[mc_bi_index(shape, phase_of(f_type), phase_of(b_type))](f, f_step, b, b_step, res,
                                                                             res_step, dst, dst_step, r);
}

// Index of a copy width or height (4, 8, 16), -1 for any other value.
constexpr int size_index(int n) { return n == 4 ? 0 : n == 8 ? 1 : n == 16 ? 2 : -1; }

KvtStatus mc_block(const Kvt8u* src, int src_step, Kvt8u* dst, int dst_step, int w, int h, int mc_type,
                   int r) {
    if (!src || !dst) return kvtStsNullPointer;
    const int wi = size_index(w), hi = size_index(h);
    if (wi < 0 || hi < 0) return kvtStsBadSize;
    return dsp.copy[copy_index(wi, hi, phase_of(mc_type), r)](src, src_step, dst, dst_step);
}
}  // namespace

// Single and bidirectional fronts of one block shape.
#define KVT_MC_FRONTS(single, bidir, shape)                                                                  \
    KvtStatus kvtiMC##single##_8u_C1(const Kvt8u* pSrcRef, int srcStep, const Kvt16s* pSrcYData,             \
                                     int srcYDataStep, Kvt8u* pDst, int dstStep, int mcType,                 \
                                     int roundControl) {                                                     \
        return mc<shape>(pSrcRef, srcStep, pSrcYData, srcYDataStep, pDst, dstStep, mcType, roundControl);    \
    }                                                                                                        \
    KvtStatus kvtiMC##bidir##_8u_C1(const Kvt8u* pSrcRefF, int srcStepF, int mcTypeF, const Kvt8u* pSrcRefB, \
                                    int srcStepB, int mcTypeB, const Kvt16s* pSrcYData, int srcYDataStep,    \
                                    Kvt8u* pDst, int dstStep, int roundControl) {                            \
        return mc_bi<shape>(pSrcRefF, srcStepF, mcTypeF, pSrcRefB, srcStepB, mcTypeB, pSrcYData,             \
                            srcYDataStep, pDst, dstStep, roundControl);                                      \
    }

KVT_MC_FRONTS(16x16, 16x16B, kMc16x16)
KVT_MC_FRONTS(16x8, 16x8B, kMc16x8)
KVT_MC_FRONTS(16x4, 16x4B, kMc16x4)
KVT_MC_FRONTS(8x16, 8x16B, kMc8x16)
KVT_MC_FRONTS(8x8, 8x8B, kMc8x8)
KVT_MC_FRONTS(8x4, 8x4B, kMc8x4)
KVT_MC_FRONTS(4x8, 4x8B, kMc4x8)
KVT_MC_FRONTS(4x4, 4x4B, kMc4x4)
KVT_MC_FRONTS(4x2, 4x2B, kMc4x2)
KVT_MC_FRONTS(2x4, 2x4B, kMc2x4)
KVT_MC_FRONTS(2x2, 2x2B, kMc2x2)
KVT_MC_FRONTS(16x8UV, 16x8BUV, kMc16x8UV)
#undef KVT_MC_FRONTS

KvtStatus kvtiCopyBlock_8x8_8u(const Kvt8u* pSrc, int srcStep, Kvt8u* pDst, int dstStep) {
    if (!pSrc || !pDst) return kvtStsNullPointer;
    if (srcStep < 8 || dstStep < 8) return kvtStsStepBelow8;
    return dsp.copy[copy_index(1, 1, 0, 0)](pSrc, srcStep, pDst, dstStep);
}

KvtStatus kvtiCopyBlock_16x16_8u(const Kvt8u* pSrc, int srcStep, Kvt8u* pDst, int dstStep) {
    if (!pSrc || !pDst) return kvtStsNullPointer;
    if (srcStep < 16 || dstStep < 16) return kvtStsStepBelow16;
    return dsp.copy[copy_index(2, 2, 0, 0)](pSrc, srcStep, pDst, dstStep);
}

KvtStatus kvtiMCBlock_RoundOff_8u(const Kvt8u* pSrc, int srcStep, Kvt8u* pDst, int dstStep, int width,
                                  int height, int mcType) {
    return mc_block(pSrc, srcStep, pDst, dstStep, width, height, mcType, 0);
}

KvtStatus kvtiMCBlock_RoundOn_8u(const Kvt8u* pSrc, int srcStep, Kvt8u* pDst, int dstStep, int width,
                                 int height, int mcType) {
    return mc_block(pSrc, srcStep, pDst, dstStep, width, height, mcType, 1);
}
