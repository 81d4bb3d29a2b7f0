// kvtvc-ticks-mc: the exported prediction, averaging and reconstruction functions timed the way
// FFmpeg's checkasm (with the mean-of-samples figure) times its DSP functions (checkasm_timing.h),
// so that the two figures can be set side by side. TSC ticks per call. The buffers are laid out as the
// peer's hpeldsp test lays out its own: 16-byte aligned, step 64, source 8 rows and 16 samples in.
//
//   taskset -c 1 build/release/bench/kvtvc-ticks-mc       (run 3 times, take the minimum)
//   taskset -c 1 build/release/bench/kvtvc-ticks-mc --steady
//
// --steady times 16 calls per sample instead of 4 (checkasm_timing.h): a function's own work
// then shows as what it adds to each call once the calls overlap fully.
//
// Rows ending in "kernel" time the kernel the exported function hands over to, called through a
// pointer with its arguments ready, as the peer's rows are: the difference is the function's own
// work (argument checks, reading the vector, the table jump).
//
// The last column names the peer row to compare with (put_no_rnd_* for rounding control 1):
//   taskset -c 1 $CHECKASM --test=hpeldsp --bench='*pixels*' 1
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "checkasm_timing.h"
#include "common/cpu.h"
#include "kvtvc.h"
#include "mpeg4/recon_dsp.h"

namespace {

alignas(4096) uint8_t plane[4 * 4096];
alignas(32) int16_t residual[1024];

// Every row, `calls` calls per sample.
template <int calls>
void run() {
    constexpr int kStep = 64;
    uint8_t* const src_plane = plane;
    uint8_t* const dst = plane + 8192 + 3072;  // no 4 KiB aliasing with the source rows
    for (int i = 0; i < 40 * kStep; ++i)
        src_plane[i] = uint8_t(40 + 2 * (i % kStep) + i / kStep + (i * 7) % 16);
    for (int i = 0; i < 1024; ++i) residual[i] = int16_t((i * 37) % 200 - 100);
    const uint8_t* const src = src_plane + 8 * kStep + 16;

    const auto row = [&](const std::string& name, const char* peer, auto call) {
        std::printf("%-46s  %6.1f   %s\n", name.c_str(), kvt::bench::checkasm_ticks<calls>(call), peer);
    };
    static const char* const kPhase[4] = {"ff", "hf", "fh", "hh"};
    static const char* const kPeer16[2][4] = {
        {"put_pixels16", "put_pixels16_x2", "put_pixels16_y2", "put_pixels16_xy2"},
        {"put_pixels16", "put_no_rnd_pixels16_x2", "put_no_rnd_pixels16_y2", "put_no_rnd_pixels16_xy2"}};
    static const char* const kPeer8[2][4] = {
        {"put_pixels8", "put_pixels8_x2", "put_pixels8_y2", "put_pixels8_xy2"},
        {"put_pixels8", "put_no_rnd_pixels8_x2", "put_no_rnd_pixels8_y2", "put_no_rnd_pixels8_xy2"}};
    kvt::ReconDsp dsp{};
    kvt::init_recon_dsp(dsp, kvt::cpu_flags());
    for (int n : {16, 8})
        for (int p = 0; p < 4; ++p)
            for (int rc = 0; rc < 2; ++rc) {
                const KvtMotionVec mv = {int16_t(p & 1), int16_t(p >> 1)};
                const std::string args = std::string(" ") + kPhase[p] + " rc" + std::to_string(rc);
                const char* peer = (n == 16 ? kPeer16 : kPeer8)[rc][p];
                if (n == 16)
                    row("kvtiCopyMBHalfpel_MPEG4_8u" + args, peer,
                        [&] { kvtiCopyMBHalfpel_MPEG4_8u(src, kStep, dst, kStep, &mv, rc); });
                else
                    row("kvtiCopyBlockHalfpel_MPEG4_8u" + args, peer,
                        [&] { kvtiCopyBlockHalfpel_MPEG4_8u(src, kStep, dst, kStep, &mv, rc); });
                const kvt::PredictFn k = (n == 16 ? dsp.predict16 : dsp.predict8)[kvt::recon_index(p, rc)];
                row(std::string(n == 16 ? "kvtiCopyMBHalfpel_MPEG4_8u" : "kvtiCopyBlockHalfpel_MPEG4_8u") +
                        args + " kernel",
                    peer, [&] { k(src, kStep, dst, kStep); });
            }
    {
        // As a decoder calls it: the components stored one by one just before the call, which a
        // single wider load of the vector could not take from the store buffer.
        KvtMotionVec fresh{};
        row("kvtiCopyBlockHalfpel_MPEG4_8u ff rc0, vector just written", "", [&] {
            volatile int16_t* const c = &fresh.dx;
            c[0] = 2, c[1] = 2;
            kvtiCopyBlockHalfpel_MPEG4_8u(src, kStep, dst, kStep, &fresh, 0);
        });
    }
    row("kvtiCopyMB_H263_8u", "put_pixels16", [&] { kvtiCopyMB_H263_8u(src, dst, kStep); });
    row("kvtiCopyApproxHMB_H263_8u", "put_pixels16_x2", [&] { kvtiCopyApproxHMB_H263_8u(src, dst, kStep); });
    row("kvtiCopyApproxVMB_H263_8u", "put_pixels16_y2", [&] { kvtiCopyApproxVMB_H263_8u(src, dst, kStep); });
    row("kvtiCopyApproxHVMB_H263_8u", "put_pixels16_xy2",
        [&] { kvtiCopyApproxHVMB_H263_8u(src, dst, kStep); });
    row("kvtiCopyBlock_H263_8u", "put_pixels8", [&] { kvtiCopyBlock_H263_8u(src, dst, kStep); });
    row("kvtiCopyApproxHBlock_H263_8u", "put_pixels8_x2",
        [&] { kvtiCopyApproxHBlock_H263_8u(src, dst, kStep); });
    row("kvtiCopyApproxVBlock_H263_8u", "put_pixels8_y2",
        [&] { kvtiCopyApproxVBlock_H263_8u(src, dst, kStep); });
    row("kvtiCopyApproxHVBlock_H263_8u", "put_pixels8_xy2",
        [&] { kvtiCopyApproxHVBlock_H263_8u(src, dst, kStep); });
    const uint8_t* const src2 = src + 3 * kStep + 1;
    row("kvtiAverageMB_MPEG4_8u", "avg_pixels16 (dst is one source)",
        [&] { kvtiAverageMB_MPEG4_8u(src, kStep, src2, kStep, dst, kStep); });
    row("kvtiAverageMB_MPEG4_8u_I", "avg_pixels16",
        [&] { kvtiAverageMB_MPEG4_8u_I(src, kStep, dst, kStep); });
    row("kvtiAverageMB_MPEG4_8u_I kernel", "avg_pixels16",
        [&, average16 = dsp.average16] { average16(src, kStep, dst, kStep, dst, kStep); });
    row("kvtiAverageBlock_MPEG4_8u", "avg_pixels8 (dst is one source)",
        [&] { kvtiAverageBlock_MPEG4_8u(src, kStep, src2, kStep, dst, kStep); });
    row("kvtiAverageBlock_MPEG4_8u_I", "avg_pixels8",
        [&] { kvtiAverageBlock_MPEG4_8u_I(src, kStep, dst, kStep); });
    row("kvtiReconMB_H263_I", "4x add_pixels_clamped", [&] { kvtiReconMB_H263_I(dst, residual, kStep); });
    row("kvtiReconBlock_H263_I", "add_pixels_clamped", [&] { kvtiReconBlock_H263_I(dst, residual, kStep); });
    for (int type = 0; type < 16; type += 4) {
        const std::string args = std::string(" ") + kPhase[type / 4 % 2 * 2 + type / 8];
        row("kvtiMC16x16_8u_C1" + args, type == 12 ? "put_pixels16_xy2 x 1.5" : "",
            [&] { kvtiMC16x16_8u_C1(src, kStep, residual, 32, dst, kStep, type, 0); });
    }
    for (int type = 0; type < 16; type += 4) {
        const std::string args = std::string(" ") + kPhase[type / 4 % 2 * 2 + type / 8];
        row("kvtiMC8x8_8u_C1" + args, "",
            [&] { kvtiMC8x8_8u_C1(src, kStep, residual, 16, dst, kStep, type, 0); });
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::string(argv[1]) == "--steady")
        run<16>();
    else
        run<4>();
    return 0;
}
