// Residual family: the oracle and every tier of the residual slots of the metric table.
#include <string>
#include <vector>

#include "bench.h"
#include "kvtvc.h"
#include "me/me_dsp.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

// Blocks inside a 64-byte-aligned frame with a 48-byte row step (so rows are not all 16-byte
// aligned), a residual and a prediction array of 16x16 16-bit values.
struct Frame {
    static constexpr int kStep = 48;
    std::vector<uint8_t> storage = std::vector<uint8_t>(kStep * 40 + 64);
    std::vector<int16_t> diff = std::vector<int16_t>(256), pred = std::vector<int16_t>(256);
    Frame() {
        for (size_t i = 0; i < storage.size(); ++i) storage[i] = uint8_t(i * 37 + (i >> 5));
    }
    const uint8_t* cur() const { return storage.data() + 64; }
    const uint8_t* ref() const { return storage.data() + 64 + 18 * kStep + 3; }
};

constexpr const char* kPhase[] = {"ff", "fh", "hf", "hh"};
constexpr const char* kSize[] = {"16x16", "16x8", "8x16", "8x8", "8x4"};
constexpr int kStep = Frame::kStep;

// One row: call(kernel, frame) is one call writing into the frame's residual.
template <class Slot, class Call>
void residual_row(const std::string& fn, const std::string& args, Slot slot, Call call) {
    add_kernel<MeDsp>(
        fn, args, init_me_dsp, ref::init_me, [slot](const MeDsp& d) { return (const void*)slot(d); },
        [slot, call](const MeDsp& d, benchmark::State& st) {
            Frame f;
            const auto k = slot(d);
            for (auto _ : st) {
                call(k, f);
                benchmark::DoNotOptimize(f.diff.data());
                benchmark::ClobberMemory();
            }
        });
}

void size_rows(int z) {
    const std::string fn = std::string("kvtiGetDiff") + kSize[z] + "_8u16s_C1";
    const auto diff_only = [](auto k, Frame& f) {
        k(f.cur(), kStep, f.ref(), kStep, f.diff.data(), 32, nullptr, 0, 0);
    };
    for (int ph = 0; ph < 4; ++ph)
        residual_row(
            fn, std::string("phase ") + kPhase[ph], [z, ph](const MeDsp& d) { return d.get_diff[z][2 * ph]; },
            diff_only);
    residual_row(
        fn, "phase hh, rounding 1, with prediction", [z](const MeDsp& d) { return d.get_diff[z][7]; },
        [](auto k, Frame& f) { k(f.cur(), kStep, f.ref(), kStep, f.diff.data(), 32, f.pred.data(), 32, 1); });
    const std::string fn_b = std::string("kvtiGetDiff") + kSize[z] + "B_8u16s_C1";
    for (int ph : {0, 3})
        residual_row(
            fn_b, std::string("fwd ") + kPhase[ph] + " bwd " + kPhase[ph],
            [z, ph](const MeDsp& d) { return d.get_diff_b[z][5 * ph]; },
            [](auto k, Frame& f) {
                k(f.cur(), kStep, f.ref(), kStep, f.cur() + 1, kStep, f.diff.data(), 32, 0);
            });
}

}  // namespace

KVT_BENCH_ROWS {
    for (int z = 0; z < kResidualSizes; ++z) size_rows(z);
    residual_row(
        "kvtiGetDiff4x4_8u16s_C1", "", [](const MeDsp& d) { return d.get_diff4x4; },
        [](auto k, Frame& f) { k(f.cur(), kStep, f.ref(), kStep, f.diff.data(), 8); });
    for (bool tiles : {false, true}) {
        const char* args = tiles ? "sums and residual tiles" : "sums only";
        residual_row(
            "kvtiSumsDiff16x16Blocks4x4_8u16s_C1", args, [](const MeDsp& d) { return d.sums_diff16x16; },
            [tiles](auto k, Frame& f) {
                k(f.cur(), kStep, f.ref(), kStep, f.pred.data(), tiles ? f.diff.data() : nullptr);
            });
        residual_row(
            "kvtiSumsDiff8x8Blocks4x4_8u16s_C1", args, [](const MeDsp& d) { return d.sums_diff8x8; },
            [tiles](auto k, Frame& f) {
                k(f.cur(), kStep, f.ref(), kStep, f.pred.data(), tiles ? f.diff.data() : nullptr);
            });
    }
    for (bool sad : {true, false})
        residual_row(
            sad ? "kvtiComputeTextureErrorBlock_SAD_8u16s" : "kvtiComputeTextureErrorBlock_8u16s", "",
            [](const MeDsp& d) { return d.texture_error; },
            [sad](auto k, Frame& f) {
                int32_t s = 0;
                k(f.cur(), kStep, f.ref(), f.diff.data(), sad ? &s : nullptr);
                benchmark::DoNotOptimize(s);
            });
    return 0;
}
