// What the encoder keeps per macroblock: the decisions that later macroblocks predict from
// (MbInfo) and the coded values that the macroblock layer writes (MbCode).
#pragma once
#include <cstdint>
#include <cstdlib>

namespace enc264 {

enum class MbType : uint8_t { I4x4, I16x16, P16x16, P16x8, P8x16, P8x8, PSkip };

inline bool is_intra(MbType t) { return t == MbType::I4x4 || t == MbType::I16x16; }

// A luma motion vector in quarter samples.
struct Mv {
    int16_t x = 0, y = 0;
};
inline bool operator==(Mv a, Mv b) { return a.x == b.x && a.y == b.y; }
inline bool operator!=(Mv a, Mv b) { return !(a == b); }

// 4x4 blocks are addressed by raster index r = x + 4 * y inside the macroblock (x, y in 0..3);
// the standard's decoding order (luma4x4BlkIdx) visits them as kDecodeOrder lists.
constexpr int kDecodeOrder[16] = {0, 1, 4, 5, 2, 3, 6, 7, 8, 9, 12, 13, 10, 11, 14, 15};

struct MbInfo {
    MbType type = MbType::I16x16;
    int qp = 0;                     // QPY, as the decoder derives it
    int8_t i4_mode[16] = {};        // Intra4x4PredMode per raster block (I4x4 only)
    uint8_t nnz[16] = {};           // TotalCoeff of each coded luma 4x4 block (AC only for I16x16)
    uint8_t nnz_chroma[2][4] = {};  // TotalCoeff of the chroma AC blocks, Cb then Cr
    Mv mv[16];                      // per raster block (P macroblocks)
};

// Levels and syntax values of one coded macroblock.
struct MbCode {
    MbType type = MbType::I16x16;
    int i16_mode = 0, chroma_mode = 0;
    int qp = 0;                 // the QP the levels were quantized with
    int8_t i4_mode[16] = {};    // per raster block
    Mv mvd[4];                  // per partition (16x16: 1, 16x8/8x16: 2, 8x8: 4)
    int cbp_luma = 0;           // bit b: 8x8 block b has coefficients (I16x16: 0 or 15)
    int cbp_chroma = 0;         // 0 none, 1 DC only, 2 DC and AC
    int16_t luma[16][16] = {};  // levels per raster block, raster positions
    int16_t luma_dc[16] = {};   // I16x16 DC levels, raster block positions
    int16_t chroma_dc[2][4] = {};
    int16_t chroma_ac[2][4][16] = {};
};

inline int partitions(MbType t) {
    return t == MbType::P8x8 ? 4 : (t == MbType::P16x8 || t == MbType::P8x16) ? 2 : 1;
}

}  // namespace enc264
