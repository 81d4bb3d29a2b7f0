// Picture buffers: planes with replicated borders, so that motion vectors may point outside the
// picture (H.264 8.4.2.2 clamps reference coordinates to the picture, which the border repeats).
#pragma once
#include <cstdint>
#include <vector>

namespace enc264 {

class Plane {
public:
    Plane() = default;
    Plane(int width, int height, int border);
    // Moves keep the samples where they are; copies would leave the origin behind.
    Plane(Plane&&) = default;
    Plane& operator=(Plane&&) = default;
    Plane(const Plane&) = delete;
    Plane& operator=(const Plane&) = delete;
    uint8_t* at(int x, int y) { return origin_ + static_cast<intptr_t>(y) * stride_ + x; }
    const uint8_t* at(int x, int y) const { return origin_ + static_cast<intptr_t>(y) * stride_ + x; }
    int stride() const { return stride_; }
    int width() const { return width_; }
    int height() const { return height_; }
    int border() const { return border_; }
    // Repeats the outermost samples of the width x height area into the border.
    void extend_borders();
    // Repeats column cols - 1 and row rows - 1 over the rest of the picture area (input padding).
    void extend_from(int cols, int rows);

private:
    std::vector<uint8_t> data_;
    uint8_t* origin_ = nullptr;
    int width_ = 0, height_ = 0, stride_ = 0, border_ = 0;
};

// A 4:2:0 picture whose size is a whole number of macroblocks.
struct Picture {
    Picture() = default;
    Picture(int mb_cols, int mb_rows, int border)
        : y(16 * mb_cols, 16 * mb_rows, border),
          u(8 * mb_cols, 8 * mb_rows, border / 2),
          v(8 * mb_cols, 8 * mb_rows, border / 2) {}
    Plane& plane(int c) { return c == 0 ? y : c == 1 ? u : v; }
    const Plane& plane(int c) const { return c == 0 ? y : c == 1 ? u : v; }
    void extend_borders() { y.extend_borders(), u.extend_borders(), v.extend_borders(); }
    Plane y, u, v;
};

}  // namespace enc264
