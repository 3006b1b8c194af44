// Running a chain of line_chains.hpp on one row of each side.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "video/line_chains.hpp"

namespace tqcs::video::lines {

// The rows of one layout: a packed row, or the Y, U, V (or Y, UV) rows.
using Row = std::array<uint8_t *, 3>;

// The coefficient rows of a matrix selector, in the layouts of the deep
// kernels: RGB to YUV takes a luma row laid out like the GBR luma row and a
// chroma row with the U weights in elements 0-2 and the V weights in 4-6, one
// pair per channel order of the source; YUV to RGB takes (Rv, Gv) and
// (Gu, Bu).
struct Coefficients {
  const int16_t *yRgb = nullptr, *yBgr = nullptr;
  alignas(16) int16_t uvRgb[8]{}, uvBgr[8]{};
  alignas(16) int16_t toRgbA[8]{}, toRgbB[8]{};
};

// The rows of selector `matrix` (0 HD, 1 SD, 3 UHD); false for a selector
// that names no set.
bool CoefficientsOf(int32_t matrix, Coefficients &out);

// Bytes of the scratch rows a chain needs between its edges for `width`
// pixels, and their place in one buffer.
size_t ChainScratchBytes(const Chain &chain, int32_t width);

// Converts one row: `src` in the chain's first layout to `dst` in its last,
// through scratch rows in `scratch` (ChainScratchBytes of them). A chain of no
// edges copies the rows of `layout`.
void RunChain(const Chain &chain, Line layout, const Row &dst, const Row &src, int32_t width,
              const Coefficients &c, uint8_t *scratch);

}  // namespace tqcs::video::lines
