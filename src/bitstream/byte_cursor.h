// Byte bit cursor of the H.263 / MPEG-4 readers and writers.
//
// The caller owns a byte pointer and a bit offset 0..7 (the number of bits of the current byte
// already consumed, most significant bit first). Every H.263 / MPEG-4 decoder reads through the
// primitives below and every writer stores through PutBits, so there is one definition of the
// bit order and of the cursor movement.
//
// Look-ahead: ownShowBits reads five bytes from the byte pointer, ownShowBits16 two; callers keep
// their stream readable well past the last coded byte (the library never checks a length).
#pragma once

#include <cstdint>
#include <cstring>

#include "common/bits.h"

namespace kvt {

// Four bytes at p as a big-endian word.
inline uint32_t load_be32(const uint8_t* p) {
    uint32_t w;
    std::memcpy(&w, p, 4);
#if defined(__GNUC__)
    return __builtin_bswap32(w);
#else
    return (w >> 24) | ((w >> 8) & 0xFF00u) | ((w << 8) & 0xFF0000u) | (w << 24);
#endif
}

// The next n (0..31) bits at (p, offset) as an unsigned value; the cursor does not move.
// The 40-bit look-ahead word always covers offset + n bits.
inline uint32_t ownShowBits(const uint8_t* p, uint32_t offset, uint32_t n) {
    const uint64_t w = (uint64_t(p[0]) << 32) | load_be32(p + 1);
    return uint32_t(w >> (40 - offset - n)) & low_mask(int(n));
}

// The next n (0..9) bits from the two-byte look-ahead word of the macroblock-header readers.
inline uint32_t ownShowBits16(const uint8_t* p, uint32_t offset, uint32_t n) {
    const uint32_t w = (uint32_t(p[0]) << 8) | p[1];
    return (w >> (16 - offset - n)) & low_mask(int(n));
}

// Advances the cursor by n bits; a negative n steps back (the shift is arithmetic, so from
// offset 0 a step of -1 lands on the previous byte, offset 7).
template <class Byte>
inline void ownFlushBits(Byte** pp, int* pOffset, int n) {
    const int t = *pOffset + n;
    *pp += t >= 0 ? t >> 3 : ~(~t >> 3);
    *pOffset = t & 7;
}

template <class Byte>
inline uint32_t ownGetBits(Byte** pp, int* pOffset, uint32_t n) {
    const uint32_t v = ownShowBits(*pp, uint32_t(*pOffset), n);
    ownFlushBits(pp, pOffset, int(n));
    return v;
}

// Writes the low n (1..32) bits of value at the cursor and advances it. The bits already written
// in the current byte are kept; every bit behind the new code in the bytes touched becomes 0, so
// an output buffer needs no clearing.
inline void PutBits(uint8_t** pp, int* pOffset, int value, int n) {
    uint8_t* p = *pp;
    const int k = *pOffset;
    const uint32_t code = n >= 32 ? uint32_t(value) : uint32_t(value) << (32 - n);
    if (k == 0) {
        p[0] = uint8_t(code >> 24);
        if (n > 8) p[1] = uint8_t(code >> 16);
        if (n > 16) p[2] = uint8_t(code >> 8);
        if (n > 24) p[3] = uint8_t(code);
    } else {
        p[0] = uint8_t((p[0] & (0xFFu << (8 - k))) | (code >> (24 + k)));
        const uint32_t rest = code << (8 - k);  // the bits that did not fit the current byte
        if (n > 8 - k) p[1] = uint8_t(rest >> 24);
        if (n > 16 - k) p[2] = uint8_t(rest >> 16);
        if (n > 24 - k) p[3] = uint8_t(rest >> 8);
        if (n > 32 - k) p[4] = uint8_t(rest);
    }
    ownFlushBits(pp, pOffset, n);
}

// A working copy of the caller's cursor: decoders read through it and store it back only when
// the whole code was accepted, so a rejected code leaves the caller's cursor where it was.
struct ByteCursor {
    uint8_t* p;
    int offset;

    uint32_t show(uint32_t n) const { return ownShowBits(p, uint32_t(offset), n); }
    uint32_t show16(uint32_t n) const { return ownShowBits16(p, uint32_t(offset), n); }
    void skip(int n) { ownFlushBits(&p, &offset, n); }
    void store(uint8_t** pp, int* pOffset) const {
        *pp = p;
        *pOffset = offset;
    }
};

// The fronts' cursor check: a null address of either variable or a null byte pointer.
inline bool null_cursor(uint8_t* const* pp, const int* pOffset) { return !pp || !pOffset || !*pp; }

}  // namespace kvt
