// Kernels of the H.263 macroblock header decoders (MCBPC, MODB, CBPY, modified DQUANT).
// The cursor and the output are valid when a kernel runs; a kernel that meets a code it rejects
// returns the status and leaves the cursor and the output unchanged.
#pragma once

#include <cstdint>

namespace kvt {

int decode_mcbpc_intra_h263_ref(uint8_t** pp, int* pOffset, uint8_t* dst);
int decode_mcbpc_inter_h263_ref(uint8_t** pp, int* pOffset, uint8_t* dst);
int decode_modb_h263_ref(uint8_t** pp, int* pOffset, uint8_t* dst);
int decode_cbpy_h263_ref(uint8_t** pp, int* pOffset, uint8_t* dst);
int update_quant_mq_h263_ref(uint8_t** pp, int* pOffset, uint32_t* quant);

}  // namespace kvt
