// A bit reader for the tests, written from H.264 7.2 and 9.1 independently of the encoder's
// writer: fixed-length fields, Exp-Golomb codes and the RBSP's trailing bits.
#pragma once
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

class BitReader {
public:
    explicit BitReader(std::vector<uint8_t> b) : b_(std::move(b)) {}
    int bit() {
        EXPECT_LT(pos_ / 8, b_.size()) << "read past the end";
        if (pos_ / 8 >= b_.size()) return 0;
        const int v = b_[pos_ / 8] >> (7 - pos_ % 8) & 1;
        ++pos_;
        return v;
    }
    uint32_t u(int n) {
        uint32_t v = 0;
        while (n-- > 0) v = v << 1 | bit();
        return v;
    }
    uint32_t ue() {
        int zeros = 0;
        while (!bit()) ++zeros;
        return (1u << zeros) - 1 + u(zeros);
    }
    int32_t se() {
        const uint32_t k = ue();
        return k & 1 ? static_cast<int32_t>((k + 1) / 2) : -static_cast<int32_t>(k / 2);
    }
    // rbsp_trailing_bits(): a one, then zeros to the end of the data.
    bool at_trailing_bits() {
        if (bit() != 1) return false;
        while (pos_ % 8)
            if (bit()) return false;
        return pos_ == b_.size() * 8;
    }

private:
    std::vector<uint8_t> b_;
    size_t pos_ = 0;
};
