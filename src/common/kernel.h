// The one way kernels are written and chosen.
//
// A family `foo` declares `struct FooDsp` (one function pointer per slot, one signature per slot)
// and one `init_foo(FooDsp&)` per tier namespace: `c` (portable kernels, foo_c.cpp), `sse2`,
// `ssse3`, `avx2`, `avx512` (foo_<tier>.cpp, each built with its own target flags and nothing
// else). `init_foo_dsp(FooDsp&, unsigned cpu_flags)` runs the C init, then the init of every tier
// the flags allow, each overwriting the slots it implements. The fronts read one table built by
// KVT_DSP_TABLE at load time:
//
//     namespace { KVT_DSP_TABLE(FooDsp, init_foo_dsp) dsp; }
//     KvtStatus kvtiFoo(...) { checks...; return dsp.foo[phase](...); }
//
// The portable kernels are compiled twice: into the library as namespace `c`, and into the test
// and benchmark oracle (kvtvc_ref, unvectorised) as namespace `ref`. foo_c.cpp therefore opens
// `namespace kvt::KVT_C_NS`.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include "common/cpu.h"

#if defined(KVT_ORACLE) && KVT_ORACLE
#define KVT_C_NS ref
#else
#define KVT_C_NS c
#endif

// KVT_TIERS: the SIMD tier files are part of the build (set by CMake on x86 with KVT_SIMD on).
#ifndef KVT_TIERS
#define KVT_TIERS 0
#endif

// Runs tier::call when the tier's kernels are built and `flags` has the tier.
#define KVT_IF_TIER(flags, tier, call)                                                                \
    do {                                                                                              \
        if (KVT_TIER_BUILT_##tier && ((flags) & ::kvt::kTierFlag_##tier)) KVT_TIER_CALL_##tier(call); \
    } while (0)

#if KVT_TIERS
#define KVT_TIER_BUILT_sse2 1
#define KVT_TIER_BUILT_ssse3 1
#define KVT_TIER_BUILT_avx2 1
#define KVT_TIER_BUILT_avx512 1
#define KVT_TIER_CALL_sse2(call) sse2::call
#define KVT_TIER_CALL_ssse3(call) ssse3::call
#define KVT_TIER_CALL_avx2(call) avx2::call
#define KVT_TIER_CALL_avx512(call) avx512::call
#else
// Without tier files the calls are never compiled, so their symbols need not exist.
#define KVT_TIER_BUILT_sse2 0
#define KVT_TIER_BUILT_ssse3 0
#define KVT_TIER_BUILT_avx2 0
#define KVT_TIER_BUILT_avx512 0
#define KVT_TIER_CALL_sse2(call) ((void)0)
#define KVT_TIER_CALL_ssse3(call) ((void)0)
#define KVT_TIER_CALL_avx2(call) ((void)0)
#define KVT_TIER_CALL_avx512(call) ((void)0)
#endif

namespace kvt {

constexpr unsigned kTierFlag_sse2 = kCpuSSE2;
constexpr unsigned kTierFlag_ssse3 = kCpuSSSE3;
constexpr unsigned kTierFlag_avx2 = kCpuAVX2;
constexpr unsigned kTierFlag_avx512 = kCpuAVX512;

// A family's table, filled by Init from the processor's flags when the library is loaded, before
// any constructor of the program (priority 101), and never written again.
template <class Dsp, void (*Init)(Dsp&, unsigned)>
struct LoadTimeTable : Dsp {
    LoadTimeTable() : Dsp() { Init(*this, cpu_flags()); }
};

// Fills one column of a table from a template: slots[i] = make(std::integral_constant<int, i>{}),
// e.g. fill_slots(d.sad16, [](auto p) { return sad<16, 16, decltype(p)::value * 4>; }).
template <class Fn, size_t N, class Make, size_t... I>
void fill_slots_at(Fn (&slots)[N], Make make, std::index_sequence<I...>) {
    ((slots[I] = make(std::integral_constant<int, int(I)>{})), ...);
}
template <class Fn, size_t N, class Make>
void fill_slots(Fn (&slots)[N], Make make) {
    fill_slots_at(slots, make, std::make_index_sequence<N>());
}

// True when index_of_slot(i) == i for every slot i < n: a table's index helper applied to what its
// inverse makes of a slot gives the slot back (checked at compile time beside each such pair).
template <class IndexOfSlot>
constexpr bool round_trips(int n, IndexOfSlot index_of_slot) {
    for (int i = 0; i < n; ++i)
        if (index_of_slot(i) != i) return false;
    return true;
}

}  // namespace kvt

#define KVT_DSP_TABLE(Type, init) [[gnu::init_priority(101)]] const ::kvt::LoadTimeTable<Type, init>

// Hint for the rare branches of fronts (argument failures).
#if defined(__GNUC__)
#define KVT_UNLIKELY(x) __builtin_expect(!!(x), 0)
#else
#define KVT_UNLIKELY(x) (x)
#endif
