// Block kernels of the SSE2 tier written as inline assembly, where the compiler's own code for
// the same instructions measured slower.
//
// 8-sample-wide rows go through MMX registers, with SSE's integer extension PAVGB: an MMX
// instruction takes its 8-byte operand straight from memory at any alignment, where an SSE one
// needs a separate 8-byte load, so each row that averages against memory costs one instruction
// less (measured: a third of the 8x8 half-sample copy's time and of the average's; a SAD in this
// form gained nothing). These kernels end in EMMS, leaving the floating-point state free for the
// caller.
//
// 16-sample-wide rows with two inputs (the average, the vertical half) go two rows at a time with
// each pointer moved on by one LEA; the compiler's versions keep a base per four rows for each
// pointer, run out of registers and save some on the stack (measured: 15% and 25% slower). The
// plain 16-wide copy is a loop of four rows a step.
//
// Each kernel is one asm statement (nothing the compiler schedules can come between its
// instructions). SSE2 instructions: include only from x86 tier files (the H.264 interpolation
// header, built by every tier, takes its 16-wide copy from here); internal linkage.
#pragma once

#include <cstdint>

#if !defined(__GNUC__) || !(defined(__x86_64__) || defined(__i386__))
#error "these kernels need GNU inline assembly on x86"
#endif

namespace kvt::asm_x86 {
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

// dst = (a + b + 1) >> 1 of two 16x16 blocks.
inline void average16x16(const uint8_t* a, intptr_t a_step, const uint8_t* b, intptr_t b_step, uint8_t* dst,
                         intptr_t dst_step) {
    __asm__ volatile(
        ".rept 8\n\t"
        "movdqu (%[a]), %%xmm0\n\t"
        "movdqu (%[a],%[as]), %%xmm1\n\t"
        "movdqu (%[b]), %%xmm2\n\t"
        "movdqu (%[b],%[bs]), %%xmm3\n\t"
        "pavgb %%xmm2, %%xmm0\n\t"
        "pavgb %%xmm3, %%xmm1\n\t"
        "lea (%[a],%[as],2), %[a]\n\t"
        "lea (%[b],%[bs],2), %[b]\n\t"
        "movdqu %%xmm0, (%[d])\n\t"
        "movdqu %%xmm1, (%[d],%[ds])\n\t"
        "lea (%[d],%[ds],2), %[d]\n\t"
        ".endr"
        : [a] "+r"(a), [b] "+r"(b), [d] "+r"(dst)
        : [as] "r"(a_step), [bs] "r"(b_step), [ds] "r"(dst_step)
        : "memory", "xmm0", "xmm1", "xmm2", "xmm3");
}

// dst = (a + c + 1) >> 1 with c the sample below a (vertical half sample, rounding control 0),
// 16x16; each source row is loaded once and serves two output rows.
inline void copy16x16_half_v(const uint8_t* src, intptr_t src_step, uint8_t* dst, intptr_t dst_step) {
    __asm__ volatile(
        "movdqu (%[s]), %%xmm0\n\t"
        ".rept 8\n\t"
        "movdqu (%[s],%[ss]), %%xmm1\n\t"
        "movdqu (%[s],%[ss],2), %%xmm2\n\t"
        "pavgb %%xmm1, %%xmm0\n\t"
        "pavgb %%xmm2, %%xmm1\n\t"
        "lea (%[s],%[ss],2), %[s]\n\t"
        "movdqu %%xmm0, (%[d])\n\t"
        "movdqu %%xmm1, (%[d],%[ds])\n\t"
        "movdqa %%xmm2, %%xmm0\n\t"
        "lea (%[d],%[ds],2), %[d]\n\t"
        ".endr"
        : [s] "+r"(src), [d] "+r"(dst)
        : [ss] "r"(src_step), [ds] "r"(dst_step)
        : "memory", "xmm0", "xmm1", "xmm2");
}

// A copy of 16-byte rows (a multiple of four), four rows a step, each pointer moved on by one LEA
// and the fourth row at 3 steps. A loop: measured faster than the same steps unrolled and than the
// compiler's loads-first copy (4.6 to 4.9 against 5.1 to 5.2 TSC ticks for 16 rows); the same
// loop measured slower for the average and the vertical half, which stay unrolled.
inline void copy16_rows(const uint8_t* src, intptr_t src_step, uint8_t* dst, intptr_t dst_step, int rows) {
    const intptr_t src_step3 = 3 * src_step, dst_step3 = 3 * dst_step;
    __asm__ volatile(
        "1:\n\t"
        "movdqu (%[s]), %%xmm0\n\t"
        "movdqu (%[s],%[ss]), %%xmm1\n\t"
        "movdqu (%[s],%[ss],2), %%xmm2\n\t"
        "movdqu (%[s],%[ss3]), %%xmm3\n\t"
        "lea (%[s],%[ss],4), %[s]\n\t"
        "movdqu %%xmm0, (%[d])\n\t"
        "movdqu %%xmm1, (%[d],%[ds])\n\t"
        "movdqu %%xmm2, (%[d],%[ds],2)\n\t"
        "movdqu %%xmm3, (%[d],%[ds3])\n\t"
        "lea (%[d],%[ds],4), %[d]\n\t"
        "sub $4, %[n]\n\t"
        "jnz 1b"
        : [s] "+r"(src), [d] "+r"(dst), [n] "+r"(rows)
        : [ss] "r"(src_step), [ds] "r"(dst_step), [ss3] "r"(src_step3), [ds3] "r"(dst_step3)
        : "memory", "cc", "xmm0", "xmm1", "xmm2", "xmm3");
}

}  // namespace
}  // namespace kvt::asm_x86
