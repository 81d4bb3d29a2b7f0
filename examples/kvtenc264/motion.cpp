#include "motion.h"

#include <algorithm>

#include <kvtvc.h>
#include "bitwriter.h"

namespace enc264 {

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

int MotionSearch::sad(const Partition& p, Mv mv) const {
    const uint8_t* ref = ref_.at(p.x + (mv.x >> 2), p.y + (mv.y >> 2));
    int ref_step = ref_.stride();
    alignas(16) uint8_t pred[16 * 16];
    if ((mv.x | mv.y) & 3) {
        kvtiInterpolateLuma_H264_8u_C1R(ref, ref_step, pred, 16, mv.x & 3, mv.y & 3, KvtRegionSize{p.w, p.h});
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

Mv MotionSearch::search(const Partition& p, Mv mvp, const Mv* candidates, int count, const MvRange& range,
                        int* cost) const {
    auto eval = [&](Mv m) { return sad(p, m) + mv_cost(m, mvp); };
    auto whole = [](Mv m) {  // nearest whole-sample vector
        return Mv{static_cast<int16_t>((m.x + 2) & ~3), static_cast<int16_t>((m.y + 2) & ~3)};
    };
    Mv best = range.clamp(whole(mvp));
    int best_cost = eval(best);
    for (int i = 0; i < count; ++i) {
        const Mv m = range.clamp(whole(candidates[i]));
        if (m == best) continue;
        const int c = eval(m);
        if (c < best_cost) best_cost = c, best = m;
    }
    static const int kDiamond[4][2] = {{0, -1}, {-1, 0}, {1, 0}, {0, 1}};
    for (int iter = 0; iter < 16; ++iter) {
        const Mv center = best;
        for (const auto& d : kDiamond) {
            const Mv m = range.clamp(
                Mv{static_cast<int16_t>(center.x + 4 * d[0]), static_cast<int16_t>(center.y + 4 * d[1])});
            if (m == center) continue;
            const int c = eval(m);
            if (c < best_cost) best_cost = c, best = m;
        }
        if (best == center) break;
    }
    static const int kSquare[8][2] = {{-1, -1}, {0, -1}, {1, -1}, {-1, 0}, {1, 0}, {-1, 1}, {0, 1}, {1, 1}};
    for (int step = 2; step >= 1; step /= 2) {
        const Mv center = best;
        for (const auto& d : kSquare) {
            const Mv m = range.clamp(Mv{static_cast<int16_t>(center.x + step * d[0]),
                                        static_cast<int16_t>(center.y + step * d[1])});
            if (m == center) continue;
            const int c = eval(m);
            if (c < best_cost) best_cost = c, best = m;
        }
    }
    *cost = best_cost;
    return best;
}

}  // namespace enc264
