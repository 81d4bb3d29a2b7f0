// SSSE3 H.263-method inverse quantizers: PSIGNW gives the signed q' offset (0 for a zero level) in
// one instruction, four fewer than SSE2 per eight coefficients.
#include <tmmintrin.h>

#include "mpeg4/quant_inv_simd.h"

namespace kvt::ssse3 {

namespace {

using namespace kvt::simd;

struct OffsetSsse3 {
    static __m128i apply(__m128i q, __m128i level) { return _mm_sign_epi16(q, level); }
};

}  // namespace

void init_quant_inv(QuantInvDsp& d) {
    d.h263 = h263_kernel<Run128<OffsetSsse3>>;
    d.h263_intra = h263_intra_kernel<Run128<OffsetSsse3>>;
    d.h263_intradc = h263_intradc_kernel<Run128<OffsetSsse3>>;
}

}  // namespace kvt::ssse3
