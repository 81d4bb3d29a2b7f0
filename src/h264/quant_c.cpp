// Portable H.264 forward transform-quantization kernels: the 4x4 core transform and the DC
// Hadamard transforms (H.264 8.5 in reverse) with the JVT model encoder's scaling.
#include "h264/quant_dsp.h"
#include "h264/tables.h"
#include "h264/transform4x4_c.h"

namespace kvt::KVT_C_NS {

namespace {

using namespace h264;

// The transformed values are kept in f, so that t is only written.
KvtStatus chroma_dc(int16_t* c, int16_t* t, int qp, int8_t* count, bool intra, bool transform) {
    int16_t f[4] = {c[0], c[1], c[2], c[3]};
    if (transform) {
        hadamard2x2(f);
        for (int i = 0; i < 4; ++i) t[i] = f[i];
    } else {
        for (int i = 0; i < 4; ++i) f[i] = t[i];
    }
    const int q = qp / 6, mf = FwdQuantTable[qp % 6][0], round = dc_rounds[intra][q];
    for (int i = 0; i < 4; ++i) c[i] = quantize(f[i], mf, round, 16 + q);
    return report_levels(c, 4, count, nullptr, nullptr);
}

// The Hadamard output is halved, as in the JVT model encoder; the rounding is the intra one.
KvtStatus luma_dc(int16_t* c, int16_t* t, int qp, int8_t* count, bool transform, const int16_t* scan,
                  uint8_t* last) {
    if (transform) {
        int32_t w[16];
        for (int i = 0; i < 16; ++i) w[i] = c[i];
        rows_then_columns(w, hadamard<int32_t>);
        for (int i = 0; i < 16; ++i) t[i] = int16_t(asr(w[i], 1));
    }
    const int q = qp / 6, mf = FwdQuantTable[qp % 6][0], round = dc_rounds[1][q];
    for (int i = 0; i < 16; ++i) c[i] = quantize(t[i], mf, round, 16 + q);
    return report_levels(c, 16, count, scan, last);
}

// Rounding 2^(15 + q) / 3 for intra blocks and / 6 for inter blocks: dc_rounds one shift lower.
KvtStatus residual(int16_t* c, int qp, int8_t* count, bool intra, const int16_t* scan, uint8_t* last) {
    rows_then_columns(c, forward_core);
    const int q = qp / 6, round = dc_rounds[intra][q] >> 1;
    for (int i = 0; i < 16; ++i) c[i] = quantize(c[i], QuantCoef[qp % 6][i], round, 15 + q);
    return report_levels(c, 16, count, scan, last);
}

}  // namespace

void init_quant(QuantDsp& d) {
    d.chroma_dc = chroma_dc;
    d.luma_dc = luma_dc;
    d.residual = residual;
}

}  // namespace kvt::KVT_C_NS
