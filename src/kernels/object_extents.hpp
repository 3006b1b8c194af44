// The row extents of the kernel objects' 23 operations, as data, in the form
// of the slot table (slot_extents.hpp): how many bytes each pointer argument
// spans for a pixel count, and how many rows a pitched source spans. The SSE2
// object advances its pointers by them when it hands a row's tail to the
// portable object, and the parity test sizes its buffers from them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "kernels/colorspace.hpp"
#include "kernels/slot_extents.hpp"

namespace tqcs {

// The operations, in the order of the interface's virtual functions.
#define TQCS_OP_NAME(name, ret, params) name,
enum class ColorSpaceOp : int32_t { TQCS_COLORSPACE_OPS(TQCS_OP_NAME) };
#undef TQCS_OP_NAME

// The signature of each operation, as a plain function type.
template <ColorSpaceOp kOp>
struct OpFn;
#define TQCS_OP_FN(name, ret, params) \
  template <>                         \
  struct OpFn<ColorSpaceOp::name> {   \
    using Type = ret(*) params;       \
  };
TQCS_COLORSPACE_OPS(TQCS_OP_FN)
#undef TQCS_OP_FN

using OpExtents = Extents<ColorSpaceOp>;

namespace detail {
constexpr auto MakeOpExtents() {
  using namespace extent;
  using O = ColorSpaceOp;
  return std::array{
      OpExtents{O::YUV411_2_YUYV, {Quads(8), Quads(4), Quads(1), Quads(1)}},
      OpExtents{O::YUV411_2_UYVY, {Quads(8), Quads(4), Quads(1), Quads(1)}},
      OpExtents{O::V210_2_YUV422, {Pairs(2), Pairs(1), Pairs(1), V210Words()}},
      OpExtents{O::YUV422_2_V210, {V210Words(), Pairs(2), Pairs(1), Pairs(1)}},
      OpExtents{O::V210_2_YUV420, {Pairs(2), Pairs(1), Pairs(1), V210Words()}},
      OpExtents{O::RGB_2_YUV_Matrix, {Px(1), Px(4)}},
      OpExtents{O::YUYV_2_YUV422_16, {Pairs(4), Pairs(2), Pairs(2), Pairs(4)}},
      OpExtents{O::UYVY_2_YUV422_16, {Pairs(4), Pairs(2), Pairs(2), Pairs(4)}},
      OpExtents{O::Scale_Q14, {Px(1), Px(1)}},
      OpExtents{O::RGB48_2_YUYV16_Matrix, {CeilPairs(8), Px(6)}},
      OpExtents{O::RGB48_2_UYVY16_Matrix, {CeilPairs(8), Px(6)}},
      OpExtents{O::YUV422_2_YUV420_UV_Avg, {Px(1), Px(1)}},
      OpExtents{O::YUV422_16_2_YUV420_16_UV_Avg, {Px(2), Px(2)}},
      // Four source rows: the given one and three after it.
      OpExtents{O::UV_Interpolate_4Tap, {Px(1), Px(1)}, RowsAfter{3}},
      OpExtents{O::UV_Interpolate_4Tap_16, {Px(2), Px(2)}, RowsAfter{3}},
      OpExtents{O::YUYV_2_YUV420_Avg, {Pairs(2), Pairs(1), Pairs(1), Pairs(4)}},
      OpExtents{O::UYVY_2_YUV420_Avg, {Pairs(2), Pairs(1), Pairs(1), Pairs(4)}},
      OpExtents{O::YUYV16_2_YUV420_16_Avg, {Pairs(4), Pairs(2), Pairs(2), Pairs(8)}},
      OpExtents{O::UYVY16_2_YUV420_16_Avg, {Pairs(4), Pairs(2), Pairs(2), Pairs(8)}},
      OpExtents{O::YUYV_2_YUV420_16, {Pairs(4), Pairs(2), Pairs(2), Pairs(4)}},
      OpExtents{O::UYVY_2_YUV420_16, {Pairs(4), Pairs(2), Pairs(2), Pairs(4)}},
      OpExtents{O::YUYV16_2_YUV420, {Pairs(2), Pairs(1), Pairs(1), Pairs(8)}},
      OpExtents{O::UYVY16_2_YUV420, {Pairs(2), Pairs(1), Pairs(1), Pairs(8)}},
  };
}
}  // namespace detail

// Every operation, in the order of the interface, so an operation indexes it.
inline constexpr auto kOpExtents = detail::MakeOpExtents();

constexpr bool ListsEveryOpInOrder() {
  size_t i = 0;
#define TQCS_OP_AT(name, ret, params) \
  if (i >= kOpExtents.size() || kOpExtents[i++].slot != ColorSpaceOp::name) return false;
  TQCS_COLORSPACE_OPS(TQCS_OP_AT)
#undef TQCS_OP_AT
  return i == kOpExtents.size();
}
static_assert(ListsEveryOpInOrder(), "kOpExtents lists every operation once, in order");

constexpr const OpExtents &ExtentsOf(ColorSpaceOp op) {
  return kOpExtents[static_cast<size_t>(op)];
}

}  // namespace tqcs
