#include "deblock.h"

#include <cstdlib>

#include <kvtvc.h>
#include "tables.h"

namespace enc264 {

int boundary_strength(const MbInfo& mp, int p, const MbInfo& mq, int q, bool mb_edge) {
    if (is_intra(mp.type) || is_intra(mq.type)) return mb_edge ? 4 : 3;
    if (mp.nnz[p] || mq.nnz[q]) return 2;
    const Mv a = mp.mv[p], b = mq.mv[q];
    return std::abs(a.x - b.x) >= 4 || std::abs(a.y - b.y) >= 4 ? 1 : 0;
}

namespace {

struct EdgeParams {
    Kvt8u bs[16] = {};
    Kvt8u alpha[2], beta[2];
    Kvt8u tc0[16] = {};
};

// Thresholds for the external edge (average QP of both macroblocks) and the internal ones.
void set_thresholds(EdgeParams& e, int qp_ext, int qp_int) {
    const int qps[2] = {qp_ext, qp_int};
    for (int i = 0; i < 2; ++i) e.alpha[i] = kAlpha[qps[i]], e.beta[i] = kBeta[qps[i]];
    for (int k = 0; k < 16; ++k)
        if (e.bs[k] && e.bs[k] < 4) e.tc0[k] = kTc0[qps[k < 4 ? 0 : 1]][e.bs[k] - 1];
}

// Chroma uses the strengths of luma edges 0 and 2, with thresholds of its own QPs.
void set_chroma_thresholds(const EdgeParams& luma, EdgeParams& e, int qp_ext, int qp_int) {
    for (int k = 0; k < 16; ++k) e.bs[k] = luma.bs[k];
    const int qps[2] = {qp_ext, qp_int};
    for (int i = 0; i < 2; ++i) e.alpha[i] = kAlpha[qps[i]], e.beta[i] = kBeta[qps[i]];
    for (int edge = 0; edge < 2; ++edge)
        for (int s = 0; s < 4; ++s) {
            const int b = luma.bs[8 * edge + s];
            e.tc0[4 * edge + s] = b && b < 4 ? kTc0[qps[edge]][b - 1] : 0;
        }
}

void deblock_mb(FrameState& fs, int mbx, int mby) {
    const MbInfo& q = fs.mb(mbx, mby);
    const int cq = chroma_qp(q.qp);
    Kvt8u* luma = fs.rec->y.at(16 * mbx, 16 * mby);
    Kvt8u* cb = fs.rec->u.at(8 * mbx, 8 * mby);
    Kvt8u* cr = fs.rec->v.at(8 * mbx, 8 * mby);
    const int ls = fs.rec->y.stride(), cs = fs.rec->u.stride();
    for (int dir = 0; dir < 2; ++dir) {  // 0: vertical edges, 1: horizontal edges
        const bool has_neighbour = dir == 0 ? mbx > 0 : mby > 0;
        const MbInfo& p = has_neighbour ? (dir == 0 ? fs.mb(mbx - 1, mby) : fs.mb(mbx, mby - 1)) : q;
        EdgeParams l, c;
        bool luma_edges = false, chroma_edges = false;
        for (int edge = has_neighbour ? 0 : 1; edge < 4; ++edge)
            for (int s = 0; s < 4; ++s) {
                // Block q on the edge's far side, block p before it (in the neighbour for edge 0).
                const int bq = dir == 0 ? edge + 4 * s : s + 4 * edge;
                const int bp = dir == 0 ? (edge ? bq - 1 : 3 + 4 * s) : (edge ? bq - 4 : s + 12);
                const int bs = boundary_strength(edge ? q : p, bp, q, bq, edge == 0);
                l.bs[4 * edge + s] = static_cast<Kvt8u>(bs);
                luma_edges |= bs != 0;
                chroma_edges |= bs != 0 && edge % 2 == 0;  // chroma edges lie on luma edges 0 and 2
            }
        if (!luma_edges) continue;
        set_thresholds(l, (p.qp + q.qp + 1) >> 1, q.qp);
        set_chroma_thresholds(l, c, (chroma_qp(p.qp) + cq + 1) >> 1, cq);
        if (dir == 0) {
            kvtiFilterDeblockingLuma_VerEdge_H264_8u_C1IR(luma, ls, l.alpha, l.beta, l.tc0, l.bs);
            if (chroma_edges) {
                kvtiFilterDeblockingChroma_VerEdge_H264_8u_C1IR(cb, cs, c.alpha, c.beta, c.tc0, c.bs);
                kvtiFilterDeblockingChroma_VerEdge_H264_8u_C1IR(cr, cs, c.alpha, c.beta, c.tc0, c.bs);
            }
        } else {
            kvtiFilterDeblockingLuma_HorEdge_H264_8u_C1IR(luma, ls, l.alpha, l.beta, l.tc0, l.bs);
            if (chroma_edges) {
                kvtiFilterDeblockingChroma_HorEdge_H264_8u_C1IR(cb, cs, c.alpha, c.beta, c.tc0, c.bs);
                kvtiFilterDeblockingChroma_HorEdge_H264_8u_C1IR(cr, cs, c.alpha, c.beta, c.tc0, c.bs);
            }
        }
    }
}

}  // namespace

void deblock_picture(FrameState& fs) {
    for (int mby = 0; mby < fs.mb_rows; ++mby)
        for (int mbx = 0; mbx < fs.mb_cols; ++mbx) deblock_mb(fs, mbx, mby);
}

}  // namespace enc264
