#include "mb_syntax.h"

#include "cavlc.h"

namespace enc264 {

namespace {

// coded_block_pattern by codeNum (H.264 Table 9-4, ChromaArrayType 1), Intra_4x4 and Inter.
const uint8_t kCbpIntra[48] = {47, 31, 15, 0,  23, 27, 29, 30, 7,  11, 13, 14, 39, 43, 45, 46,
                               16, 3,  5,  10, 12, 19, 21, 26, 28, 35, 37, 42, 44, 1,  2,  4,
                               8,  17, 18, 20, 24, 6,  9,  22, 25, 32, 33, 34, 36, 40, 38, 41};
const uint8_t kCbpInter[48] = {0,  16, 1,  2,  4,  8,  32, 3,  5,  10, 12, 15, 47, 7,  11, 13,
                               14, 6,  9,  31, 35, 37, 42, 44, 33, 34, 36, 40, 39, 43, 45, 46,
                               17, 18, 20, 24, 19, 21, 26, 28, 23, 27, 29, 30, 22, 25, 38, 41};

int mb_type_code(const MbCode& mb, bool p_slice) {
    const int intra_base = p_slice ? 5 : 0;
    switch (mb.type) {
        case MbType::I4x4:
            return intra_base;
        case MbType::I16x16:
            return intra_base + 1 + mb.i16_mode + 4 * mb.cbp_chroma + (mb.cbp_luma ? 12 : 0);
        case MbType::P16x16:
            return 0;
        case MbType::P16x8:
            return 1;
        case MbType::P8x16:
            return 2;
        default:
            return 3;  // P_8x8 (P_Skip is not written here)
    }
}

void write_intra_modes(BitWriter& bw, const MbCode& mb, const Neighbours& nb) {
    for (int r : kDecodeOrder) {
        const int pred = nb.predicted_i4_mode(r), mode = mb.i4_mode[r];
        bw.flag(mode == pred);  // prev_intra4x4_pred_mode_flag
        if (mode != pred) bw.put(mode < pred ? mode : mode - 1, 3);
    }
}

void write_residual(BitWriter& bw, const MbCode& mb, const Neighbours& nb) {
    if (mb.type == MbType::I16x16) {
        write_block_cavlc(bw, mb.luma_dc, 0, nb.luma_nc(0));
        if (mb.cbp_luma)
            for (int r : kDecodeOrder) write_block_cavlc(bw, mb.luma[r], 1, nb.luma_nc(r));
    } else {
        for (int k = 0; k < 16; ++k) {
            const int r = kDecodeOrder[k];
            if (mb.cbp_luma >> (k / 4) & 1) write_block_cavlc(bw, mb.luma[r], 0, nb.luma_nc(r));
        }
    }
    if (mb.cbp_chroma)
        for (int c = 0; c < 2; ++c) write_chroma_dc_cavlc(bw, mb.chroma_dc[c]);
    if (mb.cbp_chroma == 2)
        for (int c = 0; c < 2; ++c)
            for (int k = 0; k < 4; ++k) write_block_cavlc(bw, mb.chroma_ac[c][k], 1, nb.chroma_nc(c, k));
}

}  // namespace

int cbp_code_num(int cbp, bool intra) {
    const uint8_t* table = intra ? kCbpIntra : kCbpInter;
    for (int i = 0; i < 48; ++i)
        if (table[i] == cbp) return i;
    return -1;
}

void write_macroblock(BitWriter& bw, const MbCode& mb, const Neighbours& nb, bool p_slice, int qp_delta) {
    bw.ue(mb_type_code(mb, p_slice));
    if (mb.type == MbType::I4x4) write_intra_modes(bw, mb, nb);
    if (is_intra(mb.type)) {
        bw.ue(mb.chroma_mode);
    } else {
        if (mb.type == MbType::P8x8)
            for (int i = 0; i < 4; ++i) bw.ue(0);  // sub_mb_type P_L0_8x8
        for (int i = 0; i < partitions(mb.type); ++i) bw.se(mb.mvd[i].x), bw.se(mb.mvd[i].y);
    }
    if (mb.type != MbType::I16x16)
        bw.ue(cbp_code_num(mb.cbp_luma | mb.cbp_chroma << 4, mb.type == MbType::I4x4));
    if (has_qp_delta(mb)) {
        bw.se(qp_delta);
        write_residual(bw, mb, nb);
    }
}

}  // namespace enc264
