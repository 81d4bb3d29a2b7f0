#include "mpeg4/mb_header_dsp.h"

namespace kvt {

void init_mb_header_dsp(MbHeaderDsp& d, unsigned) { c::init_mb_header(d); }

}  // namespace kvt
