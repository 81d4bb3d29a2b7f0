// Test streams written as strings of '0' and '1', independent of the library's bit writer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "checkasm.h"

namespace kvt::test {

inline std::string to_bits(uint32_t v, int n) {
    std::string s;
    for (int i = n - 1; i >= 0; --i) s += char('0' + ((v >> i) & 1));
    return s;
}

inline std::string random_bits(Rng& rng, int n) {
    std::string s;
    for (int i = 0; i < n; ++i) s += char('0' + (rng.next() & 1));
    return s;
}

// The bits packed most significant first, followed by `pad` bytes of `fill` (the readers look
// ahead past the last code).
inline std::vector<uint8_t> pack(const std::string& bits, size_t pad = 8, uint8_t fill = 0) {
    std::vector<uint8_t> out((bits.size() + 7) / 8 + pad, fill);
    for (size_t i = 0; i < (bits.size() + 7) / 8 * 8; ++i) {
        const int b = i < bits.size() ? bits[i] - '0' : (fill >> (7 - i % 8)) & 1;
        out[i / 8] = uint8_t((out[i / 8] & ~(0x80 >> (i % 8))) | (b << (7 - i % 8)));
    }
    return out;
}

// A cursor over a packed stream, with its position in bits from the start.
struct Stream {
    std::vector<uint8_t> bytes;
    uint8_t* p;
    int offset = 0;

    explicit Stream(const std::string& bits, uint8_t fill = 0) : bytes(pack(bits, 8, fill)), p(bytes.data()) {}
    // Starts `skip` bits in (the bits before belong to the caller).
    Stream(const std::string& bits, int skip, uint8_t fill) : Stream(bits, fill) {
        p += skip / 8;
        offset = skip % 8;
    }
    long pos() const { return long(p - bytes.data()) * 8 + offset; }
};

}  // namespace kvt::test
