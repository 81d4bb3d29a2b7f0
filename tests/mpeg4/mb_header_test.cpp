// H.263 macroblock header codes: every code of the shared tables at every bit offset, rejected
// codes, random macroblock-header sequences read back, and the argument checks.
#include <gtest/gtest.h>

#include <functional>
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
    int value;  // expected output, or a negative status
};

int mcbpc_value(const TsvRow& r) {
    if (r["mb_type"] == "STUFFING") return 255;
    const std::string cbpc = r["cbpc"];
    return r.num("mb_type") | (cbpc[0] - '0') << 5 | (cbpc[1] - '0') << 4;
}

std::vector<Code> mcbpc_codes(const char* file, int bad_status) {
    std::vector<Code> out;
    for (const TsvRow& r : read_table(file)) {
        // The INTER4V+Q codes (11 and 13 bits, nine leading zeros) are not decoded here.
        const bool supported = r["mb_type"] == "STUFFING" || r.num("mb_type") != 5;
        out.push_back({r["code"], supported ? mcbpc_value(r) : bad_status});
    }
    return out;
}

std::vector<Code> cbpy_codes() {
    std::vector<Code> out;
    for (const TsvRow& r : read_table("h263_cbpy.tsv")) out.push_back({r["code"], int(bits_value(r["cbpy_inter"]))});
    return out;
}

std::vector<Code> modb_codes() {
    std::vector<Code> out;
    for (const TsvRow& r : read_table("h263_modb.tsv"))
        out.push_back({r["code"], r.num("cbpb_present") | r.num("mvdb_present") << 1});
    return out;
}

// Decodes `code` placed after `off` random bits and followed by random bits; checks the output
// and the cursor (moved by the code's length, or not at all for a rejected code).
void expect_decodes(Decoder8u dec, const Code& c, int off, Rng& rng) {
    const std::string bits = random_bits(rng, off) + c.bits + random_bits(rng, 16);
    Stream s(bits, off, uint8_t(rng.next()));
    Kvt8u out = 0x5A;
    const KvtStatus st = dec(&s.p, &s.offset, &out);
    if (c.value < 0) {
        EXPECT_EQ(st, c.value) << c.bits << " at offset " << off;
        EXPECT_EQ(out, 0x5A);
        EXPECT_EQ(s.pos(), off);
    } else {
        EXPECT_EQ(st, kvtStsOk) << c.bits << " at offset " << off;
        EXPECT_EQ(out, c.value) << c.bits << " at offset " << off;
        EXPECT_EQ(s.pos(), off + long(c.bits.size())) << c.bits;
    }
}

struct TableCase {
    const char* name;
    Decoder8u dec;
    std::function<std::vector<Code>()> codes;
    std::vector<Code> invalid;  // prefixes no code begins with
};

std::vector<TableCase> table_cases() {
    return {
        {"MCBPCIntra", kvtiDecodeMCBPCIntra_H263, [] { return mcbpc_codes("h263_mcbpc_intra.tsv", -109); },
         {{"000000000", -109}, {"000000010", -109}, {"0000001", -109}, {"00000001", -109}}},
        {"MCBPCInter", kvtiDecodeMCBPCInter_H263, [] { return mcbpc_codes("h263_mcbpc_inter.tsv", -110); },
         {{"000000000", -110}, {"0000000000000", -110}}},
        {"CBPY", kvtiDecodeCBPY_H263, cbpy_codes, {{"000000", -111}, {"000001", -111}, {"00000", -111}}},
        {"MODB", kvtiDecodeMODB_H263, modb_codes, {}},
    };
}

}  // namespace

TEST(MbHeader, EveryCodeAtEveryOffset) {
    Rng rng(11);
    for (const TableCase& t : table_cases()) {
        SCOPED_TRACE(t.name);
        const std::vector<Code> codes = t.codes();
        ASSERT_FALSE(codes.empty());
        for (const Code& c : codes)
            for (int off = 0; off < 8; ++off)
                for (int rep = 0; rep < 4; ++rep) expect_decodes(t.dec, c, off, rng);
    }
}

// Prefixes that no code starts with are rejected whatever follows them, without moving.
TEST(MbHeader, InvalidCodesLeaveCursorAndOutput) {
    Rng rng(12);
    for (const TableCase& t : table_cases()) {
        SCOPED_TRACE(t.name);
        for (const Code& c : t.invalid) {
            for (int off = 0; off < 8; ++off) {
                for (int rep = 0; rep < 8; ++rep) {
                    // The prefix completed to the 9 bits the readers look at.
                    Code full{c.bits + (c.bits.size() < 9 ? random_bits(rng, int(9 - c.bits.size())) : ""), c.value};
                    expect_decodes(t.dec, full, off, rng);
                }
            }
        }
    }
}

TEST(MbHeader, DocumentedCases) {
    Rng rng(13);
    expect_decodes(kvtiDecodeMCBPCIntra_H263, {"000000001", 255}, 3, rng);
    // CBPY "11" at offset 7 crosses into the next byte and ends at offset 1.
    Stream s("0000000" "11", 7, 0);
    Kvt8u out = 9;
    ASSERT_EQ(kvtiDecodeCBPY_H263(&s.p, &s.offset, &out), kvtStsOk);
    EXPECT_EQ(out, 0);
    EXPECT_EQ(s.p, s.bytes.data() + 1);
    EXPECT_EQ(s.offset, 1);
}

TEST(MbHeader, ModifiedQuantizerUpdate) {
    Rng rng(14);
    for (const TsvRow& r : read_table("h263_annex_t_dquant.tsv")) {
        for (int second = 0; second < 2; ++second) {
            for (int off = 0; off < 8; ++off) {
                Stream s(random_bits(rng, off) + (second ? "11" : "10") + random_bits(rng, 8), off, 0xFF);
                Kvt32u q = Kvt32u(r.num("prior_quant"));
                ASSERT_EQ(kvtiUpdateQuant_MQ_H263_1u32s_I(&s.p, &s.offset, &q), kvtStsOk);
                EXPECT_EQ(q, Kvt32u(r.num(second ? "new_quant_11" : "new_quant_10"))) << r["prior_quant"];
                EXPECT_EQ(s.pos(), off + 2);
            }
        }
    }
    for (Kvt32u v = 0; v < 32; ++v) {  // "0" + five bits: the new quantizer as it stands
        for (int off = 0; off < 8; ++off) {
            Stream s(random_bits(rng, off) + "0" + to_bits(v, 5) + random_bits(rng, 8), off, 0xFF);
            Kvt32u q = 17;
            ASSERT_EQ(kvtiUpdateQuant_MQ_H263_1u32s_I(&s.p, &s.offset, &q), kvtStsOk);
            EXPECT_EQ(q, v);
            EXPECT_EQ(s.pos(), off + 6);
        }
    }
}

// Random P-picture macroblock headers (MCBPC, MODB, CBPY, DQUANT) written from the tables and
// read back in order: every field lands on the next one's first bit.
TEST(MbHeader, RandomHeaderSequencesRoundTrip) {
    const std::vector<Code> mcbpc = mcbpc_codes("h263_mcbpc_inter.tsv", -110);
    const std::vector<Code> cbpy = cbpy_codes();
    const std::vector<Code> modb = modb_codes();
    const std::vector<TsvRow> dq = read_table("h263_annex_t_dquant.tsv");
    Rng rng(15);
    for (int trial = 0; trial < 50; ++trial) {
        std::string bits = random_bits(rng, rng.uniform(0, 7));
        const int start = int(bits.size());
        struct Mb {
            int mcbpc, modb, cbpy, quant;
        };
        std::vector<Mb> mbs;
        const int first_quant = rng.uniform(1, 31);
        int quant = first_quant;
        for (int i = 0; i < 40; ++i) {
            const Code& m = mcbpc[size_t(rng.uniform(0, 20))];
            const Code& b = modb[size_t(rng.uniform(0, 2))];
            const Code& y = cbpy[size_t(rng.uniform(0, 15))];
            const int code = rng.uniform(2, 3);  // 10 or 11
            quant = (code == 2 ? dq[size_t(quant - 1)].num("new_quant_10") : dq[size_t(quant - 1)].num("new_quant_11"));
            bits += m.bits + b.bits + y.bits + to_bits(uint32_t(code), 2);
            mbs.push_back({m.value, b.value, y.value, quant});
        }
        Stream s(bits, start, uint8_t(rng.next()));
        Kvt32u q = Kvt32u(first_quant);
        for (size_t i = 0; i < mbs.size(); ++i) {
            Kvt8u v = 0;
            ASSERT_EQ(kvtiDecodeMCBPCInter_H263(&s.p, &s.offset, &v), kvtStsOk);
            ASSERT_EQ(v, mbs[i].mcbpc) << i;
            ASSERT_EQ(kvtiDecodeMODB_H263(&s.p, &s.offset, &v), kvtStsOk);
            ASSERT_EQ(v, mbs[i].modb) << i;
            ASSERT_EQ(kvtiDecodeCBPY_H263(&s.p, &s.offset, &v), kvtStsOk);
            ASSERT_EQ(v, mbs[i].cbpy) << i;
            ASSERT_EQ(kvtiUpdateQuant_MQ_H263_1u32s_I(&s.p, &s.offset, &q), kvtStsOk);
            ASSERT_EQ(q, Kvt32u(mbs[i].quant)) << i;
        }
        EXPECT_EQ(s.pos(), long(bits.size()));
    }
}

TEST(MbHeader, NullPointersChangeNothing) {
    for (const TableCase& t : table_cases()) {
        SCOPED_TRACE(t.name);
        Stream s("1", 3, 0);
        Kvt8u* const p0 = s.p;
        Kvt8u* null_stream = nullptr;
        Kvt8u out = 7;
        EXPECT_EQ(t.dec(nullptr, &s.offset, &out), kvtStsNullPointer);
        EXPECT_EQ(t.dec(&s.p, nullptr, &out), kvtStsNullPointer);
        EXPECT_EQ(t.dec(&null_stream, &s.offset, &out), kvtStsNullPointer);
        EXPECT_EQ(t.dec(&s.p, &s.offset, nullptr), kvtStsNullPointer);
        EXPECT_EQ(s.p, p0);
        EXPECT_EQ(s.offset, 3);
        EXPECT_EQ(out, 7);
    }
    Stream s("1", 3, 0);
    Kvt32u q = 5;
    EXPECT_EQ(kvtiUpdateQuant_MQ_H263_1u32s_I(&s.p, nullptr, &q), kvtStsNullPointer);
    EXPECT_EQ(kvtiUpdateQuant_MQ_H263_1u32s_I(&s.p, &s.offset, nullptr), kvtStsNullPointer);
    EXPECT_EQ(q, 5u);
    EXPECT_EQ(s.pos(), 3);
}
