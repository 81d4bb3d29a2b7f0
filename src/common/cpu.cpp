// Reads the processor's features through the compiler's run-time library (CPUID, and XGETBV
// for the operating system's support of the 256- and 512-bit registers).
#include "common/cpu.h"

#include "common/kernel.h"

namespace kvt {

unsigned cpu_flags() {
    unsigned flags = 0;
#if KVT_TIERS
    __builtin_cpu_init();  // we may run from a load-time constructor, before the runtime's own
    // A tier counts only when every tier below it does.
    if (!__builtin_cpu_supports("sse2")) return flags;
    flags |= kCpuSSE2;
    if (!__builtin_cpu_supports("ssse3")) return flags;
    flags |= kCpuSSSE3;
    if (!__builtin_cpu_supports("avx2")) return flags;
    flags |= kCpuAVX2;
    if (!__builtin_cpu_supports("avx512f") || !__builtin_cpu_supports("avx512bw") ||
        !__builtin_cpu_supports("avx512vl"))
        return flags;
    flags |= kCpuAVX512;
#endif
    return flags;
}

}  // namespace kvt
