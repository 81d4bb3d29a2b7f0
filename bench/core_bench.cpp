// Vector helpers: reference, SIMD and libc where there is a libc equivalent.
#include <cstring>
#include <vector>

#include "bench.h"
#include "core/vector_kernels.h"
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

}  // namespace

KVT_BENCH_ROWS {
    for (size_t n : {64, 128, 256, 512, 1024, 4096}) {
        const std::string sz = "/" + std::to_string(n);
        add_row("kvtsSet_8u" + sz, on_buffer(n, [](uint8_t* p, int len) { set_8u_ref(3, p, len); }),
                on_buffer(n, [](uint8_t* p, int len) { kvtsSet_8u(3, p, len); }), "memset",
                on_buffer(n, [](uint8_t* p, int len) { std::memset(p, 3, size_t(len)); }));
        add_row("kvtsZero_16s" + sz, on_buffer(n, [](uint8_t* p, int len) { zero_16s_ref(as16(p), len / 2); }),
                on_buffer(n, [](uint8_t* p, int len) { kvtsZero_16s(as16(p), len / 2); }), "memset",
                on_buffer(n, [](uint8_t* p, int len) { std::memset(p, 0, size_t(len)); }));
        static std::vector<uint8_t> src(8192, 9);
        add_row("kvtsCopy_8u" + sz, on_buffer(n, [](uint8_t* p, int len) { copy_8u_ref(src.data(), p, len); }),
                on_buffer(n, [](uint8_t* p, int len) { kvtsCopy_8u(src.data(), p, len); }), "memcpy",
                on_buffer(n, [](uint8_t* p, int len) { std::memcpy(p, src.data(), size_t(len)); }));
    }
    add_row("kvtsSet_16s/1024", on_buffer(2048, [](uint8_t* p, int len) { set_16s_ref(-5, as16(p), len / 2); }),
            on_buffer(2048, [](uint8_t* p, int len) { kvtsSet_16s(-5, as16(p), len / 2); }));
    for (int s : {0, 3, -2}) {
        const std::string name = "kvtsMulC_16s_ISfs/1024/sf" + std::to_string(s);
        add_row(name, on_buffer(2048, [s](uint8_t* p, int len) { mulc_16s_sfs_ref(3, as16(p), len / 2, s); }),
                on_buffer(2048, [s](uint8_t* p, int len) { kvtsMulC_16s_ISfs(3, as16(p), len / 2, s); }));
    }
    add_row("kvtsThreshold_16s_I/1024",
            on_buffer(2048, [](uint8_t* p, int len) { threshold_gt_16s_ref(as16(p), len / 2, 100); }),
            on_buffer(2048, [](uint8_t* p, int len) { kvtsThreshold_16s_I(as16(p), len / 2, 100, 4); }));
    add_row("kvtiSet_8u_C1R/16x16/step32",
            on_buffer(512, [](uint8_t* p, int) { set_8u_c1r_ref(7, p, 32, 16, 16); }),
            on_buffer(512, [](uint8_t* p, int) { kvtiSet_8u_C1R(7, p, 32, {16, 16}); }));
    add_row("kvtiCountZeros8x8_16s_C1",
            on_buffer(128, [](uint8_t* p, int) { benchmark::DoNotOptimize(count_zeros_8x8_16s_ref(as16(p))); }),
            on_buffer(128, [](uint8_t* p, int) {
                Kvt32u n;
                kvtiCountZeros8x8_16s_C1(as16(p), &n);
                benchmark::DoNotOptimize(n);
            }));
    return 0;
}
