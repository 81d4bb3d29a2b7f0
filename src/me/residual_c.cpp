// Portable kernels of the residual family, written sample by sample from the formulas.
#include <cstring>

#include "common/kernel.h"
#include "me/halfpel.h"
#include "me/me_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

inline const uint8_t* row_of(const uint8_t* base, int step, int y) {
    return base + static_cast<intptr_t>(y) * step;
}

// 16-bit outputs are addressed with byte steps, which may be odd: store through memcpy.
inline void put16(int16_t* base, int step, int x, int y, int v) {
    const int16_t s = static_cast<int16_t>(v);
    std::memcpy(reinterpret_cast<uint8_t*>(base) + static_cast<intptr_t>(y) * step + 2 * x, &s, sizeof s);
}

// Residual against one half-sample prediction; 16-wide blocks use the wide rounding form.
template <int W, int H, int Type, bool WithPred>
KvtStatus get_diff(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int16_t* diff,
                   int diff_step, int16_t* pred, int pred_step, int rounding) {
    const HalfRound k = W == 16 ? round_wide(rounding) : round_narrow(rounding);
    for (int y = 0; y < H; ++y) {
        const uint8_t* c = row_of(cur, cur_step, y);
        for (int x = 0; x < W; ++x) {
            const int p = halfpel_at(ref, ref_step, x, y, Type, k);
            put16(diff, diff_step, x, y, c[x] - p);
            if constexpr (WithPred) put16(pred, pred_step, x, y, p);
        }
    }
    return kvtStsOk;
}

// Residual against the truncating average of two predictions, both in the narrow form.
template <int W, int H, int FwdType, int BwdType>
KvtStatus get_diff_b(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step, const uint8_t* bwd,
                     int bwd_step, int16_t* diff, int diff_step, int rounding) {
    const HalfRound k = round_narrow(rounding);
    for (int y = 0; y < H; ++y) {
        const uint8_t* c = row_of(cur, cur_step, y);
        for (int x = 0; x < W; ++x) {
            const int f = halfpel_at(fwd, fwd_step, x, y, FwdType, k);
            const int b = halfpel_at(bwd, bwd_step, x, y, BwdType, k);
            put16(diff, diff_step, x, y, c[x] - ((f + b) >> 1));
        }
    }
    return kvtStsOk;
}

// 4x4 integer-position residual.
KvtStatus get_diff4x4(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int16_t* diff,
                      int diff_step) {
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            put16(diff, diff_step, x, y, row_of(cur, cur_step, y)[x] - row_of(ref, ref_step, y)[x]);
    return kvtStsOk;
}

// Sums of the N/4 x N/4 sub-blocks of 4x4, raster order; tile k of the residual holds sub-block
// k row-major (16 values).
template <int N, bool WithDiff>
KvtStatus sums_diff(const uint8_t* cur, int cur_step, const uint8_t* pred, int pred_step, int16_t* sums,
                    int16_t* diff) {
    constexpr int kPerRow = N / 4;
    for (int k = 0; k < kPerRow * kPerRow; ++k) {
        const int y0 = k / kPerRow * 4, x0 = k % kPerRow * 4;
        int sum = 0;
        for (int j = 0; j < 4; ++j) {
            for (int i = 0; i < 4; ++i) {
                const int r = row_of(cur, cur_step, y0 + j)[x0 + i] - row_of(pred, pred_step, y0 + j)[x0 + i];
                sum += r;
                if constexpr (WithDiff) diff[k * 16 + j * 4 + i] = static_cast<int16_t>(r);
            }
        }
        sums[k] = static_cast<int16_t>(sum);
    }
    return kvtStsOk;
}

template <int N>
KvtStatus sums_diff_n(const uint8_t* cur, int cur_step, const uint8_t* pred, int pred_step, int16_t* sums,
                      int16_t* diff) {
    return diff ? sums_diff<N, true>(cur, cur_step, pred, pred_step, sums, diff)
                : sums_diff<N, false>(cur, cur_step, pred, pred_step, sums, nullptr);
}

// One size's row of each table.
template <int W, int H>
void fill_size(GetDiffFn (&row)[8], GetDiffBFn (&row_b)[16]) {
    fill_slots(row, [](auto i) {
        constexpr DiffSlot s = diff_slot_of(i);
        return get_diff<W, H, s.type, s.pred>;
    });
    fill_slots(row_b, [](auto i) {
        constexpr PhasePair s = pair_of(i);
        return get_diff_b<W, H, s.fwd, s.bwd>;
    });
}

}  // namespace

void init_residual(MeDsp& d) {
    fill_size<16, 16>(d.get_diff[k16x16], d.get_diff_b[k16x16]);
    fill_size<16, 8>(d.get_diff[k16x8], d.get_diff_b[k16x8]);
    fill_size<8, 16>(d.get_diff[k8x16], d.get_diff_b[k8x16]);
    fill_size<8, 8>(d.get_diff[k8x8], d.get_diff_b[k8x8]);
    fill_size<8, 4>(d.get_diff[k8x4], d.get_diff_b[k8x4]);
    d.get_diff4x4 = get_diff4x4;
    d.sums_diff16x16 = sums_diff_n<16>;
    d.sums_diff8x8 = sums_diff_n<8>;
}

}  // namespace kvt::KVT_C_NS
