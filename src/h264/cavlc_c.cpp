// Portable CAVLC element collection. The walk is scalar by nature (each coefficient's role depends
// on the ones above it), so there is no vector tier.
#include "common/kernel.h"
#include "h264/cavlc_dsp.h"

namespace kvt::KVT_C_NS {

namespace {

// Walks n coefficients, highest frequency first: at(i) is the coefficient at scan position
// last - i. Up to three +-1 met before any other level are trailing ones (zeros between them do
// not end the collection); the zeros below the lowest coefficient count in total zeros only.
template <class At>
KvtStatus walk(At at, int n, const CavlcOut& out) {
    int ones = 0, signs = 0, coeffs = 0, run = 0, zeros = 0;
    bool collecting = true;
    for (int i = 0; i < n; ++i) {
        const int c = at(i);
        if (c == 0) {
            ++run;
            continue;
        }
        if (collecting && (c == 1 || c == -1)) {
            ++ones;
            signs = ((signs << 1) & 255) | (c < 0);
            collecting = ones < 3;
        } else {
            out.levels[coeffs - ones] = int16_t(c);
            collecting = false;
        }
        if (coeffs > 0) {
            out.runs[coeffs - 1] = uint8_t(run);
            zeros += run;
        }
        run = 0;
        ++coeffs;
    }
    *out.trailing_ones = uint8_t(ones);
    *out.trailing_one_signs = uint8_t(signs);
    *out.num_coeffs = uint8_t(coeffs);
    *out.total_zeros = uint8_t(zeros + run);
    return kvtStsOk;
}

KvtStatus block(const int16_t* coeffs, int first, const uint32_t* scan, int last, const CavlcOut& out) {
    return walk([&](int i) { return coeffs[scan[last - i]]; }, last - first + 1, out);
}

KvtStatus chroma_dc(const int16_t* coeffs, const CavlcOut& out) {
    return walk([&](int i) { return coeffs[3 - i]; }, 4, out);
}

}  // namespace

void init_cavlc(CavlcDsp& d) {
    d.block = block;
    d.chroma_dc = chroma_dc;
}

}  // namespace kvt::KVT_C_NS
