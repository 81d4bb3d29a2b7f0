#include "page_guard.h"

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

namespace kvt::test {

PageGuarded::PageGuarded(size_t n) : n_(n) {
    const size_t page = size_t(sysconf(_SC_PAGESIZE));
    const size_t body = (n + page - 1) / page * page;
    map_size_ = body + page;
    void* m = mmap(nullptr, map_size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m == MAP_FAILED) throw std::runtime_error("mmap failed");
    map_ = static_cast<uint8_t*>(m);
    if (mprotect(map_ + body, page, PROT_NONE) != 0) throw std::runtime_error("mprotect failed");
    data_ = map_ + body - n;
}

PageGuarded::~PageGuarded() { munmap(map_, map_size_); }

}  // namespace kvt::test
