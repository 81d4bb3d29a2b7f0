// Aligned allocation and the version record.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "kvtvc.h"

namespace {

// The raw malloc address is kept in the slot just before the aligned block: a 32-bit word on
// 32-bit x86, a full pointer on 64-bit targets. The 36 spare bytes always hold the slot and the
// round-up to 32, because malloc returns at least 8-byte (32-bit) or 16-byte (64-bit) aligned
// memory.
constexpr size_t kAlign = 32;
constexpr size_t kSpare = 36;
constexpr size_t kSlot = sizeof(void*);

const KvtLibraryVersion kVersion = {4, 1, 10, 38, {'w', '7', 0, 0}, "libkvtvcw7.so", "v4.1", "Jul 23 2004"};

}  // namespace

Kvt8u* kvtsMalloc_8u(int len) {
    if (len < 1) return nullptr;
    void* raw = std::malloc(size_t(len) + kSpare);
    if (!raw) return nullptr;
    const uintptr_t aligned =
        (reinterpret_cast<uintptr_t>(raw) + kSlot + kAlign - 1) & ~uintptr_t(kAlign - 1);
    std::memcpy(reinterpret_cast<void*>(aligned - kSlot), &raw, kSlot);
    return reinterpret_cast<Kvt8u*>(aligned);
}

void kvtsFree(void* ptr) {
    if (!ptr) return;
    void* raw;
    std::memcpy(&raw, static_cast<Kvt8u*>(ptr) - kSlot, kSlot);
    std::free(raw);
}

const KvtLibraryVersion* kvtvcGetLibVersion(void) { return &kVersion; }
