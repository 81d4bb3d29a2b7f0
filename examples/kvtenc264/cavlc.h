// residual_block_cavlc() (H.264 7.3.5.3.3, 9.2): the library turns a block of levels into its
// syntax elements; this writes them with the code tables.
#pragma once
#include <cstdint>

#include "bitwriter.h"

namespace enc264 {

// Writes the levels of a 4x4 block (raster positions) at zigzag scan indices first..15 with
// coeff_token table nC; returns TotalCoeff.
int write_block_cavlc(BitWriter& bw, const int16_t* levels, int first, int nc);
// Writes the four chroma DC levels of a 4:2:0 block (nC = -1); returns TotalCoeff.
int write_chroma_dc_cavlc(BitWriter& bw, const int16_t* levels);

}  // namespace enc264
