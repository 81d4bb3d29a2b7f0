#include "transform.h"

#include <cstdlib>
#include <cstring>

#include <kvtvc.h>
#include "tables.h"

namespace enc264 {

namespace {

// Zigzag scan index of each raster position (the quantizers report the last one coded).
const Kvt16s* scan_positions() {
    static const struct Table {
        Kvt16s pos[16];
        Table() {
            for (int i = 0; i < 16; ++i) pos[kZigzag4x4[i]] = static_cast<Kvt16s>(i);
        }
    } table;
    return table.pos;
}

// Transforms and quantizes a 4x4 residual in place; returns the library's signed count (negative
// when the DC level is nonzero) or 127 on a level overflow.
int quantize(int16_t* block, int qp, bool intra) {
    Kvt8s count = 0;
    Kvt8u last = 0;
    if (kvtiTransformQuantResidual_H264_16s_C1I(block, qp, &count, intra, scan_positions(), &last) !=
        kvtStsOk)
        return 127;
    return count;
}

int ac_count(int count) { return std::abs(count) - (count < 0); }

// Adds the inverse transform of levels (with the already scaled DC *dc when given) to the
// prediction at b.rec.
void reconstruct(const int16_t* levels, const int16_t* dc, uint8_t* rec, int step, int qp) {
    bool ac = false;
    for (int i = 1; i < 16; ++i) ac |= levels[i] != 0;
    if (!ac && (dc ? *dc : levels[0]) == 0) return;
    int16_t coeffs[16];
    std::memcpy(coeffs, levels, sizeof coeffs);
    kvtiDequantTransformResidualAndAdd_H264_16s_C1I(rec, coeffs, dc, rec, step, step, qp, ac);
}

// H.264 8.5.10 requires the inverse luma DC transform and its scaling to stay within 16 bits. Each
// output is at most the sum of the level magnitudes times the scale v(QP % 6, 0) * 2^(QP / 6) / 4;
// a DC block whose bound passes 32767 (only levels near the CAVLC limit at low QP reach it) is not
// coded as Intra16x16.
bool dc_fits_16_bits(const int16_t* levels, int qp) {
    static const int kV0[6] = {10, 11, 13, 14, 16, 18};
    long sum = 0;
    for (int i = 0; i < 16; ++i) sum += std::abs(levels[i]);
    return sum <= 32767 && (sum * kV0[qp % 6] << (qp / 6)) / 4 + 1 <= 32767;
}

uint8_t* block_at(uint8_t* p, int step, int r, int size) {
    return p + (r / size) * 4 * step + (r % size) * 4;
}

}  // namespace

bool code_luma4x4(const Block& b, int qp, int16_t* levels, uint8_t* nnz) {
    kvtiGetDiff4x4_8u16s_C1(b.src, b.src_step, b.rec, b.rec_step, levels, 8);
    const int count = quantize(levels, qp, true);
    if (count == 127) return false;
    *nnz = static_cast<uint8_t>(std::abs(count));
    reconstruct(levels, nullptr, b.rec, b.rec_step, qp);
    return true;
}

bool code_luma16x16(const Block& b, int qp, MbCode& code, MbInfo& info) {
    int16_t diff[256], transformed[16];
    kvtiSumsDiff16x16Blocks4x4_8u16s_C1(b.src, b.src_step, b.rec, b.rec_step, code.luma_dc, diff);
    Kvt8s count = 0;
    Kvt8u last = 0;
    if (kvtiTransformQuantLumaDC_H264_16s_C1I(code.luma_dc, transformed, qp, &count, 1, scan_positions(),
                                              &last) != kvtStsOk)
        return false;
    if (!dc_fits_16_bits(code.luma_dc, qp)) return false;
    code.cbp_luma = 0;
    for (int r = 0; r < 16; ++r) {
        int16_t* levels = code.luma[r];
        std::memcpy(levels, diff + 16 * r, 32);
        const int c = quantize(levels, qp, true);
        if (c == 127) return false;
        levels[0] = 0;  // the DC travels in luma_dc
        info.nnz[r] = static_cast<uint8_t>(ac_count(c));
        if (info.nnz[r]) code.cbp_luma = 15;
    }
    int16_t dc[16];
    std::memcpy(dc, code.luma_dc, sizeof dc);
    kvtiTransformDequantLumaDC_H264_16s_C1I(dc, qp);
    for (int r = 0; r < 16; ++r)
        reconstruct(code.luma[r], &dc[r], block_at(b.rec, b.rec_step, r, 4), b.rec_step, qp);
    return true;
}

bool code_luma_inter(const Block& b, int qp, MbCode& code, MbInfo& info) {
    int16_t sums[16], diff[256];
    kvtiSumsDiff16x16Blocks4x4_8u16s_C1(b.src, b.src_step, b.rec, b.rec_step, sums, diff);
    code.cbp_luma = 0;
    for (int r = 0; r < 16; ++r) {
        int16_t* levels = code.luma[r];
        std::memcpy(levels, diff + 16 * r, 32);
        const int c = quantize(levels, qp, false);
        if (c == 127) return false;
        info.nnz[r] = static_cast<uint8_t>(std::abs(c));
        if (c) code.cbp_luma |= 1 << ((r >> 1 & 1) | (r >> 3) << 1);  // the 8x8 block holding r
    }
    for (int r = 0; r < 16; ++r)
        if (info.nnz[r])
            reconstruct(code.luma[r], nullptr, block_at(b.rec, b.rec_step, r, 4), b.rec_step, qp);
    return true;
}

bool code_chroma(const Block& cb, const Block& cr, int qpc, bool intra, MbCode& code, MbInfo& info) {
    const Block* planes[2] = {&cb, &cr};
    bool any_dc = false, any_ac = false;
    for (int c = 0; c < 2; ++c) {
        const Block& b = *planes[c];
        int16_t diff[64], transformed[4];
        kvtiSumsDiff8x8Blocks4x4_8u16s_C1(b.src, b.src_step, b.rec, b.rec_step, code.chroma_dc[c], diff);
        Kvt8s count = 0;
        if (kvtiTransformQuantChromaDC_H264_16s_C1I(code.chroma_dc[c], transformed, qpc, &count, intra, 1) !=
            kvtStsOk)
            return false;
        any_dc |= count != 0;
        for (int k = 0; k < 4; ++k) {
            int16_t* levels = code.chroma_ac[c][k];
            std::memcpy(levels, diff + 16 * k, 32);
            const int n = quantize(levels, qpc, intra);
            if (n == 127) return false;
            levels[0] = 0;
            info.nnz_chroma[c][k] = static_cast<uint8_t>(ac_count(n));
            any_ac |= info.nnz_chroma[c][k] != 0;
        }
    }
    code.cbp_chroma = any_ac ? 2 : any_dc ? 1 : 0;
    if (!code.cbp_chroma) return true;
    for (int c = 0; c < 2; ++c) {
        int16_t dc[4];
        std::memcpy(dc, code.chroma_dc[c], sizeof dc);
        kvtiTransformDequantChromaDC_H264_16s_C1I(dc, qpc);
        for (int k = 0; k < 4; ++k)
            reconstruct(code.chroma_ac[c][k], &dc[k], block_at(planes[c]->rec, planes[c]->rec_step, k, 2),
                        planes[c]->rec_step, qpc);
    }
    return true;
}

}  // namespace enc264
