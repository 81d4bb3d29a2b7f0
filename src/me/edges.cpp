// Front of the 16x16 edge detector.
#include "kvtvc.h"
#include "me/me_dsp.h"

using namespace kvt;

KvtStatus kvtiEdgesDetect16x16_8u_C1R(const Kvt8u* pSrc, int srcStep, Kvt8u diffThreshold,
                                      Kvt8u countThreshold, Kvt8u* pRes) {
    if (!pSrc || !pRes) return kvtStsNullPointer;
    return me_dsp.edges16(pSrc, srcStep, diffThreshold, countThreshold, pRes);
}
