// Kernels of the residual family: single-direction and bidirectional block residuals, residual
// sums of 4x4 sub-blocks, and the 8x8 texture error of shape coding.
//
// The residual kernels come as tables indexed the way the fronts pick them:
//   single direction: ((type & 12) >> 1) | (prediction wanted ? 1 : 0)  -> 8 entries
//   bidirectional:    ((forward type & 12) >> 2) | (backward type & 12)   -> 16 entries
// Arguments are valid when a kernel is called; `rounding` is 0 or 1.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "common/dispatch.h"
#include "kvtvc.h"
#include "me/halfpel.h"

namespace kvt {

using GetDiffKernel = KvtStatus (*)(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step,
                                    int16_t* diff, int diff_step, int16_t* pred, int pred_step, int rounding);
using GetDiffBKernel = KvtStatus (*)(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step,
                                     const uint8_t* bwd, int bwd_step, int16_t* diff, int diff_step,
                                     int rounding);
using GetDiffTable = std::array<GetDiffKernel, 8>;
using GetDiffBTable = std::array<GetDiffBKernel, 16>;

inline int get_diff_index(int type, bool with_pred) {
    return ((type & kMcPhaseBits) >> 1) | (with_pred ? 1 : 0);
}
inline int get_diff_b_index(int fwd_type, int bwd_type) {
    return ((fwd_type & kMcPhaseBits) >> 2) | (bwd_type & kMcPhaseBits);
}

// Table builders: K<W, H, Type, Wide, WithPred>::run and K<W, H, ForwardType, BackwardType>::run,
// placed at the index the fronts compute.
template <template <int, int, int, bool, bool> class K, int W, int H, bool Wide, size_t... I>
constexpr GetDiffTable make_get_diff_table(std::index_sequence<I...>) {
    return {{&K<W, H, int(I >> 1) << 2, Wide, (I & 1) != 0>::run...}};
}
template <template <int, int, int, bool, bool> class K, int W, int H, bool Wide>
constexpr GetDiffTable make_get_diff_table() {
    return make_get_diff_table<K, W, H, Wide>(std::make_index_sequence<8>{});
}
template <template <int, int, int, int> class K, int W, int H, size_t... I>
constexpr GetDiffBTable make_get_diff_b_table(std::index_sequence<I...>) {
    return {{&K<W, H, int(I & 3) << 2, int(I & 12)>::run...}};
}
template <template <int, int, int, int> class K, int W, int H>
constexpr GetDiffBTable make_get_diff_b_table() {
    return make_get_diff_b_table<K, W, H>(std::make_index_sequence<16>{});
}

#define KVT_DECLARE_RESIDUAL_KERNELS(isa)                                                                 \
    extern const GetDiffTable get_diff_16x16_##isa;                                                       \
    extern const GetDiffTable get_diff_16x8_##isa;                                                        \
    extern const GetDiffTable get_diff_8x16_##isa;                                                        \
    extern const GetDiffTable get_diff_8x8_##isa;                                                         \
    extern const GetDiffTable get_diff_8x4_##isa;                                                         \
    extern const GetDiffBTable get_diff_b_16x16_##isa;                                                    \
    extern const GetDiffBTable get_diff_b_16x8_##isa;                                                     \
    extern const GetDiffBTable get_diff_b_8x16_##isa;                                                     \
    extern const GetDiffBTable get_diff_b_8x8_##isa;                                                      \
    extern const GetDiffBTable get_diff_b_8x4_##isa;                                                      \
    /* sums of the 4x4 sub-blocks, raster order; a non-null diff gets one 16-value tile each */           \
    KvtStatus sums_diff_16x16_##isa(const uint8_t* cur, int cur_step, const uint8_t* pred, int pred_step, \
                                    int16_t* sums, int16_t* diff);                                        \
    KvtStatus sums_diff_8x8_##isa(const uint8_t* cur, int cur_step, const uint8_t* pred, int pred_step,   \
                                  int16_t* sums, int16_t* diff);                                          \
    /* 8x8 residual against 64 contiguous predictions; *sad when sad is non-null */                       \
    KvtStatus texture_error_##isa(const uint8_t* src, int src_step, const uint8_t* pred, int16_t* diff,   \
                                  int32_t* sad);

KVT_DECLARE_RESIDUAL_KERNELS(ref)
#if KVT_HAVE_SSE2
KVT_DECLARE_RESIDUAL_KERNELS(sse2)
#endif
#undef KVT_DECLARE_RESIDUAL_KERNELS

// 4x4 integer-position residual: four samples a row do not pay for a vector path.
KvtStatus get_diff_4x4_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int16_t* diff,
                           int diff_step);

}  // namespace kvt
