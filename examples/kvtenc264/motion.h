// Motion search against the reference picture, built on the library's SAD metrics:
//  - a whole-sample search of the macroblock (the best of a few candidate vectors, then a small
//    diamond walk) that scores every 16x8, 8x16 and 8x8 partition at the positions it visits,
//    from the four 8x8 SADs of each position;
//  - half- then quarter-sample refinement of a partition: half samples read from planes the
//    library's interpolation fills in as the search first reads them, quarter samples interpolated.
// Costs are SAD + lambda * bits of the vector difference.
#pragma once
#include <vector>

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

// The reference luma with its three half-sample planes (b, h and j of H.264 8.4.2.2.1: right,
// below, and right-below of each whole sample) over the area mv_range lets vectors reach, each
// interpolated by 16x16 tiles the first time a search reads them.
class RefLuma {
public:
    // Starts over with a new reference picture.
    void reset(const Plane& luma);
    const Plane& whole() const { return *whole_; }
    // The w x h block at (x, y) displaced by a vector with whole or half components; nullptr for
    // quarter positions.
    const uint8_t* at(int x, int y, int w, int h, Mv mv);

private:
    const Plane* whole_ = nullptr;
    Plane half_[3];                 // index (dy / 2) * 2 + dx / 2 - 1: b, h, j
    std::vector<uint8_t> done_[3];  // per tile: interpolated
    int margin_ = 0, tiles_x_ = 0;
};

struct Partition {
    int x, y, w, h;  // luma position in the picture and size
};

// Whole-sample results of the macroblock search: the 16x16 vector and, for each partition
// (16x8 top, bottom, 8x16 left, right, 8x8 in raster order), its best vector among the visited.
struct WholeSearch {
    Mv mv16;
    int cost16 = 0;
    Mv part_mv[8];
    int part_cost[8] = {};
};

class MotionSearch {
public:
    MotionSearch(const Plane& src, RefLuma& ref, int lambda) : src_(src), ref_(ref), lambda_(lambda) {}
    int sad(const Partition& p, Mv mv) const;
    int mv_cost(Mv mv, Mv mvp) const;
    WholeSearch search_whole(int mbx, int mby, Mv mvp, const Mv* candidates, int count,
                             const MvRange& range) const;
    // Refines a partition's vector around start to quarter samples; *cost receives its cost.
    Mv refine(const Partition& p, Mv start, Mv mvp, const MvRange& range, int* cost) const;

private:
    const Plane& src_;
    RefLuma& ref_;
    int lambda_;
};

}  // namespace enc264
