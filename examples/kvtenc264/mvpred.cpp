#include "mvpred.h"

#include <algorithm>

namespace enc264 {

namespace {

int median(int a, int b, int c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }

}  // namespace

void MvPredictor::mark(int x, int y, int w, int h) {
    for (int j = y; j < y + h; ++j)
        for (int i = x; i < x + w; ++i) done_[i + 4 * j] = true;
}

MvPredictor::Neighbour MvPredictor::at(int x, int y) const {
    Neighbour n;
    const MbInfo* mb = nullptr;
    if (x >= 0 && x < 4 && y >= 0) {
        if (!done_[x + 4 * y]) return n;  // not decoded yet
        mb = cur_;
    } else {
        const int mx = mbx_ + (x < 0 ? -1 : x > 3 ? 1 : 0), my = mby_ + (y < 0 ? -1 : 0);
        // Only macroblocks above (left, straight, right) and to the left precede this one.
        if (mx < 0 || mx >= mb_cols_ || my < 0 || (my == mby_ && mx > mbx_)) return n;
        mb = &mbs_[static_cast<size_t>(my) * mb_cols_ + mx];
    }
    n.available = true;
    if (is_intra(mb->type)) return n;
    n.ref = 0;
    n.mv = mb->mv[(x & 3) + 4 * (y & 3)];
    return n;
}

Mv MvPredictor::predict(int x, int y, int w, MbType shape, int part) const {
    Neighbour a = at(x - 1, y), b = at(x, y - 1), c = at(x + w, y - 1);
    if (!c.available) c = at(x - 1, y - 1);  // D stands in for C
    if (shape == MbType::P16x8) {
        if (part == 0 && b.ref == 0) return b.mv;
        if (part == 1 && a.ref == 0) return a.mv;
    } else if (shape == MbType::P8x16) {
        if (part == 0 && a.ref == 0) return a.mv;
        if (part == 1 && c.ref == 0) return c.mv;
    }
    if (!b.available && !c.available && a.available) b = c = a;
    const int matches = (a.ref == 0) + (b.ref == 0) + (c.ref == 0);
    if (matches == 1) return a.ref == 0 ? a.mv : b.ref == 0 ? b.mv : c.mv;
    Mv m;
    m.x = static_cast<int16_t>(median(a.mv.x, b.mv.x, c.mv.x));
    m.y = static_cast<int16_t>(median(a.mv.y, b.mv.y, c.mv.y));
    return m;
}

Mv MvPredictor::skip() const {
    const Neighbour a = at(-1, 0), b = at(0, -1);
    if (!a.available || !b.available) return Mv{};
    if ((a.ref == 0 && a.mv == Mv{}) || (b.ref == 0 && b.mv == Mv{})) return Mv{};
    return predict(0, 0, 4, MbType::P16x16, 0);
}

}  // namespace enc264
