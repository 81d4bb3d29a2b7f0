// Residual family: reference kernel against the public function (which runs the SIMD twin).
#include <string>
#include <vector>

#include "bench.h"
#include "kvtvc.h"
#include "me/residual_kernels.h"

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

template <class Op>
Body timed(Op op) {
    return [op](benchmark::State& state) {
        Frame f;
        for (auto _ : state) {
            op(f);
            benchmark::DoNotOptimize(f.diff.data());
            benchmark::ClobberMemory();
        }
    };
}

constexpr const char* kPhase[] = {"ff", "fh", "hf", "hh"};

using GetDiffFn = decltype(&kvtiGetDiff16x16_8u16s_C1);
using GetDiffBFn = decltype(&kvtiGetDiff16x16B_8u16s_C1);

void add_size(const std::string& size, const GetDiffTable& ref, GetDiffFn fn, const GetDiffBTable& ref_b,
              GetDiffBFn fn_b) {
    const int s = Frame::kStep;
    for (int type = 0; type <= 12; type += 4) {
        const std::string name = "kvtiGetDiff" + size + "_8u16s_C1/" + kPhase[type / 4];
        const GetDiffKernel k = ref[size_t(get_diff_index(type, false))];
        add_row(name, timed([=](Frame& f) { k(f.cur(), s, f.ref(), s, f.diff.data(), 32, nullptr, 0, 0); }),
                timed([=](Frame& f) { fn(f.cur(), s, f.ref(), s, f.diff.data(), 32, nullptr, 0, type, 0); }));
    }
    const GetDiffKernel kp = ref[size_t(get_diff_index(12, true))];
    add_row(
        "kvtiGetDiff" + size + "_8u16s_C1/hh+pred",
        timed([=](Frame& f) { kp(f.cur(), s, f.ref(), s, f.diff.data(), 32, f.pred.data(), 32, 1); }),
        timed([=](Frame& f) { fn(f.cur(), s, f.ref(), s, f.diff.data(), 32, f.pred.data(), 32, 12, 1); }));
    for (int type : {0, 12}) {
        const std::string name = "kvtiGetDiff" + size + "B_8u16s_C1/" + kPhase[type / 4] + kPhase[type / 4];
        const GetDiffBKernel k = ref_b[size_t(get_diff_b_index(type, type))];
        add_row(name,
                timed([=](Frame& f) { k(f.cur(), s, f.ref(), s, f.cur() + 1, s, f.diff.data(), 32, 0); }),
                timed([=](Frame& f) {
                    fn_b(f.cur(), s, f.ref(), s, type, f.cur() + 1, s, type, f.diff.data(), 32, 0);
                }));
    }
}

}  // namespace

KVT_BENCH_ROWS {
    add_size("16x16", get_diff_16x16_ref, kvtiGetDiff16x16_8u16s_C1, get_diff_b_16x16_ref,
             kvtiGetDiff16x16B_8u16s_C1);
    add_size("16x8", get_diff_16x8_ref, kvtiGetDiff16x8_8u16s_C1, get_diff_b_16x8_ref,
             kvtiGetDiff16x8B_8u16s_C1);
    add_size("8x16", get_diff_8x16_ref, kvtiGetDiff8x16_8u16s_C1, get_diff_b_8x16_ref,
             kvtiGetDiff8x16B_8u16s_C1);
    add_size("8x8", get_diff_8x8_ref, kvtiGetDiff8x8_8u16s_C1, get_diff_b_8x8_ref, kvtiGetDiff8x8B_8u16s_C1);
    add_size("8x4", get_diff_8x4_ref, kvtiGetDiff8x4_8u16s_C1, get_diff_b_8x4_ref, kvtiGetDiff8x4B_8u16s_C1);
    const int s = Frame::kStep;
    add_row("kvtiGetDiff4x4_8u16s_C1",
            timed([=](Frame& f) { kvtiGetDiff4x4_8u16s_C1(f.cur(), s, f.ref(), s, f.diff.data(), 8); }), {});
    for (bool tiles : {false, true}) {
        const std::string suffix = tiles ? "/tiles" : "/sums";
        add_row("kvtiSumsDiff16x16Blocks4x4_8u16s_C1" + suffix, timed([=](Frame& f) {
                    sums_diff_16x16_ref(f.cur(), s, f.ref(), s, f.pred.data(),
                                        tiles ? f.diff.data() : nullptr);
                }),
                timed([=](Frame& f) {
                    kvtiSumsDiff16x16Blocks4x4_8u16s_C1(f.cur(), s, f.ref(), s, f.pred.data(),
                                                        tiles ? f.diff.data() : nullptr);
                }));
        add_row("kvtiSumsDiff8x8Blocks4x4_8u16s_C1" + suffix, timed([=](Frame& f) {
                    sums_diff_8x8_ref(f.cur(), s, f.ref(), s, f.pred.data(), tiles ? f.diff.data() : nullptr);
                }),
                timed([=](Frame& f) {
                    kvtiSumsDiff8x8Blocks4x4_8u16s_C1(f.cur(), s, f.ref(), s, f.pred.data(),
                                                      tiles ? f.diff.data() : nullptr);
                }));
    }
    add_row("kvtiComputeTextureErrorBlock_SAD_8u16s", timed([=](Frame& f) {
                int32_t sad;
                texture_error_ref(f.cur(), s, f.ref(), f.diff.data(), &sad);
                benchmark::DoNotOptimize(sad);
            }),
            timed([=](Frame& f) {
                Kvt32s sad;
                kvtiComputeTextureErrorBlock_SAD_8u16s(f.cur(), s, f.ref(), f.diff.data(), &sad);
                benchmark::DoNotOptimize(sad);
            }));
    add_row("kvtiComputeTextureErrorBlock_8u16s",
            timed([=](Frame& f) { texture_error_ref(f.cur(), s, f.ref(), f.diff.data(), nullptr); }),
            timed([=](Frame& f) { kvtiComputeTextureErrorBlock_8u16s(f.cur(), s, f.ref(), f.diff.data()); }));
    return 0;
}
