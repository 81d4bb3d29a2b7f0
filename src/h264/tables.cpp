// The definitions are constexpr so that the derived tables are built at compile time from the
// literal ones (the header's extern declarations give them external linkage).
#include "h264/tables.h"

namespace kvt::h264 {

namespace {
template <typename T, size_t N, typename F>
constexpr std::array<T, N> build(F f) {
    std::array<T, N> a{};
    for (size_t i = 0; i < N; ++i) a[i] = T(f(int(i)));
    return a;
}
}  // namespace

// clang-format off
constexpr int32_t InvQuantTable[52][3] = {
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

constexpr int16_t QuantIndex[16] = {0, 2, 0, 2, 2, 1, 2, 1, 0, 2, 0, 2, 2, 1, 2, 1};

constexpr int32_t InvQuantLuma16x16DCTable[52] = {
    10, 11, 13, 14, 16, 18, 10, 11, 13, 14, 16, 18, 10, 11, 13, 14, 16, 18,
    20, 22, 26, 28, 32, 36, 40, 44, 52, 56, 64, 72, 80, 88, 104, 112, 128, 144,
    160, 176, 208, 224, 256, 288, 320, 352, 416, 448, 512, 576, 640, 704, 832, 896};

constexpr int32_t FwdQuantTable[6][3] = {
    {13107, 5243, 8066}, {11916, 4660, 7490}, {10082, 4194, 6554},
    {9362, 3647, 5825}, {8192, 3355, 5243}, {7282, 2893, 4559}};

constexpr int16_t MATR[16] = {16, 20, 16, 20, 20, 25, 20, 25, 16, 20, 16, 20, 20, 25, 20, 25};

constexpr int32_t dc_rounds[2][9] = {
    {10922, 21845, 43690, 87381, 174762, 349525, 699050, 1398101, 2796202},
    {21845, 43690, 87381, 174762, 349525, 699050, 1398101, 2796202, 5592405}};
// clang-format on

constexpr std::array<std::array<int16_t, 16>, 6> QuantCoef = build<std::array<int16_t, 16>, 6>(
    [](int r) { return build<int16_t, 16>([r](int i) { return FwdQuantTable[r][QuantIndex[i]]; }); });

alignas(16) constexpr std::array<std::array<int16_t, 16>, 52> InvQuantCoef =
    build<std::array<int16_t, 16>, 52>([](int qp) {
        return build<int16_t, 16>([qp](int i) { return InvQuantTable[qp][QuantIndex[i]]; });
    });

constexpr std::array<uint8_t, 54> dc_q = build<uint8_t, 54>([](int qp) { return qp / 6; });
constexpr std::array<uint8_t, 54> dc_rems = build<uint8_t, 54>([](int qp) { return qp % 6; });

constexpr std::array<uint8_t, 768> ClampTbl = build<uint8_t, 768>([](int i) {
    return i < 256 ? 0 : i > 511 ? 255 : i - 256;
});

}  // namespace kvt::h264
