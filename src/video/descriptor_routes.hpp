// The descriptor conversions over the extended format space: every pair of
// codes with at least one outside 0 to 10 whose row layouts a chain of kernels
// joins (video/line_chains.hpp), in the frame, split and compose forms.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <cstdint>
#include <optional>

#include "base/plane.hpp"
#include "video/line_chains.hpp"

namespace tqcs::video {

// Converts the images of one call: frame form {destination, source}; split
// {field 1, field 2, source}; compose {destination, field 1, field 2}. 1 once
// converted; 0, with nothing written, for a pair without a chain, a selector
// naming no matrix where the chain needs one, a missing plane, a pitch below
// the row's bytes, a width the layouts cannot hold, a height the form cannot
// split, or scratch memory that cannot be had.
uint64_t ConvertDescriptors(Form form, const TCS_FrameDesc *const images[3], int32_t matrix,
                            int32_t width, int32_t height, uint8_t flip);

}  // namespace tqcs::video
