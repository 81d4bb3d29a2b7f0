// Portable H.264 decoder-side transform kernels, written from H.264 8.5.10 to 8.5.12 and 8.6
// with the scaling tables of tables.h.
#include <cstring>

#include "h264/tables.h"
#include "h264/transform4x4_c.h"
#include "h264/transform_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

using namespace h264;

constexpr int64_t asr64(int64_t v, int s) { return v >= 0 ? v >> s : ~(~v >> s); }

// Strided 16-bit rows, copied bytewise: a step need not be even.
void load_rows(int16_t* b, const int16_t* src, int step) {
    for (int y = 0; y < 4; ++y)
        std::memcpy(b + 4 * y, reinterpret_cast<const uint8_t*>(src) + intptr_t(y) * step, 8);
}
void store_rows(int16_t* dst, int step, const int16_t* b) {
    for (int y = 0; y < 4; ++y)
        std::memcpy(reinterpret_cast<uint8_t*>(dst) + intptr_t(y) * step, b + 4 * y, 8);
}

// Intra16x16 luma DC (H.264 8.5.10): Hadamard in 16-bit sums, then the QP-dependent rounding.
KvtStatus luma_dc(int16_t* c, int qp) {
    rows_then_columns(c, hadamard<int16_t>);
    const int t = InvQuantLuma16x16DCTable[qp];
    for (int i = 0; i < 16; ++i) {
        const int f = c[i] * t;
        c[i] = int16_t(qp < 6 ? asr(f + 2, 2) : qp < 12 ? asr(f + 1, 1) : f);
    }
    return kvtStsOk;
}

// Chroma DC (H.264 8.5.11): 2x2 transform, then (f * v(QP, 0)) >> 1.
KvtStatus chroma_dc(int16_t* c, int qp) {
    int f[4] = {c[0], c[1], c[2], c[3]};
    hadamard2x2(f);
    for (int i = 0; i < 4; ++i) c[i] = int16_t(asr(f[i] * InvQuantTable[qp][0], 1));
    return kvtStsOk;
}

int16_t dc_coefficient(const int16_t* c, const int16_t* dc, const int16_t* factors) {
    return dc ? *dc : int16_t(c[0] * factors[0]);
}

// Dequantizes the levels of b (DC as dc_coefficient) and inverse-transforms it to the residual.
void dequant_transform(int16_t* b, const int16_t* dc, const int16_t* factors) {
    b[0] = dc_coefficient(b, dc, factors);
    for (int i = 1; i < 16; ++i) b[i] = int16_t(b[i] * factors[i]);
    rows_then_columns(b, inverse_core);
    for (int i = 0; i < 16; ++i) b[i] = round6(b[i]);
}

KvtStatus residual(int16_t* c, int step, const int16_t* dc, const int16_t* factors) {
    int16_t b[16];
    load_rows(b, c, step);
    dequant_transform(b, dc, factors);
    store_rows(c, step, b);
    return kvtStsOk;
}

KvtStatus residual_dc(int16_t* c, int step, const int16_t* dc, const int16_t* factors) {
    int16_t b[16];
    const int16_t r = round6(dc_coefficient(c, dc, factors));
    for (int16_t& v : b) v = r;
    store_rows(c, step, b);
    return kvtStsOk;
}

void add_residual(const uint8_t* pred, int16_t* c, const int16_t* dc, const int16_t* factors, uint8_t* dst,
                  int pred_step, int dst_step) {
    dequant_transform(c, dc, factors);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            dst[intptr_t(y) * dst_step + x] = clip_u8(pred[intptr_t(y) * pred_step + x] + c[4 * y + x]);
}

// The residual is limited to -256..256 so that prediction + residual stays inside ClampTbl; the
// block is only read.
void add_dc_residual(const uint8_t* pred, const int16_t* c, const int16_t* dc, const int16_t* factors,
                     uint8_t* dst, int pred_step, int dst_step) {
    const int16_t r = round6(dc_coefficient(c, dc, factors));
    const int limited = r < -256 ? -256 : r > 256 ? 256 : r;
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            dst[intptr_t(y) * dst_step + x] = ClampTbl[pred[intptr_t(y) * pred_step + x] + limited + 256];
}

KvtStatus residual_add(const uint8_t* pred, int16_t* c, const int16_t* factors, uint8_t* dst, int pred_step,
                       int dst_step) {
    add_residual(pred, c, nullptr, factors, dst, pred_step, dst_step);
    return kvtStsOk;
}
KvtStatus residual_dc_add(const uint8_t* pred, int16_t* c, const int16_t* factors, uint8_t* dst,
                          int pred_step, int dst_step) {
    add_dc_residual(pred, c, nullptr, factors, dst, pred_step, dst_step);
    return kvtStsOk;
}
KvtStatus residual_add_dc(const uint8_t* pred, int16_t* c, const int16_t* dc, uint8_t* dst, int pred_step,
                          int dst_step, int qp) {
    add_residual(pred, c, dc, InvQuantCoef[size_t(qp)].data(), dst, pred_step, dst_step);
    return kvtStsOk;
}
KvtStatus residual_dc_add_dc(const uint8_t* pred, int16_t* c, const int16_t* dc, uint8_t* dst, int pred_step,
                             int dst_step, int) {
    add_dc_residual(pred, c, dc, nullptr, dst, pred_step, dst_step);
    return kvtStsOk;
}

KvtStatus transform_prediction(const uint8_t* src, int step, int16_t* dst) {
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) dst[4 * y + x] = src[intptr_t(y) * step + x];
    rows_then_columns(dst, forward_core);
    return kvtStsOk;
}

// SP/SI requantization (H.264 8.6.1, 8.6.2): the level dequantized with q1 plus the transformed
// prediction cs, quantized with QS and dequantized again.
int16_t requantize(int64_t cs, int qs, int i, int shift) {
    const int64_t m = (std::abs(cs) * QuantCoef[qs % 6][i] + (int64_t(1) << (shift - 1))) >> shift;
    return int16_t((cs <= 0 ? -m : m) * InvQuantTable[qs][QuantIndex[i]]);
}

KvtStatus sisp_residual(int16_t* c, const int16_t* pred, const int16_t* dc, int ac, int qp, int qs, int si) {
    const int q1 = si ? qs : qp;
    int16_t b[16];
    for (int i = 0; i < 16; ++i) {
        const int64_t level = i == 0 || ac ? c[i] : 0;
        const int64_t cs = asr64(level * InvQuantTable[q1][QuantIndex[i]] * MATR[i], 6) + pred[i];
        b[i] = requantize(cs, qs, i, 15 + qs / 6);
    }
    if (dc) b[0] = *dc;
    rows_then_columns(b, inverse_core);
    for (int i = 0; i < 16; ++i) c[i] = clip_u8(round6(b[i]));
    return kvtStsOk;
}

KvtStatus sisp_chroma_dc(int16_t* c, const int16_t* pred, int qp, int qs, int si) {
    const int q1 = si ? qs : qp;
    int64_t p[4] = {pred[0], pred[1], pred[2], pred[3]}, d[4];
    hadamard2x2(p);
    for (int i = 0; i < 4; ++i) {
        const int64_t cs = asr64(int64_t(c[i]) * 16 * InvQuantTable[q1][0], 5) + p[i];
        d[i] = requantize(cs, qs, 0, 16 + qs / 6);
    }
    hadamard2x2(d);
    for (int i = 0; i < 4; ++i) c[i] = int16_t(asr64(d[i], 1));
    return kvtStsOk;
}

}  // namespace

void init_transform(TransformDsp& d) {
    d.luma_dc = luma_dc;
    d.chroma_dc = chroma_dc;
    d.residual = residual;
    d.residual_dc = residual_dc;
    d.residual_add = residual_add;
    d.residual_dc_add = residual_dc_add;
    d.residual_add_dc = residual_add_dc;
    d.residual_dc_add_dc = residual_dc_add_dc;
    d.transform_prediction = transform_prediction;
    d.sisp_residual = sisp_residual;
    d.sisp_chroma_dc = sisp_chroma_dc;
}

}  // namespace kvt::KVT_C_NS
