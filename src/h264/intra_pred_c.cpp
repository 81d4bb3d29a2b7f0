// Portable H.264 intra prediction kernels, written from the equations of H.264 8.3.1.2,
// 8.3.3 and 8.3.4.
#include <algorithm>
#include <iterator>

#include "common/arith.h"
#include "common/kernel.h"
#include "h264/intra_pred_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

constexpr int avg2(int a, int b) { return (a + b + 1) >> 1; }
constexpr int avg3(int a, int b, int c) { return (a + 2 * b + c + 2) >> 2; }
constexpr uint8_t clip_u8(int v) { return uint8_t(v < 0 ? 0 : v > 255 ? 255 : v); }

uint8_t* row(uint8_t* p, int step, int y) { return p + intptr_t(y) * step; }

// ---- 4x4 luma ----------------------------------------------------------------------------

// The neighbours of a 4x4 block after substitution as one edge L[3], L[2], L[1], L[0], M, U[0],
// .., U[7], so that U[-1] = L[-1] = M.
struct Edge4 {
    int edge[13], dc;
    int U(int i) const { return edge[5 + i]; }
    int L(int i) const { return edge[3 - i]; }
};

constexpr unsigned kUpperLeftCorner = kNbUpper | kNbLeft | kNbCorner;
// The neighbours each mode reads; a missing one of kUpperLeftCorner makes the warning (not in DC).
constexpr unsigned kUses4x4[9] = {
    kNbUpper,         kNbLeft,          kNbUpper | kNbLeft, kNbUpper | kNbUpperRight,
    kUpperLeftCorner, kUpperLeftCorner, kUpperLeftCorner,   kNbUpper | kNbUpperRight,
    kNbLeft};

// Reads the neighbours flagged in `read`; the others become 128, and a missing upper right
// repeats U[3] (which may itself be 128).
Edge4 gather(const uint8_t* p, int step, unsigned read) {
    Edge4 e;
    const uint8_t* above = p - step;
    int* u = e.edge + 5;
    for (int i = 0; i < 4; ++i) u[i] = read & kNbUpper ? above[i] : 128;
    for (int i = 4; i < 8; ++i) u[i] = read & kNbUpperRight ? above[i] : u[3];
    for (int i = 0; i < 4; ++i) e.edge[3 - i] = read & kNbLeft ? p[intptr_t(i) * step - 1] : 128;
    e.edge[4] = read & kNbCorner ? above[-1] : 128;
    int su = 0, sl = 0;
    for (int i = 0; i < 4; ++i) su += e.U(i), sl += e.L(i);
    const bool up = read & kNbUpper, left = read & kNbLeft;
    e.dc = up && left ? (su + sl + 4) >> 3 : up ? (su + 2) >> 2 : left ? (sl + 2) >> 2 : 128;
    return e;
}

// Sample (x, y) of the Intra4x4PredMode `mode` (H.264 8.3.1.2.1 to 8.3.1.2.9).
template <int mode>
int sample4x4(const Edge4& e, int x, int y) {
    if constexpr (mode == 0) return e.U(x);
    if constexpr (mode == 1) return e.L(y);
    if constexpr (mode == 2) return e.dc;
    if constexpr (mode == 3) {
        if (x == 3 && y == 3) return (e.U(6) + 3 * e.U(7) + 2) >> 2;
        return avg3(e.U(x + y), e.U(x + y + 1), e.U(x + y + 2));
    }
    if constexpr (mode == 4) {
        if (x > y) return avg3(e.U(x - y - 2), e.U(x - y - 1), e.U(x - y));
        if (x < y) return avg3(e.L(y - x - 2), e.L(y - x - 1), e.L(y - x));
        return avg3(e.U(0), e.U(-1), e.L(0));
    }
    if constexpr (mode == 5) {
        const int z = 2 * x - y, i = x - (y >> 1);
        if (z >= 0) return z & 1 ? avg3(e.U(i - 2), e.U(i - 1), e.U(i)) : avg2(e.U(i - 1), e.U(i));
        if (z == -1) return avg3(e.L(0), e.U(-1), e.U(0));
        return avg3(e.L(y - 1), e.L(y - 2), e.L(y - 3));
    }
    if constexpr (mode == 6) {
        const int z = 2 * y - x, i = y - (x >> 1);
        if (z >= 0) return z & 1 ? avg3(e.L(i - 2), e.L(i - 1), e.L(i)) : avg2(e.L(i - 1), e.L(i));
        if (z == -1) return avg3(e.L(0), e.U(-1), e.U(0));
        return avg3(e.U(x - 1), e.U(x - 2), e.U(x - 3));
    }
    if constexpr (mode == 7) {
        const int i = x + (y >> 1);
        return y & 1 ? avg3(e.U(i), e.U(i + 1), e.U(i + 2)) : avg2(e.U(i), e.U(i + 1));
    }
    if constexpr (mode == 8) {
        const int z = x + 2 * y, i = y + (x >> 1);
        if (z > 5) return e.L(3);
        if (z == 5) return (e.L(2) + 3 * e.L(3) + 2) >> 2;
        return z & 1 ? avg3(e.L(i), e.L(i + 1), e.L(i + 2)) : avg2(e.L(i), e.L(i + 1));
    }
}

// Mode `mode` with the neighbours `avail` (only the bits the mode reads).
template <int mode, unsigned avail>
KvtStatus pred4x4(uint8_t* p, int step) {
    constexpr unsigned uses = kUses4x4[mode];
    const Edge4 e = gather(p, step, avail);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) row(p, step, y)[x] = uint8_t(sample4x4<mode>(e, x, y));
    const bool substituted = mode != 2 && (uses & kUpperLeftCorner & ~avail);
    return substituted ? kvtStsNeighbourSubstituted : kvtStsOk;
}

// ---- 16x16 luma and 8x8 chroma -----------------------------------------------------------

template <int N>
KvtStatus vertical(uint8_t* p, int step) {
    for (int y = 0; y < N; ++y)
        for (int x = 0; x < N; ++x) row(p, step, y)[x] = p[x - step];
    return kvtStsOk;
}

template <int N>
KvtStatus horizontal(uint8_t* p, int step) {
    for (int y = 0; y < N; ++y)
        for (int x = 0; x < N; ++x) row(p, step, y)[x] = row(p, step, y)[-1];
    return kvtStsOk;
}

// Sums of n upper (U[x0..]) or left (L[y0..]) neighbours.
int sum_upper(const uint8_t* p, int step, int x0, int n) {
    int s = 0;
    for (int i = 0; i < n; ++i) s += p[x0 + i - step];
    return s;
}
int sum_left(uint8_t* p, int step, int y0, int n) {
    int s = 0;
    for (int i = 0; i < n; ++i) s += row(p, step, y0 + i)[-1];
    return s;
}

void fill(uint8_t* p, int step, int n, int value) {
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) row(p, step, y)[x] = uint8_t(value);
}

template <unsigned avail>
KvtStatus dc16x16(uint8_t* p, int step) {
    const bool up = avail & kNbUpper, left = avail & kNbLeft;
    const int su = up ? sum_upper(p, step, 0, 16) : 0, sl = left ? sum_left(p, step, 0, 16) : 0;
    fill(p, step, 16, up && left ? (su + sl + 16) >> 5 : up ? (su + 8) >> 4 : left ? (sl + 8) >> 4 : 128);
    return kvtStsOk;
}

// Chroma DC (H.264 8.3.4.1-3): each 4x4 quarter from its own upper and left sums; the
// top-right quarter prefers the upper row, the bottom-left one the left column.
template <unsigned avail>
KvtStatus dc_chroma(uint8_t* p, int step) {
    const bool up = avail & kNbUpper, left = avail & kNbLeft;
    const auto mean4 = [](int s) { return (s + 2) >> 2; };
    int q[4] = {128, 128, 128, 128};  // top-left, top-right, bottom-left, bottom-right
    if (up && left) {
        const int su0 = sum_upper(p, step, 0, 4), su1 = sum_upper(p, step, 4, 4);
        const int sl0 = sum_left(p, step, 0, 4), sl1 = sum_left(p, step, 4, 4);
        q[0] = (su0 + sl0 + 4) >> 3, q[1] = mean4(su1), q[2] = mean4(sl1), q[3] = (su1 + sl1 + 4) >> 3;
    } else if (up) {
        q[0] = q[2] = mean4(sum_upper(p, step, 0, 4));
        q[1] = q[3] = mean4(sum_upper(p, step, 4, 4));
    } else if (left) {
        q[0] = q[1] = mean4(sum_left(p, step, 0, 4));
        q[2] = q[3] = mean4(sum_left(p, step, 4, 4));
    }
    for (int k = 0; k < 4; ++k) fill(row(p, step, (k >> 1) * 4) + (k & 1) * 4, step, 4, q[k]);
    return kvtStsOk;
}

// Plane prediction of an N x N block (H.264 8.3.3.4, 8.3.4.4 for 4:2:0); U[-1] = L[-1] = M.
template <int N>
KvtStatus plane(uint8_t* p, int step) {
    constexpr int h = N / 2;
    const auto U = [&](int i) { return int(p[i - step]); };
    const auto L = [&](int i) { return int(row(p, step, i)[-1]); };
    int H = 0, V = 0;
    for (int i = 1; i <= h; ++i) {
        H += i * (U(h - 1 + i) - U(h - 1 - i));
        V += i * (L(h - 1 + i) - L(h - 1 - i));
    }
    const int b = N == 16 ? asr(5 * H + 32, 6) : asr(17 * H + 16, 5);
    const int c = N == 16 ? asr(5 * V + 32, 6) : asr(17 * V + 16, 5);
    const int a = 16 * (L(N - 1) + U(N - 1));
    for (int y = 0; y < N; ++y)
        for (int x = 0; x < N; ++x)
            row(p, step, y)[x] = clip_u8(asr(a + b * (x - (h - 1)) + c * (y - (h - 1)) + 16, 5));
    return kvtStsOk;
}

// A 16x16 or chroma mode without a neighbour it needs.
KvtStatus missing(uint8_t*, int) { return kvtStsNeighbourMissing; }

template <int... M>
void fill_4x4(IntraPredDsp& d, std::integer_sequence<int, M...>) {
    (fill_avail<0>(d.pred4x4[M], [](auto a) { return pred4x4<M, decltype(a)::value & kUses4x4[M]>; }), ...);
}

}  // namespace

void init_intra_pred(IntraPredDsp& d) {
    fill_4x4(d, std::make_integer_sequence<int, 9>());
    for (auto* mode : {d.pred16x16, d.chroma8x8})
        for (int m = 0; m < 4; ++m) std::fill(std::begin(mode[m]), std::end(mode[m]), missing);
    const auto same = [](IntraPredFn k) { return [k](auto) { return k; }; };
    fill_avail<kNeeds16x16[0]>(d.pred16x16[0], same(vertical<16>));
    fill_avail<kNeeds16x16[1]>(d.pred16x16[1], same(horizontal<16>));
    fill_avail<kNeeds16x16[2]>(d.pred16x16[2],
                               [](auto a) { return dc16x16<decltype(a)::value&(kNbUpper | kNbLeft)>; });
    fill_avail<kNeeds16x16[3]>(d.pred16x16[3], same(plane<16>));
    fill_avail<kNeedsChroma[0]>(d.chroma8x8[0],
                                [](auto a) { return dc_chroma<decltype(a)::value&(kNbUpper | kNbLeft)>; });
    fill_avail<kNeedsChroma[1]>(d.chroma8x8[1], same(horizontal<8>));
    fill_avail<kNeedsChroma[2]>(d.chroma8x8[2], same(vertical<8>));
    fill_avail<kNeedsChroma[3]>(d.chroma8x8[3], same(plane<8>));
}

}  // namespace kvt::KVT_C_NS
