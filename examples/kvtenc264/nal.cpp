#include "nal.h"

namespace enc264 {

void append_nal(std::vector<uint8_t>& out, NalType type, int ref_idc, const std::vector<uint8_t>& rbsp) {
    static const uint8_t kStartCode[] = {0, 0, 0, 1};
    out.insert(out.end(), kStartCode, kStartCode + 4);
    out.push_back(static_cast<uint8_t>(ref_idc << 5 | type));
    // Two zero bytes followed by a byte of 0..3 would read as a start code prefix (or be
    // ambiguous with one): an emulation_prevention_three_byte goes between them (H.264 7.4.1).
    int zeros = 0;
    for (uint8_t b : rbsp) {
        if (zeros == 2 && b <= 3) {
            out.push_back(3);
            zeros = 0;
        }
        out.push_back(b);
        zeros = b == 0 ? zeros + 1 : 0;
    }
}

}  // namespace enc264
