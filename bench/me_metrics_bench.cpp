// Block metrics of motion estimation: the oracle and every tier of the SAD and metric tables.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "bench.h"
#include "kvtvc.h"
#include "me/me_dsp.h"
#include "me/sad_dsp.h"

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
        fill_random(base, kStep * 64, 12345);
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
    add_checkasm_column(fn, args, [k = slot(table_in_use(init_sad_dsp)), cur_offset] {
        const uint8_t *const c = frame().cur() + cur_offset, *const r = frame().ref();
        const auto kernel = k;
        int32_t s;
        return checkasm_ticks([&] { kernel(c, kStep, r, kStep, &s); });
    });
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

// One row of the other metrics: call(kernel, frame) is one call, its result kept alive.
template <class Slot, class Call>
void me_row(const std::string& fn, const std::string& args, Slot slot, Call call) {
    add_kernel<MeDsp>(
        fn, args, init_me_dsp, ref::init_me, [slot](const MeDsp& d) { return (const void*)slot(d); },
        [slot, call](const MeDsp& d, benchmark::State& st) {
            const Frame& f = frame();
            const auto k = slot(d);
            for (auto _ : st) benchmark::DoNotOptimize(call(k, f));
        });
}

// Rows of the functions that take a phase; the bidirectional squared difference against the
// opposite backward phase.
void phase_rows() {
    for (int ph = 0; ph < 4; ++ph) {
        const std::string p = std::string("phase ") + kPhase[ph];
        add_checkasm_column("kvtiSqrDiff16x16_8u32s", p, [k = table_in_use(init_me_dsp).sqrdiff16[ph]] {
            const uint8_t *const c = frame().cur(), *const r = frame().ref();
            const auto kernel = k;
            int32_t s;
            return checkasm_ticks([&] { kernel(c, kStep, r, kStep, &s); });
        });
        me_row(
            "kvtiSqrDiff16x16_8u32s", p, [ph](const MeDsp& d) { return d.sqrdiff16[ph]; },
            [](auto k, const Frame& f) {
                int32_t s;
                k(f.cur(), kStep, f.ref(), kStep, &s);
                return s;
            });
        const int pair = ph + 4 * (3 - ph);
        me_row(
            "kvtiSqrDiff16x16B_8u32s", "fwd " + std::string(kPhase[ph]) + " bwd " + kPhase[3 - ph],
            [pair](const MeDsp& d) { return d.sqrdiff16b[pair]; },
            [](auto k, const Frame& f) {
                int32_t s;
                k(f.cur(), kStep, f.ref(), kStep, f.ref2(), kStep, &s);
                return s;
            });
        me_row(
            "kvtiVarMeanDiff16x16_8u32s_C1R", p, [ph](const MeDsp& d) { return d.varmeandiff16x16[ph]; },
            [](auto k, const Frame& f) {
                int32_t v[4], m[4];
                const int32_t sums[4] = {8000, 8000, 8000, 8000};
                k(f.cur(), kStep, f.ref(), kStep, sums, v, m);
                return v[0] + m[3];
            });
        me_row(
            "kvtiVarMeanDiff16x8_8u32s_C1R", p, [ph](const MeDsp& d) { return d.varmeandiff16x8[ph]; },
            [](auto k, const Frame& f) {
                int32_t v[2], m[2];
                const int32_t sums[2] = {8000, 8000};
                k(f.cur(), kStep, f.ref(), kStep, sums, v, m);
                return v[0] + m[1];
            });
    }
}

}  // namespace

KVT_BENCH_ROWS {
    sad_rows();
    phase_rows();
    me_row(
        "kvtiVariance16x16_8u32s", "", [](const MeDsp& d) { return d.variance16; },
        [](auto k, const Frame& f) {
            int32_t v;
            k(f.cur(), kStep, &v);
            return v;
        });
    me_row(
        "kvtiVarMean8x8_8u32s_C1R", "", [](const MeDsp& d) { return d.varmean8x8; },
        [](auto k, const Frame& f) {
            int32_t v, m;
            k(f.cur(), kStep, &v, &m);
            return v + m;
        });
    me_row(
        "kvtiVarMean8x8_16s32s_C1R", "", [](const MeDsp& d) { return d.varmean8x8_16s; },
        [](auto k, const Frame& f) {
            int32_t v, m;
            k(reinterpret_cast<const int16_t*>(f.base), kStep, &v, &m);
            return v + m;
        });
    me_row(
        "kvtiMeanAbsDev16x16_8u32s_C1R", "", [](const MeDsp& d) { return d.mean_abs_dev16; },
        [](auto k, const Frame& f) {
            int32_t v;
            k(f.cur(), kStep, &v);
            return v;
        });
    // Thresholds that keep the count below 225 make the detector visit all fifteen rows.
    me_row(
        "kvtiEdgesDetect16x16_8u_C1R", "all 15 rows", [](const MeDsp& d) { return d.edges16; },
        [](auto k, const Frame& f) {
            uint8_t flag;
            k(f.cur(), kStep, 100, 0, &flag);
            return flag;
        });
    return 0;
}
