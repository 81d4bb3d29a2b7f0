// Sequence and picture parameter sets and slice headers of a constrained-baseline stream
// (H.264 7.3.2.1, 7.3.2.2, 7.3.3): one slice per picture, CAVLC, one reference picture, frame
// numbers for picture order (pic_order_cnt_type 2), deblocking always on with zero offsets.
#pragma once
#include <cstdint>
#include <vector>

#include "bitwriter.h"

namespace enc264 {

struct StreamParams {
    int width = 0, height = 0;  // visible size (even)
    int mb_cols = 0, mb_rows = 0;
};

constexpr int kLog2MaxFrameNum = 4;
constexpr int kPicInitQp = 26;

std::vector<uint8_t> sps_rbsp(const StreamParams& sp);
std::vector<uint8_t> pps_rbsp();

struct SliceParams {
    bool idr = true;     // an IDR picture (always an I slice)
    int frame_num = 0;   // counts reference pictures since the last IDR, modulo 2^kLog2MaxFrameNum
    int idr_pic_id = 0;  // differs between consecutive IDR pictures
    int qp = 26;         // SliceQPY
};

void write_slice_header(BitWriter& bw, const SliceParams& s);

}  // namespace enc264
