#include "yuv_io.h"

namespace enc264 {

bool YuvReader::read(Picture& pic) {
    for (int c = 0; c < 3; ++c) {
        Plane& p = pic.plane(c);
        const int w = c ? width_ / 2 : width_, h = c ? height_ / 2 : height_;
        for (int y = 0; y < h; ++y) {
            const size_t got = std::fread(p.at(0, y), 1, w, f_);
            if (got != static_cast<size_t>(w)) {
                short_ = got != 0 || c != 0 || y != 0;
                return false;
            }
        }
        p.extend_from(w, h);
    }
    return true;
}

bool write_yuv(std::FILE* f, const Picture& pic, int width, int height) {
    for (int c = 0; c < 3; ++c) {
        const Plane& p = pic.plane(c);
        const int w = c ? width / 2 : width, h = c ? height / 2 : height;
        for (int y = 0; y < h; ++y)
            if (std::fwrite(p.at(0, y), 1, w, f) != static_cast<size_t>(w)) return false;
    }
    return true;
}

}  // namespace enc264
