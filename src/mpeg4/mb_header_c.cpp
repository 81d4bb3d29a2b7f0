// H.263 macroblock header codes, read through the two-byte look-ahead of the byte cursor.
//
// MCBPC output: macroblock type in bits 0..2 (0 inter, 1 inter+Q, 2 inter4V, 3 intra,
// 4 intra+Q), chroma pattern in bits 4 (Cr coded) and 5 (Cb coded); 255 is stuffing.
#include "bitstream/byte_cursor.h"
#include "common/kernel.h"
#include "kvtvc.h"
#include "mpeg4/code_table.h"
#include "mpeg4/mb_header_dsp.h"

namespace kvt::KVT_C_NS {
namespace {

constexpr int mcbpc(int type, int cbpc) { return type | cbpc << 4; }

constexpr int kStuffing = 255;

// The tables are indexed by all the bits the readers look at, so that the one-bit codes and
// stuffing need no test of their own; an entry of length 0 is no code.

// MCBPC for I-pictures (H.263 Table 7), by the first 9 bits.
constexpr CodeSpec kIntraCodes[] = {
    {"1", mcbpc(3, 0)},      {"001", mcbpc(3, 1)},    {"010", mcbpc(3, 2)},
    {"011", mcbpc(3, 3)},    {"0001", mcbpc(4, 0)},   {"000001", mcbpc(4, 1)},
    {"000010", mcbpc(4, 2)}, {"000011", mcbpc(4, 3)}, {"000000001", kStuffing},
};
constexpr auto kIntra = build_code_table<512>(9, 0, kIntraCodes);

// MCBPC for P-pictures (H.263 Table 8) by the first 9 bits, without the 11- and 13-bit INTER4V+Q
// codes: they begin with nine zeros, which is no code here.
constexpr CodeSpec kInterCodes[] = {
    {"1", mcbpc(0, 0)},         {"0011", mcbpc(0, 1)},      {"0010", mcbpc(0, 2)},
    {"000101", mcbpc(0, 3)},    {"011", mcbpc(1, 0)},       {"0000111", mcbpc(1, 1)},
    {"0000110", mcbpc(1, 2)},   {"000000101", mcbpc(1, 3)}, {"010", mcbpc(2, 0)},
    {"0000101", mcbpc(2, 1)},   {"0000100", mcbpc(2, 2)},   {"00000101", mcbpc(2, 3)},
    {"00011", mcbpc(3, 0)},     {"00000100", mcbpc(3, 1)},  {"00000011", mcbpc(3, 2)},
    {"0000011", mcbpc(3, 3)},   {"000100", mcbpc(4, 0)},    {"000000100", mcbpc(4, 1)},
    {"000000011", mcbpc(4, 2)}, {"000000010", mcbpc(4, 3)}, {"000000001", kStuffing},
};
constexpr auto kInter = build_code_table<512>(9, 0, kInterCodes);

// CBPY (H.263 Table 13) in its inter reading, bit 3 = first luminance block, by the first 6 bits.
constexpr CodeSpec kCbpyCodes[] = {
    {"0011", 15},  {"00101", 14}, {"00100", 13}, {"1001", 12},  {"00011", 11}, {"0111", 10},
    {"000010", 9}, {"1011", 8},   {"00010", 7},  {"000011", 6}, {"0101", 5},   {"1010", 4},
    {"0100", 3},   {"1000", 2},   {"0110", 1},   {"11", 0},
};
constexpr auto kCbpy = build_code_table<64>(6, 0, kCbpyCodes);

// Only the look-aheads the decoders reject are holes: intra below 8 but stuffing, inter 0, CBPY
// below 2.
static_assert(covers(kIntra, 8) && kIntra[1].length == 9 && kIntra[7].length == 0 && kIntra[0].length == 0);
static_assert(covers(kInter, 1) && kInter[0].length == 0);
static_assert(covers(kCbpy, 2) && kCbpy[1].length == 0 && kCbpy[0].length == 0);

// H.263 Annex T DQUANT: change of QUANT for the codes 10 and 11, by the prior QUANT (row 0 unused).
constexpr int8_t kMqChange[32][2] = {
    {0, 0},  {2, 1},  {-1, 1}, {-1, 1}, {-1, 1}, {-1, 1}, {-1, 1}, {-1, 1}, {-1, 1}, {-1, 1},  {-1, 1},
    {-2, 2}, {-2, 2}, {-2, 2}, {-2, 2}, {-2, 2}, {-2, 2}, {-2, 2}, {-2, 2}, {-2, 2}, {-2, 2},  {-3, 3},
    {-3, 3}, {-3, 3}, {-3, 3}, {-3, 3}, {-3, 3}, {-3, 3}, {-3, 3}, {-3, 2}, {-3, 1}, {-3, -5},
};

// Writes value, advances past a code of `length` bits and stores the cursor back.
inline void accept(ByteCursor c, int length, uint8_t** pp, int* pOffset, uint8_t* dst, int value) {
    *dst = uint8_t(value);
    c.skip(length);
    c.store(pp, pOffset);
}

// One table lookup; a rejected code leaves everything as it was.
inline KvtStatus decode_by_table(const CodeEntry* table, uint32_t bits, KvtStatus status_if_bad, uint8_t** pp,
                                 int* pOffset, uint8_t* dst) {
    const ByteCursor c{*pp, *pOffset};
    const CodeEntry e = table[c.show16(bits)];
    if (e.length == 0) return status_if_bad;
    accept(c, e.length, pp, pOffset, dst, e.value);
    return kvtStsOk;
}

KvtStatus mcbpc_intra(uint8_t** pp, int* pOffset, uint8_t* dst) {
    return decode_by_table(kIntra.data(), 9, kvtStsBadMcbpcIntra, pp, pOffset, dst);
}

KvtStatus mcbpc_inter(uint8_t** pp, int* pOffset, uint8_t* dst) {
    return decode_by_table(kInter.data(), 9, kvtStsBadMcbpcInter, pp, pOffset, dst);
}

// 0 (one bit), 10 or 11 (two bits, taken as they stand).
KvtStatus modb(uint8_t** pp, int* pOffset, uint8_t* dst) {
    const ByteCursor c{*pp, *pOffset};
    const uint32_t v = c.show16(2);
    const uint32_t two = v >> 1;
    accept(c, int(1 + two), pp, pOffset, dst, int(v & (0u - two)));
    return kvtStsOk;
}

KvtStatus cbpy(uint8_t** pp, int* pOffset, uint8_t* dst) {
    return decode_by_table(kCbpy.data(), 6, kvtStsBadCbpy, pp, pOffset, dst);
}

// A prior quantizer outside 1..31 is not the caller's to give; it picks row (quant mod 32) so
// that the read stays inside the table.
KvtStatus update_quant_mq(uint8_t** pp, int* pOffset, uint32_t* quant) {
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
    return kvtStsOk;
}

}  // namespace

void init_mb_header(MbHeaderDsp& d) {
    d.mcbpc_intra = mcbpc_intra;
    d.mcbpc_inter = mcbpc_inter;
    d.modb = modb;
    d.cbpy = cbpy;
    d.update_quant_mq = update_quant_mq;
}

}  // namespace kvt::KVT_C_NS
