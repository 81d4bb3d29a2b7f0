#include "inter.h"

#include <kvtvc.h>
#include "bitwriter.h"
#include "mvpred.h"

namespace enc264 {

namespace {

// Partition p of a macroblock type, in 4x4 units inside the macroblock.
struct Shape {
    int x, y, w, h;
};
Shape shape_of(MbType t, int p) {
    switch (t) {
        case MbType::P16x8:
            return {0, 2 * p, 4, 2};
        case MbType::P8x16:
            return {2 * p, 0, 2, 4};
        case MbType::P8x8:
            return {2 * (p & 1), 2 * (p >> 1), 2, 2};
        default:
            return {0, 0, 4, 4};
    }
}

void set_mv(MbInfo& info, const Shape& s, Mv mv) {
    for (int y = s.y; y < s.y + s.h; ++y)
        for (int x = s.x; x < s.x + s.w; ++x) info.mv[x + 4 * y] = mv;
}

// Luma and chroma prediction of one partition into the reconstruction.
void predict_partition(FrameState& fs, int mbx, int mby, const Shape& s, Mv mv) {
    const int x = 16 * mbx + 4 * s.x, y = 16 * mby + 4 * s.y, w = 4 * s.w, h = 4 * s.h;
    const Plane& ry = fs.ref->y;
    kvtiInterpolateLuma_H264_8u_C1R(ry.at(x + (mv.x >> 2), y + (mv.y >> 2)), ry.stride(), fs.rec->y.at(x, y),
                                    fs.rec->y.stride(), mv.x & 3, mv.y & 3, KvtRegionSize{w, h});
    for (int c = 1; c < 3; ++c) {
        const Plane& rc = fs.ref->plane(c);
        kvtiInterpolateChroma_H264_8u_C1R(rc.at(x / 2 + (mv.x >> 3), y / 2 + (mv.y >> 3)), rc.stride(),
                                          fs.rec->plane(c).at(x / 2, y / 2), fs.rec->plane(c).stride(),
                                          mv.x & 7, mv.y & 7, KvtRegionSize{w / 2, h / 2});
    }
}

int type_bits(MbType t) { return t == MbType::P16x16 ? 1 : t == MbType::P8x8 ? 7 : 3; }

// Index in WholeSearch::part_mv of partition p of type t.
int whole_index(MbType t, int p) { return t == MbType::P16x8 ? p : t == MbType::P8x16 ? 2 + p : 4 + p; }

// Refines every partition of type t from its whole-sample vector, in order, each against the
// predictor its decided neighbours give; the vectors go into the macroblock's record.
InterChoice refine_shape(FrameState& fs, int mbx, int mby, MbType t, const WholeSearch& ws, int lambda,
                         const MvRange& range, const MotionSearch& ms, MvPredictor& pred) {
    MbInfo& info = fs.mb(mbx, mby);
    InterChoice ch;
    ch.type = t;
    ch.cost = lambda * type_bits(t);
    pred.begin(mbx, mby, &info);
    for (int p = 0; p < partitions(t); ++p) {
        const Shape s = shape_of(t, p);
        const Partition part{16 * mbx + 4 * s.x, 16 * mby + 4 * s.y, 4 * s.w, 4 * s.h};
        ch.mvp[p] = pred.predict(s.x, s.y, s.w, t, p);
        const Mv start = t == MbType::P16x16 ? ws.mv16 : ws.part_mv[whole_index(t, p)];
        int cost = 0;
        ch.mv[p] = ms.refine(part, start, ch.mvp[p], range, &cost);
        ch.cost += cost;
        set_mv(info, s, ch.mv[p]);
        pred.mark(s.x, s.y, s.w, s.h);
    }
    return ch;
}

}  // namespace

InterChoice search_inter(FrameState& fs, int mbx, int mby, int lambda, const MvRange& range) {
    MbInfo& info = fs.mb(mbx, mby);
    info = MbInfo{};
    info.type = MbType::P16x16;
    const MotionSearch ms(fs.src->y, *fs.ref_luma, lambda);
    MvPredictor pred(fs.mbs, fs.mb_cols);
    pred.begin(mbx, mby, &info);
    const Mv mvp = pred.predict(0, 0, 4, MbType::P16x16, 0);
    Mv seeds[4];
    int n = 0;
    seeds[n++] = Mv{};
    if (mbx) seeds[n++] = fs.mb(mbx - 1, mby).mv[3];
    if (mby) seeds[n++] = fs.mb(mbx, mby - 1).mv[12];
    if (mby && mbx + 1 < fs.mb_cols) seeds[n++] = fs.mb(mbx + 1, mby - 1).mv[12];
    const WholeSearch ws = ms.search_whole(mbx, mby, mvp, seeds, n, range);
    InterChoice best = refine_shape(fs, mbx, mby, MbType::P16x16, ws, lambda, range, ms, pred);
    // A smaller partitioning is refined only when it wins at whole samples.
    const int whole16 = ws.cost16 + lambda * type_bits(MbType::P16x16);
    MbType shape = MbType::P16x16;
    int shape_cost = whole16;
    for (MbType t : {MbType::P16x8, MbType::P8x16, MbType::P8x8}) {
        int c = lambda * type_bits(t);
        for (int p = 0; p < partitions(t); ++p) c += ws.part_cost[whole_index(t, p)];
        if (c < shape_cost) shape_cost = c, shape = t;
    }
    if (shape != MbType::P16x16) {
        const InterChoice ch = refine_shape(fs, mbx, mby, shape, ws, lambda, range, ms, pred);
        if (ch.cost < best.cost) best = ch;
    }
    info.type = best.type;
    for (int p = 0; p < partitions(best.type); ++p) set_mv(info, shape_of(best.type, p), best.mv[p]);
    return best;
}

bool code_inter_mb(FrameState& fs, int mbx, int mby, int qp, const InterChoice& choice, MbCode& code) {
    MbInfo& info = fs.mb(mbx, mby);
    code = MbCode{};
    code.type = info.type = choice.type;
    code.qp = qp;
    for (int p = 0; p < partitions(choice.type); ++p) {
        const Shape s = shape_of(choice.type, p);
        set_mv(info, s, choice.mv[p]);
        predict_partition(fs, mbx, mby, s, choice.mv[p]);
        code.mvd[p] = Mv{static_cast<int16_t>(choice.mv[p].x - choice.mvp[p].x),
                         static_cast<int16_t>(choice.mv[p].y - choice.mvp[p].y)};
    }
    for (auto& n : info.nnz) n = 0;
    if (!code_luma_inter(fs.block(0, 16 * mbx, 16 * mby), qp, code, info)) return false;
    return code_chroma(fs.block(1, 8 * mbx, 8 * mby), fs.block(2, 8 * mbx, 8 * mby), chroma_qp(qp), false,
                       code, info);
}

namespace {

// The largest SAD of a 4x4 residual whose inter levels are all zero at qp, whatever the samples:
// a coefficient is at most w * SAD, w = 1, 2 or 4 by position class, so with the largest factor
// MF * w (5243 * 4) its level (|c| * MF + 2^(15 + qp/6) / 6) >> (15 + qp/6) is zero below this.
int zero_sad_4x4(int qp) {
    const int one = 1 << (15 + qp / 6);
    return (one - one / 6 - 1) / (4 * 5243);
}
// The same for the sum of the four DC coefficients of a chroma component (the 2x2 transform's
// outputs are at most that sum, which is at most the 8x8 SAD), with the DC quantizer's 16 + q bits.
int zero_sad_chroma_dc(int qpc) {
    const int one = 1 << (16 + qpc / 6);
    return (one - one / 6 - 1) / 13107;
}

// True when the prediction now in the reconstruction leaves no nonzero level at qp, judged from
// SADs alone (a sufficient test; quantizing decides the rest).
bool surely_zero(FrameState& fs, int mbx, int mby, int qp) {
    const Block luma = fs.block(0, 16 * mbx, 16 * mby);
    Kvt16u sads[16];
    kvtiSAD16x16Blocks4x4_8u16u(luma.src, luma.src_step, luma.rec, luma.rec_step, sads);
    const int bound = zero_sad_4x4(qp);
    for (Kvt16u s : sads)
        if (s > bound) return false;
    const int qpc = chroma_qp(qp), ac_bound = zero_sad_4x4(qpc);
    for (int c = 1; c < 3; ++c) {
        const Block b = fs.block(c, 8 * mbx, 8 * mby);
        int total = 0;
        for (int k = 0; k < 4; ++k) {
            const int off_src = (k >> 1) * 4 * b.src_step + (k & 1) * 4,
                      off_rec = (k >> 1) * 4 * b.rec_step + (k & 1) * 4;
            Kvt32s sad = 0;
            kvtiSAD4x4_8u32s(b.src + off_src, b.src_step, b.rec + off_rec, b.rec_step, &sad);
            if (sad > ac_bound) return false;
            total += sad;
        }
        if (total > zero_sad_chroma_dc(qpc)) return false;
    }
    return true;
}

}  // namespace

bool try_skip(FrameState& fs, int mbx, int mby, int qp, Mv skip_mv) {
    MbInfo& info = fs.mb(mbx, mby);
    info = MbInfo{};
    info.type = MbType::P16x16;
    set_mv(info, shape_of(MbType::P16x16, 0), skip_mv);
    predict_partition(fs, mbx, mby, shape_of(MbType::P16x16, 0), skip_mv);
    if (!surely_zero(fs, mbx, mby, qp)) {
        InterChoice ch;
        ch.mv[0] = ch.mvp[0] = skip_mv;
        MbCode code;
        if (!code_inter_mb(fs, mbx, mby, qp, ch, code) || code.cbp_luma || code.cbp_chroma) return false;
    }
    info.type = MbType::PSkip;
    return true;
}

}  // namespace enc264
