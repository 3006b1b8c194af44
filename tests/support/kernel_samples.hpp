// Samples of kernel test rows: 8-bit, or 16-bit little-endian, at any address,
// and where the components of packed 4:2:2 pairs and of V210 words sit.
// Written out byte by byte and from the layout tables, so the models do not
// share the kernels' own way of reaching memory.
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

// Element i of a row of signed 16-bit coefficients.
inline int Coef(const std::vector<uint8_t> &row, size_t i) {
  return static_cast<int16_t>(GetSample(row, i, 2));
}

// Where Y0, U, Y1 and V sit in a packed 4:2:2 pair, read from the order's
// name ("YUYV", "UYVY").
struct PairSlots {
  int y0 = -1, u = -1, y1 = -1, v = -1;
  explicit PairSlots(const char *order) {
    for (int q = 0; q < 4; ++q) {
      if (order[q] == 'U') u = q;
      if (order[q] == 'V') v = q;
      if (order[q] == 'Y') (y0 < 0 ? y0 : y1) = q;
    }
  }
};

// V210: three 10-bit fields per little-endian 32-bit word, a group of six
// pixels in four words (U0 Y0 V0) (Y1 U1 Y2) (V1 Y3 U2) (Y4 V2 Y5). The bit
// of a row where the Y of pixel i ('Y') or the U or V of pair i starts.
inline size_t V210Bit(char comp, size_t i) {
  static const int kY[6][2] = {{0, 1}, {1, 0}, {1, 2}, {2, 1}, {3, 0}, {3, 2}};
  static const int kU[3][2] = {{0, 0}, {1, 1}, {2, 2}}, kV[3][2] = {{0, 2}, {2, 0}, {3, 1}};
  const int(*table)[2] = comp == 'Y' ? kY : comp == 'U' ? kU : kV;
  const size_t per = comp == 'Y' ? 6 : 3, k = i % per;
  return 32 * (4 * (i / per) + size_t(table[k][0])) + 10 * size_t(table[k][1]);
}
inline uint32_t GetV210(const uint8_t *row, size_t bit) {
  const uint8_t *w = row + bit / 32 * 4;
  const uint32_t word = GetSample(w, 0, 2) | GetSample(w, 1, 2) << 16;
  return word >> (bit % 32) & 0x3FF;
}
// Sets the bits of v in a field that holds zero.
inline void PutV210(std::vector<uint8_t> &row, size_t bit, uint32_t v) {
  for (size_t b = 0; b < 10; ++b)
    if (v >> b & 1) row.at((bit + b) / 8) |= static_cast<uint8_t>(1 << ((bit + b) % 8));
}
// Bytes of the words that carry the count / 2 pairs of a row.
inline size_t V210Bytes(int32_t count) { return 4 * ((4 * size_t(count / 2) + 2) / 3); }

}  // namespace tqcs::test
