// MPEG-4 video packets (ISO/IEC 14496-2 6.2.5.2): a resync marker after byte-alignment stuffing,
// then the number of the packet's first macroblock and its quantizer, optionally followed by a
// copy of the VOP header fields.
#include "decoder.h"

#include <algorithm>

namespace kvtdec {
namespace {

// Stuffing before the marker: a 0 and then 1s up to the byte boundary, 1 to 8 bits.
int stuffing_bits(const BitReader& br) {
    const int n = br.bits_to_boundary();
    return n == 0 ? 8 : n;
}

// resync_marker: 16 zeros for I-VOPs, 15 + fcode zeros for P-VOPs, 15 + the larger fcode (at least
// 2) for B-VOPs, then a 1.
int marker_bits(const PictureParams& p) {
    return p.intra ? 17 : p.b ? 16 + std::max({p.fcode, p.fcode_backward, 2}) : 16 + p.fcode;
}

}  // namespace

bool Decoder::at_resync_marker() const {
    const int n = stuffing_bits(br_), len = marker_bits(pic_);
    const uint32_t stuffing = (1u << (n - 1)) - 1;
    return br_.peek(n + len) == ((stuffing << len) | 1);
}

void Decoder::read_video_packet_header(int mb_index) {
    BitReader& br = br_;
    br.skip(stuffing_bits(br) + marker_bits(pic_));
    // In a B-VOP the packet may start with macroblocks that have no bits (their co-located ones were
    // not coded), so its marker stands before the first macroblock that has some.
    const int first = int(br.read(bits_to_count(mb_cols_ * mb_rows_)));
    bool in_place = first == mb_index || (pic_.b && first < mb_index);
    for (int i = first; in_place && i < mb_index; ++i) in_place = mbs_[size_t(i)].kind == MbKind::Skipped;
    if (!in_place) fail("video packet starts at macroblock %d where %d was due", first, mb_index);
    quant_ = int(br.read(5));
    if (quant_ == 0) fail("quant_scale is 0 in a video packet header");
    if (br.read_bit()) {  // header_extension_code: a repeat of the VOP header fields
        while (br.read_bit())
            if (br.overrun()) fail("the video packet header is truncated");
        if (!br.read_bit()) fail("missing marker bit in a video packet header");
        br.skip(vol_.time_increment_bits);
        if (!br.read_bit()) fail("missing marker bit in a video packet header");
        if (int(br.read(2)) != (pic_.intra ? 0 : pic_.b ? 2 : 1))
            fail("video packet header changes the VOP type");
        pic_.intra_dc_vlc_thr = int(br.read(3));
        if (!pic_.intra && int(br.read(3)) != pic_.fcode)
            fail("video packet header changes vop_fcode_forward");
        if (pic_.b && int(br.read(3)) != pic_.fcode_backward)
            fail("video packet header changes vop_fcode_backward");
    }
    ++slice_;
    fwd_pred_ = bwd_pred_ = KvtMotionVec{0, 0};
}

}  // namespace kvtdec
