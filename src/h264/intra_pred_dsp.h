// Kernel table of H.264 intra prediction (H.264 8.3.1, 8.3.3, 8.3.4). A kernel predicts one block
// in place from the neighbours the availability mask allows; the mask bits are below.
#pragma once

#include <cstdint>

#include "kvtvc.h"

namespace kvt {

enum IntraNeighbour : unsigned {
    kNbUpper = 1,       // the row above, U[0..N-1]
    kNbLeft = 2,        // the column to the left, L[0..N-1]
    kNbCorner = 32,     // the sample above-left, M
    kNbUpperRight = 64  // U[4..7] of a 4x4 block
};

// Block at dst (its neighbours at dst - step and dst - 1), the caller's availability mask. The 4x4
// kernels substitute missing neighbours and return 11 when they did; the others are run only
// when every neighbour they need is available (DC picks its own form from the mask).
using IntraPredFn = KvtStatus (*)(uint8_t* dst, int step, unsigned avail);

struct IntraPredDsp {
    IntraPredFn pred4x4[9];    // H.264 Intra4x4PredMode 0..8
    IntraPredFn pred16x16[4];  // vertical, horizontal, DC, plane
    IntraPredFn chroma8x8[4];  // DC, horizontal, vertical, plane
};

namespace c {
void init_intra_pred(IntraPredDsp& d);
}
namespace ref {
void init_intra_pred(IntraPredDsp& d);
}
namespace sse2 {
void init_intra_pred(IntraPredDsp& d);
}
namespace ssse3 {
void init_intra_pred(IntraPredDsp& d);
}
namespace avx2 {
void init_intra_pred(IntraPredDsp& d);
}

void init_intra_pred_dsp(IntraPredDsp& d, unsigned cpu_flags);

}  // namespace kvt
