// H.263 frame expansion for unrestricted motion vectors (H.263 Annex D): the border samples of a
// picture are replicated outward on all four sides, corners included. Built on the library's
// vector fill and copy, which pick their own SIMD width; there is no kernel table of its own.
#include <cstdint>

#include "kvtvc.h"

namespace {

// Left and right of every picture row, then whole expanded rows above and below.
void expand(Kvt8u* pic, int width, int height, int e, intptr_t step) {
    for (int y = 0; y < height; ++y) {
        Kvt8u* row = pic + y * step;
        kvtsSet_8u(row[0], row - e, e);
        kvtsSet_8u(row[width - 1], row + width, e);
    }
    Kvt8u* top = pic - e;
    Kvt8u* bottom = top + (height - 1) * step;
    for (int i = 1; i <= e; ++i) {
        kvtsCopy_8u(top, top - i * step, width + 2 * e);
        kvtsCopy_8u(bottom, bottom + i * step, width + 2 * e);
    }
}

}  // namespace

KvtStatus kvtiExpandFrame_H263_8u(Kvt8u* pSrcDst, int width, int height, int expandPels, int step) {
    if (!pSrcDst) return kvtStsNullPointer;
    if (width < 8) return kvtStsBadFrameWidth;
    if (height < 1) return kvtStsBadFrameHeight;
    if (expandPels < 8) return kvtStsBadExpansion;
    if (step < 8) return kvtStsStepBelowBlock;
    if (int64_t(step) < int64_t(width) + 2 * int64_t(expandPels)) return kvtStsBadFrameStep;
    expand(pSrcDst, width, height, expandPels, step);
    return kvtStsOk;
}
