// Helpers of the H.264 inter-prediction and deblocking tests: sample areas that fault on any read
// outside what a function may touch.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#include "checkasm.h"

namespace kvt::test {

// A rows x cols area of samples with byte step `step` (negative: the top row is last in memory),
// fenced by inaccessible pages: its last byte in memory ends one page or, with `fence_front`, its
// first byte starts the next, so a read one byte outside the area on that side faults. at(x, y)
// is relative to the origin (ox, oy) inside the area, e.g. a block and the samples before it.
class FencedArea {
public:
    FencedArea(int cols, int rows, int step, bool fence_front, int ox = 0, int oy = 0)
        : step_(step), ox_(ox), oy_(oy) {
        const size_t page = size_t(sysconf(_SC_PAGESIZE));
        const size_t up = size_t(rows - 1) * size_t(std::abs(step)), span = up + size_t(cols);
        const size_t body = (span + page - 1) / page * page;
        map_size_ = body + 2 * page;
        map_ = static_cast<uint8_t*>(
            mmap(nullptr, map_size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (map_ == MAP_FAILED) throw std::runtime_error("mmap failed");
        mprotect(map_, page, PROT_NONE);
        mprotect(map_ + page + body, page, PROT_NONE);
        uint8_t* low = fence_front ? map_ + page : map_ + page + body - span;
        top_ = step < 0 ? low + up : low;
    }
    ~FencedArea() { munmap(map_, map_size_); }
    FencedArea(const FencedArea&) = delete;
    FencedArea& operator=(const FencedArea&) = delete;

    int step() const { return step_; }
    uint8_t* origin() { return top_ + ptrdiff_t(oy_) * step_ + ox_; }
    uint8_t& at(int x, int y) { return origin()[ptrdiff_t(y) * step_ + x]; }

private:
    int step_, ox_, oy_;
    size_t map_size_;
    uint8_t* map_;
    uint8_t* top_;
};

// A random step for rows of `cols` samples: up to 40 bytes of slack, negative half the time
// unless the call goes through a front (which takes positive steps only).
enum class Steps { kAnySign, kPositive };
inline int random_step(Rng& rng, int cols, Steps steps = Steps::kAnySign) {
    const int s = cols + rng.uniform(0, 40);
    return steps == Steps::kAnySign && rng.coin() ? -s : s;
}

}  // namespace kvt::test
