// Header-field reader over one coded segment (a picture, a VOP, a VOL...).
//
// It keeps the cursor in the library's own form, a byte pointer and a bit offset 0..7, so the
// macroblock layer hands &ptr, &offset straight to the kvtvc readers and picks up where they
// stopped. Reads past the end of the segment return what lies there (the next start code, or the
// zero padding that Stream appends); the syntax layers ask overrun() at every macroblock and
// after every header, so a damaged stream stops with an error within a few bytes of the end.
#pragma once

#include <kvtvc.h>

#include <cstdint>
#include <cstring>

namespace kvtdec {

class BitReader {
public:
    BitReader() = default;
    BitReader(Kvt8u* begin, const Kvt8u* end) : ptr(begin), offset(0), end_(end) {}

    // The next n (0..32) bits, most significant first; the cursor does not move. Reads the 8 bytes
    // at the cursor (the stream's padding keeps them readable).
    uint32_t peek(int n) const {
        if (n == 0) return 0;
        uint64_t w;
        std::memcpy(&w, ptr, 8);
        return uint32_t((__builtin_bswap64(w) << offset) >> (64 - n));
    }
    uint32_t read(int n) {
        const uint32_t v = peek(n);
        skip(n);
        return v;
    }
    bool read_bit() { return read(1) != 0; }
    void skip(int n) {
        const int t = offset + n;
        ptr += t >> 3;
        offset = int(t & 7);
    }

    int64_t bits_left() const { return int64_t(end_ - ptr) * 8 - offset; }
    bool overrun() const { return bits_left() < 0; }
    bool aligned() const { return offset == 0; }
    // Bits from here to the next byte boundary (0 when aligned).
    int bits_to_boundary() const { return (8 - offset) & 7; }
    void align() { skip(bits_to_boundary()); }
    const Kvt8u* end() const { return end_; }

    // The cursor as the kvtvc readers take it.
    Kvt8u* ptr = nullptr;
    int offset = 0;

private:
    const Kvt8u* end_ = nullptr;
};

// Bits of a field that counts values 0..values-1 (at least 1).
inline int bits_to_count(int values) {
    int bits = 1;
    while ((1 << bits) < values) ++bits;
    return bits;
}

}  // namespace kvtdec
