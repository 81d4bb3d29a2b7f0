// H.263 picture layer (ITU-T H.263 5.1): the picture header, including the version 2 form with
// PLUSPTYPE, and the loop over the GOBs of one picture.
#include "decoder.h"

namespace kvtdec {
namespace {

struct SourceFormat {
    int width, height;
};
// Source formats 1..5 of PTYPE bits 6-8: sub-QCIF, QCIF, CIF, 4CIF, 16CIF.
constexpr SourceFormat kFormats[6] = {{0, 0}, {128, 96}, {176, 144}, {352, 288}, {704, 576}, {1408, 1152}};

[[noreturn]] void unsupported(const char* what) { fail("unsupported: %s", what); }

// Macroblock rows per GOB (H.263 5.2.1 and, for custom formats, 5.1.5).
int gob_rows_for(int height) { return height <= 400 ? 1 : height <= 800 ? 2 : 4; }

}  // namespace

bool Decoder::decode_h263_picture() {
    size_t start = stream_.find_h263_start(pos_);
    while (start < stream_.size() && !stream_.is_h263_picture_start(start))  // end of sequence
        start = stream_.find_h263_start(start + 3);
    if (start >= stream_.size()) return false;
    const size_t end = stream_.find_h263_start(start + 3);
    pos_ = end;

    mb_x_ = mb_y_ = -1;
    br_ = BitReader(stream_.data() + start, stream_.data() + end);
    read_h263_picture_header(br_);
    if (br_.overrun()) fail("the picture header is truncated");
    start_picture();

    const int count = mb_cols_ * mb_rows_;
    for (int i = 0; i < count; ++i) {
        const int x = i % mb_cols_, y = i / mb_cols_;
        mb_x_ = x;
        mb_y_ = y;
        if (i > 0 && (pic_.slices ? read_slice_header(i)
                                  : x == 0 && y % gob_rows_ == 0 && read_gob_header(y / gob_rows_)))
            ++slice_;
        decode_h263_mb(x, y);
        if (br_.overrun()) fail("the picture data ends inside this macroblock");
        if (pic_.obmc && x == mb_cols_ - 1) reconstruct_pending(mb_cols_);
    }
    finish_picture();
    return true;
}

void Decoder::read_h263_picture_header(BitReader& br) {
    br.skip(22 + 8);  // PSC, TR
    if (br.read(2) != 2) fail("PTYPE does not start with 1 0");
    br.skip(3);  // split screen, document camera, freeze picture release
    int format = int(br.read(3));
    PictureParams p;
    if (format == 7) {
        read_plusptype(br, format);
        p = pic_;
    } else {
        if (format == 0 || format == 6) fail("reserved source format %d", format);
        p.intra = !br.read_bit();
        p.umv = br.read_bit();
        if (br.read_bit()) unsupported("H.263 Annex E (syntax-based arithmetic coding)");
        p.obmc = br.read_bit();
        if (br.read_bit()) unsupported("H.263 Annex G (PB-frames)");
        if (p.umv) unsupported("H.263 Annex D without PLUSPTYPE");
        p.quant = int(br.read(5));
        if (br.read_bit()) unsupported("continuous presence multipoint");
        set_size(kFormats[format].width, kFormats[format].height);
        gob_rows_ = gob_rows_for(height_);
    }
    if (p.quant == 0) fail("PQUANT is 0");
    while (br.read_bit()) br.skip(8);  // PEI, PSUPP
    pic_ = p;
    if (p.slices) {  // the first slice's header: SEPB1, MBA 0, SEPB2
        if (!br.read_bit() || br.read(mba_bits()) != 0 || !br.read_bit()) fail("invalid first slice header");
    }
}

// PLUSPTYPE and the fields it announces (H.263 5.1.4 to 5.1.19), as far as a decoder of I- and
// P-pictures with Annexes D, F, I, K and T needs them.
void Decoder::read_plusptype(BitReader& br, int& format) {
    const int ufep = int(br.read(3));
    if (ufep > 1) fail("invalid UFEP %d", ufep);
    if (ufep == 1) {  // OPPTYPE
        format = int(br.read(3));
        if (format == 0 || format == 7) fail("reserved source format %d", format);
        plus_custom_pcf_ = br.read_bit();
        plus_umv_ = br.read_bit();
        if (br.read_bit()) unsupported("H.263 Annex E (syntax-based arithmetic coding)");
        plus_obmc_ = br.read_bit();
        plus_aic_ = br.read_bit();
        if (br.read_bit()) unsupported("H.263 Annex J (deblocking filter)");
        plus_slices_ = br.read_bit();
        if (br.read_bit()) unsupported("H.263 Annex N (reference picture selection)");
        if (br.read_bit()) unsupported("H.263 Annex R (independent segment decoding)");
        if (br.read_bit()) unsupported("H.263 Annex S (alternative inter VLC)");
        plus_mq_ = br.read_bit();
        if (br.read(4) != 8) fail("OPPTYPE bits 15-18 are not 1 0 0 0");
        plus_format_ = format;
    } else {
        if (plus_format_ == 0) fail("PLUSPTYPE without UFEP in the first picture");
        format = plus_format_;
    }
    // MPPTYPE
    const int type = int(br.read(3));
    if (type > 1) unsupported("H.263 B, EI, EP or improved PB pictures");
    if (br.read_bit()) unsupported("H.263 Annex P (reference picture resampling)");
    if (br.read_bit()) unsupported("H.263 Annex Q (reduced-resolution update)");
    pic_.intra = type == 0;
    pic_.rounding = br.read_bit();
    if (br.read(3) != 1) fail("MPPTYPE bits 7-9 are not 0 0 1");
    if (br.read_bit()) unsupported("continuous presence multipoint");

    if (ufep == 1 && format == 6) {  // CPFMT
        const int aspect = int(br.read(4));
        const int width = (int(br.read(9)) + 1) * 4;
        if (!br.read_bit()) fail("CPFMT bit 14 is not 1");
        const int height = int(br.read(9)) * 4;
        if (height == 0) fail("custom picture height 0");
        if (aspect == 15) br.skip(16);  // EPAR
        set_size(width, height);
    } else if (ufep == 1) {
        set_size(kFormats[format].width, kFormats[format].height);
    }
    gob_rows_ = gob_rows_for(height_);
    if (plus_custom_pcf_) br.skip(ufep == 1 ? 8 + 2 : 2);  // CPCFC, ETR
    if (ufep == 1 && plus_umv_) {                          // UUI: 1 limited, 01 unlimited; both decode alike
        if (!br.read_bit() && !br.read_bit()) fail("invalid UUI");
    }
    if (ufep == 1 && plus_slices_ && br.read(2) != 0)  // SSS
        unsupported("H.263 Annex K rectangular slices or arbitrary slice order");
    pic_.umv = pic_.umv_plus = plus_umv_;
    pic_.slices = plus_slices_;
    pic_.aic = plus_aic_;
    pic_.mq = plus_mq_;
    pic_.obmc = plus_obmc_;
    pic_.quant = int(br.read(5));
}

}  // namespace kvtdec
