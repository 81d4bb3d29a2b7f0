// Portable H.264 interpolation kernels, written sample by sample from the rules of H.264 8.4.2.2.
#include "common/kernel.h"
#include "h264/interp_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

int clip255(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }
int avg(int a, int b) { return (a + b + 1) >> 1; }

// The six-tap filter over p[-2d], ..., p[3d]: the half-sample position between p[0] and p[d].
int tap6(int a, int b, int c, int d, int e, int f) { return a - 5 * b + 20 * c + 20 * d - 5 * e + f; }
int tap6(const uint8_t* p, intptr_t d) { return tap6(p[-2 * d], p[-d], p[0], p[d], p[2 * d], p[3 * d]); }

// Half samples around the integer sample p: b to the right, h below, j diagonally.
int half_b(const uint8_t* p) { return clip255((tap6(p, 1) + 16) >> 5); }
int half_h(const uint8_t* p, intptr_t step) { return clip255((tap6(p, step) + 16) >> 5); }
// j filters the unrounded vertical sums of the six columns horizontally.
int half_j(const uint8_t* p, intptr_t step) {
    const int sum = tap6(tap6(p - 2, step), tap6(p - 1, step), tap6(p, step), tap6(p + 1, step),
                         tap6(p + 2, step), tap6(p + 3, step));
    return clip255((sum + 512) >> 10);
}

// The sample at quarter position (dx, dy) of the integer sample p. Quarter positions average the
// two nearest integer or half samples; the diagonal ones average two half samples (b or the b one
// row down, with h or the h one column right), as the final H.264 text has it.
template <int dx, int dy>
int luma_at(const uint8_t* p, intptr_t s) {
    if constexpr (dx == 0 && dy == 0) return p[0];
    if constexpr (dx == 1 && dy == 0) return avg(p[0], half_b(p));
    if constexpr (dx == 2 && dy == 0) return half_b(p);
    if constexpr (dx == 3 && dy == 0) return avg(half_b(p), p[1]);
    if constexpr (dx == 0 && dy == 1) return avg(p[0], half_h(p, s));
    if constexpr (dx == 0 && dy == 2) return half_h(p, s);
    if constexpr (dx == 0 && dy == 3) return avg(half_h(p, s), p[s]);
    if constexpr (dx % 2 == 1 && dy % 2 == 1) return avg(half_b(p + (dy / 2) * s), half_h(p + dx / 2, s));
    if constexpr (dx == 2 && dy != 2) return avg(half_j(p, s), half_b(p + (dy / 2) * s));
    if constexpr (dx == 2 && dy == 2) return half_j(p, s);
    if constexpr (dx != 2 && dy == 2) return avg(half_j(p, s), half_h(p + dx / 2, s));
}

template <int W, int pos>
KvtStatus luma(const uint8_t* src, int32_t src_step, uint8_t* dst, int32_t dst_step, int height) {
    for (int y = 0; y < height; ++y, src += src_step, dst += dst_step)
        for (int x = 0; x < W; ++x) dst[x] = uint8_t(luma_at<pos / 4, pos % 4>(src + x, src_step));
    return kvtStsOk;
}

// Chroma: the bilinear blend of the four surrounding samples in eighths. All four are read, so
// the block is read plus one column and one row whatever the position.
template <int W>
KvtStatus chroma(const uint8_t* src, int32_t src_step, uint8_t* dst, int32_t dst_step, int dx, int dy,
                 int height) {
    const int a = (8 - dx) * (8 - dy), b = dx * (8 - dy), c = (8 - dx) * dy, d = dx * dy;
    for (int y = 0; y < height; ++y, src += src_step, dst += dst_step) {
        const uint8_t* below = src + src_step;
        for (int x = 0; x < W; ++x)
            dst[x] = uint8_t((a * src[x] + b * src[x + 1] + c * below[x] + d * below[x + 1] + 32) >> 6);
    }
    return kvtStsOk;
}

template <int W>
void fill_luma(LumaInterpFn (&slots)[16], LumaInterpFn (&copies)[3]) {
    fill_slots(slots, [](auto pos) { return luma<W, decltype(pos)::value>; });
    slots[0] = nullptr;
    copies[0] = copies[1] = copies[2] = luma<W, 0>;
}

}  // namespace

void init_interp(InterpDsp& d) {
    fill_luma<4>(d.luma[0], d.copy[0]);
    fill_luma<8>(d.luma[1], d.copy[1]);
    fill_luma<16>(d.luma[2], d.copy[2]);
    d.chroma[0] = chroma<2>;
    d.chroma[1] = chroma<4>;
    d.chroma[2] = chroma<8>;
}

}  // namespace kvt::KVT_C_NS
