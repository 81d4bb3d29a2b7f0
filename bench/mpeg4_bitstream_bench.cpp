// H.263 / MPEG-4 byte-cursor decoders (C tables), one call per iteration. The stream is
// random bits, which favours the short codes as real streams do; a rejected code steps one bit.
#include <cstdint>
#include <vector>

#include "bench.h"
#include "bitstream/byte_cursor.h"
#include "kvtvc.h"
#include "mpeg4/h263_mv_dsp.h"
#include "mpeg4/mb_header_dsp.h"
#include "mpeg4/motion_vector_dsp.h"

using namespace kvt;
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
            if (dec(&p, &off) != kvtStsOk) ownFlushBits(&p, &off, 1);
            if (p >= end) p = s.data();
            benchmark::DoNotOptimize(p);
        }
    };
}

// One row of a decoder table: dec(table, &p, &offset) is one call of the slot slot(table) names.
template <class Dsp, class Slot, class Dec>
void stream_row(const std::string& fn, const std::string& args, void (*init)(Dsp&, unsigned),
                void (*oracle)(Dsp&), Slot slot, Dec dec) {
    add_kernel<Dsp>(
        fn, args, init, oracle, [slot](const Dsp& d) { return (const void*)slot(d); },
        [dec](const Dsp& d, benchmark::State& st) {
            on_stream([&d, dec](Kvt8u** pp, int* off) { return dec(d, pp, off); })(st);
        });
}

template <HeaderCodeFn MbHeaderDsp::*slot>
void header_row(const std::string& fn) {
    stream_row(
        fn, "random bits", init_mb_header_dsp, ref::init_mb_header,
        [](const MbHeaderDsp& d) { return d.*slot; },
        [](const MbHeaderDsp& d, Kvt8u** pp, int* off) {
            Kvt8u v;
            const KvtStatus st = (d.*slot)(pp, off, &v);
            benchmark::DoNotOptimize(v);
            return st;
        });
}

}  // namespace

KVT_BENCH_ROWS {
    header_row<&MbHeaderDsp::mcbpc_intra>("kvtiDecodeMCBPCIntra_H263");
    header_row<&MbHeaderDsp::mcbpc_inter>("kvtiDecodeMCBPCInter_H263");
    header_row<&MbHeaderDsp::modb>("kvtiDecodeMODB_H263");
    header_row<&MbHeaderDsp::cbpy>("kvtiDecodeCBPY_H263");
    stream_row(
        "kvtiUpdateQuant_MQ_H263_1u32s_I", "random bits", init_mb_header_dsp, ref::init_mb_header,
        [](const MbHeaderDsp& d) { return d.update_quant_mq; },
        [](const MbHeaderDsp& d, Kvt8u** pp, int* off) {
            static Kvt32u q = 10;
            const KvtStatus st = d.update_quant_mq(pp, off, &q);
            q = (q & 31) | 1;  // keep it a legal quantizer
            return st;
        });
    stream_row(
        "kvtiDecodeMV_H263", "random bits", init_h263_mv_dsp, ref::init_h263_mv,
        [](const H263MvDsp& d) { return d.decode_mv; },
        [](const H263MvDsp& d, Kvt8u** pp, int* off) {
            static KvtMotionVec mv[3] = {{2, -4}, {6, 1}, {-3, 3}};
            return d.decode_mv(pp, off, mv[0], mv[1], mv[2], &mv[0]);
        });
    for (int fcode : {1, 3})
        for (int type : {2, 0})
            stream_row(
                "kvtiDecodePadMV_PVOP_MPEG4",
                std::string(type == 2 ? "four vectors" : "one vector") + ", fcode " + std::to_string(fcode),
                init_motion_vector_dsp, ref::init_motion_vector,
                [](const MotionVectorDsp& d) { return d.decode_pad_mv_pvop; },
                [fcode, type](const MotionVectorDsp& d, Kvt8u** pp, int* off) {
                    static const KvtMotionVec left[4] = {{1, 2}, {3, 4}, {5, 6}, {7, 8}},
                                              upper[4] = {{-1, 0}, {2, 2}, {4, -6}, {0, 9}},
                                              upper_right[4] = {{8, 8}, {-8, 8}, {3, -3}, {1, 1}};
                    static KvtMotionVec cur[4];
                    static const Kvt8u present[4] = {1, 1, 1, 1};
                    const MvNeighbours nb{left, upper, upper_right, true, true, true};
                    return d.decode_pad_mv_pvop(pp, off, nb, cur, present, fcode, type);
                });
    return 0;
}
