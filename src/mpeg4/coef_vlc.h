// Readers of the H.263 / MPEG-4 transform-coefficient codes (TCOEF events with their escapes) and of
// the MPEG-4 intra DC, shared by the coefficient decoders.
//
// They read through a private copy of the byte cursor with a four-byte big-endian look-ahead at the
// current byte, so they never look more than 3 bytes past the byte that holds the last bit they
// consume; the caller stores the copy back only when a whole block was accepted.
#pragma once

#include <cstdint>

#include "bitstream/byte_cursor.h"
#include "kvtvc.h"
#include "mpeg4/coef_tables.h"

namespace kvt {

struct BitReader {
    const uint8_t* p;
    unsigned offset;  // 0..7

    // The next bits, first one in bit 31; at least 25 of them are valid.
    uint32_t peek() const { return load_be32(p) << offset; }
    void skip(unsigned n) {
        offset += n;
        p += offset >> 3;
        offset &= 7;
    }
    uint32_t get(unsigned n) {  // n 1..25
        const uint32_t v = peek() >> (32 - n);
        skip(n);
        return v;
    }
    void store(uint8_t** pp, int* pOffset) const {
        *pp = const_cast<uint8_t*>(p);
        *pOffset = int(offset);
    }
};

inline BitReader reader_at(uint8_t* const* pp, const int* pOffset) { return {*pp, unsigned(*pOffset)}; }

struct Event {
    int last, run, level;
};

// The TCOEF flavours: code table, escape form, and the statuses for a bad code and for a run that
// leaves the block.
enum class Tcoef { Mpeg4Intra, Mpeg4Inter, H263, H263AdvIntra };

template <Tcoef T>
struct TcoefTraits {
    static constexpr bool kMpeg4 = T == Tcoef::Mpeg4Intra || T == Tcoef::Mpeg4Inter;
    static constexpr KvtStatus kBadCode = kMpeg4 ? kvtStsBadCoeffCode : kvtStsBadVlcCode;
    static constexpr KvtStatus kBadIndex = kMpeg4 ? kvtStsBadCoeffCode : kvtStsBadCoeffCount;
    static const TcoefEntry* table() {
        return T == Tcoef::Mpeg4Intra ? kTcoefIntra : T == Tcoef::H263AdvIntra ? kTcoefAdvIntra : kTcoefInter;
    }
    // LMAX by last * 64 + run and RMAX + 1 by last * 64 + level (ISO/IEC 14496-2 Tables B-19 to B-22).
    static const uint8_t* lmax() { return T == Tcoef::Mpeg4Intra ? _kvtLMAXintra : _kvtLevelMAXinter; }
    static const uint8_t* rmax1() { return T == Tcoef::Mpeg4Intra ? _kvtRunMAXintra : _kvtRMAXinter; }
};

// One table code and its sign bit at the reader (the code after an escape's mode bits); false on
// a look-ahead that starts no code, and on the escape code itself.
inline bool read_table_code(BitReader& r, const TcoefEntry* table, Event& ev) {
    const uint32_t w = r.peek();
    const uint32_t v = w >> 20;
    if (v < 8) return false;
    const TcoefEntry e = *tcoef_lookup(table, v);
    if (e.level == kEscapeLevel) return false;
    const int negative = int(w >> (31 - e.length)) & 1;
    r.skip(e.length + 1u);
    ev = {e.last, e.run, negative ? -int(e.level) : int(e.level)};
    return true;
}

// ISO/IEC 14496-2 7.4.1.3: after the escape code, 0 = level offset by LMAX, 10 = run offset by
// RMAX + 1 (each followed by a table code), 11 = fixed length: last, run (6), marker, level (12,
// two's complement), marker. An escape code in place of the table code is rejected.
template <Tcoef T>
inline bool read_mpeg4_escape(BitReader& r, Event& ev) {
    using Tr = TcoefTraits<T>;
    const uint32_t mode = r.peek() >> 23;  // escape code (7 bits, known), then 2 mode bits
    if ((mode & 2) == 0 || (mode & 1) == 0) {
        r.skip((mode & 2) ? 9 : 8);
        if (!read_table_code(r, Tr::table(), ev)) return false;
        const int magnitude = ev.level < 0 ? -ev.level : ev.level;
        if (mode & 2) {
            ev.run += Tr::rmax1()[ev.last * 64 + magnitude];
        } else {
            const int m = magnitude + Tr::lmax()[ev.last * 64 + ev.run];
            ev.level = ev.level < 0 ? -m : m;
        }
        return true;
    }
    r.skip(9);
    const uint32_t w = r.peek();
    const int level = int32_t(w << 8) >> 20;  // 12 bits after last, run and the marker
    if (!((w >> 24) & 1) || !((w >> 11) & 1) || (level & 0x7FF) == 0) return false;
    r.skip(21);
    ev = {int(w >> 31), int(w >> 25) & 63, level};
    return true;
}

// H.263 5.4.2: the escape code is followed by last (1), run (6) and level (8, two's complement).
inline void read_h263_escape(BitReader& r, Event& ev) {
    const uint32_t w = r.peek() << 7;
    ev = {int(w >> 31), int(w >> 25) & 63, int(int8_t(uint8_t(w >> 17)))};
    r.skip(22);
}

template <Tcoef T>
inline bool read_escape(BitReader& r, Event& ev) {
    if constexpr (TcoefTraits<T>::kMpeg4) {
        return read_mpeg4_escape<T>(r, ev);
    } else {
        read_h263_escape(r, ev);
        return true;
    }
}

// Reads events until the one with last set, from scan index `first`; store(index, level) receives
// each coefficient. Returns 0, or the flavour's status for a bad code or for a run past index 63
// (then nothing more is stored). *end receives the last scan index + 1.
//
// Table codes are cut from one look-ahead word, reloaded at the current byte only when fewer than
// the 13 bits of the longest code and its sign are left in it, so most codes cost a shift and a
// table load rather than a memory round trip. Escapes go through the reader.
template <Tcoef T, class Store>
inline KvtStatus read_block(BitReader& r, int first, int* end, Store&& store) {
    const TcoefEntry* table = TcoefTraits<T>::table();
    const uint8_t* p = r.p;
    unsigned used = r.offset;  // bits of the word at p already consumed
    uint32_t w = load_be32(p) << used;
    int i = first - 1;
    for (;;) {
        if (used > 32 - 13) {
            p += used >> 3;
            used &= 7;
            w = load_be32(p) << used;
        }
        const uint32_t v = w >> 20;
        if (v < 8) return TcoefTraits<T>::kBadCode;
        const TcoefEntry e = *tcoef_lookup(table, v);
        Event ev;
        if (e.level != kEscapeLevel) {
            const unsigned n = e.length + 1u;                // the code and its sign
            const int negative = -int((w >> (32 - n)) & 1);  // a random bit: no branch on it
            ev = {e.last, e.run, (int(e.level) ^ negative) - negative};
            w <<= n;
            used += n;
        } else {
            BitReader at{p + (used >> 3), used & 7};
            if (!read_escape<T>(at, ev)) return TcoefTraits<T>::kBadCode;
            p = at.p;
            used = at.offset;
            w = load_be32(p) << used;
        }
        i += ev.run + 1;
        if (i > 63) return TcoefTraits<T>::kBadIndex;
        store(i, ev.level);
        if (ev.last) break;
    }
    r.p = p + (used >> 3);
    r.offset = used & 7;
    *end = i + 1;
    return kvtStsOk;
}

// MPEG-4 intra DC (ISO/IEC 14496-2 Tables B-13, B-14 and 7.4.1.2): size code, differential, and a
// marker bit after a differential of more than 8 bits. Returns -100 for a size code of too many
// zeros, -99 for a missing marker.
inline KvtStatus read_intra_dc(BitReader& r, bool chroma, int16_t* dc) {
    const uint32_t w = r.peek();
    const int zeros = w ? __builtin_clz(w) : 32;
    if (zeros > 12) return kvtStsBadCoeffCode;
    const DcSizeEntry e = kDcSize[chroma][zeros][(w >> (30 - zeros)) & 1];
    if (e.length == 0) return kvtStsBadCoeffCode;
    r.skip(e.length);
    int diff = 0;
    if (e.size) {
        const int u = int(r.get(e.size));
        diff = u >> (e.size - 1) ? u : u - ((1 << e.size) - 1);
        if (e.size > 8 && r.get(1) == 0) return kvtStsBadDCSizeCode;
    }
    *dc = int16_t(diff);
    return kvtStsOk;
}

}  // namespace kvt
