// Running a chain of line_chains.hpp on one row of each side.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "video/line_chains.hpp"

namespace tqcs::video::lines {

// The rows of one layout: a packed row, or the Y, U, V (or Y, UV) rows.
using Row = std::array<uint8_t *, 3>;

// The coefficient rows of a matrix selector, in the layouts of the kernels:
// the deep RGB-to-YUV kernels take a luma row laid out like the GBR luma row
// and a chroma row with the U weights in elements 0-2 and the V weights in
// 4-6, one pair per channel order of the source, the deep YUV-to-RGB ones
// (Rv, Gv) and (Gu, Bu); the 8-bit kernels take the exported rows as the frame
// drivers pass them: Y, U, V per channel order, and Rv, Gu, Gv, Bu.
struct Coefficients {
  struct ToYuv {
    const int16_t *y = nullptr, *u = nullptr, *v = nullptr;
    alignas(16) int16_t uv[8]{};
  } rgbFirst, bgrFirst;
  const int16_t *rv = nullptr, *gu = nullptr, *gv = nullptr, *bu = nullptr;
  alignas(16) int16_t toRgbA[8]{}, toRgbB[8]{};
};

// The rows of selector `matrix` (0 HD, 1 SD, 3 UHD); false for a selector
// that names no set.
bool CoefficientsOf(int32_t matrix, Coefficients &out);

// A chain ready to run at one width: its scratch rows placed once, in a
// buffer of ChainScratchBytes.
struct PreparedChain {
  const Chain *chain = nullptr;
  Line layout{};  // the first layout (what a chain of no edges copies)
  int32_t width = 0;
  std::array<Row, kMaxChain - 1> between{};
};

size_t ChainScratchBytes(const Chain &chain, int32_t width);
PreparedChain PrepareChain(const Chain &chain, Line layout, int32_t width, uint8_t *scratch);

// Converts one row: `src` in the chain's first layout to `dst` in its last. A
// chain of no edges copies the rows.
void RunChain(const PreparedChain &p, const Row &dst, const Row &src, const Coefficients &c);

}  // namespace tqcs::video::lines
