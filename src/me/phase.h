// Phase dispatch for the block-metric fronts: one direct call per phase code (a switch on
// constants is cheaper than a call through a table of kernels), and the aligned kernel names.
#pragma once

#include <cstdint>
#include <type_traits>

#include "common/dispatch.h"
#include "me/halfpel.h"

namespace kvt {

template <int type>
using PhaseTag = std::integral_constant<int, type>;

// Returns k(PhaseTag<type>{}) for the phase codes 0, 4 and 8; every other value runs phase 12.
// The integer position, the commonest in a search, is tested first.
template <class K>
inline decltype(auto) with_phase(int type, K&& k) {
    if (type == kMcFull) return k(PhaseTag<kMcFull>{});
    if (type == kMcVertHalf) return k(PhaseTag<kMcVertHalf>{});
    if (type == kMcHorHalf) return k(PhaseTag<kMcHorHalf>{});
    return k(PhaseTag<kMcBothHalf>{});
}

// The four codes; the squared-difference and VarMeanDiff fronts accept only these.
inline bool is_phase_code(int type) {
    return type == kMcFull || type == kMcVertHalf || type == kMcHorHalf || type == kMcBothHalf;
}

// X(type) for each phase code, and X(forward, backward) for each pair: explicit instantiations.
#define KVT_FOR_EACH_PHASE(X) X(0) X(4) X(8) X(12)
#define KVT_PHASE_ROW(X, f) X(f, 0) X(f, 4) X(f, 8) X(f, 12)
#define KVT_FOR_EACH_PHASE_PAIR(X) \
    KVT_PHASE_ROW(X, 0) KVT_PHASE_ROW(X, 4) KVT_PHASE_ROW(X, 8) KVT_PHASE_ROW(X, 12)

// Kernels whose current block is 16 samples wide have a twin that loads it with aligned loads
// (folded into the arithmetic) when its pointer and step are multiples of 16. Without SIMD the
// reference serves both.
#if KVT_HAVE_SSE2
#define KVT_KERNEL_A16(name) name##_a16_sse2
#else
#define KVT_KERNEL_A16(name) name##_ref
#endif

inline bool aligned16(const void* p, int step) {
    return ((reinterpret_cast<uintptr_t>(p) | uintptr_t(step)) & 15) == 0;
}

}  // namespace kvt
