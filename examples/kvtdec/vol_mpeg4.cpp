// MPEG-4 visual headers above the VOP (ISO/IEC 14496-2 6.2.2, 6.2.3): the start-code dispatch,
// the visual object header and the video object layer header of a simple-profile stream.
#include "decoder.h"

#include <cstring>

namespace kvtdec {
namespace {

// Start codes (ISO/IEC 14496-2 Table 6-3), the byte after 00 00 01.
constexpr int kVisualObjectSequence = 0xB0;
constexpr int kVisualObject = 0xB5;
constexpr int kVop = 0xB6;
constexpr int kVolFirst = 0x20, kVolLast = 0x2F;

// Default weighting matrices (ISO/IEC 14496-2 6.3.3), raster order.
constexpr Kvt8u kDefaultIntraMatrix[64] = {8,  17, 18, 19, 21, 23, 25, 27, 17, 18, 19, 21, 23, 25, 27, 28,
                                           20, 21, 22, 23, 24, 26, 28, 30, 21, 22, 23, 24, 26, 28, 30, 32,
                                           22, 23, 24, 26, 28, 30, 32, 35, 23, 24, 26, 28, 30, 32, 35, 38,
                                           25, 26, 28, 30, 32, 35, 38, 41, 27, 28, 30, 32, 35, 38, 41, 45};
constexpr Kvt8u kDefaultInterMatrix[64] = {16, 17, 18, 19, 20, 21, 22, 23, 17, 18, 19, 20, 21, 22, 23, 24,
                                           18, 19, 20, 21, 22, 23, 24, 25, 19, 20, 21, 22, 23, 24, 26, 27,
                                           20, 21, 22, 23, 25, 26, 27, 28, 21, 22, 23, 24, 26, 27, 28, 30,
                                           22, 23, 24, 26, 27, 28, 30, 31, 23, 24, 25, 27, 28, 30, 31, 33};

[[noreturn]] void unsupported(const char* what) { fail("unsupported: %s", what); }

void marker(BitReader& br, const char* where) {
    if (!br.read_bit()) fail("missing marker bit in the %s", where);
}

// A loaded matrix: up to 64 weights in zigzag order; a 0 ends the list early and the last weight
// then fills the remaining positions (ISO/IEC 14496-2 6.3.3, load_*_quant_mat).
void read_matrix(BitReader& br, Kvt8u matrix[64]) {
    Kvt8u last = 0;
    for (int i = 0; i < 64; ++i) {
        const Kvt8u w = Kvt8u(br.read(8));
        if (w == 0) {
            if (i == 0) fail("quantization matrix starts with 0");
            for (; i < 64; ++i) matrix[_kvtClassicalZigzag[i]] = last;
            return;
        }
        matrix[_kvtClassicalZigzag[i]] = last = w;
    }
}

}  // namespace

// Reads headers until a VOP start code and decodes that VOP.
Decoder::Vop Decoder::decode_mpeg4_until_vop() {
    for (;;) {
        const size_t start = stream_.find_start_code(pos_);
        if (start >= stream_.size()) return Vop::End;
        const int code = stream_.data()[start + 3];
        const size_t end = stream_.find_start_code(start + 4);
        pos_ = end;
        mb_x_ = mb_y_ = -1;
        BitReader br(stream_.data() + start + 4, stream_.data() + end);
        if (code == kVop) {
            if (!vol_.valid) fail("VOP before any video object layer header");
            br_ = br;
            return decode_vop();
        }
        if (code >= kVolFirst && code <= kVolLast) {
            read_vol(br);
        } else if (code == kVisualObject) {
            read_visual_object(br);
        } else if (code == kVisualObjectSequence) {
            vo_verid_ = 1;
        }
        // Video object, user data, GOV, end of sequence and the rest carry nothing we need.
        if (br.overrun()) fail("header with start code 0x%02X is truncated", code);
    }
}

void Decoder::read_visual_object(BitReader& br) {
    vo_verid_ = 1;
    if (br.read_bit()) {  // is_visual_object_identifier
        vo_verid_ = int(br.read(4));
        br.skip(3);  // priority
    }
    if (br.read(4) != 1) unsupported("visual object type other than video");
}

void Decoder::read_vol(BitReader& br) {
    VolParams v;
    br.skip(1 + 8);  // random_accessible_vol, video_object_type_indication
    int verid = vo_verid_;
    if (br.read_bit()) {  // is_object_layer_identifier
        verid = int(br.read(4));
        br.skip(3);  // priority
    }
    if (br.read(4) == 15) br.skip(16);  // aspect_ratio_info, extended PAR
    if (br.read_bit()) {                // vol_control_parameters
        if (br.read(2) != 1) unsupported("chroma format other than 4:2:0");
        v.low_delay = br.read_bit();
        if (br.read_bit()) br.skip(79);  // vbv_parameters
    }
    if (br.read(2) != 0) unsupported("non-rectangular video object shape");
    marker(br, "VOL header");
    const int resolution = int(br.read(16));
    if (resolution == 0) fail("vop_time_increment_resolution is 0");
    v.time_increment_resolution = resolution;
    v.time_increment_bits = bits_to_count(resolution);
    marker(br, "VOL header");
    if (br.read_bit()) br.skip(v.time_increment_bits);  // fixed_vop_rate
    marker(br, "VOL header");
    v.width = int(br.read(13));
    marker(br, "VOL header");
    v.height = int(br.read(13));
    marker(br, "VOL header");
    if (v.width == 0 || v.height == 0) fail("VOL size %dx%d", v.width, v.height);
    if (br.read_bit()) unsupported("interlaced MPEG-4 video");
    if (!br.read_bit()) unsupported("MPEG-4 overlapped block motion compensation");
    if (br.read(verid == 1 ? 1 : 2)) unsupported("MPEG-4 sprites and global motion compensation");
    if (br.read_bit()) unsupported("MPEG-4 sample depths other than 8 bits");
    v.mpeg_quant = br.read_bit();
    std::memcpy(v.intra_matrix, kDefaultIntraMatrix, 64);
    std::memcpy(v.inter_matrix, kDefaultInterMatrix, 64);
    if (v.mpeg_quant) {
        if (br.read_bit()) read_matrix(br, v.intra_matrix);
        if (br.read_bit()) read_matrix(br, v.inter_matrix);
    }
    if (verid != 1 && br.read_bit()) unsupported("MPEG-4 quarter-sample motion compensation");
    if (!br.read_bit()) unsupported("MPEG-4 complexity estimation headers");
    v.resync_marker_disable = br.read_bit();
    if (br.read_bit()) unsupported("MPEG-4 data partitioning");
    if (verid != 1) {
        if (br.read_bit()) unsupported("MPEG-4 NEWPRED");
        if (br.read_bit()) unsupported("MPEG-4 reduced-resolution VOPs");
    }
    if (br.read_bit()) unsupported("MPEG-4 scalability");
    if (br.overrun()) fail("the VOL header is truncated");
    v.valid = true;
    vol_ = v;
    set_size(v.width, v.height);
}

}  // namespace kvtdec
