// kvtvc-bench: runs every registered row and prints one table of reference against SIMD time.
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "bench.h"

namespace kvt::bench {

int add_row(const std::string& name, Body ref, Body simd, const std::string& baseline_name, Body baseline) {
    benchmark::RegisterBenchmark((name + ":ref").c_str(), ref);
    if (simd) benchmark::RegisterBenchmark((name + ":simd").c_str(), simd);
    if (baseline) benchmark::RegisterBenchmark((name + ":" + baseline_name).c_str(), baseline);
    return 0;
}

namespace {

struct Row {
    double ref = 0, simd = 0, base = 0;
    std::string base_name;
};

// Collects nanoseconds per call for each row while the console reporter prints as usual.
class TableReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const std::string full = run.benchmark_name();
            const size_t colon = full.rfind(':');
            if (colon == std::string::npos || run.iterations == 0) continue;
            const std::string row = full.substr(0, colon), kind = full.substr(colon + 1);
            const double ns = run.GetAdjustedRealTime() * multiplier(run.time_unit);
            if (order_.count(row) == 0) order_[row] = order_.size();
            Row& r = rows_[row];
            if (kind == "ref") r.ref = ns;
            else if (kind == "simd") r.simd = ns;
            else r.base = ns, r.base_name = kind;
        }
    }
    void print_table() const {
        std::vector<const std::string*> names(order_.size());
        for (const auto& [name, index] : order_) names[index] = &name;
        std::printf("\n%-44s %12s %12s %8s   %s\n", "kernel", "ref ns/call", "simd ns/call", "speedup",
                    "baseline (simd/baseline)");
        for (const std::string* name : names) {
            const Row& r = rows_.at(*name);
            if (r.simd > 0) std::printf("%-44s %12.2f %12.2f %7.2fx", name->c_str(), r.ref, r.simd, r.ref / r.simd);
            else std::printf("%-44s %12.2f %12s %8s", name->c_str(), r.ref, "-", "-");
            if (r.base > 0) std::printf("   %s %.2f ns (%.2fx)", r.base_name.c_str(), r.base, r.simd / r.base);
            std::printf("\n");
        }
    }

private:
    static double multiplier(benchmark::TimeUnit unit) {
        switch (unit) {
            case benchmark::kSecond: return 1e9;
            case benchmark::kMillisecond: return 1e6;
            case benchmark::kMicrosecond: return 1e3;
            default: return 1.0;
        }
    }
    std::map<std::string, size_t> order_;
    std::map<std::string, Row> rows_;
};

}  // namespace
}  // namespace kvt::bench

int main(int argc, char** argv) {
    std::vector<char*> args(argv, argv + argc);
    bool has_min_time = false;
    for (char* a : args) has_min_time |= std::string(a).rfind("--benchmark_min_time", 0) == 0;
    static char min_time[] = "--benchmark_min_time=0.05";
    if (!has_min_time) args.push_back(min_time);
    int n = int(args.size());
    benchmark::Initialize(&n, args.data());
    kvt::bench::TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_table();
    benchmark::Shutdown();
    return 0;
}
