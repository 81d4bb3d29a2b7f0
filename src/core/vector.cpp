// Fronts of the vector helpers: check the arguments, then run one kernel.
#include "common/kernel.h"
#include "core/vector_dsp.h"
#include "kvtvc.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(VectorDsp, init_vector_dsp) dsp;
}  // namespace

KvtStatus kvtsSet_8u(Kvt8u val, Kvt8u* pDst, int len) {
    if (!pDst) return kvtStsNullPointer;
    if (len < 1) return kvtStsBadSize;
    return dsp.set_8u(val, pDst, len);
}

KvtStatus kvtsSet_16s(Kvt16s val, Kvt16s* pDst, int len) {
    if (!pDst) return kvtStsNullPointer;
    if (len < 1) return kvtStsBadSize;
    return dsp.set_16s(val, pDst, len);
}

KvtStatus kvtsZero_16s(Kvt16s* pDst, int len) {
    if (!pDst) return kvtStsNullPointer;
    if (len < 1) return kvtStsBadSize;
    return dsp.zero_16s(pDst, len);
}

KvtStatus kvtsCopy_8u(const Kvt8u* pSrc, Kvt8u* pDst, int len) {
    if (!pSrc || !pDst) return kvtStsNullPointer;
    if (len < 1) return kvtStsBadSize;
    return dsp.copy_8u(pSrc, pDst, len);
}

KvtStatus kvtsMulC_16s_ISfs(Kvt16s val, Kvt16s* pSrcDst, int len, int scaleFactor) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (len < 1) return kvtStsBadSize;
    return dsp.mulc_16s_sfs(val, pSrcDst, len, scaleFactor);
}

// kvtCmpGreater clips from above; every other relation means kvtCmpLess.
KvtStatus kvtsThreshold_16s_I(Kvt16s* pSrcDst, int len, Kvt16s level, int relOp) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (len < 1) return kvtStsBadSize;
    if (relOp == kvtCmpGreater) return dsp.threshold_gt_16s(pSrcDst, len, level);
    return dsp.threshold_lt_16s(pSrcDst, len, level);
}

KvtStatus kvtiSet_8u_C1R(Kvt8u val, Kvt8u* pDst, int dstStep, KvtRegionSize roiSize) {
    if (!pDst) return kvtStsNullPointer;
    if (roiSize.width < 1 || roiSize.height < 1) return kvtStsBadSize;
    if (dstStep < 1) return kvtStsBadStep;
    return dsp.set_8u_c1r(val, pDst, dstStep, roiSize.width, roiSize.height);
}

KvtStatus kvtiCountZeros8x8_16s_C1(const Kvt16s* pSrc, Kvt32u* pCount) {
    if (!pSrc || !pCount) return kvtStsNullPointer;
    return dsp.count_zeros_8x8(pSrc, pCount);
}
