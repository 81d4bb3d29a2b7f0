// H.263 GOB layer (ITU-T H.263 5.2): the optional header at the start of every GOB but the first.
#include "decoder.h"

namespace kvtdec {

// At the first macroblock of GOB gob_number: reads its header when one is there (GBSC, possibly
// after GSTUF zeros up to the byte boundary) and returns whether it was.
bool Decoder::read_gob_header(int gob_number) {
    BitReader& br = br_;
    int stuffing = 0;
    if (br.peek(17) != 1) {
        stuffing = br.bits_to_boundary();
        if (stuffing == 0 || br.peek(stuffing + 17) != 1) return false;
    }
    br.skip(stuffing + 17);
    const int gn = int(br.read(5));
    if (gn != gob_number) fail("GOB header number %d where GOB %d was due", gn, gob_number);
    br.skip(2);  // GFID
    quant_ = int(br.read(5));
    if (quant_ == 0) fail("GQUANT is 0");
    return true;
}

}  // namespace kvtdec
