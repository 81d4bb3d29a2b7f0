// H.263 macroblock header codes, read through the two-byte look-ahead of the byte cursor.
//
// MCBPC output: macroblock type in bits 0..2 (0 inter, 1 inter+Q, 2 inter4V, 3 intra,
// 4 intra+Q), chroma pattern in bits 4 (Cr coded) and 5 (Cb coded); 255 is stuffing.
#include "bitstream/byte_cursor.h"
#include "kvtvc.h"
#include "mpeg4/code_table.h"
#include "mpeg4/mb_header_kernels.h"

namespace kvt {
namespace {

constexpr int mcbpc(int type, int cbpc) { return type | cbpc << 4; }

// MCBPC for I-pictures (H.263 Table 7) whose first bit is 0, by the first 6 bits; "1" (intra,
// CBPC 00) and the 9-bit stuffing code are tested before the table.
constexpr CodeSpec kIntraCodes[] = {
    {"001", mcbpc(3, 1)},    {"010", mcbpc(3, 2)},    {"011", mcbpc(3, 3)},    {"0001", mcbpc(4, 0)},
    {"000001", mcbpc(4, 1)}, {"000010", mcbpc(4, 2)}, {"000011", mcbpc(4, 3)},
};
constexpr auto kIntra = build_code_table<32>(6, 0, kIntraCodes);

// MCBPC for P-pictures (H.263 Table 8, without the 11- and 13-bit INTER4V+Q codes) whose first
// bit is 0, by the first 9 bits; "1" (inter, CBPC 00) and stuffing are tested before the table.
constexpr CodeSpec kInterCodes[] = {
    {"0011", mcbpc(0, 1)},      {"0010", mcbpc(0, 2)},      {"000101", mcbpc(0, 3)},
    {"011", mcbpc(1, 0)},       {"0000111", mcbpc(1, 1)},   {"0000110", mcbpc(1, 2)},
    {"000000101", mcbpc(1, 3)}, {"010", mcbpc(2, 0)},       {"0000101", mcbpc(2, 1)},
    {"0000100", mcbpc(2, 2)},   {"00000101", mcbpc(2, 3)},  {"00011", mcbpc(3, 0)},
    {"00000100", mcbpc(3, 1)},  {"00000011", mcbpc(3, 2)},  {"0000011", mcbpc(3, 3)},
    {"000100", mcbpc(4, 0)},    {"000000100", mcbpc(4, 1)}, {"000000011", mcbpc(4, 2)},
    {"000000010", mcbpc(4, 3)},
};
constexpr auto kInter = build_code_table<256>(9, 0, kInterCodes);

// CBPY (H.263 Table 13) in its inter reading, bit 3 = first luminance block, by the first 6 bits
// when they are below 48; "11" (pattern 0) is tested before the table.
constexpr CodeSpec kCbpyCodes[] = {
    {"0011", 15}, {"00101", 14}, {"00100", 13}, {"1001", 12}, {"00011", 11}, {"0111", 10},
    {"000010", 9}, {"1011", 8}, {"00010", 7}, {"000011", 6}, {"0101", 5}, {"1010", 4},
    {"0100", 3}, {"1000", 2}, {"0110", 1},
};
constexpr auto kCbpy = build_code_table<48>(6, 0, kCbpyCodes);

constexpr int kStuffing = 255;

// H.263 Annex T DQUANT: change of QUANT for the codes 10 and 11, by the prior QUANT (row 0 unused).
constexpr int8_t kMqChange[32][2] = {
    {0, 0},   {2, 1},   {-1, 1},  {-1, 1},  {-1, 1},  {-1, 1},  {-1, 1},  {-1, 1},
    {-1, 1},  {-1, 1},  {-1, 1},  {-2, 2},  {-2, 2},  {-2, 2},  {-2, 2},  {-2, 2},
    {-2, 2},  {-2, 2},  {-2, 2},  {-2, 2},  {-2, 2},  {-3, 3},  {-3, 3},  {-3, 3},
    {-3, 3},  {-3, 3},  {-3, 3},  {-3, 3},  {-3, 3},  {-3, 2},  {-3, 1},  {-3, -5},
};

// Writes value, advances past a code of `length` bits and stores the cursor back.
inline void accept(ByteCursor c, int length, uint8_t** pp, int* pOffset, uint8_t* dst, int value) {
    *dst = uint8_t(value);
    c.skip(length);
    c.store(pp, pOffset);
}

}  // namespace

int decode_mcbpc_intra_h263_ref(uint8_t** pp, int* pOffset, uint8_t* dst) {
    const ByteCursor c{*pp, *pOffset};
    const uint32_t v = c.show16(9);
    if (v == 1) {
        accept(c, 9, pp, pOffset, dst, kStuffing);
    } else if (v < 8) {
        return kvtStsBadMcbpcIntra;
    } else if (v >= 256) {
        accept(c, 1, pp, pOffset, dst, mcbpc(3, 0));
    } else {
        const CodeEntry e = kIntra[v >> 3];
        accept(c, e.length, pp, pOffset, dst, e.value);
    }
    return kvtStsOk;
}

int decode_mcbpc_inter_h263_ref(uint8_t** pp, int* pOffset, uint8_t* dst) {
    const ByteCursor c{*pp, *pOffset};
    const uint32_t v = c.show16(9);
    if (v == 1) {
        accept(c, 9, pp, pOffset, dst, kStuffing);
    } else if (v == 0) {
        return kvtStsBadMcbpcInter;
    } else if (v >= 256) {
        accept(c, 1, pp, pOffset, dst, mcbpc(0, 0));
    } else {
        const CodeEntry e = kInter[v];
        accept(c, e.length, pp, pOffset, dst, e.value);
    }
    return kvtStsOk;
}

void decode_modb_h263_ref(uint8_t** pp, int* pOffset, uint8_t* dst) {
    const ByteCursor c{*pp, *pOffset};
    const uint32_t v = c.show16(2);
    if (v < 2) accept(c, 1, pp, pOffset, dst, 0);
    else accept(c, 2, pp, pOffset, dst, int(v));
}

int decode_cbpy_h263_ref(uint8_t** pp, int* pOffset, uint8_t* dst) {
    const ByteCursor c{*pp, *pOffset};
    const uint32_t v = c.show16(6);
    if (v < 2) return kvtStsBadCbpy;
    if (v >= 48) {
        accept(c, 2, pp, pOffset, dst, 0);
    } else {
        const CodeEntry e = kCbpy[v];
        accept(c, e.length, pp, pOffset, dst, e.value);
    }
    return kvtStsOk;
}

// A prior quantizer outside 1..31 is not the caller's to give; it picks row (quant mod 32) so
// that the read stays inside the table.
void update_quant_mq_h263_ref(uint8_t** pp, int* pOffset, uint32_t* quant) {
    ByteCursor c{*pp, *pOffset};
    const uint32_t v = c.show16(6);
    if (v & 32) {
        *quant += uint32_t(int32_t(kMqChange[*quant & 31][(v >> 4) & 1]));
        c.skip(2);
    } else {
        *quant = v & 31;
        c.skip(6);
    }
    c.store(pp, pOffset);
}

}  // namespace kvt
