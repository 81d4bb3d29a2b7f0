// Timing as FFmpeg's checkasm times its kernels, shared by kvtvc-bench's checkasm columns and
// kvtvc-ticks-mc (no Google Benchmark here).
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <vector>

namespace kvt::bench {

// FFmpeg checkasm's figure for a kernel (mean-of-samples build) is the mean, over 1024 samples, of
// four back-to-back calls between two `lfence; rdtsc` stamps, the first sample and every sample
// above four times the running mean dropped, less the cost of the two stamps alone, divided by
// four. For kernels of a few nanoseconds that differs from Google Benchmark's loop (the four
// calls overlap, the stamps' cost is taken out), so rows that are compared with the peer also
// get a "checkasm" column timed the same way.

// The time-stamp counter (lfence; rdtsc), or steady-clock nanoseconds where there is none.
inline uint64_t stamp() {
#if defined(__x86_64__) || defined(__i386__)
    uint32_t lo, hi;
    asm volatile("lfence\n\trdtsc" : "=a"(lo), "=d"(hi)::"memory");
    return uint64_t(hi) << 32 | lo;
#else
    return uint64_t(std::chrono::duration_cast<std::chrono::nanoseconds>(
                        std::chrono::steady_clock::now().time_since_epoch())
                        .count());
#endif
}
// The mean cost of two back-to-back stamps: the mean of the middle half of 10000 pairs (measured
// once).
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

// Ticks per call of sample(k) for k = 0..1023, where sample makes four calls (so that rows can
// give each call its own inputs: a block written by one call must not feed the next); restore()
// runs before each sample, outside the timed region (for kernels that change their input).
template <class Sample, class Restore>
double checkasm_sample_ticks(Sample&& sample, Restore&& restore) {
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
double checkasm_sample_ticks(Sample&& sample) {
    return checkasm_sample_ticks(sample, [] {});
}

// Ticks per call of call(), the checkasm way. As there, the arguments should be values the
// compiler keeps in registers (not loaded through a pointer after each call).
// (Its own loop: called through a sample lambda, the compiler reloads the captured arguments
// between calls and the figure grows by up to 30%.)
// `calls` other than checkasm's 4 per sample: with 16 the calls overlap in the processor as in a
// long run of them, so a difference between two figures is work each call does, not latency
// that only the end of a short sample exposes.
template <int calls = 4, class Call>
double checkasm_ticks(Call&& call) {
    constexpr int kSamples = 1024;
    uint64_t sum = 0, kept = 0;
    for (int i = 0; i < kSamples; ++i) {
        const uint64_t t0 = stamp();
#pragma GCC unroll 16
        for (int k = 0; k < calls; ++k) call();
        const uint64_t t = stamp() - t0;
        if (i > 0 && t * kept <= sum * 4) sum += t, ++kept;
    }
    const double ticks = kept ? double(sum) / double(kept) - stamp_overhead() : 0.0;
    return ticks > 0 ? ticks / calls : 0.0;
}

}  // namespace kvt::bench
