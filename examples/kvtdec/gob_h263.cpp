// H.263 GOB layer (ITU-T H.263 5.2): the optional header at the start of every GOB but the first;
// and in the slice structured mode (Annex K) the slice header that may precede any macroblock.
#include "decoder.h"

namespace kvtdec {

// At the first macroblock of GOB gob_number: reads its header when one is there (GBSC, possibly
// after GSTUF zeros up to the byte boundary) and returns whether it was.
bool Decoder::read_gob_header(int gob_number) {
    BitReader& br = br_;
    if (!skip_start_code()) return false;
    const int gn = int(br.read(5));
    if (gn != gob_number) fail("GOB header number %d where GOB %d was due", gn, gob_number);
    br.skip(2);  // GFID
    quant_ = int(br.read(5));
    if (quant_ == 0) fail("GQUANT is 0");
    return true;
}

// Macroblock address bits (H.263 Table K.2), by the number of macroblocks in the picture.
int Decoder::mba_bits() const {
    static const int kLimits[6] = {48, 99, 396, 1584, 6336, 9216}, kBits[6] = {6, 7, 9, 11, 13, 14};
    const int count = mb_cols_ * mb_rows_;
    for (int i = 0; i < 5; ++i)
        if (count <= kLimits[i]) return kBits[i];
    return kBits[5];
}

// Before macroblock mb_index of a picture in the slice structured mode: reads the slice header
// (SSC, SEPB1, MBA, SEPB2 in pictures of more than 1583 macroblocks, SQUANT, SEPB3, GFID) when
// one is there and returns whether it was.
bool Decoder::read_slice_header(int mb_index) {
    BitReader& br = br_;
    if (!skip_start_code()) return false;
    if (!br.read_bit()) fail("SEPB1 is not 1");
    const int mba = int(br.read(mba_bits()));
    if (mba != mb_index) fail("slice header for macroblock %d where %d was due", mba, mb_index);
    if (mb_cols_ * mb_rows_ > 1583 && !br.read_bit()) fail("SEPB2 is not 1");
    quant_ = int(br.read(5));
    if (quant_ == 0) fail("SQUANT is 0");
    if (!br.read_bit()) fail("SEPB3 is not 1");
    br.skip(2);  // GFID
    return true;
}

// Skips a GOB or slice start code (16 zeros and a 1), possibly after stuffing zeros up to the byte
// boundary, when one is at the cursor.
bool Decoder::skip_start_code() {
    int stuffing = 0;
    if (br_.peek(17) != 1) {
        stuffing = br_.bits_to_boundary();
        if (stuffing == 0 || br_.peek(stuffing + 17) != 1) return false;
    }
    br_.skip(stuffing + 17);
    return true;
}

}  // namespace kvtdec
