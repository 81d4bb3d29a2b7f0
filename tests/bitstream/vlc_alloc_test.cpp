// The table constructors' one allocation failing: -9, and the caller's pointer left alone. The
// call runs in a child process whose address space is capped and whose heap is used up.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>

#include "kvtvc.h"

#if defined(__SANITIZE_ADDRESS__)
#define KVT_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KVT_ASAN 1
#endif
#endif

namespace {

using Init = KvtStatus (*)(const Kvt32s*, KvtVCHuffmanSpec_32s**);

// Exit code 0 when `init` reports -9 and leaves the pointer as it was.
[[noreturn, maybe_unused]] void init_without_memory(Init init) {
    const Kvt32s description[] = {0, 1, 4, 1, 1, 0x0101, -1};  // read only after the allocation
    static KvtVCHuffmanSpec_32s mark;
    KvtVCHuffmanSpec_32s* table = &mark;
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_AS, &none);
    void* volatile taken;  // then take what the heap has left, so the next large block must fail
    while ((taken = std::malloc(4096)) != nullptr) {
    }
    _exit(init(description, &table) == kvtStsNoMemory && table == &mark ? 0 : 1);
}

}  // namespace

TEST(VlcAlloc, FailureReportsNoMemoryAndWritesNothing) {
#ifdef KVT_ASAN
    GTEST_SKIP() << "the sanitizer's allocator does not run with a capped address space";
#else
    EXPECT_EXIT(init_without_memory(kvtiVCHuffmanInitAlloc_32s), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(init_without_memory(kvtiVCHuffmanInitAllocRL_32s), testing::ExitedWithCode(0), "");
#endif
}
