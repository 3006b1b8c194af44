// Views of images by plane and row index, the one flip, and the row walks of
// frames and fields built on one loop: the frame walk (one call for the whole
// image, or one per row) and the field walk.
//
// A view maps (plane, row) to a row address: a whole frame; one field of a
// frame (rows parity, parity + 2, ...); or a pair of field buffers seen as the
// frame they interleave into (even rows from the first, odd rows from the
// second). A frame walked against a pair of fields is the field split or
// compose of every operation: row 2i goes with row i of field 1, row 2i + 1
// with row i of field 2, and an odd last row with row height / 2 of field 1.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "base/plane.hpp"

namespace tqcs::frame {

// The flip: a plane started at its last row and walked with a negated pitch.
// The offset is a 64-bit product.
inline Plane UpsideDown(const Plane &pl, int64_t rows) { return {pl.Row(rows - 1), -pl.pitch}; }

// Every plane of an image turned over the same number of rows.
template <size_t N>
void TurnUpsideDown(std::array<Plane, N> &planes, int64_t rows) {
  for (Plane &pl : planes) pl = UpsideDown(pl, rows);
}

// A 4:2:0 image turned upside down: its luma plane (the first of three) over
// `height` rows, its chroma planes over height / 2.
template <size_t N>
void TurnUpsideDown420(std::array<Plane, N> &planes, int32_t height) {
  for (size_t i = 0; i < N; ++i)
    planes[i] = UpsideDown(planes[i], (N == 3 && i == 0) ? height : height >> 1);
}

// The byte distance between two rows, formed as an integer.
inline int64_t Distance(const uint8_t *from, const uint8_t *to) {
  return static_cast<int64_t>(reinterpret_cast<uintptr_t>(to) - reinterpret_cast<uintptr_t>(from));
}

// The row addresses of every plane of a view at row y.
template <size_t N, class View>
std::array<uint8_t *, N> RowsOf(const View &view, int64_t y) {
  std::array<uint8_t *, N> rows{};
  for (size_t i = 0; i < N; ++i) rows[i] = view(i, y);
  return rows;
}

template <size_t N>
struct FrameView {
  static constexpr size_t kPlanes = N;
  std::array<Plane, N> p;
  uint8_t *operator()(size_t plane, int64_t y) const { return p[plane].Row(y); }
};

template <size_t N>
struct FieldView {
  static constexpr size_t kPlanes = N;
  std::array<Plane, N> p;
  int64_t parity;
  uint8_t *operator()(size_t plane, int64_t y) const { return p[plane].Row(2 * y + parity); }
};

template <size_t N>
struct FieldsView {
  static constexpr size_t kPlanes = N;
  std::array<Plane, N> first, second;
  uint8_t *operator()(size_t plane, int64_t y) const {
    return ((y & 1) ? second : first)[plane].Row(y >> 1);
  }
};

// Deduction from the planes (aggregate deduction is not in every compiler).
template <size_t N>
FrameView(std::array<Plane, N>) -> FrameView<N>;
template <size_t N>
FieldView(std::array<Plane, N>, int64_t) -> FieldView<N>;
template <size_t N>
FieldsView(std::array<Plane, N>, std::array<Plane, N>) -> FieldsView<N>;

// The one row walk: row(destination rows, source rows) for rows 0 to
// rows - 1 of both views, in order, each side's rows given plane by plane.
template <class DstView, class SrcView, class Row>
void WalkRows(const DstView &dst, const SrcView &src, int64_t rows, const Row &row) {
  for (int64_t y = 0; y < rows; ++y)
    row(RowsOf<DstView::kPlanes>(dst, y).data(), RowsOf<SrcView::kPlanes>(src, y).data());
}

// The frame walk of a row operation, row(destination rows, source rows,
// count): one call over the whole image when `oneCall` (the caller's test:
// contiguous rows whose total count fits the kernels' count), otherwise one
// call per row of `count` units.
template <size_t ND, size_t NS, class Row>
void WalkFrame(const std::array<Plane, ND> &dst, const std::array<Plane, NS> &src, int32_t count,
               int32_t height, bool oneCall, const Row &row) {
  const FrameView out{dst};
  const FrameView in{src};
  if (oneCall) {
    row(RowsOf<ND>(out, 0).data(), RowsOf<NS>(in, 0).data(), count * height);
    return;
  }
  WalkRows(out, in, height, [&](uint8_t *const *d, uint8_t *const *s) { row(d, s, count); });
}

// The field walk: a frame against a pair of fields, rows 0 to rows - 1 of the
// frame. A split reads the frame and writes the fields, a compose the reverse.
template <Form F, size_t NF, size_t NG, class Row>
void WalkFields(const std::array<Plane, NF> &whole, const std::array<Plane, NG> &field1,
                const std::array<Plane, NG> &field2, int64_t rows, const Row &row) {
  if constexpr (F == Form::kSplit)
    WalkRows(FieldsView{field1, field2}, FrameView{whole}, rows, row);
  else
    WalkRows(FrameView{whole}, FieldsView{field1, field2}, rows, row);
}

// The rows of a frame that a walk against a pair of fields visits: every
// row, or the pairs only, when an odd last row is left out.
inline int64_t FieldWalkRows(int32_t height, bool oddRowToField1) {
  return oddRowToField1 ? height : height & ~int64_t{1};
}

// The rule that picks the whole-image path: a frame goes through one kernel
// call only when its count (width x height x units a pixel) fits the kernels'
// signed 32-bit count; larger frames take the per-row path.
inline bool FitsOneCall(int32_t width, int32_t height, int32_t unitsPerPixel = 1) {
  return int64_t{width} * height * unitsPerPixel <= std::numeric_limits<int32_t>::max();
}

}  // namespace tqcs::frame
