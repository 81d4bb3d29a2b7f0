#include "intra.h"

#include <kvtvc.h>

namespace enc264 {

namespace {

// Availability bits of the library's intra predictors: upper row, left column, corner, and the
// upper-right samples (4x4 only).
constexpr Kvt32u kUp = 1, kLeft = 2, kCorner = 32, kUpRight = 64;

Kvt32u mb_availability(int mbx, int mby) {
    return (mby ? kUp : 0) | (mbx ? kLeft : 0) | (mbx && mby ? kCorner : 0);
}

// Availability around 4x4 raster block r, the k-th in decoding order. Inside the macroblock a
// block is available when it precedes r in decoding order; the upper-right block of the right
// column lies in the next macroblock and never is.
Kvt32u block_availability(const FrameState& fs, int mbx, int mby, int r, int k) {
    const int x = r & 3, y = r >> 2;
    const bool up = y || mby, left = x || mbx;
    Kvt32u a = (up ? kUp : 0) | (left ? kLeft : 0) | (up && left ? kCorner : 0);
    bool up_right;
    if (y == 0) {
        up_right = mby && (x < 3 || mbx + 1 < fs.mb_cols);
    } else if (x == 3) {
        up_right = false;
    } else {
        up_right = false;
        for (int j = 0; j < k; ++j) up_right |= kDecodeOrder[j] == r - 3;
    }
    return a | (up_right ? kUpRight : 0);
}

bool mode_allowed_4x4(int mode, Kvt32u avail) {
    switch (mode) {
        case 0:
        case 3:
        case 7:
            return avail & kUp;
        case 1:
        case 8:
            return avail & kLeft;
        case 2:
            return true;
        default:
            return (avail & (kUp | kLeft | kCorner)) == (kUp | kLeft | kCorner);
    }
}

Kvt32s sad16(const Block& b) {
    Kvt32s sad = 0;
    kvtiSAD16x16_8u32s(b.src, b.src_step, b.rec, b.rec_step, &sad, 0);
    return sad;
}

constexpr int kOverflow = -1;

// Codes the sixteen 4x4 blocks with the cheapest mode each; returns the summed cost, kOverflow on
// a level overflow, or a cost above limit as soon as the sum passes it (the blocks are then only
// partly coded).
int code_intra4x4(FrameState& fs, int mbx, int mby, int qp, int lambda, MbCode& code, int limit) {
    MbInfo& info = fs.mb(mbx, mby);
    info.type = MbType::I4x4;
    const Neighbours nb = fs.neighbours(mbx, mby);
    int total = 0;
    for (int k = 0; k < 16; ++k) {
        const int r = kDecodeOrder[k];
        const Block b = fs.block(0, 16 * mbx + 4 * (r & 3), 16 * mby + 4 * (r >> 2));
        const Kvt32u avail = block_availability(fs, mbx, mby, r, k);
        const int predicted = nb.predicted_i4_mode(r);
        int best_mode = 2, best_cost = 1 << 30;
        for (int mode = 0; mode < 9; ++mode) {
            if (!mode_allowed_4x4(mode, avail)) continue;
            kvtiPredictIntra_4x4_H264_8u_C1IR(b.rec, b.rec_step, mode, avail);
            Kvt32s sad = 0;
            kvtiSAD4x4_8u32s(b.src, b.src_step, b.rec, b.rec_step, &sad);
            const int cost = sad + lambda * (mode == predicted ? 1 : 4);
            if (cost < best_cost) best_cost = cost, best_mode = mode;
        }
        kvtiPredictIntra_4x4_H264_8u_C1IR(b.rec, b.rec_step, best_mode, avail);
        info.i4_mode[r] = code.i4_mode[r] = static_cast<int8_t>(best_mode);
        if (!code_luma4x4(b, qp, code.luma[r], &info.nnz[r])) return kOverflow;
        total += best_cost;
        if (total > limit) return total;
    }
    code.cbp_luma = 0;
    for (int r = 0; r < 16; ++r)
        if (info.nnz[r]) code.cbp_luma |= 1 << ((r >> 1 & 1) | (r >> 3) << 1);
    return total;
}

// Chroma mode by the summed SAD of both components; leaves its prediction in place.
int best_chroma_mode(FrameState& fs, int mbx, int mby) {
    const Kvt32u avail = mb_availability(mbx, mby);
    const Block cb = fs.block(1, 8 * mbx, 8 * mby), cr = fs.block(2, 8 * mbx, 8 * mby);
    int best_mode = 0, best_sad = 1 << 30;
    for (int mode = 0; mode < 4; ++mode) {
        if (kvtiPredictIntraChroma8x8_H264_8u_C1IR(cb.rec, cb.rec_step, mode, avail) != kvtStsOk) continue;
        kvtiPredictIntraChroma8x8_H264_8u_C1IR(cr.rec, cr.rec_step, mode, avail);
        Kvt32s a = 0, b = 0;
        kvtiSAD8x8_8u32s_C1R(cb.src, cb.src_step, cb.rec, cb.rec_step, &a, 0);
        kvtiSAD8x8_8u32s_C1R(cr.src, cr.src_step, cr.rec, cr.rec_step, &b, 0);
        if (a + b < best_sad) best_sad = a + b, best_mode = mode;
    }
    kvtiPredictIntraChroma8x8_H264_8u_C1IR(cb.rec, cb.rec_step, best_mode, avail);
    kvtiPredictIntraChroma8x8_H264_8u_C1IR(cr.rec, cr.rec_step, best_mode, avail);
    return best_mode;
}

}  // namespace

int best_intra16x16(FrameState& fs, int mbx, int mby, int lambda, int* cost) {
    const Kvt32u avail = mb_availability(mbx, mby);
    const Block b = fs.block(0, 16 * mbx, 16 * mby);
    int best_mode = 2;
    *cost = 1 << 30;
    for (int mode = 0; mode < 4; ++mode) {
        if (kvtiPredictIntra_16x16_H264_8u_C1IR(b.rec, b.rec_step, mode, avail) != kvtStsOk) continue;
        const int c = sad16(b) + lambda * 4;
        if (c < *cost) *cost = c, best_mode = mode;
    }
    kvtiPredictIntra_16x16_H264_8u_C1IR(b.rec, b.rec_step, best_mode, avail);
    return best_mode;
}

bool code_intra_mb(FrameState& fs, int mbx, int mby, int qp, int lambda, MbCode& code) {
    MbInfo& info = fs.mb(mbx, mby);
    info = MbInfo{};
    code = MbCode{};
    code.qp = qp;
    int cost16 = 0;
    const int mode16 = best_intra16x16(fs, mbx, mby, lambda, &cost16);
    // Intra4x4 is given up once its cost passes what would make Intra16x16 the choice.
    const int limit = cost16 - 6 * lambda;
    const int cost4 = code_intra4x4(fs, mbx, mby, qp, lambda, code, limit);
    bool use16 = cost4 == kOverflow || cost4 >= limit;
    if (use16) {
        const Block luma = fs.block(0, 16 * mbx, 16 * mby);
        MbCode as16 = code;
        info = MbInfo{};
        info.type = MbType::I16x16;
        as16.type = MbType::I16x16;
        as16.i16_mode = mode16;
        kvtiPredictIntra_16x16_H264_8u_C1IR(luma.rec, luma.rec_step, mode16, mb_availability(mbx, mby));
        if (code_luma16x16(luma, qp, as16, info)) {
            code = as16;
        } else {  // back to Intra4x4, coded in full
            if (cost4 == kOverflow) return false;
            use16 = false;
            info = MbInfo{};
            if (code_intra4x4(fs, mbx, mby, qp, lambda, code, 1 << 30) == kOverflow) return false;
        }
    }
    code.type = use16 ? MbType::I16x16 : MbType::I4x4;
    info.type = code.type;
    code.chroma_mode = best_chroma_mode(fs, mbx, mby);
    return code_chroma(fs.block(1, 8 * mbx, 8 * mby), fs.block(2, 8 * mbx, 8 * mby), chroma_qp(qp), true,
                       code, info);
}

}  // namespace enc264
