// Test buffers: random contents, canary bytes after the caller's region, and a
// region that ends exactly at an unreadable page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace tqcs::test {

inline constexpr uint8_t kCanary = 0xCD;

// A byte buffer of `size` bytes at `offset` (0..15, to test unaligned
// pointers), followed by `guard` canary bytes.
class GuardedBuffer {
 public:
  explicit GuardedBuffer(size_t size, size_t offset = 0, size_t guard = 64);
  uint8_t *data() { return storage_.data() + offset_; }
  const uint8_t *data() const { return storage_.data() + offset_; }
  template <class T>
  T *as() {
    return reinterpret_cast<T *>(data());
  }
  size_t size() const { return size_; }
  // Fills the caller's region with seeded random bytes.
  void Randomize(uint32_t seed);
  void Fill(uint8_t value);
  // True when no byte before the region or past its end has changed.
  bool CanariesIntact() const;

 private:
  std::vector<uint8_t> storage_;
  size_t size_;
  size_t offset_;
};

std::vector<uint8_t> RandomBytes(size_t size, uint32_t seed);

}  // namespace tqcs::test

#include <TQColorSpace/TQColorSpace.h>

namespace tqcs::test {

// A kernel table as start-up would fill it for a processor level (fixed slots,
// whole-plane routines and the tiers of that level), built once per level.
const TCS_KernelTable &KernelTableForLevel(uint32_t level);

// The levels whose tables kernel tests run against: portable (0), SSE2 (1),
// SSSE3 (2) and the highest (4), each only where this processor has it.
// Slots 53, 55 and 113 hold the empty stub on 1 to 4.
std::vector<uint32_t> KernelTestLevels();

}  // namespace tqcs::test
