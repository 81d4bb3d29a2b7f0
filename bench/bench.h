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

#include "checkasm_timing.h"
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

// Ticks of stamp() per nanosecond (measured once).
double ticks_per_ns();

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
