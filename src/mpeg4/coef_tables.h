// Code tables of the MPEG-4 / H.263 coefficient decoders (generated into coef_tables.cpp by
// gen_tables.py from the standards' tables).
#pragma once

#include <cstdint>

#include "kvtvc.h"
#include "mpeg4/scan_tables.h"

// The tables are internal to the library: declared hidden, so position-independent code reaches them
// directly rather than through the global offset table.
#pragma GCC visibility push(hidden)

namespace kvt {

// One TCOEF table entry; level 255 marks the escape code. The sign bit follows the code and is
// not counted in `length`.
struct TcoefEntry {
    uint8_t last, run, level, length;
};
constexpr uint8_t kEscapeLevel = 255;

// A table is three parts indexed by the 12-bit look-ahead v: v >= 512 by (v - 512) / 32,
// 128 <= v < 512 by 112 + (v - 128) / 4, 8 <= v < 128 by 208 + v - 8; v < 8 is no code.
constexpr int kTcoefTableSize = 112 + 96 + 120;
inline const TcoefEntry* tcoef_lookup(const TcoefEntry* table, uint32_t v) {
    if (v >= 512) return &table[(v - 512) >> 5];
    if (v >= 128) return &table[112 + ((v - 128) >> 2)];
    return &table[208 + v - 8];
}

extern const TcoefEntry kTcoefIntra[kTcoefTableSize];     // ISO/IEC 14496-2 Table B-16
extern const TcoefEntry kTcoefInter[kTcoefTableSize];     // Table B-17, H.263 Table 16
extern const TcoefEntry kTcoefAdvIntra[kTcoefTableSize];  // H.263 Table I.2

// Scan numbers of the MPEG-4 decoders; the orders are in scan_tables.h.
enum Scan { kZigzag = 0, kAltVertical = 1, kAltHorizontal = 2 };

// dct_dc_size (ISO/IEC 14496-2 Tables B-13, B-14) by [chroma][leading zeros][bit after the 1];
// length 0: no code.
struct DcSizeEntry {
    uint8_t size, length;
};
extern const DcSizeEntry kDcSize[2][13][2];

}  // namespace kvt

#pragma GCC visibility pop
