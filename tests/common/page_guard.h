// A buffer whose last byte is followed by an inaccessible page: a kernel that reads even one
// byte past it faults. Use it to prove that a block reader stays inside what it may read.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kvt::test {

class PageGuarded {
public:
    explicit PageGuarded(size_t n);  // n bytes, ending exactly at the protected page
    ~PageGuarded();
    PageGuarded(const PageGuarded&) = delete;
    PageGuarded& operator=(const PageGuarded&) = delete;
    uint8_t* data() { return data_; }
    size_t size() const { return n_; }

private:
    uint8_t* map_ = nullptr;
    size_t map_size_ = 0;
    uint8_t* data_ = nullptr;
    size_t n_;
};

}  // namespace kvt::test
