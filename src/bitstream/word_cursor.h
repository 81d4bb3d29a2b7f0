// The word bit cursor of the MPEG-1/MPEG-2 paths and the VLC tables.
//
// The stream is an array of 32-bit words in the machine's own order; within a word the most
// significant bit comes first. The cursor is the current word and the offset of the next unread
// bit in it, 31 (most significant) down to 0. Reading past bit 0 moves to the next word; giving
// bits back past bit 31 moves to the previous one. A read touches the following word only when
// it needs bits from it, so a reader that starts inside the stream looks at most one word ahead
// for every 32 bits it asks for.
#pragma once

#include <cstdint>

#include "common/bits.h"

namespace kvt {

struct WordCursor {
    const uint32_t* word;
    int offset;  // 31..0 between calls
};

// The next n bits (0..32) as an unsigned number, first bit most significant; the cursor stays.
inline uint32_t wc_show(const WordCursor& c, int n) {
    const int left = c.offset + 1;  // unread bits of the current word
    const uint64_t head = c.word[0] & low_mask(left);
    if (n <= left) return uint32_t(head >> (left - n));
    const int more = n - left;  // 1..32 bits from the next word
    return uint32_t((head << more) | (uint64_t(c.word[1]) >> (32 - more)));
}

// Moves the cursor n bits (0..32) forward.
inline void wc_skip(WordCursor& c, int n) {
    c.offset -= n;
    if (c.offset < 0) {
        c.offset += 32;
        ++c.word;
    }
}

inline uint32_t wc_read(WordCursor& c, int n) {
    const uint32_t v = wc_show(c, n);
    wc_skip(c, n);
    return v;
}

// Moves the cursor n bits (0..32) back; surplus bits of a table lookup are returned this way.
inline void wc_give_back(WordCursor& c, int n) {
    c.offset += n;
    if (c.offset >= 32) {
        c.offset -= 32;
        --c.word;
    }
}

}  // namespace kvt
