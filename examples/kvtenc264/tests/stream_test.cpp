// Parameter sets and slice headers read back field by field (H.264 7.3.2.1, 7.3.2.2, 7.3.3), and
// the picture buffers the encoder reads into.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "bit_reader.h"
#include "bitwriter.h"
#include "params.h"
#include "picture.h"
#include "yuv_io.h"

namespace {

struct Sps {
    int profile, constraints, level, log2_max_frame_num, poc_type, refs, width_mbs, height_mbs;
    int crop[4] = {};
    bool cropping;
};

Sps read_sps(const std::vector<uint8_t>& rbsp) {
    BitReader r(rbsp);
    Sps s{};
    s.profile = r.u(8), s.constraints = r.u(8), s.level = r.u(8);
    EXPECT_EQ(r.ue(), 0u) << "seq_parameter_set_id";
    s.log2_max_frame_num = r.ue() + 4;
    s.poc_type = r.ue();
    s.refs = r.ue();
    EXPECT_EQ(r.u(1), 0u) << "gaps_in_frame_num_value_allowed_flag";
    s.width_mbs = r.ue() + 1, s.height_mbs = r.ue() + 1;
    EXPECT_EQ(r.u(1), 1u) << "frame_mbs_only_flag";
    r.u(1);  // direct_8x8_inference_flag
    s.cropping = r.u(1);
    if (s.cropping)
        for (int& c : s.crop) c = r.ue();
    EXPECT_EQ(r.u(1), 0u) << "vui_parameters_present_flag";
    EXPECT_TRUE(r.at_trailing_bits());
    return s;
}

TEST(Kvtenc264Stream, SequenceParameterSetCropsToTheVisibleSize) {
    const struct {
        int w, h, level;
    } cases[] = {{176, 144, 10},  {50, 38, 10},     {2, 2, 10},    {352, 288, 11},
                 {1280, 720, 31}, {1920, 1080, 40}, {16, 2000, 31}};
    for (const auto& c : cases) {
        enc264::StreamParams sp;
        sp.width = c.w, sp.height = c.h, sp.mb_cols = (c.w + 15) / 16, sp.mb_rows = (c.h + 15) / 16;
        const Sps s = read_sps(enc264::sps_rbsp(sp));
        SCOPED_TRACE(std::to_string(c.w) + "x" + std::to_string(c.h));
        EXPECT_EQ(s.profile, 66);
        EXPECT_EQ(s.constraints, 0xc0) << "constrained baseline: constraint_set0 and set1";
        EXPECT_EQ(s.level, c.level);
        EXPECT_EQ(s.log2_max_frame_num, enc264::kLog2MaxFrameNum);
        EXPECT_EQ(s.poc_type, 2);
        EXPECT_EQ(s.refs, 1);
        EXPECT_EQ(16 * s.width_mbs - 2 * (s.crop[0] + s.crop[1]), c.w);
        EXPECT_EQ(16 * s.height_mbs - 2 * (s.crop[2] + s.crop[3]), c.h);
        EXPECT_EQ(s.cropping, c.w % 16 || c.h % 16);
    }
}

TEST(Kvtenc264Stream, PictureParameterSet) {
    BitReader r(enc264::pps_rbsp());
    EXPECT_EQ(r.ue(), 0u);  // pic_parameter_set_id
    EXPECT_EQ(r.ue(), 0u);  // seq_parameter_set_id
    EXPECT_EQ(r.u(1), 0u) << "CAVLC";
    EXPECT_EQ(r.u(1), 0u);
    EXPECT_EQ(r.ue(), 0u) << "one slice group";
    EXPECT_EQ(r.ue(), 0u);
    EXPECT_EQ(r.ue(), 0u);
    EXPECT_EQ(r.u(3), 0u) << "no weighted prediction";
    EXPECT_EQ(r.se(), enc264::kPicInitQp - 26);
    EXPECT_EQ(r.se(), 0);
    EXPECT_EQ(r.se(), 0);
    EXPECT_EQ(r.u(3), 0u) << "deblocking without offsets, no constrained intra, no redundant pictures";
    EXPECT_TRUE(r.at_trailing_bits());
}

TEST(Kvtenc264Stream, SliceHeaders) {
    for (bool idr : {true, false})
        for (int qp : {0, 26, 51}) {
            enc264::SliceParams s;
            s.idr = idr, s.frame_num = idr ? 0 : 13, s.idr_pic_id = 1, s.qp = qp;
            enc264::BitWriter bw;
            enc264::write_slice_header(bw, s);
            bw.trailing();
            BitReader r(bw.bytes());
            EXPECT_EQ(r.ue(), 0u) << "first_mb_in_slice";
            EXPECT_EQ(r.ue(), idr ? 7u : 5u) << "slice_type";
            EXPECT_EQ(r.ue(), 0u);
            EXPECT_EQ(static_cast<int>(r.u(enc264::kLog2MaxFrameNum)), s.frame_num);
            if (idr) {
                EXPECT_EQ(r.ue(), 1u) << "idr_pic_id";
            } else {
                EXPECT_EQ(r.u(2), 0u) << "no reference list override or modification";
            }
            EXPECT_EQ(r.u(idr ? 2 : 1), 0u) << "dec_ref_pic_marking";
            EXPECT_EQ(r.se() + enc264::kPicInitQp, qp);
            EXPECT_TRUE(r.at_trailing_bits());
        }
}

TEST(Kvtenc264Stream, ReaderFillsTheMacroblockAreaAndBorders) {
    const int w = 18, h = 6;  // two macroblocks by one, mostly outside the visible area
    std::vector<uint8_t> frame(w * h * 3 / 2);
    for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * 7 + 1);
    std::FILE* f = std::tmpfile();
    ASSERT_NE(f, nullptr);
    std::fwrite(frame.data(), 1, frame.size(), f);
    std::fwrite(frame.data(), 1, 5, f);  // and a piece of a second frame
    std::rewind(f);
    enc264::Picture pic(2, 1, 16);
    enc264::YuvReader reader(f, w, h);
    ASSERT_TRUE(reader.read(pic));
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 32; ++x)
            ASSERT_EQ(*pic.y.at(x, y), frame[std::min(y, h - 1) * w + std::min(x, w - 1)]) << x << "," << y;
    const uint8_t* v = frame.data() + w * h + (w / 2) * (h / 2);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x)
            ASSERT_EQ(*pic.v.at(x, y), v[std::min(y, h / 2 - 1) * (w / 2) + std::min(x, w / 2 - 1)])
                << x << "," << y;
    pic.extend_borders();
    EXPECT_EQ(*pic.y.at(-16, -16), *pic.y.at(0, 0));
    EXPECT_EQ(*pic.y.at(47, 31), *pic.y.at(31, 15));
    EXPECT_EQ(*pic.u.at(-8, 12), *pic.u.at(0, 7));
    EXPECT_FALSE(reader.read(pic));
    EXPECT_TRUE(reader.short_frame());
    std::fclose(f);
}

}  // namespace
