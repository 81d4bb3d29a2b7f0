// NAL units in the Annex B byte stream format (H.264 7.3.1, Annex B).
#pragma once
#include <cstdint>
#include <vector>

namespace enc264 {

enum NalType { kNalSlice = 1, kNalIdrSlice = 5, kNalSps = 7, kNalPps = 8 };

// Appends a start code, the NAL header and the RBSP with emulation prevention bytes to out.
void append_nal(std::vector<uint8_t>& out, NalType type, int ref_idc, const std::vector<uint8_t>& rbsp);

}  // namespace enc264
