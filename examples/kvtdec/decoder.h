// kvtdec: an H.263 and MPEG-4 visual (simple profile, and B-VOPs) decoder built on kvtvc.
//
// The decoder parses the picture, GOB, video-packet and macroblock layers itself and hands every
// block-level job to the library: header codes, motion vectors, coefficient decoding with AC/DC
// prediction, inverse quantization and inverse DCT, half-sample and overlapped prediction,
// reconstruction and border expansion. Its member functions are defined one file per layer
// (decoder.cpp holds the top level: stream recognition, display order, error context):
//   picture_h263.cpp       H.263 picture header (with PLUSPTYPE) and the picture's GOB loop
//   gob_h263.cpp           H.263 GOB and slice (Annex K) headers
//   vol_mpeg4.cpp          MPEG-4 VOS, VO and VOL headers and the start-code dispatch
//   vop_mpeg4.cpp          MPEG-4 VOP header and the VOP's macroblock loop
//   video_packet_mpeg4.cpp MPEG-4 resync markers and video-packet headers
//   macroblock_h263.cpp    H.263 macroblock layer (baseline, Annexes D, F, I, T)
//   macroblock_mpeg4.cpp   MPEG-4 simple-profile macroblock layer
//   prediction.cpp         intra prediction state and inter prediction shared by both macroblock layers
#pragma once

#include "bitreader.h"
#include "frame_store.h"
#include "stream.h"

#include <kvtvc.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace kvtdec {

// A damaged, truncated or unsupported stream. The message says what; Decoder::where() says where.
struct DecodeError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
[[noreturn]] void fail(const char* format, ...) __attribute__((format(printf, 1, 2)));

enum class Codec { H263, Mpeg4 };
enum class MbKind : uint8_t { Skipped, Inter, Inter4V, Intra };

// What later macroblocks of the same picture need to know about a decoded one.
struct MbInfo {
    KvtMotionVec mv[4] = {};  // per luminance block, half samples; zero when intra or skipped
    MbKind kind = MbKind::Skipped;
    uint8_t quant = 0;
    int slice = -1;  // GOB or video packet it belongs to; -1 while not decoded in this picture
    // Its samples are a plain copy of the reference's. The two anchor pictures alternate, so when
    // this holds for the previous anchor and the macroblock is skipped again, the picture being
    // decoded already holds the samples to copy.
    bool copy_of_reference = false;
};

// Intra prediction state of one 8x8 block once decoded (MPEG-4 AC/DC prediction, ISO/IEC 14496-2
// 7.4.3; H.263 Annex I): its reconstructed DC and its first row and column of quantized AC levels.
struct IntraBlockState {
    Kvt16s dc = 0;
    Kvt16s row[7] = {};
    Kvt16s col[7] = {};
};

// The kvtvc prediction state of one intra block about to be decoded (see the MPEG-4 intra and the
// H.263 advanced-intra block decoders), gathered from its neighbours, and where the block goes.
struct IntraPrediction {
    // The left block's group (its DC first), then this block's (the DC and first row above it).
    alignas(16) Kvt16s row[16] = {};
    Kvt16s col[8] = {};  // 1..7: the left block's first column
    int dc[3];           // reconstructed DC of the left, above-left, above block; 1024 if none
    int quant[3];        // their macroblocks' quantizers; 0 if none
    Kvt8u* dst;
    int step;
};

// Fields of the picture (H.263) or VOP (MPEG-4) header the macroblock layer uses.
struct PictureParams {
    bool intra = true;
    bool b = false;  // MPEG-4 B-VOP
    int quant = 1;
    int rounding = 0;          // rounding control of the half-sample predictions
    int fcode = 1;             // MPEG-4 vop_fcode_forward
    int fcode_backward = 1;    // MPEG-4 vop_fcode_backward (B-VOPs)
    bool umv = false;          // H.263 Annex D: vectors may point outside the picture
    bool umv_plus = false;     // Annex D signalled in PLUSPTYPE: reversible difference codes, no wrap
    bool obmc = false;         // H.263 Annex F: overlapped block motion compensation
    bool slices = false;       // H.263 Annex K: slices instead of GOBs
    bool aic = false;          // H.263 Annex I: advanced intra coding
    bool mq = false;           // H.263 Annex T: modified quantization
    int intra_dc_vlc_thr = 0;  // MPEG-4: quantizers at or above 11 + 2 * thr code the DC as AC
};

// MPEG-4 video object layer: the parts of the VOL header that matter to a simple-profile decoder.
struct VolParams {
    bool valid = false;
    int width = 0;
    int height = 0;
    int time_increment_resolution = 1;
    int time_increment_bits = 1;
    bool low_delay = true;  // no B-VOPs: every picture is shown as soon as it is decoded
    bool mpeg_quant = false;
    Kvt8u intra_matrix[64] = {};  // raster order
    Kvt8u inter_matrix[64] = {};
    bool resync_marker_disable = true;
};

// The residual of one inter macroblock waiting for its prediction (H.263 Annex F needs the
// vectors of the macroblock to the right before it can predict).
struct PendingMb {
    int mb_x = -1;
    int coded = 0;  // bit 5 - b set when block b has a residual
    alignas(16) Kvt16s residual[6][64];
};

class Decoder {
public:
    // Recognises the stream by its first start code; throws DecodeError when it has none. Pictures
    // wider or taller than max_size are refused.
    explicit Decoder(Stream& stream, int max_size = 4096);

    // Decodes the next picture; false at the end of the stream.
    bool decode_next();
    // The picture decode_next() made due for display.
    const Frame& picture() const { return *shown_; }
    int width() const { return width_; }
    int height() const { return height_; }
    const char* codec_name() const;
    // "frame 3, macroblock 17 (x 5, y 1)" or "frame 3, header": where decoding stopped.
    std::string where() const;

private:
    // Stream position and error context.
    Stream& stream_;
    size_t pos_ = 0;
    Codec codec_ = Codec::H263;
    int decoded_ = 0;  // pictures finished; the one being decoded has this number
    int mb_x_ = -1, mb_y_ = -1;

    // Sizes and pictures.
    int width_ = 0, height_ = 0;
    int mb_cols_ = 0, mb_rows_ = 0;
    int max_size_;
    FrameStore frames_;
    Frame* cur_ = nullptr;            // the picture being decoded
    const Frame* ref_ = nullptr;      // its (forward) reference
    const Frame* bwd_ref_ = nullptr;  // a B-picture's backward reference
    const Frame* shown_ = nullptr;    // what decode_next() shows
    bool held_ = false;               // an anchor waits for display behind the B-pictures
    void set_size(int width, int height);

    // Throws unless a kvtvc reader succeeded, naming what it read; a failure at the end of the
    // coded data is reported as the truncation it is.
    void check(KvtStatus status, const char* what) const {
        if (status != kvtStsOk) report_bad_code(status, what);
    }
    [[noreturn]] void report_bad_code(KvtStatus status, const char* what) const;

    // Per-picture macroblock state.
    PictureParams pic_;
    BitReader br_;
    int quant_ = 1;  // running quantizer
    int slice_ = 0;  // current GOB / video packet number
    std::vector<MbInfo> mbs_;
    std::vector<IntraBlockState> intra_state_;  // 6 per macroblock
    PendingMb pending_[2];
    MbInfo& mb(int x, int y) { return mbs_[size_t(y) * mb_cols_ + x]; }
    // Macroblock (x, y) of the current slice, its vectors cleared; `was_copy` says whether the
    // buffer already held the reference's samples there.
    MbInfo& start_mb(int x, int y, bool& was_copy) {
        MbInfo& m = mb(x, y);
        m.slice = slice_;
        std::fill(m.mv, m.mv + 4, KvtMotionVec{0, 0});
        was_copy = m.copy_of_reference;
        m.copy_of_reference = false;
        return m;
    }
    // The coded-macroblock flag of a P-picture (COD, not_coded): true, with m marked skipped at the
    // running quantizer, when the macroblock is not coded.
    bool read_not_coded(MbInfo& m) {
        if (pic_.intra || !br_.read_bit()) return false;
        m.kind = MbKind::Skipped;
        m.quant = Kvt8u(quant_);
        return true;
    }
    // The vectors of a neighbour outside the picture or slice.
    static constexpr KvtMotionVec kZeroVectors[4] = {};
    void start_picture();
    void finish_picture();

    // H.263 picture and GOB layers.
    bool decode_h263_picture();
    void read_h263_picture_header(BitReader& br);
    void read_plusptype(BitReader& br, int& format);
    bool read_gob_header(int gob_number);
    bool read_slice_header(int mb_index);
    int mba_bits() const;
    bool skip_start_code();
    int gob_rows_ = 1;
    int plus_format_ = 0;  // PLUSPTYPE source format and options, kept while UFEP is 0
    bool plus_custom_pcf_ = false, plus_umv_ = false, plus_obmc_ = false, plus_slices_ = false;
    bool plus_aic_ = false, plus_mq_ = false;

    // MPEG-4 header layers.
    enum class Vop { End, Anchor, B, NotCoded };
    bool next_mpeg4_picture();
    Vop decode_mpeg4_until_vop();
    void read_visual_object(BitReader& br);
    void read_vol(BitReader& br);
    void read_vop_header(BitReader& br, bool& coded);
    Vop decode_vop();
    bool at_resync_marker() const;
    void read_video_packet_header(int mb_index);
    VolParams vol_;
    int vo_verid_ = 1;
    // VOP times (ISO/IEC 14496-2 7.7.2.1) for direct mode: seconds of the last two anchors, the time
    // of the last anchor, and the distances TRD (between the anchors) and TRB (past anchor to B).
    int64_t time_base_ = 0, last_time_base_ = 0, anchor_time_ = 0;
    int trd_ = 0, trb_ = 0;

    // Macroblock layers.
    void decode_h263_mb(int x, int y);
    void read_h263_vectors(int x, int y, bool four, KvtMotionVec mv[4]);
    void read_dquant();
    KvtMotionVec read_umv_plus_vector(KvtMotionVec pred);
    void decode_mpeg4_mb(int x, int y);
    void decode_mpeg4_b_mb(int x, int y);
    KvtMotionVec fwd_pred_ = {}, bwd_pred_ = {};  // B-VOP vector predictors
    void decode_mpeg4_intra_block(int x, int y, int b, bool coded, bool ac_pred);
    IntraPrediction gather_intra_prediction(int x, int y, int b);
    void store_intra_prediction(int x, int y, int b, const IntraPrediction& ip);

    // Prediction and reconstruction (prediction.cpp).
    void predict_skipped(int x, int y, bool was_copy);
    void reconstruct_inter(int x, int y, const PendingMb& work);
    void reconstruct_pending(int x);
    void predict_luma_obmc(int x, int y, int b, Kvt8u* dst);
    void reconstruct_b(int x, int y, const KvtMotionVec fwd[4], const KvtMotionVec bwd[4], bool four,
                       const PendingMb& work);
};

}  // namespace kvtdec
