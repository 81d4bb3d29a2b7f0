// Vector helpers: reference, SIMD and libc where there is a libc equivalent.
#include <cstring>
#include <vector>

#include "bench.h"
#include "core/vector_dsp.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

// Runs op(buffer) in the timing loop on a 64-byte aligned buffer of n bytes (+1 unaligned).
template <class Op>
Body on_buffer(size_t n, Op op) {
    return [n, op](benchmark::State& state) {
        std::vector<uint8_t> storage(n + 128, 1);
        uint8_t* p = storage.data() + (64 - reinterpret_cast<uintptr_t>(storage.data()) % 64);
        for (auto _ : state) {
            op(p, int(n));
            benchmark::DoNotOptimize(p);
            benchmark::ClobberMemory();
        }
    };
}

int16_t* as16(uint8_t* p) { return reinterpret_cast<int16_t*>(p); }

// One row: slot(d) is the kernel, run(kernel, buffer, bytes) one call of it.
template <class Slot, class Run>
void vector_row(const std::string& fn, const std::string& args, size_t n, Slot slot, Run run) {
    add_kernel<VectorDsp>(
        fn, args, init_vector_dsp, ref::init_vector,
        [slot](const VectorDsp& d) { return (const void*)slot(d); },
        [=](const VectorDsp& d, benchmark::State& st) {
            on_buffer(n, [&](uint8_t* p, int len) { run(slot(d), p, len); })(st);
        });
}

}  // namespace

KVT_BENCH_ROWS {
    static std::vector<uint8_t> src(8192, 9);
    for (size_t n : {64, 128, 256, 512, 1024, 4096}) {
        const std::string sz = std::to_string(n) + " bytes";
        vector_row(
            "kvtsSet_8u", sz, n, [](const VectorDsp& d) { return d.set_8u; },
            [](auto k, uint8_t* p, int len) { k(3, p, len); });
        add_column("kvtsSet_8u", sz, "memset",
                   on_buffer(n, [](uint8_t* p, int len) { std::memset(p, 3, size_t(len)); }));
        vector_row(
            "kvtsZero_16s", sz, n, [](const VectorDsp& d) { return d.zero_16s; },
            [](auto k, uint8_t* p, int len) { k(as16(p), len / 2); });
        add_column("kvtsZero_16s", sz, "memset",
                   on_buffer(n, [](uint8_t* p, int len) { std::memset(p, 0, size_t(len)); }));
        vector_row(
            "kvtsCopy_8u", sz, n, [](const VectorDsp& d) { return d.copy_8u; },
            [](auto k, uint8_t* p, int len) { k(src.data(), p, len); });
        add_column("kvtsCopy_8u", sz, "memcpy",
                   on_buffer(n, [](uint8_t* p, int len) { std::memcpy(p, src.data(), size_t(len)); }));
    }
    // The exported front at 64 bytes: argument checks and one jump through the table.
    add_column("kvtsSet_8u", "64 bytes, front", "front",
               on_buffer(64, [](uint8_t* p, int len) { kvtsSet_8u(3, p, len); }));
    vector_row(
        "kvtsSet_16s", "1024 values", 2048, [](const VectorDsp& d) { return d.set_16s; },
        [](auto k, uint8_t* p, int len) { k(-5, as16(p), len / 2); });
    for (int s : {0, 3, -2})
        vector_row(
            "kvtsMulC_16s_ISfs", "1024 values, sf " + std::to_string(s), 2048,
            [](const VectorDsp& d) { return d.mulc_16s_sfs; },
            [s](auto k, uint8_t* p, int len) { k(3, as16(p), len / 2, s); });
    vector_row(
        "kvtsThreshold_16s_I", "1024 values, gt", 2048, [](const VectorDsp& d) { return d.threshold_gt_16s; },
        [](auto k, uint8_t* p, int len) { k(as16(p), len / 2, 100); });
    vector_row(
        "kvtiSet_8u_C1R", "16x16, step 32", 512, [](const VectorDsp& d) { return d.set_8u_c1r; },
        [](auto k, uint8_t* p, int) { k(7, p, 32, 16, 16); });
    vector_row(
        "kvtiCountZeros8x8_16s_C1", "", 128, [](const VectorDsp& d) { return d.count_zeros_8x8; },
        [](auto k, uint8_t* p, int) {
            uint32_t n;
            k(as16(p), &n);
            benchmark::DoNotOptimize(n);
        });
    return 0;
}
