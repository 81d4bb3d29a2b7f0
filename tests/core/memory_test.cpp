// Aligned allocation and the version record.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

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

// The release this interface reproduces; the same record on every call.
TEST(Version, RecordHoldsTheReleaseValues) {
    const KvtLibraryVersion* v = kvtvcGetLibVersion();
    ASSERT_TRUE(v != nullptr && v == kvtvcGetLibVersion());
    EXPECT_TRUE(v->major == 4 && v->minor == 1 && v->majorBuild == 10 && v->build == 38);
    EXPECT_EQ(std::string(v->targetCpu, 4) + v->name + " " + v->version + " " + v->buildDate,
              std::string("w7\0\0", 4) + "libkvtvcw7.so v4.1 Jul 23 2004");
}
