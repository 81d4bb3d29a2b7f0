// peer-job: our exported functions and FFmpeg's DSP functions doing a decoder's job, timed as
// runs of 64 calls on varied blocks (see scripts/peer-job, which builds this file against an
// FFmpeg source tree; nothing of it is part of the library).
//
// checkasm times four calls of one kernel with the same arguments, so it measures mostly how long
// one call's instructions take to retire; a decoder makes long runs of calls on blocks all over a
// picture, whose stores and loads then set the pace. Each row here is such a run, done as FFmpeg's
// decoders do it (the caller works out the source pointer from the vector and picks the function
// by its phase or mode; the H.264 levels arrive dequantized, at no cost to the peer) and as a
// caller of this library does it (one call per block, the function doing all of that itself).
// Figures: TSC ticks per call, the median of 2000 runs, each run between two stamps that wait for
// the stores to drain (mfence; lfence; rdtsc); ours and the peer alternate first.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

extern "C" {
#include "libavcodec/avcodec.h"
#include "libavcodec/codec_id.h"
#include "libavcodec/h264dsp.h"
#include "libavcodec/h264pred.h"
#include "libavcodec/hpeldsp.h"
#include "libavcodec/me_cmp.h"
void ff_add_pixels_clamped_sse2(const int16_t* block, uint8_t* pixels, ptrdiff_t line_size);
}
#include "kvtvc.h"

namespace {

constexpr int kStep = 384, kCalls = 64, kRuns = 2000;

alignas(64) uint8_t ref_plane[kStep * 128];
alignas(64) uint8_t dst_plane[kStep * 128];
alignas(64) int16_t levels[kCalls][256], work[kCalls][256];

uint64_t stamp() {
    uint32_t lo, hi;
    asm volatile("mfence\n\tlfence\n\trdtsc" : "=a"(lo), "=d"(hi)::"memory");
    return uint64_t(hi) << 32 | lo;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

// One row: ours(run) and peer(run) each make kCalls calls (each keeps what it reads from its
// captures in locals, which the calls cannot change: a capture is reloaded after every call);
// restore(ours_side) runs before each, untimed. Rows with mixed phases or modes give every run
// its own sequence, as a picture does (one repeated thousands of times, a predictor learns).
using Run = std::function<void(int run)>;
void row(
    const std::string& name, const Run& ours, const Run& peer,
    const std::function<void(bool)>& restore = [](bool) {}) {
    std::vector<double> a, b;
    for (int run = 0; run < kRuns; ++run)
        for (int side = 0; side < 2; ++side) {
            const bool ours_side = (side == 0) == (run % 2 == 0);
            restore(ours_side);
            const uint64_t t0 = stamp();
            (ours_side ? ours : peer)(run);
            const uint64_t t = stamp() - t0;
            (ours_side ? a : b).push_back(double(t) / kCalls);
        }
    const double x = median(a), y = median(b);
    std::printf("| %s | %.1f | %.1f | %.2f |\n", name.c_str(), x, y, x / y);
}

// Block positions of a run: 16 across, 4 down (n x n blocks), 32 samples in from the corner.
uint8_t* at(uint8_t* plane, int i, int n) { return plane + (32 + (i / 16) * n) * kStep + 32 + (i % 16) * n; }

const char* const kPhase[5] = {"mixed", "ff", "hf", "fh", "hh"};

// kRuns x kCalls half-sample vectors within +-8 samples; phase -1 mixes all four.
std::vector<KvtMotionVec> vectors(int phase) {
    std::vector<KvtMotionVec> v(kRuns * kCalls);
    for (KvtMotionVec& m : v) {
        int dx = rand() % 33 - 16, dy = rand() % 33 - 16;
        if (phase >= 0) dx = (dx & ~1) | (phase & 1), dy = (dy & ~1) | (phase >> 1);
        m = {int16_t(dx), int16_t(dy)};
    }
    return v;
}

void mpeg4_copies(const HpelDSPContext& c) {
    for (int n : {16, 8})
        for (int rc = 0; rc < 2; ++rc)
            for (int phase = -1; phase < 4; ++phase) {
                const std::vector<KvtMotionVec> mv = vectors(phase);
                const auto& table = rc ? c.put_no_rnd_pixels_tab : c.put_pixels_tab;
                const std::string name =
                    std::string(n == 16 ? "kvtiCopyMBHalfpel_MPEG4_8u" : "kvtiCopyBlockHalfpel_MPEG4_8u") +
                    " " + kPhase[phase + 1] + " rc" + std::to_string(rc);
                row(
                    name,
                    [&](int run) {
                        const KvtMotionVec* mvs = &mv[size_t(run) * kCalls];
                        const int n_ = n, rc_ = rc;  // locals: the calls cannot change them
                        for (int i = 0; i < kCalls; ++i) {
                            const uint8_t* src = at(ref_plane, i, n_);
                            uint8_t* dst = at(dst_plane, i, n_);
                            if (n_ == 16)
                                kvtiCopyMBHalfpel_MPEG4_8u(src, kStep, dst, kStep, &mvs[i], rc_);
                            else
                                kvtiCopyBlockHalfpel_MPEG4_8u(src, kStep, dst, kStep, &mvs[i], rc_);
                        }
                    },
                    [&](int run) {
                        const KvtMotionVec* mvs = &mv[size_t(run) * kCalls];
                        const int n_ = n;
                        for (int i = 0; i < kCalls; ++i) {
                            const int dx = mvs[i].dx, dy = mvs[i].dy;
                            const uint8_t* src = at(ref_plane, i, n_) + (dy >> 1) * kStep + (dx >> 1);
                            table[n_ == 16 ? 0 : 1][(dx & 1) | (dy & 1) << 1](at(dst_plane, i, n_), src,
                                                                              kStep, n_);
                        }
                    });
            }
}

// A motion search: the current block against reference positions around it, at one phase or
// mixed. sad(reference, horizontal half, vertical half) is one call; the sums keep them alive.
template <class Sad>
int search(const KvtMotionVec* mvs, Sad sad) {
    int sum = 0;
    for (int i = 0; i < kCalls; ++i) {
        const int dx = mvs[i].dx, dy = mvs[i].dy;
        sum += sad(ref_plane + (64 + (dy >> 1)) * kStep + 64 + (dx >> 1), dx & 1, dy & 1);
    }
    return sum;
}

void block_sads(const MECmpContext& c) {
    for (int n : {16, 8})
        for (int phase = -1; phase < 4; ++phase) {
            const std::vector<KvtMotionVec> mv = vectors(phase);
            const uint8_t* const cur = at(dst_plane, 0, 16);
            int sink = 0;
            row(
                std::string(n == 16 ? "kvtiSAD16x16_8u32s" : "kvtiSAD8x8_8u32s_C1R") + " " +
                    kPhase[phase + 1],
                [&](int run) {
                    sink += search(&mv[size_t(run) * kCalls], [n, cur](const uint8_t* ref, int hx, int hy) {
                        const int mode = hx << 3 | hy << 2;  // kvtMcHorHalf, kvtMcVertHalf
                        Kvt32s s;
                        if (n == 16)
                            kvtiSAD16x16_8u32s(cur, kStep, ref, kStep, &s, mode);
                        else
                            kvtiSAD8x8_8u32s_C1R(cur, kStep, ref, kStep, &s, mode);
                        return s;
                    });
                },
                [&](int run) {
                    const me_cmp_func* table = c.pix_abs[n == 16 ? 0 : 1];
                    sink += search(&mv[size_t(run) * kCalls],
                                   [n, cur, table](const uint8_t* ref, int hx, int hy) {
                                       return table[hx | hy << 1](nullptr, cur, ref, kStep, n);
                                   });
                });
            if (sink == 42) std::puts("");
        }
}

void averages_and_recon(const HpelDSPContext& c) {
    row(
        "kvtiAverageMB_MPEG4_8u (pDst = pSrc2)",
        [](int) {
            for (int i = 0; i < kCalls; ++i)
                kvtiAverageMB_MPEG4_8u(at(ref_plane, i, 16), kStep, at(dst_plane, i, 16), kStep,
                                       at(dst_plane, i, 16), kStep);
        },
        [&](int) {
            for (int i = 0; i < kCalls; ++i)
                c.avg_pixels_tab[0][0](at(dst_plane, i, 16), at(ref_plane, i, 16), kStep, 16);
        });
    const auto restore = [](bool) { std::memcpy(work, levels, sizeof work); };
    row(
        "kvtiReconMB_H263_I",
        [](int) {
            for (int i = 0; i < kCalls; ++i) kvtiReconMB_H263_I(at(dst_plane, i, 16), work[i], kStep);
        },
        [](int) {
            for (int i = 0; i < kCalls; ++i)
                for (int b = 0; b < 4; ++b)
                    ff_add_pixels_clamped_sse2(
                        work[i] + 64 * b, at(dst_plane, i, 16) + (b >> 1) * 8 * kStep + (b & 1) * 8, kStep);
        },
        restore);
}

// The H.264 levels at QP 28, dequantized for the peer as its decoder stores them.
int dequant_factor(int k) {
    static const int kLevelScale[3] = {16, 20, 25};  // QP 28: 28 % 6 = 4, then << (28 / 6 - 4)
    const int i = k / 4, j = k % 4;
    return kLevelScale[(i & 1) + (j & 1)] << 4;
}

void h264_residual(const H264DSPContext& d) {
    for (int ac = 1; ac >= 0; --ac) {
        int16_t dequantized[kCalls][16];
        for (int i = 0; i < kCalls; ++i) {
            std::memset(levels[i], 0, 32);
            levels[i][0] = int16_t(rand() % 9 - 4);
            for (int k = 0; ac && k < 5; ++k) levels[i][rand() % 16] = int16_t(rand() % 7 - 3);
            for (int k = 0; k < 16; ++k) dequantized[i][k] = int16_t(levels[i][k] * dequant_factor(k) >> 4);
        }
        row(
            std::string("kvtiDequantTransformResidualAndAdd_H264_16s_C1I ") + (ac ? "AC" : "DC-only"),
            [&](int) {
                const int ac_ = ac;
                for (int i = 0; i < kCalls; ++i)
                    kvtiDequantTransformResidualAndAdd_H264_16s_C1I(
                        at(dst_plane, i, 4), work[i], nullptr, at(dst_plane, i, 4), kStep, kStep, 28, ac_);
            },
            [&](int) {
                const auto idct = ac ? d.h264_idct_add : d.h264_idct_dc_add;
                for (int i = 0; i < kCalls; ++i) idct(at(dst_plane, i, 4), work[i], kStep);
            },
            [&](bool ours_side) {
                for (int i = 0; i < kCalls; ++i)
                    std::memcpy(work[i], ours_side ? levels[i] : dequantized[i], 32);
            });
    }
}

void h264_intra(const H264PredContext& h) {
    static const int k4x4[9] = {
        VERT_PRED,       HOR_PRED,      DC_PRED,        DIAG_DOWN_LEFT_PRED, DIAG_DOWN_RIGHT_PRED,
        VERT_RIGHT_PRED, HOR_DOWN_PRED, VERT_LEFT_PRED, HOR_UP_PRED};
    static const int k16x16[4] = {VERT_PRED8x8, HOR_PRED8x8, DC_PRED8x8, PLANE_PRED8x8};
    static const int kChroma[4] = {DC_PRED8x8, HOR_PRED8x8, VERT_PRED8x8, PLANE_PRED8x8};
    struct Size {
        const char* name;
        int n, modes;
        const int* peer;
    };
    for (const Size& s : {Size{"kvtiPredictIntra_4x4_H264_8u_C1IR", 4, 9, k4x4},
                          Size{"kvtiPredictIntra_16x16_H264_8u_C1IR", 16, 4, k16x16},
                          Size{"kvtiPredictIntraChroma8x8_H264_8u_C1IR", 8, 4, kChroma}})
        for (int mode = -1; mode < s.modes; ++mode) {
            std::vector<uint8_t> all_modes(kRuns * kCalls);
            for (uint8_t& m : all_modes) m = uint8_t(mode < 0 ? rand() % s.modes : mode);
            const auto ours = [&](int run) {
                const uint8_t* modes = &all_modes[size_t(run) * kCalls];
                const int n = s.n;
                for (int i = 0; i < kCalls; ++i) {
                    uint8_t* p = at(dst_plane, i, n);
                    if (n == 4)
                        kvtiPredictIntra_4x4_H264_8u_C1IR(p, kStep, modes[i], 0x63);
                    else if (n == 16)
                        kvtiPredictIntra_16x16_H264_8u_C1IR(p, kStep, modes[i], 0x23);
                    else
                        kvtiPredictIntraChroma8x8_H264_8u_C1IR(p, kStep, modes[i], 0x23);
                }
            };
            const auto peer = [&](int run) {
                const uint8_t* modes = &all_modes[size_t(run) * kCalls];
                const int n = s.n;
                const int* const peer_mode = s.peer;
                for (int i = 0; i < kCalls; ++i) {
                    uint8_t* p = at(dst_plane, i, n);
                    if (n == 4)
                        h.pred4x4[peer_mode[modes[i]]](p, p - kStep + 4, kStep);
                    else if (n == 16)
                        h.pred16x16[peer_mode[modes[i]]](p, kStep);
                    else
                        h.pred8x8[peer_mode[modes[i]]](p, kStep);
                }
            };
            row(std::string(s.name) + " " +
                    (mode < 0 ? std::string("mixed") : "mode " + std::to_string(mode)),
                ours, peer);
        }
}

}  // namespace

int main() {
    srand(1);
    for (uint8_t& v : ref_plane) v = uint8_t(rand());
    for (uint8_t& v : dst_plane) v = uint8_t(rand());
    for (auto& block : levels)
        for (int16_t& v : block) v = int16_t(rand() % 61 - 30);
    AVCodecContext avctx = {};
    avctx.flags = AV_CODEC_FLAG_BITEXACT;  // the exact half-sample SADs
    MECmpContext cmp;
    ff_me_cmp_init(&cmp, &avctx);
    HpelDSPContext hpel;
    ff_hpeldsp_init(&hpel, AV_CODEC_FLAG_BITEXACT);  // the exact no-rounding copies
    H264DSPContext dsp;
    ff_h264dsp_init(&dsp, 8, 1);
    H264PredContext pred;
    ff_h264_pred_init(&pred, AV_CODEC_ID_H264, 8, 1);
    std::printf("| row (runs of %d calls) | ours | peer | ours / peer |\n|---|---|---|---|\n", kCalls);
    block_sads(cmp);
    mpeg4_copies(hpel);
    averages_and_recon(hpel);
    h264_residual(dsp);
    h264_intra(pred);
}
