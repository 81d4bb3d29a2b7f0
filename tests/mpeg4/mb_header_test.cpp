// H.263 macroblock header codes: every code of the shared tables and every rejected prefix at
// every bit offset, random header sequences read back, and the argument checks.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "bit_string.h"
#include "checkasm.h"
#include "kvtvc.h"
#include "tsv.h"

using namespace kvt::test;

namespace {

using Decoder8u = KvtStatus (*)(Kvt8u**, int*, Kvt8u*);

struct Code {
    std::string bits;
    int value;  // expected output, or the status of a rejected code
};

// Type in bits 0..2, Cb coded in bit 5, Cr in bit 4; the INTER4V+Q codes (nine leading zeros)
// are not decoded by these readers.
std::vector<Code> mcbpc_codes(const char* file, int bad) {
    std::vector<Code> out;
    for (const TsvRow& r : read_table(file)) {
        const std::string t = r["mb_type"], cbpc = r["cbpc"];
        out.push_back({r["code"], t == "STUFFING" ? 255
                                  : t == "5"      ? bad
                                                  : std::stoi(t) | (cbpc[0] - '0') << 5 | (cbpc[1] - '0') << 4});
    }
    return out;
}

struct TableCase {
    const char* name;
    Decoder8u dec;
    std::vector<Code> codes;
};

std::vector<TableCase> table_cases() {
    std::vector<Code> cbpy{{"000000", -111}, {"000001", -111}}, modb;
    for (const TsvRow& r : read_table("h263_cbpy.tsv")) cbpy.push_back({r["code"], int(bits_value(r["cbpy_inter"]))});
    for (const TsvRow& r : read_table("h263_modb.tsv"))
        modb.push_back({r["code"], r.num("cbpb_present") | r.num("mvdb_present") << 1});
    std::vector<Code> intra = mcbpc_codes("h263_mcbpc_intra.tsv", -109), inter = mcbpc_codes("h263_mcbpc_inter.tsv", -110);
    // Nine-bit look-aheads below 8 start no intra code (but stuffing); nine zeros no inter code.
    for (uint32_t v : {0u, 2u, 3u, 4u, 7u}) intra.push_back({to_bits(v, 9), -109});
    inter.push_back({"000000000", -110});
    return {{"MCBPCIntra", kvtiDecodeMCBPCIntra_H263, intra},
            {"MCBPCInter", kvtiDecodeMCBPCInter_H263, inter},
            {"CBPY", kvtiDecodeCBPY_H263, cbpy},
            {"MODB", kvtiDecodeMODB_H263, modb}};
}

}  // namespace

// The code after `off` random bits and before random bits: the output, and a cursor moved by the
// code's length, or not at all (output untouched) for a rejected code.
TEST(MbHeader, EveryCodeAtEveryOffset) {
    Rng rng(11);
    for (const TableCase& t : table_cases()) {
        for (const Code& c : t.codes) {
            for (int off = 0; off < 8; ++off) {
                for (int rep = 0; rep < 4; ++rep) {
                    Stream s(random_bits(rng, off) + c.bits + random_bits(rng, 16), off, uint8_t(rng.next()));
                    Kvt8u out = 0x5A;
                    const KvtStatus st = t.dec(&s.p, &s.offset, &out);
                    SCOPED_TRACE(testing::Message() << t.name << " " << c.bits << " at offset " << off);
                    EXPECT_EQ(st, c.value < 0 ? c.value : kvtStsOk);
                    EXPECT_EQ(out, c.value < 0 ? 0x5A : c.value);
                    EXPECT_EQ(s.pos(), off + (c.value < 0 ? 0 : long(c.bits.size())));
                }
            }
        }
    }
}

TEST(MbHeader, ModifiedQuantizerUpdate) {
    Rng rng(14);
    for (const TsvRow& r : read_table("h263_annex_t_dquant.tsv")) {
        for (int second = 0; second < 2; ++second) {
            const int off = rng.uniform(0, 7);
            Stream s(random_bits(rng, off) + (second ? "11" : "10") + random_bits(rng, 8), off, 0xFF);
            Kvt32u q = Kvt32u(r.num("prior_quant"));
            ASSERT_EQ(kvtiUpdateQuant_MQ_H263_1u32s_I(&s.p, &s.offset, &q), kvtStsOk);
            EXPECT_EQ(q, Kvt32u(r.num(second ? "new_quant_11" : "new_quant_10"))) << r["prior_quant"];
            EXPECT_EQ(s.pos(), off + 2);
        }
    }
    for (Kvt32u v = 0; v < 32; ++v) {  // "0" and five bits: the new quantizer as it stands
        const int off = int(v % 8);
        Stream s(random_bits(rng, off) + "0" + to_bits(v, 5) + random_bits(rng, 8), off, 0xFF);
        Kvt32u q = 17;
        ASSERT_EQ(kvtiUpdateQuant_MQ_H263_1u32s_I(&s.p, &s.offset, &q), kvtStsOk);
        EXPECT_EQ(q, v);
        EXPECT_EQ(s.pos(), off + 6);
    }
}

// Random P-picture macroblock headers (MCBPC, MODB, CBPY, DQUANT) written from the tables and
// read back in order: every field must end on the next one's first bit.
TEST(MbHeader, RandomHeaderSequencesRoundTrip) {
    const std::vector<TableCase> t = table_cases();
    const std::vector<Code>&mcbpc = t[1].codes, &cbpy = t[2].codes, &modb = t[3].codes;
    const std::vector<TsvRow> dq = read_table("h263_annex_t_dquant.tsv");
    Rng rng(15);
    for (int trial = 0; trial < 50; ++trial) {
        const int start = rng.uniform(0, 7), first_quant = rng.uniform(1, 31);
        std::string bits = random_bits(rng, start);
        std::vector<int> want;  // mcbpc, modb, cbpy, quant per macroblock
        for (int i = 0, quant = first_quant; i < 40; ++i) {
            const Code &m = mcbpc[size_t(rng.uniform(0, 20))], &b = modb[size_t(rng.uniform(0, 2))],
                       &y = cbpy[size_t(rng.uniform(2, 17))];
            const bool up = rng.coin();
            quant = dq[size_t(quant - 1)].num(up ? "new_quant_11" : "new_quant_10");
            bits += m.bits + b.bits + y.bits + (up ? "11" : "10");
            want.insert(want.end(), {m.value, b.value, y.value, quant});
        }
        Stream s(bits, start, uint8_t(rng.next()));
        Kvt32u q = Kvt32u(first_quant);
        for (size_t i = 0; i < want.size(); i += 4) {
            Kvt8u v[3];
            ASSERT_EQ(kvtiDecodeMCBPCInter_H263(&s.p, &s.offset, &v[0]), kvtStsOk);
            ASSERT_EQ(kvtiDecodeMODB_H263(&s.p, &s.offset, &v[1]), kvtStsOk);
            ASSERT_EQ(kvtiDecodeCBPY_H263(&s.p, &s.offset, &v[2]), kvtStsOk);
            ASSERT_EQ(kvtiUpdateQuant_MQ_H263_1u32s_I(&s.p, &s.offset, &q), kvtStsOk);
            ASSERT_EQ(std::vector<int>({v[0], v[1], v[2], int(q)}), std::vector<int>(want.begin() + long(i), want.begin() + long(i) + 4));
        }
        EXPECT_EQ(s.pos(), long(bits.size()));
    }
}

TEST(MbHeader, NullPointersChangeNothing) {
    Stream s("1", 3, 0);
    Kvt8u* const p0 = s.p;
    Kvt8u* null_stream = nullptr;
    Kvt8u out = 7;
    Kvt32u q = 5;
    for (const TableCase& t : table_cases()) {
        EXPECT_EQ(t.dec(nullptr, &s.offset, &out), kvtStsNullPointer);
        EXPECT_EQ(t.dec(&s.p, nullptr, &out), kvtStsNullPointer);
        EXPECT_EQ(t.dec(&null_stream, &s.offset, &out), kvtStsNullPointer);
        EXPECT_EQ(t.dec(&s.p, &s.offset, nullptr), kvtStsNullPointer);
    }
    EXPECT_EQ(kvtiUpdateQuant_MQ_H263_1u32s_I(&null_stream, &s.offset, &q), kvtStsNullPointer);
    EXPECT_EQ(kvtiUpdateQuant_MQ_H263_1u32s_I(&s.p, &s.offset, nullptr), kvtStsNullPointer);
    EXPECT_EQ(s.p, p0);
    EXPECT_EQ(s.offset, 3);
    EXPECT_EQ(out, 7);
    EXPECT_EQ(q, 5u);
}
