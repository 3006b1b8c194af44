// Memory that ends (or starts) exactly at an unreadable page, so a kernel or
// driver that reads or writes one byte past the caller's region faults at
// once instead of touching a neighbour's bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tqcs::test {

enum class Guard { After, Before };

// `size` usable bytes. With Guard::After the last byte is the last of a page
// and the next page is inaccessible; with Guard::Before the first byte is the
// first of a page and the page before it is inaccessible. For an unaligned
// start against the guard, ask for `size + k` bytes and use `data() + k`.
class PageGuarded {
 public:
  explicit PageGuarded(size_t size, Guard guard = Guard::After);
  ~PageGuarded();
  PageGuarded(const PageGuarded &) = delete;
  PageGuarded &operator=(const PageGuarded &) = delete;
  PageGuarded(PageGuarded &&other) noexcept;

  uint8_t *data() { return data_; }
  const uint8_t *data() const { return data_; }
  size_t size() const { return size_; }
  template <class T>
  T *as() {
    return reinterpret_cast<T *>(data_);
  }
  // Makes the usable bytes read-only (sources) or writable again.
  void Protect(bool readOnly);

  // The most usable bytes the mapping holds (the size asked for, rounded up to
  // whole pages).
  size_t capacity() const { return mapSize_ - PageBytes(); }
  // Places `size` usable bytes (at most capacity()) against the guard page
  // again, without a new mapping: many calls of different sizes can share one.
  // Returns data().
  uint8_t *Reframe(size_t size);

  static size_t PageBytes();

 private:
  uint8_t *map_ = nullptr;
  size_t mapSize_ = 0;
  uint8_t *data_ = nullptr;
  size_t size_ = 0;
  Guard guard_ = Guard::After;
};

// When a guard page is hit (or any other invalid access ends the program),
// writes `prefix` and the text in `current` (a buffer of `size` bytes the test
// keeps naming the call it makes) to stderr, then exits with status 1.
void ReportFaultsWith(const char *prefix, const char *current, size_t size);

}  // namespace tqcs::test
