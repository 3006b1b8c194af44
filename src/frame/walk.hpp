// Walking the rows of frames and fields.
#pragma once

#include <cstdint>
#include <limits>

namespace tqcs::frame {

// The rule that picks the whole-image path: a frame goes through one kernel
// call only when its count (width x height x units a pixel) fits the kernels'
// signed 32-bit count; larger frames take the per-row path.
inline bool FitsOneCall(int32_t width, int32_t height, int32_t unitsPerPixel = 1) {
  return int64_t{width} * height * unitsPerPixel <= std::numeric_limits<int32_t>::max();
}

}  // namespace tqcs::frame
