#include "transform/dct_dsp.h"
namespace kvt::avx2 {
void init_dct(DctDsp&) {}
}  // namespace kvt::avx2
