// MPEG-4 VOP layer (ISO/IEC 14496-2 6.2.5): the VOP header and the VOP's macroblocks, in raster
// order, with a video packet wherever a resync marker stands between two macroblocks.
#include "decoder.h"

namespace kvtdec {
namespace {

[[noreturn]] void unsupported(const char* what) { fail("unsupported: %s", what); }

}  // namespace

void Decoder::read_vop_header(BitReader& br, bool& coded) {
    const int type = int(br.read(2));
    if (type == 3) unsupported("MPEG-4 S-VOPs (sprites)");
    PictureParams p;
    p.intra = type == 0;
    p.b = type == 2;
    if (p.b && vol_.low_delay) fail("B-VOP in a low-delay video object layer");
    int seconds = 0;  // modulo_time_base
    while (br.read_bit())
        if (++seconds > 3600) fail("invalid modulo_time_base");
    if (!br.read_bit()) fail("missing marker bit before vop_time_increment");
    const int64_t increment = br.read(vol_.time_increment_bits);
    if (!br.read_bit()) fail("missing marker bit after vop_time_increment");
    // Anchors count their seconds from the previous anchor, B-VOPs from the anchor before that.
    const int64_t resolution = vol_.time_increment_resolution;
    if (!p.b) {
        last_time_base_ = time_base_;
        time_base_ += seconds;
        const int64_t time = time_base_ * resolution + increment;
        trd_ = int(time - anchor_time_);
        anchor_time_ = time;
    } else {
        trb_ = int((last_time_base_ + seconds) * resolution + increment - (anchor_time_ - trd_));
    }
    coded = br.read_bit();
    if (!coded) return;
    if (type == 1) p.rounding = br.read_bit();
    p.intra_dc_vlc_thr = int(br.read(3));
    p.quant = int(br.read(5));
    if (p.quant == 0) fail("vop_quant is 0");
    if (!p.intra) {
        p.fcode = int(br.read(3));
        if (p.fcode == 0) fail("vop_fcode_forward is 0");
    }
    if (p.b) {
        p.fcode_backward = int(br.read(3));
        if (p.fcode_backward == 0) fail("vop_fcode_backward is 0");
    }
    if (br.overrun()) fail("the VOP header is truncated");
    pic_ = p;
}

Decoder::Vop Decoder::decode_vop() {
    bool coded = false;
    read_vop_header(br_, coded);
    if (!coded) {
        ++decoded_;
        return Vop::NotCoded;
    }
    start_picture();
    const int count = mb_cols_ * mb_rows_;
    for (int i = 0; i < count; ++i) {
        mb_x_ = i % mb_cols_;
        mb_y_ = i / mb_cols_;
        // A B-VOP macroblock whose co-located one was not coded has no bits: a resync marker
        // there belongs to a later macroblock.
        const bool no_bits = pic_.b && mb(mb_x_, mb_y_).kind == MbKind::Skipped;
        if (i > 0 && !vol_.resync_marker_disable && !no_bits && at_resync_marker())
            read_video_packet_header(i);
        if (pic_.b)
            decode_mpeg4_b_mb(mb_x_, mb_y_);
        else
            decode_mpeg4_mb(mb_x_, mb_y_);
        if (br_.overrun()) fail("the VOP data ends inside this macroblock");
    }
    const bool b = pic_.b;
    finish_picture();
    return b ? Vop::B : Vop::Anchor;
}

}  // namespace kvtdec
