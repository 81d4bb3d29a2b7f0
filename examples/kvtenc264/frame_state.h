// The pictures and per-macroblock records of the picture being coded, as the macroblock coders
// see them.
#pragma once
#include <vector>

#include "macroblock.h"
#include "motion.h"
#include "neighbours.h"
#include "picture.h"
#include "transform.h"

namespace enc264 {

struct FrameState {
    const Picture* src = nullptr;  // the input picture
    Picture* rec = nullptr;        // the reconstruction being built (not yet deblocked)
    const Picture* ref = nullptr;  // the previous reconstruction, deblocked, borders extended
    RefLuma* ref_luma = nullptr;   // its luma with the half-sample planes
    std::vector<MbInfo> mbs;
    int mb_cols = 0, mb_rows = 0;

    MbInfo& mb(int mbx, int mby) { return mbs[static_cast<size_t>(mby) * mb_cols + mbx]; }
    Neighbours neighbours(int mbx, int mby) {
        return Neighbours(mbx ? &mb(mbx - 1, mby) : nullptr, mby ? &mb(mbx, mby - 1) : nullptr,
                          &mb(mbx, mby));
    }
    // Source and reconstruction of a plane (0 Y, 1 Cb, 2 Cr) from sample (x, y).
    Block block(int c, int x, int y) {
        return Block{src->plane(c).at(x, y), src->plane(c).stride(), rec->plane(c).at(x, y),
                     rec->plane(c).stride()};
    }
};

// QPc of a luma QP (chroma_qp_index_offset 0).
int chroma_qp(int qp);

}  // namespace enc264
