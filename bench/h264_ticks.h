// Ticks per call timed as FFmpeg's checkasm times its kernels (../shared/peer/README.md), for the
// H.264 rows compared with that peer: one sample is four calls between two `lfence; rdtsc`
// stamps, 1024 samples, the first and every one above four times the running mean dropped, the
// mean of the rest less the cost of the stamps alone, divided by four. Kernels of a few ticks
// overlap across the four calls there, which Google Benchmark's loop does not show the same way.
//
// The rows are named "ticks/<function>/<arguments>/<kernel|front>"; each repetition is one
// figure, and the least of them is reported as the counter `ticks` (TSC ticks, as the peer's):
//
//   taskset -c 1 build/release/bench/kvtvc-bench --raw --benchmark_filter='^ticks/' 2>/dev/null |
//       awk '/_min/ {print $1, $NF}'
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kvt::bench::h264ticks {

#if defined(__x86_64__) || defined(__i386__)
inline uint64_t stamp() {
    uint32_t lo, hi;
    asm volatile("lfence\n\trdtsc" : "=a"(lo), "=d"(hi)::"memory");
    return uint64_t(hi) << 32 | lo;
}

// The mean cost of two back-to-back stamps over the middle half of 10000 pairs.
inline double stamp_overhead() {
    static const double overhead = [] {
        std::vector<uint64_t> t(10000);
        for (uint64_t& v : t) {
            const uint64_t s = stamp();
            v = stamp() - s;
        }
        std::sort(t.begin(), t.end());
        double sum = 0;
        for (size_t i = 2500; i < 7500; ++i) sum += double(t[i]);
        return sum / 5000;
    }();
    return overhead;
}

// Ticks per call of sample(k) for k = 0..1023, where sample makes four calls.
template <class Sample>
double checkasm_ticks(Sample&& sample) {
    uint64_t sum = 0, kept = 0;
    for (unsigned i = 0; i < 1024; ++i) {
        const uint64_t t0 = stamp();
        sample(i);
        const uint64_t t = stamp() - t0;
        if (i > 0 && t * kept <= sum * 4) sum += t, ++kept;
    }
    const double ticks = kept ? double(sum) / double(kept) - stamp_overhead() : 0.0;
    return ticks > 0 ? ticks / 4 : 0.0;
}

// Registers one row; `measure` returns one figure in ticks per call.
inline void add_ticks_row(const std::string& name, std::function<double()> measure) {
    benchmark::RegisterBenchmark(("ticks/" + name).c_str(),
                                 [measure](benchmark::State& st) {
                                     double t = 0;
                                     for (auto _ : st) t = measure();
                                     st.counters["ticks"] = t;
                                 })
        ->Iterations(1)
        ->ComputeStatistics(
            "min", [](const std::vector<double>& v) { return *std::min_element(v.begin(), v.end()); });
}
#else
template <class Sample>
double checkasm_ticks(Sample&&) {
    return 0.0;
}
inline void add_ticks_row(const std::string&, std::function<double()>) {}
#endif

}  // namespace kvt::bench::h264ticks
