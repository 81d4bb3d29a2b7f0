// The H.264 rows compared with FFmpeg's checkasm also time sequences of calls whose inputs change
// from sample to sample (a residual block written by one call must not feed the next): sample(i)
// makes the four calls of sample i. Timed and reported as bench.h's checkasm column.
#pragma once

#include <cstdint>
#include <string>

#include "bench.h"

namespace kvt::bench::h264ticks {

// Ticks per call of sample(k) for k = 0..1023, where sample makes four calls; restore() runs
// before each sample, outside the timed region (for kernels that change their input).
template <class Sample, class Restore>
double checkasm_ticks(Sample&& sample, Restore&& restore) {
    uint64_t sum = 0, kept = 0;
    for (unsigned i = 0; i < 1024; ++i) {
        restore();
        const uint64_t t0 = stamp();
        sample(i);
        const uint64_t t = stamp() - t0;
        if (i > 0 && t * kept <= sum * 4) sum += t, ++kept;
    }
    const double ticks = kept ? double(sum) / double(kept) - stamp_overhead() : 0.0;
    return ticks > 0 ? ticks / 4 : 0.0;
}
template <class Sample>
double checkasm_ticks(Sample&& sample) {
    return checkasm_ticks(sample, [] {});
}

// One row "<function>/<arguments>/<kernel|front>" of the table with its checkasm column.
inline void add_ticks_row(const std::string& name, std::function<double()> measure) {
    const size_t slash = name.find('/');
    add_checkasm_column(name.substr(0, slash), name.substr(slash + 1), std::move(measure));
}

}  // namespace kvt::bench::h264ticks
