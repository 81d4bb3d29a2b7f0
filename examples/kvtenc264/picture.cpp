#include "picture.h"

#include <cstring>

namespace enc264 {

Plane::Plane(int width, int height, int border)
    : width_(width), height_(height), stride_((width + 2 * border + 31) & ~31), border_(border) {
    data_.assign(static_cast<size_t>(stride_) * (height + 2 * border) + 32, 0);
    origin_ = data_.data() + static_cast<size_t>(stride_) * border + border;
}

void Plane::extend_borders() {
    for (int y = 0; y < height_; ++y) {
        uint8_t* row = at(0, y);
        std::memset(row - border_, row[0], border_);
        std::memset(row + width_, row[width_ - 1], border_);
    }
    const size_t len = static_cast<size_t>(width_) + 2 * border_;
    for (int y = 1; y <= border_; ++y) {
        std::memcpy(at(-border_, -y), at(-border_, 0), len);
        std::memcpy(at(-border_, height_ - 1 + y), at(-border_, height_ - 1), len);
    }
}

void Plane::extend_from(int cols, int rows) {
    for (int y = 0; y < rows; ++y) {
        uint8_t* row = at(0, y);
        std::memset(row + cols, row[cols - 1], width_ - cols);
    }
    for (int y = rows; y < height_; ++y) std::memcpy(at(0, y), at(0, rows - 1), width_);
}

}  // namespace enc264
