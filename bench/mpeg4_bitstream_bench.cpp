// H.263 / MPEG-4 byte-cursor decoders, one call per iteration (scalar only). The stream is
// random bits, which favours the short codes as real streams do; a rejected code steps one bit.
#include <cstdint>
#include <vector>

#include "bench.h"
#include "bitstream/byte_cursor.h"
#include "kvtvc.h"

using namespace kvt::bench;

namespace {

constexpr size_t kStreamBytes = 1 << 16;

// Calls dec(&p, &offset) once per iteration over a random stream, rewinding near its end.
template <class Dec>
Body on_stream(Dec dec) {
    return [dec](benchmark::State& state) {
        std::vector<uint8_t> s(kStreamBytes + 64);
        uint32_t x = 0x12345678u;
        for (auto& b : s) b = uint8_t((x = x * 1664525u + 1013904223u) >> 24);
        Kvt8u* p = s.data();
        int off = 0;
        const Kvt8u* end = s.data() + kStreamBytes;
        for (auto _ : state) {
            if (dec(&p, &off) != kvtStsOk) kvt::ownFlushBits(&p, &off, 1);
            if (p >= end) p = s.data();
            benchmark::DoNotOptimize(p);
        }
    };
}

template <KvtStatus (*F)(Kvt8u**, int*, Kvt8u*)>
KvtStatus header(Kvt8u** pp, int* off) {
    Kvt8u v;
    const KvtStatus st = F(pp, off, &v);
    benchmark::DoNotOptimize(v);
    return st;
}

}  // namespace

KVT_BENCH_ROWS {
    add_row("kvtiDecodeMCBPCIntra_H263", on_stream(header<kvtiDecodeMCBPCIntra_H263>), {});
    add_row("kvtiDecodeMCBPCInter_H263", on_stream(header<kvtiDecodeMCBPCInter_H263>), {});
    add_row("kvtiDecodeMODB_H263", on_stream(header<kvtiDecodeMODB_H263>), {});
    add_row("kvtiDecodeCBPY_H263", on_stream(header<kvtiDecodeCBPY_H263>), {});
    add_row("kvtiUpdateQuant_MQ_H263_1u32s_I", on_stream([](Kvt8u** pp, int* off) {
                static Kvt32u q = 10;
                const KvtStatus st = kvtiUpdateQuant_MQ_H263_1u32s_I(pp, off, &q);
                q = (q & 31) | 1;  // keep it a legal quantizer
                return st;
            }), {});
    add_row("kvtiDecodeMV_H263", on_stream([](Kvt8u** pp, int* off) {
                static KvtMotionVec mv[3] = {{2, -4}, {6, 1}, {-3, 3}};
                return kvtiDecodeMV_H263(pp, off, &mv[0], &mv[1], &mv[2], &mv[0]);
            }), {});
    for (int fcode : {1, 3}) {
        for (int type : {2, 0}) {
            const std::string name = std::string("kvtiDecodePadMV_PVOP_MPEG4/") + (type == 2 ? "4mv" : "1mv") +
                                     "/fcode" + std::to_string(fcode);
            add_row(name, on_stream([fcode, type](Kvt8u** pp, int* off) {
                        static KvtMotionVec left[4] = {{1, 2}, {3, 4}, {5, 6}, {7, 8}}, upper[4] = {{-1, 0}, {2, 2}, {4, -6}, {0, 9}},
                                            upper_right[4] = {{8, 8}, {-8, 8}, {3, -3}, {1, 1}}, cur[4];
                        alignas(4) static const Kvt32u valid[3] = {1, 1, 1};
                        alignas(4) static const Kvt8u present[4] = {1, 1, 1, 1};
                        return kvtiDecodePadMV_PVOP_MPEG4(pp, off, left, upper, upper_right, cur, &valid[0], &valid[1],
                                                          &valid[2], present, fcode, type);
                    }), {});
        }
    }
    return 0;
}
