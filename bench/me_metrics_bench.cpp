// Block metrics of motion estimation: reference kernels against the exported functions (whose
// SIMD column includes the front's checks and dispatch).
#include <cstdint>
#include <string>
#include <vector>

#include "bench.h"
#include "kvtvc.h"
#include "me/edges_kernels.h"
#include "me/sad_kernels.h"
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

// Rows of the functions that take a phase, for phase code t.
template <int t>
void phase_rows() {
    const int ph = t >> 2;
    const std::string p = std::string("/") + kPhase[ph];
    constexpr int tb = 12 - t;
    add_row("kvtiSAD16x16_8u32s" + p, timed([](const Frame& f) {
                int32_t s;
                sad_16x16_ref<t>(f.cur(), kStep, f.ref(), kStep, &s);
                return s;
            }),
            timed([](const Frame& f) {
                Kvt32s s;
                kvtiSAD16x16_8u32s(f.cur(), kStep, f.ref(), kStep, &s, t);
                return s;
            }));
    add_row("kvtiSAD16x16_8u32s" + p + "/unaligned", timed([](const Frame& f) {
                int32_t s;
                sad_16x16_ref<t>(f.cur() + 1, kStep, f.ref(), kStep, &s);
                return s;
            }),
            timed([](const Frame& f) {
                Kvt32s s;
                kvtiSAD16x16_8u32s(f.cur() + 1, kStep, f.ref(), kStep, &s, t);
                return s;
            }));
    add_row("kvtiSAD8x8_8u32s_C1R" + p, timed([](const Frame& f) {
                int32_t s;
                sad_8x8_ref<t>(f.cur(), kStep, f.ref(), kStep, &s);
                return s;
            }),
            timed([](const Frame& f) {
                Kvt32s s;
                kvtiSAD8x8_8u32s_C1R(f.cur(), kStep, f.ref(), kStep, &s, t);
                return s;
            }));
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
    phase_rows<0>();
    phase_rows<4>();
    phase_rows<8>();
    phase_rows<12>();
    add_row("kvtiSAD4x4_8u32s", timed([](const Frame& f) {
                int32_t s;
                sad_4x4_ref(f.cur(), kStep, f.ref(), kStep, &s);
                return s;
            }),
            timed([](const Frame& f) {
                Kvt32s s;
                kvtiSAD4x4_8u32s(f.cur(), kStep, f.ref(), kStep, &s);
                return s;
            }));
    add_row("kvtiSAD16x16Blocks8x8_8u16u",
            timed([](const Frame& f) {
                uint16_t s[4];
                sad_16x16_blocks8x8_ref(f.cur(), kStep, f.ref(), kStep, s);
                return s[0] + s[3];
            }),
            timed([](const Frame& f) {
                Kvt16u s[4];
                kvtiSAD16x16Blocks8x8_8u16u(f.cur(), kStep, f.ref(), kStep, s);
                return s[0] + s[3];
            }));
    add_row("kvtiSAD16x16Blocks4x4_8u16u",
            timed([](const Frame& f) {
                uint16_t s[16];
                sad_16x16_blocks4x4_ref(f.cur(), kStep, f.ref(), kStep, s);
                return s[0] + s[15];
            }),
            timed([](const Frame& f) {
                Kvt16u s[16];
                kvtiSAD16x16Blocks4x4_8u16u(f.cur(), kStep, f.ref(), kStep, s);
                return s[0] + s[15];
            }));
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
    add_row("kvtiVarMean8x8_8u32s_C1R",
            timed([](const Frame& f) {
                int32_t v, m;
                varmean_8x8_8u_ref(f.cur(), kStep, &v, &m);
                return v + m;
            }),
            timed([](const Frame& f) {
                Kvt32s v, m;
                kvtiVarMean8x8_8u32s_C1R(f.cur(), kStep, &v, &m);
                return v + m;
            }));
    add_row("kvtiVarMean8x8_16s32s_C1R",
            timed([](const Frame& f) {
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
    add_row("kvtiEdgesDetect16x16_8u_C1R/all-rows",
            timed([](const Frame& f) {
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
