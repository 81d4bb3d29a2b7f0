// MPEG-4 macroblock layer (ISO/IEC 14496-2 6.2.6): in I- and P-VOPs not_coded, MCBPC, ac_pred_flag,
// CBPY, DQUANT, the vectors and the blocks, with intra DC and AC prediction across the blocks of
// the same video packet (7.4.3); and the B-VOP macroblock with its four prediction modes.
#include "decoder.h"

#include <algorithm>
#include <cstdlib>

namespace kvtdec {
namespace {

// dquant (ISO/IEC 14496-2 Table 6-27): 00 -1, 01 -2, 10 +1, 11 +2.
constexpr int kDquant[4] = {-1, -2, 1, 2};

}  // namespace

void Decoder::decode_mpeg4_mb(int x, int y) {
    bool was_copy;
    MbInfo& m = start_mb(x, y, was_copy);
    Kvt8u** pp = &br_.ptr;
    int* po = &br_.offset;

    Kvt8u mcbpc = 0;
    for (;;) {  // stuffing codes may stand before the macroblock
        if (read_not_coded(m)) return predict_skipped(x, y, was_copy);
        if (pic_.intra)
            check(kvtiDecodeMCBPCIntra_H263(pp, po, &mcbpc), "MCBPC code");
        else
            check(kvtiDecodeMCBPCInter_H263(pp, po, &mcbpc), "MCBPC code");
        if (mcbpc != 255) break;
        if (br_.overrun()) fail("the VOP data ends in macroblock stuffing");
    }
    const int type = mcbpc & 7;
    const bool intra = type >= 3;
    const bool ac_pred = intra && br_.read_bit();
    Kvt8u cbpy = 0;
    check(kvtiDecodeCBPY_H263(pp, po, &cbpy), "CBPY code");
    if (intra) cbpy = Kvt8u(15 - cbpy);
    if (type == 1 || type == 4) quant_ = std::clamp(quant_ + kDquant[br_.read(2)], 1, 31);
    m.quant = Kvt8u(quant_);
    const int coded = cbpy << 2 | mcbpc >> 4;  // bit 5 - b: block b has coefficients

    if (intra) {
        m.kind = MbKind::Intra;
        for (int b = 0; b < 6; ++b) decode_mpeg4_intra_block(x, y, b, coded >> (5 - b) & 1, ac_pred);
        return;
    }

    // Vector candidates are usable inside the VOP and the video packet (ISO/IEC 14496-2 7.6.5).
    m.kind = type == 2 ? MbKind::Inter4V : MbKind::Inter;
    const bool has_left = x > 0 && mb(x - 1, y).slice == slice_;
    const bool has_above = y > 0 && mb(x, y - 1).slice == slice_;
    const bool has_above_right = y > 0 && x + 1 < mb_cols_ && mb(x + 1, y - 1).slice == slice_;
    const Kvt32u valid[3] = {has_left, has_above, has_above_right};
    alignas(4) const Kvt8u present[4] = {1, 1, 1, 1};
    check(kvtiDecodePadMV_PVOP_MPEG4(pp, po, has_left ? mb(x - 1, y).mv : kZeroVectors,
                                     has_above ? mb(x, y - 1).mv : kZeroVectors,
                                     has_above_right ? mb(x + 1, y - 1).mv : kZeroVectors, m.mv, &valid[0],
                                     &valid[1], &valid[2], present, pic_.fcode, type),
          "motion vector");

    PendingMb& work = pending_[0];
    work.mb_x = x;
    work.coded = coded;
    const Kvt8u* matrix = vol_.mpeg_quant ? vol_.inter_matrix : nullptr;
    for (int b = 0; b < 6; ++b)
        if (coded >> (5 - b) & 1)
            check(kvtiDecodeBlockCoef_Inter_MPEG4_1u16s(pp, po, work.residual[b], quant_, matrix),
                  "inter block");
    reconstruct_inter(x, y, work);
}

// B-VOP macroblock (ISO/IEC 14496-2 6.2.6, 7.6.7-7.6.9). A macroblock not coded in the backward
// reference is not coded here either: a forward copy. Otherwise modb ("1": direct mode without a
// vector difference or coefficients; "01": mb_type follows; "00": mb_type and cbpb), mb_type
// (1 direct, 01 interpolated, 001 backward, 0001 forward), dbquant, and the vectors: forward and
// backward ones against the last of their kind in the row, or a direct-mode difference.
void Decoder::decode_mpeg4_b_mb(int x, int y) {
    enum Mode { kDirect, kInterpolated, kBackward, kForward };
    const MbInfo& colocated = mb(x, y);  // the backward reference's macroblock
    if (x == 0) fwd_pred_ = bwd_pred_ = KvtMotionVec{0, 0};
    PendingMb& work = pending_[0];
    work.coded = 0;
    KvtMotionVec fwd[4] = {}, bwd[4] = {};
    if (colocated.kind == MbKind::Skipped) return reconstruct_b(x, y, fwd, nullptr, false, work);

    Kvt8u** pp = &br_.ptr;
    int* po = &br_.offset;
    int mode = kDirect;
    bool has_delta = false;
    if (!br_.read_bit()) {
        const bool has_cbp = !br_.read_bit();
        while (mode < 4 && !br_.read_bit()) ++mode;
        if (mode == 4) fail("invalid mb_type code");
        has_delta = mode == kDirect;
        if (has_cbp) work.coded = int(br_.read(6));
        if (mode != kDirect && work.coded && br_.read_bit())
            quant_ = std::clamp(quant_ + (br_.read_bit() ? 2 : -2), 1, 31);
    }
    if (mode == kDirect) {
        // The co-located vectors, scaled by TRB / TRD (zero for an intra macroblock).
        const Kvt32u colocated_inter = 1;
        if (has_delta)
            check(
                kvtiDecodeMV_BVOP_Direct_MPEG4(pp, po, colocated.mv, fwd, bwd, &colocated_inter, trb_, trd_),
                "direct-mode vector");
        else
            check(kvtiDecodeMV_BVOP_DirectSkip_MPEG4(colocated.mv, fwd, bwd, &colocated_inter, trb_, trd_),
                  "direct-mode vector");
    } else if (mode == kInterpolated) {
        check(kvtiDecodeMV_BVOP_Interpolate_MPEG4(pp, po, &fwd_pred_, &bwd_pred_, pic_.fcode,
                                                  pic_.fcode_backward),
              "motion vector");
    } else if (mode == kBackward) {
        check(kvtiDecodeMV_BVOP_Backward_MPEG4(pp, po, &bwd_pred_, pic_.fcode_backward), "motion vector");
    } else {
        check(kvtiDecodeMV_BVOP_Forward_MPEG4(pp, po, &fwd_pred_, pic_.fcode), "motion vector");
    }
    if (mode != kDirect) std::fill(fwd, fwd + 4, fwd_pred_), std::fill(bwd, bwd + 4, bwd_pred_);

    const Kvt8u* matrix = vol_.mpeg_quant ? vol_.inter_matrix : nullptr;
    for (int b = 0; b < 6; ++b)
        if (work.coded >> (5 - b) & 1)
            check(kvtiDecodeBlockCoef_Inter_MPEG4_1u16s(pp, po, work.residual[b], quant_, matrix),
                  "inter block");
    reconstruct_b(x, y, mode == kBackward ? nullptr : fwd, mode == kForward ? nullptr : bwd, mode == kDirect,
                  work);
}

// One intra block: the DC gradient between its left (A), above-left (B) and above (C) neighbours
// picks the direction its DC, and with ac_pred_flag its first row or column, is predicted from
// (ISO/IEC 14496-2 7.4.3.1); A and C lend their quantizer to the AC prediction.
void Decoder::decode_mpeg4_intra_block(int x, int y, int b, bool coded, bool ac_pred) {
    IntraPrediction ip = gather_intra_prediction(x, y, b);
    const int dir = std::abs(ip.dc[0] - ip.dc[1]) < std::abs(ip.dc[1] - ip.dc[2]) ? 2 : 1;
    const int pred_quant = dir == 2 ? ip.quant[2] : ip.quant[0];
    const int thr = pic_.intra_dc_vlc_thr;
    const int dc_vlc = thr == 0 || (thr < 7 && quant_ < 11 + 2 * thr);
    const Kvt8u* matrix = vol_.mpeg_quant ? vol_.intra_matrix : nullptr;
    auto decode = coded ? kvtiDecodeBlockCoef_Intra_MPEG4_1u8u : kvtiDecodeBlockCoef_IntraDCOnly_MPEG4_1u8u;
    check(decode(&br_.ptr, &br_.offset, ip.dst, ip.step, ip.row + 8, ip.col, quant_,
                 pred_quant ? pred_quant : quant_, dir, ac_pred, b, dc_vlc, matrix),
          "intra block");
    store_intra_prediction(x, y, b, ip);
}

}  // namespace kvtdec
