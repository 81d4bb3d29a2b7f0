// Test bitstreams written as strings of '0' and '1', independent of the library's bit writer.
#pragma once

#include <bitset>
#include <cstdint>
#include <string>
#include <vector>

#include "checkasm.h"

namespace kvt::test {

// The low n bits of v, most significant first.
inline std::string to_bits(uint32_t v, int n) {
    return std::bitset<32>(v).to_string().substr(size_t(32 - n));
}

// `bits` packed most significant first, `skip` bits into random bytes with 8 more random bytes
// behind (the readers look ahead past the last code); the cursor on the first of `bits`.
struct Stream {
    std::vector<uint8_t> b;
    uint8_t* p;
    int offset;
    Stream(Rng& rng, const std::string& bits, int skip) : b((size_t(skip) + bits.size()) / 8 + 9) {
        for (auto& x : b) x = uint8_t(rng.next());
        for (size_t i = 0, j = size_t(skip); i < bits.size(); ++i, ++j)
            b[j / 8] = uint8_t((b[j / 8] & ~(0x80 >> j % 8)) | (bits[i] - '0') << (7 - j % 8));
        p = &b[size_t(skip / 8)];
        offset = skip % 8;
    }
    long pos() const { return offset >> 3 ? -1 : long(p - b.data()) * 8 + offset; }  // -1: offset not 0..7
};

}  // namespace kvt::test
