// H.264 intra prediction: every mode's kernel with all neighbours available, in a 64-byte-step
// plane (compare FFmpeg's pred4x4/pred8x8/pred16x16 rows of checkasm's h264pred test).
#include <cstdint>
#include <string>
#include <vector>

#include "bench.h"
#include "common/cpu.h"
#include "h264/intra_pred_dsp.h"
#include "kvtvc.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

constexpr int kStep = 64;
constexpr unsigned kAll = kNbUpper | kNbLeft | kNbCorner | kNbUpperRight;

// One plane per row, the block at (16, 16) of random samples.
struct Plane {
    std::vector<uint8_t> buf = std::vector<uint8_t>(kStep * 48);
    Plane() { fill_random(buf.data(), buf.size(), 2024); }
    uint8_t* block() { return buf.data() + 16 * kStep + 16; }
};

template <class Slot>
void pred_row(const std::string& fn, const std::string& args, Slot slot) {
    add_kernel<IntraPredDsp>(
        fn, args, init_intra_pred_dsp, ref::init_intra_pred,
        [slot](const IntraPredDsp& d) { return (const void*)slot(d); },
        [slot](const IntraPredDsp& d, benchmark::State& st) {
            Plane p;
            const IntraPredFn k = slot(d);
            for (auto _ : st) {
                benchmark::DoNotOptimize(k(p.block(), kStep));
                benchmark::ClobberMemory();
            }
        });
}

using Front = KvtStatus (*)(Kvt8u*, int, int, Kvt32u);

// The peer's layout for its timed calls: one 16-byte aligned buffer of 3 * 16 * 17 bytes, the
// block 64 bytes in, at a step of 12 (4x4), 24 (chroma 8x8) or 48 (16x16).
struct PeerPlane {
    alignas(16) uint8_t buf[3 * 16 * 17];
    PeerPlane() { fill_random(buf, sizeof buf, 2024); }
    uint8_t* block() { return buf + 64; }
};

// The kernel in use and the exported function, timed the checkasm way (bench.h) in the
// peer's layout.
template <Front front, class Slot>
void ticks_rows(const std::string& fn, const std::string& args, int mode, int step, Slot slot) {
    const std::string name = fn + "/" + args;
    add_ticks_row(name + "/kernel", [slot, step] {
        PeerPlane p;
        IntraPredFn k = slot(table_in_use(init_intra_pred_dsp));
        uint8_t* b = p.block();
        const int s = step;  // a local: kept in a register across the calls
        return checkasm_ticks([&] { k(b, s); });
    });
    add_ticks_row(name + "/front", [mode, step] {
        PeerPlane p;
        uint8_t* b = p.block();
        const int s = step, m = mode;  // locals: kept in registers across the calls
        return checkasm_ticks([&] { front(b, s, m, kAll); });
    });
}

KVT_BENCH_ROWS {
    const char* const k4x4[9] = {"vertical",        "horizontal",    "DC",
                                 "down-left",       "down-right",    "vertical-right",
                                 "horizontal-down", "vertical-left", "horizontal-up"};
    const char* const k16[4] = {"vertical", "horizontal", "DC", "plane"};
    const char* const kChroma[4] = {"DC", "horizontal", "vertical", "plane"};
    for (int m = 0; m < 9; ++m) {
        const auto slot = [m](const IntraPredDsp& d) { return d.pred4x4[m][kAll & kNb4x4]; };
        pred_row("kvtiPredictIntra_4x4_H264_8u_C1IR", k4x4[m], slot);
        ticks_rows<kvtiPredictIntra_4x4_H264_8u_C1IR>("kvtiPredictIntra_4x4_H264_8u_C1IR", k4x4[m], m, 12,
                                                      slot);
    }
    for (int m = 0; m < 4; ++m) {
        const auto slot = [m](const IntraPredDsp& d) { return d.pred16x16[m][kAll & kNbBlock]; };
        pred_row("kvtiPredictIntra_16x16_H264_8u_C1IR", k16[m], slot);
        ticks_rows<kvtiPredictIntra_16x16_H264_8u_C1IR>("kvtiPredictIntra_16x16_H264_8u_C1IR", k16[m], m, 48,
                                                        slot);
    }
    for (int m = 0; m < 4; ++m) {
        const auto slot = [m](const IntraPredDsp& d) { return d.chroma8x8[m][kAll & kNbBlock]; };
        pred_row("kvtiPredictIntraChroma8x8_H264_8u_C1IR", kChroma[m], slot);
        ticks_rows<kvtiPredictIntraChroma8x8_H264_8u_C1IR>("kvtiPredictIntraChroma8x8_H264_8u_C1IR",
                                                           kChroma[m], m, 24, slot);
    }
    return 0;
}

}  // namespace
