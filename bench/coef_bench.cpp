// H.263 / MPEG-4 coefficients: the inverse quantizers and scans tier by tier, and coefficient
// decoding on a realistic mix of blocks (written with the code tables in tables/), per block.
//
// The mix imitates MPEG-4 simple-profile video at moderate quantizers: inter blocks of a few low-
// frequency coefficients, mostly of magnitude 1 or 2, with the odd escape; intra blocks denser.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "bench.h"
#include "bitstream/byte_cursor.h"
#include "kvtvc.h"
#include "mpeg4/coef_tables.h"
#include "mpeg4/quant_inv_dsp.h"
#include "mpeg4/zigzag_dsp.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

// Dense blocks of levels (every entry nonzero), as FFmpeg's checkasm dequantizer test has. Calls
// rotate over eight of them, so that (as there) the in-place kernels are timed back to back
// without each call waiting for the previous one's stores.
struct Dense {
    alignas(64) int16_t blocks[8][64];
    Dense() {
        uint32_t x = 7;
        for (auto& b : blocks)
            for (int16_t& v : b) {
                x = x * 1103515245u + 12345u;
                v = int16_t(int(x >> 27) % 33 - 16);
                if (v == 0) v = 1;
            }
    }
    int16_t* next(unsigned& i) { return blocks[i++ & 7]; }
};

void quant_rows() {
    const auto row = [](const std::string& fn, const std::string& args, auto slot, auto call) {
        add_kernel<QuantInvDsp>(
            fn, args, init_quant_inv_dsp, ref::init_quant_inv,
            [slot](const QuantInvDsp& d) { return (const void*)slot(d); },
            [call](const QuantInvDsp& d, benchmark::State& st) {
                Dense b;
                unsigned i = 0;
                for (auto _ : st) {
                    int16_t* c = b.next(i);
                    call(d, c);
                    benchmark::DoNotOptimize(c[0]);
                }
            });
    };
    static const uint8_t w[64] = {16, 17, 18, 19, 20, 21, 22, 23, 17, 18, 19, 20, 21, 22, 23, 24,
                                  18, 19, 20, 21, 22, 23, 24, 25, 19, 20, 21, 22, 23, 24, 26, 27,
                                  20, 21, 22, 23, 25, 26, 27, 28, 21, 22, 23, 24, 26, 27, 28, 30,
                                  22, 23, 24, 26, 27, 28, 30, 31, 23, 24, 25, 27, 28, 30, 31, 33};
    row(
        "kvtiQuantInvInter_MPEG4_16s_I", "no matrix, dense, QP 10",
        [](const QuantInvDsp& d) { return d.h263; },
        [](const QuantInvDsp& d, int16_t* c) { d.h263(c, 64, 10, -2048, 2047); });
    row(
        "kvtiQuantInvIntra_MPEG4_16s_I", "no matrix, dense, QP 10",
        [](const QuantInvDsp& d) { return d.h263_intra; },
        [](const QuantInvDsp& d, int16_t* c) { d.h263_intra(c, 64, 10, 18, -2048, 2047); });
    row(
        "kvtiQuantInvInter_MPEG4_16s_I", "matrix, dense, QP 10",
        [](const QuantInvDsp& d) { return d.matrix_inter; },
        [](const QuantInvDsp& d, int16_t* c) { d.matrix_inter(c, 10, w, -2048, 2047); });
    row(
        "kvtiQuantInvIntra_MPEG4_16s_I", "matrix, dense, QP 10",
        [](const QuantInvDsp& d) { return d.matrix_intra; },
        [](const QuantInvDsp& d, int16_t* c) { d.matrix_intra(c, 10, w, 18, -2048, 2047); });
    row(
        "kvtiQuantInvInter_Compact_H263_16s_I", "len 6, QP 10", [](const QuantInvDsp& d) { return d.h263; },
        [](const QuantInvDsp& d, int16_t* c) { d.h263(c, 6, 10, -2048, 2047); });
    add_column("kvtiQuantInvInter_MPEG4_16s_I", "no matrix, dense, QP 10, front", "front",
               [](benchmark::State& st) {
                   Dense b;
                   unsigned i = 0;
                   for (auto _ : st) {
                       int16_t* c = b.next(i);
                       kvtiQuantInvInter_MPEG4_16s_I(c, 10, nullptr);
                       benchmark::DoNotOptimize(c[0]);
                   }
               });
}

void scan_rows() {
    const auto row = [](const std::string& fn, const std::string& args, auto slot, auto call) {
        add_kernel<ZigzagDsp>(
            fn, args, init_zigzag_dsp, ref::init_zigzag,
            [slot](const ZigzagDsp& d) { return (const void*)slot(d); },
            [call](const ZigzagDsp& d, benchmark::State& st) {
                Dense src;
                alignas(16) int16_t dst[64] = {};
                for (auto _ : st) {
                    call(d, src.blocks[0], dst);
                    benchmark::DoNotOptimize(dst[0]);
                }
            });
    };
    row(
        "kvtiZigzagInv_Horizontal_16s", "", [](const ZigzagDsp& d) { return d.full[kAltHorizontal]; },
        [](const ZigzagDsp& d, const int16_t* s, int16_t* t) { d.full[kAltHorizontal](s, t); });
    for (int len : {64, 8})
        row(
            "kvtiZigzagInvClassical_Compact_16s", "len " + std::to_string(len),
            [](const ZigzagDsp& d) { return d.compact[kZigzag]; },
            [len](const ZigzagDsp& d, const int16_t* s, int16_t* t) { d.compact[kZigzag](s, len, t); });
}

// ---- A realistic stream of coded blocks ----------------------------------------------------------------

struct Codes {
    std::map<uint32_t, std::pair<uint32_t, int>> plain;  // (last, run, level) -> code, length
    std::pair<uint32_t, int> escape;
    int lmax[2][64] = {}, rmax[2][64];  // by last, run / by last, level; rmax -1: no code
};

uint32_t key(int last, int run, int level) { return uint32_t(last << 16 | run << 8 | level); }

Codes read_codes(const std::string& file) {
    Codes t;
    for (auto& r : t.rmax)
        for (int& v : r) v = -1;
    std::ifstream in(std::string(KVT_TABLES_DIR) + "/" + file);
    std::string line;
    bool header = true;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        if (header) {
            header = false;
            continue;
        }
        std::istringstream is(line);
        std::string code, last, run, level;
        is >> code >> last >> run >> level;
        const std::pair<uint32_t, int> c{uint32_t(std::stoul(code, nullptr, 2)), int(code.size())};
        if (level == "ESC") {
            t.escape = c;
            continue;
        }
        const int l = std::stoi(last), r = std::stoi(run), v = std::stoi(level);
        t.plain[key(l, r, v)] = c;
        t.lmax[l][r] = std::max(t.lmax[l][r], v);
        t.rmax[l][v] = std::max(t.rmax[l][v], r);
    }
    return t;
}

// Writes one event in the first form an MPEG-4 encoder would choose.
void write_event(uint8_t** p, int* off, const Codes& t, int last, int run, int level) {
    const int m = std::abs(level), sign = level < 0;
    const auto put = [&](std::pair<uint32_t, int> c) { PutBits(p, off, int(c.first), c.second); };
    auto it = t.plain.find(key(last, run, m));
    if (it != t.plain.end()) return put(it->second), PutBits(p, off, sign, 1);
    put(t.escape);
    const int lm = t.lmax[last][run];
    if (lm && (it = t.plain.find(key(last, run, m - lm))) != t.plain.end())
        return PutBits(p, off, 0, 1), put(it->second), PutBits(p, off, sign, 1);
    const int rm = m < 64 ? t.rmax[last][m] : -1;
    if (rm >= 0 && (it = t.plain.find(key(last, run - rm - 1, m))) != t.plain.end())
        return PutBits(p, off, 2, 2), put(it->second), PutBits(p, off, sign, 1);
    PutBits(p, off, 3, 2);
    PutBits(p, off, last << 7 | run << 1 | 1, 8);
    PutBits(p, off, (level & 0xFFF) << 1 | 1, 13);
}

struct Mix {
    std::vector<uint8_t> bytes;
    int blocks = 0, coefs = 0;
};

// `blocks` blocks of the kind: intra blocks carry a DC size code and denser, larger coefficients.
Mix make_mix(bool intra, int blocks) {
    const Codes t = read_codes(intra ? "mpeg4_tcoef_intra.tsv" : "mpeg4_tcoef_inter.tsv");
    Mix m;
    m.bytes.assign(size_t(blocks) * 200 + 16, 0);
    uint8_t* p = m.bytes.data();
    int off = 0;
    uint32_t x = intra ? 99 : 7;
    const auto rnd = [&](int n) { return int(((x = x * 1103515245u + 12345u) >> 8) % uint32_t(n)); };
    for (int b = 0; b < blocks; ++b) {
        if (intra) PutBits(&p, &off, 1 << 4 | rnd(16), 7);  // luma DC size 4 ("001") and its 4 bits
        const int count = intra ? 8 + rnd(24) : 1 + rnd(4) + rnd(4) * rnd(3);
        int pos = intra ? 0 : -1;
        for (int k = 0; k < count && pos < 62; ++k) {
            int run = 0;
            while (rnd(3) == 0 && pos + run < 60) ++run;  // geometric runs, short at low frequency
            pos += run + 1;
            const int r = rnd(100);
            int level = r < 62   ? 1
                        : r < 82 ? 2
                        : r < 90 ? 3
                        : r < 97 ? 4 + rnd(6)
                                 : 10 + rnd(intra ? 60 : 30);
            if (rnd(2)) level = -level;
            write_event(&p, &off, t, k == count - 1 || pos >= 62, run, level);
            ++m.coefs;
        }
        ++m.blocks;
    }
    return m;
}

// Decodes the whole mix per iteration; `decode` reads one block.
template <class Decode>
Body decode_mix(bool intra, int blocks, Decode decode) {
    return [intra, blocks, decode](benchmark::State& st) {
        static const Mix mixes[2] = {make_mix(false, 256), make_mix(true, 256)};
        const Mix& m = mixes[intra];
        alignas(16) int16_t c[64];
        alignas(16) uint8_t px[64];
        for (auto _ : st) {
            Kvt8u* p = const_cast<Kvt8u*>(m.bytes.data());
            int off = 0;
            for (int b = 0; b < blocks; ++b) decode(&p, &off, c, px);
            benchmark::DoNotOptimize(c[0]);
        }
        st.counters["coefs"] = m.coefs;
    };
}

void decode_rows() {
    const Mix inter = make_mix(false, 256), intra = make_mix(true, 256);
    const auto args = [](const Mix& m) { return "256 blocks, " + std::to_string(m.coefs) + " coefficients"; };
    add_column("kvtiDecodeVLCZigzag_Inter_MPEG4_1u16s", args(inter), "front",
               decode_mix(false, 256, [](Kvt8u** p, int* o, Kvt16s* c, Kvt8u*) {
                   kvtiDecodeVLCZigzag_Inter_MPEG4_1u16s(p, o, c);
               }));
    add_column("kvtiDecodeVLCZigzag_IntraDCVLC_MPEG4_1u16s", args(intra), "front",
               decode_mix(true, 256, [](Kvt8u** p, int* o, Kvt16s* c, Kvt8u*) {
                   kvtiDecodeVLCZigzag_IntraDCVLC_MPEG4_1u16s(p, o, c, 0, 0);
               }));
    add_column("kvtiDecodeBlockCoef_Inter_MPEG4_1u16s", args(inter) + ", QP 6", "front",
               decode_mix(false, 256, [](Kvt8u** p, int* o, Kvt16s* c, Kvt8u*) {
                   kvtiDecodeBlockCoef_Inter_MPEG4_1u16s(p, o, c, 6, nullptr);
               }));
    add_column("kvtiDecodeBlockCoef_Intra_MPEG4_1u8u", args(intra) + ", QP 6", "front",
               decode_mix(true, 256, [](Kvt8u** p, int* o, Kvt16s*, Kvt8u* px) {
                   Kvt16s row[16] = {-1, 0, 0, 0, 0, 0, 0, 0, -1}, col[8] = {};
                   kvtiDecodeBlockCoef_Intra_MPEG4_1u8u(p, o, px, 8, row + 8, col, 6, 6, 0, 0, 0, 1, nullptr);
               }));
}

}  // namespace

KVT_BENCH_ROWS {
    quant_rows();
    scan_rows();
    decode_rows();
    return 0;
}
