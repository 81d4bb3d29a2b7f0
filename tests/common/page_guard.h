// A buffer whose last byte is followed by an inaccessible page: a kernel that reads even one
// byte past it faults. Use it to prove that a block reader stays inside what it may read.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace kvt::test {

class PageGuarded {
public:
    explicit PageGuarded(size_t n) : n_(n) {  // n bytes, ending exactly at the protected page
        const size_t page = size_t(sysconf(_SC_PAGESIZE)), body = (n + page - 1) / page * page;
        map_size_ = body + page;
        map_ = mmap(nullptr, map_size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (map_ == MAP_FAILED) throw std::runtime_error("mmap failed");
        data_ = static_cast<uint8_t*>(map_) + body - n;
        if (mprotect(data_ + n, page, PROT_NONE) != 0) throw std::runtime_error("mprotect failed");
    }
    ~PageGuarded() { munmap(map_, map_size_); }
    PageGuarded(const PageGuarded&) = delete;
    PageGuarded& operator=(const PageGuarded&) = delete;
    uint8_t* data() { return data_; }
    size_t size() const { return n_; }

private:
    size_t n_, map_size_;
    void* map_;
    uint8_t* data_;
};

}  // namespace kvt::test
