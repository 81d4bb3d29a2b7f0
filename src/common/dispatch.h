// Compile-time kernel selection.
//
// Every kernel has a portable reference `<name>_ref`, always compiled, and where it pays an
// SSE2 twin `<name>_sse2` in a separate *_sse2.cpp file. The twin is built when the target has
// SSE2 (every x86-64 target, and 32-bit x86 with -msse2) and KVT_SIMD is on. The choice is made
// once, by the compiler, with one exception: fills and copies of 65 to 512 bytes test for
// 256-bit stores at run time (core/wide_stores.h). No global state.
//
// A kernel that writes its results through pointers returns the status its front returns on
// success (kvtStsOk), so that a front ends in `return kernel(...)`: the compiler makes that a
// jump, and the smallest blocks save a call and a return (SAD 8x8: 12 cycles down to 10).
#pragma once

#if defined(KVT_ENABLE_SIMD) && KVT_ENABLE_SIMD && defined(__SSE2__)
#define KVT_HAVE_SSE2 1
#define KVT_KERNEL(name) name##_sse2
#else
#define KVT_HAVE_SSE2 0
#define KVT_KERNEL(name) name##_ref
#endif

// Hint for the rare branches of fronts (argument failures).
#if defined(__GNUC__)
#define KVT_UNLIKELY(x) __builtin_expect(!!(x), 0)
#else
#define KVT_UNLIKELY(x) (x)
#endif
