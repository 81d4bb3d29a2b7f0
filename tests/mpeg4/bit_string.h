// Test streams written as strings of '0' and '1', independent of the library's bit writer, and
// the one check every code reader goes through.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "checkasm.h"
#include "kvtvc.h"

inline bool operator==(KvtMotionVec a, KvtMotionVec b) { return a.dx == b.dx && a.dy == b.dy; }
inline std::ostream& operator<<(std::ostream& os, KvtMotionVec v) {
    return os << "(" << v.dx << "," << v.dy << ")";
}

namespace kvt::test {

inline std::string to_bits(uint32_t v, int n) {
    std::string s;
    for (int i = n - 1; i >= 0; --i) s += char('0' + ((v >> i) & 1));
    return s;
}

inline std::string random_bits(Rng& rng, int n) { return n ? to_bits(rng.next(), n) : ""; }

// The bits packed most significant first over 8 more bytes of `fill` (the readers look ahead past
// the last code), with the cursor `skip` bits in.
struct Stream {
    std::vector<uint8_t> bytes;
    uint8_t* p;
    int offset;
    explicit Stream(const std::string& bits, int skip = 0, uint8_t fill = 0)
        : bytes(bits.size() / 8 + 9, fill) {
        for (size_t i = 0; i < bits.size(); ++i)
            bytes[i / 8] = uint8_t((bytes[i / 8] & ~(0x80 >> i % 8)) | (bits[i] - '0') << (7 - i % 8));
        p = bytes.data() + skip / 8;
        offset = skip % 8;
    }
    long pos() const { return long(p - bytes.data()) * 8 + offset; }
};

// A difference d brought into the range of 32 << fcode half samples centred on zero.
inline int wrap_mv(int d, int fcode) { return ((d + (48 << fcode)) & ((32 << fcode) - 1)) - (16 << fcode); }

// `read` decodes at the cursor into its outputs (preset to sentinels). `bits` follow `off` random
// bits and precede random ones: an accepted code moves the cursor by its length and a rejected one
// (want_st < 0) by nothing, unless `moved` says how far a partial decode goes.
template <class Read, class Out>
void expect_code(Rng& rng, Read read, const std::string& bits, int off, KvtStatus want_st, const Out& want,
                 long moved = -1) {
    Stream s(random_bits(rng, off) + bits + random_bits(rng, 24), off, uint8_t(rng.next()));
    Out out{};
    EXPECT_EQ(read(&s.p, &s.offset, &out), want_st) << bits << " at offset " << off;
    EXPECT_EQ(out, want) << bits << " at offset " << off;
    EXPECT_EQ(s.pos(), off + (moved >= 0    ? moved
                              : want_st < 0 ? 0
                                            : long(bits.size())))
        << bits << " at " << off;
}

}  // namespace kvt::test
