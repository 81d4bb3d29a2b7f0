#include "core/vector_dsp.h"

#include "common/kernel.h"

namespace kvt {

void init_vector_dsp(VectorDsp& d, unsigned flags) {
    c::init_vector(d);
    KVT_IF_TIER(flags, sse2, init_vector(d));
    KVT_IF_TIER(flags, avx2, init_vector(d));
}

}  // namespace kvt
