// The two exported bit-mask tables: entry i is 2^i - 1 (i = 0..32). Decoders cut an n-bit field
// out of a wider look-ahead word with entry n, or keep the low bits of a byte with entry 8 - offset.
// Both names are public and hold the same values.
#include "kvtvc.h"

#define KVT_MASKS_8(b)                                                                        \
    (1u << (b)) - 1u, (1u << ((b) + 1)) - 1u, (1u << ((b) + 2)) - 1u, (1u << ((b) + 3)) - 1u, \
        (1u << ((b) + 4)) - 1u, (1u << ((b) + 5)) - 1u, (1u << ((b) + 6)) - 1u, (1u << ((b) + 7)) - 1u

extern "C" {
const Kvt32u _kvtGetBitsMask[33] = {KVT_MASKS_8(0), KVT_MASKS_8(8), KVT_MASKS_8(16), KVT_MASKS_8(24),
                                    0xFFFFFFFFu};
const Kvt32u ownvBitMask[33] = {KVT_MASKS_8(0), KVT_MASKS_8(8), KVT_MASKS_8(16), KVT_MASKS_8(24),
                                0xFFFFFFFFu};
}
