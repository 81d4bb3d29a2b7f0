// Block motion compensation, prediction and reconstruction: every kernel slot per tier, and the
// exported functions the peer comparisons name (front: checks plus one jump).
#include <cstdint>
#include <string>
#include <vector>

#include "bench.h"
#include "kvtvc.h"
#include "mpeg2/mc_dsp.h"
#include "mpeg4/obmc_dsp.h"
#include "mpeg4/recon_dsp.h"

using namespace kvt;
using namespace kvt::bench;

namespace {

constexpr int kStep = 64;

// A 64x64 plane of pseudo-random samples and a residual plane; references start at unaligned
// positions as in a decoder, the destination at a 16-byte aligned one. The destination's rows
// share no address bits 0..11 with what the kernels read, so no load waits on a store to an
// address 4 KiB away (which a decoder's separate frames rarely meet either).
struct Frame {
    std::vector<uint8_t> storage = std::vector<uint8_t>(4 * 4096);
    uint8_t* base;
    int16_t* res;
    Frame() {
        base = storage.data() + (4096 - reinterpret_cast<uintptr_t>(storage.data()) % 4096) % 4096;
        res = reinterpret_cast<int16_t*>(base + 4096 + 2048);
        uint32_t x = 12345;
        for (int i = 0; i < kStep * 48; ++i) base[i] = uint8_t((x = x * 1103515245u + 12345u) >> 24);
        for (int i = 0; i < 512; ++i) res[i] = int16_t(int((x = x * 1103515245u + 12345u) >> 23) - 256);
    }
    const uint8_t* ref() const { return base + 17 * kStep + 19; }  // address bits 1107..2195
    const uint8_t* ref2() const { return base + 30 * kStep + 5; }  // 1925..3013
    uint8_t* dst() const { return base + 2 * 4096 + 3072 + 16; }   // 3088..4064
};

Frame& frame() {
    static Frame f;
    return f;
}

// One row per kernel slot of a family table; call(kernel, frame) runs it once.
template <class Dsp, class Slot, class Call>
void slot_row(const std::string& fn, const std::string& args, void (*init)(Dsp&, unsigned),
              void (*init_ref)(Dsp&), Slot slot, Call call) {
    add_kernel<Dsp>(
        fn, args, init, init_ref, [slot](const Dsp& d) { return (const void*)slot(d); },
        [slot, call](const Dsp& d, benchmark::State& st) {
            Frame& f = frame();
            const auto k = slot(d);
            for (auto _ : st) {
                call(k, f);
                benchmark::ClobberMemory();
            }
        });
}

// An exported function timed on the frame, as the column "front" of row (fn, args).
template <class Call>
void front(const std::string& fn, const std::string& args, Call call) {
    add_column(fn, args, "front", [call](benchmark::State& st) {
        Frame& f = frame();
        for (auto _ : st) {
            call(f);
            benchmark::ClobberMemory();
        }
    });
}

const char* const kMcPhase[4] = {"ff", "fh", "hf", "hh"};     // MPEG-1/2 order
const char* const kReconPhase[4] = {"ff", "hf", "fh", "hh"};  // MPEG-4 order

std::string shape_name(int shape) {
    const McShape s = kMcShapes[shape];
    return std::to_string(s.w) + "x" + std::to_string(s.h) + (s.nb == 2 ? "UV" : "");
}

void mc_rows() {
    for (int shape = 0; shape < kMcShapeCount; ++shape)
        for (int ph = 0; ph < 4; ++ph) {
            const int i = mc_index(shape, ph), b = mc_bi_index(shape, ph, ph);
            slot_row<McDsp>(
                "kvtiMC" + shape_name(shape) + "_8u_C1", kMcPhase[ph], init_mc_dsp, ref::init_mc,
                [i](const McDsp& d) { return d.mc[i]; },
                [](McFn k, Frame& f) { k(f.ref(), kStep, f.res, 64, f.dst(), kStep, 0); });
            slot_row<McDsp>(
                "kvtiMC" + shape_name(shape) + "B_8u_C1", std::string(kMcPhase[ph]) + " " + kMcPhase[ph],
                init_mc_dsp, ref::init_mc, [b](const McDsp& d) { return d.mc_bi[b]; },
                [](McBiFn k, Frame& f) { k(f.ref(), kStep, f.ref2(), kStep, f.res, 64, f.dst(), kStep, 0); });
        }
    front("kvtiMC16x16_8u_C1", "hh",
          [](Frame& f) { kvtiMC16x16_8u_C1(f.ref(), kStep, f.res, 64, f.dst(), kStep, 12, 0); });
    for (int i = 0; i < 72; ++i) {
        const std::string size =
            std::to_string(kMcBlockSizes[i / 24]) + "x" + std::to_string(kMcBlockSizes[i / 8 % 3]);
        slot_row<McDsp>(
            "kvtiMCBlock_Round" + std::string(i % 2 ? "On" : "Off") + "_8u", size + " " + kMcPhase[i / 2 % 4],
            init_mc_dsp, ref::init_mc, [i](const McDsp& d) { return d.copy[i]; },
            [](McCopyFn k, Frame& f) { k(f.ref(), kStep, f.dst(), kStep); });
    }
}

void recon_rows() {
    for (int i = 0; i < 8; ++i) {
        const std::string args = std::string(kReconPhase[i / 2]) + " rc" + std::to_string(i % 2);
        for (int n : {16, 8})
            slot_row<ReconDsp>(
                n == 16 ? "kvtiCopyMBHalfpel_MPEG4_8u" : "kvtiCopyBlockHalfpel_MPEG4_8u", args,
                init_recon_dsp, ref::init_recon,
                [i, n](const ReconDsp& d) { return (n == 16 ? d.predict16 : d.predict8)[i]; },
                [](PredictFn k, Frame& f) { k(f.ref(), kStep, f.dst(), kStep); });
        slot_row<ReconDsp>(
            "kvtiReconBlockHalfpel_MPEG4_8u", args, init_recon_dsp, ref::init_recon,
            [i](const ReconDsp& d) { return d.recon8[i]; },
            [](ReconFn k, Frame& f) { k(f.ref(), kStep, f.res, f.dst(), kStep); });
        // The exported copies, vector (1, 0) for hf etc., from the block's own position.
        const KvtMotionVec mv = {int16_t(i / 2 % 2), int16_t(i / 4)};
        const int rc = i % 2;
        front("kvtiCopyMBHalfpel_MPEG4_8u", args,
              [mv, rc](Frame& f) { kvtiCopyMBHalfpel_MPEG4_8u(f.ref(), kStep, f.dst(), kStep, &mv, rc); });
        front("kvtiCopyBlockHalfpel_MPEG4_8u", args,
              [mv, rc](Frame& f) { kvtiCopyBlockHalfpel_MPEG4_8u(f.ref(), kStep, f.dst(), kStep, &mv, rc); });
    }
    slot_row<ReconDsp>(
        "kvtiReconMB_H263_I", "", init_recon_dsp, ref::init_recon,
        [](const ReconDsp& d) { return d.recon16; },
        [](ReconFn k, Frame& f) { k(f.dst(), kStep, f.res, f.dst(), kStep); });
    front("kvtiReconMB_H263_I", "", [](Frame& f) { kvtiReconMB_H263_I(f.dst(), f.res, kStep); });
    slot_row<ReconDsp>(
        "kvtiAverageMB_MPEG4_8u", "", init_recon_dsp, ref::init_recon,
        [](const ReconDsp& d) { return d.average16; },
        [](AverageFn k, Frame& f) { k(f.ref(), kStep, f.ref2(), kStep, f.dst(), kStep); });
    front("kvtiAverageMB_MPEG4_8u", "",
          [](Frame& f) { kvtiAverageMB_MPEG4_8u(f.ref(), kStep, f.ref2(), kStep, f.dst(), kStep); });
    slot_row<ReconDsp>(
        "kvtiAverageBlock_MPEG4_8u", "", init_recon_dsp, ref::init_recon,
        [](const ReconDsp& d) { return d.average8; },
        [](AverageFn k, Frame& f) { k(f.ref(), kStep, f.ref2(), kStep, f.dst(), kStep); });
    for (int r = 0; r < 2; ++r)
        slot_row<ObmcDsp>(
            "kvtiOBMCHalfpel_MPEG4_8u", "mixed vectors rc" + std::to_string(r), init_obmc_dsp, ref::init_obmc,
            [r](const ObmcDsp& d) { return d.obmc[r]; },
            [](ObmcFn k, Frame& f) {
                static const KvtMotionVec v[kObmcVectors] = {{1, 1}, {-3, 2}, {4, -1}, {0, 3}, {-2, -2}};
                static const KvtMotionVec* const mv[kObmcVectors] = {&v[0], &v[1], &v[2], &v[3], &v[4]};
                k(f.ref() + 8 * kStep, kStep, f.dst(), kStep, mv);
            });
}

}  // namespace

KVT_BENCH_ROWS {
    mc_rows();
    recon_rows();
    return 0;
}
