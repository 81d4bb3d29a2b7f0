// Kernel table of H.264 intra prediction (H.264 8.3.1, 8.3.3, 8.3.4). A kernel predicts one block
// in place from the neighbours the availability mask allows; the mask bits are below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "kvtvc.h"

namespace kvt {

enum IntraNeighbour : unsigned {
    kNbUpper = 1,       // the row above, U[0..N-1]
    kNbLeft = 2,        // the column to the left, L[0..N-1]
    kNbCorner = 32,     // the sample above-left, M
    kNbUpperRight = 64  // U[4..7] of a 4x4 block
};

// The availability bits a 4x4 kernel depends on, and those of the larger blocks. A front picks
// the kernel by mode and `avail & mask`, so each slot holds a kernel made for one combination
// (no tests of the bits on the way; a slot whose mode lacks a needed neighbour holds a kernel that
// returns -117 and writes nothing).
constexpr unsigned kNb4x4 = kNbUpper | kNbLeft | kNbCorner | kNbUpperRight;  // 0x63
constexpr unsigned kNbBlock = kNbUpper | kNbLeft | kNbCorner;                // 0x23

// Block at dst (its neighbours at dst - step and dst - 1). The 4x4 kernels substitute missing
// neighbours and return 11 when they did.
using IntraPredFn = KvtStatus (*)(uint8_t* dst, int step);

struct IntraPredDsp {
    IntraPredFn pred4x4[9][kNb4x4 + 1];      // H.264 Intra4x4PredMode 0..8
    IntraPredFn pred16x16[4][kNbBlock + 1];  // vertical, horizontal, DC, plane
    IntraPredFn chroma8x8[4][kNbBlock + 1];  // DC, horizontal, vertical, plane
};

// Neighbours the 16x16 modes (vertical, horizontal, DC, plane) and the chroma modes (DC,
// horizontal, vertical, plane) cannot do without.
constexpr unsigned kNeeds16x16[4] = {kNbUpper, kNbLeft, 0, kNbUpper | kNbLeft | kNbCorner};
constexpr unsigned kNeedsChroma[4] = {0, kNbLeft, kNbUpper, kNbUpper | kNbLeft | kNbCorner};

// Fills slots[a] for every a with (a & needs) == needs (a within `mask`) with make(a), a as an
// std::integral_constant; the other slots are left as they are.
template <unsigned needs, class Make, size_t N, size_t... A>
void fill_avail_at(IntraPredFn (&slots)[N], Make make, std::index_sequence<A...>) {
    const auto one = [&](auto a) {
        constexpr unsigned mask = decltype(a)::value;
        if constexpr ((mask & needs) == needs && (mask & ~unsigned(N - 1)) == 0) slots[mask] = make(a);
    };
    (one(std::integral_constant<unsigned, unsigned(A)>{}), ...);
}
template <unsigned needs, class Make, size_t N>
void fill_avail(IntraPredFn (&slots)[N], Make make) {
    fill_avail_at<needs>(slots, make, std::make_index_sequence<N>());
}

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
