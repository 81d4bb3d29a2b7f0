// Kernel table of the H.264 CAVLC syntax elements of one block (H.264 9.2): the block is walked
// from its highest scan position down, collecting trailing ones, levels and zero runs.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

// Outputs of one walk, as the caller's pointers.
struct CavlcOut {
    uint8_t* trailing_ones;
    uint8_t* trailing_one_signs;
    uint8_t* num_coeffs;
    uint8_t* total_zeros;
    int16_t* levels;
    uint8_t* runs;
};

// Scan positions last..first of `coeffs` (16 raster values, scan[k] the raster index of position k).
using CavlcBlockFn = KvtStatus (*)(const int16_t* coeffs, int first, const uint32_t* scan, int last,
                                   const CavlcOut& out);
// The four chroma DC values of 4:2:0, raster order = scan order.
using CavlcChromaDcFn = KvtStatus (*)(const int16_t* coeffs, const CavlcOut& out);

struct CavlcDsp {
    CavlcBlockFn block;
    CavlcChromaDcFn chroma_dc;
};

namespace c {
void init_cavlc(CavlcDsp& d);
}
namespace ref {
void init_cavlc(CavlcDsp& d);
}

void init_cavlc_dsp(CavlcDsp& d, unsigned cpu_flags);

}  // namespace kvt
