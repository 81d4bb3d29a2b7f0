// The motion-vector difference code shared by the MPEG-4 decoders (ISO/IEC 14496-2 Table B-12)
// and the H.263 ones (H.263 Table 14 uses the same code words): a magnitude code, then a sign
// bit (1 negative) unless the magnitude is 0, then r_size residual bits (MPEG-4, fcode > 1).
#pragma once

#include "bitstream/byte_cursor.h"
#include "mpeg4/code_table.h"

namespace kvt {

inline constexpr CodeSpec kMvdCodes[] = {
    {"1", 0},
    {"01", 1},
    {"001", 2},
    {"0001", 3},
    {"000011", 4},
    {"0000101", 5},
    {"0000100", 6},
    {"0000011", 7},
    {"000001011", 8},
    {"000001010", 9},
    {"000001001", 10},
    {"0000010001", 11},
    {"0000010000", 12},
    {"0000001111", 13},
    {"0000001110", 14},
    {"0000001101", 15},
    {"0000001100", 16},
    {"0000001011", 17},
    {"0000001010", 18},
    {"0000001001", 19},
    {"0000001000", 20},
    {"0000000111", 21},
    {"0000000110", 22},
    {"0000000101", 23},
    {"0000000100", 24},
    {"00000000111", 25},
    {"00000000110", 26},
    {"00000000101", 27},
    {"00000000100", 28},
    {"00000000011", 29},
    {"00000000010", 30},
    {"000000000011", 31},
    {"000000000010", 32},
};

// A 12-bit look-ahead v of 128 and more (a 1 among the first five bits) is looked up by its top
// 7 bits less 4; a smaller v by itself. v below 2 (eleven zeros) is no code.
inline constexpr auto kMvdShort = build_code_table<124>(7, 4, kMvdCodes);
inline constexpr auto kMvdLong = build_code_table<128>(12, 0, kMvdCodes);

static_assert(covers(kMvdShort, 0) && covers(kMvdLong, 2), "every look-ahead from 2 up is a code");

// Reads one difference component; false (cursor unchanged) when the code is invalid. One
// look-ahead covers the longest component: a 12-bit code, the sign and 6 residual bits.
inline bool read_mvd_component(ByteCursor& c, int rsize, int* diff) {
    const uint32_t w = c.show(19);
    const uint32_t v = w >> 7;
    if (v < 2) return false;
    const CodeEntry e = v >= 128 ? kMvdShort[(v >> 5) - 4] : kMvdLong[v];
    // A zero magnitude has no sign and no residual; the masks keep this free of branches, which
    // random-looking data would mispredict half the time.
    const int nonzero = -int(e.value != 0);
    const int sign_at = 18 - e.length;  // bit of w holding the sign
    const int negative = int((w >> sign_at) & 1) & nonzero;
    const int r = int((w >> (sign_at - rsize)) & low_mask(rsize));
    // ((code - 1) << r_size) + r + 1, in unsigned arithmetic: the code 0 is masked off after.
    int mag = int(((uint32_t(e.value) - 1u) << rsize) + uint32_t(r) + 1u) & nonzero;
    mag = (mag ^ -negative) + negative;
    const int len = e.length + ((1 + rsize) & nonzero);
    c.skip(len);
    *diff = mag;
    return true;
}

// predictor + difference in 16-bit arithmetic, brought back into [-16 << fcode, (16 << fcode) - 1].
inline int16_t add_wrap_mv(int predictor, int diff, int fcode) {
    int s = int16_t(predictor + diff);
    const int high = (16 << fcode) - 1;
    if (s < -high - 1)
        s += 32 << fcode;
    else if (s > high)
        s -= 32 << fcode;
    return int16_t(s);
}

}  // namespace kvt
