// kvtvc-bench: runs every registered row and prints one table: for each kernel the oracle, every
// tier, the tier the library uses on this processor and its speed-up over the oracle. Times are
// the median over repetitions of CPU time per call, in nanoseconds.
//
//   kvtvc-bench [--raw] [--benchmark_filter=REGEX] [other Google Benchmark flags]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "bench.h"

namespace kvt::bench {

namespace {

struct Row {
    std::string function, args, used;
    std::map<std::string, double> ns;  // by column
};

struct Registry {
    std::vector<Row> rows;
    std::map<std::string, size_t> index;  // "function|args" -> row
    Row& row(const std::string& function, const std::string& args) {
        const std::string key = function + "|" + args;
        auto it = index.find(key);
        if (it != index.end()) return rows[it->second];
        index[key] = rows.size();
        rows.push_back(Row{function, args, {}, {}});
        return rows.back();
    }
};

Registry& registry() {
    static Registry r;
    return r;
}

const char* const kColumns[] = {"ref", "c", "sse2", "ssse3", "avx2", "avx512"};

}  // namespace

const std::vector<TierInfo>& runnable_tiers() {
    static const std::vector<TierInfo> tiers = [] {
        const TierInfo all[] = {{"c", 0},
                                {"sse2", kCpuSSE2},
                                {"ssse3", kCpuSSE2 | kCpuSSSE3},
                                {"avx2", kCpuSSE2 | kCpuSSSE3 | kCpuAVX2},
                                {"avx512", kCpuSSE2 | kCpuSSSE3 | kCpuAVX2 | kCpuAVX512}};
        std::vector<TierInfo> run;
        for (const TierInfo& t : all)
            if ((t.flags & cpu_flags()) == t.flags) run.push_back(t);
        return run;
    }();
    return tiers;
}

void add_column(const std::string& function, const std::string& args, const std::string& column, Body body) {
    registry().row(function, args);
    benchmark::RegisterBenchmark((function + "|" + args + "|" + column).c_str(), body);
}

void add_checkasm_column(const std::string& function, const std::string& args,
                         std::function<double()> ticks_per_call) {
    registry().row(function, args);
    benchmark::RegisterBenchmark((function + "|" + args + "|checkasm").c_str(),
                                 [ticks_per_call](benchmark::State& st) {
                                     for (auto _ : st)
                                         st.SetIterationTime(ticks_per_call() / ticks_per_ns() * 1e-9);
                                 })
        ->UseManualTime()
        ->Iterations(1)  // one figure is 4096 calls, whatever time it reports
        ->ComputeStatistics(
            "min", [](const std::vector<double>& v) { return *std::min_element(v.begin(), v.end()); });
}

double ticks_per_ns() {
    static const double rate = [] {
        const auto t0 = std::chrono::steady_clock::now();
        const uint64_t s0 = stamp();
        while (std::chrono::steady_clock::now() - t0 < std::chrono::milliseconds(20)) {
        }
        const uint64_t s1 = stamp();
        const double ns =
            double(std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - t0)
                       .count());
        return double(s1 - s0) / ns;
    }();
    return rate;
}

void set_used(const std::string& function, const std::string& args, const std::string& tier) {
    registry().row(function, args).used = tier;
}

namespace {

// Collects the medians quietly; --raw also prints Google Benchmark's own lines.
class TableReporter : public benchmark::BenchmarkReporter {
public:
    explicit TableReporter(bool raw) : raw_(raw) {}
    bool ReportContext(const Context& ctx) override { return raw_ ? console_.ReportContext(ctx) : true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        if (raw_) console_.ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Aggregate) continue;
            const std::string full = run.run_name.function_name;
            const size_t a = full.find('|'), b = full.rfind('|');
            if (a == std::string::npos || a == b) continue;
            const std::string column = full.substr(b + 1);
            // The checkasm column: the least of its (manual) times, reported as real time.
            const bool checkasm = column == "checkasm";
            if (run.aggregate_name != (checkasm ? "min" : "median")) continue;
            Row& row = registry().row(full.substr(0, a), full.substr(a + 1, b - a - 1));
            const double t = checkasm ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
            row.ns[column] = t * multiplier(run.time_unit);
            if (!raw_) std::fputc('.', stderr);
        }
    }

private:
    static double multiplier(benchmark::TimeUnit unit) {
        switch (unit) {
            case benchmark::kSecond:
                return 1e9;
            case benchmark::kMillisecond:
                return 1e6;
            case benchmark::kMicrosecond:
                return 1e3;
            default:
                return 1.0;
        }
    }
    bool raw_;
    benchmark::ConsoleReporter console_{benchmark::ConsoleReporter::OO_Tabular};
};

std::string processor_name() {
    std::ifstream in("/proc/cpuinfo");
    for (std::string line; std::getline(in, line);)
        if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
    return "unknown processor";
}

void print_table() {
    std::string tiers;
    for (const TierInfo& t : runnable_tiers()) tiers += std::string(" ") + t.name;
    std::printf("\nkvtvc-bench on %s; tiers this processor runs:%s\n", processor_name().c_str(),
                tiers.c_str());
    std::printf(
        "ns per call, median over repetitions of CPU time. ref: the plain portable formulas (oracle);\n"
        "c, sse2, ... : the library's kernels per tier ('-' where a tier adds nothing); * marks the tier in\n"
        "use; front: the exported function (checks + dispatch). Phases: ff integer, fh vertical half, hf\n"
        "horizontal half, hh both; rc0/rc1 rounding control. checkasm: the tier in use timed as FFmpeg's\n"
        "checkasm times its kernels (4 calls between TSC stamps, stamp cost taken out; bench.h), least\n"
        "over repetitions, for the rows compared with that peer: ns = ticks / %.3f.\n\n",
        ticks_per_ns());
    std::vector<std::string> extra;  // baselines and 'front'
    for (const Row& r : registry().rows)
        for (const auto& [col, ns] : r.ns)
            if (std::find(std::begin(kColumns), std::end(kColumns), col) == std::end(kColumns) &&
                std::find(extra.begin(), extra.end(), col) == extra.end())
                extra.push_back(col);
    std::printf("%-40s %-22s", "function", "arguments");
    for (const char* c : kColumns) std::printf(" %9s", c);
    for (const std::string& c : extra) std::printf(" %9s", c.c_str());
    std::printf(" %8s\n", "speedup");
    for (const Row& r : registry().rows) {
        if (r.ns.empty()) continue;
        std::printf("%-40s %-22s", r.function.c_str(), r.args.c_str());
        auto cell = [&](const std::string& col) {
            auto it = r.ns.find(col);
            if (it == r.ns.end()) return std::printf(" %9s", "-"), void();
            std::printf(" %8.2f%c", it->second, col == r.used ? '*' : ' ');
        };
        for (const char* c : kColumns) cell(c);
        for (const std::string& c : extra) cell(c);
        auto ref = r.ns.find("ref"), used = r.ns.find(r.used);
        if (ref != r.ns.end() && used != r.ns.end() && used->second > 0)
            std::printf(" %7.1fx\n", ref->second / used->second);
        else
            std::printf(" %8s\n", "");
    }
}

}  // namespace
}  // namespace kvt::bench

int main(int argc, char** argv) {
    std::vector<char*> args;
    bool raw = false, has_min_time = false, has_reps = false;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--raw") == 0) {
            raw = true;
            continue;
        }
        has_min_time |= std::strncmp(argv[i], "--benchmark_min_time", 20) == 0;
        has_reps |= std::strncmp(argv[i], "--benchmark_repetitions", 23) == 0;
        args.push_back(argv[i]);
    }
    static char min_time[] = "--benchmark_min_time=0.01", reps[] = "--benchmark_repetitions=5",
                aggregates[] = "--benchmark_report_aggregates_only=true";
    if (!has_min_time) args.push_back(min_time);
    if (!has_reps) args.push_back(reps);
    args.push_back(aggregates);
    int n = int(args.size());
    benchmark::Initialize(&n, args.data());
    kvt::bench::TableReporter reporter(raw);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (!raw) std::fputc('\n', stderr);
    kvt::bench::print_table();
    benchmark::Shutdown();
    return 0;
}
