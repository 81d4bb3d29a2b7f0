// H.263 macroblock layer (ITU-T H.263 5.3): COD, MCBPC, INTRA_MODE, CBPY, DQUANT, the vector
// differences and the blocks, for baseline pictures, Annex D vectors in their PLUSPTYPE form,
// Annex F (four vectors, overlapped prediction), Annex I (advanced intra coding) and Annex T
// (modified quantization, without its extended coefficient range).
#include "decoder.h"

#include <algorithm>

namespace kvtdec {
namespace {

// DQUANT (H.263 Table 12): 00 -1, 01 -2, 10 +1, 11 +2.
constexpr int kDquant[4] = {-1, -2, 1, 2};

// Chroma quantizer by luminance quantizer in the modified quantization mode (H.263 Table T.1).
constexpr Kvt8u kChromaQuantMq[32] = {0,  1,  2,  3,  4,  5,  6,  6,  7,  8,  9,  9,  10, 10, 11, 11,
                                      12, 12, 12, 13, 13, 13, 14, 14, 14, 14, 14, 15, 15, 15, 15, 15};

// MCBPC codes of type INTER4V+Q (H.263 Table 8, indices 21-24), which the library's reader leaves
// to its caller: 0000 0000 010 for CBPC 00, then 0000 0000 0110 0, 0111 0 and 0111 1.
bool read_inter4v_q(BitReader& br, Kvt8u* mcbpc) {
    if (br.peek(11) == 2) {
        br.skip(11);
        *mcbpc = 5;
        return true;
    }
    const uint32_t code = br.peek(13);
    if (code != 12 && code != 14 && code != 15) return false;
    br.skip(13);
    *mcbpc = Kvt8u(5 | (code == 12 ? 1 : code == 14 ? 2 : 3) << 4);
    return true;
}

int median3(int a, int b, int c) { return std::max(std::min(a, b), std::min(std::max(a, b), c)); }

// One component of an Annex D difference in its PLUSPTYPE form (H.263 Table D.3): "1" is 0;
// otherwise a 0, then pairs (bit, more): the bits below the magnitude's leading one, the last
// pair's bit being the sign.
int read_umv_plus_component(BitReader& br) {
    if (br.read_bit()) return 0;
    int magnitude = 1;
    for (;;) {
        const int bit = br.read_bit();
        if (!br.read_bit()) return bit ? -magnitude : magnitude;
        magnitude = magnitude * 2 + bit;
        if (magnitude > 8192) fail("invalid unrestricted motion vector difference");
    }
}

}  // namespace

void Decoder::decode_h263_mb(int x, int y) {
    bool was_copy;
    MbInfo& m = start_mb(x, y, was_copy);
    Kvt8u** pp = &br_.ptr;
    int* po = &br_.offset;

    Kvt8u mcbpc = 0;
    for (;;) {  // stuffing codes may stand before the macroblock
        if (read_not_coded(m)) {
            if (!pic_.obmc) return predict_skipped(x, y, was_copy);
            pending_[x & 1].mb_x = x;
            pending_[x & 1].coded = 0;
            return reconstruct_pending(x);
        }
        if (pic_.intra) {
            check(kvtiDecodeMCBPCIntra_H263(pp, po, &mcbpc), "MCBPC code");
        } else if (kvtiDecodeMCBPCInter_H263(pp, po, &mcbpc) != kvtStsOk && !read_inter4v_q(br_, &mcbpc)) {
            fail("invalid MCBPC code");
        }
        if (mcbpc != 255) break;
        if (br_.overrun()) fail("the picture data ends in macroblock stuffing");
    }
    const int type = mcbpc & 7;
    const bool intra = type == 3 || type == 4;
    int intra_mode = 0;  // Annex I INTRA_MODE: 0 DC only, 10 from above, 11 from the left
    if (intra && pic_.aic) intra_mode = br_.read_bit() ? 1 + int(br_.read(1)) : 0;
    Kvt8u cbpy = 0;
    check(kvtiDecodeCBPY_H263(pp, po, &cbpy), "CBPY code");
    if (intra) cbpy = Kvt8u(15 - cbpy);
    if (type == 1 || type == 4 || type == 5) read_dquant();
    m.quant = Kvt8u(quant_);
    const int chroma_quant = pic_.mq ? kChromaQuantMq[quant_] : quant_;
    const int coded = cbpy << 2 | mcbpc >> 4;  // bit 5 - b: block b has coefficients

    if (intra) {
        m.kind = MbKind::Intra;
        for (int b = 0; b < 6; ++b) {
            const int q = b < 4 ? quant_ : chroma_quant;
            const bool has_coefficients = coded >> (5 - b) & 1;
            if (pic_.aic) {
                IntraPrediction ip = gather_intra_prediction(x, y, b);
                check(kvtiDecodeBlockCoef_AdvIntra_H263_1u8u(pp, po, ip.dst, ip.step, ip.row + 8, ip.col, q,
                                                             intra_mode + 1, has_coefficients),
                      "advanced intra block");
                store_intra_prediction(x, y, b, ip);
                continue;
            }
            const Plane& pl = cur_->plane[b < 4 ? 0 : b - 3];
            Kvt8u* dst = b < 4 ? pl.at(16 * x + 8 * (b & 1), 16 * y + 8 * (b >> 1)) : pl.at(8 * x, 8 * y);
            if (has_coefficients)
                check(kvtiDecodeBlockCoef_Intra_H263_1u8u(pp, po, dst, pl.step, q), "intra block");
            else
                check(kvtiDecodeBlockCoef_IntraDCOnly_H263_1u8u(pp, po, dst, pl.step), "INTRADC");
        }
        if (pic_.obmc) reconstruct_pending(x);
        return;
    }

    const bool four = type == 2 || type == 5;
    m.kind = four ? MbKind::Inter4V : MbKind::Inter;
    read_h263_vectors(x, y, four, m.mv);
    PendingMb& work = pending_[x & 1];
    work.mb_x = x;
    work.coded = coded;
    for (int b = 0; b < 6; ++b)
        if (coded >> (5 - b) & 1)
            check(
                kvtiDecodeBlockCoef_Inter_H263_1u16s(pp, po, work.residual[b], b < 4 ? quant_ : chroma_quant),
                "inter block");
    if (pic_.obmc)
        reconstruct_pending(x);
    else
        reconstruct_inter(x, y, work);
}

// DQUANT: two bits in baseline; in the modified quantization mode (Annex T.2) 1x for a change by
// the table of the current quantizer, 0xxxxx for a new quantizer.
void Decoder::read_dquant() {
    if (!pic_.mq) {
        quant_ = std::clamp(quant_ + kDquant[br_.read(2)], 1, 31);
        return;
    }
    Kvt32u q = Kvt32u(quant_);
    check(kvtiUpdateQuant_MQ_H263_1u32s_I(&br_.ptr, &br_.offset, &q), "DQUANT");
    if (q < 1 || q > 31) fail("DQUANT gives quantizer %d", int(q));
    quant_ = int(q);
}

// Vectors of one macroblock against the median of the candidates of H.263 6.1.1 and Annex F.2:
// for each luminance block its left, above and above-right neighbours, zero outside the picture
// at the sides. Where the macroblock above lies outside the picture or in an earlier GOB with a
// header or slice (Annex K), the left candidate alone predicts the upper blocks.
void Decoder::read_h263_vectors(int x, int y, bool four, KvtMotionVec mv[4]) {
    const bool has_left = x > 0 && mb(x - 1, y).slice == slice_;
    const bool top = y == 0 || mb(x, y - 1).slice != slice_;
    const KvtMotionVec* left_mb = has_left ? mb(x - 1, y).mv : kZeroVectors;
    const KvtMotionVec* above_mb = !top ? mb(x, y - 1).mv : kZeroVectors;
    const KvtMotionVec* right_above_mb = !top && x + 1 < mb_cols_ ? mb(x + 1, y - 1).mv : kZeroVectors;
    for (int b = 0; b < (four ? 4 : 1); ++b) {
        KvtMotionVec cand[3];  // left, above, above-right
        switch (b) {
            case 0:
                cand[0] = left_mb[1], cand[1] = above_mb[2], cand[2] = right_above_mb[2];
                break;
            case 1:
                cand[0] = mv[0], cand[1] = above_mb[3], cand[2] = right_above_mb[2];
                break;
            case 2:
                cand[0] = left_mb[3], cand[1] = mv[0], cand[2] = mv[1];
                break;
            default:
                cand[0] = mv[2], cand[1] = mv[0], cand[2] = mv[1];
                break;
        }
        const bool top_edge = top && b < 2;
        if (pic_.umv_plus) {
            const KvtMotionVec pred = top_edge
                                          ? cand[0]
                                          : KvtMotionVec{Kvt16s(median3(cand[0].dx, cand[1].dx, cand[2].dx)),
                                                         Kvt16s(median3(cand[0].dy, cand[1].dy, cand[2].dy))};
            mv[b] = read_umv_plus_vector(pred);
        } else if (top_edge) {
            check(kvtiDecodeMV_TopBorder_H263(&br_.ptr, &br_.offset, &cand[0], &mv[b]), "MVD code");
        } else {
            check(kvtiDecodeMV_H263(&br_.ptr, &br_.offset, &cand[0], &cand[1], &cand[2], &mv[b]), "MVD code");
        }
    }
    if (!four) mv[1] = mv[2] = mv[3] = mv[0];
}

// Annex D with PLUSPTYPE: the difference is added to the predictor without wrapping; a difference
// of (0.5, 0.5) is followed by a 1 that keeps the code from imitating a start code.
KvtMotionVec Decoder::read_umv_plus_vector(KvtMotionVec pred) {
    const int dx = read_umv_plus_component(br_);
    const int dy = read_umv_plus_component(br_);
    if (dx == 1 && dy == 1) br_.skip(1);
    const int vx = pred.dx + dx, vy = pred.dy + dy;
    if (vx < -8192 || vx > 8192 || vy < -8192 || vy > 8192) fail("motion vector out of range");
    return KvtMotionVec{Kvt16s(vx), Kvt16s(vy)};
}

}  // namespace kvtdec
