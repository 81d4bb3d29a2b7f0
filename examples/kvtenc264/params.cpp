#include "params.h"

#include <cmath>

namespace enc264 {

namespace {

// The smallest level (H.264 Table A-1) whose maximum frame size holds the picture, with neither
// side longer than sqrt(8 * MaxFS) macroblocks (A.3.1).
int level_idc(const StreamParams& sp) {
    static const struct {
        int idc, max_fs;
    } kLevels[] = {{10, 99},   {11, 396},  {21, 792},   {22, 1620},  {31, 3600},
                   {32, 5120}, {40, 8192}, {50, 22080}, {51, 36864}, {60, 139264}};
    for (const auto& l : kLevels) {
        const int side = static_cast<int>(std::sqrt(8.0 * l.max_fs));
        if (sp.mb_cols * sp.mb_rows <= l.max_fs && sp.mb_cols <= side && sp.mb_rows <= side) return l.idc;
    }
    return 62;
}

}  // namespace

std::vector<uint8_t> sps_rbsp(const StreamParams& sp) {
    BitWriter bw;
    bw.put(66, 8);    // profile_idc: Baseline
    bw.put(0xc0, 8);  // constraint_set0 and set1: constrained baseline; reserved bits zero
    bw.put(level_idc(sp), 8);
    bw.ue(0);  // seq_parameter_set_id
    bw.ue(kLog2MaxFrameNum - 4);
    bw.ue(2);               // pic_order_cnt_type: output order is decoding order
    bw.ue(1);               // max_num_ref_frames
    bw.flag(false);         // gaps_in_frame_num_value_allowed_flag
    bw.ue(sp.mb_cols - 1);  // pic_width_in_mbs_minus1
    bw.ue(sp.mb_rows - 1);  // pic_height_in_map_units_minus1
    bw.flag(true);          // frame_mbs_only_flag
    bw.flag(true);          // direct_8x8_inference_flag
    const int crop_right = 16 * sp.mb_cols - sp.width, crop_bottom = 16 * sp.mb_rows - sp.height;
    bw.flag(crop_right || crop_bottom);  // frame_cropping_flag, offsets in 4:2:0 units of two samples
    if (crop_right || crop_bottom) bw.ue(0), bw.ue(crop_right / 2), bw.ue(0), bw.ue(crop_bottom / 2);
    bw.flag(false);  // vui_parameters_present_flag
    bw.trailing();
    return bw.bytes();
}

std::vector<uint8_t> pps_rbsp() {
    BitWriter bw;
    bw.ue(0);                // pic_parameter_set_id
    bw.ue(0);                // seq_parameter_set_id
    bw.flag(false);          // entropy_coding_mode_flag: CAVLC
    bw.flag(false);          // bottom_field_pic_order_in_frame_present_flag
    bw.ue(0);                // num_slice_groups_minus1
    bw.ue(0), bw.ue(0);      // num_ref_idx_l0/l1_default_active_minus1
    bw.flag(false);          // weighted_pred_flag
    bw.put(0, 2);            // weighted_bipred_idc
    bw.se(kPicInitQp - 26);  // pic_init_qp_minus26
    bw.se(0);                // pic_init_qs_minus26
    bw.se(0);                // chroma_qp_index_offset
    bw.flag(false);          // deblocking_filter_control_present_flag: filter on, no offsets
    bw.flag(false);          // constrained_intra_pred_flag
    bw.flag(false);          // redundant_pic_cnt_present_flag
    bw.trailing();
    return bw.bytes();
}

void write_slice_header(BitWriter& bw, const SliceParams& s) {
    bw.ue(0);              // first_mb_in_slice
    bw.ue(s.idr ? 7 : 5);  // slice_type: I or P, same type for the whole picture
    bw.ue(0);              // pic_parameter_set_id
    bw.put(s.frame_num, kLog2MaxFrameNum);
    if (s.idr) bw.ue(s.idr_pic_id);
    if (!s.idr) {
        bw.flag(false);  // num_ref_idx_active_override_flag
        bw.flag(false);  // ref_pic_list_modification_flag_l0
    }
    // dec_ref_pic_marking(): every picture is a reference, marked by the sliding window.
    if (s.idr)
        bw.flag(false), bw.flag(false);  // no_output_of_prior_pics, long_term_reference
    else
        bw.flag(false);        // adaptive_ref_pic_marking_mode_flag
    bw.se(s.qp - kPicInitQp);  // slice_qp_delta
}

}  // namespace enc264
