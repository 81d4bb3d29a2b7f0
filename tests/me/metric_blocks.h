// Blocks for the metric tests: random steps (also negative), misaligned rows, extreme patterns,
// a page-guarded placement and an independent model of the half-sample prediction.
#pragma once

#include <cstdint>

#include "checkasm.h"
#include "me/phase.h"
#include "page_guard.h"

// KVT_PICK for kernels templated over phases, and for the twins with aligned current blocks.
#define KVT_PICK_T(impl, name, ...) \
    ((impl) == ::kvt::test::Impl::Ref ? name##_ref<__VA_ARGS__> : KVT_KERNEL(name)<__VA_ARGS__>)
#define KVT_PICK_A16_T(impl, name, ...) \
    ((impl) == ::kvt::test::Impl::Ref ? name##_ref<__VA_ARGS__> : KVT_KERNEL_A16(name)<__VA_ARGS__>)
#define KVT_PICK_A16(impl, name) ((impl) == ::kvt::test::Impl::Ref ? name##_ref : KVT_KERNEL_A16(name))

namespace metric_test {

using kvt::test::Plane;
using kvt::test::Rng;

constexpr int kPhaseTypes[4] = {0, 4, 8, 12};

// kLowBits (lo + 0..3) stresses rounding carries; kExtremes is lo or hi at random.
enum Pattern { kRandom, kZero, kFull, kChecker, kLowBits, kExtremes, kPatternCount };

inline Pattern any_pattern(Rng& rng) { return Pattern(rng.uniform(0, kPatternCount - 1)); }

// cols x rows samples with a random step (negative half the time) and misalignment; `aligned`
// puts the rows on 16-byte boundaries instead.
template <class T = uint8_t>
struct Block {
    Plane<T> plane;
    Block(Rng& rng, int cols, int rows, Pattern pat, int lo = 0, int hi = 255, bool aligned = false)
        : plane(cols, rows, step_for(rng, cols * int(sizeof(T)), aligned),
                aligned ? 0 : size_t(rng.uniform(0, 15)) * sizeof(T)) {
        const int zero = lo < 0 && hi > 0 ? 0 : lo;
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < cols; ++x) {
                const int r = rng.uniform(lo, hi), check = (x + y) & 1 ? hi : lo;
                const int by_pattern[kPatternCount] = {r, zero, hi, check, lo + (r & 3), r & 1 ? hi : lo};
                plane.row(y)[x] = T(by_pattern[pat]);
            }
    }
    static int step_for(Rng& rng, int bytes, bool aligned) {
        const int s = aligned ? (bytes + 15) / 16 * 16 + 16 * rng.uniform(0, 2)
                              : bytes + int(sizeof(T)) * rng.uniform(0, 40);
        return rng.coin() ? -s : s;
    }
    T* data() { return plane.data(); }
    int step() const { return plane.step(); }
};

// A cols x rows block of step `step` whose last sample is the last byte before an inaccessible page.
inline uint8_t* guarded_block(kvt::test::PageGuarded& buf, int cols, int rows, int step, Rng& rng) {
    const size_t span = size_t(rows - 1) * size_t(step) + size_t(cols);
    uint8_t* p = buf.data() + buf.size() - span;
    for (size_t i = 0; i < span; ++i) p[i] = uint8_t(rng.next());
    return p;
}

// Prediction at (x, y) written from the description of the four phases, independently of the
// library: h, v are the half steps right and down.
inline int anchor_pred(const uint8_t* ref, int step, int x, int y, int type) {
    const int h = type == 8 || type == 12, v = type == 4 || type == 12;
    auto at = [&](int dx, int dy) { return int(ref[intptr_t(y + dy) * step + x + dx]); };
    if (h && v) return (at(0, 0) + at(1, 0) + at(0, 1) + at(1, 1) + 2) / 4;
    if (h || v) return (at(0, 0) + at(h, v) + 1) / 2;
    return at(0, 0);
}

}  // namespace metric_test
