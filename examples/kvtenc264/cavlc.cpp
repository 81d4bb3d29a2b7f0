#include "cavlc.h"

#include <cstdlib>

#include <kvtvc.h>
#include "tables.h"

namespace enc264 {

namespace {

struct Elements {
    Kvt8u trailing_ones = 0, signs = 0, total = 0, total_zeros = 0;
    Kvt16s levels[16] = {};
    Kvt8u runs[16] = {};
};

void put(BitWriter& bw, Vlc v) { bw.put(v.code, v.len); }

// level_prefix and level_suffix of one level (H.264 9.2.2.1, encoder side).
void write_level(BitWriter& bw, int level, int suffix_length, bool first_after_short_ones) {
    int code = level > 0 ? 2 * level - 2 : -2 * level - 1;
    if (first_after_short_ones) code -= 2;
    if (suffix_length == 0) {
        if (code < 14)
            bw.put(1, code + 1);  // prefix only
        else if (code < 30)
            bw.put(1, 15), bw.put(code - 14, 4);  // prefix 14, 4-bit suffix
        else
            bw.put(1, 16), bw.put(code - 30, 12);  // prefix 15, 12-bit suffix
    } else if (code < (15 << suffix_length)) {
        bw.put(1, (code >> suffix_length) + 1);
        bw.put(code & ((1 << suffix_length) - 1), suffix_length);
    } else {
        bw.put(1, 16), bw.put(code - (15 << suffix_length), 12);
    }
}

int write_elements(BitWriter& bw, const Elements& e, int max_coeff, int nc) {
    const int cls = nc < 0 ? 4 : nc < 2 ? 0 : nc < 4 ? 1 : nc < 8 ? 2 : 3;
    put(bw, kCoeffToken[cls][e.total][e.trailing_ones]);
    if (e.total == 0) return 0;
    bw.put(e.signs, e.trailing_ones);
    int suffix_length = e.total > 10 && e.trailing_ones < 3 ? 1 : 0;
    for (int i = 0; i < e.total - e.trailing_ones; ++i) {
        const int level = e.levels[i];
        write_level(bw, level, suffix_length, i == 0 && e.trailing_ones < 3);
        if (suffix_length == 0) suffix_length = 1;
        if (std::abs(level) > (3 << (suffix_length - 1)) && suffix_length < 6) ++suffix_length;
    }
    if (e.total < max_coeff)
        put(bw, max_coeff == 4 ? kTotalZerosChromaDc[e.total][e.total_zeros]
                               : kTotalZeros[e.total][e.total_zeros]);
    int zeros_left = e.total_zeros;
    for (int i = 0; i < e.total - 1 && zeros_left > 0; ++i) {
        put(bw, kRunBefore[zeros_left < 7 ? zeros_left : 7][e.runs[i]]);
        zeros_left -= e.runs[i];
    }
    return e.total;
}

const Kvt32u* zigzag() {
    static const struct Scan {
        Kvt32u pos[16];
        Scan() {
            for (int i = 0; i < 16; ++i) pos[i] = kZigzag4x4[i];
        }
    } scan;
    return scan.pos;
}

}  // namespace

int write_block_cavlc(BitWriter& bw, const int16_t* levels, int first, int nc) {
    Elements e;
    kvtiEncodeCoeffsCAVLC_H264_16s(levels, static_cast<Kvt8u>(first), zigzag(), 15, &e.trailing_ones,
                                   &e.signs, &e.total, &e.total_zeros, e.levels, e.runs);
    return write_elements(bw, e, 16 - first, nc);
}

int write_chroma_dc_cavlc(BitWriter& bw, const int16_t* levels) {
    Elements e;
    kvtiEncodeChromaDcCoeffsCAVLC_H264_16s(levels, &e.trailing_ones, &e.signs, &e.total, &e.total_zeros,
                                           e.levels, e.runs);
    return write_elements(bw, e, 4, -1);
}

}  // namespace enc264
