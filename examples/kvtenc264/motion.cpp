#include "motion.h"

#include <kvtvc.h>

#include <algorithm>

#include "bitwriter.h"

namespace enc264 {

namespace {

Mv offset(Mv m, int dx, int dy) { return Mv{static_cast<int16_t>(m.x + dx), static_cast<int16_t>(m.y + dy)}; }

// Nearest whole-sample vector.
Mv whole(Mv m) { return Mv{static_cast<int16_t>((m.x + 2) & ~3), static_cast<int16_t>((m.y + 2) & ~3)}; }

}  // namespace

Mv MvRange::clamp(Mv m) const {
    m.x = static_cast<int16_t>(std::clamp<int>(m.x, min_x, max_x));
    m.y = static_cast<int16_t>(std::clamp<int>(m.y, min_y, max_y));
    return m;
}

MvRange mv_range(int mbx, int mby, int width, int height, int border) {
    // Eight samples of margin cover the six-tap filter's reach beyond the block; vertical
    // components also stay within [-64, 63.75], which every level allows.
    const int margin = border - 8;
    MvRange r;
    r.min_x = 4 * (-16 * mbx - margin);
    r.max_x = 4 * (width - 16 * mbx - 16 + margin);
    r.min_y = std::max(4 * (-16 * mby - margin), -256);
    r.max_y = std::min(4 * (height - 16 * mby - 16 + margin), 252);
    return r;
}

void RefLuma::reset(const Plane& luma) {
    whole_ = &luma;
    margin_ = luma.border() - 8;
    tiles_x_ = (luma.width() + 2 * margin_) / 16;
    const size_t tiles = static_cast<size_t>(tiles_x_) * ((luma.height() + 2 * margin_) / 16);
    for (int k = 0; k < 3; ++k) {
        if (half_[k].width() != luma.width()) half_[k] = Plane(luma.width(), luma.height(), luma.border());
        done_[k].assign(tiles, 0);
    }
}

const uint8_t* RefLuma::at(int x, int y, int w, int h, Mv mv) {
    if ((mv.x | mv.y) & 1) return nullptr;
    x += mv.x >> 2, y += mv.y >> 2;
    const int k = (mv.y & 2) + (mv.x & 2) / 2;
    if (!k) return whole_->at(x, y);
    Plane& p = half_[k - 1];
    const int dx = k == 2 ? 0 : 2, dy = k == 1 ? 0 : 2;
    // Tile coordinates count from the reachable area's corner, so they are never negative.
    const int tx0 = (x + margin_) >> 4, tx1 = (x + w - 1 + margin_) >> 4;
    const int ty0 = (y + margin_) >> 4, ty1 = (y + h - 1 + margin_) >> 4;
    for (int ty = ty0; ty <= ty1; ++ty) {
        uint8_t* done = &done_[k - 1][static_cast<size_t>(ty) * tiles_x_];
        for (int tx = tx0; tx <= tx1; ++tx) {
            if (done[tx]) continue;
            const int px = 16 * tx - margin_, py = 16 * ty - margin_;
            kvtiInterpolateLuma_H264_8u_C1R(whole_->at(px, py), whole_->stride(), p.at(px, py), p.stride(),
                                            dx, dy, KvtRegionSize{16, 16});
            done[tx] = 1;
        }
    }
    return p.at(x, y);
}

int MotionSearch::sad(const Partition& p, Mv mv) const {
    const uint8_t* ref = ref_.at(p.x, p.y, p.w, p.h, mv);
    int ref_step = ref_.whole().stride();
    alignas(16) uint8_t pred[16 * 16];
    if (!ref) {
        const Plane& g = ref_.whole();
        kvtiInterpolateLuma_H264_8u_C1R(g.at(p.x + (mv.x >> 2), p.y + (mv.y >> 2)), g.stride(), pred, 16,
                                        mv.x & 3, mv.y & 3, KvtRegionSize{p.w, p.h});
        ref = pred, ref_step = 16;
    }
    const uint8_t* cur = src_.at(p.x, p.y);
    Kvt32s total = 0, part = 0;
    if (p.w == 16 && p.h == 16) {
        kvtiSAD16x16_8u32s(cur, src_.stride(), ref, ref_step, &total, 0);
        return total;
    }
    for (int y = 0; y < p.h; y += 8)
        for (int x = 0; x < p.w; x += 8) {
            kvtiSAD8x8_8u32s_C1R(cur + y * src_.stride() + x, src_.stride(), ref + y * ref_step + x, ref_step,
                                 &part, 0);
            total += part;
        }
    return total;
}

int MotionSearch::mv_cost(Mv mv, Mv mvp) const {
    return lambda_ * (se_bits(mv.x - mvp.x) + se_bits(mv.y - mvp.y));
}

WholeSearch MotionSearch::search_whole(int mbx, int mby, Mv mvp, const Mv* candidates, int count,
                                       const MvRange& range) const {
    WholeSearch r;
    r.cost16 = 1 << 30;
    for (int& c : r.part_cost) c = 1 << 30;
    const Plane& g = ref_.whole();
    const uint8_t* cur = src_.at(16 * mbx, 16 * mby);
    // Scores a whole-sample vector for the macroblock and every partition; true when it is the
    // best 16x16 vector so far.
    auto visit = [&](Mv m) {
        Kvt16u q[4];
        kvtiSAD16x16Blocks8x8_8u16u(cur, src_.stride(), g.at(16 * mbx + m.x / 4, 16 * mby + m.y / 4),
                                    g.stride(), q);
        const int bits = mv_cost(m, mvp);
        const int sads[8] = {q[0] + q[1], q[2] + q[3], q[0] + q[2], q[1] + q[3], q[0], q[1], q[2], q[3]};
        for (int k = 0; k < 8; ++k)
            if (sads[k] + bits < r.part_cost[k]) r.part_cost[k] = sads[k] + bits, r.part_mv[k] = m;
        const int c16 = q[0] + q[1] + q[2] + q[3] + bits;
        if (c16 >= r.cost16) return false;
        r.cost16 = c16, r.mv16 = m;
        return true;
    };
    visit(range.clamp(whole(mvp)));
    for (int i = 0; i < count; ++i) {
        const Mv m = range.clamp(whole(candidates[i]));
        if (m != r.mv16) visit(m);
    }
    static const int kDiamond[4][2] = {{0, -4}, {-4, 0}, {4, 0}, {0, 4}};
    for (int iter = 0; iter < 16; ++iter) {
        const Mv center = r.mv16;
        for (const auto& d : kDiamond) {
            const Mv m = range.clamp(offset(center, d[0], d[1]));
            if (m != center) visit(m);
        }
        if (r.mv16 == center) break;
    }
    return r;
}

Mv MotionSearch::refine(const Partition& p, Mv start, Mv mvp, const MvRange& range, int* cost) const {
    Mv best = start;
    int best_cost = sad(p, best) + mv_cost(best, mvp);
    // Half samples: the four beside the whole-sample vector (read from the half-sample planes);
    // quarter samples: the four beside the best half-sample one (interpolated).
    static const int kHalfCross[4][2] = {{0, -2}, {-2, 0}, {2, 0}, {0, 2}};
    static const int kQuarterCross[4][2] = {{0, -1}, {-1, 0}, {1, 0}, {0, 1}};
    auto try_around = [&](const int(*steps)[2], int n) {
        const Mv center = best;
        for (int i = 0; i < n; ++i) {
            const Mv m = range.clamp(offset(center, steps[i][0], steps[i][1]));
            if (m == center) continue;
            const int c = sad(p, m) + mv_cost(m, mvp);
            if (c < best_cost) best_cost = c, best = m;
        }
    };
    try_around(kHalfCross, 4);
    try_around(kQuarterCross, 4);
    *cost = best_cost;
    return best;
}

}  // namespace enc264
