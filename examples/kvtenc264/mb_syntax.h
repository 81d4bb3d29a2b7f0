// macroblock_layer() of I and P slices in CAVLC (H.264 7.3.5): mb_type, prediction modes or
// motion vector differences, coded_block_pattern, mb_qp_delta and the residual blocks.
#pragma once
#include "bitwriter.h"
#include "macroblock.h"
#include "neighbours.h"

namespace enc264 {

// Writes one macroblock (not P_Skip). qp_delta is written when the macroblock carries it.
void write_macroblock(BitWriter& bw, const MbCode& mb, const Neighbours& nb, bool p_slice, int qp_delta);

// True when mb_qp_delta is present: residual coded or Intra16x16.
inline bool has_qp_delta(const MbCode& mb) {
    return mb.type == MbType::I16x16 || mb.cbp_luma || mb.cbp_chroma;
}

// codeNum of coded_block_pattern (me(v), H.264 Table 9-4, 4:2:0) for intra 4x4 and inter MBs.
int cbp_code_num(int cbp, bool intra);

}  // namespace enc264
