// Motion vector prediction (H.264 8.4.1.3) and the P_Skip vector (8.4.1.1), for one reference
// picture: every inter partition has refIdxL0 0.
#pragma once
#include <vector>

#include "macroblock.h"

namespace enc264 {

class MvPredictor {
public:
    MvPredictor(const std::vector<MbInfo>& mbs, int mb_cols) : mbs_(mbs), mb_cols_(mb_cols) {}
    // Starts macroblock (mbx, mby); its own vectors are read from cur as partitions are decided.
    void begin(int mbx, int mby, const MbInfo* cur) {
        mbx_ = mbx, mby_ = mby, cur_ = cur;
        for (bool& d : done_) d = false;
    }
    // Marks the 4x4 blocks of a partition (x, y, w, h in 4x4 units) decided in cur.
    void mark(int x, int y, int w, int h);
    // mvpLX of the partition whose top-left 4x4 block is (x, y) and which is w blocks wide; shape is the
    // macroblock's type and part the partition index, for the directional rules of 16x8 and 8x16.
    Mv predict(int x, int y, int w, MbType shape, int part) const;
    // mvL0 of a P_Skip macroblock here.
    Mv skip() const;

private:
    struct Neighbour {
        bool available = false;
        int ref = -1;  // -1: not available or intra
        Mv mv;
    };
    // The 4x4 block at (x, y) in 4x4 units relative to the current macroblock (-1..4).
    Neighbour at(int x, int y) const;

    const std::vector<MbInfo>& mbs_;
    int mb_cols_;
    int mbx_ = 0, mby_ = 0;
    const MbInfo* cur_ = nullptr;
    bool done_[16] = {};
};

}  // namespace enc264
