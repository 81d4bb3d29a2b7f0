// Aligned allocation and the version record.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "kvtvc.h"

TEST(Malloc, AlignedWritableAndReleased) {
    for (int len : {1, 3, 32, 33, 1000, 1 << 20}) {
        Kvt8u* p = kvtsMalloc_8u(len);
        ASSERT_NE(p, nullptr) << len;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 32, 0u) << len;
        std::memset(p, 0xAB, size_t(len));  // the whole length is ours (checked by ASan)
        kvtsFree(p);
    }
}

TEST(Malloc, RawAddressIsKeptJustBeforeTheBlock) {
    Kvt8u* p = kvtsMalloc_8u(100);
    ASSERT_NE(p, nullptr);
    uintptr_t raw = 0;
    std::memcpy(&raw, p - sizeof(void*), sizeof(void*));
    EXPECT_GE(reinterpret_cast<uintptr_t>(p) - raw, sizeof(void*));
    EXPECT_LE(reinterpret_cast<uintptr_t>(p) - raw + 100, 136u);  // within length + 36
    kvtsFree(p);
}

TEST(Malloc, NonPositiveLengthGivesNullAndFreeIgnoresNull) {
    EXPECT_EQ(kvtsMalloc_8u(0), nullptr);
    EXPECT_EQ(kvtsMalloc_8u(-1), nullptr);
    EXPECT_EQ(kvtsMalloc_8u(INT32_MIN), nullptr);
    kvtsFree(nullptr);
}

TEST(Version, RecordHoldsTheReleaseValues) {
    const KvtLibraryVersion* v = kvtvcGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v, kvtvcGetLibVersion());
    EXPECT_EQ(v->major, 4);
    EXPECT_EQ(v->minor, 1);
    EXPECT_EQ(v->majorBuild, 10);
    EXPECT_EQ(v->build, 38);
    EXPECT_EQ(std::memcmp(v->targetCpu, "w7\0\0", 4), 0);
    EXPECT_STREQ(v->name, "libkvtvcw7.so");
    EXPECT_STREQ(v->version, "v4.1");
    EXPECT_STREQ(v->buildDate, "Jul 23 2004");
}
