// H.264 code and constant tables (generated into tables.cpp by gen_tables.py).
#pragma once
#include <cstdint>

namespace enc264 {

struct Vlc {
    uint16_t code;
    uint8_t len;  // 0: no such code
};

extern const Vlc kCoeffToken[5][17][4];      // nC class (0-2, 2-4, 4-8, 8+, chroma DC), TotalCoeff, T1s
extern const Vlc kTotalZeros[16][16];        // 4x4 blocks: TotalCoeff, total_zeros
extern const Vlc kTotalZerosChromaDc[4][4];  // 4:2:0 chroma DC: TotalCoeff, total_zeros
extern const Vlc kRunBefore[8][15];          // min(zerosLeft, 7), run_before
extern const uint8_t kAlpha[52], kBeta[52];  // deblocking thresholds by indexA, indexB
extern const uint8_t kTc0[52][3];            // by indexA and bS - 1
extern const uint8_t kChromaQp[52];          // QPc by qPI
extern const uint8_t kZigzag4x4[16];         // raster position of each scan index

}  // namespace enc264
