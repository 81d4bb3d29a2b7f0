// Kernel table of the motion-estimation metrics other than SAD: squared differences, variances
// and means, block residuals (with the shape-coding texture error) and the edge detector. Each
// source file fills its own slots (init_sqrdiff, init_variance, init_residual,
// init_texture_error, init_edges per tier). Phase-indexed slots take the phase code / 4
// (0 integer, 1 vertical half, 2 horizontal half, 3 both); pairs of phases (forward f, backward
// b) index f + 4 * b. Arguments are valid when a kernel runs; `rounding` is 0 or 1.
#pragma once

#include <cstdint>

#include "common/kernel.h"
#include "kvtvc.h"
#include "me/halfpel.h"

namespace kvt {

using SqrDiffFn = KvtStatus (*)(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,
                                int32_t* sum);
// The prediction is (F + B + 1) >> 1 of the forward and backward fixed-rounding predictions.
using SqrDiffBFn = KvtStatus (*)(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step,
                                 const uint8_t* bwd, int bwd_step, int32_t* sum);
using VarianceFn = KvtStatus (*)(const uint8_t* src, int step, int32_t* var);
using VarMeanFn = KvtStatus (*)(const uint8_t* src, int step, int32_t* var, int32_t* mean);
using VarMean16sFn = KvtStatus (*)(const int16_t* src, int step, int32_t* var, int32_t* mean);
// Per 8x8 quarter (16x16: raster order; 16x8: left, right), from the caller's current sums.
using VarMeanDiffFn = KvtStatus (*)(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,
                                    const int32_t* sums, int32_t* var, int32_t* mean);
using MeanAbsDevFn = KvtStatus (*)(const uint8_t* src, int step, int32_t* dev);
// `pred` null: the residual only.
using GetDiffFn = KvtStatus (*)(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,
                                int16_t* diff, int diff_step, int16_t* pred, int pred_step, int rounding);
using GetDiffBFn = KvtStatus (*)(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step,
                                 const uint8_t* bwd, int bwd_step, int16_t* diff, int diff_step,
                                 int rounding);
using GetDiff4x4Fn = KvtStatus (*)(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,
                                   int16_t* diff, int diff_step);
// Sums of the 4x4 sub-blocks, raster order; a non-null diff gets one 16-value tile each.
using SumsDiffFn = KvtStatus (*)(const uint8_t* cur, int cur_step, const uint8_t* pred, int pred_step,
                                 int16_t* sums, int16_t* diff);
// 8x8 residual against 64 contiguous predictions; *sad when sad is non-null.
using TextureErrorFn = KvtStatus (*)(const uint8_t* src, int src_step, const uint8_t* pred, int16_t* diff,
                                     int32_t* sad);
// *flag = 1 for an edge block, else 0.
using EdgesFn = KvtStatus (*)(const uint8_t* src, int step, uint8_t diff_threshold, uint8_t count_threshold,
                              uint8_t* flag);

// The slot of a pair of types (forward, backward) in sqrdiff16b and get_diff_b, from the types'
// phase bits alone, and the pair of phase codes a slot stands for.
constexpr int pair_index(int fwd_type, int bwd_type) {
    return ((fwd_type & kMcPhaseBits) >> 2) | (bwd_type & kMcPhaseBits);
}
struct PhasePair {
    int fwd, bwd;
};
constexpr PhasePair pair_of(int index) { return {index % 4 * 4, index / 4 * 4}; }

// The slot of get_diff for a type and whether the prediction is wanted, and back.
constexpr int diff_index(int type, bool pred) { return ((type & kMcPhaseBits) >> 1) | (pred ? 1 : 0); }
struct DiffSlot {
    int type;
    bool pred;
};
constexpr DiffSlot diff_slot_of(int index) { return {index / 2 * 4, index % 2 != 0}; }
static_assert(round_trips(16, [](int i) { return pair_index(pair_of(i).fwd, pair_of(i).bwd); }));
static_assert(round_trips(8, [](int i) { return diff_index(diff_slot_of(i).type, diff_slot_of(i).pred); }));

// Residual block sizes, the first index of get_diff and get_diff_b.
enum ResidualSize { k16x16, k16x8, k8x16, k8x8, k8x4, kResidualSizes };

struct MeDsp {
    SqrDiffFn sqrdiff16[4];
    SqrDiffBFn sqrdiff16b[16];  // pair_index(forward, backward)
    VarianceFn variance16;
    VarMeanFn varmean8x8;
    VarMean16sFn varmean8x8_16s;
    VarMeanDiffFn varmeandiff16x16[4];
    VarMeanDiffFn varmeandiff16x8[4];
    MeanAbsDevFn mean_abs_dev16;
    GetDiffFn get_diff[kResidualSizes][8];      // [size][diff_index(type, prediction wanted)]
    GetDiffBFn get_diff_b[kResidualSizes][16];  // [size][pair_index(forward, backward)]
    GetDiff4x4Fn get_diff4x4;
    SumsDiffFn sums_diff16x16;
    SumsDiffFn sums_diff8x8;
    TextureErrorFn texture_error;
    EdgesFn edges16;
};

namespace c {
void init_sqrdiff(MeDsp& d);
void init_variance(MeDsp& d);
void init_residual(MeDsp& d);
void init_texture_error(MeDsp& d);
void init_edges(MeDsp& d);
}  // namespace c
namespace ref {
void init_sqrdiff(MeDsp& d);
void init_variance(MeDsp& d);
void init_residual(MeDsp& d);
void init_texture_error(MeDsp& d);
void init_edges(MeDsp& d);
// The whole oracle table, for tests and benchmarks.
inline void init_me(MeDsp& d) {
    init_sqrdiff(d), init_variance(d), init_residual(d), init_texture_error(d), init_edges(d);
}
}  // namespace ref
namespace sse2 {
void init_sqrdiff(MeDsp& d);
void init_variance(MeDsp& d);
void init_residual(MeDsp& d);
void init_texture_error(MeDsp& d);
void init_edges(MeDsp& d);
}  // namespace sse2
namespace avx2 {
void init_sqrdiff(MeDsp& d);
}

void init_me_dsp(MeDsp& d, unsigned cpu_flags);

// The one table the fronts of these families read (me_dsp.cpp), filled at load time; hidden, so
// that the fronts reach it directly, not through the GOT.
extern const LoadTimeTable<MeDsp, init_me_dsp> me_dsp [[gnu::visibility("hidden")]];

}  // namespace kvt
