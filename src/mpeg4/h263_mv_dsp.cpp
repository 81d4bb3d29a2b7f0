#include "mpeg4/h263_mv_dsp.h"

namespace kvt {

void init_h263_mv_dsp(H263MvDsp& d, unsigned) { c::init_h263_mv(d); }

}  // namespace kvt
