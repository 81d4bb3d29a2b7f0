// Most-significant-bit-first writer for an H.264 RBSP, with the Exp-Golomb codes of H.264 9.1.
#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

namespace enc264 {

class BitWriter {
public:
    // Appends the n low bits of value (n <= 32), first bit the most significant.
    void put(uint32_t value, int n) {
        if (n == 0) return;
        acc_ = (acc_ << n) | (value & (n == 32 ? 0xffffffffu : (1u << n) - 1));
        pending_ += n;
        if (pending_ >= 32) {  // at most 63 bits wait in the accumulator
            pending_ -= 32;
            const uint32_t w = static_cast<uint32_t>(acc_ >> pending_);
            if (size_ + 4 > bytes_.size()) bytes_.resize(2 * bytes_.size() + 4096);
            uint8_t* b = bytes_.data() + size_;
            b[0] = static_cast<uint8_t>(w >> 24), b[1] = static_cast<uint8_t>(w >> 16);
            b[2] = static_cast<uint8_t>(w >> 8), b[3] = static_cast<uint8_t>(w);
            size_ += 4;
        }
    }
    void flag(bool b) { put(b ? 1 : 0, 1); }
    // ue(v): codeNum + 1 in binary, preceded by as many zeros as it has bits after the first.
    void ue(uint32_t v) {
        const uint64_t x = static_cast<uint64_t>(v) + 1;
        const int bits = 64 - __builtin_clzll(x);
        if (bits > 16)
            put(0, bits - 1), put(static_cast<uint32_t>(x), bits);
        else
            put(static_cast<uint32_t>(x), 2 * bits - 1);
    }
    // se(v): positive values map to odd code numbers, zero and negative ones to even.
    void se(int32_t v) { ue(v > 0 ? 2u * static_cast<uint32_t>(v) - 1 : 2u * static_cast<uint32_t>(-v)); }
    // rbsp_trailing_bits(): a one, then zeros up to the byte boundary.
    void trailing() {
        put(1, 1);
        if (pending_ % 8) put(0, 8 - pending_ % 8);
        bytes_.resize(size_);
        for (; pending_ > 0; pending_ -= 8) bytes_.push_back(static_cast<uint8_t>(acc_ >> (pending_ - 8)));
        size_ = bytes_.size();
    }
    // The finished bytes; call after trailing().
    const std::vector<uint8_t>& bytes() const { return bytes_; }

private:
    std::vector<uint8_t> bytes_;  // the first size_ bytes are written
    size_t size_ = 0;
    uint64_t acc_ = 0;
    int pending_ = 0;
};

// Length in bits of ue(v) and se(v), for rate estimates.
inline int ue_bits(uint32_t v) { return 2 * (31 - __builtin_clz(v + 1)) + 1; }
inline int se_bits(int32_t v) {
    return ue_bits(v > 0 ? 2u * static_cast<uint32_t>(v) - 1 : 2u * static_cast<uint32_t>(-v));
}

}  // namespace enc264
