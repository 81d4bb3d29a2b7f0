// Frame buffers: planar 4:2:0 pictures covering whole macroblocks, with a replicated border
// around each plane so that motion vectors may point outside the picture (H.263 Annex D,
// MPEG-4 unrestricted vectors), and the picture store of an I/P/B decoder.
#pragma once

#include <kvtvc.h>

#include <cstdio>

namespace kvtdec {

struct Plane {
    Kvt8u* origin = nullptr;  // top-left sample of the picture
    int step = 0;             // bytes between rows
    int width = 0;            // coded size: whole macroblocks
    int height = 0;
    int border = 0;  // replicated samples on each side after extend_borders()

    Kvt8u* at(int x, int y) const { return origin + y * step + x; }
};

class Frame {
public:
    Frame() = default;
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;
    ~Frame();

    // Allocates a picture of mb_cols x mb_rows macroblocks; the contents are undefined.
    void allocate(int mb_cols, int mb_rows);
    // Replicates the outermost samples of every plane into its border.
    void extend_borders();
    // Writes the top-left width x height samples as I420 (Y, then Cb, then Cr, chroma rounded up).
    bool write_i420(std::FILE* out, int width, int height) const;

    Plane plane[3];  // Y, Cb, Cr

private:
    Kvt8u* memory_[3] = {nullptr, nullptr, nullptr};
};

// The pictures of an I/P/B decoder: two anchors (I- or P-pictures), which alternate as the
// reference, and one B-picture, which nothing predicts from.
class FrameStore {
public:
    // (Re)allocates the pictures when the size in macroblocks changes.
    void resize(int mb_cols, int mb_rows);
    // The newest anchor: the reference of the next P-picture, the backward one of a B-picture.
    const Frame& newest() const { return frames_[newest_]; }
    // The anchor before it: the forward reference of a B-picture.
    const Frame& older() const { return frames_[1 - newest_]; }
    // Where the next anchor is decoded: over the older one.
    Frame& next_anchor() { return frames_[1 - newest_]; }
    Frame& b_picture() { return frames_[2]; }
    // The decoded anchor (borders extended) becomes the newest.
    void finish_anchor();
    int mb_cols() const { return mb_cols_; }
    int mb_rows() const { return mb_rows_; }

private:
    Frame frames_[3];
    int newest_ = 0;
    int mb_cols_ = 0;
    int mb_rows_ = 0;
};

}  // namespace kvtdec
