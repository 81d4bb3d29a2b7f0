#include "stream.h"

#include <cstring>
#include <utility>

namespace kvtdec {

Stream::Stream(std::vector<Kvt8u> bytes) : bytes_(std::move(bytes)), size_(bytes_.size()) {
    bytes_.resize(size_ + kPadding, 0);
}

size_t Stream::find_start_code(size_t pos) const {
    const Kvt8u* p = bytes_.data();
    for (size_t i = pos; i + 2 < size_;) {
        const void* z = std::memchr(p + i, 0, size_ - i);
        if (!z) break;
        i = size_t(static_cast<const Kvt8u*>(z) - p);
        if (i + 2 < size_ && p[i + 1] == 0 && p[i + 2] == 1) return i;
        ++i;
    }
    return size_;
}

size_t Stream::find_h263_start(size_t pos) const {
    const Kvt8u* p = bytes_.data();
    for (size_t i = pos; i + 2 < size_;) {
        const void* z = std::memchr(p + i, 0, size_ - i);
        if (!z) break;
        i = size_t(static_cast<const Kvt8u*>(z) - p);
        if (i + 2 < size_ && p[i + 1] == 0) {
            const Kvt8u b = p[i + 2];
            if ((b & 0xFC) == 0x80 || (b & 0xFC) == 0xFC) return i;
        }
        ++i;
    }
    return size_;
}

}  // namespace kvtdec
