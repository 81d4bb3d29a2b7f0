// Prediction shared by the H.263 and MPEG-4 macroblock layers: the intra prediction state of
// MPEG-4 AC/DC prediction and H.263 Annex I, and the inter prediction and reconstruction of one
// macroblock (half-sample prediction at each block's vector, H.263 Annex F overlapped prediction,
// B-VOP averages, the residual added with saturation).
#include "decoder.h"

#include <algorithm>
#include <cstring>

namespace kvtdec {
namespace {

// Moves a size x size prediction at (px, py) so that it starts at most size + 1 samples outside
// the picture. Out there every sample the prediction reads is a copy of the edge sample, so the
// result is unchanged, and the reference border (frame_store.cpp) covers what it reads.
KvtMotionVec clamp_vector(KvtMotionVec v, int px, int py, int size, const Plane& pl) {
    const int ix = std::clamp(px + (v.dx >> 1), -(size + 1), pl.width);
    const int iy = std::clamp(py + (v.dy >> 1), -(size + 1), pl.height);
    return KvtMotionVec{Kvt16s(2 * (ix - px) + (v.dx & 1)), Kvt16s(2 * (iy - py) + (v.dy & 1))};
}

// Prediction of one 8x8 block, plus its residual when it has one.
void predict_block(const Plane& ref, const Plane& cur, int px, int py, KvtMotionVec v, const Kvt16s* residual,
                   int rounding) {
    const KvtMotionVec c = clamp_vector(v, px, py, 8, ref);
    if (residual)
        kvtiReconBlockHalfpel_MPEG4_8u(ref.at(px, py), ref.step, residual, cur.at(px, py), cur.step, &c,
                                       rounding);
    else
        kvtiCopyBlockHalfpel_MPEG4_8u(ref.at(px, py), ref.step, cur.at(px, py), cur.step, &c, rounding);
}

// The left, above-left and above neighbours of each block of a macroblock: macroblock offset and
// block index (luminance blocks 0 1 / 2 3, then Cb and Cr).
constexpr int kIntraNeighbours[6][3][3] = {
    {{-1, 0, 1}, {-1, -1, 3}, {0, -1, 2}}, {{0, 0, 0}, {0, -1, 2}, {0, -1, 3}},
    {{-1, 0, 3}, {-1, 0, 1}, {0, 0, 0}},   {{0, 0, 2}, {0, 0, 0}, {0, 0, 1}},
    {{-1, 0, 4}, {-1, -1, 4}, {0, -1, 4}}, {{-1, 0, 5}, {-1, -1, 5}, {0, -1, 5}}};

}  // namespace

// The library's state for one intra block, from its left, above-left and above neighbours where
// they are intra blocks of the same video packet, GOB or slice.
IntraPrediction Decoder::gather_intra_prediction(int x, int y, int b) {
    IntraPrediction ip;
    const IntraBlockState* state[3] = {};  // left, above-left, above
    for (int i = 0; i < 3; ++i) {
        const int* n = kIntraNeighbours[b][i];
        const int mx = x + n[0], my = y + n[1];
        ip.dc[i] = 1024;
        ip.quant[i] = 0;
        if (mx < 0 || my < 0) continue;
        const size_t index = size_t(my) * mb_cols_ + mx;
        const MbInfo& m = mbs_[index];
        if (m.kind != MbKind::Intra || m.slice != slice_) continue;
        state[i] = &intra_state_[index * 6 + n[2]];
        ip.dc[i] = state[i]->dc;
        ip.quant[i] = m.quant;
    }
    ip.row[0] = state[0] ? state[0]->dc : -1;
    ip.row[8] = state[2] ? state[2]->dc : -1;
    if (state[2]) std::memcpy(ip.row + 9, state[2]->row, sizeof state[2]->row);
    if (state[0]) std::memcpy(ip.col + 1, state[0]->col, sizeof state[0]->col);
    const Plane& pl = cur_->plane[b < 4 ? 0 : b - 3];
    ip.dst = b < 4 ? pl.at(16 * x + 8 * (b & 1), 16 * y + 8 * (b >> 1)) : pl.at(8 * x, 8 * y);
    ip.step = pl.step;
    return ip;
}

// What the library left in the state: the block's reconstructed DC, first row and first column.
void Decoder::store_intra_prediction(int x, int y, int b, const IntraPrediction& ip) {
    IntraBlockState& s = intra_state_[(size_t(y) * mb_cols_ + x) * 6 + b];
    s.dc = ip.row[8];
    std::memcpy(s.row, ip.row + 9, sizeof s.row);
    std::memcpy(s.col, ip.col + 1, sizeof s.col);
}

void Decoder::predict_skipped(int x, int y, bool was_copy) {
    mb(x, y).copy_of_reference = true;
    if (was_copy) return;
    const Frame& ref = *ref_;
    Frame& cur = *cur_;
    kvtiCopyMB_H263_8u(ref.plane[0].at(16 * x, 16 * y), cur.plane[0].at(16 * x, 16 * y), cur.plane[0].step);
    for (int p = 1; p < 3; ++p)
        kvtiCopyBlock_H263_8u(ref.plane[p].at(8 * x, 8 * y), cur.plane[p].at(8 * x, 8 * y),
                              cur.plane[p].step);
}

void Decoder::reconstruct_inter(int x, int y, const PendingMb& work) {
    const MbInfo& m = mb(x, y);
    const Frame& ref = *ref_;
    Frame& cur = *cur_;
    const Plane &ry = ref.plane[0], &cy = cur.plane[0];
    auto residual = [&](int b) { return work.coded >> (5 - b) & 1 ? work.residual[b] : nullptr; };

    if (pic_.obmc) {
        for (int b = 0; b < 4; ++b) {
            Kvt8u* dst = cy.at(16 * x + 8 * (b & 1), 16 * y + 8 * (b >> 1));
            predict_luma_obmc(x, y, b, dst);
            if (residual(b)) kvtiReconBlock_H263_I(dst, residual(b), cy.step);
        }
    } else if (m.kind != MbKind::Inter4V && (work.coded & 0x3C) == 0) {
        const KvtMotionVec c = clamp_vector(m.mv[0], 16 * x, 16 * y, 16, ry);
        kvtiCopyMBHalfpel_MPEG4_8u(ry.at(16 * x, 16 * y), ry.step, cy.at(16 * x, 16 * y), cy.step, &c,
                                   pic_.rounding);
    } else {
        for (int b = 0; b < 4; ++b)
            predict_block(ry, cy, 16 * x + 8 * (b & 1), 16 * y + 8 * (b >> 1), m.mv[b], residual(b),
                          pic_.rounding);
    }

    KvtMotionVec chroma;
    alignas(4) const Kvt8u present[4] = {1, 1, 1, 1};
    if (m.kind == MbKind::Inter4V)
        kvtiComputeChroma4MV_MPEG4(m.mv, &chroma, present);
    else
        kvtiComputeChromaMV_MPEG4(&m.mv[0], &chroma);
    for (int p = 1; p < 3; ++p)
        predict_block(ref.plane[p], cur.plane[p], 8 * x, 8 * y, chroma, residual(3 + p), pic_.rounding);
}

// A B-VOP macroblock from the forward vectors, the backward ones, or the average of both
// predictions (a null set is not used); four vectors per macroblock in direct mode. B-VOPs round
// half-sample averages up (rounding control 0).
void Decoder::reconstruct_b(int x, int y, const KvtMotionVec fwd[4], const KvtMotionVec bwd[4], bool four,
                            const PendingMb& work) {
    alignas(16) Kvt8u backward[16 * 16];
    alignas(4) const Kvt8u present[4] = {1, 1, 1, 1};
    for (int p = 0; p < 3; ++p) {
        const Plane &past = ref_->plane[p], &future = bwd_ref_->plane[p], &cur = cur_->plane[p];
        const int blocks = p == 0 ? 4 : 1, size = p == 0 ? 16 : 8, px = size * x, py = size * y;
        // Luminance: one 16x16 prediction or four 8x8 ones; chroma: one 8x8 from the derived vector.
        auto predict = [&](const Plane& ref, const KvtMotionVec* mv, Kvt8u* dst, int step) {
            if (p > 0) {
                KvtMotionVec c;
                if (four)
                    kvtiComputeChroma4MV_MPEG4(mv, &c, present);
                else
                    kvtiComputeChromaMV_MPEG4(mv, &c);
                c = clamp_vector(c, px, py, 8, ref);
                kvtiCopyBlockHalfpel_MPEG4_8u(ref.at(px, py), ref.step, dst, step, &c, 0);
            } else if (!four) {
                const KvtMotionVec c = clamp_vector(mv[0], px, py, 16, ref);
                kvtiCopyMBHalfpel_MPEG4_8u(ref.at(px, py), ref.step, dst, step, &c, 0);
            } else {
                for (int b = 0; b < blocks; ++b) {
                    const int bx = px + 8 * (b & 1), by = py + 8 * (b >> 1);
                    const KvtMotionVec c = clamp_vector(mv[b], bx, by, 8, ref);
                    kvtiCopyBlockHalfpel_MPEG4_8u(ref.at(bx, by), ref.step,
                                                  dst + 8 * (b >> 1) * step + 8 * (b & 1), step, &c, 0);
                }
            }
        };
        Kvt8u* dst = cur.at(px, py);
        if (fwd) predict(past, fwd, dst, cur.step);
        if (bwd && !fwd) predict(future, bwd, dst, cur.step);
        if (bwd && fwd) {
            predict(future, bwd, backward, size);
            if (p == 0)
                kvtiAverageMB_MPEG4_8u_I(backward, size, dst, cur.step);
            else
                kvtiAverageBlock_MPEG4_8u_I(backward, size, dst, cur.step);
        }
        for (int b = 0; b < blocks; ++b) {
            const int index = p == 0 ? b : 3 + p;
            if (work.coded >> (5 - index) & 1)
                kvtiReconBlock_H263_I(cur.at(px + 8 * (b & 1) * (p == 0), py + 8 * (b >> 1) * (p == 0)),
                                      work.residual[index], cur.step);
        }
    }
}

// Annex F: the macroblock before x is predicted once the vectors of x, its right neighbour, are
// known (called after each macroblock of an overlapped picture, and with x = columns at a row's end).
void Decoder::reconstruct_pending(int x) {
    if (x == 0) return;
    PendingMb& work = pending_[(x - 1) & 1];
    if (work.mb_x != x - 1) return;
    reconstruct_inter(x - 1, mb_y_, work);
    work.mb_x = -1;
}

// H.263 Annex F.3: each luminance block blends the predictions at its own vector and at the
// vectors of the blocks above or below and left or right of it. A neighbour outside the picture
// or intra lends the block's own vector; one not coded lends its zero vector; the macroblock
// below is not decoded yet, so the lower blocks use their own vector there too.
void Decoder::predict_luma_obmc(int x, int y, int b, Kvt8u* dst) {
    const MbInfo& m = mb(x, y);
    const KvtMotionVec own = m.mv[b];
    auto remote = [&](int mx, int my, int block) {
        if (mx < 0 || my < 0 || mx >= mb_cols_) return own;
        const MbInfo& n = mb(mx, my);
        return n.kind == MbKind::Intra ? own : n.mv[block];
    };
    const int col = b & 1, row = b >> 1;
    const KvtMotionVec above = row ? m.mv[b - 2] : remote(x, y - 1, b + 2);
    const KvtMotionVec below = row ? own : m.mv[b + 2];
    const KvtMotionVec left = col ? m.mv[b - 1] : remote(x - 1, y, b + 1);
    const KvtMotionVec right = col ? remote(x + 1, y, b - 1) : m.mv[b + 1];

    const Plane& ref = ref_->plane[0];
    const int px = 16 * x + 8 * col, py = 16 * y + 8 * row;
    const KvtMotionVec v[5] = {clamp_vector(own, px, py, 8, ref), clamp_vector(left, px, py, 8, ref),
                               clamp_vector(right, px, py, 8, ref), clamp_vector(above, px, py, 8, ref),
                               clamp_vector(below, px, py, 8, ref)};
    kvtiOBMCHalfpel_MPEG4_8u(ref.at(px, py), ref.step, dst, cur_->plane[0].step, &v[0], &v[1], &v[2], &v[3],
                             &v[4], pic_.rounding);
}

}  // namespace kvtdec
