// Benchmark registry for kvtvc-bench: every row times a kernel's reference and the kernel the
// library dispatches to (its SIMD twin), optionally beside a baseline such as memset.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace kvt::bench {

using Body = std::function<void(benchmark::State&)>;

// Registers row `name`: "<name>:ref", "<name>:simd" and, when given, "<name>:<baseline_name>".
// A scalar-only kernel passes an empty `simd`; its row shows the reference time alone.
int add_row(const std::string& name, Body ref, Body simd, const std::string& baseline_name = {},
            Body baseline = {});

}  // namespace kvt::bench

#define KVT_BENCH_CONCAT2(a, b) a##b
#define KVT_BENCH_CONCAT(a, b) KVT_BENCH_CONCAT2(a, b)
// File-scope registration: KVT_BENCH_ROWS { add_row(...); ... }
#define KVT_BENCH_ROWS                                                                   \
    static int KVT_BENCH_CONCAT(register_rows_, __LINE__)();                             \
    [[maybe_unused]] static const int KVT_BENCH_CONCAT(rows_, __LINE__) =                \
        KVT_BENCH_CONCAT(register_rows_, __LINE__)();                                    \
    static int KVT_BENCH_CONCAT(register_rows_, __LINE__)()
