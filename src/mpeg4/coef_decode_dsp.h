// Kernel table of the MPEG-4 coefficient decoders that stop at quantized coefficients, and of the
// H.263 / MPEG-4 block decoders that go on to residuals or pixels. Bitstream decoding is scalar:
// only the portable tier exists. The block decoders reach the inverse quantizers, the inverse scans
// and the inverse DCT through the library's exported functions, so they use the fastest tier of each.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

// The intra block state and parameters of the MPEG-4 intra block decoders (see kvtvc.h).
struct Mpeg4IntraArgs {
    int16_t* row;
    int16_t* col;
    int qp, pred_qp, pred_dir, ac_pred, block_index, dc_vlc;
    const uint8_t* matrix;
};

struct CoefDecodeDsp {
    KvtStatus (*intra_dc)(uint8_t** pp, int* offset, int16_t* dc, int chroma);
    // scan: 0 zigzag, 1 alternate vertical, 2 alternate horizontal.
    KvtStatus (*zigzag_intra_dc)(uint8_t** pp, int* offset, int16_t* dst, int scan, int chroma);
    KvtStatus (*zigzag_intra_ac)(uint8_t** pp, int* offset, int16_t* dst, int scan);
    KvtStatus (*zigzag_inter)(uint8_t** pp, int* offset, int16_t* dst);

    KvtStatus (*intra_dc_only_h263)(uint8_t** pp, int* offset, uint8_t* dst, int step);
    KvtStatus (*intra_h263)(uint8_t** pp, int* offset, uint8_t* dst, int step, int qp);
    KvtStatus (*inter_h263)(uint8_t** pp, int* offset, int16_t* dst, int qp);
    KvtStatus (*adv_intra_h263)(uint8_t** pp, int* offset, uint8_t* dst, int step, int16_t* row, int16_t* col,
                                int qp, int mode, int coded);
    KvtStatus (*inter_mpeg4)(uint8_t** pp, int* offset, int16_t* dst, int qp, const uint8_t* matrix);
    // [0] without AC codes, [1] with them.
    KvtStatus (*intra_mpeg4[2])(uint8_t** pp, int* offset, uint8_t* dst, int step, const Mpeg4IntraArgs& a);
};

namespace c {
void init_coef_decode(CoefDecodeDsp& d);
}
namespace ref {
void init_coef_decode(CoefDecodeDsp& d);
}

void init_coef_decode_dsp(CoefDecodeDsp& d, unsigned cpu_flags);

}  // namespace kvt
