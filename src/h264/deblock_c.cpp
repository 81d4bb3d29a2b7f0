// Portable H.264 deblocking, one line of samples across an edge at a time (H.264 8.7.2.3 and
// 8.7.2.4).
#include <cstdlib>

#include "common/kernel.h"
#include "h264/deblock_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

int clip3(int lo, int hi, int v) { return v < lo ? lo : v > hi ? hi : v; }
uint8_t clip1(int v) { return uint8_t(clip3(0, 255, v)); }

// One line across an edge: q points at q0, p0 is at q[-across]. The line is filtered when the
// step over the edge is below alpha and the steps beside it below beta.
struct Line {
    uint8_t* q;
    intptr_t d;
    int at(int i) const { return q[i * d]; }  // i = -4..3: p3..p0, q0..q3
    void set(int i, int v) const { q[i * d] = uint8_t(v); }
    bool active(int alpha, int beta) const {
        return std::abs(at(-1) - at(0)) < alpha && std::abs(at(-2) - at(-1)) < beta &&
               std::abs(at(1) - at(0)) < beta;
    }
};

// bS < 4: p0 and q0 move by a delta limited to tc. Luma p1 / q1 move by at most tc0 where the
// side is smooth (|p2 - p0| / |q2 - q0| below beta), and each smooth side widens tc by one; chroma
// takes tc0 + 1 and reads nothing beyond p1 / q1.
void normal(const Line& l, int beta, int tc0, bool luma) {
    const int p1 = l.at(-2), p0 = l.at(-1), q0 = l.at(0), q1 = l.at(1);
    const int p2 = luma ? l.at(-3) : 0, q2 = luma ? l.at(2) : 0;
    const bool ap = luma && std::abs(p2 - p0) < beta, aq = luma && std::abs(q2 - q0) < beta;
    const int tc = luma ? tc0 + ap + aq : tc0 + 1;
    const int delta = clip3(-tc, tc, (((q0 - p0) * 4) + (p1 - q1) + 4) >> 3);
    l.set(-1, clip1(p0 + delta));
    l.set(0, clip1(q0 - delta));
    if (ap) l.set(-2, p1 + clip3(-tc0, tc0, (p2 + ((p0 + q0 + 1) >> 1) - p1 * 2) >> 1));
    if (aq) l.set(1, q1 + clip3(-tc0, tc0, (q2 + ((p0 + q0 + 1) >> 1) - q1 * 2) >> 1));
}

// bS 4: a smooth luma side (|p2 - p0| below beta and a small step over the edge) is replaced by
// the 3-sample averages, any other side (and chroma) only in p0 / q0.
void strong(const Line& l, int alpha, int beta, bool luma) {
    const int p1 = l.at(-2), p0 = l.at(-1), q0 = l.at(0), q1 = l.at(1);
    const bool small = luma && std::abs(p0 - q0) < (alpha >> 2) + 2;
    if (small && std::abs(l.at(-3) - p0) < beta) {
        const int p3 = l.at(-4), p2 = l.at(-3);
        l.set(-1, (p2 + 2 * p1 + 2 * p0 + 2 * q0 + q1 + 4) >> 3);
        l.set(-2, (p2 + p1 + p0 + q0 + 2) >> 2);
        l.set(-3, (2 * p3 + 3 * p2 + p1 + p0 + q0 + 4) >> 3);
    } else {
        l.set(-1, (2 * p1 + p0 + q1 + 2) >> 2);
    }
    if (small && std::abs(l.at(2) - q0) < beta) {
        const int q2 = l.at(2), q3 = l.at(3);
        l.set(0, (p1 + 2 * p0 + 2 * q0 + 2 * q1 + q2 + 4) >> 3);
        l.set(1, (p0 + q0 + q1 + q2 + 2) >> 2);
        l.set(2, (2 * q3 + 3 * q2 + q1 + q0 + p0 + 4) >> 3);
    } else {
        l.set(0, (2 * q1 + q0 + p1 + 2) >> 2);
    }
}

// The edges of one plane of a macroblock, `size` samples square: edge k at 4k samples across,
// each `size` lines long in four segments. Chroma edges take the strengths of luma edges 0 and 2.
template <bool vertical, bool luma>
KvtStatus edges(uint8_t* p, int32_t step, const uint8_t* alpha, const uint8_t* beta, const uint8_t* tc0,
                const uint8_t* bs) {
    constexpr int size = luma ? 16 : 8, count = size / 4, lines_per_segment = size / 4;
    const intptr_t across = vertical ? 1 : step, along = vertical ? step : 1;
    for (int e = 0; e < count; ++e) {
        const int inner = e > 0, bs_edge = luma ? e : 2 * e;
        for (int i = 0; i < size; ++i) {
            const int seg = i / lines_per_segment, s = bs[4 * bs_edge + seg];
            const Line l{p + 4 * e * across + i * along, across};
            if (s == 0 || !l.active(alpha[inner], beta[inner])) continue;
            if (s < 4)
                normal(l, beta[inner], tc0[4 * e + seg], luma);
            else
                strong(l, alpha[inner], beta[inner], luma);
        }
    }
    return kvtStsOk;
}

}  // namespace

void init_deblock(DeblockDsp& d) {
    d.luma_ver = edges<true, true>;
    d.luma_hor = edges<false, true>;
    d.chroma_ver = edges<true, false>;
    d.chroma_hor = edges<false, false>;
}

}  // namespace kvt::KVT_C_NS
