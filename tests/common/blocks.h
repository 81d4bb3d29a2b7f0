// Random blocks for the prediction tests: samples with a random (also negative) step and
// misalignment in patterns that stress rounding and saturation, residuals, guarded outputs, and
// areas that end at an inaccessible page.
#pragma once

#include <cstdint>
#include <cstring>

#include "checkasm.h"
#include "page_guard.h"

namespace kvt::test {

// A step of at least `bytes`, negative half the time unless `positive`.
inline int random_step(Rng& rng, int bytes, bool positive = false) {
    const int step = bytes + rng.uniform(0, 24);
    return positive || rng.coin() ? step : -step;
}

// w x h samples: full range, only 0 and 255, or four neighbouring values (every rounding case).
inline Plane<uint8_t> samples(Rng& rng, int w, int h, bool positive = false) {
    Plane<uint8_t> p(w, h, random_step(rng, w, positive), size_t(rng.uniform(0, 15)));
    const int mode = rng.uniform(0, 2), base = rng.uniform(0, 252);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int v = int(rng.next() & 255);
            p.row(y)[x] = uint8_t(mode == 0 ? v : mode == 1 ? (v & 1) * 255 : base + (v & 3));
        }
    return p;
}

// w x h residuals at a byte step: small (no saturation), or the whole 16-bit range.
inline Plane<int16_t> residuals(Rng& rng, int w, int h) {
    Plane<int16_t> p(w, h, 2 * random_step(rng, w), 2 * size_t(rng.uniform(0, 7)));
    const bool wide = rng.uniform(0, 3) == 0;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            p.row(y)[x] = int16_t(wide ? rng.uniform(-32768, 32767) : rng.uniform(-300, 300));
    return p;
}

// An untouched w x h destination (guard pattern) with a random step and misalignment.
inline Plane<uint8_t> output(Rng& rng, int w, int h) {
    return Plane<uint8_t>(w, h, random_step(rng, w), size_t(rng.uniform(0, 15)));
}

// n contiguous residuals (an 8x8 block is 64).
inline std::vector<int16_t> residual_block(Rng& rng, int n) {
    std::vector<int16_t> v(size_t(n), 0);
    const bool wide = rng.coin();
    for (int16_t& e : v) e = int16_t(wide ? rng.uniform(-32768, 32767) : rng.uniform(-300, 300));
    return v;
}

// A random w x h area of step `step` (positive) whose last byte is the last before an
// inaccessible page; returns its top-left sample.
template <class T = uint8_t>
T* guarded_area(PageGuarded& buf, Rng& rng, int w, int h, int step) {
    const size_t span = size_t(h - 1) * size_t(step) + size_t(w) * sizeof(T);
    uint8_t* p = buf.data() + buf.size() - span;
    for (size_t i = 0; i < span; ++i) p[i] = uint8_t(rng.next());
    return reinterpret_cast<T*>(p);
}

}  // namespace kvt::test
