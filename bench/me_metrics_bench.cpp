// Block metrics of motion estimation: reference kernels against the exported functions (whose
// SIMD column includes the front's checks and dispatch).
#include <cstdint>
#include <string>
#include <vector>

#include "bench.h"
#include "kvtvc.h"
#include "me/edges_kernels.h"
#include "me/sad_dsp.h"
#include "me/sqrdiff_kernels.h"
#include "me/variance_kernels.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

constexpr int kStep = 64;

// A 64x64 plane of pseudo-random samples, 64-byte aligned; blocks are taken at (16, 16), the
// references one sample to the right and below, so their rows are unaligned as in a search.
struct Frame {
    std::vector<uint8_t> storage = std::vector<uint8_t>(kStep * 64 + 64);
    uint8_t* base;
    Frame() {
        base = storage.data() + (64 - reinterpret_cast<uintptr_t>(storage.data()) % 64) % 64;
        uint32_t x = 12345;
        for (int i = 0; i < kStep * 64; ++i) base[i] = uint8_t((x = x * 1103515245u + 12345u) >> 24);
    }
    const uint8_t* cur() const { return base + 16 * kStep + 16; }
    const uint8_t* ref() const { return base + 17 * kStep + 19; }
    const uint8_t* ref2() const { return base + 30 * kStep + 5; }
};

const Frame& frame() {
    static const Frame f;
    return f;
}

// Times op(frame) with its result kept alive.
template <class Op>
Body timed(Op op) {
    return [op](benchmark::State& state) {
        const Frame& f = frame();
        for (auto _ : state) {
            auto r = op(f);
            benchmark::DoNotOptimize(r);
        }
    };
}

const char* const kPhase[4] = {"ff", "fh", "hf", "hh"};

// Times one SAD slot on the frame's blocks; `cur_offset` 1 makes the current block unaligned.
template <class Slot>
void sad_row(const std::string& fn, const std::string& args, Slot slot, int cur_offset = 0) {
    add_kernel<SadDsp>(
        fn, args, init_sad_dsp, ref::init_sad, [slot](const SadDsp& d) { return (const void*)slot(d); },
        [slot, cur_offset](const SadDsp& d, benchmark::State& st) {
            const Frame& f = frame();
            const auto k = slot(d);
            for (auto _ : st) {
                int32_t s;
                k(f.cur() + cur_offset, kStep, f.ref(), kStep, &s);
                benchmark::DoNotOptimize(s);
            }
        });
}

template <class Slot>
void sad_blocks_row(const std::string& fn, Slot slot) {
    add_kernel<SadDsp>(
        fn, "16x16 integer", init_sad_dsp, ref::init_sad,
        [slot](const SadDsp& d) { return (const void*)slot(d); },
        [slot](const SadDsp& d, benchmark::State& st) {
            const Frame& f = frame();
            const auto k = slot(d);
            for (auto _ : st) {
                uint16_t s[16];
                k(f.cur(), kStep, f.ref(), kStep, s);
                benchmark::DoNotOptimize(s[0]);
            }
        });
}

void sad_rows() {
    for (int ph = 0; ph < 4; ++ph) {
        const std::string p = std::string("phase ") + kPhase[ph];
        sad_row("kvtiSAD16x16_8u32s", p + ", cur aligned", [ph](const SadDsp& d) { return d.sad16_a16[ph]; });
        sad_row(
            "kvtiSAD16x16_8u32s", p, [ph](const SadDsp& d) { return d.sad16[ph]; }, 1);
        sad_row("kvtiSAD8x8_8u32s_C1R", p, [ph](const SadDsp& d) { return d.sad8[ph]; });
    }
    sad_row("kvtiSAD4x4_8u32s", "", [](const SadDsp& d) { return d.sad4; });
    sad_blocks_row("kvtiSAD16x16Blocks8x8_8u16u", [](const SadDsp& d) { return d.blocks8x8; });
    sad_blocks_row("kvtiSAD16x16Blocks4x4_8u16u", [](const SadDsp& d) { return d.blocks4x4; });
    // The exported front: argument checks and one jump through the table.
    add_column("kvtiSAD8x8_8u32s_C1R", "phase ff, front", "front", timed([](const Frame& f) {
                   Kvt32s s;
                   kvtiSAD8x8_8u32s_C1R(f.cur(), kStep, f.ref(), kStep, &s, 0);
                   return s;
               }));
}

// Rows of the functions that take a phase, for phase code t.
template <int t>
void phase_rows() {
    const int ph = t >> 2;
    const std::string p = std::string("/") + kPhase[ph];
    constexpr int tb = 12 - t;
    add_row("kvtiSqrDiff16x16_8u32s" + p, timed([](const Frame& f) {
                int32_t s;
                sqrdiff_16x16_ref<t>(f.cur(), kStep, f.ref(), kStep, &s);
                return s;
            }),
            timed([](const Frame& f) {
                Kvt32s s;
                kvtiSqrDiff16x16_8u32s(f.cur(), kStep, f.ref(), kStep, t, &s);
                return s;
            }));
    add_row("kvtiSqrDiff16x16B_8u32s" + p + "-" + kPhase[3 - ph], timed([](const Frame& f) {
                int32_t s;
                sqrdiff_16x16b_ref<t, tb>(f.cur(), kStep, f.ref(), kStep, f.ref2(), kStep, &s);
                return s;
            }),
            timed([](const Frame& f) {
                Kvt32s s;
                kvtiSqrDiff16x16B_8u32s(f.cur(), kStep, f.ref(), kStep, t, f.ref2(), kStep, tb, &s);
                return s;
            }));
    add_row("kvtiVarMeanDiff16x16_8u32s_C1R" + p, timed([](const Frame& f) {
                int32_t v[4], m[4];
                const int32_t sums[4] = {8000, 8000, 8000, 8000};
                varmeandiff_16x16_ref<t>(f.cur(), kStep, f.ref(), kStep, sums, v, m);
                return v[0] + m[3];
            }),
            timed([](const Frame& f) {
                Kvt32s v[4], m[4];
                const Kvt32s sums[4] = {8000, 8000, 8000, 8000};
                kvtiVarMeanDiff16x16_8u32s_C1R(f.cur(), kStep, f.ref(), kStep, sums, v, m, t);
                return v[0] + m[3];
            }));
    add_row("kvtiVarMeanDiff16x8_8u32s_C1R" + p, timed([](const Frame& f) {
                int32_t v[2], m[2];
                const int32_t sums[2] = {8000, 8000};
                varmeandiff_16x8_ref<t>(f.cur(), kStep, f.ref(), kStep, sums, v, m);
                return v[0] + m[1];
            }),
            timed([](const Frame& f) {
                Kvt32s v[2], m[2];
                const Kvt32s sums[2] = {8000, 8000};
                kvtiVarMeanDiff16x8_8u32s_C1R(f.cur(), kStep, f.ref(), kStep, sums, v, m, t);
                return v[0] + m[1];
            }));
}

}  // namespace

KVT_BENCH_ROWS {
    sad_rows();
    phase_rows<0>();
    phase_rows<4>();
    phase_rows<8>();
    phase_rows<12>();
    add_row("kvtiVariance16x16_8u32s", timed([](const Frame& f) {
                int32_t v;
                variance_16x16_ref(f.cur(), kStep, &v);
                return v;
            }),
            timed([](const Frame& f) {
                Kvt32s v;
                kvtiVariance16x16_8u32s(f.cur(), kStep, &v);
                return v;
            }));
    add_row("kvtiVarMean8x8_8u32s_C1R", timed([](const Frame& f) {
                int32_t v, m;
                varmean_8x8_8u_ref(f.cur(), kStep, &v, &m);
                return v + m;
            }),
            timed([](const Frame& f) {
                Kvt32s v, m;
                kvtiVarMean8x8_8u32s_C1R(f.cur(), kStep, &v, &m);
                return v + m;
            }));
    add_row("kvtiVarMean8x8_16s32s_C1R", timed([](const Frame& f) {
                int32_t v, m;
                varmean_8x8_16s_ref(reinterpret_cast<const int16_t*>(f.base), kStep, &v, &m);
                return v + m;
            }),
            timed([](const Frame& f) {
                Kvt32s v, m;
                kvtiVarMean8x8_16s32s_C1R(reinterpret_cast<const Kvt16s*>(f.base), kStep, &v, &m);
                return v + m;
            }));
    add_row("kvtiMeanAbsDev16x16_8u32s_C1R", timed([](const Frame& f) {
                int32_t d;
                mean_abs_dev_16x16_ref(f.cur(), kStep, &d);
                return d;
            }),
            timed([](const Frame& f) {
                Kvt32s d;
                kvtiMeanAbsDev16x16_8u32s_C1R(f.cur(), kStep, &d);
                return d;
            }));
    // Thresholds that keep the count below 225 make the detector visit all fifteen rows.
    add_row("kvtiEdgesDetect16x16_8u_C1R/all-rows", timed([](const Frame& f) {
                uint8_t flag;
                edges_16x16_ref(f.cur(), kStep, 100, 0, &flag);
                return flag;
            }),
            timed([](const Frame& f) {
                Kvt8u flag;
                kvtiEdgesDetect16x16_8u_C1R(f.cur(), kStep, 100, 0, &flag);
                return flag;
            }));
    return 0;
}
