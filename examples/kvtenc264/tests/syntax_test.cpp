// The encoder's bit-level syntax against a small decoder written here from H.264 7.2, 9.1 and
// 9.2 and the standard's code tables in the shared TSV files.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "bit_reader.h"
#include "bitwriter.h"
#include "cavlc.h"
#include "checkasm.h"
#include "mb_syntax.h"
#include "nal.h"
#include "tables.h"
#include "tsv.h"

namespace {

using enc264::BitWriter;
using kvt::test::Rng;

// A prefix code read bit by bit: code string -> value.
using Code = std::map<std::string, int>;
int read_code(BitReader& r, const Code& code) {
    std::string s;
    while (s.size() < 17) {
        s += static_cast<char>('0' + r.bit());
        const auto it = code.find(s);
        if (it != code.end()) return it->second;
    }
    ADD_FAILURE() << "no code matches " << s;
    return 0;
}

struct CavlcTables {
    std::map<std::string, Code> coeff_token;  // by nC class; value total * 4 + trailing ones
    std::map<int, Code> total_zeros, total_zeros_dc, run_before;
    CavlcTables() {
        for (const auto& row : kvt::test::read_table("h264_coeff_token.tsv"))
            coeff_token[row["nc_class"]][row["code"]] = row.num("total_coeff") * 4 + row.num("trailing_ones");
        for (const auto& row : kvt::test::read_table("h264_total_zeros_4x4.tsv"))
            total_zeros[row.num("tz_vlc_index")][row["code"]] = row.num("total_zeros");
        for (const auto& row : kvt::test::read_table("h264_total_zeros_chroma_dc.tsv"))
            total_zeros_dc[row.num("tz_vlc_index")][row["code"]] = row.num("total_zeros");
        for (const auto& row : kvt::test::read_table("h264_run_before.tsv"))
            run_before[row["zeros_left"] == ">6" ? 7 : row.num("zeros_left")][row["code"]] =
                row.num("run_before");
    }
};

// residual_block_cavlc() as a decoder reads it (H.264 9.2): levels in scan order.
std::vector<int> decode_block(BitReader& r, const CavlcTables& t, int nc, int max_coeff) {
    const char* cls = nc == -1 ? "chroma_dc" : nc < 2 ? "0-2" : nc < 4 ? "2-4" : nc < 8 ? "4-8" : "8+";
    const int token = read_code(r, t.coeff_token.at(cls));
    const int total = token / 4, ones = token % 4;
    std::vector<int> out(max_coeff, 0), level(total), run(total);
    if (!total) return out;
    int suffix_length = total > 10 && ones < 3 ? 1 : 0;
    for (int i = 0; i < total; ++i) {
        if (i < ones) {
            level[i] = r.bit() ? -1 : 1;
            continue;
        }
        int prefix = 0;
        while (!r.bit()) ++prefix;
        int code = (std::min(15, prefix) << suffix_length);
        const int size = prefix == 14 && suffix_length == 0 ? 4 : prefix >= 15 ? prefix - 3 : suffix_length;
        if (size) code += static_cast<int>(r.u(size));
        if (prefix >= 15 && suffix_length == 0) code += 15;
        if (prefix >= 16) code += (1 << (prefix - 3)) - 4096;
        if (i == ones && ones < 3) code += 2;
        level[i] = code % 2 ? (-code - 1) >> 1 : (code + 2) >> 1;
        if (suffix_length == 0) suffix_length = 1;
        if (std::abs(level[i]) > (3 << (suffix_length - 1)) && suffix_length < 6) ++suffix_length;
    }
    int zeros_left = 0;
    if (total < max_coeff)
        zeros_left = read_code(r, (max_coeff == 4 ? t.total_zeros_dc : t.total_zeros).at(total));
    for (int i = 0; i < total - 1; ++i) {
        run[i] = zeros_left > 0 ? read_code(r, t.run_before.at(std::min(zeros_left, 7))) : 0;
        zeros_left -= run[i];
    }
    run[total - 1] = zeros_left;
    int pos = -1;
    for (int i = total - 1; i >= 0; --i) {
        pos += run[i] + 1;
        out[pos] = level[i];
    }
    return out;
}

// Random levels with the shapes that matter: sparse trailing ones, dense blocks, CAVLC's limits.
void random_levels(Rng& rng, int16_t* v, int n) {
    const int style = rng.uniform(0, 3);
    for (int i = 0; i < n; ++i) {
        const int r = rng.uniform(0, 99);
        int level = 0;
        if (style == 0)
            level = r < 80 ? 0 : rng.coin() ? 1 : -1;
        else if (style == 1)
            level = r < 30 ? 0 : rng.uniform(-3, 3);
        else if (style == 2)
            level = r < 50 ? 0 : rng.uniform(-40, 40);
        else
            level = r < 20 ? 0 : rng.coin() ? rng.uniform(-2063, 2063) : (rng.coin() ? 2063 : -2063);
        v[i] = static_cast<int16_t>(level);
    }
}

TEST(Kvtenc264Syntax, ExpGolombCodesReadBack) {
    BitWriter bw;
    std::vector<uint32_t> u;
    std::vector<int32_t> s;
    for (uint32_t v = 0; v < 300; ++v) u.push_back(v);
    for (uint32_t v : {65534u, 65535u, 65536u, 1u << 20, (1u << 31) - 2}) u.push_back(v);
    for (int32_t v = -150; v <= 150; ++v) s.push_back(v);
    for (int32_t v : {-40000, 40000, (1 << 30) - 1, -(1 << 30)}) s.push_back(v);
    for (uint32_t v : u) bw.ue(v);
    for (int32_t v : s) bw.se(v);
    bw.trailing();
    BitReader r(bw.bytes());
    for (uint32_t v : u) EXPECT_EQ(r.ue(), v);
    for (int32_t v : s) EXPECT_EQ(r.se(), v);
    EXPECT_TRUE(r.at_trailing_bits());
    // Code lengths of H.264 Table 9-2 (ue) and 9-3 (se), which the rate estimates use.
    const int ue_lengths[][2] = {{0, 1}, {1, 3}, {2, 3}, {3, 5}, {6, 5}, {7, 7}, {254, 15}, {255, 17}};
    for (const auto& l : ue_lengths) EXPECT_EQ(enc264::ue_bits(l[0]), l[1]) << "ue " << l[0];
    const int se_lengths[][2] = {{0, 1}, {1, 3}, {-1, 3}, {2, 5}, {-2, 5}, {4, 7}, {-4, 7}, {128, 17}};
    for (const auto& l : se_lengths) EXPECT_EQ(enc264::se_bits(l[0]), l[1]) << "se " << l[0];
}

TEST(Kvtenc264Syntax, EmulationPreventionKeepsStartCodesOut) {
    Rng rng(264);
    for (int trial = 0; trial < 200; ++trial) {
        std::vector<uint8_t> rbsp(rng.uniform(1, 60));
        for (auto& b : rbsp) b = static_cast<uint8_t>(rng.uniform(0, 9) < 6 ? 0 : rng.uniform(0, 4));
        rbsp.back() = 0x80;  // an RBSP ends in its stop bit
        std::vector<uint8_t> out;
        enc264::append_nal(out, enc264::kNalSlice, 2, rbsp);
        ASSERT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + 5),
                  (std::vector<uint8_t>{0, 0, 0, 1, 0x41}));
        std::vector<uint8_t> back;
        int zeros = 0;
        for (size_t i = 5; i < out.size(); ++i) {
            ASSERT_FALSE(zeros >= 2 && out[i] < 3) << "start code emulated at byte " << i;
            if (zeros >= 2 && out[i] == 3) {
                zeros = 0;
                continue;
            }
            back.push_back(out[i]);
            zeros = out[i] ? 0 : zeros + 1;
        }
        EXPECT_EQ(back, rbsp);
    }
}

TEST(Kvtenc264Syntax, ResidualBlocksDecodeToTheirLevels) {
    const CavlcTables tables;
    Rng rng(264);
    for (int trial = 0; trial < 3000; ++trial) {
        const int kind = rng.uniform(0, 2);  // 4x4, AC (first index 1), chroma DC
        const int nc = kind == 2 ? -1 : rng.uniform(0, 16);
        int16_t levels[16] = {};
        random_levels(rng, levels, kind == 2 ? 4 : 16);
        if (kind == 1) levels[0] = static_cast<int16_t>(rng.uniform(-9, 9));  // not coded
        BitWriter bw;
        const int total = kind == 2 ? enc264::write_chroma_dc_cavlc(bw, levels)
                                    : enc264::write_block_cavlc(bw, levels, kind, nc);
        bw.trailing();
        BitReader r(bw.bytes());
        const std::vector<int> got = decode_block(r, tables, nc, kind == 2 ? 4 : 16 - kind);
        int expected_total = 0;
        for (size_t i = 0; i < got.size(); ++i) {
            const int pos = kind == 2 ? static_cast<int>(i) : enc264::kZigzag4x4[i + kind];
            ASSERT_EQ(got[i], levels[pos]) << "trial " << trial << " scan index " << i + kind << " nC " << nc;
            expected_total += levels[pos] != 0;
        }
        EXPECT_EQ(total, expected_total);
        EXPECT_EQ(r.bit(), 1) << "trial " << trial << ": the block used fewer bits than written";
    }
}

TEST(Kvtenc264Syntax, CodedBlockPatternCodesArePermutations) {
    for (bool intra : {false, true}) {
        std::vector<bool> seen(48, false);
        for (int cbp = 0; cbp < 48; ++cbp) {
            const int k = enc264::cbp_code_num(cbp, intra);
            ASSERT_TRUE(k >= 0 && k < 48 && !seen[k]) << "cbp " << cbp << (intra ? " intra" : " inter");
            seen[k] = true;
        }
        // The most frequent patterns get the shortest codes: nothing for inter, everything for intra.
        EXPECT_EQ(enc264::cbp_code_num(intra ? 47 : 0, intra), 0);
    }
}

}  // namespace
