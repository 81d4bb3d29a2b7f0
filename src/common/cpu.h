// Instruction-set tiers and the processor's support for them.
//
// Every family keeps one table of kernel pointers (see kernel.h): the portable C kernels first,
// then, tier by tier, the SIMD kernels this processor can run. The table is filled once, at load
// time, from cpu_flags(); nothing is chosen per call and nothing is written after start-up.
#pragma once

namespace kvt {

// One bit per tier above the portable C kernels. A tier implies the ones below it.
enum CpuFlag : unsigned {
    kCpuSSE2 = 1u << 0,
    kCpuSSSE3 = 1u << 1,
    kCpuAVX2 = 1u << 2,
    kCpuAVX512 = 1u << 3,  // AVX-512 F + BW + VL
};

// The tiers the processor (and its operating system, for the wide registers) supports, as a
// contiguous run from kCpuSSE2 up; 0 when the library was built without SIMD kernels.
unsigned cpu_flags();

}  // namespace kvt
