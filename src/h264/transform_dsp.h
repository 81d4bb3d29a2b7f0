// Kernel table of the H.264 decoder-side 4x4 transforms (H.264 8.5.10 to 8.5.12, and the SP/SI
// decoding of 8.6): inverse DC transforms with their scaling, dequantization and inverse
// transform of residual blocks (alone or added to a prediction), and the SP/SI paths.
// Coefficient blocks are 16 int16_t in raster order unless a kernel takes a byte step.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

// Residual kernels: dc is the caller's already scaled DC coefficient, or null to scale c[0];
// factors are the 16 dequantization factors of the block's QP (h264::InvQuantCoef[qp]).
using ResidualFn = KvtStatus (*)(int16_t* c, int step, const int16_t* dc, const int16_t* factors);
// Residual added to pred into dst; the block receives the residual (the DC-only kernels only read
// it). Without the caller's DC the kernel gets the factors (six arguments, all in registers on
// x86-64); with it, the exported function's arguments in its order, so that the front jumps
// without moving any (QP stays in the caller's stack slot), and c may be null in the DC-only one.
using ResidualAddFn = KvtStatus (*)(const uint8_t* pred, int16_t* c, const int16_t* factors, uint8_t* dst,
                                    int pred_step, int dst_step);
using ResidualAddDcFn = KvtStatus (*)(const uint8_t* pred, int16_t* c, const int16_t* dc, uint8_t* dst,
                                      int pred_step, int dst_step, int qp);

struct TransformDsp {
    KvtStatus (*luma_dc)(int16_t* c, int qp);    // 16 Intra16x16 DC levels
    KvtStatus (*chroma_dc)(int16_t* c, int qp);  // 4 chroma DC levels
    ResidualFn residual;                         // dequantize, inverse transform
    ResidualFn residual_dc;                      // no AC levels: (DC + 32) >> 6 everywhere
    ResidualAddFn residual_add;
    ResidualAddFn residual_dc_add;
    ResidualAddDcFn residual_add_dc;  // the same with the caller's DC
    ResidualAddDcFn residual_dc_add_dc;
    KvtStatus (*transform_prediction)(const uint8_t* src, int step, int16_t* dst);
    // SP/SI: levels c and the transformed prediction to reconstructed samples (q1 = si ? qs : qp).
    KvtStatus (*sisp_residual)(int16_t* c, const int16_t* pred, const int16_t* dc, int ac, int qp, int qs,
                               int si);
    KvtStatus (*sisp_chroma_dc)(int16_t* c, const int16_t* pred, int qp, int qs, int si);
};

namespace c {
void init_transform(TransformDsp& d);
}
namespace ref {
void init_transform(TransformDsp& d);
}
namespace sse2 {
void init_transform(TransformDsp& d);
}
namespace ssse3 {
void init_transform(TransformDsp& d);
}
namespace avx512 {
void init_transform(TransformDsp& d);
}

void init_transform_dsp(TransformDsp& d, unsigned cpu_flags);

}  // namespace kvt
