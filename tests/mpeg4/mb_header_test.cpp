// H.263 macroblock headers: every code of the shared tables and every rejected prefix at every bit
// offset, and random header sequences written from the tables and read back.
#include <algorithm>

#include "bit_string.h"
#include "tsv.h"

using namespace kvt::test;

namespace {

using Decoder8u = KvtStatus (*)(Kvt8u**, int*, Kvt8u*);

struct Code {
    std::string bits;
    int value;  // expected output, or the status of a rejected code
};

// MCBPC intra, MCBPC inter, CBPY, MODB, each with the prefixes that start no code. MCBPC: type in
// bits 0..2, Cb coded in bit 5, Cr in bit 4; the INTER4V+Q codes (type 5) are rejected.
std::vector<std::pair<Decoder8u, std::vector<Code>>> header_tables() {
    std::vector<Code> mcbpc[2], cbpy{{"000000", -111}, {"000001", -111}}, modb;
    const char* files[2] = {"h263_mcbpc_intra.tsv", "h263_mcbpc_inter.tsv"};
    for (int i = 0; i < 2; ++i) {
        for (const TsvRow& r : read_table(files[i])) {
            const std::string t = r["mb_type"], c = r["cbpc"];
            mcbpc[i].push_back({r["code"], t == "STUFFING" ? 255
                                           : t == "5"
                                               ? -109 - i
                                               : std::stoi(t) | (c[0] - '0') << 5 | (c[1] - '0') << 4});
        }
    }
    for (uint32_t v : {0u, 2u, 3u, 4u, 7u}) mcbpc[0].push_back({to_bits(v, 9), -109});  // stuffing is 1
    mcbpc[1].push_back({"000000000", -110});
    for (const TsvRow& r : read_table("h263_cbpy.tsv"))
        cbpy.push_back({r["code"], int(bits_value(r["cbpy_inter"]))});
    for (const TsvRow& r : read_table("h263_modb.tsv"))
        modb.push_back({r["code"], r.num("cbpb_present") | r.num("mvdb_present") << 1});
    return {{kvtiDecodeMCBPCIntra_H263, mcbpc[0]},
            {kvtiDecodeMCBPCInter_H263, mcbpc[1]},
            {kvtiDecodeCBPY_H263, cbpy},
            {kvtiDecodeMODB_H263, modb}};
}

}  // namespace

TEST(MbHeader, EveryCodeAtEveryOffset) {
    Rng rng(11);
    for (const auto& [dec, codes] : header_tables()) {
        const auto read = [d = dec](Kvt8u** pp, int* off, int* out) {
            Kvt8u v = 0x5A;
            const KvtStatus st = d(pp, off, &v);
            *out = v;
            return st;
        };
        for (const Code& c : codes)
            for (int i = 0; i < 32; ++i)
                expect_code(rng, read, c.bits, i % 8, std::min(c.value, 0), c.value < 0 ? 0x5A : c.value);
    }
}

// Random P-picture macroblock headers (MCBPC, MODB, CBPY, quantizer update in all three forms)
// read back in order: every field must end on the next one's first bit.
TEST(MbHeader, RandomHeaderSequencesRoundTrip) {
    const auto t = header_tables();
    const std::vector<TsvRow> dq = read_table("h263_annex_t_dquant.tsv");
    Rng rng(15);
    for (int trial = 0; trial < 60; ++trial) {
        const int start = rng.uniform(0, 7), first_quant = rng.uniform(1, 31);
        std::string bits = random_bits(rng, start);
        std::vector<int> want, got;
        for (int i = 0, quant = first_quant; i < 40; ++i) {
            const Code &m = t[1].second[size_t(rng.uniform(0, 20))],
                       &y = t[2].second[size_t(rng.uniform(2, 17))],
                       &b = t[3].second[size_t(rng.uniform(0, 2))];
            const int form = rng.uniform(0, 2);  // "10", "11", or "0" and the new quantizer as it stands
            const char* change[2] = {"new_quant_10", "new_quant_11"};
            quant = form < 2 ? dq[size_t(quant - 1)].num(change[form]) : rng.uniform(1, 31);
            bits += m.bits + b.bits + y.bits +
                    (form < 2 ? to_bits(Kvt32u(2 + form), 2) : "0" + to_bits(Kvt32u(quant), 5));
            want.insert(want.end(), {m.value, b.value, y.value, quant});
        }
        Stream s(bits, start, uint8_t(rng.next()));
        Kvt32u q = Kvt32u(first_quant);
        for (int i = 0; i < 40; ++i) {
            for (Decoder8u dec : {kvtiDecodeMCBPCInter_H263, kvtiDecodeMODB_H263, kvtiDecodeCBPY_H263}) {
                Kvt8u v = 0;
                ASSERT_EQ(dec(&s.p, &s.offset, &v), kvtStsOk);
                got.push_back(v);
            }
            ASSERT_EQ(kvtiUpdateQuant_MQ_H263_1u32s_I(&s.p, &s.offset, &q), kvtStsOk);
            got.push_back(int(q));
        }
        EXPECT_EQ(got, want);
        EXPECT_EQ(s.pos(), long(bits.size()));
    }
}
