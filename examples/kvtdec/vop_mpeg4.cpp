// MPEG-4 VOP layer (ISO/IEC 14496-2 6.2.5): the VOP header and the VOP's macroblocks, in raster
// order, with a video packet wherever a resync marker stands between two macroblocks.
#include "decoder.h"

namespace kvtdec {
namespace {

[[noreturn]] void unsupported(const char* what) { fail("unsupported: %s", what); }

}  // namespace

void Decoder::read_vop_header(BitReader& br, bool& coded) {
    const int type = int(br.read(2));
    if (type == 2) unsupported("MPEG-4 B-VOPs");
    if (type == 3) unsupported("MPEG-4 S-VOPs (sprites)");
    PictureParams p;
    p.intra = type == 0;
    while (br.read_bit())  // modulo_time_base
        if (br.overrun()) fail("the VOP header is truncated");
    if (!br.read_bit()) fail("missing marker bit before vop_time_increment");
    br.skip(vol_.time_increment_bits);
    if (!br.read_bit()) fail("missing marker bit after vop_time_increment");
    coded = br.read_bit();
    if (!coded) return;
    if (!p.intra) p.rounding = br.read_bit();
    p.intra_dc_vlc_thr = int(br.read(3));
    p.quant = int(br.read(5));
    if (p.quant == 0) fail("vop_quant is 0");
    if (!p.intra) {
        p.fcode = int(br.read(3));
        if (p.fcode == 0) fail("vop_fcode_forward is 0");
    }
    if (br.overrun()) fail("the VOP header is truncated");
    pic_ = p;
}

void Decoder::decode_vop() {
    bool coded = false;
    read_vop_header(br_, coded);
    if (!coded) {  // the previous picture is shown again
        ++decoded_;
        return;
    }
    start_picture();
    const int count = mb_cols_ * mb_rows_;
    for (int i = 0; i < count; ++i) {
        mb_x_ = i % mb_cols_;
        mb_y_ = i / mb_cols_;
        if (i > 0 && !vol_.resync_marker_disable && at_resync_marker()) read_video_packet_header(i);
        decode_mpeg4_mb(mb_x_, mb_y_);
        if (br_.overrun()) fail("the VOP data ends inside this macroblock");
    }
    finish_picture();
}

}  // namespace kvtdec
