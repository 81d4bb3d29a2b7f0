// MPEG-4 motion vectors: difference decoding against the median predictor (ISO/IEC 14496-2
// 7.6.3), B-VOP direct mode (7.6.9.5), vector padding, chroma vectors and the reference-area limit.
#include "common/bits.h"
#include "common/kernel.h"
#include "mpeg4/motion_vector_dsp.h"
#include "mpeg4/mvd_code.h"

namespace kvt::KVT_C_NS {
namespace {

constexpr bool four_vector_type(int mb_type) { return mb_type == 2 || mb_type == 5; }

// Where the three predictor candidates of each block come from.
enum Source : uint8_t { kLeft, kUpper, kUpperRight, kCurrent };
struct Candidate {
    Source src;
    uint8_t block;
};
constexpr Candidate kCandidates[4][3] = {
    {{kLeft, 1}, {kUpper, 2}, {kUpperRight, 2}},
    {{kCurrent, 0}, {kUpper, 3}, {kUpperRight, 2}},
    {{kLeft, 3}, {kCurrent, 0}, {kCurrent, 1}},
    {{kCurrent, 2}, {kCurrent, 0}, {kCurrent, 1}},
};

// The candidate's vector, or null when its source may not serve.
const KvtMotionVec* candidate(const MvNeighbours& nb, const KvtMotionVec* cur, const uint8_t* present,
                              Candidate c) {
    switch (c.src) {
        case kLeft:
            return nb.left_ok ? nb.left + c.block : nullptr;
        case kUpper:
            return nb.upper_ok ? nb.upper + c.block : nullptr;
        case kUpperRight:
            return nb.upper_right_ok ? nb.upper_right + c.block : nullptr;
        default:
            return present[c.block] ? cur + c.block : nullptr;
    }
}

// The direct-mode scaling (a x m) / trd in the 32-bit arithmetic of the formula; trd >= 1.
int32_t scale_mv(int32_t a, int m, int32_t trd) { return int32_t(uint32_t(a) * uint32_t(m)) / trd; }

// Forward and backward component of direct mode; sums wrap to 16 bits as they are stored.
void direct_component(int m, int d, int trb, int trd, int16_t* f, int16_t* b) {
    const uint32_t fwd = uint32_t(scale_mv(trb, m, trd)) + uint32_t(d);
    *f = int16_t(fwd);
    *b = int16_t(d != 0 ? fwd - uint32_t(m) : uint32_t(scale_mv(trb - trd, m, trd)));
}

// Chroma rounding of ISO/IEC 14496-2 Table 7-9 and its 3-, 2- and 1-block forms, by divisor / 4.
constexpr uint8_t kRound16[16] = {0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2};
constexpr uint8_t kRound12[12] = {0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 2, 2};
constexpr uint8_t kRound8[8] = {0, 0, 1, 1, 1, 1, 1, 2};
constexpr uint8_t kRound4[4] = {0, 1, 1, 1};
constexpr const uint8_t* kRound[5] = {kRound4, kRound4, kRound8, kRound12, kRound16};

int16_t chroma4_component(int sum, int blocks) {
    const int n = 4 * (blocks > 0 ? blocks : 1);
    const int a = sum < 0 ? -sum : sum;
    const int mag = (a / n) * 2 + kRound[blocks][a % n];
    return int16_t(sum < 0 ? -mag : mag);
}

int16_t chroma_component(int v) {
    const int a = v < 0 ? -v : v;
    const int c = (a & 3) ? (a >> 1) | 1 : a >> 1;
    return int16_t(v < 0 ? -c : c);
}

// Moves v so that the block at p (size s) stays inside [o, o + e) in samples; v in half samples.
int16_t limit_component(int v, uint32_t p, int o, int e, int s) {
    const int64_t pos = int64_t(v) + 2 * int64_t(p);
    if (pos < 2 * int64_t(o)) return int16_t(2 * (int64_t(o) - p));
    const int64_t last = int64_t(o) + e - s;
    if (pos >= 2 * last) return int16_t(2 * (last - int64_t(p)));
    return int16_t(v);
}

KvtMotionVec predict_mv(const MvNeighbours& nb, const KvtMotionVec* cur, const uint8_t* present, int b) {
    const KvtMotionVec zero{0, 0};
    const KvtMotionVec* c[3];
    int usable = 0;
    for (int i = 0; i < 3; ++i) {
        c[i] = candidate(nb, cur, present, kCandidates[b][i]);
        if (c[i]) ++usable;
    }
    if (usable == 0) return zero;
    if (usable == 1) return *(c[0] ? c[0] : c[1] ? c[1] : c[2]);
    for (auto& p : c)
        if (!p) p = &zero;
    return KvtMotionVec{int16_t(median3(c[0]->dx, c[1]->dx, c[2]->dx)),
                        int16_t(median3(c[0]->dy, c[1]->dy, c[2]->dy))};
}

KvtStatus decode_mv(uint8_t** pp, int* pOffset, KvtMotionVec* mv, int fcode) {
    ByteCursor c{*pp, *pOffset};
    int dx, dy;
    if (!read_mvd_component(c, fcode - 1, &dx) || !read_mvd_component(c, fcode - 1, &dy))
        return kvtStsBadMvCode;
    c.store(pp, pOffset);
    *mv = KvtMotionVec{add_wrap_mv(mv->dx, dx, fcode), add_wrap_mv(mv->dy, dy, fcode)};
    return kvtStsOk;
}

// Each absent block takes a present neighbour, in the order 0..3, so later blocks see the
// vectors already replaced (the last choice is taken whether present or not).
KvtStatus pad_mv(KvtMotionVec* set, const uint8_t* present) {
    static constexpr uint8_t kOrder[4][3] = {{1, 2, 3}, {0, 3, 2}, {3, 0, 1}, {2, 1, 0}};
    for (int b = 0; b < 4; ++b) {
        if (present[b]) continue;
        const uint8_t* o = kOrder[b];
        set[b] = set[present[o[0]] ? o[0] : present[o[1]] ? o[1] : o[2]];
    }
    return kvtStsOk;
}

KvtStatus decode_pad_mv_pvop(uint8_t** pp, int* pOffset, const MvNeighbours& nb, KvtMotionVec* cur,
                             const uint8_t* present, int fcode, int mb_type) {
    if (!four_vector_type(mb_type)) {
        KvtMotionVec mv = predict_mv(nb, cur, present, 0);
        const KvtStatus st = decode_mv(pp, pOffset, &mv, fcode);
        if (st != kvtStsOk) return st;
        for (int b = 0; b < 4; ++b) cur[b] = mv;
        return kvtStsOk;
    }
    for (int b = 0; b < 4; ++b) {
        if (!present[b]) continue;
        KvtMotionVec mv = predict_mv(nb, cur, present, b);
        const KvtStatus st = decode_mv(pp, pOffset, &mv, fcode);
        if (st != kvtStsOk) return st;
        cur[b] = mv;
    }
    pad_mv(cur, present);
    return kvtStsOk;
}

KvtStatus direct_mv(const KvtMotionVec* colocated, KvtMotionVec* fwd, KvtMotionVec* bwd, bool scaled, int trb,
                    int trd, int dx, int dy) {
    for (int b = 0; b < 4; ++b) {
        if (!scaled) {
            fwd[b] = bwd[b] = KvtMotionVec{int16_t(dx), int16_t(dy)};
            continue;
        }
        const KvtMotionVec m = colocated[b];
        direct_component(m.dx, dx, trb, trd, &fwd[b].dx, &bwd[b].dx);
        direct_component(m.dy, dy, trb, trd, &fwd[b].dy, &bwd[b].dy);
    }
    return kvtStsOk;
}

KvtStatus decode_direct_mv(uint8_t** pp, int* pOffset, const KvtMotionVec* colocated, KvtMotionVec* fwd,
                           KvtMotionVec* bwd, bool scaled, int trb, int trd) {
    ByteCursor c{*pp, *pOffset};
    int dx, dy;
    if (!read_mvd_component(c, 0, &dx) || !read_mvd_component(c, 0, &dy)) return kvtStsBadMvCode;
    c.store(pp, pOffset);
    return direct_mv(colocated, fwd, bwd, scaled, trb, trd, dx, dy);
}

KvtStatus chroma_mv(const KvtMotionVec* luma, KvtMotionVec* dst) {
    *dst = KvtMotionVec{chroma_component(luma->dx), chroma_component(luma->dy)};
    return kvtStsOk;
}

KvtStatus chroma4_mv(const KvtMotionVec* set, const uint8_t* present, KvtMotionVec* dst) {
    int sx = 0, sy = 0, blocks = 0;
    for (int b = 0; b < 4; ++b) {
        if (!present[b]) continue;
        sx += set[b].dx;
        sy += set[b].dy;
        ++blocks;
    }
    *dst = KvtMotionVec{chroma4_component(sx, blocks), chroma4_component(sy, blocks)};
    return kvtStsOk;
}

KvtStatus limit_mv_to_rect(const KvtMotionVec* mv, const KvtRegionRect& rect, uint32_t x, uint32_t y,
                           int size, KvtMotionVec* dst) {
    *dst = KvtMotionVec{limit_component(mv->dx, x, rect.x, rect.width, size),
                        limit_component(mv->dy, y, rect.y, rect.height, size)};
    return kvtStsOk;
}

}  // namespace

void init_motion_vector(MotionVectorDsp& d) {
    d.decode_mv = decode_mv;
    d.decode_pad_mv_pvop = decode_pad_mv_pvop;
    d.direct_mv = direct_mv;
    d.decode_direct_mv = decode_direct_mv;
    d.pad_mv = pad_mv;
    d.chroma_mv = chroma_mv;
    d.chroma4_mv = chroma4_mv;
    d.limit_mv_to_rect = limit_mv_to_rect;
}

}  // namespace kvt::KVT_C_NS
