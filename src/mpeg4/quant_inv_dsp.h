// Kernel table of the H.263 / MPEG-4 inverse quantizers and the MPEG-4 intra AC/DC prediction.
// Coefficients are modified in place; lo and hi are the saturation bounds (lo = -hi - 1, hi at
// most 32767).
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

// H.263 method (H.263 6.2.1, ISO/IEC 14496-2 7.4.4.2) on entries 0 .. len - 1: a level L != 0
// becomes 2 QP L + q' (sign of L), q' = QP odd ? QP : QP - 1, clamped to [lo, hi].
using DequantH263Fn = KvtStatus (*)(int16_t* c, int len, int qp, int lo, int hi);
// The same on entries 1 .. len - 1; entry 0 (the DC) becomes clamp(c[0] * dc_scale).
using DequantH263IntraFn = KvtStatus (*)(int16_t* c, int len, int qp, int dc_scale, int lo, int hi);
// H.263 intra: entries 1 .. len - 1 as above with [-2048, 2047]; entry 0 an INTRADC value.
using DequantIntraDcFn = KvtStatus (*)(int16_t* c, int len, int qp);
// Weighting-matrix method (ISO/IEC 14496-2 7.4.4.1) on all 64 entries, with mismatch control.
using DequantMatrixFn = KvtStatus (*)(int16_t* c, int qp, const uint8_t* w, int lo, int hi);
// Intra: entry 0 becomes clamp(c[0] * dc_scale) and starts the mismatch sum.
using DequantMatrixIntraFn = KvtStatus (*)(int16_t* c, int qp, const uint8_t* w, int dc_scale, int lo,
                                           int hi);
// MPEG-4 intra DC and AC prediction (ISO/IEC 14496-2 7.4.3); arguments as the exported function.
using PredictIntraFn = KvtStatus (*)(int16_t* c, int16_t* row, int16_t* col, int qp, int pred_qp, int dir,
                                     int ac_pred, int chroma);

struct QuantInvDsp {
    DequantH263Fn h263;
    DequantH263IntraFn h263_intra;
    DequantIntraDcFn h263_intradc;
    DequantMatrixFn matrix_inter;
    DequantMatrixIntraFn matrix_intra;
    PredictIntraFn predict_intra;
};

namespace c {
void init_quant_inv(QuantInvDsp& d);
}
namespace ref {
void init_quant_inv(QuantInvDsp& d);
}
namespace sse2 {
void init_quant_inv(QuantInvDsp& d);
}
namespace ssse3 {
void init_quant_inv(QuantInvDsp& d);
}

void init_quant_inv_dsp(QuantInvDsp& d, unsigned cpu_flags);

// MPEG-4 DC scaler (ISO/IEC 14496-2 Table 7-1) for QP 1..31.
constexpr int dc_scaler(int qp, bool chroma) {
    if (qp <= 4) return 8;
    if (chroma) return qp <= 24 ? (qp + 13) / 2 : qp - 6;
    return qp <= 8 ? 2 * qp : qp <= 24 ? qp + 8 : 2 * qp - 16;
}

// q' of the H.263 method.
constexpr int h263_offset(int qp) { return (qp & 1) ? qp : qp - 1; }

}  // namespace kvt
