// Motion search of one partition against the reference picture: the best of a few candidate
// vectors, a small diamond walk at whole samples, then half- and quarter-sample refinement with
// the library's interpolation. Costs are SAD + lambda * bits of the vector difference.
#pragma once
#include "macroblock.h"
#include "picture.h"

namespace enc264 {

// Vectors (quarter samples) that keep the macroblock's reference area, filter taps included,
// inside the reference picture's border.
struct MvRange {
    int min_x, max_x, min_y, max_y;
    Mv clamp(Mv m) const;
};
MvRange mv_range(int mbx, int mby, int width, int height, int border);

struct Partition {
    int x, y, w, h;  // luma position in the picture and size
};

class MotionSearch {
public:
    MotionSearch(const Plane& src, const Plane& ref, int lambda) : src_(src), ref_(ref), lambda_(lambda) {}
    // SAD of the partition predicted with vector mv.
    int sad(const Partition& p, Mv mv) const;
    int mv_cost(Mv mv, Mv mvp) const;
    // Best vector for the partition near the candidates (mvp first); *cost receives its cost.
    Mv search(const Partition& p, Mv mvp, const Mv* candidates, int count, const MvRange& range,
              int* cost) const;

private:
    const Plane& src_;
    const Plane& ref_;
    int lambda_;
};

}  // namespace enc264
