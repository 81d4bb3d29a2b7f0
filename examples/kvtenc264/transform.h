// Residual coding of a macroblock through the library: forward transform and quantization of the
// residual against the prediction already in the reconstruction, then the decoder's dequantization
// and inverse transform added to that prediction (H.264 8.5), so the reconstruction is the
// decoder's picture. Every function returns false when a level would exceed what CAVLC codes in
// the baseline profile (|level| > 2063); the caller then quantizes more coarsely.
#pragma once
#include <cstdint>

#include "macroblock.h"

namespace enc264 {

struct Block {
    const uint8_t* src;
    int src_step;
    uint8_t* rec;  // holds the prediction on entry, the reconstruction on return
    int rec_step;
};

// One 4x4 luma block of an Intra4x4 macroblock: levels[16] and TotalCoeff (*nnz).
bool code_luma4x4(const Block& b, int qp, int16_t* levels, uint8_t* nnz);
// The luma of an Intra16x16 macroblock: DC levels, AC levels, cbp_luma and the AC counts; also
// false when the decoder's DC transform could leave 16 bits.
bool code_luma16x16(const Block& b, int qp, MbCode& code, MbInfo& info);
// The luma of an inter macroblock: sixteen 4x4 blocks and cbp_luma.
bool code_luma_inter(const Block& b, int qp, MbCode& code, MbInfo& info);
// Both chroma components (cb, cr) at chroma QP qpc: DC and AC levels and cbp_chroma.
bool code_chroma(const Block& cb, const Block& cr, int qpc, bool intra, MbCode& code, MbInfo& info);

}  // namespace enc264
