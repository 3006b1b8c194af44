#include "support/page_guard.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

namespace tqcs::test {
namespace {

size_t PageSize() { return PageGuarded::PageBytes(); }

size_t RoundUp(size_t n, size_t unit) { return (n + unit - 1) / unit * unit; }

}  // namespace

size_t PageGuarded::PageBytes() {
  static const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  return page;
}

PageGuarded::PageGuarded(size_t size, Guard guard) : size_(size), guard_(guard) {
  const size_t page = PageSize();
  const size_t body = RoundUp(size == 0 ? 1 : size, page);
  mapSize_ = body + page;
  void *m = mmap(nullptr, mapSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (m == MAP_FAILED) std::abort();
  map_ = static_cast<uint8_t *>(m);
  if (guard == Guard::After) {
    mprotect(map_ + body, page, PROT_NONE);
    data_ = map_ + body - size;
  } else {
    mprotect(map_, page, PROT_NONE);
    data_ = map_ + page;
  }
}

PageGuarded::~PageGuarded() {
  if (map_) munmap(map_, mapSize_);
}

PageGuarded::PageGuarded(PageGuarded &&other) noexcept
    : map_(std::exchange(other.map_, nullptr)),
      mapSize_(other.mapSize_),
      data_(other.data_),
      size_(other.size_),
      guard_(other.guard_) {}

uint8_t *PageGuarded::Reframe(size_t size) {
  if (size > capacity()) std::abort();
  const size_t page = PageSize();
  size_ = size;
  data_ = guard_ == Guard::After ? map_ + capacity() - size : map_ + page;
  return data_;
}

void PageGuarded::Protect(bool readOnly) {
  const size_t page = PageSize();
  uint8_t *first = reinterpret_cast<uint8_t *>(reinterpret_cast<uintptr_t>(data_) / page * page);
  const size_t length = RoundUp(static_cast<size_t>(data_ + size_ - first), page);
  if (size_ > 0) mprotect(first, length, readOnly ? PROT_READ : PROT_READ | PROT_WRITE);
}

}  // namespace tqcs::test
