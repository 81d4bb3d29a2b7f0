// H.263 motion vectors: the MVD of Table 14 against the median predictor of section 6.1.1.
//
// Table 14 has the code words of the MPEG-4 difference code (magnitude, then sign) for -32..31
// half samples; the word for +32 is not in it. Each word stands for two differences 64 apart and
// the one that keeps the vector inside [-16, 15.5] is meant, which is the fcode-1 wrap.
#include "common/bits.h"
#include "common/kernel.h"
#include "mpeg4/h263_mv_dsp.h"
#include "mpeg4/mvd_code.h"

namespace kvt::KVT_C_NS {
namespace {

bool read_h263_mvd(ByteCursor& c, int* d) { return read_mvd_component(c, 0, d) && *d != 32; }

KvtStatus decode_mv(uint8_t** pp, int* pOffset, KvtMotionVec left, KvtMotionVec upper,
                    KvtMotionVec upper_right, KvtMotionVec* dst) {
    ByteCursor c{*pp, *pOffset};
    int dx, dy;
    if (!read_h263_mvd(c, &dx) || !read_h263_mvd(c, &dy)) return kvtStsBadMvdCode;
    c.store(pp, pOffset);
    *dst = KvtMotionVec{add_wrap_mv(median3(left.dx, upper.dx, upper_right.dx), dx, 1),
                        add_wrap_mv(median3(left.dy, upper.dy, upper_right.dy), dy, 1)};
    return kvtStsOk;
}

}  // namespace

void init_h263_mv(H263MvDsp& d) { d.decode_mv = decode_mv; }

}  // namespace kvt::KVT_C_NS
