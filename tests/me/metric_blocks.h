// Test blocks for the SAD, squared-difference, variance and edge tests: random steps (also
// negative), misaligned rows and the extreme patterns that catch overflow and rounding faults.
#pragma once

#include <cstdint>
#include <cstdlib>

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

enum Pattern { kRandom, kZero, kFull, kChecker, kLowBits, kExtremes, kPatternCount };

// Fills rows x cols of p with a pattern; kLowBits (0..3) stresses the rounding carries.
template <class T>
void fill(Plane<T>& p, int cols, int rows, Pattern pat, Rng& rng, int lo = 0, int hi = 255) {
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x) {
            int v = 0;
            switch (pat) {
                case kRandom: v = rng.uniform(lo, hi); break;
                case kZero: v = lo < 0 && hi > 0 ? 0 : lo; break;
                case kFull: v = hi; break;
                case kChecker: v = (x + y) & 1 ? hi : lo; break;
                case kLowBits: v = lo + rng.uniform(0, 3); break;
                default: v = rng.coin() ? hi : lo; break;
            }
            p.row(y)[x] = T(v);
        }
}

// A step of |step| >= width bytes (units of `unit`), negative half the time.
inline int random_step(Rng& rng, int width, int unit = 1) {
    const int s = (width + rng.uniform(0, 40)) * unit;
    return rng.coin() ? -s : s;
}

// A step that is a multiple of 16, negative half the time.
inline int random_step16(Rng& rng, int width) {
    const int s = (width + 15) / 16 * 16 + 16 * rng.uniform(0, 2);
    return rng.coin() ? -s : s;
}

// A block of cols x rows samples with a random step, misalignment and pattern; `aligned` puts
// its rows on 16-byte boundaries.
template <class T = uint8_t>
struct Block {
    Plane<T> plane;
    Block(Rng& rng, int cols, int rows, Pattern pat, int lo = 0, int hi = 255, bool aligned = false)
        : plane(cols, rows, aligned ? random_step16(rng, cols * int(sizeof(T))) : random_step(rng, cols, int(sizeof(T))),
                aligned ? 0 : size_t(rng.uniform(0, 15)) * sizeof(T)) {
        fill(plane, cols, rows, pat, rng, lo, hi);
    }
    T* data() { return plane.data(); }
    int step() const { return plane.step(); }
};

inline Pattern random_pattern(Rng& rng) {
    return rng.uniform(0, 3) == 0 ? Pattern(rng.uniform(0, kPatternCount - 1)) : kRandom;
}

// Places a cols x rows block of step `step` (>= cols) so that its last sample is the last
// readable byte before an inaccessible page; fills it with `rng` values.
inline uint8_t* guarded_block(kvt::test::PageGuarded& buf, int cols, int rows, int step, Rng& rng) {
    const size_t span = size_t(rows - 1) * size_t(step) + size_t(cols);
    uint8_t* p = buf.data() + buf.size() - span;
    for (size_t i = 0; i < span; ++i) p[i] = uint8_t(rng.next());
    return p;
}

// Fixed-rounding prediction written from the standards' description of the four phases,
// independently of the library: h, v are the half steps right and down.
inline int anchor_pred(const uint8_t* ref, int step, int x, int y, int type) {
    const int h = type == 8 || type == 12, v = type == 4 || type == 12;
    auto at = [&](int dx, int dy) { return int(ref[intptr_t(y + dy) * step + x + dx]); };
    if (h && v) return (at(0, 0) + at(1, 0) + at(0, 1) + at(1, 1) + 2) / 4;
    if (h || v) return (at(0, 0) + at(h, v) + 1) / 2;
    return at(0, 0);
}

}  // namespace metric_test
