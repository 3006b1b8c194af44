// Buffers for sweeping entry points against unreadable pages: each buffer is
// described by the spans its rows occupy, placed so that its last byte ends a
// page (or its first byte starts one) next to an inaccessible page, its rows
// filled with seeded bytes and every other byte (pitch padding, room between
// planes) with a canary. One mapping per buffer position serves every call.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "support/page_guard.hpp"

namespace tqcs::test {

struct Span {
  int64_t offset, length;
};

// `rows` rows of `rowBytes` bytes, `pitch` apart, from `offset`.
inline void AddRows(std::vector<Span> &spans, int64_t offset, int64_t pitch, int64_t rowBytes,
                    int64_t rows) {
  for (int64_t y = 0; y < rows; ++y)
    if (rowBytes > 0) spans.push_back({offset + y * pitch, rowBytes});
}

// The bytes from the buffer's start to the end of its last row.
inline int64_t Extent(const std::vector<Span> &spans) {
  int64_t end = 0;
  for (const Span &s : spans) end = std::max(end, s.offset + s.length);
  return end;
}

class GuardedSet {
 public:
  static constexpr uint8_t kCanary = 0xA5;

  GuardedSet(Guard guard, size_t buffers, size_t capacity) {
    for (size_t i = 0; i < buffers; ++i) {
      arenas_.push_back(std::make_unique<PageGuarded>(capacity, guard));
      spans_.emplace_back();
    }
  }

  // Places buffer i against its guard page and returns its first byte.
  uint8_t *Place(size_t i, std::vector<Span> spans, uint32_t seed) {
    std::sort(spans.begin(), spans.end(),
              [](const Span &a, const Span &b) { return a.offset < b.offset; });
    const int64_t extent = Extent(spans);
    uint8_t *base = arenas_[i]->Reframe(static_cast<size_t>(extent));
    std::fill_n(base, extent, kCanary);
    uint32_t x = seed * 2654435761u + 1;
    for (const Span &s : spans)
      for (int64_t k = 0; k < s.length; ++k) {
        x ^= x << 13, x ^= x >> 17, x ^= x << 5;
        base[s.offset + k] = static_cast<uint8_t>(x >> 7);
      }
    spans_[i] = std::move(spans);
    return base;
  }

  // True while every byte of buffer i outside its rows holds the canary.
  bool CanariesIntact(size_t i) const {
    const uint8_t *base = arenas_[i]->data();
    int64_t at = 0;  // the spans are sorted: check the gaps between them
    auto canaries = [&](int64_t from, int64_t to) {
      return std::all_of(base + from, base + to, [](uint8_t b) { return b == kCanary; });
    };
    for (const Span &s : spans_[i]) {
      if (s.offset > at && !canaries(at, s.offset)) return false;
      at = std::max(at, s.offset + s.length);
    }
    return canaries(at, static_cast<int64_t>(arenas_[i]->size()));
  }

 private:
  std::vector<std::unique_ptr<PageGuarded>> arenas_;
  std::vector<std::vector<Span>> spans_;
};

// The call a sweep is making, written to stderr if it faults on a guard page.
inline char g_sweepCase[256];
inline void ReportSweepFaults() {
  ReportFaultsWith("fault in guard sweep: ", g_sweepCase, sizeof g_sweepCase);
}

}  // namespace tqcs::test
