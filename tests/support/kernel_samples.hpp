// Samples of kernel test rows: 8-bit, or 16-bit little-endian, at any address.
// Written out byte by byte, so the models do not share the kernels' own way
// of reaching memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tqcs::test {

// Sample i of a row of `bytes`-byte samples (1 or 2).
inline uint32_t GetSample(const uint8_t *row, size_t i, int bytes) {
  const uint8_t *p = row + i * static_cast<size_t>(bytes);
  return bytes == 1 ? p[0] : uint32_t{p[0]} | uint32_t{p[1]} << 8;
}

// Stores the low 8 or 16 bits of v as sample i.
inline void PutSample(uint8_t *row, size_t i, int bytes, uint32_t v) {
  uint8_t *p = row + i * static_cast<size_t>(bytes);
  p[0] = static_cast<uint8_t>(v);
  if (bytes == 2) p[1] = static_cast<uint8_t>(v >> 8);
}

// The same on a row held in a vector, bounds checked (std::out_of_range).
inline uint32_t GetSample(const std::vector<uint8_t> &row, size_t i, int bytes) {
  static_cast<void>(row.at((i + 1) * static_cast<size_t>(bytes) - 1));
  return GetSample(row.data(), i, bytes);
}
inline void PutSample(std::vector<uint8_t> &row, size_t i, int bytes, uint32_t v) {
  static_cast<void>(row.at((i + 1) * static_cast<size_t>(bytes) - 1));
  PutSample(row.data(), i, bytes, v);
}

}  // namespace tqcs::test
