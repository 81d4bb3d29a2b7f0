// Front of the H.264 weighted average: the checks in their documented order, then one kernel
// chosen by width and by the size of the parameters (weight_dsp.h).
#include "common/kernel.h"
#include "h264/weight_dsp.h"
#include "kvtvc.h"

using namespace kvt;

namespace {
KVT_DSP_TABLE(WeightDsp, init_weight_dsp) dsp;

bool block_size(int v) { return v == 2 || v == 4 || v == 8 || v == 16; }
}  // namespace

KvtStatus kvtiWeightedAverage_H264_8u_C1IR(const Kvt8u* pSrc1, Kvt8u* pSrc2Dst, Kvt32s srcDstStep,
                                           Kvt32s weight1, Kvt32s weight2, Kvt32u shift, Kvt32s offset,
                                           KvtRegionSize roiSize) {
    const int w = roiSize.width, h = roiSize.height;
    if (!pSrc1 || !pSrc2Dst) return kvtStsNullPointer;
    if (srcDstStep < w) return kvtStsBadStep;
    if (!block_size(w) || !block_size(h)) return kvtStsBadSize;
    const WeightFn* kernels = small_weights(weight1, weight2, shift, offset) ? dsp.average_small
                              : halfword_weights(weight1, weight2)           ? dsp.average
                                                                             : dsp.average_wide;
    return kernels[weight_width_slot(w)](pSrc1, pSrc2Dst, srcDstStep, weight1, weight2, shift, offset, h);
}
