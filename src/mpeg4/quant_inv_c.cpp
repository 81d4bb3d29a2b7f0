// Portable inverse quantizers and MPEG-4 intra prediction, written plainly from the formulas of
// ISO/IEC 14496-2 7.4.3 and 7.4.4 and H.263 6.2.1.
#include <algorithm>

#include "common/kernel.h"
#include "mpeg4/quant_inv_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

int clamp(int v, int lo, int hi) { return std::min(std::max(v, lo), hi); }

int16_t h263_level(int level, int qp, int lo, int hi) {
    if (level == 0) return 0;
    const int q = h263_offset(qp);
    return int16_t(clamp(2 * qp * level + (level > 0 ? q : -q), lo, hi));
}

KvtStatus h263(int16_t* c, int len, int qp, int lo, int hi) {
    for (int i = 0; i < len; ++i) c[i] = h263_level(c[i], qp, lo, hi);
    return kvtStsOk;
}

KvtStatus h263_intra(int16_t* c, int len, int qp, int dc_scale, int lo, int hi) {
    c[0] = int16_t(clamp(c[0] * dc_scale, lo, hi));
    for (int i = 1; i < len; ++i) c[i] = h263_level(c[i], qp, lo, hi);
    return kvtStsOk;
}

// H.263 5.4.1: INTRADC 255 stands for 128, other values are the DC level; the reconstruction is
// 8 times it.
KvtStatus h263_intradc(int16_t* c, int len, int qp) {
    c[0] = c[0] == 255 ? int16_t(1024) : int16_t(c[0] * 8);
    for (int i = 1; i < len; ++i) c[i] = h263_level(c[i], qp, -2048, 2047);
    return kvtStsOk;
}

// The sum of the 64 reconstructed values even: the last coefficient changes by one toward odd
// parity (ISO/IEC 14496-2 7.4.4.3).
void mismatch_control(int16_t* c, int sum) {
    if ((sum & 1) == 0) c[63] = int16_t(c[63] + ((c[63] & 1) ? -1 : 1));
}

// Truncating division by 2^shift, toward zero.
int div_pow2(int v, int shift) { return v < 0 ? -(-v >> shift) : v >> shift; }

KvtStatus matrix_inter(int16_t* c, int qp, const uint8_t* w, int lo, int hi) {
    int sum = 0;
    for (int i = 0; i < 64; ++i) {
        const int level = c[i];
        if (level == 0) continue;
        const int f = div_pow2((2 * level + (level > 0 ? 1 : -1)) * qp * w[i], 4);
        c[i] = int16_t(clamp(f, lo, hi));
        sum += c[i];
    }
    mismatch_control(c, sum);
    return kvtStsOk;
}

KvtStatus matrix_intra(int16_t* c, int qp, const uint8_t* w, int dc_scale, int lo, int hi) {
    c[0] = int16_t(clamp(c[0] * dc_scale, lo, hi));
    int sum = c[0];
    for (int i = 1; i < 64; ++i) {
        c[i] = int16_t(clamp(div_pow2(c[i] * qp * w[i], 3), lo, hi));
        sum += c[i];
    }
    mismatch_control(c, sum);
    return kvtStsOk;
}

// A first-row or first-column AC predictor A scaled from the predicting block's quantizer to the
// current one, rounded to nearest with halves away from zero.
int scaled_ac(int a, int qp, int pred_qp) {
    if (pred_qp == qp) return a;
    const int half = qp / 2;
    return int16_t((a > 0 ? a * pred_qp + half : a * pred_qp - half) / qp);
}

KvtStatus predict_intra(int16_t* c, int16_t* row, int16_t* col, int qp, int pred_qp, int dir, int ac_pred,
                        int chroma) {
    int p = dir == 2 ? row[0] : dir == 1 ? row[-8] : 1024;
    if (p < 0) p = 1024;  // the neighbour is not available
    const int s = dc_scaler(qp, chroma != 0);
    c[0] = int16_t(clamp(int16_t(c[0] + (p + s / 2) / s), -2048, 2047));
    if (ac_pred && dir != 0) {
        const int16_t* a = dir == 2 ? row : col;
        const int stride = dir == 2 ? 1 : 8;
        for (int i = 1; i < 8; ++i)
            if (a[i])
                c[i * stride] = int16_t(clamp(c[i * stride] + scaled_ac(a[i], qp, pred_qp), -2048, 2047));
    }
    for (int i = 1; i < 8; ++i) {
        row[i] = c[i];
        col[i] = c[8 * i];
    }
    return kvtStsOk;
}

}  // namespace

void init_quant_inv(QuantInvDsp& d) {
    d.h263 = h263;
    d.h263_intra = h263_intra;
    d.h263_intradc = h263_intradc;
    d.matrix_inter = matrix_inter;
    d.matrix_intra = matrix_intra;
    d.predict_intra = predict_intra;
}

}  // namespace kvt::KVT_C_NS
