// Fuzz target for the block metrics: the input gives the phase codes (any value), thresholds,
// caller sums and the samples; every exported metric must agree with its reference kernel. The
// blocks sit in heap buffers sized exactly to what each phase may read (tight steps), so the
// sanitizer reports any read beyond the block and its one extra column and row.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kvtvc.h"
#include "me/edges_kernels.h"
#include "me/phase.h"
#include "me/sad_kernels.h"
#include "me/sqrdiff_kernels.h"
#include "me/variance_kernels.h"

namespace {

struct Input {
    const uint8_t* p;
    size_t n;
    uint8_t byte() {
        if (!n) return 0;
        --n;
        return *p++;
    }
    int32_t word() { return int32_t(uint32_t(byte()) | uint32_t(byte()) << 8 | uint32_t(byte()) << 16 | uint32_t(byte()) << 24); }
};

void expect(bool ok) {
    if (!ok) __builtin_trap();
}

// A block of the size a phase reads, filled from the input; the step is the width.
std::vector<uint8_t> block(Input& in, int phase, int size = 16) {
    std::vector<uint8_t> b(size_t(size + (phase & 8 ? 1 : 0)) * size_t(size + (phase & 4 ? 1 : 0)));
    for (uint8_t& v : b) v = in.byte();
    return b;
}

int width(int phase) { return 16 + (phase & 8 ? 1 : 0); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace kvt;
    Input in{data, size};
    const int type = in.word(), type_b = in.word();
    const uint8_t t = in.byte(), n = in.byte();
    const int32_t sums[4] = {in.word(), in.word(), in.word(), in.word()};
    const std::vector<uint8_t> cur = block(in, 0);
    const int pf = type & 12, pb = type_b & 12;
    const std::vector<uint8_t> fwd = block(in, pf), bwd = block(in, pb);
    int32_t got = 0, want = 0;
    with_phase(pf, [&](auto f) {
        constexpr int tf = decltype(f)::value;
        expect(kvtiSAD16x16_8u32s(cur.data(), 16, fwd.data(), width(pf), &got, type) == kvtStsOk);
        sad_16x16_ref<tf>(cur.data(), 16, fwd.data(), width(pf), &want);
        expect(got == want);
        if (is_phase_code(type)) {
            expect(kvtiSqrDiff16x16_8u32s(cur.data(), 16, fwd.data(), width(pf), type, &got) == kvtStsOk);
            sqrdiff_16x16_ref<tf>(cur.data(), 16, fwd.data(), width(pf), &want);
            expect(got == want);
            int32_t v[4], m[4], rv[4], rm[4];
            expect(kvtiVarMeanDiff16x16_8u32s_C1R(cur.data(), 16, fwd.data(), width(pf), sums, v, m, type) == kvtStsOk);
            varmeandiff_16x16_ref<tf>(cur.data(), 16, fwd.data(), width(pf), sums, rv, rm);
            for (int k = 0; k < 4; ++k) expect(v[k] == rv[k] && m[k] == rm[k]);
            expect(kvtiVarMeanDiff16x8_8u32s_C1R(cur.data(), 16, fwd.data(), width(pf), sums, v, m, type) == kvtStsOk);
            varmeandiff_16x8_ref<tf>(cur.data(), 16, fwd.data(), width(pf), sums, rv, rm);
            for (int k = 0; k < 2; ++k) expect(v[k] == rv[k] && m[k] == rm[k]);
        }
        with_phase(pb, [&](auto b) {
            expect(kvtiSqrDiff16x16B_8u32s(cur.data(), 16, fwd.data(), width(pf), type, bwd.data(), width(pb), type_b,
                                           &got) == kvtStsOk);
            sqrdiff_16x16b_ref<tf, decltype(b)::value>(cur.data(), 16, fwd.data(), width(pf), bwd.data(), width(pb),
                                                       &want);
            expect(got == want);
        });
    });
    const int p8 = type == 0 || type == 4 || type == 8 ? type : 12;  // the 8x8 SAD takes any other type as hh
    const std::vector<uint8_t> small = block(in, p8, 8);
    with_phase(p8, [&](auto p) {
        expect(kvtiSAD8x8_8u32s_C1R(cur.data(), 16, small.data(), 8 + (p8 & 8 ? 1 : 0), &got, type) == kvtStsOk);
        sad_8x8_ref<decltype(p)::value>(cur.data(), 16, small.data(), 8 + (p8 & 8 ? 1 : 0), &want);
        expect(got == want);
    });
    int32_t v, m, rv, rm;
    expect(kvtiVariance16x16_8u32s(cur.data(), 16, &v) == kvtStsOk);
    variance_16x16_ref(cur.data(), 16, &rv);
    expect(v == rv);
    expect(kvtiMeanAbsDev16x16_8u32s_C1R(cur.data(), 16, &v) == kvtStsOk);
    mean_abs_dev_16x16_ref(cur.data(), 16, &rv);
    expect(v == rv);
    expect(kvtiVarMean8x8_8u32s_C1R(cur.data(), 16, &v, &m) == kvtStsOk);
    varmean_8x8_8u_ref(cur.data(), 16, &rv, &rm);
    expect(v == rv && m == rm);
    const int16_t* words = reinterpret_cast<const int16_t*>(fwd.data());  // 8 rows of 16 bytes fit in any phase
    expect(kvtiVarMean8x8_16s32s_C1R(words, 16, &v, &m) == kvtStsOk);
    varmean_8x8_16s_ref(words, 16, &rv, &rm);
    expect(v == rv && m == rm);
    uint8_t flag = 9, want_flag = 7;
    expect(kvtiEdgesDetect16x16_8u_C1R(cur.data(), 16, t, n, &flag) == kvtStsOk);
    edges_16x16_ref(cur.data(), 16, t, n, &want_flag);
    expect(flag == want_flag);
    uint16_t q[16], rq[16];
    expect(kvtiSAD16x16Blocks4x4_8u16u(cur.data(), 16, fwd.data(), width(pf), q) == kvtStsOk);
    sad_16x16_blocks4x4_ref(cur.data(), 16, fwd.data(), width(pf), rq);
    for (int k = 0; k < 16; ++k) expect(q[k] == rq[k]);
    expect(kvtiSAD16x16Blocks8x8_8u16u(cur.data(), 16, fwd.data(), width(pf), q) == kvtStsOk);
    sad_16x16_blocks8x8_ref(cur.data(), 16, fwd.data(), width(pf), rq);
    for (int k = 0; k < 4; ++k) expect(q[k] == rq[k]);
    expect(kvtiSAD4x4_8u32s(cur.data(), 16, fwd.data(), width(pf), &got) == kvtStsOk);
    sad_4x4_ref(cur.data(), 16, fwd.data(), width(pf), &want);
    expect(got == want);
    return 0;
}
