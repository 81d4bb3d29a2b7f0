// The input stream: the whole file in memory followed by zero padding, and the searches for the
// start codes that cut it into pictures (H.263) or headers and VOPs (MPEG-4).
#pragma once

#include <kvtvc.h>

#include <cstddef>
#include <vector>

namespace kvtdec {

class Stream {
public:
    // The kvtvc readers look up to 4 bytes past the last coded bit and a damaged macroblock can
    // overrun its segment by a few codes before the decoder notices; zeros are never a valid
    // macroblock code, so a decoder running into the padding stops at once.
    static constexpr size_t kPadding = 256;

    explicit Stream(std::vector<Kvt8u> bytes);

    Kvt8u* data() { return bytes_.data(); }
    size_t size() const { return size_; }

    // Offset of the first byte-aligned 00 00 01 prefix at or after pos, or size().
    size_t find_start_code(size_t pos) const;
    // Offset of the first byte-aligned H.263 picture start code (22 bits 0000 0000 0000 0000 1000 00)
    // or end-of-sequence code (GN 31) at or after pos, or size().
    size_t find_h263_start(size_t pos) const;
    // True when the H.263 code at pos (found by find_h263_start) is a picture start code.
    bool is_h263_picture_start(size_t pos) const { return (bytes_[pos + 2] & 0xFC) == 0x80; }

private:
    std::vector<Kvt8u> bytes_;
    size_t size_;
};

}  // namespace kvtdec
