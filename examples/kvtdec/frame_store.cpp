#include "frame_store.h"

#include <new>
#include <utility>

namespace kvtdec {
namespace {

// Luma border: a 16x16 prediction clamped to lie at most 17 samples outside (see motion.cpp)
// reads 17 samples beyond the edge; 32 keeps rows aligned. Chroma needs 9; 16 keeps it aligned.
constexpr int kLumaBorder = 32;
constexpr int kChromaBorder = 16;

}  // namespace

Frame::~Frame() {
    for (Kvt8u* m : memory_) kvtsFree(m);
}

void Frame::allocate(int mb_cols, int mb_rows) {
    for (int p = 0; p < 3; ++p) {
        const int unit = p == 0 ? 16 : 8, border = p == 0 ? kLumaBorder : kChromaBorder;
        Plane& pl = plane[p];
        pl.width = mb_cols * unit;
        pl.height = mb_rows * unit;
        pl.border = border;
        pl.step = (pl.width + 2 * border + 31) & ~31;
        const int rows = pl.height + 2 * border;
        kvtsFree(memory_[p]);
        memory_[p] = kvtsMalloc_8u(pl.step * rows);
        if (!memory_[p]) throw std::bad_alloc();
        pl.origin = memory_[p] + border * pl.step + border;
        // Mid-grey, so that a stream starting with a P-picture predicts from something defined.
        kvtiSet_8u_C1R(128, memory_[p], pl.step, KvtRegionSize{pl.step, rows});
    }
}

void Frame::extend_borders() {
    for (Plane& pl : plane) kvtiExpandFrame_H263_8u(pl.origin, pl.width, pl.height, pl.border, pl.step);
}

bool Frame::write_i420(std::FILE* out, int width, int height) const {
    for (int p = 0; p < 3; ++p) {
        const int w = p == 0 ? width : (width + 1) / 2, h = p == 0 ? height : (height + 1) / 2;
        for (int y = 0; y < h; ++y)
            if (std::fwrite(plane[p].at(0, y), 1, size_t(w), out) != size_t(w)) return false;
    }
    return true;
}

void FrameStore::resize(int mb_cols, int mb_rows) {
    if (mb_cols == mb_cols_ && mb_rows == mb_rows_) return;
    for (Frame& f : frames_) f.allocate(mb_cols, mb_rows);
    mb_cols_ = mb_cols;
    mb_rows_ = mb_rows;
}

void FrameStore::finish_anchor() {
    newest_ = 1 - newest_;
    frames_[newest_].extend_borders();
}

}  // namespace kvtdec
