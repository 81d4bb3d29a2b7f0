// Benchmark registry for kvtvc-bench. A row is one kernel with one set of arguments; its columns
// are the oracle (`ref`, the plain portable formulas), each instruction-set tier whose kernel
// differs from the tier below it, and optionally a baseline such as memset. The same family
// tables the library dispatches through drive the rows, so no kernel list is kept twice.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "common/cpu.h"

namespace kvt::bench {

using Body = std::function<void(benchmark::State&)>;

// Registers column `column` of row (function, args): a baseline such as memset, or "front" for
// the exported function itself. Rows print in registration order.
void add_column(const std::string& function, const std::string& args, const std::string& column, Body body);
// Registers the "checkasm" column of a row: `ticks_per_call` returns one figure measured as
// checkasm_ticks does, once per repetition; the table shows the least of them in ns, as the
// peer's figure is the least of several runs.
void add_checkasm_column(const std::string& function, const std::string& args,
                         std::function<double()> ticks_per_call);
// Names the tier the library uses for a row (marked in the table).
void set_used(const std::string& function, const std::string& args, const std::string& tier);

struct TierInfo {
    const char* name;
    unsigned flags;
};
// The tiers built into this binary that this processor runs, C first.
const std::vector<TierInfo>& runnable_tiers();

// The table the library uses on this processor.
template <class Dsp>
Dsp table_in_use(void (*init)(Dsp&, unsigned)) {
    Dsp d{};
    init(d, cpu_flags());
    return d;
}

// n pseudo-random bytes (a fixed linear congruential sequence from `seed`, high byte of each step).
inline void fill_random(uint8_t* p, size_t n, uint32_t seed) {
    for (size_t i = 0; i < n; ++i) p[i] = uint8_t((seed = seed * 1103515245u + 12345u) >> 24);
}

// One row per kernel slot: `slot` names the kernel a table holds (so tiers that add nothing to
// it are skipped), `body` times it from a table.
template <class Dsp>
void add_kernel(const std::string& function, const std::string& args, void (*init)(Dsp&, unsigned),
                void (*init_ref)(Dsp&), std::function<const void*(const Dsp&)> slot,
                std::function<void(const Dsp&, benchmark::State&)> body) {
    auto oracle = std::make_shared<Dsp>();
    init_ref(*oracle);
    add_column(function, args, "ref", [oracle, body](benchmark::State& st) { body(*oracle, st); });
    Dsp best{};
    init(best, cpu_flags());
    const void* prev = nullptr;
    for (const TierInfo& tier : runnable_tiers()) {
        auto d = std::make_shared<Dsp>();
        init(*d, tier.flags);
        const void* k = slot(*d);
        if (k == prev) continue;
        prev = k;
        add_column(function, args, tier.name, [d, body](benchmark::State& st) { body(*d, st); });
        if (k == slot(best)) set_used(function, args, tier.name);
    }
}

// ---- Timing as FFmpeg's checkasm does ------------------------------------------------------
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
// Ticks of stamp() per nanosecond (measured once).
double ticks_per_ns();
// The mean cost of two back-to-back stamps: the mean of the middle half of 10000 pairs.
double stamp_overhead();

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
template <class Call>
double checkasm_ticks(Call&& call) {
    constexpr int kSamples = 1024;
    uint64_t sum = 0, kept = 0;
    for (int i = 0; i < kSamples; ++i) {
        const uint64_t t0 = stamp();
        call();
        call();
        call();
        call();
        const uint64_t t = stamp() - t0;
        if (i > 0 && t * kept <= sum * 4) sum += t, ++kept;
    }
    const double ticks = kept ? double(sum) / double(kept) - stamp_overhead() : 0.0;
    return ticks > 0 ? ticks / 4 : 0.0;
}

// One row "<function>/<arguments>/<kernel|front>" of the table with its checkasm column.
inline void add_ticks_row(const std::string& name, std::function<double()> measure) {
    const size_t slash = name.find('/');
    add_checkasm_column(name.substr(0, slash), name.substr(slash + 1), std::move(measure));
}

}  // namespace kvt::bench

#define KVT_BENCH_CONCAT2(a, b) a##b
#define KVT_BENCH_CONCAT(a, b) KVT_BENCH_CONCAT2(a, b)
// File-scope registration: KVT_BENCH_ROWS { add_kernel(...); ... }
#define KVT_BENCH_ROWS                                                    \
    static int KVT_BENCH_CONCAT(register_rows_, __LINE__)();              \
    [[maybe_unused]] static const int KVT_BENCH_CONCAT(rows_, __LINE__) = \
        KVT_BENCH_CONCAT(register_rows_, __LINE__)();                     \
    static int KVT_BENCH_CONCAT(register_rows_, __LINE__)()
