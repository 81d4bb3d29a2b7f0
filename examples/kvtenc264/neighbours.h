// The left (A) and upper (B) neighbours of 4x4 blocks, for the values predicted from them: the
// Intra4x4PredMode prediction (H.264 8.3.1.1) and nC of coeff_token (9.2.1). One slice per
// picture, so a neighbouring macroblock is available when it lies inside the picture.
#pragma once
#include "macroblock.h"

namespace enc264 {

class Neighbours {
public:
    // left and above are null at the picture's edges; cur is the macroblock being coded.
    Neighbours(const MbInfo* left, const MbInfo* above, const MbInfo* cur)
        : left_(left), above_(above), cur_(cur) {}

    // predIntra4x4PredMode of raster block r, from the modes already stored in cur.
    int predicted_i4_mode(int r) const {
        const int x = r & 3, y = r >> 2;
        const MbInfo* a = x ? cur_ : left_;
        const MbInfo* b = y ? cur_ : above_;
        if (!a || !b) return 2;  // DC when a neighbour is missing
        const int ma = a->type == MbType::I4x4 ? a->i4_mode[(x + 3) % 4 + 4 * y] : 2;
        const int mb = b->type == MbType::I4x4 ? b->i4_mode[x + 4 * ((y + 3) % 4)] : 2;
        return ma < mb ? ma : mb;
    }
    // nC of luma raster block r, from the TotalCoeff values stored in the three macroblocks.
    int luma_nc(int r) const {
        const int x = r & 3, y = r >> 2;
        const MbInfo* a = x ? cur_ : left_;
        const MbInfo* b = y ? cur_ : above_;
        return combine(a, a ? a->nnz[(x + 3) % 4 + 4 * y] : 0, b, b ? b->nnz[x + 4 * ((y + 3) % 4)] : 0);
    }
    // nC of chroma AC block k (raster in the 2x2 grid) of component c (0 Cb, 1 Cr).
    int chroma_nc(int c, int k) const {
        const int x = k & 1, y = k >> 1;
        const MbInfo* a = x ? cur_ : left_;
        const MbInfo* b = y ? cur_ : above_;
        return combine(a, a ? a->nnz_chroma[c][(x ^ 1) + 2 * y] : 0, b,
                       b ? b->nnz_chroma[c][x + 2 * (y ^ 1)] : 0);
    }

private:
    static int combine(const MbInfo* a, int na, const MbInfo* b, int nb) {
        if (a && b) return (na + nb + 1) >> 1;
        return a ? na : b ? nb : 0;
    }
    const MbInfo *left_, *above_, *cur_;
};

}  // namespace enc264
