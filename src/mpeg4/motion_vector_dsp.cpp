#include "mpeg4/motion_vector_dsp.h"

namespace kvt {

void init_motion_vector_dsp(MotionVectorDsp& d, unsigned) { c::init_motion_vector(d); }

}  // namespace kvt
