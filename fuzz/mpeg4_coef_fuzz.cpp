// Fuzz target over every coefficient decoder of the byte cursor: the MPEG-4 DC and zigzag decoders
// and the H.263 / MPEG-4 block decoders.
//
// The input's first three bytes set the start offset, the quantizer, the prediction direction and
// flags (some out of range on purpose); the rest is the bitstream, copied into a buffer that ends 8
// zero bytes after it, so AddressSanitizer flags any read past that padding. Every output (64
// coefficients, an 8x8 block of pixels with step 8, the prediction state) is a heap buffer of exactly
// its size, so a coefficient index outside 0..63 is flagged too. Decoders run one after another, each
// picked by 4 bits of the stream, while the cursor is inside the coded bytes; after every call the
// offset must be 0..7 and the cursor must not have moved backwards, nor at all when a block was
// rejected, except for the DC the separate-DC forms have already accepted.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "bitstream/byte_cursor.h"
#include "kvtvc.h"

namespace {

constexpr size_t kPad = 8;

void require(bool ok) {
    if (!ok) std::abort();
}

struct Params {
    int qp, pred_qp, dir, ac_pred, block_index, dc_vlc, mode, coded;
    const Kvt8u* matrix;
};

struct Buffers {
    std::vector<Kvt16s> coef = std::vector<Kvt16s>(64);
    std::vector<Kvt8u> pixels = std::vector<Kvt8u>(64);
    std::vector<Kvt16s> row = std::vector<Kvt16s>(16, -1);  // the current group is row + 8
    std::vector<Kvt16s> col = std::vector<Kvt16s>(8);
    std::vector<Kvt8u> matrix = std::vector<Kvt8u>(64, 16);
};

// Runs decoder `op`; *dc_first tells whether the decoder may keep a DC it accepted before failing.
KvtStatus run(int op, Kvt8u** pp, int* off, const Params& a, Buffers& b, bool* dc_first) {
    Kvt16s *c = b.coef.data(), *row = b.row.data() + 8, *col = b.col.data();
    Kvt8u* px = b.pixels.data();
    *dc_first = op == 1 || op == 4 || op == 5 || op == 8 || op == 9;
    switch (op) {
        case 0:
            return kvtiDecodeVLC_IntraDCVLC_MPEG4_1u16s(pp, off, c, a.block_index & 1);
        case 1:
            return kvtiDecodeVLCZigzag_IntraDCVLC_MPEG4_1u16s(pp, off, c, a.dir, a.block_index & 1);
        case 2:
            return kvtiDecodeVLCZigzag_IntraACVLC_MPEG4_1u16s(pp, off, c, a.dir);
        case 3:
            return kvtiDecodeVLCZigzag_Inter_MPEG4_1u16s(pp, off, c);
        case 4:
            return kvtiDecodeBlockCoef_IntraDCOnly_H263_1u8u(pp, off, px, 8);
        case 5:
            return kvtiDecodeBlockCoef_Intra_H263_1u8u(pp, off, px, 8, a.qp);
        case 6:
            return kvtiDecodeBlockCoef_Inter_H263_1u16s(pp, off, c, a.qp);
        case 7:
            return kvtiDecodeBlockCoef_AdvIntra_H263_1u8u(pp, off, px, 8, row, col, a.qp, a.mode, a.coded);
        case 8:
            return kvtiDecodeBlockCoef_Intra_MPEG4_1u8u(pp, off, px, 8, row, col, a.qp, a.pred_qp, a.dir,
                                                        a.ac_pred, a.block_index, a.dc_vlc, a.matrix);
        case 9:
            return kvtiDecodeBlockCoef_IntraDCOnly_MPEG4_1u8u(pp, off, px, 8, row, col, a.qp, a.pred_qp,
                                                              a.dir, a.ac_pred, a.block_index, a.dc_vlc,
                                                              a.matrix);
        default:
            return kvtiDecodeBlockCoef_Inter_MPEG4_1u16s(pp, off, c, a.qp, op & 1 ? a.matrix : nullptr);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) return 0;
    Buffers b;
    for (size_t i = 0; i < 64 && 3 + i < size; ++i)
        b.matrix[i] = data[3 + i];  // the stream's bytes as weights
    Params a{};
    a.qp = data[1] & 31;  // 0 exercises the quantizer checks
    a.pred_qp = (data[1] >> 5) * 4 + 1;
    a.dir = data[2] & 3;  // 3 exercises the direction check
    a.ac_pred = (data[2] >> 2) & 1;
    a.dc_vlc = (data[2] >> 3) & 1;
    a.coded = (data[2] >> 4) & 1;
    a.block_index = (data[0] >> 3) % 11;  // 10 exercises the block-index check
    a.mode = (data[0] >> 6) + 1;          // 4 exercises the Annex I mode check
    a.matrix = b.matrix.data();
    const size_t n = size - 3;
    std::vector<uint8_t> buf(n + kPad, 0);
    if (n) std::memcpy(buf.data(), data + 3, n);
    Kvt8u* p = buf.data();
    int off = data[0] & 7;
    auto pos = [&] { return size_t(p - buf.data()) * 8 + size_t(off); };
    while (pos() / 8 < n) {
        const int op = int(kvt::ownGetBits(&p, &off, 4));
        const size_t before = pos();
        bool dc_first = false;
        const KvtStatus st = run(op, &p, &off, a, b, &dc_first);
        require(off >= 0 && off <= 7);
        require(pos() >= before);
        if (st != kvtStsOk) {
            require(st < 0);
            require(dc_first || pos() == before);
            if (pos() == before) kvt::ownFlushBits(&p, &off, 1);  // step over the rejected bit
        }
    }
    return 0;
}
