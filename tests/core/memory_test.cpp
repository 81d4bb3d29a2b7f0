// Aligned allocation.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>

#include "kvtvc.h"

// 32-byte aligned and the whole length ours (ASan checks the writes and the release); the raw
// block's address in the pointer-sized slot just before, within the length + 36 bytes allocated;
// no block for lengths below 1; a null release is ignored.
TEST(Malloc, AlignedWritableAndReleased) {
    for (int len : {1, 3, 32, 33, 1000, 1 << 20}) {
        Kvt8u* p = kvtsMalloc_8u(len);
        ASSERT_NE(p, nullptr) << len;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 32, 0u) << len;
        uintptr_t raw;
        std::memcpy(&raw, p - sizeof raw, sizeof raw);
        EXPECT_TRUE(uintptr_t(p) - raw >= sizeof raw && uintptr_t(p) - raw <= 36) << len;
        std::memset(p, 0xAB, size_t(len));
        kvtsFree(p);
    }
    for (int len : {0, -1, INT_MIN}) EXPECT_EQ(kvtsMalloc_8u(len), nullptr) << len;
    kvtsFree(nullptr);
}
