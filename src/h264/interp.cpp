// Fronts of H.264 luma and chroma interpolation: the checks in their documented order, then one
// kernel chosen by block width and position.
#include "common/kernel.h"
#include "h264/interp_dsp.h"
#include "kvtvc.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(InterpDsp, init_interp_dsp) dsp;

bool in(int v, int lo, int hi) { return v >= lo && v <= hi; }

// Bit h of entry w is set when w x h is a block size: powers of two from lo to hi each way, but
// not the two sizes whose sides add up to `excluded` (4x16 and 16x4, 2x8 and 8x2). One load and
// one bit test, where separate range and power-of-two tests of both sides take a dozen steps.
struct BlockSizes {
    uint32_t heights[17] = {};
    constexpr BlockSizes(int lo, int hi, int excluded) {
        for (int w = lo; w <= hi; w *= 2)
            for (int h = lo; h <= hi; h *= 2)
                if (w + h != excluded) heights[w] |= 1u << h;
    }
    bool has(int w, int h) const { return unsigned(w) <= 16 && unsigned(h) <= 16 && (heights[w] >> h & 1); }
};
constexpr BlockSizes kLumaSizes(4, 16, 20), kChromaSizes(2, 8, 10);
}  // namespace

// 4, 8 and 16 in both directions except 4x16 and 16x4.
KvtStatus kvtiInterpolateLuma_H264_8u_C1R(const Kvt8u* pSrc, Kvt32s srcStep, Kvt8u* pDst, Kvt32s dstStep,
                                          Kvt32s dx, Kvt32s dy, KvtRegionSize roiSize) {
    const int w = roiSize.width, h = roiSize.height;
    if (!pSrc || !pDst) return kvtStsNullPointer;
    if (srcStep < w || dstStep < w) return kvtStsBadStep;
    if (!in(dx, 0, 3) || !in(dy, 0, 3)) return kvtStsBadArgument;
    if (!kLumaSizes.has(w, h)) return kvtStsBadSize;
    const int wc = width_class(w), pos = dx * 4 + dy;
    if (pos == 0) return dsp.copy[wc][width_class(h)](pSrc, srcStep, pDst, dstStep, h);
    return dsp.luma[wc][pos](pSrc, srcStep, pDst, dstStep, h);
}

// 2, 4 and 8 in both directions except 2x8 and 8x2; the steps are checked against 8 whatever the
// width.
KvtStatus kvtiInterpolateChroma_H264_8u_C1R(const Kvt8u* pSrc, Kvt32s srcStep, Kvt8u* pDst, Kvt32s dstStep,
                                            Kvt32s dx, Kvt32s dy, KvtRegionSize roiSize) {
    const int w = roiSize.width, h = roiSize.height;
    if (!pSrc || !pDst) return kvtStsNullPointer;
    if (srcStep < 8 || dstStep < 8) return kvtStsBadStep;
    if (!in(dx, 0, 7) || !in(dy, 0, 7)) return kvtStsBadArgument;
    if (!kChromaSizes.has(w, h)) return kvtStsBadSize;
    return dsp.chroma[width_class(2 * w)](pSrc, srcStep, pDst, dstStep, dx, dy, h);
}
