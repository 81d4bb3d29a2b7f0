// The inverse DCTs the block decoders call (the 8x8 DCT family of kvtvc.h); declared here until
// that family's header section is merged.
#pragma once

#include "kvtvc.h"

extern "C" {
KvtStatus kvtiDCT8x8Inv_16s_C1I(Kvt16s* pSrcDst);
KvtStatus kvtiDCT8x8Inv_4x4_16s_C1I(Kvt16s* pSrcDst);
KvtStatus kvtiDCT8x8Inv_2x2_16s_C1I(Kvt16s* pSrcDst);
KvtStatus kvtiDCT8x8Inv_16s8u_C1R(const Kvt16s* pSrc, Kvt8u* pDst, int dstStep);
}
