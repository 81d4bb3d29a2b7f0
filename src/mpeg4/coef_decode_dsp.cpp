#include "mpeg4/coef_decode_dsp.h"

namespace kvt {

void init_coef_decode_dsp(CoefDecodeDsp& d, unsigned) { c::init_coef_decode(d); }

}  // namespace kvt
