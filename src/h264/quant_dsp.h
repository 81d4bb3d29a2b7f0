// Kernel table of the H.264 encoder-side forward transforms with quantization (the 4x4 core
// transform and the DC Hadamard transforms of H.264 8.5, with the forward scaling of the JVT
// model encoder). Each kernel stores the levels, then returns kvtStsLevelOverflow when a level
// exceeds 2063, and otherwise stores the count of nonzero levels (negated when the level at raster
// position 0 is nonzero) and, where it takes a scan table, the largest scan position among them.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

struct QuantDsp {
    // 4 chroma DC values; t receives their 2x2 transform when `transform`, else holds it.
    KvtStatus (*chroma_dc)(int16_t* c, int16_t* t, int qp, int8_t* count, bool intra, bool transform);
    // 16 Intra16x16 DC values; t receives their halved Hadamard transform when `transform`.
    KvtStatus (*luma_dc)(int16_t* c, int16_t* t, int qp, int8_t* count, bool transform, const int16_t* scan,
                         uint8_t* last);
    // A 4x4 residual block, in place.
    KvtStatus (*residual)(int16_t* c, int qp, int8_t* count, bool intra, const int16_t* scan, uint8_t* last);
};

namespace c {
void init_quant(QuantDsp& d);
}
namespace ref {
void init_quant(QuantDsp& d);
}
namespace sse2 {
void init_quant(QuantDsp& d);
}

void init_quant_dsp(QuantDsp& d, unsigned cpu_flags);

}  // namespace kvt
