// Kernel table of the H.263 macroblock header decoders (MCBPC, MODB, CBPY, modified DQUANT); C only.
// The cursor and the output are valid when a kernel runs; a kernel that meets a code it rejects
// returns the status and leaves the cursor and the output unchanged.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

using HeaderCodeFn = KvtStatus (*)(uint8_t** pp, int* pOffset, uint8_t* dst);

struct MbHeaderDsp {
    HeaderCodeFn mcbpc_intra;
    HeaderCodeFn mcbpc_inter;
    HeaderCodeFn modb;
    HeaderCodeFn cbpy;
    KvtStatus (*update_quant_mq)(uint8_t** pp, int* pOffset, uint32_t* quant);
};

namespace c {
void init_mb_header(MbHeaderDsp& d);
}
namespace ref {
void init_mb_header(MbHeaderDsp& d);
}

void init_mb_header_dsp(MbHeaderDsp& d, unsigned cpu_flags);

}  // namespace kvt
