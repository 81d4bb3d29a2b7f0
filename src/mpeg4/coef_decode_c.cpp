// H.263 / MPEG-4 coefficient and block decoders.
//
// Every decoder reads through a private copy of the caller's cursor (coef_vlc.h) and writes it back
// only after a part it accepts: the DC of the separate-DC forms, then the whole block. Coefficients
// are collected in local buffers, so a rejected block writes no output.
#include <cstring>

#include "common/kernel.h"
#include "mpeg4/coef_decode_dsp.h"
#include "mpeg4/coef_vlc.h"

namespace kvt::KVT_C_NS {

namespace {

// A copy of zeros compiles to eight vector stores; memset of 128 bytes becomes a string store
// whose start-up costs more than the block.
void zero_block(int16_t* c) {
    static const int16_t kZeros[64] = {};
    std::memcpy(c, kZeros, sizeof kZeros);
}

// Decodes a block's events from scan index `first` and stores them in raster order through `scan`.
template <Tcoef T>
KvtStatus read_raster(BitReader& r, int first, int scan, int16_t* dst) {
    const int16_t* order = kScan[scan];
    int end;
    return read_block<T>(r, first, &end, [&](int i, int level) { dst[order[i]] = int16_t(level); });
}

// ---- MPEG-4: codes to quantized coefficients (ISO/IEC 14496-2 7.4.1, 7.4.2) ------------------------

KvtStatus intra_dc(uint8_t** pp, int* offset, int16_t* dc, int chroma) {
    BitReader r = reader_at(pp, offset);
    int16_t v;
    const KvtStatus st = read_intra_dc(r, chroma != 0, &v);
    if (st != kvtStsOk) return st;
    *dc = v;
    r.store(pp, offset);
    return kvtStsOk;
}

// The intra and inter forms: optional separate DC, then AC codes from scan position 1 (or 0).
template <Tcoef T, bool kSeparateDc>
KvtStatus zigzag_block(uint8_t** pp, int* offset, int16_t* dst, int scan, int chroma) {
    zero_block(dst);
    BitReader r = reader_at(pp, offset);
    int16_t dc = 0;
    if (kSeparateDc) {
        const KvtStatus st = read_intra_dc(r, chroma != 0, &dc);
        if (st != kvtStsOk) return st;
        r.store(pp, offset);
    }
    const KvtStatus st = read_raster<T>(r, kSeparateDc ? 1 : 0, scan, dst);
    if (st != kvtStsOk) {
        zero_block(dst);
        return st;
    }
    if (kSeparateDc) dst[0] = dc;
    r.store(pp, offset);
    return kvtStsOk;
}

KvtStatus zigzag_intra_dc(uint8_t** pp, int* offset, int16_t* dst, int scan, int chroma) {
    return zigzag_block<Tcoef::Mpeg4Intra, true>(pp, offset, dst, scan, chroma);
}

KvtStatus zigzag_intra_ac(uint8_t** pp, int* offset, int16_t* dst, int scan) {
    return zigzag_block<Tcoef::Mpeg4Intra, false>(pp, offset, dst, scan, 0);
}

KvtStatus zigzag_inter(uint8_t** pp, int* offset, int16_t* dst) {
    return zigzag_block<Tcoef::Mpeg4Inter, false>(pp, offset, dst, kZigzag, 0);
}

// ---- Transforms of the residual decoders -------------------------------------------------------------

// Every sample of the block takes the DC's share, (F + 4) >> 3.
void fill_dc(int16_t* dst) {
    const int16_t v = int16_t((dst[0] + 4) >> 3);
    for (int i = 0; i < 64; ++i) dst[i] = v;
}

// The smallest inverse DCT that covers the coefficients: `extent` is the largest row or column
// index holding one (0 for the DC alone).
KvtStatus idct_by_extent(int16_t* dst, int extent) {
    if (extent == 0) {
        fill_dc(dst);
        return kvtStsOk;
    }
    if (extent == 1) return kvtiDCT8x8Inv_2x2_16s_C1I(dst);
    if (extent <= 3) return kvtiDCT8x8Inv_4x4_16s_C1I(dst);
    return kvtiDCT8x8Inv_16s_C1I(dst);
}

void fill_pixels(uint8_t* dst, int step, uint8_t v) {
    for (int y = 0; y < 8; ++y) std::memset(dst + intptr_t(y) * step, v, 8);
}

// ---- H.263 (H.263 5.4, 6.2) ---------------------------------------------------------------------------

// INTRADC: 0 and 128 are not allowed; 255 stands for 128. Consumed even when rejected.
KvtStatus read_intradc(uint8_t** pp, int* offset, int* dc) {
    BitReader r = reader_at(pp, offset);
    *dc = int(r.get(8));
    r.store(pp, offset);
    return (*dc & 127) == 0 ? kvtStsBadIntraDCCode : kvtStsOk;
}

KvtStatus intra_dc_only_h263(uint8_t** pp, int* offset, uint8_t* dst, int step) {
    int dc;
    const KvtStatus st = read_intradc(pp, offset, &dc);
    if (st != kvtStsOk) return st;
    fill_pixels(dst, step, uint8_t(dc == 255 ? 128 : dc));
    return kvtStsOk;
}

// TCOEF of one block in scan order into buf (zeroed by the caller) from `first`; *n = last index + 1.
KvtStatus read_h263_scan(uint8_t** pp, int* offset, int first, int16_t* buf, int* n) {
    BitReader r = reader_at(pp, offset);
    const KvtStatus st =
        read_block<Tcoef::H263>(r, first, n, [&](int i, int level) { buf[i] = int16_t(level); });
    if (st == kvtStsOk) r.store(pp, offset);
    return st;
}

KvtStatus intra_h263(uint8_t** pp, int* offset, uint8_t* dst, int step, int qp) {
    alignas(16) int16_t buf[64] = {};
    int dc, n;
    KvtStatus st = read_intradc(pp, offset, &dc);
    if (st != kvtStsOk) return st;
    buf[0] = int16_t(dc);
    st = read_h263_scan(pp, offset, 1, buf, &n);
    if (st != kvtStsOk) return st;
    alignas(16) int16_t block[64] = {};
    kvtiQuantInvIntra_Compact_H263_16s_I(buf, n, qp);
    kvtiZigzagInvClassical_Compact_16s(buf, n, block);
    return kvtiDCT8x8Inv_16s8u_C1R(block, dst, step);
}

// The reduced transform by the coefficient count n: zigzag positions 0..2 lie in the top-left 2x2
// corner, 0..9, 11..13, 17 and 18 in the top-left 4x4 one.
KvtStatus idct_h263_inter(int16_t* dst, const int16_t* scan_buf, int n) {
    if (n <= 3) return kvtiDCT8x8Inv_2x2_16s_C1I(dst);
    bool in_4x4 = n <= 10;
    if (n >= 11 && n <= 14) in_4x4 = scan_buf[10] == 0;
    if (n >= 15 && n <= 19) in_4x4 = (scan_buf[10] | scan_buf[14] | scan_buf[15] | scan_buf[16]) == 0;
    return in_4x4 ? kvtiDCT8x8Inv_4x4_16s_C1I(dst) : kvtiDCT8x8Inv_16s_C1I(dst);
}

KvtStatus inter_h263(uint8_t** pp, int* offset, int16_t* dst, int qp) {
    alignas(16) int16_t buf[64] = {};
    int n;
    const KvtStatus st = read_h263_scan(pp, offset, 0, buf, &n);
    if (st != kvtStsOk) return st;
    kvtiQuantInvInter_Compact_H263_16s_I(buf, n, qp);
    if (n == 1) {
        dst[0] = buf[0];
        fill_dc(dst);
        return kvtStsOk;
    }
    zero_block(dst);
    kvtiZigzagInvClassical_Compact_16s(buf, n, dst);
    return idct_h263_inter(dst, buf, n);
}

int clamp(int v, int lo, int hi) { return v < lo ? lo : v > hi ? hi : v; }

// H.263 Annex I: DC and first row / column prediction from the block above (mode 2) or to the left
// (mode 3), or the DC alone from the mean of both (mode 1); a negative stored DC is a neighbour
// that is not available. Levels are predicted before they are scaled by 2 QP.
void adv_intra_predict(int16_t* levels, int16_t* rec, const int16_t* row, const int16_t* col, int qp,
                       int mode) {
    const int left = row[-8], above = row[0];
    int dc = 1024;
    if (mode == 1) {
        if (left >= 0 && above >= 0)
            dc = (left + above) >> 1;
        else if (left >= 0 || above >= 0)
            dc = left >= 0 ? left : above;
    } else {
        const bool from_above = mode == 2;
        const int pred = from_above ? above : left;
        if (pred >= 0) {
            dc = pred;
            for (int i = 1; i < 8; ++i) {
                int16_t& l = levels[from_above ? i : 8 * i];
                l = int16_t(clamp(l + (from_above ? row[i] : col[i]), -2048, 2047));
            }
        }
    }
    for (int i = 1; i < 64; ++i) rec[i] = int16_t(clamp(levels[i] * 2 * qp, -2048, 2047));
    const int rec_dc = clamp(levels[0] * 2 * qp + dc, 0, 2047);
    rec[0] = int16_t(rec_dc ? rec_dc | 1 : 0);
}

KvtStatus adv_intra_h263(uint8_t** pp, int* offset, uint8_t* dst, int step, int16_t* row, int16_t* col,
                         int qp, int mode, int coded) {
    alignas(16) int16_t levels[64] = {};
    if (coded) {
        static constexpr int kScanOfMode[4] = {0, kZigzag, kAltHorizontal, kAltVertical};
        BitReader r = reader_at(pp, offset);
        const KvtStatus st = read_raster<Tcoef::H263AdvIntra>(r, 0, kScanOfMode[mode], levels);
        if (st != kvtStsOk) return st;
        r.store(pp, offset);
    }
    alignas(16) int16_t rec[64];
    adv_intra_predict(levels, rec, row, col, qp, mode);
    for (int i = 1; i < 8; ++i) {
        row[i] = levels[i];
        col[i] = levels[8 * i];
    }
    row[0] = rec[0];
    return kvtiDCT8x8Inv_16s8u_C1R(rec, dst, step);
}

// ---- MPEG-4 block decoders (ISO/IEC 14496-2 7.4) -------------------------------------------------------

KvtStatus inter_mpeg4(uint8_t** pp, int* offset, int16_t* dst, int qp, const uint8_t* matrix) {
    alignas(16) int16_t levels[64];
    uint8_t raster[64];
    int count = 0, end;
    BitReader r = reader_at(pp, offset);
    const KvtStatus st = read_block<Tcoef::Mpeg4Inter>(r, 0, &end, [&](int i, int level) {
        levels[count] = int16_t(level);
        raster[count++] = uint8_t(kScan[kZigzag][i]);
    });
    if (st != kvtStsOk) return st;
    r.store(pp, offset);
    zero_block(dst);
    if (!matrix) kvtiQuantInvInter_Compact_H263_16s_I(levels, count, qp);  // same rule and bounds
    int extent = 0;
    for (int k = 0; k < count; ++k) {
        dst[raster[k]] = levels[k];
        extent |= (raster[k] >> 3) | (raster[k] & 7);
    }
    if (matrix) {
        kvtiQuantInvInter_MPEG4_16s_I(dst, qp, matrix);
        if (dst[63]) extent = 7;  // mismatch control may have set it
    }
    return idct_by_extent(dst, extent);
}

template <bool kAcCodes>
KvtStatus intra_mpeg4(uint8_t** pp, int* offset, uint8_t* dst, int step, const Mpeg4IntraArgs& a) {
    const bool chroma = a.block_index == 4 || a.block_index == 5;
    alignas(16) int16_t block[64] = {};
    BitReader r = reader_at(pp, offset);
    if (a.dc_vlc) {
        const KvtStatus st = read_intra_dc(r, chroma, &block[0]);
        if (st != kvtStsOk) return st;
        r.store(pp, offset);
    }
    if (kAcCodes) {
        const int scan = a.ac_pred ? a.pred_dir : kZigzag;
        const KvtStatus st = read_raster<Tcoef::Mpeg4Intra>(r, a.dc_vlc ? 1 : 0, scan, block);
        if (st != kvtStsOk) return st;
        r.store(pp, offset);
    }
    kvtiPredictReconCoefIntra_MPEG4_16s(block, a.row, a.col, a.qp, a.pred_qp, a.pred_dir, a.ac_pred, chroma);
    kvtiQuantInvIntra_MPEG4_16s_I(block, a.qp, a.matrix, chroma);
    a.row[0] = block[0];
    return kvtiDCT8x8Inv_16s8u_C1R(block, dst, step);
}

}  // namespace

void init_coef_decode(CoefDecodeDsp& d) {
    d.intra_dc = intra_dc;
    d.zigzag_intra_dc = zigzag_intra_dc;
    d.zigzag_intra_ac = zigzag_intra_ac;
    d.zigzag_inter = zigzag_inter;
    d.intra_dc_only_h263 = intra_dc_only_h263;
    d.intra_h263 = intra_h263;
    d.inter_h263 = inter_h263;
    d.adv_intra_h263 = adv_intra_h263;
    d.inter_mpeg4 = inter_mpeg4;
    d.intra_mpeg4[0] = intra_mpeg4<false>;
    d.intra_mpeg4[1] = intra_mpeg4<true>;
}

}  // namespace kvt::KVT_C_NS
