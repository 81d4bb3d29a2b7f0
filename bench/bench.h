// Benchmark registry for kvtvc-bench. A row is one kernel with one set of arguments; its columns
// are the oracle (`ref`, the plain portable formulas), each instruction-set tier whose kernel
// differs from the tier below it, and optionally a baseline such as memset. The same family
// tables the library dispatches through drive the rows, so no kernel list is kept twice.
#pragma once

#include <benchmark/benchmark.h>

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
// Names the tier the library uses for a row (marked in the table).
void set_used(const std::string& function, const std::string& args, const std::string& tier);

struct TierInfo {
    const char* name;
    unsigned flags;
};
// The tiers built into this binary that this processor runs, C first.
const std::vector<TierInfo>& runnable_tiers();

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

}  // namespace kvt::bench

#define KVT_BENCH_CONCAT2(a, b) a##b
#define KVT_BENCH_CONCAT(a, b) KVT_BENCH_CONCAT2(a, b)
// File-scope registration: KVT_BENCH_ROWS { add_kernel(...); ... }
#define KVT_BENCH_ROWS                                                    \
    static int KVT_BENCH_CONCAT(register_rows_, __LINE__)();              \
    [[maybe_unused]] static const int KVT_BENCH_CONCAT(rows_, __LINE__) = \
        KVT_BENCH_CONCAT(register_rows_, __LINE__)();                     \
    static int KVT_BENCH_CONCAT(register_rows_, __LINE__)()
