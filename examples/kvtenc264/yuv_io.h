// Raw planar 4:2:0 (I420) files: frames of width x height luma samples and two quarter-size
// chroma planes, read into and written from the encoder's macroblock-aligned pictures.
#pragma once
#include <cstdio>

#include "picture.h"

namespace enc264 {

class YuvReader {
public:
    YuvReader(std::FILE* f, int width, int height) : f_(f), width_(width), height_(height) {}
    // Reads the next frame into the picture and repeats its last row and column over the part of
    // the macroblock-aligned area that lies outside it. False at the end of the file or on a
    // short frame (short() tells which).
    bool read(Picture& pic);
    bool short_frame() const { return short_; }

private:
    std::FILE* f_;
    int width_, height_;
    bool short_ = false;
};

// Writes the visible width x height area of a picture as one I420 frame; false on a write error.
bool write_yuv(std::FILE* f, const Picture& pic, int width, int height);

}  // namespace enc264
