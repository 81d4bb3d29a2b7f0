// Constant tables of the H.264 4x4 transform, its quantization and sample clamping
// (H.264 8.5.9 and 8.5.12, and the forward scaling of the JVT model encoder), defined once in
// tables.cpp; the test derives each one from the standard's definitions.
//
// Classes of the 4x4 positions: 0 = row and column both even, 1 = both odd, 2 = the others.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// Internal to the library: hidden, so that code reaches them directly, not through the GOT.
#pragma GCC visibility push(hidden)
namespace kvt::h264 {

// Dequantization factors v(QP % 6, class) << (QP / 6) for QP 0..51.
extern const int32_t InvQuantTable[52][3];
// Class of each raster position of a 4x4 block.
extern const int16_t QuantIndex[16];
// Intra 16x16 luma DC factors: v(QP % 6, 0) for QP < 12, v(QP % 6, 0) << (QP / 6 - 2) above.
extern const int32_t InvQuantLuma16x16DCTable[52];
// Forward multiplication factors by QP % 6 and class.
extern const int32_t FwdQuantTable[6][3];
// Raster weights of the SP/SI transform-domain reconstruction.
extern const int16_t MATR[16];
// Forward DC rounding offsets by [intra][QP / 6]: 2^(16 + q) / 6 (inter) and / 3 (intra).
extern const int32_t dc_rounds[2][9];
// FwdQuantTable spread over the 16 raster positions, by QP % 6.
extern const std::array<std::array<int16_t, 16>, 6> QuantCoef;
// InvQuantTable spread over the 16 raster positions, by QP (16-byte aligned: the vector kernels'
// layout).
extern const std::array<std::array<int16_t, 16>, 52> InvQuantCoef;
// QP / 6 and QP % 6 for QP 0..53.
extern const std::array<uint8_t, 54> dc_q;
extern const std::array<uint8_t, 54> dc_rems;
// Clamp to 0..255 of an index -256..511; index it with the value plus 256.
extern const std::array<uint8_t, 768> ClampTbl;

}  // namespace kvt::h264
#pragma GCC visibility pop
