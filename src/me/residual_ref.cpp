// Reference kernels of the residual family, written sample by sample from the formulas.
#include <cstring>

#include "me/halfpel.h"
#include "me/residual_kernels.h"

namespace kvt {

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
template <int W, int H, int Type, bool Wide, bool WithPred>
struct GetDiffRef {
    static KvtStatus run(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int16_t* diff,
                         int diff_step, int16_t* pred, int pred_step, int rounding) {
        const HalfRound k = Wide ? round_wide(rounding) : round_narrow(rounding);
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
};

// Residual against the truncating average of two predictions, both in the narrow form.
template <int W, int H, int FwdType, int BwdType>
struct GetDiffBRef {
    static KvtStatus run(const uint8_t* cur, int cur_step, const uint8_t* fwd, int fwd_step,
                         const uint8_t* bwd, int bwd_step, int16_t* diff, int diff_step, int rounding) {
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
};

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

}  // namespace

const GetDiffTable get_diff_16x16_ref = make_get_diff_table<GetDiffRef, 16, 16, true>();
const GetDiffTable get_diff_16x8_ref = make_get_diff_table<GetDiffRef, 16, 8, true>();
const GetDiffTable get_diff_8x16_ref = make_get_diff_table<GetDiffRef, 8, 16, false>();
const GetDiffTable get_diff_8x8_ref = make_get_diff_table<GetDiffRef, 8, 8, false>();
const GetDiffTable get_diff_8x4_ref = make_get_diff_table<GetDiffRef, 8, 4, false>();

const GetDiffBTable get_diff_b_16x16_ref = make_get_diff_b_table<GetDiffBRef, 16, 16>();
const GetDiffBTable get_diff_b_16x8_ref = make_get_diff_b_table<GetDiffBRef, 16, 8>();
const GetDiffBTable get_diff_b_8x16_ref = make_get_diff_b_table<GetDiffBRef, 8, 16>();
const GetDiffBTable get_diff_b_8x8_ref = make_get_diff_b_table<GetDiffBRef, 8, 8>();
const GetDiffBTable get_diff_b_8x4_ref = make_get_diff_b_table<GetDiffBRef, 8, 4>();

KvtStatus get_diff_4x4_ref(const uint8_t* cur, int cur_step, const uint8_t* ref, int ref_step, int16_t* diff,
                           int diff_step) {
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            put16(diff, diff_step, x, y, row_of(cur, cur_step, y)[x] - row_of(ref, ref_step, y)[x]);
    return kvtStsOk;
}

KvtStatus sums_diff_16x16_ref(const uint8_t* cur, int cur_step, const uint8_t* pred, int pred_step,
                              int16_t* sums, int16_t* diff) {
    return diff ? sums_diff<16, true>(cur, cur_step, pred, pred_step, sums, diff)
                : sums_diff<16, false>(cur, cur_step, pred, pred_step, sums, nullptr);
}

KvtStatus sums_diff_8x8_ref(const uint8_t* cur, int cur_step, const uint8_t* pred, int pred_step,
                            int16_t* sums, int16_t* diff) {
    return diff ? sums_diff<8, true>(cur, cur_step, pred, pred_step, sums, diff)
                : sums_diff<8, false>(cur, cur_step, pred, pred_step, sums, nullptr);
}

}  // namespace kvt
