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
// Residual added to pred into dst; the block receives the residual. The DC-only kernel only reads
// the block, and c may be null (then dc is not). The destination step comes last: it is needed
// last (on x86-64 the seventh argument is passed on the stack).
using ResidualAddFn = KvtStatus (*)(int16_t* c, const int16_t* dc, const int16_t* factors,
                                    const uint8_t* pred, int pred_step, uint8_t* dst, int dst_step);

struct TransformDsp {
    KvtStatus (*luma_dc)(int16_t* c, int qp);    // 16 Intra16x16 DC levels
    KvtStatus (*chroma_dc)(int16_t* c, int qp);  // 4 chroma DC levels
    ResidualFn residual;                         // dequantize, inverse transform
    ResidualFn residual_dc;                      // no AC levels: (DC + 32) >> 6 everywhere
    ResidualAddFn residual_add;
    ResidualAddFn residual_dc_add;
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

void init_transform_dsp(TransformDsp& d, unsigned cpu_flags);

}  // namespace kvt
