#include "encoder.h"

#include <cmath>
#include <utility>

#include "deblock.h"
#include "inter.h"
#include "intra.h"
#include "mb_syntax.h"
#include "mvpred.h"
#include "nal.h"
#include "tables.h"

namespace enc264 {

int chroma_qp(int qp) { return kChromaQp[qp]; }

namespace {

// Lagrange multiplier for SAD costs, about 0.85 * 2^((QP - 12) / 6).
int lambda_of(int qp) {
    const int l = static_cast<int>(std::lround(0.85 * std::pow(2.0, (qp - 12) / 6.0)));
    return l < 1 ? 1 : l;
}

// mb_qp_delta taking qp_prev to qp, in its range -26..25 (QP arithmetic wraps modulo 52).
int qp_delta(int qp_prev, int qp) {
    int d = qp - qp_prev;
    if (d > 25) d -= 52;
    if (d < -26) d += 52;
    return d;
}

}  // namespace

Encoder::Encoder(const EncoderConfig& cfg) : cfg_(cfg) {
    sp_.width = cfg.width, sp_.height = cfg.height;
    sp_.mb_cols = (cfg.width + 15) / 16, sp_.mb_rows = (cfg.height + 15) / 16;
    rec_ = new_picture();
    ref_ = new_picture();
    fs_.mb_cols = sp_.mb_cols, fs_.mb_rows = sp_.mb_rows;
    fs_.mbs.assign(static_cast<size_t>(sp_.mb_cols) * sp_.mb_rows, MbInfo{});
}

bool Encoder::try_code_macroblock(int mbx, int mby, bool p_slice, int qp, MbCode& code) {
    const int lambda = lambda_of(qp);
    if (!p_slice) return code_intra_mb(fs_, mbx, mby, qp, lambda, code);

    MbInfo& info = fs_.mb(mbx, mby);
    info = MbInfo{};
    MvPredictor pred(fs_.mbs, fs_.mb_cols);
    pred.begin(mbx, mby, &info);
    const Mv skip_mv = pred.skip();
    const MvRange range = mv_range(mbx, mby, 16 * sp_.mb_cols, 16 * sp_.mb_rows, kBorder);
    const MotionSearch ms(fs_.src->y, ref_luma_, lambda);
    const Partition whole{16 * mbx, 16 * mby, 16, 16};
    const bool skip_reachable = range.clamp(skip_mv) == skip_mv;
    // Try P_Skip first when its prediction is close: about one quantizer step per 4x4 block.
    const int qstep16 = static_cast<int>(10.0 * std::pow(2.0, qp / 6.0));
    if (skip_reachable && ms.sad(whole, skip_mv) <= qstep16 && try_skip(fs_, mbx, mby, qp, skip_mv)) {
        code.type = MbType::PSkip;
        return true;
    }
    const InterChoice choice = search_inter(fs_, mbx, mby, lambda, range);
    int intra_cost = 0;
    best_intra16x16(fs_, mbx, mby, lambda, &intra_cost);
    if (intra_cost < choice.cost) return code_intra_mb(fs_, mbx, mby, qp, lambda, code);
    if (!code_inter_mb(fs_, mbx, mby, qp, choice, code)) return false;
    if (code.type == MbType::P16x16 && choice.mv[0] == skip_mv && !code.cbp_luma && !code.cbp_chroma) {
        code.type = info.type = MbType::PSkip;
    }
    return true;
}

void Encoder::code_macroblock(int mbx, int mby, bool p_slice, MbCode& code) {
    // A level beyond the CAVLC range: code the macroblock again one QP coarser.
    for (int qp = cfg_.qp; qp <= 51; ++qp)
        if (try_code_macroblock(mbx, mby, p_slice, qp, code)) return;
}

void Encoder::encode(const Picture& src, std::vector<uint8_t>& out) {
    const bool idr = frame_index_ % cfg_.keyint == 0;
    if (idr) {
        frame_num_ = 0;
        append_nal(out, kNalSps, 3, sps_rbsp(sp_));
        append_nal(out, kNalPps, 3, pps_rbsp());
    }
    fs_.src = &src, fs_.rec = &rec_, fs_.ref = &ref_, fs_.ref_luma = &ref_luma_;
    BitWriter bw;
    SliceParams sh;
    sh.idr = idr, sh.frame_num = frame_num_, sh.idr_pic_id = idr_count_ & 1, sh.qp = cfg_.qp;
    write_slice_header(bw, sh);

    int qp_prev = cfg_.qp, skip_run = 0;
    MbCode code;
    for (int mby = 0; mby < sp_.mb_rows; ++mby)
        for (int mbx = 0; mbx < sp_.mb_cols; ++mbx) {
            code_macroblock(mbx, mby, !idr, code);
            MbInfo& info = fs_.mb(mbx, mby);
            if (code.type == MbType::PSkip) {
                info.qp = qp_prev;
                ++skip_run;
                continue;
            }
            if (!idr) bw.ue(skip_run);
            skip_run = 0;
            int delta = 0;
            if (has_qp_delta(code)) delta = qp_delta(qp_prev, code.qp), qp_prev = code.qp;
            info.qp = qp_prev;
            write_macroblock(bw, code, fs_.neighbours(mbx, mby), !idr, delta);
        }
    if (skip_run) bw.ue(skip_run);
    bw.trailing();
    append_nal(out, idr ? kNalIdrSlice : kNalSlice, 3, bw.bytes());

    deblock_picture(fs_);
    rec_.extend_borders();
    std::swap(rec_, ref_);
    ref_luma_.reset(ref_.y);
    ++frame_index_;
    frame_num_ = (frame_num_ + 1) % (1 << kLog2MaxFrameNum);
    if (idr) ++idr_count_;
}

}  // namespace enc264
