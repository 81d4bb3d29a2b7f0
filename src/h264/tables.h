// Constant tables of the H.264 4x4 transform, its quantization and sample clamping
// (H.264 8.5.9 and 8.5.12, and the forward scaling of the JVT model encoder). They are constexpr
// so that kernels can fold them; the test derives each one from the standard's definitions.
//
// Classes of the 4x4 positions: 0 = row and column both even, 1 = both odd, 2 = the others.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kvt::h264 {

namespace detail {
template <typename T, size_t N, typename F>
constexpr std::array<T, N> build(F f) {
    std::array<T, N> a{};
    for (size_t i = 0; i < N; ++i) a[i] = T(f(int(i)));
    return a;
}
}  // namespace detail

// clang-format off
// Dequantization factors v(QP % 6, class) << (QP / 6) for QP 0..51.
inline constexpr int32_t InvQuantTable[52][3] = {
    {10, 16, 13}, {11, 18, 14}, {13, 20, 16}, {14, 23, 18}, {16, 25, 20}, {18, 29, 23},
    {20, 32, 26}, {22, 36, 28}, {26, 40, 32}, {28, 46, 36}, {32, 50, 40}, {36, 58, 46},
    {40, 64, 52}, {44, 72, 56}, {52, 80, 64}, {56, 92, 72}, {64, 100, 80}, {72, 116, 92},
    {80, 128, 104}, {88, 144, 112}, {104, 160, 128}, {112, 184, 144}, {128, 200, 160}, {144, 232, 184},
    {160, 256, 208}, {176, 288, 224}, {208, 320, 256}, {224, 368, 288}, {256, 400, 320}, {288, 464, 368},
    {320, 512, 416}, {352, 576, 448}, {416, 640, 512}, {448, 736, 576}, {512, 800, 640}, {576, 928, 736},
    {640, 1024, 832}, {704, 1152, 896}, {832, 1280, 1024}, {896, 1472, 1152}, {1024, 1600, 1280},
    {1152, 1856, 1472}, {1280, 2048, 1664}, {1408, 2304, 1792}, {1664, 2560, 2048}, {1792, 2944, 2304},
    {2048, 3200, 2560}, {2304, 3712, 2944}, {2560, 4096, 3328}, {2816, 4608, 3584}, {3328, 5120, 4096},
    {3584, 5888, 4608}};

// Class of each raster position of a 4x4 block.
inline constexpr int16_t QuantIndex[16] = {0, 2, 0, 2, 2, 1, 2, 1, 0, 2, 0, 2, 2, 1, 2, 1};

// Intra 16x16 luma DC factors: v(QP % 6, 0) for QP < 12, v(QP % 6, 0) << (QP / 6 - 2) above.
inline constexpr int32_t InvQuantLuma16x16DCTable[52] = {
    10, 11, 13, 14, 16, 18, 10, 11, 13, 14, 16, 18, 10, 11, 13, 14, 16, 18,
    20, 22, 26, 28, 32, 36, 40, 44, 52, 56, 64, 72, 80, 88, 104, 112, 128, 144,
    160, 176, 208, 224, 256, 288, 320, 352, 416, 448, 512, 576, 640, 704, 832, 896};

// Forward multiplication factors by QP % 6 and class.
inline constexpr int32_t FwdQuantTable[6][3] = {
    {13107, 5243, 8066}, {11916, 4660, 7490}, {10082, 4194, 6554},
    {9362, 3647, 5825}, {8192, 3355, 5243}, {7282, 2893, 4559}};

// Raster weights of the SP/SI transform-domain reconstruction.
inline constexpr int16_t MATR[16] = {16, 20, 16, 20, 20, 25, 20, 25, 16, 20, 16, 20, 20, 25, 20, 25};

// Forward DC rounding offsets by [intra][QP / 6]: 2^(16 + q) / 6 (inter) and / 3 (intra).
inline constexpr int32_t dc_rounds[2][9] = {
    {10922, 21845, 43690, 87381, 174762, 349525, 699050, 1398101, 2796202},
    {21845, 43690, 87381, 174762, 349525, 699050, 1398101, 2796202, 5592405}};
// clang-format on

// FwdQuantTable spread over the 16 raster positions, by QP % 6.
inline constexpr auto QuantCoef = detail::build<std::array<int16_t, 16>, 6>(
    [](int r) { return detail::build<int16_t, 16>([r](int i) { return FwdQuantTable[r][QuantIndex[i]]; }); });

// InvQuantTable spread over the 16 raster positions, by QP (the vector kernels' layout).
alignas(16) inline constexpr auto InvQuantCoef = detail::build<std::array<int16_t, 16>, 52>([](int qp) {
    return detail::build<int16_t, 16>([qp](int i) { return InvQuantTable[qp][QuantIndex[i]]; });
});

// QP / 6 and QP % 6 for QP 0..53.
inline constexpr auto dc_q = detail::build<uint8_t, 54>([](int qp) { return qp / 6; });
inline constexpr auto dc_rems = detail::build<uint8_t, 54>([](int qp) { return qp % 6; });

// Clamp to 0..255 of an index -256..511; index it with the value plus 256.
inline constexpr auto ClampTbl = detail::build<uint8_t, 768>([](int i) {
    return i < 256 ? 0 : i > 511 ? 255 : i - 256;
});

}  // namespace kvt::h264
