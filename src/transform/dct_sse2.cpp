#include "transform/dct_dsp.h"
namespace kvt::sse2 {
void init_dct(DctDsp&) {}
}  // namespace kvt::sse2
