// Compile-time lookup tables for the short prefix codes of the H.263 / MPEG-4 headers.
//
// A table of 2^width entries is indexed by the next `width` bits (less a base, see below); every
// index that starts with a code holds the code's value and length, every other index holds
// {-1, 0}. The codes are listed as they are printed in the standards, so the tables cannot drift
// from the code lists they are built from.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kvt {

struct CodeEntry {
    int16_t value;
    int16_t length;  // 0: no valid code begins with these bits
};

struct CodeSpec {
    const char* bits;  // the code, first transmitted bit first
    int32_t value;
};

constexpr int code_length(const char* bits) {
    int n = 0;
    while (bits[n]) ++n;
    return n;
}

constexpr uint32_t code_value(const char* bits) {
    uint32_t v = 0;
    for (int i = 0; bits[i]; ++i) v = v * 2 + uint32_t(bits[i] - '0');
    return v;
}

// N = 2^width entries for the look-ahead values base .. base + N - 1. A code fills the indices
// its bits cover; codes outside that window are skipped, so one code list can feed the separate
// short-code and long-code halves of a table.
template <size_t N, size_t M>
constexpr std::array<CodeEntry, N> build_code_table(int width, uint32_t base, const CodeSpec (&codes)[M]) {
    std::array<CodeEntry, N> t{};
    for (size_t i = 0; i < N; ++i) t[i] = CodeEntry{-1, 0};
    for (size_t c = 0; c < M; ++c) {
        const int len = code_length(codes[c].bits);
        if (len > width) continue;
        const uint32_t first = code_value(codes[c].bits) << (width - len);
        const uint32_t end = first + (uint32_t(1) << (width - len));
        const uint32_t lo = first > base ? first : base;
        const uint32_t hi = end < base + N ? end : uint32_t(base + N);
        for (uint32_t v = lo; v < hi; ++v) t[v - base] = CodeEntry{int16_t(codes[c].value), int16_t(len)};
    }
    return t;
}

// True when every index from `from` on starts a code.
template <size_t N>
constexpr bool covers(const std::array<CodeEntry, N>& t, size_t from) {
    for (size_t i = from; i < N; ++i)
        if (t[i].length == 0) return false;
    return true;
}

}  // namespace kvt
