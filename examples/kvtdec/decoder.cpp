// The decoder's top level: stream recognition, picture bookkeeping and error context.
#include "decoder.h"

#include <cstdarg>
#include <cstdio>

namespace kvtdec {

void fail(const char* format, ...) {
    char text[256];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    throw DecodeError(text);
}

Decoder::Decoder(Stream& stream, int max_size) : stream_(stream), max_size_(max_size) {
    // MPEG-4 streams open with a 00 00 01 start code, H.263 ones (and MPEG-4 short-header ones)
    // with a picture start code; whichever comes first decides.
    const size_t mpeg4 = stream_.find_start_code(0);
    size_t h263 = stream_.find_h263_start(0);
    while (h263 < stream_.size() && !stream_.is_h263_picture_start(h263))
        h263 = stream_.find_h263_start(h263 + 3);
    if (mpeg4 >= stream_.size() && h263 >= stream_.size())
        throw DecodeError("no H.263 picture start code and no MPEG-4 start code in the input");
    codec_ = mpeg4 < h263 ? Codec::Mpeg4 : Codec::H263;
    pos_ = codec_ == Codec::Mpeg4 ? mpeg4 : h263;
}

const char* Decoder::codec_name() const { return codec_ == Codec::Mpeg4 ? "MPEG-4 visual" : "H.263"; }

bool Decoder::decode_next() {
    if (codec_ == Codec::Mpeg4) return next_mpeg4_picture();
    if (!decode_h263_picture()) return false;
    shown_ = &frames_.newest();
    return true;
}

// Display order: B-VOPs at once; an anchor once the next anchor has been decoded (the B-VOPs
// between them come first), or at the end of the stream. Low-delay streams show every VOP at once.
bool Decoder::next_mpeg4_picture() {
    for (;;) {
        switch (decode_mpeg4_until_vop()) {
            case Vop::End:
                if (!held_) return false;
                held_ = false;
                shown_ = &frames_.newest();
                return true;
            case Vop::B:
                shown_ = &frames_.b_picture();
                return true;
            case Vop::Anchor:
                if (vol_.low_delay || held_) {
                    shown_ = vol_.low_delay ? &frames_.newest() : &frames_.older();
                    return true;
                }
                held_ = true;
                break;
            case Vop::NotCoded:  // shown again where that can be done in order
                if (vol_.low_delay && shown_) return true;
                break;
        }
    }
}

std::string Decoder::where() const {
    std::string s = "frame " + std::to_string(decoded_);
    if (mb_x_ < 0) return s + ", header";
    return s + ", macroblock " + std::to_string(mb_y_ * mb_cols_ + mb_x_) + " (x " + std::to_string(mb_x_) +
           ", y " + std::to_string(mb_y_) + ")";
}

void Decoder::report_bad_code(KvtStatus status, const char* what) const {
    // The zero padding after the data is no valid code, so a stream cut short fails on it.
    if (br_.bits_left() < 32) fail("the coded data ends inside this macroblock");
    if (pic_.mq)  // the library's H.263 readers stop at levels of +-127
        fail("invalid %s (status %d); Annex T coefficients beyond +-127 are not supported", what,
             int(status));
    fail("invalid %s (status %d)", what, int(status));
}

void Decoder::set_size(int width, int height) {
    if (width > max_size_ || height > max_size_)
        fail("picture size %dx%d is larger than %dx%d", width, height, max_size_, max_size_);
    if (width == width_ && height == height_) return;
    width_ = width;
    height_ = height;
    mb_cols_ = (width + 15) / 16;
    mb_rows_ = (height + 15) / 16;
    frames_.resize(mb_cols_, mb_rows_);
    mbs_.assign(size_t(mb_cols_) * mb_rows_, MbInfo{});
    intra_state_.assign(mbs_.size() * 6, IntraBlockState{});
}

void Decoder::start_picture() {
    quant_ = pic_.quant;
    slice_ = 0;
    pending_[0].mb_x = pending_[1].mb_x = -1;
    if (pic_.b) {  // a B-picture leaves the macroblock state of its backward reference alone
        cur_ = &frames_.b_picture();
        ref_ = &frames_.older();
        bwd_ref_ = &frames_.newest();
        return;
    }
    for (MbInfo& m : mbs_) m.slice = -1;
    cur_ = &frames_.next_anchor();
    ref_ = &frames_.newest();
}

void Decoder::finish_picture() {
    mb_x_ = mb_y_ = -1;
    if (!pic_.b) frames_.finish_anchor();
    ++decoded_;
}

}  // namespace kvtdec
