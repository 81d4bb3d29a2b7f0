// Fronts of the CAVLC element collection: the checks in their documented order, then the kernel.
#include "common/kernel.h"
#include "h264/cavlc_dsp.h"
#include "kvtvc.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(CavlcDsp, init_cavlc_dsp) dsp;
}  // namespace

KvtStatus kvtiEncodeCoeffsCAVLC_H264_16s(const Kvt16s* pSrc, Kvt8u firstIdx, const Kvt32u* pScan,
                                         Kvt8u lastIdx, Kvt8u* pTrailingOnes, Kvt8u* pTrailingOneSigns,
                                         Kvt8u* pNumCoeffs, Kvt8u* pTotalZeros, Kvt16s* pLevels,
                                         Kvt8u* pRuns) {
    if (!pSrc || !pScan || !pTrailingOnes || !pTrailingOneSigns || !pNumCoeffs || !pTotalZeros || !pLevels ||
        !pRuns)
        return kvtStsNullPointer;
    if (lastIdx > 15 || lastIdx < firstIdx) return kvtStsOutOfRange;
    return dsp.block(pSrc, firstIdx, pScan, lastIdx,
                     {pTrailingOnes, pTrailingOneSigns, pNumCoeffs, pTotalZeros, pLevels, pRuns});
}

KvtStatus kvtiEncodeChromaDcCoeffsCAVLC_H264_16s(const Kvt16s* pSrc, Kvt8u* pTrailingOnes,
                                                 Kvt8u* pTrailingOneSigns, Kvt8u* pNumCoeffs,
                                                 Kvt8u* pTotalZeros, Kvt16s* pLevels, Kvt8u* pRuns) {
    if (!pSrc || !pTrailingOnes || !pTrailingOneSigns || !pNumCoeffs || !pTotalZeros || !pLevels || !pRuns)
        return kvtStsNullPointer;
    return dsp.chroma_dc(pSrc, {pTrailingOnes, pTrailingOneSigns, pNumCoeffs, pTotalZeros, pLevels, pRuns});
}
