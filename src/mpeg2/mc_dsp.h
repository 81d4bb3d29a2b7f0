// Kernel table of MPEG-1/2 block motion compensation (ISO/IEC 13818-2 7.6): half-sample
// prediction from one or two references plus a 16-bit residual, and the plain and
// rounding-controlled block copies of the same family.
//
// Phase index = bits 2 and 3 of the motion-compensation type: 0 FF, 1 FH (vertical half),
// 2 HF (horizontal half), 3 HH. With a the reference sample, b its horizontal neighbour, c the
// one below and d the one below b, and rounding control r:
//   FF a,  FH (a + c + 1 - r) >> 1,  HF (a + b + 1 - r) >> 1,  HH (a + b + c + d + 2 - r) >> 2.
// The residual kernels take r as the caller gave it (used unmasked); the copies fix it to 0 or 1.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/kernel.h"
#include "kvtvc.h"

namespace kvt {

// A block shape of the kvtiMC* functions; nb is the byte distance of the horizontal neighbour
// (2 for interleaved chroma, whose U and V samples alternate).
struct McShape {
    int w, h, nb;
};

inline constexpr McShape kMcShapes[] = {{16, 16, 1}, {16, 8, 1}, {16, 4, 1}, {8, 16, 1},
                                        {8, 8, 1},   {8, 4, 1},  {4, 8, 1},  {4, 4, 1},
                                        {4, 2, 1},   {2, 4, 1},  {2, 2, 1},  {16, 8, 2}};
constexpr int kMcShapeCount = int(sizeof(kMcShapes) / sizeof(kMcShapes[0]));
enum McShapeIndex {
    kMc16x16,
    kMc16x8,
    kMc16x4,
    kMc8x16,
    kMc8x8,
    kMc8x4,
    kMc4x8,
    kMc4x4,
    kMc4x2,
    kMc2x4,
    kMc2x2,
    kMc16x8UV
};

constexpr bool mc_half_v(int phase) { return phase & 1; }
constexpr bool mc_half_h(int phase) { return phase & 2; }

// Sizes of the rounding-controlled copies: widths and heights 4, 8 and 16, indexed 0, 1, 2.
constexpr int kMcBlockSizes[] = {4, 8, 16};

// Prediction plus residual, saturated to 8 bits; the residual step is in bytes.
using McFn = KvtStatus (*)(const uint8_t* ref, int ref_step, const int16_t* res, int res_step, uint8_t* dst,
                           int dst_step, int r);
// The same with the rounded-up average of a forward and a backward prediction.
using McBiFn = KvtStatus (*)(const uint8_t* fwd, int fwd_step, const uint8_t* bwd, int bwd_step,
                             const int16_t* res, int res_step, uint8_t* dst, int dst_step, int r);
// Prediction only.
using McCopyFn = KvtStatus (*)(const uint8_t* src, int src_step, uint8_t* dst, int dst_step);

// Flat tables; the index helpers below name the layout.
struct McDsp {
    McFn mc[kMcShapeCount * 4];        // mc_index(shape, phase)
    McBiFn mc_bi[kMcShapeCount * 16];  // mc_bi_index(shape, forward phase, backward phase)
    McCopyFn copy[3 * 3 * 4 * 2];      // copy_index(width index, height index, phase, rounding)
};

constexpr int mc_index(int shape, int phase) { return shape * 4 + phase; }
constexpr int mc_bi_index(int shape, int fwd, int bwd) { return shape * 16 + bwd * 4 + fwd; }
constexpr int copy_index(int wi, int hi, int phase, int rounding) {
    return ((wi * 3 + hi) * 4 + phase) * 2 + rounding;
}

// What a slot stands for: the inverses of the index helpers, for tables filled from templates.
struct McSlot {
    int shape, phase;
};
struct McBiSlot {
    int shape, fwd, bwd;
};
struct CopySlot {
    int w, h, phase, rounding;  // w and h in samples
};
constexpr McSlot mc_slot_of(int i) { return {i / 4, i % 4}; }
constexpr McBiSlot mc_bi_slot_of(int i) { return {i / 16, i % 4, i / 4 % 4}; }
constexpr CopySlot copy_slot_of(int i) {
    return {kMcBlockSizes[i / 24], kMcBlockSizes[i / 8 % 3], i / 2 % 4, i % 2};
}
static_assert(round_trips(kMcShapeCount * 4,
                          [](int i) { return mc_index(mc_slot_of(i).shape, mc_slot_of(i).phase); }));
static_assert(round_trips(kMcShapeCount * 16, [](int i) {
    const McBiSlot s = mc_bi_slot_of(i);
    return mc_bi_index(s.shape, s.fwd, s.bwd);
}));
static_assert(round_trips(72, [](int i) {
    const CopySlot s = copy_slot_of(i);  // sizes 4, 8, 16 are indices 0, 1, 2
    return copy_index(s.w / 8, s.h / 8, s.phase, s.rounding);
}));

namespace c {
void init_mc(McDsp& d);
}
namespace ref {
void init_mc(McDsp& d);
}
namespace sse2 {
void init_mc(McDsp& d);
}
namespace avx2 {
void init_mc(McDsp& d);
}
void init_mc_dsp(McDsp& d, unsigned cpu_flags);

}  // namespace kvt
