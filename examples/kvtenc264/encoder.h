// The picture loop: one slice per picture, IDR pictures every keyint pictures and P pictures
// predicted from the previous one between them, at a fixed QP.
#pragma once
#include <cstdint>
#include <vector>

#include "frame_state.h"
#include "params.h"
#include "picture.h"

namespace enc264 {

struct EncoderConfig {
    int width = 0, height = 0;  // visible size, even
    int qp = 26;
    int keyint = 250;
};

class Encoder {
public:
    explicit Encoder(const EncoderConfig& cfg);
    // An empty input picture of the coded size, for the reader to fill.
    Picture new_picture() const { return Picture(sp_.mb_cols, sp_.mb_rows, kBorder); }
    // Codes one picture and appends its NAL units (with the parameter sets before an IDR) to out.
    void encode(const Picture& src, std::vector<uint8_t>& out);
    // The decoder's picture for the last encoded one (deblocked).
    const Picture& reconstruction() const { return ref_; }

private:
    static constexpr int kBorder = 64;

    void code_macroblock(int mbx, int mby, bool p_slice, MbCode& code);
    bool try_code_macroblock(int mbx, int mby, bool p_slice, int qp, MbCode& code);

    EncoderConfig cfg_;
    StreamParams sp_;
    Picture rec_, ref_;
    RefLuma ref_luma_;
    FrameState fs_;
    int frame_index_ = 0, frame_num_ = 0, idr_count_ = 0;
};

}  // namespace enc264
