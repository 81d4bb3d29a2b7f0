// Fuzz target over every H.263 / MPEG-4 header and motion-vector decoder of the byte cursor.
//
// The input's first four bytes set the start offset, fcode, flag bits and temporal distances
// (fcode and distances may be out of range on purpose); the rest is the bitstream, copied into a
// buffer that ends 8 zero bytes after it, so AddressSanitizer flags any read past that padding.
// Decoders run one after another, each picked by 4 bits of the stream, while enough coded bytes
// remain for the longest call; after every call the offset must be 0..7 and the cursor must not
// have moved backwards, nor at all when a code was rejected.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "bitstream/byte_cursor.h"
#include "kvtvc.h"

namespace {

constexpr size_t kPad = 8;
constexpr size_t kLongestCall = 24;  // four MPEG-4 vectors of fcode 7: 4 x 38 bits, plus slack

void require(bool ok) {
    if (!ok) std::abort();
}

struct State {
    KvtMotionVec left[4]{}, upper[4]{}, upper_right[4]{}, cur[4]{}, fwd[4]{}, bwd[4]{};
    alignas(4) Kvt32u valid[3]{};
    alignas(4) Kvt8u present[4]{};
    alignas(4) Kvt32u colocated = 0;
    Kvt32u quant = 1;
    int fcode = 1, trb = 1, trd = 1;
};

// Runs decoder `op`; returns its status. Decoders that may stop after a part (interpolated and
// four-vector macroblocks) report it, so the caller knows the cursor may have moved on error.
KvtStatus run(int op, Kvt8u** pp, int* off, State& s, bool* partial) {
    Kvt8u v = 0;
    *partial = false;
    switch (op) {
        case 0:
            return kvtiDecodeMCBPCIntra_H263(pp, off, &v);
        case 1:
            return kvtiDecodeMCBPCInter_H263(pp, off, &v);
        case 2:
            return kvtiDecodeMODB_H263(pp, off, &v);
        case 3:
            return kvtiDecodeCBPY_H263(pp, off, &v);
        case 4:
            return kvtiUpdateQuant_MQ_H263_1u32s_I(pp, off, &s.quant);
        case 5:
            return kvtiDecodeMV_H263(pp, off, &s.left[1], &s.upper[2], &s.upper_right[2], &s.cur[0]);
        case 6:
            return kvtiDecodeMV_TopBorder_H263(pp, off, &s.left[1], &s.cur[0]);
        case 7:
        case 8:
            *partial = true;
            std::memcpy(s.left, s.cur, sizeof s.cur);
            return kvtiDecodePadMV_PVOP_MPEG4(pp, off, s.left, s.upper, s.upper_right, s.cur, &s.valid[0],
                                              &s.valid[1], &s.valid[2], s.present, s.fcode, op == 7 ? 2 : 0);
        case 9:
            return kvtiDecodeMV_BVOP_Forward_MPEG4(pp, off, &s.fwd[0], s.fcode);
        case 10:
            return kvtiDecodeMV_BVOP_Backward_MPEG4(pp, off, &s.bwd[0], s.fcode);
        case 11:
            *partial = true;
            return kvtiDecodeMV_BVOP_Interpolate_MPEG4(pp, off, &s.fwd[1], &s.bwd[1], s.fcode, 8 - s.fcode);
        case 12:
            return kvtiDecodeMV_BVOP_Direct_MPEG4(pp, off, s.cur, s.fwd, s.bwd, &s.colocated, s.trb, s.trd);
        default: {  // the functions without a cursor, on the vectors decoded so far
            KvtMotionVec c{};
            const KvtRegionRect rect{-32, -32, 96 + (s.trb & 31), 64 + (s.trd & 31)};
            kvtiDecodeMV_BVOP_DirectSkip_MPEG4(s.cur, s.fwd, s.bwd, &s.colocated, s.trb, s.trd);
            kvtiPadMV_MPEG4(s.upper, s.present);
            kvtiComputeChromaMV_MPEG4(&s.cur[0], &c);
            kvtiComputeChroma4MV_MPEG4(s.cur, &c, s.present);
            kvtiLimitMVToRect_MPEG4(&s.fwd[0], &s.upper_right[op & 3], &rect, Kvt32u(s.trb), Kvt32u(s.trd),
                                    op & 1 ? 8 : 16);
            std::memcpy(s.upper, s.cur, sizeof s.cur);
            return kvtStsOk;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 4) return 0;
    State s;
    s.fcode = data[1] % 9;  // 0 and 8 exercise the fcode check
    for (int i = 0; i < 3; ++i) s.valid[i] = (data[2] >> i) & 1;
    for (int i = 0; i < 4; ++i) s.present[i] = (data[2] >> (3 + i)) & 1;
    s.colocated = data[2] >> 7;
    s.trb = data[3] & 15;  // 0 exercises the temporal-distance check
    s.trd = data[3] >> 4;
    const size_t n = size - 4;
    std::vector<uint8_t> buf(n + kPad, 0);
    if (n) std::memcpy(buf.data(), data + 4, n);
    Kvt8u* p = buf.data();
    int off = data[0] & 7;
    auto pos = [&] { return size_t(p - buf.data()) * 8 + size_t(off); };
    while (pos() / 8 + kLongestCall <= n) {
        const int op = int(kvt::ownGetBits(&p, &off, 4));
        const size_t before = pos();
        bool partial = false;
        const KvtStatus st = run(op, &p, &off, s, &partial);
        require(off >= 0 && off <= 7);
        require(pos() >= before);
        if (st != kvtStsOk) {
            require(st < 0);
            require(partial || pos() == before);
            if (pos() == before) kvt::ownFlushBits(&p, &off, 1);  // step over the rejected bit
        }
    }
    return 0;
}
