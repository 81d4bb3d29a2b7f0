// 8-sample-wide block kernels on MMX registers, with SSE's integer extension PAVGB:
// present on every processor of the SSE2 tier. An MMX instruction takes its 8-byte operand
// straight from memory at any alignment, where an SSE one needs a separate 8-byte load, so each
// row that averages against memory costs one instruction less (measured: a third of the 8x8
// half-sample copy's time and of the average's; a SAD in this form gained nothing). Each kernel
// is one asm statement (the compiler cannot interleave MMX and x87 code) that ends in EMMS,
// leaving the floating-point state free for the caller.
//
// Include only from SSE2 tier files; internal linkage.
#pragma once

#include <cstdint>

#if !defined(__GNUC__) || !(defined(__x86_64__) || defined(__i386__))
#error "MMX kernels need GNU inline assembly on x86"
#endif

namespace kvt::mmx {
namespace {

// dst = (a + b + 1) >> 1 with b the right neighbour of a (H.263 / MPEG-4 horizontal half sample,
// rounding control 0), 8x8.
inline void copy8x8_half_h(const uint8_t* src, intptr_t src_step, uint8_t* dst, intptr_t dst_step) {
    __asm__ volatile(
        ".rept 4\n\t"
        "movq (%[s]), %%mm0\n\t"
        "movq (%[s],%[ss]), %%mm1\n\t"
        "pavgb 1(%[s]), %%mm0\n\t"
        "pavgb 1(%[s],%[ss]), %%mm1\n\t"
        "lea (%[s],%[ss],2), %[s]\n\t"
        "movq %%mm0, (%[d])\n\t"
        "movq %%mm1, (%[d],%[ds])\n\t"
        "lea (%[d],%[ds],2), %[d]\n\t"
        ".endr\n\t"
        "emms"
        : [s] "+r"(src), [d] "+r"(dst)
        : [ss] "r"(src_step), [ds] "r"(dst_step)
        : "memory", "mm0", "mm1");
}

// dst = (a + b + 1) >> 1 of two 8x8 blocks.
inline void average8x8(const uint8_t* a, intptr_t a_step, const uint8_t* b, intptr_t b_step, uint8_t* dst,
                       intptr_t dst_step) {
    __asm__ volatile(
        ".rept 4\n\t"
        "movq (%[a]), %%mm0\n\t"
        "movq (%[a],%[as]), %%mm1\n\t"
        "pavgb (%[b]), %%mm0\n\t"
        "pavgb (%[b],%[bs]), %%mm1\n\t"
        "lea (%[a],%[as],2), %[a]\n\t"
        "lea (%[b],%[bs],2), %[b]\n\t"
        "movq %%mm0, (%[d])\n\t"
        "movq %%mm1, (%[d],%[ds])\n\t"
        "lea (%[d],%[ds],2), %[d]\n\t"
        ".endr\n\t"
        "emms"
        : [a] "+r"(a), [b] "+r"(b), [d] "+r"(dst)
        : [as] "r"(a_step), [bs] "r"(b_step), [ds] "r"(dst_step)
        : "memory", "mm0", "mm1");
}

}  // namespace
}  // namespace kvt::mmx
