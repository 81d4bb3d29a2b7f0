// One-code VLC decoding through the word cursor: one lookup per table level, no search.
// Inline so that the block decoders reading run/level codes can use it in their loops.
#pragma once

#include <cstdint>

#include "bitstream/vlc_dsp.h"
#include "bitstream/word_cursor.h"

namespace kvt {

// Stores the code's field in *out and returns true, or stores 61681 and returns false when the
// code is missing. On a miss the cursor stays after the bits the lookups read.
inline bool vlc_decode_one(WordCursor& c, const int32_t* table, int32_t* out) {
    int32_t entry = table[1 + wc_read(c, table[0])];
    while ((entry & 0xFF) >= int32_t(kVlcPointerTag)) {
        const int32_t header = entry >> 8;
        entry = table[header + 1 + int32_t(wc_read(c, table[header]))];
    }
    const int32_t field = entry >> 8;
    *out = field;
    if (field == kVlcEmptyField) return false;
    wc_give_back(c, entry & 0xFF);
    return true;
}

}  // namespace kvt
